// Indexes: what the server says of them travels with the table, and so does what SQLite makes of them.
//
// A unique index without a filter is a constraint of the table already, so of it only what the constraint loses is
// reported here. Nothing else depends on the other indexes, so what SQLite cannot have is at most a note.
#include "checks/host_condition.hpp"
#include "steps/host_members.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <functional>
#include <iterator>

#define KT_HERE "src/host/steps/host_indexes"

namespace {

// An index of the server, unique or not, and what becomes of it.
struct host_any_index {
    const host_index &index;
    bool is_unique;
    std::vector<const host_column *> included = {}; // those that the table has
    bool is_left_out = false;
    std::string where = {}; // the condition in SQLite; empty when there is none
    std::string flaw = {};  // of a filter that SQLite would read differently
};

struct host_index_work {
    KT_context *ctx;
    host_import &import;
    const host_table &table;
    KT_varray *list = nullptr;                          // the facts
    std::vector<std::vector<const host_column *>> kept; // the columns of the indexes that hold all rows
};

} // namespace

static std::string my_host_text(const host_any_index &any)
{
    const host_index &index = any.index;
    std::string text = any.is_unique ? "UNIQUE INDEX " : "INDEX ";
    text += host_bracketed(index.name ? index.name : "") + " (";
    for (size_t n = 0; n < index.col_names.size(); n++) {
        text += (n ? ", " : "") + host_bracketed(index.col_names[n]);
        text += n < index.descending.size() && index.descending[n] ? " DESC" : "";
    }
    text += ')';
    for (size_t n = 0; n < index.included_names.size(); n++)
        text += (n ? ", " : " INCLUDE (") + host_bracketed(index.included_names[n]);
    text += index.included_names.empty() ? "" : ")";
    return index.filter ? text + " WHERE " + index.filter : text;
}

static void my_report(host_index_work &work, const host_any_index &any, host_finding_code code,
                      const std::string &reason, const host_column *col = nullptr)
{
    KT_context *ctx = work.ctx;
    KT_TRY(work.import.findings.add(ctx, code, &work.table, col, my_host_text(any).c_str(), reason));
}

static void my_leave_out(host_index_work &work, host_any_index &any, host_finding_code code, const std::string &reason,
                         const host_column *col = nullptr)
{
    any.is_left_out = true;
    my_report(work, any, code, "left out: " + reason, col);
}

// A unique index that is left out for such a reason has been reported with the keys.
static void my_check_columns(host_index_work &work, host_any_index &any)
{
    const host_column *unprepared = host_find_unprepared(any.index.cols);
    const bool is_whole = any.index.cols.size() == any.index.col_names.size();
    if (any.is_unique)
        any.is_left_out = any.index.is_disabled || unprepared;
    else if (any.index.kind)
        my_leave_out(work, any, "index-kind", std::string("SQLite has no indexes of the kind ") + any.index.kind);
    else if (any.index.is_disabled)
        my_leave_out(work, any, "index-disabled", "it is disabled on the server");
    else if (unprepared || !is_whole || any.index.cols.empty())
        my_leave_out(work, any, "index-unprepared-column", "it uses a column that is left out of the table",
                     unprepared);
}

// A filter is kept with the same meaning, or not at all: then a unique index, which would hold for other rows, is left
// out.
static void my_check_filter(host_index_work &work, host_any_index &any)
{
    KT_context *ctx = work.ctx;
    const char *filter = any.index.filter;
    if (!filter || any.is_left_out)
        return;
    host_check_reading reading = host_read_check(work.table, filter);
    any.flaw = reading.refusal ? host_refusal_text(reading) : "";
    if (any.flaw.empty())
        KT_TRY(host_try_condition(ctx, work.import, work.table, reading.condition, any.flaw));
    if (any.flaw.empty())
        any.where = std::move(reading.condition);
    else if (any.is_unique)
        my_leave_out(work, any, "unique-filtered", "it holds for some of the rows only, and of its filter " + any.flaw);
    if (any.flaw.empty() && any.is_unique) {
        work.import.compared_in_keys.insert(any.index.cols.begin(), any.index.cols.end());
        work.import.compared_in_checks.insert(reading.compared.begin(), reading.compared.end());
    }
}

static bool my_is_ascending(const host_index &index)
{
    return std::find(index.descending.begin(), index.descending.end(), true) == index.descending.end();
}

