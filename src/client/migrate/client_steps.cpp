// The order of a migration: what is made anew goes first, then tables go, get their names and those of their columns,
// are altered or rebuilt and are added, and in the end everything on tables is made.
#include "migrate/client_steps.hpp"
#include "create/client_tbl_statement.hpp"

#include "kt_folded.hpp"
#include "migrate/client_rehearsal.hpp"
#include "migrate/client_risks.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_steps"

// What creating a thing may do.
static client_duty my_duty_of(client_kind kind)
{
    switch (kind) {
    case client_kind::tbl:
        return client_duty::tbl;
    case client_kind::index:
        return client_duty::index;
    case client_kind::view:
        return client_duty::view;
    case client_kind::counter:
    case client_kind::record:
        return client_duty::own_statement;
    default:
        return client_duty::trigger;
    }
}

static client_migration_statement my_creation_of(const client_object &object)
{
    return {object.sql, my_duty_of(object.kind), object.tbl, object.name};
}

static bool my_is_tbl(const client_object &object)
{
    return object.kind == client_kind::tbl;
}

client_changed_tbl client_changed(const client_migration &migration, const client_tbl_pair &pair)
{
    return {migration.comparison.old_content.tbls[pair.tbl.old_at],
            migration.comparison.new_content.tbls[pair.tbl.new_at], pair};
}

bool client_takes_converters(const client_migration_step &step)
{
    return std::any_of(step.statements.begin(), step.statements.end(),
                       [](const client_migration_statement &statement) { return statement.copy.has_value(); });
}

std::string client_moving_name(const client_migration &migration, const std::string &name)
{
    return migration.new_list.plan.trigger_prefix + "moving_" + name;
}

void client_add_step(client_migration &migration, client_migration_step step)
{
    if (!step.statements.empty())
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
        step.loss.old_tbl = pair.tbl.old_at;
        step.add("DROP TABLE " + client_quoted(tbl.sqlite_name));
        client_add_step(migration, std::move(step));
    }
}

// Whether SQLite can give the default to rows that are there already.
static void my_is_default_constant(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                   bool &is_constant)
{
    KT_bool has = 0;
    const char *name = nullptr;
    const char *expression = nullptr;
    KT_TRY(tov_schema__get_colcon_defval(ctx, schema, tbl_id, col_id, &has, &name, &expression));
    is_constant = !has || (expression && expression[0] != '(' && KT_strnicmp(expression, "current_", 8) != 0);
}

static void my_write_added(KT_context *ctx, const client_migration &migration, const std::string &tbl_id,
                           const char *col_id, client_code_pages &pages, std::string &defin)
{
    const client_plan &plan = migration.new_list.plan;
    const auto tbl = std::find_if(plan.tbls.begin(), plan.tbls.end(),
                                  [&](const client_tbl &other) { return other.rows.id == tbl_id; });
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));
    KT_TRY(client_write_col(ctx, migration.new_schema, *tbl, col_id, {plan.with_rules, plan.with_constraints, pages},
                            text));
    defin = KT_string__sz(text);
}

// The statements that alter a table in place; none can where a new column needs a value that SQLite does not give it.
// Whether they come to the new table is tried.
static void my_alterations(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                           client_migration_step &step, bool &is_possible)
{
    const std::string &tbl = changed.new_tbl.sqlite_name;
    client_code_pages pages;
    is_possible = true;
    for (const client_pair &pair : changed.pair.cols) {
        const client_part *old_col = pair.old_at == client_nothing ? nullptr : &changed.old_tbl.cols[pair.old_at];
        const client_part *new_col = pair.new_at == client_nothing ? nullptr : &changed.new_tbl.cols[pair.new_at];
        if ((old_col && !old_col->id.empty()) || !new_col || new_col->id.empty())
            continue;
        const char *tbl_id = changed.new_tbl.id.c_str();
        std::string defin;
        bool is_constant = false;
        KT_TRY(my_is_default_constant(ctx, migration.new_schema, tbl_id, new_col->id.c_str(), is_constant));
        KT_TRY(my_write_added(ctx, migration, tbl_id, new_col->id.c_str(), pages, defin));
        is_possible = is_possible && is_constant;
        step.statements.push_back(
            {"ALTER TABLE " + client_quoted(tbl) + " ADD COLUMN " + defin, client_duty::column, tbl});
    }
}

static void my_change_tbl(KT_context *ctx, client_migration &migration, client_rehearsal &rehearsal,
                          const client_changed_tbl &changed)
{
    const client_object *wanted = migration.new_list.find(changed.new_tbl.sqlite_name);
    client_migration_step step{client_migration_class::free, changed.new_tbl.name + ": is altered in place",
                               wanted->name};
    client_carried_tbl carried;
    bool is_in_place = false;
    KT_TRY(client_read_carried(ctx, migration, changed, carried));
    if (!client_needs_values(carried))
        KT_TRY(my_alterations(ctx, migration, changed, step, is_in_place));
    if (is_in_place)
        KT_TRY(client_rehearsal__try(ctx, rehearsal, step.statements, *wanted, is_in_place));
    KT_TRY(client_add_risks(ctx, migration, changed, carried));
    if (is_in_place)
        return client_add_step(migration, std::move(step));
    migration.touched.insert(kt_folded(wanted->name));
    client_add_rebuild(migration, changed, carried);
}

