// New names come first, and are given in place: SQLite then changes what else has the old ones, views and triggers of
// the user's own included. A name that something else still has is waited for under a name of its own.
#include "migrate/client_steps.hpp"

#include "kt_folded.hpp"

#include <algorithm>

namespace {

// Names that change, of tables or of the columns of one.
struct name_change {
    std::string from;
    std::string to; // empty where it goes, and only makes way
};

// ALTER ... RENAME up to the names.
struct renaming {
    std::string before;
    std::string between;
    std::vector<name_change> changes = {};
    std::vector<std::string> all = {}; // the names before
};

} // namespace

static bool my_has(const std::vector<std::string> &names, const std::string &name)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string &other) { return kt_equal_folded(other, name); });
}

// Whether a name makes way: it is wanted, or the one that comes is still another's.
static bool my_waits(const renaming &work, const name_change &change)
{
    return my_has(work.all, change.to) ||
           std::any_of(work.changes.begin(), work.changes.end(),
                       [&](const name_change &other) { return kt_equal_folded(other.to, change.from); });
}

static std::string my_free_name(const renaming &work, std::string name)
{
    while (my_has(work.all, name) || std::any_of(work.changes.begin(), work.changes.end(),
                                                 [&](const auto &change) { return kt_equal_folded(change.to, name); }))
        name += '_';
    return name;
}

static void my_rename(const std::string &prefix, renaming work, client_migration_step &away,
                      client_migration_step &step)
{
    const auto statement = [&](const std::string &from, const std::string &to) {
        return work.before + client_quoted(from) + work.between + client_quoted(to);
    };
    for (const name_change &change : work.changes) {
        std::string from = change.from;
        if (my_waits(work, change)) {
            from = my_free_name(work, prefix + "waiting_" + change.from);
            away.add(statement(change.from, from));
            work.all.push_back(from);
        }
        if (!change.to.empty())
            step.add(statement(from, change.to));
    }
}

static void my_rename_tbls(client_migration &migration)
{
    renaming work{"ALTER TABLE ", " RENAME TO "};
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (!pair.tbl.is_both()) // those that go are gone, and those that come have not come
            continue;
        const client_changed_tbl changed = client_changed(migration, pair);
        work.all.push_back(changed.old_tbl.sqlite_name);
        if (changed.old_tbl.sqlite_name == changed.new_tbl.sqlite_name)
            continue;
        work.changes.push_back({changed.old_tbl.sqlite_name, changed.new_tbl.sqlite_name});
        migration.touched.insert(kt_folded(changed.new_tbl.sqlite_name));
    }
    client_migration_step away{client_migration_class::free, "tables make way for others of their names"};
    client_migration_step step{client_migration_class::free, "tables are renamed"};
    my_rename(migration.new_list.plan.trigger_prefix, std::move(work), away, step);
    client_add_step(migration, std::move(away));
    client_add_step(migration, std::move(step));
}

// The columns of a table whose names change, and those that go though another one gets their name.
static renaming my_renaming_of(const client_changed_tbl &changed)
{
    const std::vector<client_part> &old_cols = changed.old_tbl.cols;
    const std::vector<client_part> &new_cols = changed.new_tbl.cols;
    renaming work{"ALTER TABLE " + client_quoted(changed.new_tbl.sqlite_name) + " RENAME COLUMN ", " TO "};
    std::vector<std::string> wanted;
    for (const client_pair &pair : changed.pair.cols) {
        const bool was_stored = pair.old_at != client_nothing && !old_cols[pair.old_at].id.empty();
        const bool is_stored = pair.new_at != client_nothing && !new_cols[pair.new_at].id.empty();
        if (was_stored)
            work.all.push_back(old_cols[pair.old_at].sqlite_name);
        if (is_stored)
            wanted.push_back(new_cols[pair.new_at].sqlite_name);
        if (was_stored && is_stored && old_cols[pair.old_at].sqlite_name != new_cols[pair.new_at].sqlite_name)
            work.changes.push_back({old_cols[pair.old_at].sqlite_name, new_cols[pair.new_at].sqlite_name});
    }
    for (const client_pair &pair : changed.pair.cols) {
        const bool goes = pair.old_at != client_nothing && !old_cols[pair.old_at].id.empty() &&
                          (pair.new_at == client_nothing || new_cols[pair.new_at].id.empty());
        if (goes && my_has(wanted, old_cols[pair.old_at].sqlite_name))
            work.changes.push_back({old_cols[pair.old_at].sqlite_name, ""});
    }
    return work;
}

static void my_rename_cols(client_migration &migration, const client_changed_tbl &changed)
{
    client_migration_step away{client_migration_class::free, changed.new_tbl.name + ": columns make way for others",
                               changed.new_tbl.sqlite_name};
    client_migration_step step{client_migration_class::free, changed.new_tbl.name + ": columns are renamed",
                               changed.new_tbl.sqlite_name};
    my_rename(migration.new_list.plan.trigger_prefix, my_renaming_of(changed), away, step);
    client_add_step(migration, std::move(away));
    client_add_step(migration, std::move(step));
}

void client_add_renames(client_migration &migration)
{
    my_rename_tbls(migration);
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.is_both())
            my_rename_cols(migration, client_changed(migration, pair));
    }
}