// Whether something else holds the rows in the same order. The rowid tells them apart by itself.
static void my_check_redundancy(host_index_work &work, host_any_index &any)
{
    if (any.is_left_out || any.is_unique || !any.where.empty())
        return;
    std::vector<const host_column *> cols = any.index.cols;
    cols.insert(cols.end(), any.included.begin(), any.included.end());
    const auto &keys = work.table.parent_keys;
    const bool is_key = std::find(keys.begin(), keys.end(), cols) != keys.end();
    const bool is_kept = std::find(work.kept.begin(), work.kept.end(), cols) != work.kept.end();
    if (any.index.cols.front()->rowid_key)
        my_leave_out(work, any, "index-redundant", "it begins with the column by which SQLite finds rows");
    else if (my_is_ascending(any.index) && (is_key || is_kept))
        my_leave_out(work, any, "index-redundant",
                     is_key ? "a key has the same columns" : "another has the same columns");
    else if (my_is_ascending(any.index))
        work.kept.push_back(std::move(cols));
}

// What an index that is kept does not keep.
static void my_report_losses(host_index_work &work, const host_any_index &any)
{
    if (any.is_left_out)
        return;
    if (!any.flaw.empty())
        my_report(work, any, "index-filter", "kept for all rows: of its filter " + any.flaw);
    if (!any.index.included_names.empty())
        my_report(work, any, "index-included",
                  any.is_unique || any.included.empty()
                      ? "kept without the columns that it only carries along"
                      : "kept with the columns that it only carries along as its last ones");
    const auto &descending = any.index.descending;
    const bool is_mixed =
        std::adjacent_find(descending.begin(), descending.end(), std::not_equal_to<>()) != descending.end();
    if (any.is_unique && any.where.empty() && is_mixed)
        my_report(work, any, "index-order", "kept as a constraint, which has all of its columns in ascending order");
}

static void my_add_col_ids(KT_context *ctx, KT_vhash *facts, const char *key,
                           const std::vector<const host_column *> &cols)
{
    KT_varray *ids = nullptr;
    if (cols.empty())
        return;
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, key, &ids));
    for (const host_column *col : cols)
        KT_TRY(KT_varray__append__string__sz(ctx, ids, col->id_text));
}

static void my_add_order(KT_context *ctx, KT_vhash *facts, const host_index &index)
{
    KT_varray *flags = nullptr;
    if (my_is_ascending(index))
        return;
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, "descending", &flags));
    for (const bool flag : index.descending)
        KT_TRY(KT_varray__append__bool(ctx, flags, flag));
}

static void my_add_facts(host_index_work &work, const host_any_index &any)
{
    KT_context *ctx = work.ctx;
    const host_index &index = any.index;
    KT_vhash *facts = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, work.list, &facts));
    KT_TRY(host_add_text(ctx, facts, "name", index.name));
    KT_TRY(host_add_flag(ctx, facts, "unique", any.is_unique));
    KT_TRY(host_add_flag(ctx, facts, "clustered", index.is_clustered));
    KT_TRY(host_add_flag(ctx, facts, "disabled", index.is_disabled));
    KT_TRY(host_add_text(ctx, facts, "kind", index.kind));
    KT_TRY(my_add_col_ids(ctx, facts, "cols", index.cols));
    KT_TRY(my_add_order(ctx, facts, index));
    KT_TRY(my_add_col_ids(ctx, facts, "included", index.included_cols));
    KT_TRY(host_add_text(ctx, facts, "filter", index.filter));
    KT_TRY(host_add_text(ctx, facts, "where", any.where.empty() ? nullptr : any.where.c_str()));
    KT_TRY(host_add_flag(ctx, facts, "left_out", any.is_left_out));
}

static void my_add_index(host_index_work &work, const host_index &index, bool is_unique)
{
    KT_context *ctx = work.ctx;
    host_any_index any{index, is_unique};
    std::copy_if(index.included_cols.begin(), index.included_cols.end(), std::back_inserter(any.included),
                 [](const host_column *col) { return col->prepared; });
    KT_TRY(my_check_columns(work, any));
    KT_TRY(my_check_filter(work, any));
    KT_TRY(my_check_redundancy(work, any));
    KT_TRY(my_report_losses(work, any));
    KT_TRY(my_add_facts(work, any));
}

void host_add_indexes(KT_context *ctx, host_import &import, const host_table &table)
{
    const auto is_index = [](const host_key &key) { return key.is_index || key.filter; };
    if (table.indexes.empty() && std::none_of(table.uniques.begin(), table.uniques.end(), is_index))
        return;
    host_index_work work{ctx, import, table, nullptr, {}};
    KT_vhash *facts = nullptr;
    KT_TRY(tov_schema__ensure_tbl_server(ctx, import.schema, table.id_text.c_str(), &facts));
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, "indexes", &work.list));
    for (const host_key &key : table.uniques) {
        if (is_index(key))
            KT_TRY(my_add_index(work, key, true));
    }
    for (const host_index &index : table.indexes)
        KT_TRY(my_add_index(work, index, false));
}
