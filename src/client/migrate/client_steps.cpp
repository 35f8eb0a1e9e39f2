// The order of a migration: what is made anew goes first, then tables go, get their names, are altered or rebuilt and
// are added, and in the end everything on tables is made.
#include "migrate/client_steps.hpp"

#include "kt_folded.hpp"
#include "migrate/client_rehearsal.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_steps"

static bool my_is_tbl(const client_object &object)
{
    return object.kind == client_kind::tbl;
}

static client_changed_tbl my_changed(const client_migration &migration, const client_tbl_pair &pair)
{
    return {migration.comparison.old_content.tbls[pair.tbl.old_at],
            migration.comparison.new_content.tbls[pair.tbl.new_at], pair};
}

static void my_add(client_migration &migration, client_migration_step step)
{
    if (!step.sql.empty())
        migration.steps.push_back(std::move(step));
}

// Tables go before others take their names.
static void my_drop_tbls(client_migration &migration)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.new_at != client_nothing)
            continue;
        const client_tbl_content &tbl = migration.comparison.old_content.tbls[pair.tbl.old_at];
        client_migration_step step{client_migration_class::loses, tbl.name + ": is dropped", tbl.sqlite_name};
        step.count_query = "SELECT count(*) FROM " + client_quoted(tbl.sqlite_name);
        step.loss = tbl.name;
        step.sql.push_back("DROP TABLE " + client_quoted(tbl.sqlite_name));
        my_add(migration, std::move(step));
    }
}

static std::string my_rename_tbl(const std::string &from, const std::string &to)
{
    return "ALTER TABLE " + client_quoted(from) + " RENAME TO " + client_quoted(to);
}

// Names may be exchanged, so a table whose new name another one has waits under a name of its own.
static void my_rename_tbls(client_migration &migration)
{
    client_migration_step away{client_migration_class::free, "tables make way for others of their names"};
    client_migration_step step{client_migration_class::free, "tables are renamed"};
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (!pair.tbl.is_both())
            continue;
        const client_changed_tbl changed = my_changed(migration, pair);
        const std::string &from = changed.old_tbl.sqlite_name;
        const std::string &to = changed.new_tbl.sqlite_name;
        if (from == to)
            continue;
        const client_object *holder = migration.old_list.find(to);
        const std::string waiting = migration.new_list.plan.trigger_prefix + "waiting_" + from;
        if (holder && my_is_tbl(*holder))
            away.sql.push_back(my_rename_tbl(from, waiting));
        step.sql.push_back(my_rename_tbl(holder && my_is_tbl(*holder) ? waiting : from, to));
        migration.touched.insert(kt_folded(to));
    }
    my_add(migration, std::move(away));
    my_add(migration, std::move(step));
}

// A default that SQLite does not give to rows that are there already.
static void my_is_default_constant(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   bool &is_constant)
{
    KT_bool has = 0;
    const char *name = nullptr;
    const char *expression = nullptr;
    KT_TRY(tov_schema__get_colcon_defval(ctx, schema, tbl_id, col_id, &has, &name, &expression));
    is_constant = !has || (expression && expression[0] != '(' && KT_strnicmp(expression, "current_", 8) != 0);
}

// The statements that alter a table in place. Not all changes have any: whether they come to the new table is tried.
static void my_alterations(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                           std::vector<std::string> &sql)
{
    const std::string alter = "ALTER TABLE " + client_quoted(changed.new_tbl.sqlite_name);
    for (const client_pair &pair : changed.pair.cols) {
        const client_part *old_col = pair.old_at == client_nothing ? nullptr : &changed.old_tbl.cols[pair.old_at];
        const client_part *new_col = pair.new_at == client_nothing ? nullptr : &changed.new_tbl.cols[pair.new_at];
        const bool was_stored = old_col && !old_col->id.empty();
        const bool is_stored = new_col && !new_col->id.empty();
        if (was_stored && is_stored && old_col->sqlite_name != new_col->sqlite_name)
            sql.push_back(alter + " RENAME COLUMN " + client_quoted(old_col->sqlite_name) + " TO " +
                          client_quoted(new_col->sqlite_name));
        if (was_stored || !is_stored)
            continue;
        const char *tbl_id = changed.new_tbl.id.c_str();
        const char *defin = nullptr;
        bool is_constant = false;
        KT_TRY(my_is_default_constant(ctx, migration.new_schema, tbl_id, new_col->id.c_str(), is_constant));
        KT_TRY(tov_schema__get_col_defin(ctx, migration.new_schema, tbl_id, new_col->id.c_str(), nullptr, &defin));
        sql.push_back(is_constant ? alter + " ADD COLUMN " + defin : "");
    }
}

