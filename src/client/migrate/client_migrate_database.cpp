// Running a migration in a database that has recorded its schema, with what somebody has added to it.
#include "create/client_owned_schema.hpp"
#include "create/client_record.hpp"
#include "kt_chars.h"
#include "migrate/client_guarded.hpp"

#define KT_HERE "src/client/migrate/client_migrate_database"

// A table that is not what the record says was changed by somebody, and the plan would not fit it.
static void my_check_tbls(KT_context *ctx, client_guarded &database, const client_migration &migration)
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

// An index or trigger of somebody's own, on a table that is made anew.
struct added_object {
    std::string name;
    std::string sql;
};

static void my_read_added(KT_context *ctx, client_guarded &database, const client_migration &migration,
                          const std::string &tbl, std::vector<added_object> &added)
{
    const client_on_duty duty(database.guard, {client_duty::own_statement});
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
            added.push_back({name, std::string(client_column_text(database, statement, 1))});
        KT_TRY(client_connection__step(ctx, database, statement, has));
    }
}

// Says what was being done when something failed, in the names of tables that people know. Where there is no memory for
// that, SQLite's own words stay.
static void my_explain(KT_context *ctx, const client_migration &migration, const client_migration_step &step,
                       const added_object *object) noexcept
try {
    if (!KT_context__has_err(ctx) || KT_context__err_code(ctx) == KT_ERR_OUT_OF_MEMORY)
        return;
    std::string why = KT_context__err_description(ctx);
    const std::string moving = client_moving_name(migration, "");
    for (size_t at = why.find(moving); at != std::string::npos; at = why.find(moving, at))
        why.erase(at, moving.size());
    if (object)
        why = object->name + ", which was added to the table: " + why;
    KT_context__err_set_description(ctx, "%s: %s", step.description.c_str(), why.c_str());
} catch (const std::bad_alloc &) {
    return;
}

static void my_run_statements(KT_context *ctx, client_guarded &database, const client_migration_step &step)
{
    for (const client_migration_statement &statement : step.statements)
        KT_TRY(client_guarded__run(ctx, database, statement));
}

// The same as the statements of the step, which only count.
static void my_check_references(KT_context *ctx, client_guarded &database)
{
    const client_on_duty duty(database.guard, {client_duty::own_statement});
    kt_owned_statement statement{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(
        ctx, database, "SELECT \"table\", parent, count(*) FROM pragma_foreign_key_check GROUP BY 1, 2", statement));
    KT_TRY(client_connection__step(ctx, database, statement, has));
    if (!has)
        return;
    const std::string tbl(client_column_text(database, statement, 0));
    const std::string parent(client_column_text(database, statement, 1));
    KT_FAIL(KT_ERR_SQLITE(SQLITE_CONSTRAINT), "rows of %s refer to rows of %s that are not there: %lld", tbl.c_str(),
            parent.c_str(), static_cast<long long>(database.functions->column_int64(statement, 2)));
}

static void my_run_step(KT_context *ctx, client_guarded &database, const client_migration &migration,
                        const client_migration_step &step)
{
    std::vector<added_object> added;
    if (step.checks_references)
        return my_check_references(ctx, database);
    if (!step.rebuilt.empty())
        KT_TRY(my_read_added(ctx, database, migration, step.rebuilt, added));
    my_run_statements(ctx, database, step);
    my_explain(ctx, migration, step, nullptr);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    for (const added_object &object : added) {
        client_guarded__run(ctx, database, {object.sql});
        my_explain(ctx, migration, step, &object);
        if (kt_failed_at(ctx, KT_HERE, __LINE__))
            return;
    }
}

static void my_migrate(KT_context *ctx, client_guarded &database, client_owned_schema &old_schema,
                       client_migration &migration, tov_client_migrate_options options)
{
    tov_client_create_options recorded = {};
    KT_TRY(client_connection__run(ctx, database, client_begin));
    KT_TRY(client_read_record(ctx, database, &old_schema.schema, &recorded));
    KT_TRY(client_guarded__watch(ctx, database));
    migration.old_schema = old_schema.schema;
    options.create = options.create ? options.create : &recorded;
    KT_TRY(client_plan_migration(ctx, options, &recorded, migration));
    KT_TRY(client_check_losses(ctx, migration, options));
    KT_TRY(my_check_tbls(ctx, database, migration));
    for (const client_migration_step &step : migration.steps)
        KT_TRY(my_run_step(ctx, database, migration, step));
    KT_TRY(client_guarded__run(ctx, database, {client_commit}));
}

void tov_client__migrate_database(KT_context *ctx, const char *file_name, tov_schema *new_schema,
                                  const tov_client_migrate_options *options) noexcept
{
    kt_contain(ctx, [&] {
        client_guarded database;
        client_owned_schema recorded{ctx};
        client_migration migration;
        migration.new_schema = new_schema;
        KT_TRY(client_connection__open(ctx, database, file_name, false));
        KT_TRY(my_migrate(ctx, database, recorded, migration, options ? *options : tov_client_migrate_options{}));
    });
}
