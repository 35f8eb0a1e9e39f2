// The doors that plan: the steps, and the script.
#include "kt_chars.h"
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

static std::string my_loss(const client_migration &migration, const client_loss &loss)
{
    if (loss.old_tbl == client_nothing)
        return "";
    const std::string &tbl = migration.comparison.old_content.tbls[loss.old_tbl].name;
    return loss.col.empty() ? tbl : tbl + '.' + loss.col;
}

static void my_write_statements(KT_context *ctx, const client_migration_step &step, KT_vhash *record) noexcept
{
    KT_varray *sql = nullptr;
    if (client_takes_converters(step)) {
        KT_TRY(KT_vhash__add__bool(ctx, record, "only_apply", 1));
        return;
    }
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "sql", &sql));
    for (const client_migration_statement &statement : step.statements)
        KT_TRY(KT_varray__append__string__sz(ctx, sql, statement.sql.c_str()));
}

static void my_write_step(KT_context *ctx, const client_migration &migration, const client_migration_step &step,
                          KT_varray *steps) noexcept
{
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, steps, &record));
    KT_TRY(my_add_text(ctx, record, "description", step.description));
    KT_TRY(my_add_text(ctx, record, "table", step.tbl));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "class", my_class_word(step.weight)));
    KT_TRY(my_add_text(ctx, record, "count", step.count_query));
    KT_TRY(my_add_text(ctx, record, "loss", my_loss(migration, step.loss)));
    KT_TRY(my_write_statements(ctx, step, record));
}

// A migration between two schemas that are given.
static void my_plan(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                    const tov_client_migrate_options &options, client_migration &migration)
{
    migration.old_schema = old_schema;
    migration.new_schema = new_schema;
    KT_TRY(client_plan_migration(ctx, options, options.create, migration));
}

void tov_client__plan_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                const tov_client_migrate_options *options, KT_varray **steps) noexcept
{
    kt_contain(ctx, [&] {
        client_migration migration;
        kt_owned_varray list{ctx};
        KT_TRY(my_plan(ctx, old_schema, new_schema, options ? *options : tov_client_migrate_options{}, migration));
        KT_TRY(KT_varray__alloc(ctx, list.out()));
        for (const client_migration_step &step : migration.steps)
            KT_TRY(my_write_step(ctx, migration, step, list));
        list.move_to(steps);
    });
}

// A comment of one line, whatever the names in it hold.
static void my_append_comment(KT_context *ctx, KT_string *script, const client_migration_step &step) noexcept
{
    KT_TRY(KT_string__append__format(ctx, script, "\n-- %s: ", my_class_word(step.weight)));
    KT_TRY(KT_string__append__harmless(ctx, script, step.description.c_str()));
    if (!step.count_query.empty()) {
        KT_TRY(KT_string__append__sz(ctx, script, "\n-- how many: "));
        KT_TRY(KT_string__append__harmless(ctx, script, step.count_query.c_str()));
    }
    KT_TRY(KT_string__append__sz(ctx, script, "\n"));
}

static void my_append_line(KT_context *ctx, KT_string *script, const std::string &sql) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, script, sql.c_str()));
    KT_TRY(KT_string__append__sz(ctx, script, ";\n"));
}

static void my_append_step(KT_context *ctx, KT_string *script, const client_migration_step &step) noexcept
{
    KT_TRY(my_append_comment(ctx, script, step));
    for (const client_migration_statement &statement : step.statements)
        KT_TRY(my_append_line(ctx, script, statement.sql));
}

static std::string my_converted_cols(const client_migration_step &step)
{
    std::string cols;
    for (const client_migration_statement &statement : step.statements) {
        if (!statement.copy)
            continue;
        for (const client_copied_col &col : statement.copy->cols) {
            if (col.is_converted)
                cols += (cols.empty() ? "" : ", ") + col.name;
        }
    }
    return cols;
}

// SQL has no words for what the loader's converters do.
static void my_check_is_sql(KT_context *ctx, const client_migration &migration)
{
    std::string cols;
    for (const client_migration_step &step : migration.steps) {
        if (client_takes_converters(step))
            cols += (cols.empty() ? "" : ", ") + my_converted_cols(step);
    }
    if (!cols.empty())
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "no script can convert the values of %s: migrate the database itself",
                cols.c_str());
}

void tov_client__write_migration(KT_context *ctx, tov_schema *old_schema, tov_schema *new_schema,
                                 const tov_client_migrate_options *options, KT_string **script) noexcept
{
    kt_contain(ctx, [&] {
        const tov_client_migrate_options chosen = options ? *options : tov_client_migrate_options{};
        client_migration migration;
        kt_owned_string text{ctx};
        KT_TRY(my_plan(ctx, old_schema, new_schema, chosen, migration));
        KT_TRY(client_check_losses(ctx, migration, chosen));
        KT_TRY(my_check_is_sql(ctx, migration));
        KT_TRY(KT_string__alloc(ctx, text.out()));
        KT_TRY(my_append_line(ctx, text, "PRAGMA foreign_keys=OFF"));
        KT_TRY(my_append_line(ctx, text, client_begin));
        for (const client_migration_step &step : migration.steps)
            KT_TRY(my_append_step(ctx, text, step));
        KT_TRY(my_append_line(ctx, text, client_commit));
        text.move_to(script);
    });
}
