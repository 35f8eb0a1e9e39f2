// The doors: a plan, a script, and running the same.
#include "create/client_record.hpp"
#include "kt_chars.h"
#include "migrate/client_rehearsal.hpp"
#include "migrate/client_steps.hpp"

#define KT_HERE "src/client/migrate/client_migrate"

static const char *my_class_word(client_migration_class weight) noexcept
{
    static constexpr const char *words[] = {"free", "rebuilds", "may fail", "loses data"};
    return words[static_cast<size_t>(weight)];
}

static void my_add_text(KT_context *ctx, KT_vhash *record, const char *key, const std::string &text) noexcept
{
    if (!text.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, key, text.c_str()));
}

static void my_write_step(KT_context *ctx, const client_migration_step &step, KT_varray *steps) noexcept
{
    KT_vhash *record = nullptr;
    KT_varray *sql = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, steps, &record));
    KT_TRY(my_add_text(ctx, record, "description", step.description));
    KT_TRY(my_add_text(ctx, record, "table", step.tbl));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "class", my_class_word(step.weight)));
    KT_TRY(my_add_text(ctx, record, "count", step.count_query));
    KT_TRY(my_add_text(ctx, record, "loss", step.loss));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "sql", &sql));
    for (const std::string &statement : step.sql)
        KT_TRY(KT_varray__append__string__sz(ctx, sql, statement.c_str()));
}

void tov_client__plan_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                const tov_client_migrate_options *options, KT_varray **steps) noexcept
{
    kt_contain(ctx, [&] {
        const tov_client_migrate_options chosen = options ? *options : tov_client_migrate_options{};
        client_migration migration;
        kt_owned_varray list{ctx};
        migration.old_schema = old_schema;
        migration.new_schema = new_schema;
        KT_TRY(client_plan_migration(ctx, chosen, chosen.create, migration));
        KT_TRY(KT_varray__alloc(ctx, list.out()));
        for (const client_migration_step &step : migration.steps)
            KT_TRY(my_write_step(ctx, step, list));
        list.move_to(steps);
    });
}

// A comment of one line, whatever the names in it hold.
static void my_append_comment(KT_context *ctx, KT_string *script, const client_migration_step &step) noexcept
{
    KT_TRY(KT_string__append__format(ctx, script, "\n-- %s: ", my_class_word(step.weight)));
    KT_TRY(KT_string__append__harmless(ctx, script, step.description.c_str()));
    if (!step.count_query.empty())
        KT_TRY(KT_string__append__format(ctx, script, "\n-- how many: %s", step.count_query.c_str()));
    KT_TRY(KT_string__append__sz(ctx, script, "\n"));
}

static void my_append_line(KT_context *ctx, KT_string *script, const std::string &sql) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, script, sql.c_str()));
    KT_TRY(KT_string__append__sz(ctx, script, ";\n"));
}

void tov_client__write_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                 const tov_client_migrate_options *options, KT_string **script) noexcept
{
    kt_contain(ctx, [&] {
        const tov_client_migrate_options chosen = options ? *options : tov_client_migrate_options{};
        client_migration migration;
        kt_owned_string text{ctx};
        migration.old_schema = old_schema;
        migration.new_schema = new_schema;
        KT_TRY(client_plan_migration(ctx, chosen, chosen.create, migration));
        KT_TRY(client_check_losses(ctx, migration, chosen));
        KT_TRY(KT_string__alloc(ctx, text.out()));
        KT_TRY(my_append_line(ctx, text, "PRAGMA foreign_keys=OFF"));
        KT_TRY(my_append_line(ctx, text, client_begin));
        for (const client_migration_step &step : migration.steps) {
            KT_TRY(my_append_comment(ctx, text, step));
            for (const std::string &statement : step.sql)
                KT_TRY(my_append_line(ctx, text, statement));
        }
        KT_TRY(my_append_line(ctx, text, client_commit));
        text.move_to(script);
    });
}

