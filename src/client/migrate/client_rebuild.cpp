// A table made anew as SQLite's documentation describes: a new table, the rows, the old table dropped, the new one
// renamed. The rows are held to what the new table's triggers check while they are copied.
#include "migrate/client_steps.hpp"
#include "migrate/client_value_change.hpp"

#include "kt_folded.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_rebuild"

namespace {

// A column of SQLite's table that gets its values from one of the old table.
struct carried_col {
    const client_row_col *old_col;
    const client_row_col *new_col;
    std::string value; // the expression; empty where no value can be made
};

// Both tables with the types of their columns.
struct carried_tbl {
    client_row_tbl old_tbl;
    client_row_tbl new_tbl;
    std::vector<carried_col> cols;
};

} // namespace

static const client_row_col *my_find(const client_row_tbl &tbl, const std::string &col_id)
{
    for (const client_row_col &col : tbl.cols) {
        if (col.stored && kt_equal_folded(col.col_id, col_id))
            return &col;
    }
    return nullptr;
}

static void my_read(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                    carried_tbl &carried)
{
    KT_TRY(client_read_row_tbl(ctx, migration.old_schema, changed.old_tbl.id.c_str(), carried.old_tbl));
    KT_TRY(client_read_row_tbl(ctx, migration.new_schema, changed.new_tbl.id.c_str(), carried.new_tbl));
    for (const client_pair &pair : changed.pair.cols) {
        if (!pair.is_both())
            continue;
        const client_row_col *old_col = my_find(carried.old_tbl, changed.old_tbl.cols[pair.old_at].id);
        const client_row_col *new_col = my_find(carried.new_tbl, changed.new_tbl.cols[pair.new_at].id);
        if (old_col && new_col)
            carried.cols.push_back(
                {old_col, new_col, client_changed_value(old_col->type, new_col->type, client_quoted(old_col->name))});
    }
}

static void my_add_loss(client_migration &migration, const client_changed_tbl &changed, const std::string &col,
                        const std::string &why)
{
    client_migration_step step{client_migration_class::loses, changed.old_tbl.name + '.' + col + ": " + why};
    step.tbl = changed.new_tbl.sqlite_name;
    step.count_query = "SELECT count(" + client_quoted(col) + ") FROM " + client_quoted(changed.old_tbl.sqlite_name);
    step.loss = changed.old_tbl.name + '.' + col;
    migration.steps.push_back(std::move(step));
}

static void my_add_risk(client_migration &migration, const client_changed_tbl &changed, const std::string &col,
                        const std::string &what, const std::string &where)
{
    client_migration_step step{client_migration_class::may_fail,
                               changed.old_tbl.name + (col.empty() ? "" : '.' + col) + ": " + what};
    step.tbl = changed.new_tbl.sqlite_name;
    step.count_query =
        "SELECT count(*) FROM " + client_quoted(changed.old_tbl.sqlite_name) + (where.empty() ? "" : " WHERE " + where);
    migration.steps.push_back(std::move(step));
}

// A condition for values that cannot be ones of the new type, as far as storage class and width tell.
static std::string my_refused(const carried_col &col)
{
    const client_server_type &type = col.new_col->type;
    const std::string not_null = client_quoted(col.old_col->name) + " IS NOT NULL AND ";
    const bool is_text =
        client_is_text(type.base) || (type.base >= client_base::date && type.base <= client_base::datetimeoffset);
    if (is_text)
        return not_null + (type.length > 0 ? "length(" + col.value + ") > " + std::to_string(type.length)
                                           : "typeof(" + col.value + ") <> 'text'");
    if (client_is_binary(type.base) || type.base == client_base::guid || type.base == client_base::clr)
        return not_null + (type.length > 0 ? "length(" + col.value + ") > " + std::to_string(type.length)
                                           : "typeof(" + col.value + ") <> 'blob'");
    const bool is_float = type.base == client_base::real || type.base == client_base::floating;
    return not_null + "typeof(CAST(" + col.value + " AS NUMERIC)) <> '" +
           (is_float ? "real' AND typeof(CAST(" + col.value + " AS NUMERIC)) <> 'integer'" : "integer'");
}

static void my_add_carried(client_migration &migration, const client_changed_tbl &changed, const carried_col &col)
{
    const client_row_col &old_col = *col.old_col;
    const client_row_col &new_col = *col.new_col;
    if (col.value.empty())
        return my_add_loss(migration, changed, old_col.name,
                           "values of its old type cannot be turned into the new one");
    if (client_may_round(old_col.type, new_col.type))
        my_add_loss(migration, changed, old_col.name, "is rounded to 32 bits");
    if (old_col.type.nullable && !new_col.type.nullable)
        my_add_risk(migration, changed, old_col.name, "is NOT NULL from now on",
                    client_quoted(old_col.name) + " IS NULL");
    if (!client_takes_all(old_col.type, new_col.type))
        my_add_risk(migration, changed, old_col.name, "not every value is one of its new type", my_refused(col));
}

