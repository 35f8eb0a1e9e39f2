// What a database says of itself.
#include "create/client_record.hpp"
#include "rows/load/client_connection.hpp"
#include "rows/table/client_row_tbl.hpp"

#define KT_HERE "src/client/create/client_record_reading"

// Where a table of the schema has a name such as tov_schema, the record has a later one.
static constexpr const char *find_record =
    "SELECT name FROM sqlite_master AS m WHERE type = 'table' AND name GLOB 'tov*_schema' AND "
    "trim(substr(name, 4, length(name) - 10), '0123456789') = '' AND "
    "(SELECT group_concat(c.name) FROM pragma_table_info(m.name) AS c) = "
    "'version,document,rules,indexes,collations,views,checks' "
    "ORDER BY length(name) DESC, name DESC LIMIT 1";

void client_find_record(KT_context *ctx, client_connection &database, std::string &name)
{
    kt_owned_statement statement{database.functions};
    bool found = false;
    KT_TRY(client_connection__prepare(ctx, database, find_record, statement));
    KT_TRY(client_connection__step(ctx, database, statement, found));
    if (!found)
        KT_FAIL(KT_ERR_NOT_FOUND, "the database has no record of its schema");
    name = client_column_text(database, statement, 0);
}

void client_read_record(KT_context *ctx, client_connection &database, tov_schema **schema,
                        tov_client_create_options *options)
{
    std::string name;
    kt_owned_statement statement{database.functions};
    bool found = false;
    KT_TRY(client_find_record(ctx, database, name));
    const std::string sql = "SELECT document, rules, indexes, views, collations, checks FROM " + client_quoted(name);
    KT_TRY(client_connection__prepare(ctx, database, sql, statement));
    KT_TRY(client_connection__step(ctx, database, statement, found));
    const char *document = found ? database.functions->column_text(statement, 0) : nullptr;
    if (!document)
        KT_FAIL(KT_ERR_NOT_FOUND, "the database's record of its schema is empty");
    KT_TRY(tov_schema__from_json(ctx, document, schema));
    if (!options)
        return;
    *options = {};
    options->rules = static_cast<int32_t>(database.functions->column_int64(statement, 1));
    options->indexes = static_cast<int32_t>(database.functions->column_int64(statement, 2));
    options->collations = static_cast<int32_t>(database.functions->column_int64(statement, 4));
    options->checks = static_cast<int32_t>(database.functions->column_int64(statement, 5));
    options->views = database.functions->column_int64(statement, 3) != 0;
}

void tov_client__read_record(KT_context *ctx, const char *file_name, tov_schema **schema,
                             tov_client_create_options *options) noexcept
{
    kt_contain(ctx, [&] {
        client_connection database;
        KT_TRY(client_connection__open(ctx, database, file_name, true));
        KT_TRY(client_read_record(ctx, database, schema, options));
    });
}