// A table that is not what the record says was changed by somebody, and the plan would not fit it.
static void my_check_tbls(KT_context *ctx, client_connection &database, const client_migration &migration)
{
    for (const client_object &object : migration.old_list.objects) {
        std::string found;
        if (object.kind != client_kind::tbl)
            continue;
        KT_TRY(client_read_statement(ctx, database, object.name, found));
        if (client_statement_meaning(found) == client_statement_meaning(object.sql))
            continue;
        kt_owned_string shown{ctx};
        KT_TRY(KT_string__alloc(ctx, shown.out()));
        KT_TRY(KT_string__append__shown(ctx, shown, object.name.c_str()));
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "table %s is not as the database's record of its schema says",
                KT_string__sz(shown));
    }
}

// The statements of indexes and triggers on a table that are not of this plan.
static void my_read_added(KT_context *ctx, client_connection &database, const client_migration &migration,
                          const std::string &tbl, std::vector<std::string> &added)
{
    kt_owned_statement statement{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT name, sql FROM sqlite_master WHERE type IN ('index', 'trigger') AND "
                                      "sql IS NOT NULL AND lower(tbl_name) = lower(?1) ORDER BY rowid",
                                      statement));
    KT_TRY(client_connection__bind_text(ctx, database, statement, 1, tbl));
    KT_TRY(client_connection__step(ctx, database, statement, has));
    while (has) {
        const std::string name(client_column_text(database, statement, 0));
        if (!migration.old_list.find(name))
            added.emplace_back(client_column_text(database, statement, 1));
        KT_TRY(client_connection__step(ctx, database, statement, has));
    }
}

static void my_run_step(KT_context *ctx, client_connection &database, const client_migration &migration,
                        const client_migration_step &step)
{
    std::vector<std::string> added;
    if (!step.rebuilt.empty())
        KT_TRY(my_read_added(ctx, database, migration, step.rebuilt, added));
    for (const std::string &statement : step.sql)
        KT_TRY(client_connection__run(ctx, database, statement));
    for (const std::string &statement : added)
        KT_TRY(client_connection__run(ctx, database, statement));
}

namespace {

// The schema that a database has recorded.
struct recorded_schema {
    explicit recorded_schema(KT_context *context) noexcept : ctx(context)
    {
    }
    ~recorded_schema()
    {
        KT_context__push_level(ctx);
        tov_schema__nullfree(ctx, &schema);
        KT_context__pop_level(ctx);
    }
    recorded_schema(const recorded_schema &) = delete;
    recorded_schema &operator=(const recorded_schema &) = delete;

    KT_context *ctx;
    tov_schema *schema = nullptr;
};

} // namespace

static void my_migrate(KT_context *ctx, client_connection &database, recorded_schema &old_schema,
                       client_migration &migration, tov_client_migrate_options options)
{
    tov_client_create_options recorded = {};
    KT_TRY(client_connection__run(ctx, database, client_begin));
    KT_TRY(client_read_record(ctx, database, &old_schema.schema, &recorded));
    migration.old_schema = old_schema.schema;
    options.create = options.create ? options.create : &recorded;
    KT_TRY(client_plan_migration(ctx, options, &recorded, migration));
    KT_TRY(client_check_losses(ctx, migration, options));
    KT_TRY(my_check_tbls(ctx, database, migration));
    for (const client_migration_step &step : migration.steps)
        KT_TRY(my_run_step(ctx, database, migration, step));
    KT_TRY(client_connection__run(ctx, database, client_commit));
}

void tov_client__migrate_database(KT_context *ctx, const char *file_name, tov_schema *new_schema,
                                  const tov_client_migrate_options *options) noexcept
{
    kt_contain(ctx, [&] {
        client_connection database;
        recorded_schema recorded{ctx};
        client_migration migration;
        migration.new_schema = new_schema;
        KT_TRY(client_connection__open(ctx, database, file_name, false));
        KT_TRY(my_migrate(ctx, database, recorded, migration, options ? *options : tov_client_migrate_options{}));
    });
}
