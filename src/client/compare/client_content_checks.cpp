// Checks and indexes of a table. The ids of checks of columns and indexes say nothing.
#include "compare/client_content_parts.hpp"

#include <algorithm>

#define KT_HERE "src/client/compare/client_content_checks"

// A check of a column and one of the table are the same: which it is says nothing but how many columns it names.
static void my_add_check(client_tbl_reading &reading, const char *name, const char *expression)
{
    client_part part{client_part_kind::check, "", ""};
    client_name_part(reading, "CK", client_names_in(expression), name, part);
    client_add_expression(reading, part.facts, client_fact_kind::expression, expression);
    reading.tbl.parts.push_back(std::move(part));
}

static void my_read_checks_of(KT_context *ctx, client_tbl_reading &reading, const KT_vhash *col)
{
    KT_varray *checks = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, col, "check", &checks));
    if (checks)
        KT_TRY(KT_varray__count(ctx, checks, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *check = nullptr;
        const char *name = nullptr;
        const char *expression = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, checks, n, &check));
        KT_TRY(KT_vhash__check__sz(ctx, check, "name", &name));
        KT_TRY(KT_vhash__get__sz(ctx, check, "expr", &expression));
        my_add_check(reading, name, expression);
    }
}

// Each value of a map of a table is a map itself; the module has checked the document's shape.
using record_taker = void (*)(KT_context *ctx, client_tbl_reading &reading, const char *id, const KT_vhash *record);

static void my_each_record(KT_context *ctx, client_tbl_reading &reading, const char *member, record_taker take)
{
    const KT_vhash *document = nullptr;
    KT_vhash *map = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__get_document(ctx, reading.schema, &document));
    KT_TRY(KT_vhash__get__vhash(ctx, document, "tbls", &map));
    KT_TRY(KT_vhash__get__vhash(ctx, map, reading.tbl.id.c_str(), &map));
    KT_TRY(KT_vhash__check__vhash(ctx, map, member, &map));
    if (map)
        KT_TRY(KT_vhash__count(ctx, map, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, map, n, &id, &record));
        KT_TRY(take(ctx, reading, id, record));
    }
}

static void my_take_tbl_check(KT_context *ctx, client_tbl_reading &reading, const char *id, const KT_vhash *record)
{
    const char *expression = nullptr;
    KT_TRY(KT_vhash__get__sz(ctx, record, "expr", &expression));
    my_add_check(reading, id, expression);
}

static void my_take_col(KT_context *ctx, client_tbl_reading &reading, const char *, const KT_vhash *record)
{
    KT_TRY(my_read_checks_of(ctx, reading, record));
}

void client_read_checks(KT_context *ctx, client_tbl_reading &reading)
{
    KT_TRY(my_each_record(ctx, reading, "cols", my_take_col));
    KT_TRY(my_each_record(ctx, reading, "check", my_take_tbl_check));
}

static void my_read_index(KT_context *ctx, client_tbl_reading &reading, const KT_vhash *facts)
{
    const char *name = nullptr;
    const char *filter = nullptr;
    const char *where = nullptr;
    KT_varray *ids = nullptr;
    KT_varray *descending = nullptr;
    KT_varray *included = nullptr;
    std::vector<std::string> cols;
    std::vector<std::string> included_cols;
    KT_TRY(KT_vhash__check__sz(ctx, facts, "name", &name));
    KT_TRY(KT_vhash__check__varray(ctx, facts, "cols", &ids));
    KT_TRY(KT_vhash__check__varray(ctx, facts, "descending", &descending));
    KT_TRY(KT_vhash__check__varray(ctx, facts, "included", &included));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "filter", &filter));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "where", &where));
    KT_TRY(client_find_col_names(ctx, reading, ids, cols));
    KT_TRY(client_find_col_names(ctx, reading, included, included_cols));
    client_part part{client_part_kind::index, name ? name : "", ""};
    KT_TRY(client_add_cols(ctx, reading, cols, descending, part.facts, client_fact_kind::cols));
    KT_TRY(client_add_flag_of(ctx, facts, "unique", part.facts, client_fact_kind::unique));
    KT_TRY(client_add_flag_of(ctx, facts, "clustered", part.facts, client_fact_kind::clustered));
    KT_TRY(client_add_flag_of(ctx, facts, "disabled", part.facts, client_fact_kind::disabled));
    KT_TRY(client_add_text_of(ctx, facts, "kind", part.facts, client_fact_kind::index_kind));
    std::sort(included_cols.begin(), included_cols.end()); // their order says nothing
    KT_TRY(client_add_cols(ctx, reading, included_cols, nullptr, part.facts, client_fact_kind::included));
    client_add_expression(reading, part.facts, client_fact_kind::filter, filter);
    client_add_expression(reading, part.facts, client_fact_kind::where, where);
    KT_TRY(client_add_flag_of(ctx, facts, "left_out", part.facts, client_fact_kind::left_out));
    reading.tbl.parts.push_back(std::move(part));
}

void client_read_indexes(KT_context *ctx, client_tbl_reading &reading)
{
    KT_varray *indexes = nullptr;
    uint32_t count = 0;
    if (reading.server && reading.tbl.has_facts)
        KT_TRY(KT_vhash__check__varray(ctx, reading.server, "indexes", &indexes));
    if (indexes)
        KT_TRY(KT_varray__count(ctx, indexes, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *facts = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, indexes, n, &facts));
        KT_TRY(my_read_index(ctx, reading, facts));
    }
}