void client_add_col_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed)
{
    carried_tbl carried;
    KT_TRY(my_read(ctx, migration, changed, carried));
    for (const client_row_col &col : carried.old_tbl.cols) {
        const bool is_carried = std::any_of(carried.cols.begin(), carried.cols.end(),
                                            [&](const carried_col &other) { return other.old_col == &col; });
        if (col.stored && !is_carried)
            my_add_loss(migration, changed, col.name, "is dropped");
    }
    for (const carried_col &col : carried.cols)
        my_add_carried(migration, changed, col);
    for (const client_row_col &col : carried.new_tbl.cols) {
        const bool is_carried = std::any_of(carried.cols.begin(), carried.cols.end(), [&](const carried_col &other) {
            return other.new_col == &col && !other.value.empty();
        });
        const bool is_filled = col.has_default || col.rowid || col.type.base == client_base::rowversion;
        if (col.stored && !is_carried && !col.type.nullable && !is_filled)
            my_add_risk(migration, changed, "", "the new column " + col.name + " is NOT NULL and has no default", "");
    }
}

static std::string my_copy(const carried_tbl &carried, const std::string &from, const std::string &to)
{
    std::string names;
    std::string values;
    for (const carried_col &col : carried.cols) {
        if (col.value.empty())
            continue;
        names += (names.empty() ? "" : ", ") + client_quoted(col.new_col->name);
        values += (values.empty() ? "" : ", ") + col.value;
    }
    if (names.empty()) // nothing of a row would stay but that it was there
        return "";
    return "INSERT INTO " + client_quoted(to) + " (" + names + ") SELECT " + values + " FROM " + client_quoted(from);
}

void client_add_rebuild(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed)
{
    carried_tbl carried;
    KT_TRY(my_read(ctx, migration, changed, carried));
    const std::string &name = changed.new_tbl.sqlite_name;
    const std::string moving = migration.new_list.plan.trigger_prefix + "moving_" + name;
    const std::string check = migration.new_list.plan.trigger_prefix + "moved_" + name;
    const client_object *tbl = migration.new_list.find(name);
    client_migration_step step{client_migration_class::rebuilds, changed.new_tbl.name + ": is made anew with its rows",
                               name};
    step.rebuilt = name;
    step.sql.push_back("CREATE TABLE " + client_quoted(moving) +
                       tbl->sql.substr(std::string_view("CREATE TABLE ").size() + client_quoted(name).size()));
    const client_object *checks = migration.new_list.find(migration.new_list.plan.trigger_prefix + "insert_" + name);
    step.sql.push_back("CREATE TRIGGER " + client_quoted(check) + " BEFORE INSERT ON " + client_quoted(moving) +
                       checks->sql.substr(checks->sql.find("\nBEGIN\n")));
    if (std::string copy = my_copy(carried, name, moving); !copy.empty())
        step.sql.push_back(std::move(copy));
    step.sql.push_back("DROP TRIGGER " + client_quoted(check));
    step.sql.push_back("DROP TABLE " + client_quoted(name));
    step.sql.emplace_back(client_legacy_on);
    step.sql.push_back("ALTER TABLE " + client_quoted(moving) + " RENAME TO " + client_quoted(name));
    step.sql.emplace_back(client_legacy_off);
    migration.steps.push_back(std::move(step));
}

void client_needs_values(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                         bool &needs)
{
    carried_tbl carried;
    KT_TRY(my_read(ctx, migration, changed, carried));
    needs = std::any_of(carried.cols.begin(), carried.cols.end(), [](const carried_col &col) {
        return col.value != client_quoted(col.old_col->name) || !client_takes_all(col.old_col->type, col.new_col->type);
    });
}

void client_add_new_versions(KT_context *ctx, client_migration &migration)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (!pair.tbl.is_both())
            continue;
        const client_changed_tbl changed{migration.comparison.old_content.tbls[pair.tbl.old_at],
                                         migration.comparison.new_content.tbls[pair.tbl.new_at], pair};
        carried_tbl carried;
        KT_TRY(my_read(ctx, migration, changed, carried));
        const client_versioned versioned = client_find_version(carried.new_tbl);
        const bool is_carried = std::any_of(carried.cols.begin(), carried.cols.end(), [&](const carried_col &col) {
            return client_quoted(col.new_col->name) == versioned.col;
        });
        if (versioned.col_id.empty() || is_carried || !migration.new_list.plan.with_rules)
            continue;
        const std::string name = client_quoted(changed.new_tbl.sqlite_name);
        client_migration_step step{client_migration_class::rebuilds, changed.new_tbl.name + ": rows get their versions",
                                   changed.new_tbl.sqlite_name};
        step.sql.push_back("UPDATE " + name + " SET " + versioned.col + " = " + versioned.col);
        step.numbers_rows = true;
        migration.steps.push_back(std::move(step));
    }
}
