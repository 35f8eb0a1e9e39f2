// Facts about indexes come from a document, so they may name columns that are not there: such an index is left out.
#include "create/client_index_parts.hpp"

#include "kt_folded.hpp"

#include <algorithm>

#define KT_HERE "src/client/create/client_index_parts"

static void my_find_nullable(KT_context *ctx, tov_schema *schema, const char *tbl_id, client_index_col &col) noexcept
{
    KT_bool notnull = 0;
    KT_bool in_pk = 0;
    KT_bool is_rowid = 0;
    KT_TRY(tov_schema__get_colcon_notnull(ctx, schema, tbl_id, col.id, &notnull, nullptr));
    KT_TRY(tov_schema__is_col_id_in_pk(ctx, schema, tbl_id, col.id, &in_pk));
    KT_TRY(tov_schema__get_col_is_integer_primary_key(ctx, schema, tbl_id, col.id, &is_rowid, nullptr));
    col.nullable = !notnull && !in_pk && !is_rowid;
}

static void my_add_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *id,
                       client_index_cols &cols) noexcept
{
    KT_bool has = 0;
    client_index_col col{id};
    KT_TRY(tov_schema__has_col_id(ctx, schema, tbl_id, id, &has));
    if (!has)
        return;
    KT_TRY(tov_schema__get_col_name(ctx, schema, tbl_id, id, &col.name));
    KT_TRY(my_find_nullable(ctx, schema, tbl_id, col));
    kt_contain(ctx, [&] { cols.push_back(col); });
}

void client_find_index_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const KT_varray *ids,
                            client_index_cols &cols) noexcept
{
    uint32_t count = 0;
    if (ids)
        KT_TRY(KT_varray__count(ctx, ids, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, ids, n, &id));
        KT_TRY(my_add_col(ctx, schema, tbl_id, id, cols));
    }
}

std::string client_index_col_list(const client_index_cols &cols)
{
    std::string list;
    for (const client_index_col &col : cols)
        list += (list.empty() ? "" : ", ") + client_quoted(col.name) + (col.descending ? " DESC" : "");
    return list;
}

static void my_read_order(KT_context *ctx, const KT_vhash *facts, client_index_cols &cols) noexcept
{
    KT_varray *descending = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, facts, "descending", &descending));
    if (descending)
        KT_TRY(KT_varray__count(ctx, descending, &count));
    for (uint32_t n = 0; n < count && n < cols.size(); n++) {
        const KT_variant *flag = nullptr;
        KT_TRY(KT_varray__get_nth(ctx, descending, n, &flag));
        cols[n].descending = flag->type == KT_VARIANT_BOOL && flag->as.boolean;
    }
}

// Whether SQLite has an index like it. A unique one without a condition is a constraint of the table already; one whose
// condition SQLite cannot have would hold for rows that it is not meant for.
static void my_is_for_sqlite(KT_context *ctx, const KT_vhash *facts, const client_server_index &index,
                             bool *answer) noexcept
{
    KT_bool left_out = 0;
    KT_bool disabled = 0;
    const char *kind = nullptr;
    KT_TRY(KT_vhash__check__bool(ctx, facts, "left_out", &left_out));
    KT_TRY(KT_vhash__check__bool(ctx, facts, "disabled", &disabled));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "kind", &kind));
    *answer = !left_out && !disabled && !kind && !(index.unique && index.where.empty());
}

// Included columns follow those of the key, where a query finds them as well; a unique index must do without.
static void my_read_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, const KT_vhash *facts,
                         client_server_index &index) noexcept
{
    KT_varray *ids = nullptr;
    KT_varray *included_ids = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, facts, "cols", &ids));
    KT_TRY(KT_vhash__check__varray(ctx, facts, "included", &included_ids));
    if (ids)
        KT_TRY(KT_varray__count(ctx, ids, &count));
    KT_TRY(client_find_index_cols(ctx, schema, tbl_id, ids, index.cols));
    if (index.cols.size() != count)
        return index.cols.clear();
    KT_TRY(my_read_order(ctx, facts, index.cols));
    if (!index.unique)
        KT_TRY(client_find_index_cols(ctx, schema, tbl_id, included_ids, index.cols));
}

