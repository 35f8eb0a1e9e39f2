// Keys, checks and references that are new or say something else. They are asked about in their own words: the old
// table is put into a query that gives it the columns of the new one.
#include "migrate/client_risks.hpp"

#include "compare/client_meaning.hpp"
#include "compare/client_part_pairs.hpp"
#include "kt_folded.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_key_risks"

using col_names = std::vector<std::string>; // in lower case

// The lines of a fact's meaning.
static col_names my_lines(const std::string &meaning)
{
    col_names lines;
    for (size_t at = 0; at < meaning.size();) {
        const size_t end = std::min(meaning.find('\n', at), meaning.size());
        lines.push_back(meaning.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

// The columns of a key; after each name comes whether it descends.
static col_names my_cols_of(const client_part &part)
{
    col_names cols;
    const client_fact *fact = client_find_fact(part.facts, client_fact_kind::cols);
    const col_names lines = my_lines(fact ? fact->meaning : "");
    for (size_t n = 0; n < lines.size(); n += 2)
        cols.push_back(lines[n]);
    return cols;
}

// What a column that is new has in rows that are there.
static void my_default_of(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                          const client_row_col &col, std::string &value)
{
    KT_bool has = 0;
    const char *name = nullptr;
    const char *expression = nullptr;
    KT_TRY(tov_schema__get_colcon_defval(ctx, migration.new_schema, changed.new_tbl.id.c_str(), col.col_id.c_str(),
                                         &has, &name, &expression));
    value = has && expression ? expression : "NULL";
}

// The old table as something to select from that has the columns of the new one.
static void my_source(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                      const client_carried_tbl &carried, const col_names &wanted, std::string &source)
{
    const std::string tbl = client_quoted(changed.old_tbl.sqlite_name);
    bool is_as_it_was = true;
    std::string list;
    const auto add = [&](const client_row_col &col, const std::string &value) {
        const std::string name = client_quoted(col.name);
        if (std::find(wanted.begin(), wanted.end(), kt_folded(col.name)) == wanted.end())
            return;
        is_as_it_was = is_as_it_was && value == name;
        list += (list.empty() ? "" : ", ") + value + (value == name ? "" : " AS " + name);
    };
    for (const client_carried_col &col : carried.cols) {
        const std::string name = client_quoted(col.old_col->name);
        const client_value_change change = client_changed_value(col.old_col->type, col.new_col->type, name);
        if (col.change.how != client_carrying::impossible)
            add(*col.new_col, change.sql.empty() ? name : change.sql);
    }
    for (const client_row_col *col : carried.new_cols) {
        std::string value;
        KT_TRY(my_default_of(ctx, migration, changed, *col, value));
        add(*col, value);
    }
    source = is_as_it_was ? tbl : "(SELECT " + list + " FROM " + tbl + ")";
}

static void my_add_check(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                         const client_carried_tbl &carried, const client_part &check)
{
    const client_fact *condition = client_find_fact(check.facts, client_fact_kind::expression);
    std::string source;
    if (!condition)
        return;
    KT_TRY(my_source(ctx, migration, changed, carried, client_names_in(condition->shown), source));
    client_add_risk(migration, changed, ": the check " + client_label_of(check) + " is new",
                    "SELECT count(*) FROM " + source + " WHERE NOT (" + condition->shown + ")");
}

static std::string my_list(const col_names &cols, const char *after, const char *between)
{
    std::string list;
    for (const std::string &col : cols)
        list += (list.empty() ? "" : between) + client_quoted(col) + after;
    return list;
}

static void my_add_key(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                       const client_carried_tbl &carried, const client_part &key)
{
    const col_names cols = my_cols_of(key);
    const client_fact *filter = client_find_fact(key.facts, client_fact_kind::where);
    const bool nulls_are_equal =
        client_find_fact(migration.comparison.new_content.facts, client_fact_kind::equal_nulls) != nullptr;
    col_names wanted = filter ? client_names_in(filter->shown) : col_names();
    std::string source;
    if (cols.empty())
        return;
    wanted.insert(wanted.end(), cols.begin(), cols.end());
    KT_TRY(my_source(ctx, migration, changed, carried, wanted, source));
    std::string where = filter ? '(' + filter->shown + ')' : "";
    if (!nulls_are_equal)
        where += (where.empty() ? "" : " AND ") + my_list(cols, " IS NOT NULL", " AND ");
    client_add_risk(migration, changed, ": the key " + client_label_of(key) + " is new",
                    "SELECT coalesce(sum(n), 0) FROM (SELECT count(*) AS n FROM " + source +
                        (where.empty() ? "" : " WHERE " + where) + " GROUP BY " + my_list(cols, "", ", ") +
                        " HAVING count(*) > 1)");
}

static const client_tbl_pair *my_find_tbl(const client_migration &migration, const std::string &name)
{
    for (const client_tbl_pair &pair : migration.comparison.tbls) {
        if (pair.tbl.new_at != client_nothing &&
            kt_equal_folded(migration.comparison.new_content.tbls[pair.tbl.new_at].sqlite_name, name))
            return &pair;
    }
    return nullptr;
}

// The condition that a row refers to one of the table that is named first, by the columns after it.
static void my_parent(KT_context *ctx, const client_migration &migration, const col_names &cols,
                      const col_names &target, std::string &condition)
{
    const client_tbl_pair *pair = my_find_tbl(migration, target.front());
    client_carried_tbl carried;
    std::string source;
    condition = "0"; // a table that is new has no rows
    if (!pair || !pair->tbl.is_both() || target.size() != cols.size() + 1)
        return;
    const client_changed_tbl parent = client_changed(migration, *pair);
    KT_TRY(client_read_carried(ctx, migration, parent, carried));
    KT_TRY(my_source(ctx, migration, parent, carried, {target.begin() + 1, target.end()}, source));
    condition = "EXISTS (SELECT 1 FROM " + source + " AS parent WHERE ";
    for (size_t n = 0; n < cols.size(); n++)
        condition +=
            (n ? " AND parent." : "parent.") + client_quoted(target[n + 1]) + " = child." + client_quoted(cols[n]);
    condition += ')';
}

static void my_add_reference(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                             const client_carried_tbl &carried, const client_part &reference)
{
    const col_names cols = my_cols_of(reference);
    const client_fact *fact = client_find_fact(reference.facts, client_fact_kind::refers_to);
    std::string source;
    std::string parent;
    if (cols.empty() || !fact)
        return;
    KT_TRY(my_source(ctx, migration, changed, carried, cols, source));
    KT_TRY(my_parent(ctx, migration, cols, my_lines(fact->meaning), parent));
    client_add_risk(migration, changed, ": the reference " + client_label_of(reference) + " is new",
                    "SELECT count(*) FROM " + source + " AS child WHERE " + my_list(cols, " IS NOT NULL", " AND ") +
                        " AND NOT " + parent);
}

// Whether what a part demands of rows is the same; what a key does when a row goes is not asked.
static bool my_demands_same(const client_part &a, const client_part &b)
{
    static constexpr client_fact_kind kinds[] = {
        client_fact_kind::cols,  client_fact_kind::expression, client_fact_kind::refers_to, client_fact_kind::unique,
        client_fact_kind::where, client_fact_kind::left_out,   client_fact_kind::disabled};
    return std::all_of(std::begin(kinds), std::end(kinds), [&](client_fact_kind kind) {
        const client_fact *one = client_find_fact(a.facts, kind);
        const client_fact *other = client_find_fact(b.facts, kind);
        return (one ? one->meaning : "") == (other ? other->meaning : "");
    });
}

// A unique index that holds all rows is among the keys.
static bool my_is_filtered_key(const client_migration &migration, const client_part &part)
{
    const auto has = [&](client_fact_kind kind) { return client_find_fact(part.facts, kind) != nullptr; };
    return migration.new_list.plan.with_rules && has(client_fact_kind::unique) && has(client_fact_kind::where) &&
           !has(client_fact_kind::left_out) && !has(client_fact_kind::disabled);
}

static void my_add_part(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                        const client_carried_tbl &carried, const client_part &part)
{
    switch (part.kind) {
    case client_part_kind::check:
        return my_add_check(ctx, migration, changed, carried, part);
    case client_part_kind::foreign_key:
        return my_add_reference(ctx, migration, changed, carried, part);
    case client_part_kind::index:
        if (my_is_filtered_key(migration, part))
            my_add_key(ctx, migration, changed, carried, part);
        return;
    default:
        return my_add_key(ctx, migration, changed, carried, part);
    }
}

void client_add_key_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                          const client_carried_tbl &carried)
{
    const std::vector<client_part> &old_parts = changed.old_tbl.parts;
    const std::vector<client_part> &new_parts = changed.new_tbl.parts;
    for (const client_part_kind kind :
         {client_part_kind::primary_key, client_part_kind::unique_key, client_part_kind::index, client_part_kind::check,
          client_part_kind::foreign_key}) {
        for (const client_pair &pair : client_pair_parts(old_parts, new_parts, kind)) {
            if (pair.new_at == client_nothing ||
                (pair.is_both() && my_demands_same(old_parts[pair.old_at], new_parts[pair.new_at])))
                continue;
            KT_TRY(my_add_part(ctx, migration, changed, carried, new_parts[pair.new_at]));
        }
    }
}
