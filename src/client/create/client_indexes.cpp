// Which indexes each table gets, and their names.
//
// On the server an index's name belongs to its table; in SQLite tables, indexes, triggers and views share one space of
// names. An index keeps its name where nothing else wants it; otherwise all that want it get the table's name before
// it, so that names do not depend on the order of the tables. Only where that is taken too does a number after it tell
// them apart, in their order.
#include "create/client_indexes.hpp"

#include "create/client_index_parts.hpp"
#include "create/client_views.hpp"
#include "kt_folded.hpp"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#define KT_HERE "src/client/create/client_indexes"

namespace {

// One table while its indexes are chosen.
struct tbl_work {
    tov_schema *schema;
    const client_plan &plan;
    client_tbl &tbl;
    bool nulls_are_equal;                 // in unique keys
    std::vector<client_index_cols> whole; // the columns of keys and indexes that hold all rows
};

} // namespace

static void my_add(tbl_work &work, std::string name, client_index index)
{
    index.name = std::move(name);
    work.tbl.indexes.push_back(std::move(index));
}

// A name for what has none: the table's and the columns'.
static std::string my_made_name(const tbl_work &work, const client_index_cols &cols)
{
    std::string name = std::string("ix_") + work.tbl.name;
    for (const client_index_col &col : cols)
        name += std::string("_") + col.name;
    return name;
}

// Rows in which a unique key has a NULL are equal on the server, and never in SQLite.
static void my_add_null_index(KT_context *ctx, tbl_work &work, const client_index_cols &key, const std::string &where,
                              const std::string &key_name) noexcept
{
    client_index index;
    if (!work.nulls_are_equal)
        return;
    KT_TRY(client_make_null_index(ctx, work.schema, work.tbl, key, where, index));
    if (!index.parts.empty())
        KT_TRY(kt_contain(ctx, [&] { my_add(work, key_name + "_nulls", std::move(index)); }));
}

static void my_add_server_index(KT_context *ctx, tbl_work &work, const KT_vhash *facts) noexcept
{
    client_server_index server;
    KT_TRY(client_read_server_index(ctx, work.schema, work.tbl.id, facts, server));
    const bool is_wanted = server.unique ? work.plan.with_rules : work.plan.indexes == TOV_CLIENT_INDEXES_ALL;
    if (server.cols.empty() || !is_wanted)
        return;
    kt_contain(ctx, [&] {
        const std::string name = server.name ? server.name : my_made_name(work, server.cols);
        my_add(work, name, {"", server.unique, client_index_col_list(server.cols), server.where});
        if (server.unique)
            KT_TRY(my_add_null_index(ctx, work, server.cols, server.where, name));
        if (server.where.empty())
            work.whole.push_back(std::move(server.cols));
    });
}

static void my_add_server_indexes(KT_context *ctx, tbl_work &work) noexcept
{
    KT_vhash *facts = nullptr;
    KT_varray *indexes = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__check_tbl_server(ctx, work.schema, work.tbl.id, &facts));
    if (facts)
        KT_TRY(KT_vhash__check__varray(ctx, facts, "indexes", &indexes));
    if (indexes)
        KT_TRY(KT_varray__count(ctx, indexes, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *index = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, indexes, n, &index));
        KT_TRY(my_add_server_index(ctx, work, index));
    }
}

// Whether the first columns of an index are these, in whatever order.
static bool my_begins_with(const client_index_cols &index, const client_index_cols &cols)
{
    const auto is_same = [](const client_index_col &a, const client_index_col &b) {
        return kt_equal_folded(a.name, b.name);
    };
    return index.size() >= cols.size() &&
           std::is_permutation(cols.begin(), cols.end(), index.begin(),
                               index.begin() + static_cast<std::ptrdiff_t>(cols.size()), is_same);
}

static void my_add_reference_index(tbl_work &work, client_index_cols cols)
{
    const auto begins = [&cols](const client_index_cols &index) { return my_begins_with(index, cols); };
    if (cols.empty() || std::any_of(work.whole.begin(), work.whole.end(), begins))
        return;
    my_add(work, my_made_name(work, cols), {"", false, client_index_col_list(cols), ""});
    work.whole.push_back(std::move(cols));
}

using key_taker = void (*)(KT_context *ctx, tbl_work &work, const KT_vhash *key, client_index_cols &cols) noexcept;

