// Cycles of references, of tables and of integer key columns: what makes the order of tables and the search for
// identity roots go on without end.
//
// Both answers take time linear in the size of the schema and keep their own stacks, because a chain of references
// may be as long as the schema has tables.

#include "fk/fk_cycles.hpp"

static constexpr uint32_t NONE = UINT32_MAX;

namespace {

// Tarjan's strongly connected components. A table is in a component once that is closed.
struct my_components {
    explicit my_components(KT_context *ctx) noexcept
        : met_as(ctx), lowest(ctx), component(ctx), open(ctx), path(ctx), next_arc(ctx)
    {
    }
    fk_array<uint32_t> met_as;    // by table: its number in the order of the search, NONE
    fk_array<uint32_t> lowest;    // by table: the lowest such number that it is known to lead to
    fk_array<uint32_t> component; // by table: its component's number, NONE
    fk_array<uint32_t> open;      // tables met whose component is not closed yet
    fk_array<uint32_t> path;      // the search's way down
    fk_array<uint32_t> next_arc;  // by step of the path
    uint32_t met_count = 0;
    uint32_t component_count = 0;
};

} // namespace

static void my_step_down(KT_context *ctx, const fk_arcs &arcs, uint32_t tbl, my_components *c) noexcept
{
    c->met_as[tbl] = c->lowest[tbl] = c->met_count++;
    KT_TRY(fk_append(ctx, &c->open, tbl));
    KT_TRY(fk_append(ctx, &c->path, tbl));
    KT_TRY(fk_append(ctx, &c->next_arc, arcs.first[tbl]));
}

static void my_step_up(my_components *c) noexcept
{
    const uint32_t tbl = c->path[--c->path.count];
    c->next_arc.count--;
    if (c->path.count) {
        uint32_t *lowest = &c->lowest[c->path[c->path.count - 1]];
        *lowest = *lowest < c->lowest[tbl] ? *lowest : c->lowest[tbl];
    }
    if (c->lowest[tbl] != c->met_as[tbl])
        return;
    uint32_t member = NONE;
    while (member != tbl) {
        member = c->open[--c->open.count];
        c->component[member] = c->component_count;
    }
    c->component_count++;
}

static void my_search_from(KT_context *ctx, const fk_arcs &arcs, uint32_t start, my_components *c) noexcept
{
    KT_TRY(my_step_down(ctx, arcs, start, c));
    while (c->path.count) {
        const uint32_t tbl = c->path[c->path.count - 1];
        uint32_t *arc = &c->next_arc[c->path.count - 1];
        if (*arc == arcs.first[tbl + 1]) {
            my_step_up(c);
            continue;
        }
        const uint32_t to = arcs.to[(*arc)++];
        if (c->met_as[to] == NONE)
            KT_TRY(my_step_down(ctx, arcs, to, c));
        else if (c->component[to] == NONE && c->met_as[to] < c->lowest[tbl])
            c->lowest[tbl] = c->met_as[to];
    }
}

static void my_find_components(KT_context *ctx, const fk_arcs &arcs, my_components *c) noexcept
{
    KT_TRY(fk_append_many(ctx, &c->met_as, arcs.count(), NONE));
    KT_TRY(fk_append_many(ctx, &c->lowest, arcs.count(), NONE));
    KT_TRY(fk_append_many(ctx, &c->component, arcs.count(), NONE));
    for (uint32_t tbl = 0; tbl < arcs.count(); tbl++) {
        if (c->met_as[tbl] == NONE)
            KT_TRY(my_search_from(ctx, arcs, tbl, c));
    }
}

void fk_append_cycle(KT_context *ctx, const char *key, kt_owned_varray *records, KT_varray **members) noexcept
{
    KT_vhash *record = nullptr;
    if (!records->get())
        KT_TRY(KT_varray__alloc(ctx, records->out()));
    KT_TRY(KT_varray__appendnew__vhash(ctx, *records, &record));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, key, members));
}

static void my_write_tbl_cycles(KT_context *ctx, const fk_graph &graph, const my_components &c,
                                kt_owned_varray *records) noexcept
{
    fk_array<uint32_t> sizes{ctx};
    fk_array<KT_varray *> members{ctx};
    KT_TRY(fk_append_many(ctx, &sizes, c.component_count, 0));
    KT_TRY(fk_append_many(ctx, &members, c.component_count, nullptr));
    for (uint32_t tbl = 0; tbl < c.component.count; tbl++)
        sizes[c.component[tbl]]++;
    for (uint32_t tbl = 0; tbl < c.component.count; tbl++) {
        const uint32_t component = c.component[tbl];
        if (sizes[component] == 1)
            continue;
        if (!members[component])
            KT_TRY(fk_append_cycle(ctx, "tbls", records, &members[component]));
        KT_TRY(KT_varray__append__string__sz(ctx, members[component], graph.ids.names[tbl].text));
    }
}

static void my_find_tbl_cycles(KT_context *ctx, const fk_graph &graph, kt_owned_varray *records) noexcept
{
    my_components components{ctx};
    KT_TRY(my_find_components(ctx, graph.arcs, &components));
    KT_TRY(my_write_tbl_cycles(ctx, graph, components, records));
}

void tov_schema__find_reference_cycles(KT_context *ctx, tov_schema *schema, KT_varray **tbl_cycles,
                                       KT_varray **col_cycles) noexcept
{
    fk_graph graph{ctx};
    kt_owned_varray tbl_records{ctx};
    kt_owned_varray col_records{ctx};
    KT_TRY(fk_read_graph(ctx, schema, fk_match::like_a_lookup, &graph));
    if (tbl_cycles)
        KT_TRY(my_find_tbl_cycles(ctx, graph, &tbl_records));
    if (col_cycles)
        KT_TRY(fk_find_col_cycles(ctx, schema, graph, &col_records));
    if (tbl_cycles)
        tbl_records.move_to(tbl_cycles);
    if (col_cycles)
        col_records.move_to(col_cycles);
}