static void my_change_tbls(KT_context *ctx, client_migration &migration, client_rehearsal &rehearsal)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.is_both())
            KT_TRY(my_change_tbl(ctx, migration, rehearsal, client_changed(migration, pair)));
    }
}

static void my_add_tbls(client_migration &migration)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.old_at != client_nothing)
            continue;
        const client_tbl_content &tbl = migration.comparison.new_content.tbls[pair.tbl.new_at];
        client_migration_step step{client_migration_class::free, tbl.name + ": is created", tbl.sqlite_name};
        step.statements.push_back(my_creation_of(*migration.new_list.find(tbl.sqlite_name)));
        migration.steps.push_back(std::move(step));
    }
}

// Whether a thing on a table stays as it is.
static bool my_stays(const client_migration &migration, const client_object &object, const client_object_list &others)
{
    const client_object *other = others.find(object.name);
    const bool is_touched = migration.touched.contains(kt_folded(object.tbl));
    return other && other->kind == object.kind && other->sql == object.sql && !is_touched;
}

// Rows keep their versions: the numbers go on where they were.
static void my_create_counter(const client_migration &migration, const client_object &counter,
                              client_migration_step &step)
{
    for (const client_object &old_object : migration.old_list.objects) {
        if (old_object.kind != client_kind::counter)
            continue;
        step.add("UPDATE " + client_quoted(counter.name) + " SET (last, stored) = (SELECT last, stored FROM " +
                 client_quoted(old_object.name) + ")");
    }
}

static client_migration_step my_dropping(const client_migration &migration)
{
    client_migration_step step{client_migration_class::free, "indexes, triggers and views that change are dropped"};
    const std::vector<client_object> &objects = migration.old_list.objects;
    for (size_t n = objects.size(); n-- > 0;) { // what was made last goes first
        const client_object &object = objects[n];
        const bool is_later = my_is_tbl(object) || object.kind == client_kind::counter;
        if (!is_later && !my_stays(migration, object, migration.new_list))
            step.add(std::string("DROP ") + client_object_word(object.kind) + " IF EXISTS " +
                     client_quoted(object.name));
    }
    return step;
}

static client_migration_step my_creating(const client_migration &migration)
{
    client_migration_step step{client_migration_class::free, "indexes, triggers and views are created"};
    for (const client_object &object : migration.new_list.objects) {
        if (my_is_tbl(object) || my_stays(migration, object, migration.old_list))
            continue;
        step.statements.push_back(my_creation_of(object));
        if (object.kind == client_kind::counter)
            my_create_counter(migration, object, step);
    }
    for (const client_object &object : migration.old_list.objects) {
        if (object.kind == client_kind::counter && !my_stays(migration, object, migration.new_list))
            step.add("DROP TABLE " + client_quoted(object.name));
    }
    return step;
}

// A statement that fails unless all rows that are referred to are there. SQLite's own answer is a list of rows.
static client_migration_step my_checking()
{
    client_migration_step step{client_migration_class::free, "references are checked"};
    step.checks_references = true;
    step.add("CREATE TEMP TABLE tov_references (count CONSTRAINT \"rows refer to rows that are not there\" "
             "CHECK (count = 0))");
    step.add("INSERT INTO tov_references SELECT count(*) FROM pragma_foreign_key_check");
    step.add("DROP TABLE temp.tov_references");
    return step;
}

// The tables as they are before each is looked at: those that go are gone, the others have their names.
static void my_rehearse(KT_context *ctx, const client_migration &migration, client_rehearsal &rehearsal)
{
    KT_TRY(client_rehearsal__open(ctx, rehearsal, migration.old_list.objects));
    for (const client_migration_step &step : migration.steps)
        KT_TRY(client_rehearsal__run(ctx, rehearsal, step.statements));
}

static void my_plan_steps(KT_context *ctx, client_migration &migration)
{
    client_rehearsal rehearsal;
    my_drop_tbls(migration);
    client_add_renames(migration);
    KT_TRY(my_rehearse(ctx, migration, rehearsal));
    KT_TRY(my_change_tbls(ctx, migration, rehearsal));
    my_add_tbls(migration);
    KT_TRY(client_add_new_versions(ctx, migration));
    client_migration_step dropping = my_dropping(migration);
    if (!dropping.statements.empty())
        migration.steps.insert(migration.steps.begin(), std::move(dropping));
    client_migration_step creating = my_creating(migration);
    const auto versions = std::find_if(migration.steps.begin(), migration.steps.end(),
                                       [](const client_migration_step &step) { return step.numbers_rows; });
    if (!creating.statements.empty())
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
    KT_TRY(client_match(ctx, migration.old_schema, migration.new_schema, options.compare, {}, migration.comparison));
    KT_TRY(my_plan_steps(ctx, migration));
}
