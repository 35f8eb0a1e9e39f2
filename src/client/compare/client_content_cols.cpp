// The columns of a table: those that the server has, where the document says it, and those that SQLite has.
#include "compare/client_content_parts.hpp"
#include "guide/client_guide.hpp"
#include "kt_folded.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <algorithm>

#define KT_HERE "src/client/compare/client_content_cols"

// The type of a column's values in SQLite with all its members: decimal(precision 9, scale 2). Flags that are not set
// are as good as absent; the name of an identity column's key is a fact of the key.
static void my_describe_type(KT_context *ctx, const KT_vhash *type, std::string &text)
{
    const char *name = nullptr;
    uint32_t count = 0;
    std::vector<std::string> members;
    KT_TRY(KT_vhash__check__sz(ctx, type, "name", &name));
    KT_TRY(KT_vhash__count(ctx, type, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, type, n, &key, &value));
        const std::string_view member = key;
        if (member == "name" || member == "constraint_name")
            continue;
        if (value->type == KT_VARIANT_BOOL && value->as.boolean)
            members.emplace_back(member);
        else if (value->type == KT_VARIANT_INT64 && (value->as.int64 != 0 || member != "width"))
            members.push_back(std::string(member) + ' ' + std::to_string(value->as.int64));
        const char *string = nullptr;
        if (value->type == KT_VARIANT_STRING)
            KT_TRY(KT_variant__get__sz(ctx, value, &string));
        if (string)
            members.push_back(std::string(member) + ' ' + string);
    }
    std::sort(members.begin(), members.end());
    text = name ? name : "";
    for (size_t n = 0; n < members.size(); n++)
        text += (n ? ", " : " (") + members[n];
    text += members.empty() ? "" : ")";
}

// The columns of the table in the document; null where it has none.
static void my_find_cols(KT_context *ctx, const client_tbl_reading &reading, KT_vhash **cols)
{
    const KT_vhash *document = nullptr;
    KT_vhash *tbl = nullptr;
    KT_TRY(tov_schema__get_document(ctx, reading.schema, &document));
    KT_TRY(KT_vhash__get__vhash(ctx, document, "tbls", &tbl));
    KT_TRY(KT_vhash__get__vhash(ctx, tbl, reading.tbl.id.c_str(), &tbl));
    KT_TRY(KT_vhash__check__vhash(ctx, tbl, "cols", cols));
}

// What SQLite's table has of it.
static void my_add_stored(KT_context *ctx, const client_tbl_reading &reading, const KT_vhash *cols, const char *col_id,
                          client_part &col)
{
    const char *tbl_id = reading.tbl.id.c_str();
    KT_vhash *record = nullptr;
    KT_vhash *type = nullptr;
    std::string stored_as;
    KT_bool notnull = 0;
    KT_bool has = 0;
    const char *default_name = nullptr;
    const char *defval = nullptr;
    KT_TRY(KT_vhash__get__vhash(ctx, cols, col_id, &record));
    KT_TRY(KT_vhash__get__vhash(ctx, record, "type", &type));
    KT_TRY(my_describe_type(ctx, type, stored_as));
    client_add_fact(col.facts, client_fact_kind::stored_as, stored_as);
    KT_TRY(tov_schema__get_colcon_notnull(ctx, reading.schema, tbl_id, col_id, &notnull, nullptr));
    client_add_fact(col.facts, client_fact_kind::stored_nullable, notnull ? "yes" : "");
    KT_TRY(tov_schema__get_colcon_defval(ctx, reading.schema, tbl_id, col_id, &has, &default_name, &defval));
    if (has && default_name && !client_is_servers_name(default_name))
        client_add_fact(col.facts, client_fact_kind::default_name, default_name, kt_folded(default_name));
    if (has)
        client_add_expression(reading, col.facts, client_fact_kind::stored_default, defval);
}

static void my_add_identity(KT_context *ctx, const KT_vhash *facts, client_part &col)
{
    KT_varray *identity = nullptr;
    const char *seed = nullptr;
    const char *increment = nullptr;
    KT_TRY(KT_vhash__check__varray(ctx, facts, "identity", &identity));
    if (!identity)
        return;
    KT_TRY(KT_varray__get__sz(ctx, identity, 0, &seed));
    KT_TRY(KT_varray__get__sz(ctx, identity, 1, &increment));
    client_add_fact(col.facts, client_fact_kind::identity, std::string(seed) + ", " + increment);
}

