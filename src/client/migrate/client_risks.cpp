// Columns: what goes, what is rounded, and values that are not taken.
#include "migrate/client_risks.hpp"

#define KT_HERE "src/client/migrate/client_risks"

static void my_add_loss(client_migration &migration, const client_changed_tbl &changed, const std::string &col,
                        const std::string &sqlite_col, const std::string &why)
{
    client_migration_step step{client_migration_class::loses, changed.old_tbl.name + '.' + col + ": " + why};
    step.tbl = changed.new_tbl.sqlite_name;
    step.count_query =
        "SELECT count(" + client_quoted(sqlite_col) + ") FROM " + client_quoted(changed.old_tbl.sqlite_name);
    step.loss = {changed.pair.tbl.old_at, col, sqlite_col};
    migration.steps.push_back(std::move(step));
}

void client_add_risk(client_migration &migration, const client_changed_tbl &changed, const std::string &what,
                     std::string count_query)
{
    client_migration_step step{client_migration_class::may_fail, changed.old_tbl.name + what};
    step.tbl = changed.new_tbl.sqlite_name;
    step.count_query = std::move(count_query);
    migration.steps.push_back(std::move(step));
}

static void my_add_value_risks(client_migration &migration, const client_changed_tbl &changed,
                               const client_carried_col &col)
{
    const client_server_type &old_type = col.old_col->type;
    const client_server_type &new_type = col.new_col->type;
    const std::string name = client_quoted(col.old_col->name);
    const std::string part = col.name.substr(changed.old_tbl.name.size());
    const std::string count = "SELECT count(*) FROM " + client_quoted(changed.old_tbl.sqlite_name) + " WHERE ";
    if (old_type.nullable && !new_type.nullable)
        client_add_risk(migration, changed, part + ": is NOT NULL from now on", count + name + " IS NULL");
    if (!client_takes_all(old_type, new_type))
        client_add_risk(migration, changed, part + ": not every value is one of its new type",
                        count + client_refused_values(old_type, new_type, name));
}

static void my_add_carried(client_migration &migration, const client_changed_tbl &changed,
                           const client_carried_col &col)
{
    const std::string part = col.name.substr(changed.old_tbl.name.size() + 1);
    if (col.change.how == client_carrying::impossible)
        return my_add_loss(migration, changed, part, col.old_col->name,
                           "values of its old type cannot be turned into the new one");
    if (const char *rounding = client_rounding(col.old_col->type, col.new_col->type))
        my_add_loss(migration, changed, part, col.old_col->name, rounding);
    my_add_value_risks(migration, changed, col);
}

void client_add_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                      const client_carried_tbl &carried)
{
    for (const client_part *col : carried.dropped)
        my_add_loss(migration, changed, col->name, col->sqlite_name, "is dropped");
    for (const client_carried_col &col : carried.cols)
        my_add_carried(migration, changed, col);
    for (const client_row_col *col : carried.new_cols) {
        const bool is_filled = col->has_default || col->rowid || col->type.base == client_base::rowversion;
        if (!col->type.nullable && !is_filled)
            client_add_risk(migration, changed, ": the new column " + col->name + " is NOT NULL and has no default",
                            "SELECT count(*) FROM " + client_quoted(changed.old_tbl.sqlite_name));
    }
    KT_TRY(client_add_key_risks(ctx, migration, changed, carried));
}
