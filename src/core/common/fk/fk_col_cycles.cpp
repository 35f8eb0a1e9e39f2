// Cycles of integer key columns, as the search for a column's identity root would follow them.
//
// That search follows a column's references one after another until one of them leads to a root, so each column that
// it goes on from without end has exactly one reference that does it, and the cycles share no column. The search here
// goes the same way, but remembers what became of every column. A column and an id of its in other letter case have
// one rank in the answer.

#include "document/document_ids.hpp"
#include "fk/fk_col_refs.hpp"
#include "fk/fk_cycles.hpp"
#include "fk/fk_group.hpp"
#include "fk/fk_types.hpp"

namespace {

// A column on the way, and which of its references are still to be followed.
struct my_step {
    uint32_t col;
    bool col_level_is_done;
    uint32_t next_pair;
    uint32_t end_pair;
};

struct my_search {
    my_search(KT_context *ctx, tov_schema *schema, const fk_graph *graph) noexcept
        : refs(ctx, schema, graph), path(ctx), members(ctx), first_member(ctx)
    {
    }
    fk_col_refs refs;
    fk_array<my_step> path;
    fk_array<uint32_t> members; // the cycles' columns, one cycle after another
    fk_array<uint32_t> first_member;
};

} // namespace

// What the type of a column says of it: a root, the end of a way, or unknown where its references decide.
static void my_judge_type(KT_context *ctx, const KT_vhash *record, fk_verdict *verdict) noexcept
{
    KT_vhash *type = nullptr;
    const char *name = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, record, "type", &type));
    if (type)
        KT_TRY(KT_vhash__check__sz(ctx, type, "name", &name));
    *verdict = fk_is_identity(name)      ? fk_verdict::root
               : fk_is_integer_key(name) ? fk_verdict::unknown
                                         : fk_verdict::no_root;
}

// Goes on to a column, or finds out that the way ends there.
static void my_step_onto(KT_context *ctx, my_search *s, uint32_t number) noexcept
{
    fk_col *col = &s->refs.cols[number];
    KT_TRY(my_judge_type(ctx, col->record, &col->verdict));
    if (col->verdict != fk_verdict::unknown)
        return;
    my_step step = {number, false, 0, 0};
    const uint32_t owner = fk_find_name(s->refs.referencing, col->tbl, col->id);
    if (owner != FK_NO_NUMBER) {
        step.next_pair = s->refs.first_pair[owner];
        step.end_pair = s->refs.first_pair[owner + 1];
    }
    col->verdict = fk_verdict::on_path;
    KT_TRY(fk_append(ctx, &s->path, step));
}

// Follows the next reference of the last column on the path: the column-level key first, then the pairs it belongs to.
// None is left when more is false; the reference leads nowhere when to stays FK_NO_NUMBER.
static void my_follow_next(KT_context *ctx, my_search *s, bool *more, uint32_t *to) noexcept
{
    my_step *step = &s->path[s->path.count - 1];
    fk_col_pair next = {nullptr, nullptr};
    *more = true;
    if (!step->col_level_is_done) {
        KT_bool has = 0;
        step->col_level_is_done = true;
        KT_TRY(_tov_col__get_fk(ctx, s->refs.cols[step->col].record, &has, nullptr, &next.ref_tbl_id, &next.ref_col_id,
                                nullptr, nullptr));
    } else if (step->next_pair < step->end_pair) {
        next = s->refs.pairs[step->next_pair++];
    } else {
        *more = false;
    }
    KT_TRY(fk_find_col(ctx, &s->refs, next.ref_tbl_id, next.ref_col_id, to));
}

static void my_note_cycle(KT_context *ctx, my_search *s, uint32_t first) noexcept
{
    uint32_t step = s->path.count;
    do
        step--;
    while (s->path[step].col != first);
    KT_TRY(fk_append(ctx, &s->first_member, s->members.count));
    for (; step < s->path.count; step++)
        KT_TRY(fk_append(ctx, &s->members, s->path[step].col));
}

// The first root found, or a way without end, is the answer for every column on the path.
static void my_leave_path(my_search *s, fk_verdict verdict) noexcept
{
    while (s->path.count)
        s->refs.cols[s->path[--s->path.count].col].verdict = verdict;
}

