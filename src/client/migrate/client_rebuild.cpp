// A table made anew as SQLite's documentation describes: a new table, the rows, the old table dropped, the new one
// renamed. The rows are held to what the new table checks, or its triggers, while they are copied.
#include "migrate/client_carried.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_rebuild"

static bool my_takes_converters(const client_carried_tbl &carried)
{
    return std::any_of(carried.cols.begin(), carried.cols.end(),
                       [](const client_carried_col &col) { return col.change.how == client_carrying::converted; });
}

// The query of the rows' values, which the loader's converters change on the way.
static client_row_copy my_row_copy(const client_migration &migration, const client_carried_tbl &carried,
                                   const std::string &query, const std::string &into)
{
    client_row_copy copy{query, "", {}, migration.new_list.plan.with_rules};
    std::string marks;
    for (const client_carried_col &col : carried.cols) {
        if (col.change.how == client_carrying::impossible)
            continue;
        marks += marks.empty() ? "?" : ", ?";
        copy.cols.push_back(
            {col.name, col.old_col->type, col.new_col->type, col.change.how == client_carrying::converted});
    }
    copy.insert = into + " VALUES (" + marks + ")";
    return copy;
}

// Nothing is copied where nothing of a row would stay but that it was there.
static void my_add_copy(const client_migration &migration, const client_carried_tbl &carried, const std::string &from,
                        const std::string &to, client_migration_step &step)
{
    std::string names;
    std::string values;
    for (const client_carried_col &col : carried.cols) {
        if (col.change.how == client_carrying::impossible)
            continue;
        const std::string name = client_quoted(col.new_col->name);
        names += (names.empty() ? "" : ", ") + name;
        values += (values.empty() ? "" : ", ") + (col.change.sql.empty() ? name : col.change.sql);
    }
    if (names.empty())
        return;
    const std::string into = "INSERT INTO " + client_quoted(to) + " (" + names + ")";
    const std::string query = "SELECT " + values + " FROM " + client_quoted(from);
    client_migration_statement statement{into + ' ' + query, client_duty::copying, to, from};
    if (my_takes_converters(carried))
        statement.copy = my_row_copy(migration, carried, query, into);
    step.statements.push_back(std::move(statement));
}

void client_add_rebuild(client_migration &migration, const client_changed_tbl &changed,
                        const client_carried_tbl &carried)
{
    const std::string &name = changed.new_tbl.sqlite_name;
    const std::string moving = client_moving_name(migration, name);
    const std::string check = migration.new_list.plan.trigger_prefix + "moved_" + name;
    const client_object *tbl = migration.new_list.find(name);
    const client_object *checks = migration.new_list.find(migration.new_list.plan.trigger_prefix + "insert_" + name);
    client_migration_step step{client_migration_class::rebuilds, changed.new_tbl.name + ": is made anew with its rows",
                               name};
    step.rebuilt = name;
    step.statements.push_back(
        {"CREATE TABLE " + client_quoted(moving) +
             tbl->sql.substr(std::string_view("CREATE TABLE ").size() + client_quoted(name).size()),
         client_duty::tbl, moving});
    if (checks)
        step.statements.push_back({"CREATE TRIGGER " + client_quoted(check) + " BEFORE INSERT ON " +
                                       client_quoted(moving) + checks->sql.substr(checks->sql.find("\nBEGIN\n")),
                                   client_duty::trigger, moving, check});
    my_add_copy(migration, carried, name, moving, step);
    if (checks)
        step.add("DROP TRIGGER " + client_quoted(check));
    step.add("DROP TABLE " + client_quoted(name));
    step.add(client_legacy_on);
    step.add("ALTER TABLE " + client_quoted(moving) + " RENAME TO " + client_quoted(name));
    step.add(client_legacy_off);
    migration.steps.push_back(std::move(step));
}

bool client_needs_values(const client_carried_tbl &carried)
{
    return std::any_of(carried.cols.begin(), carried.cols.end(), [](const client_carried_col &col) {
        return col.change.how != client_carrying::kept || !client_takes_all(col.old_col->type, col.new_col->type);
    });
}

void client_add_new_versions(KT_context *ctx, client_migration &migration)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (!pair.tbl.is_both())
            continue;
        const client_changed_tbl changed = client_changed(migration, pair);
        client_carried_tbl carried;
        KT_TRY(client_read_carried(ctx, migration, changed, carried));
        const client_versioned versioned = client_find_version(carried.new_tbl);
        const bool is_new = std::any_of(carried.new_cols.begin(), carried.new_cols.end(),
                                        [&](const auto *col) { return client_quoted(col->name) == versioned.col; });
        if (versioned.col_id.empty() || !is_new || !migration.new_list.plan.with_rules)
            continue;
        client_migration_step step{client_migration_class::rebuilds, changed.new_tbl.name + ": rows get their versions",
                                   changed.new_tbl.sqlite_name};
        step.add("UPDATE " + client_quoted(changed.new_tbl.sqlite_name) + " SET " + versioned.col + " = " +
                 versioned.col);
        step.numbers_rows = true;
        migration.steps.push_back(std::move(step));
    }
}
