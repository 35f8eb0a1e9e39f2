// The references between tables as numbers; see the header.

#include "fk/fk_graph.hpp"

#include "document/document_ids.hpp"
#include "fk/fk_walk.hpp"

static void my_number_tbls(KT_context *ctx, tov_schema *schema, fk_graph *graph) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        uint32_t number = 0;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id));
        KT_TRY(fk_add_name(ctx, &graph->ids, 0, tbl_id, &number));
    }
    KT_TRY(fk_append_many(ctx, &graph->refers, count, false));
    KT_TRY(fk_append_many(ctx, &graph->refers_to_itself, count, false));
}

void fk_find_tbl(KT_context *ctx, const fk_graph &graph, fk_match match, const char *tbl_id,
                 uint32_t *position) noexcept
{
    tov_id_room room{ctx};
    if (match == fk_match::like_a_lookup)
        KT_TRY(tov_lower_id(ctx, tbl_id, &room, &tbl_id));
    *position = fk_find_name(graph.ids, 0, tbl_id);
}

static void my_add_reference(KT_context *ctx, fk_graph *graph, fk_match match, uint32_t from,
                             const fk_key &key) noexcept
{
    KT_TRY(fk_need_ref_tbl(ctx, key));
    graph->refers[from] = true;
    if (KT_stricmp(key.ref_tbl_id, key.tbl_id) == 0) {
        graph->refers_to_itself[from] = true;
        return;
    }
    uint32_t to = FK_NO_NUMBER;
    KT_TRY(fk_find_tbl(ctx, *graph, match, key.ref_tbl_id, &to));
    if (to != FK_NO_NUMBER && to != from)
        KT_TRY(fk_append(ctx, &graph->arcs.to, to));
}

void fk_read_graph(KT_context *ctx, tov_schema *schema, fk_match match, fk_graph *graph) noexcept
{
    fk_walk walk = {.schema = schema, .col_fields = FK_REF_TBL_ID};
    fk_key key;
    KT_TRY(my_number_tbls(ctx, schema, graph));
    KT_TRY(fk_append(ctx, &graph->arcs.first, 0));
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        const uint32_t reached = key.tbl_id ? walk.tbl_n : graph->ids.names.count;
        while (graph->arcs.count() < reached)
            KT_TRY(fk_append(ctx, &graph->arcs.first, graph->arcs.to.count));
        if (!key.tbl_id)
            return;
        KT_TRY(my_add_reference(ctx, graph, match, walk.tbl_n, key));
    }
}

void fk_reverse_arcs(KT_context *ctx, const fk_arcs &arcs, fk_arcs *reversed) noexcept
{
    const uint32_t count = arcs.count();
    KT_TRY(fk_append_many(ctx, &reversed->first, count + 1, 0));
    KT_TRY(fk_append_many(ctx, &reversed->to, arcs.to.count, 0));
    // first[p] is the end of p's list until the lists are filled, from the back.
    for (uint32_t n = 0; n < arcs.to.count; n++)
        reversed->first[arcs.to[n]]++;
    for (uint32_t p = 1; p <= count; p++)
        reversed->first[p] += reversed->first[p - 1];
    for (uint32_t p = count; p-- > 0;) {
        for (uint32_t n = arcs.first[p + 1]; n-- > arcs.first[p];)
            reversed->to[--reversed->first[arcs.to[n]]] = p;
    }
}