void client_read_server_index(KT_context *ctx, tov_schema *schema, const char *tbl_id, const KT_vhash *facts,
                              client_server_index &index) noexcept
{
    KT_bool unique = 0;
    const char *where = nullptr;
    bool is_for_sqlite = false;
    KT_TRY(KT_vhash__check__sz(ctx, facts, "name", &index.name));
    KT_TRY(KT_vhash__check__bool(ctx, facts, "unique", &unique));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "where", &where));
    index.unique = unique;
    if (where)
        KT_TRY(kt_contain(ctx, [&] { index.where = where; }));
    KT_TRY(my_is_for_sqlite(ctx, facts, index, &is_for_sqlite));
    if (is_for_sqlite)
        KT_TRY(my_read_cols(ctx, schema, tbl_id, facts, index));
    if (index.name && !client_may_name_index(index.name))
        index.name = nullptr;
}

bool client_may_name_index(const char *name) noexcept
{
    return !tov_find_name_flaw(name) && KT_strnicmp(name, "sqlite_", 7) != 0;
}

// A condition without the strings in it, which may look like anything.
static std::string my_without_strings(const std::string &where)
{
    std::string rest;
    for (size_t at = 0; at < where.size();) {
        const char first = where[at];
        size_t last = at;
        if (first == '[' || first == '\'')
            last = std::min(where.find(first == '[' ? ']' : '\'', at + 1), where.size() - 1);
        if (first != '\'')
            rest.append(where, at, last + 1 - at);
        at = last + 1;
    }
    return rest;
}

// The server's conditions are comparisons joined by AND, and none of them is true of NULL but IS NULL.
static bool my_excludes_null(const std::string &where, const client_index_col &col)
{
    const std::string folded = kt_folded(my_without_strings(where));
    const std::string name = kt_folded('[' + std::string(col.name) + ']');
    return folded.find(name) != std::string::npos && folded.find(name + " is null") == std::string::npos &&
           folded.find(" or ") == std::string::npos;
}

// COLLATE and the column's collation, which an expression does not take over from it. It stands in the column's
// definition, after its name and type.
static void my_find_collation(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_index_col &col,
                              std::string &collation) noexcept
{
    const char *defin = nullptr;
    KT_TRY(tov_schema__get_col_defin(ctx, schema, tbl.id, col.id, nullptr, &defin));
    kt_contain(ctx, [&] {
        collation = client_find_collation(tbl.collations, col.id);
        if (!collation.empty())
            return;
        const std::string_view rest = std::string_view(defin).substr(client_quoted(col.name).size());
        const std::string_view before = " text COLLATE ";
        if (!rest.starts_with(before))
            return;
        const std::string_view name = rest.substr(before.size());
        collation = " COLLATE " + std::string(name.substr(0, name.find(' ')));
    });
}

// One nullable column needs no part in the index, whose condition says that it is NULL. Of several each has two parts,
// so that NULL is told apart from every value.
static void my_append_parts(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_index_cols &key,
                            size_t nullable_count, std::string &parts) noexcept
{
    kt_contain(ctx, [&] {
        for (const client_index_col &col : key) {
            const std::string name = client_quoted(col.name);
            std::string collation;
            if (col.nullable && nullable_count == 1 && key.size() > 1)
                continue;
            if (!col.nullable || nullable_count == 1) {
                parts += (parts.empty() ? "" : ", ") + name + (col.nullable ? " IS NULL" : "");
                continue;
            }
            KT_TRY(my_find_collation(ctx, schema, tbl, col, collation));
            parts += parts.empty() ? "" : ", ";
            parts.append(name).append(" IS NULL, ifnull(").append(name).append(", 0)").append(collation);
        }
    });
}

void client_make_null_index(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const client_index_cols &key,
                            const std::string &where, client_index &index) noexcept
{
    kt_contain(ctx, [&] {
        client_index_cols cols = key;
        std::string condition;
        size_t nullable_count = 0;
        for (client_index_col &col : cols) {
            col.nullable = col.nullable && !my_excludes_null(where, col);
            if (!col.nullable)
                continue;
            nullable_count++;
            condition += (condition.empty() ? "" : " OR ") + client_quoted(col.name) + " IS NULL";
        }
        if (nullable_count == 0)
            return;
        index.is_unique = true;
        index.where = where.empty() ? condition : '(' + where + ") AND (" + condition + ')';
        KT_TRY(my_append_parts(ctx, schema, tbl, cols, nullable_count, index.parts));
    });
}
