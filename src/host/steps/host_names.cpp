// Names that SQLite, or the statements that this system writes, cannot have.
//
// What has such a name is left out, and the rest comes over: one bad name is no reason to import nothing. A constraint
// loses its name and stays.
#include "steps/host_import.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/steps/host_names"

static constexpr const char *way_out = " (give another name with --rename, or --skip the table)";

// Nearly every name is plain ASCII, and for such a name a look at the bytes is enough.
static bool my_is_plain(std::string_view name)
{
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char byte) {
        return byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\'';
    });
}

static const char *my_find_flaw(const char *name)
{
    return my_is_plain(name) ? nullptr : tov_find_name_flaw(name);
}

static void my_leave_out_column(KT_context *ctx, host_import &import, const host_table &table, host_column &col,
                                host_finding_code code, const std::string &reason)
{
    col.prepared = false;
    KT_TRY(import.findings.add(ctx, code, &table, &col, col.sqlite_name, "left out of the table: " + reason + way_out));
}

static void my_check_columns(KT_context *ctx, host_import &import, host_table &table)
{
    std::unordered_map<std::string, const host_column *> by_name;
    for (host_column &col : table.cols) {
        if (const char *flaw = my_find_flaw(col.sqlite_name)) {
            KT_TRY(my_leave_out_column(ctx, import, table, col, "name-not-writable",
                                       std::string("no statement can be written with ") + flaw));
            continue;
        }
        if (const auto [other, is_new] = by_name.emplace(host_folded(col.sqlite_name), &col); !is_new)
            KT_TRY(
                my_leave_out_column(ctx, import, table, col, "name-taken",
                                    "for SQLite, column " + std::string(other->second->name) + " has the same name"));
    }
}

// Takes a name away from a constraint when it cannot be written.
static void my_check_constraint(KT_context *ctx, host_import &import, const host_table &table, const host_column *col,
                                const char *&name)
{
    const char *flaw = name ? my_find_flaw(name) : nullptr;
    if (!flaw)
        return;
    KT_TRY(import.findings.add(ctx, "name-not-writable", &table, col, name,
                               std::string("the constraint is kept without its name: no statement can be written "
                                           "with ") +
                                   flaw));
    name = nullptr;
}

static void my_keep_id(host_table &table, const char *name)
{
    if (name)
        table.constraint_ids.insert(name);
}

static void my_check_constraints(KT_context *ctx, host_import &import, host_table &table)
{
    for (host_column &col : table.cols) {
        if (col.defval)
            KT_TRY(my_check_constraint(ctx, import, table, &col, col.defval->name));
    }
    if (table.has_pk)
        KT_TRY(my_check_constraint(ctx, import, table, nullptr, table.pk.name));
    for (host_foreignkey &fk : table.fks)
        KT_TRY(my_check_constraint(ctx, import, table, nullptr, fk.name));
    for (host_key &key : table.uniques) {
        KT_TRY(my_check_constraint(ctx, import, table, nullptr, key.name));
        my_keep_id(table, key.name);
    }
    for (host_check &check : table.checks) {
        KT_TRY(my_check_constraint(ctx, import, table, nullptr, check.name));
        my_keep_id(table, check.name);
    }
}

static void my_leave_out_table(KT_context *ctx, host_import &import, host_table &table, host_finding_code code,
                               const std::string &reason)
{
    table.is_left_out = true;
    KT_TRY(import.findings.add(ctx, code, &table, nullptr, table.sqlite_name.c_str(), "left out: " + reason + way_out));
}

static void my_check_table(KT_context *ctx, host_import &import, host_table &table,
                           std::unordered_map<std::string, const host_table *> &by_name)
{
    const std::string folded = host_folded(table.sqlite_name);
    if (const char *flaw = my_find_flaw(table.sqlite_name.c_str())) {
        KT_TRY(my_leave_out_table(ctx, import, table, "name-not-writable",
                                  std::string("no statement can be written with ") + flaw));
    } else if (folded.starts_with("sqlite_")) {
        KT_TRY(my_leave_out_table(ctx, import, table, "name-not-writable",
                                  "SQLite keeps names that begin with sqlite_ for itself"));
    } else if (const auto [other, is_new] = by_name.emplace(folded, &table); !is_new) {
        KT_TRY(my_leave_out_table(ctx, import, table, "name-taken",
                                  "for SQLite, which has no schemas, " + other->second->label + " has the same name"));
    }
}

void host_check_names(KT_context *ctx, host_import &import)
{
    std::unordered_map<std::string, const host_table *> by_name;
    for (host_table &table : import.catalogue.tables) {
        if (!table.is_left_out)
            KT_TRY(my_check_table(ctx, import, table, by_name));
        if (table.is_left_out)
            continue;
        KT_TRY(my_check_columns(ctx, import, table));
        KT_TRY(my_check_constraints(ctx, import, table));
    }
}
