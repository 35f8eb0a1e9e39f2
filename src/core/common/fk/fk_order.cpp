// The order in which tables can be created and filled: every table after the tables that it refers to.
//
// What is answered is the outcome of repeated passes over the tables in schema order. A table enters in the first
// pass if it has no foreign key or refers to itself, and else in the pass, and at its place within it, in which one
// of the tables it refers to has entered. A pass raises a table above the entered tables that it refers to, and the
// passes end after one that changed nothing; a table entering only because it refers to itself is not a change.
// Tables are listed by level and, within one, in the order in which they entered.
//
// Passes need not be run for that. Which pass a table enters in is a shortest path: a table after the one it waits
// for enters in the same pass, a table before it in the next. The levels that stay are longest paths. Both take time
// linear in the number of references.

#include "fk/fk_graph.hpp"
#include "fk/fk_group.hpp"

// A schema keeps its order as positions until a table, a column or a key comes or goes.
struct tov_fk_order {
    uint64_t reference_change_count; // of the schema that it describes
    uint32_t *tbls;
    uint32_t count;
};

static constexpr uint32_t NEVER = 0;

namespace {

struct my_order {
    explicit my_order(KT_context *ctx) noexcept : pass(ctx), level(ctx), tbls(ctx)
    {
    }
    fk_array<uint32_t> pass;  // in which a table enters, from 1; NEVER
    fk_array<uint32_t> level; // of a table that enters
    fk_array<uint32_t> tbls;  // those that enter
};

} // namespace

static bool my_enters_unasked(const fk_graph &graph, uint32_t tbl) noexcept
{
    return !graph.refers[tbl] || graph.refers_to_itself[tbl];
}

// Whether the first pass changes anything: a table without foreign keys enters, or one is raised above a table that
// entered before it in this pass. The first one raised refers to a table that entered unasked.
static bool my_does_first_pass_change(const fk_graph &graph) noexcept
{
    const fk_arcs &arcs = graph.arcs;
    for (uint32_t tbl = 0; tbl < arcs.count(); tbl++) {
        if (!graph.refers[tbl])
            return true;
        for (uint32_t n = arcs.first[tbl]; n < arcs.first[tbl + 1]; n++) {
            if (arcs.to[n] < tbl && my_enters_unasked(graph, arcs.to[n]))
                return true;
        }
    }
    return false;
}

// Lets the tables enter that wait for one that entered in this pass: those after it in this pass too, those before it
// in the next.
static void my_enter_dependents(KT_context *ctx, const fk_arcs &dependents, uint32_t tbl, my_order *order,
                                fk_array<uint32_t> *now, fk_array<uint32_t> *next) noexcept
{
    const uint32_t pass = order->pass[tbl];
    for (uint32_t n = dependents.first[tbl]; n < dependents.first[tbl + 1]; n++) {
        const uint32_t dependent = dependents.to[n];
        uint32_t *dependent_pass = &order->pass[dependent];
        if (dependent > tbl && (*dependent_pass == NEVER || *dependent_pass > pass)) {
            *dependent_pass = pass;
            KT_TRY(fk_append(ctx, now, dependent));
        } else if (*dependent_pass == NEVER) {
            *dependent_pass = pass + 1;
            KT_TRY(fk_append(ctx, next, dependent));
        }
    }
}

static void my_enter_unasked(KT_context *ctx, const fk_graph &graph, my_order *order, fk_array<uint32_t> *now) noexcept
{
    KT_TRY(fk_append_many(ctx, &order->pass, graph.arcs.count(), NEVER));
    for (uint32_t tbl = 0; tbl < graph.arcs.count(); tbl++) {
        if (!my_enters_unasked(graph, tbl))
            continue;
        order->pass[tbl] = 1;
        KT_TRY(fk_append(ctx, now, tbl));
    }
}

static void my_enter_all(KT_context *ctx, const fk_arcs &dependents, my_order *order, fk_array<uint32_t> *now) noexcept
{
    fk_array<uint32_t> next{ctx};
    while (now->count) {
        while (now->count)
            KT_TRY(my_enter_dependents(ctx, dependents, (*now)[--now->count], order, now, &next));
        // Those of them that came in before their turn are looked at twice, to no effect.
        fk_move(&next, now);
    }
}

// Where tables that have entered refer to each other in a cycle, every pass raises them. By contract the passes then
// go on without end; callers that cannot rule this out look for cycles first.
static void my_raise_by_passes(KT_context *ctx, const fk_arcs &arcs, const my_order &order) noexcept
{
    fk_array<uint64_t> level{ctx};
    KT_TRY(fk_append_many(ctx, &level, arcs.count(), 0));
    // Volatile, because compilers may take it that a loop without visible effects ends.
    volatile bool changed = true;
    while (changed) {
        changed = false;
        for (uint32_t tbl = 0; tbl < arcs.count(); tbl++) {
            for (uint32_t n = arcs.first[tbl]; n < arcs.first[tbl + 1]; n++) {
                if (order.pass[arcs.to[n]] != NEVER && level[arcs.to[n]] + 1 > level[tbl]) {
                    level[tbl] = level[arcs.to[n]] + 1;
                    changed = true;
                }
            }
        }
    }
}