// Whether values must be written anew though the table's statement need not: two server types may have one in SQLite.
static void my_is_value_kept(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                             bool &is_kept)
{
    bool needs = false;
    KT_TRY(client_needs_values(ctx, migration, changed, needs));
    is_kept = !needs;
}

static void my_change_tbl(KT_context *ctx, client_migration &migration, client_rehearsal &rehearsal,
                          const client_changed_tbl &changed)
{
    const client_object *wanted = migration.new_list.find(changed.new_tbl.sqlite_name);
    client_migration_step step{client_migration_class::free, changed.new_tbl.name + ": is altered in place",
                               wanted->name};
    bool is_in_place = false;
    KT_TRY(my_is_value_kept(ctx, migration, changed, is_in_place));
    KT_TRY(my_alterations(ctx, migration, changed, step.sql));
    const bool is_possible = std::find(step.sql.begin(), step.sql.end(), "") == step.sql.end();
    if (is_in_place && is_possible)
        KT_TRY(client_rehearsal__try(ctx, rehearsal, step.sql, *wanted, is_in_place));
    KT_TRY(client_add_col_risks(ctx, migration, changed));
    if (is_in_place && is_possible)
        return my_add(migration, std::move(step));
    migration.touched.insert(kt_folded(wanted->name));
    KT_TRY(client_add_rebuild(ctx, migration, changed));
}

static void my_change_tbls(KT_context *ctx, client_migration &migration, client_rehearsal &rehearsal)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.is_both())
            KT_TRY(my_change_tbl(ctx, migration, rehearsal, my_changed(migration, pair)));
    }
}

static void my_add_tbls(client_migration &migration)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.old_at != client_nothing)
            continue;
        const client_tbl_content &tbl = migration.comparison.new_content.tbls[pair.tbl.new_at];
        const client_object *object = migration.new_list.find(tbl.sqlite_name);
        migration.steps.push_back(
            {client_migration_class::free, tbl.name + ": is created", tbl.sqlite_name, "", "", {object->sql}});
    }
}

// Whether a thing on a table stays as it is.
static bool my_stays(const client_migration &migration, const client_object &object, const client_object_list &others)
{
    const client_object *other = others.find(object.name);
    const bool is_touched = migration.touched.contains(kt_folded(object.tbl));
    return other && other->kind == object.kind && other->sql == object.sql && !is_touched &&
           object.kind != client_kind::record;
}

// Rows keep their versions: the numbers go on where they were.
static void my_create_counter(const client_migration &migration, const client_object &counter,
                              client_migration_step &step)
{
    for (const client_object &old_object : migration.old_list.objects) {
        if (old_object.kind != client_kind::counter)
            continue;
        step.sql.push_back("UPDATE " + client_quoted(counter.name) +
                           " SET (last, stored) = (SELECT last, stored FROM " + client_quoted(old_object.name) + ")");
    }
}

static client_migration_step my_dropping(const client_migration &migration)
{
    client_migration_step step{client_migration_class::free, "indexes, triggers and views that change are dropped"};
    const std::vector<client_object> &objects = migration.old_list.objects;
    for (auto object = objects.rbegin(); object != objects.rend(); ++object) {
        const bool is_later = my_is_tbl(*object) || object->kind == client_kind::counter;
        if (!is_later && !my_stays(migration, *object, migration.new_list))
            step.sql.push_back(std::string("DROP ") + client_object_word(object->kind) + " IF EXISTS " +
                               client_quoted(object->name));
    }
    return step;
}