static void my_take_key(KT_context *ctx, tbl_work &work, const KT_vhash *key, client_index_cols &cols) noexcept
{
    const char *id = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, key, "id", &id)); // of a unique key
    kt_contain(ctx, [&] {
        if (id)
            KT_TRY(my_add_null_index(ctx, work, cols, "", client_may_name_index(id) ? id : my_made_name(work, cols)));
        work.whole.push_back(std::move(cols));
    });
}

static void my_take_reference(KT_context *ctx, tbl_work &work, const KT_vhash *, client_index_cols &cols) noexcept
{
    kt_contain(ctx, [&] { my_add_reference_index(work, std::move(cols)); });
}

static void my_each_key(KT_context *ctx, tbl_work &work, uint32_t kinds, key_taker take) noexcept
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, work.schema, work.tbl.id, kinds, keys.out()));
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        KT_varray *ids = nullptr;
        client_index_cols cols;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &key));
        KT_TRY(KT_vhash__get__varray(ctx, key, "cols", &ids));
        KT_TRY(client_find_index_cols(ctx, work.schema, work.tbl.id, ids, cols));
        KT_TRY(take(ctx, work, key, cols));
    }
}

// The table's keys come first, because they may do for a foreign key.
static void my_choose(KT_context *ctx, tbl_work &work) noexcept
{
    KT_TRY(my_each_key(ctx, work, TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE, my_take_key));
    KT_TRY(my_add_server_indexes(ctx, work));
    if (work.plan.indexes != TOV_CLIENT_INDEXES_NONE)
        KT_TRY(my_each_key(ctx, work, TOV_KEYS_FOREIGN, my_take_reference));
}

namespace {

// Names in lower case, since SQLite does not tell them apart by it.
struct name_work {
    std::unordered_map<std::string, size_t> wanted; // how many indexes want the name
    std::unordered_set<std::string> taken;
};

} // namespace

// Views count whether or not there are any, so that names do not depend on it.
static name_work my_collect_names(const client_plan &plan)
{
    name_work names;
    for (const client_tbl &tbl : plan.tbls) {
        names.taken.insert(kt_folded(tbl.name));
        names.taken.insert(kt_folded(std::string(client_view_prefix) + tbl.name));
        for (const client_index &index : tbl.indexes)
            names.wanted[kt_folded(index.name)]++;
    }
    return names;
}

// Triggers have names that begin with their prefix.
static bool my_is_free(const client_plan &plan, const name_work &names, const std::string &folded)
{
    return !names.taken.contains(folded) && !folded.starts_with(plan.trigger_prefix);
}

static void my_name(const client_plan &plan, name_work &names, const client_tbl &tbl, client_index &index)
{
    std::string name = index.name;
    if (names.wanted[kt_folded(name)] > 1 || !my_is_free(plan, names, kt_folded(name)))
        name = std::string(tbl.name) + '.' + index.name;
    const std::string first_choice = name;
    for (int n = 2; !my_is_free(plan, names, kt_folded(name)); n++)
        name = first_choice + '_' + std::to_string(n);
    names.taken.insert(kt_folded(name));
    index.name = name;
}

static void my_name_all(client_plan &plan)
{
    name_work names = my_collect_names(plan);
    for (client_tbl &tbl : plan.tbls) {
        for (client_index &index : tbl.indexes)
            my_name(plan, names, tbl, index);
    }
}

// Asked of the document itself: the module's operation would add what it does not find.
static void my_are_nulls_equal(KT_context *ctx, tov_schema *schema, KT_bool *are_equal) noexcept
{
    const KT_vhash *document = nullptr;
    KT_vhash *backend = nullptr;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(KT_vhash__check__vhash(ctx, document, "backend", &backend));
    if (backend)
        KT_TRY(KT_vhash__check__bool(ctx, backend, "indistinct_unique_nulls", are_equal));
}

void client_add_indexes(KT_context *ctx, tov_schema *schema, client_plan &plan) noexcept
{
    KT_bool nulls_are_equal = 0;
    KT_TRY(my_are_nulls_equal(ctx, schema, &nulls_are_equal));
    for (client_tbl &tbl : plan.tbls) {
        tbl_work work{schema, plan, tbl, plan.with_rules && nulls_are_equal, {}};
        KT_TRY(my_choose(ctx, work));
    }
    KT_TRY(kt_contain(ctx, [&] { my_name_all(plan); }));
}

std::string client_index_statement(const client_tbl &tbl, const client_index &index)
{
    return std::string("CREATE ") + (index.is_unique ? "UNIQUE " : "") + "INDEX " + client_quoted(index.name) + " ON " +
           client_quoted(tbl.name) + " (" + index.parts + ')' + (index.where.empty() ? "" : " WHERE " + index.where);
}