// Settles each table's level once all the entered tables that it refers to have theirs.
static void my_settle_levels(KT_context *ctx, const fk_arcs &arcs, const fk_arcs &dependents, my_order *order) noexcept
{
    fk_array<uint32_t> waits_for{ctx};
    fk_array<uint32_t> settled{ctx};
    KT_TRY(fk_append_many(ctx, &waits_for, arcs.count(), 0));
    KT_TRY(fk_reserve(ctx, &settled, order->tbls.count));
    for (uint32_t n = 0; n < order->tbls.count; n++) {
        const uint32_t tbl = order->tbls[n];
        for (uint32_t arc = arcs.first[tbl]; arc < arcs.first[tbl + 1]; arc++)
            waits_for[tbl] += order->pass[arcs.to[arc]] != NEVER;
        if (!waits_for[tbl])
            KT_TRY(fk_append(ctx, &settled, tbl));
    }
    for (uint32_t n = 0; n < settled.count; n++) {
        const uint32_t tbl = settled[n];
        for (uint32_t arc = dependents.first[tbl]; arc < dependents.first[tbl + 1]; arc++) {
            const uint32_t dependent = dependents.to[arc];
            if (order->level[dependent] < order->level[tbl] + 1)
                order->level[dependent] = order->level[tbl] + 1;
            // A table that refers to one that has entered has entered too.
            if (--waits_for[dependent] == 0)
                KT_TRY(fk_append(ctx, &settled, dependent));
        }
    }
    if (settled.count < order->tbls.count)
        KT_TRY(my_raise_by_passes(ctx, arcs, *order));
}

static void my_list_entered(KT_context *ctx, my_order *order) noexcept
{
    for (uint32_t tbl = 0; tbl < order->pass.count; tbl++) {
        if (order->pass[tbl] != NEVER)
            KT_TRY(fk_append(ctx, &order->tbls, tbl));
    }
    KT_TRY(fk_sort_by(ctx, order->pass, order->pass.count, &order->tbls));
}

static void my_find_order(KT_context *ctx, const fk_graph &graph, my_order *order) noexcept
{
    fk_arcs dependents{ctx};
    fk_array<uint32_t> now{ctx};
    const bool goes_on = my_does_first_pass_change(graph);
    KT_TRY(fk_reverse_arcs(ctx, graph.arcs, &dependents));
    KT_TRY(my_enter_unasked(ctx, graph, order, &now));
    if (goes_on)
        KT_TRY(my_enter_all(ctx, dependents, order, &now));
    KT_TRY(my_list_entered(ctx, order));
    KT_TRY(fk_append_many(ctx, &order->level, graph.arcs.count(), 0));
    if (goes_on)
        KT_TRY(my_settle_levels(ctx, graph.arcs, dependents, order));
    KT_TRY(fk_sort_by(ctx, order->level, order->level.count, &order->tbls));
}

void _tov_fk_order__free(KT_context *ctx, tov_fk_order *order) noexcept
{
    if (!order)
        return;
    _kt_free(ctx, order->tbls);
    _kt_free(ctx, order);
}

using my_owned_order = kt_owned<tov_fk_order, _tov_fk_order__free>;

static void my_make_order(KT_context *ctx, tov_schema *schema, my_owned_order *made) noexcept
{
    fk_graph graph{ctx};
    my_order order{ctx};
    void *block = nullptr;
    KT_TRY(fk_read_graph(ctx, schema, fk_match::exactly, &graph));
    KT_TRY(my_find_order(ctx, graph, &order));
    if (order.tbls.count < graph.arcs.count())
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "Foreign key constraints create a circular dependency among tables.");
    KT_TRY(_kt_malloc(ctx, sizeof(tov_fk_order), &block));
    auto *whole = new (block) tov_fk_order{schema->reference_change_count, nullptr, order.tbls.count};
    order.tbls.items.move_to(&whole->tbls);
    *made->out() = whole;
}

static void my_list_ids(KT_context *ctx, tov_schema *schema, const tov_fk_order &order, KT_varray **tbl_ids) noexcept
{
    kt_owned_varray list{ctx};
    KT_TRY(KT_varray__alloc(ctx, list.out()));
    for (uint32_t n = 0; n < order.count; n++) {
        const char *tbl_id = nullptr;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, order.tbls[n], &tbl_id));
        KT_TRY(KT_varray__append__string__sz(ctx, list, tbl_id));
    }
    list.move_to(tbl_ids);
}

void tov_schema__sort_by_references(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) noexcept
{
    KT_RETURN_IF_FAILED;
    if (schema->fk_order && schema->fk_order->reference_change_count == schema->reference_change_count) {
        KT_TRY(my_list_ids(ctx, schema, *schema->fk_order, tbl_ids));
        return;
    }
    my_owned_order order{ctx};
    KT_TRY(my_make_order(ctx, schema, &order));
    KT_TRY(my_list_ids(ctx, schema, *order.get(), tbl_ids));
    _tov_fk_order__free(ctx, std::exchange(schema->fk_order, nullptr));
    order.move_to(&schema->fk_order);
}