// Not every source knows the type of what the server computes.
static void my_add_declared(KT_context *ctx, const KT_vhash *facts, const client_row_col &row_col, client_part &col)
{
    const char *type_name = nullptr;
    KT_TRY(KT_vhash__get__sz(ctx, facts, "type", &type_name));
    client_add_fact(col.facts, client_fact_kind::type, client_declared_type_text({row_col.server_type, type_name}));
    KT_TRY(client_add_text_of(ctx, facts, "user_type", col.facts, client_fact_kind::alias_type));
    KT_TRY(client_add_text_of(ctx, facts, "collation", col.facts, client_fact_kind::collation));
    KT_TRY(client_add_flag_of(ctx, facts, "nullable", col.facts, client_fact_kind::nullable));
}

// What the server says of it.
static void my_add_server_facts(KT_context *ctx, const client_tbl_reading &reading, const KT_vhash *facts,
                                const client_row_col &row_col, client_part &col)
{
    const char *defval = nullptr;
    const char *computed = nullptr;
    if (!row_col.computed)
        KT_TRY(my_add_declared(ctx, facts, row_col, col));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "default", &defval));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "computed", &computed));
    client_add_expression(reading, col.facts, client_fact_kind::defval, defval);
    KT_TRY(my_add_identity(ctx, facts, col));
    client_add_expression(reading, col.facts, client_fact_kind::computed, computed);
    KT_TRY(client_add_number_of(ctx, facts, "generated", col.facts, client_fact_kind::generated));
    KT_TRY(client_add_flag_of(ctx, facts, "hidden", col.facts, client_fact_kind::hidden));
    KT_TRY(client_add_flag_of(ctx, facts, "rowguidcol", col.facts, client_fact_kind::rowguidcol));
    KT_TRY(client_add_flag_of(ctx, facts, "sparse", col.facts, client_fact_kind::sparse));
    KT_TRY(client_add_text_of(ctx, facts, "description", col.facts, client_fact_kind::description));
}

static void my_read_col(KT_context *ctx, client_tbl_reading &reading, const KT_vhash *cols, const KT_vhash *facts,
                        const client_row_col &row_col)
{
    client_part col{client_part_kind::col, row_col.name, row_col.col_id};
    const char *server_name = nullptr;
    if (facts) {
        KT_TRY(KT_vhash__get__sz(ctx, facts, "name", &server_name));
        KT_TRY(my_add_server_facts(ctx, reading, facts, row_col, col));
        col.name = server_name;
    }
    if (!row_col.stored)
        client_add_fact(col.facts, client_fact_kind::left_out, "yes");
    else
        KT_TRY(my_add_stored(ctx, reading, cols, row_col.col_id.c_str(), col));
    col.sqlite_name = row_col.stored ? row_col.name : "";
    if (facts && row_col.stored)
        client_add_fact(col.facts, client_fact_kind::name_in_sqlite, row_col.name);
    reading.tbl.cols.push_back(std::move(col));
}

void client_read_cols(KT_context *ctx, client_tbl_reading &reading)
{
    client_row_tbl row_tbl;
    KT_vhash *cols = nullptr;
    KT_varray *list = nullptr;
    KT_TRY(my_find_cols(ctx, reading, &cols));
    KT_TRY(client_read_row_tbl(ctx, reading.schema, reading.tbl.id.c_str(), row_tbl));
    reading.tbl.has_facts = row_tbl.has_facts;
    if (row_tbl.has_facts) {
        KT_TRY(KT_vhash__check__varray(ctx, reading.server, "cols", &list));
        client_add_fact(reading.tbl.facts, client_fact_kind::name_in_sqlite, reading.tbl.sqlite_name);
    }
    for (size_t n = 0; n < row_tbl.cols.size(); n++) {
        KT_vhash *facts = nullptr;
        if (list)
            KT_TRY(KT_varray__get__vhash(ctx, list, static_cast<uint32_t>(n), &facts));
        KT_TRY(my_read_col(ctx, reading, cols, facts, row_tbl.cols[n]));
        reading.col_names[kt_folded(row_tbl.cols[n].col_id)] = row_tbl.cols[n].name;
    }
}