static client_migration_step my_creating(const client_migration &migration)
{
    client_migration_step step{client_migration_class::free, "indexes, triggers and views are created"};
    for (const client_object &object : migration.new_list.objects) {
        if (my_is_tbl(object) || my_stays(migration, object, migration.old_list))
            continue;
        step.sql.push_back(object.sql);
        if (object.kind == client_kind::counter)
            my_create_counter(migration, object, step);
    }
    for (const client_object &object : migration.old_list.objects) {
        if (object.kind == client_kind::counter && !my_stays(migration, object, migration.new_list))
            step.sql.push_back("DROP TABLE " + client_quoted(object.name));
    }
    return step;
}

// A statement that fails unless all rows that are referred to are there. SQLite's own answer is a list of rows.
static client_migration_step my_checking()
{
    return {client_migration_class::free,
            "references are checked",
            "",
            "",
            "",
            {"CREATE TEMP TABLE tov_references (count CONSTRAINT \"rows refer to rows that are not there\" "
             "CHECK (count = 0))",
             "INSERT INTO tov_references SELECT count(*) FROM pragma_foreign_key_check",
             "DROP TABLE temp.tov_references"}};
}

// The tables as they are before each is looked at: those that go are gone, the others have their names.
static void my_rehearse(KT_context *ctx, const client_migration &migration, client_rehearsal &rehearsal)
{
    KT_TRY(client_rehearsal__open(ctx, rehearsal, migration.old_list.objects));
    for (const client_migration_step &step : migration.steps)
        KT_TRY(client_rehearsal__run(ctx, rehearsal, step.sql));
}

static void my_plan_steps(KT_context *ctx, client_migration &migration)
{
    client_rehearsal rehearsal;
    my_drop_tbls(migration);
    my_rename_tbls(migration);
    KT_TRY(my_rehearse(ctx, migration, rehearsal));
    KT_TRY(my_change_tbls(ctx, migration, rehearsal));
    my_add_tbls(migration);
    KT_TRY(client_add_new_versions(ctx, migration));
    client_migration_step dropping = my_dropping(migration);
    if (!dropping.sql.empty())
        migration.steps.insert(migration.steps.begin(), std::move(dropping));
    client_migration_step creating = my_creating(migration);
    const auto versions = std::find_if(migration.steps.begin(), migration.steps.end(),
                                       [](const client_migration_step &step) { return step.numbers_rows; });
    if (!creating.sql.empty())
        migration.steps.insert(versions, std::move(creating));
    migration.steps.push_back(my_checking());
}

void client_plan_migration(KT_context *ctx, const tov_client_migrate_options &options,
                           const tov_client_create_options *old_options, client_migration &migration)
{
    KT_TRY(tov_schema__check_shape(ctx, migration.old_schema));
    KT_TRY(tov_schema__check_shape(ctx, migration.new_schema));
    KT_TRY(client_list_objects(ctx, migration.old_schema, old_options, migration.old_list));
    KT_TRY(client_list_objects(ctx, migration.new_schema, options.create, migration.new_list));
    KT_TRY(client_match(ctx, migration.old_schema, migration.new_schema, options.compare, migration.comparison));
    KT_TRY(my_plan_steps(ctx, migration));
}

static bool my_is_allowed(const client_migration &migration, const client_migration_step &step,
                          const tov_client_migrate_options &options)
{
    const auto is_named = [&](std::string_view name) {
        for (uint32_t n = 0; n < options.allowed_loss_count; n++) {
            if (kt_equal_folded(options.allowed_losses[n], name))
                return true;
        }
        return false;
    };
    for (const client_tbl_content &tbl : migration.comparison.old_content.tbls) {
        if (!step.loss.starts_with(tbl.name) || (step.loss != tbl.name && step.loss[tbl.name.size()] != '.'))
            continue;
        const std::string rest = step.loss.substr(tbl.name.size());
        if (is_named(tbl.name) || is_named(tbl.sqlite_name) || is_named(step.loss) || is_named(tbl.sqlite_name + rest))
            return true;
    }
    return false;
}

void client_check_losses(KT_context *ctx, const client_migration &migration, const tov_client_migrate_options &options)
{
    std::string losses;
    for (const client_migration_step &step : migration.steps) {
        if (!step.loss.empty() && !my_is_allowed(migration, step, options))
            losses += (losses.empty() ? "" : "; ") + step.description;
    }
    if (!losses.empty())
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "this would lose data: %s", losses.c_str());
}