static void my_search_from(KT_context *ctx, my_search *s, uint32_t start) noexcept
{
    KT_TRY(my_step_onto(ctx, s, start));
    while (s->path.count) {
        bool more = false;
        uint32_t to = FK_NO_NUMBER;
        KT_TRY(my_follow_next(ctx, s, &more, &to));
        if (!more)
            s->refs.cols[s->path[--s->path.count].col].verdict = fk_verdict::no_root;
        if (to == FK_NO_NUMBER)
            continue;
        if (s->refs.cols[to].verdict == fk_verdict::on_path) {
            KT_TRY(my_note_cycle(ctx, s, to));
            my_leave_path(s, fk_verdict::endless);
            continue;
        }
        if (s->refs.cols[to].verdict == fk_verdict::unknown)
            KT_TRY(my_step_onto(ctx, s, to));
        if (s->refs.cols[to].verdict == fk_verdict::root || s->refs.cols[to].verdict == fk_verdict::endless)
            my_leave_path(s, s->refs.cols[to].verdict);
    }
}

// The place of a column in the schema: its number under the id that it is stored with, if it refers to anything.
static void my_get_rank(KT_context *ctx, const my_search *s, uint32_t number, uint32_t *rank) noexcept
{
    const fk_col &col = s->refs.cols[number];
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col.id, &room, &key));
    const uint32_t stored = fk_find_name(s->refs.col_numbers, reinterpret_cast<uintptr_t>(col.record), key);
    *rank = stored != FK_NO_NUMBER ? stored : number;
}

// Where in members each cycle begins in the answer: at its first column in schema order.
static void my_find_beginnings(KT_context *ctx, const my_search *s, fk_array<uint32_t> *beginnings,
                               fk_array<uint32_t> *ranks) noexcept
{
    for (uint32_t cycle = 0; cycle + 1 < s->first_member.count; cycle++) {
        uint32_t beginning = 0;
        uint32_t lowest = UINT32_MAX;
        for (uint32_t n = s->first_member[cycle]; n < s->first_member[cycle + 1]; n++) {
            uint32_t rank = 0;
            KT_TRY(my_get_rank(ctx, s, s->members[n], &rank));
            if (rank < lowest) {
                lowest = rank;
                beginning = n;
            }
        }
        KT_TRY(fk_append(ctx, beginnings, beginning));
        KT_TRY(fk_append(ctx, ranks, lowest));
    }
}

static void my_write_member(KT_context *ctx, const my_search *s, uint32_t number, KT_varray *members) noexcept
{
    const fk_col &col = s->refs.cols[number];
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(tov_lower_id(ctx, col.id, &room, &key));
    KT_TRY(KT_varray__appendnew__vhash(ctx, members, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", s->refs.graph->ids.names[col.tbl].text));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "col", key));
}

static void my_write_cycle(KT_context *ctx, const my_search *s, uint32_t cycle, uint32_t beginning,
                           kt_owned_varray *records) noexcept
{
    KT_varray *members = nullptr;
    KT_TRY(fk_append_cycle(ctx, "cols", records, &members));
    for (uint32_t n = beginning; n < s->first_member[cycle + 1]; n++)
        KT_TRY(my_write_member(ctx, s, s->members[n], members));
    for (uint32_t n = s->first_member[cycle]; n < beginning; n++)
        KT_TRY(my_write_member(ctx, s, s->members[n], members));
}

static void my_write_cycles(KT_context *ctx, my_search *s, kt_owned_varray *records) noexcept
{
    fk_array<uint32_t> beginnings{ctx};
    fk_array<uint32_t> ranks{ctx};
    fk_array<uint32_t> order{ctx};
    KT_TRY(fk_append(ctx, &s->first_member, s->members.count));
    KT_TRY(my_find_beginnings(ctx, s, &beginnings, &ranks));
    for (uint32_t cycle = 0; cycle < beginnings.count; cycle++)
        KT_TRY(fk_append(ctx, &order, cycle));
    KT_TRY(fk_sort_by(ctx, ranks, s->refs.cols.count, &order));
    for (uint32_t n = 0; n < order.count; n++)
        KT_TRY(my_write_cycle(ctx, s, order[n], beginnings[order[n]], records));
}

void fk_find_col_cycles(KT_context *ctx, tov_schema *schema, const fk_graph &graph, kt_owned_varray *records) noexcept
{
    my_search search{ctx, schema, &graph};
    KT_TRY(fk_read_col_refs(ctx, &search.refs));
    for (uint32_t number = 0; number < search.refs.cols.count; number++) {
        if (search.refs.cols[number].verdict == fk_verdict::unknown)
            KT_TRY(my_search_from(ctx, &search, number));
    }
    KT_TRY(my_write_cycles(ctx, &search, records));
}
