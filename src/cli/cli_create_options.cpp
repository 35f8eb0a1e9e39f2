#include "cli_create_options.hpp"

void cli_create_options::add(const cli_command &command)
{
    command.flag("--views", views,
                 "add a view v_TABLE for each table, which shows decimals, money and guids as the server does");
    command
        .option("--rules", rules,
                "which values are refused: server (default), what the server would refuse, and other forms of a\n"
                "value than the one of docs/values.md; or basic, what breaks the column's type",
                "NAME")
        .one_of({"server", "basic"});
    command
        .option("--indexes", indexes,
                "which indexes are created: all (default), the server's and one for each foreign key that none\n"
                "begins with; references, those for foreign keys only; or none",
                "NAME")
        .one_of({"all", "references", "none"});
    command
        .option("--collations", collations,
                "how strings compare: builtin (default), as SQLite can by itself; or server, as the server does: then\n"
                "whatever opens the database needs the extension libtov_sqlite",
                "NAME")
        .one_of({"builtin", "server"});
    command
        .option("--checks", checks,
                "what refuses values: constraints (default) of the tables, which cost least; or triggers, with the\n"
                "statements of the schema module",
                "NAME")
        .one_of({"constraints", "triggers"});
    command.flag("--no-record", no_record,
                 "leave out the table that records the schema in the database, for diff and migrate");
}

int32_t cli_rules(const std::string &name)
{
    return name == "basic" ? TOV_CLIENT_RULES_BASIC : TOV_CLIENT_RULES_SERVER;
}

static int32_t my_indexes(const std::string &name)
{
    if (name == "references")
        return TOV_CLIENT_INDEXES_REFERENCES;
    return name == "none" ? TOV_CLIENT_INDEXES_NONE : TOV_CLIENT_INDEXES_ALL;
}

tov_client_create_options cli_create_options::for_client() const
{
    tov_client_create_options options{};
    options.views = views;
    options.rules = cli_rules(rules);
    options.indexes = my_indexes(indexes);
    options.collations = collations == "server" ? TOV_CLIENT_COLLATIONS_SERVER : TOV_CLIENT_COLLATIONS_BUILTIN;
    options.checks = checks == "triggers" ? TOV_CLIENT_CHECKS_TRIGGERS : TOV_CLIENT_CHECKS_CONSTRAINTS;
    options.no_record = no_record;
    return options;
}
