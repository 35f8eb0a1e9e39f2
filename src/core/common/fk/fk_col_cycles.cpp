// Cycles of integer key columns, as the search for a column's identity root would follow them.
//
// That search follows a column's references one after another until one of them leads to a root, so each column that
// it goes on from without end has exactly one reference that does it, and the cycles share no column. The search here
// goes the same way, but remembers what became of every column.
//
// A column is met under the id that a reference writes, in any case. The pairs of table-level keys are compared with
// that id exactly, so a column and an id of its in other letter case may go different ways: they count as two here,
// and have one rank in the answer.

#include "document/document_ids.hpp"
#include "fk/fk_cycles.hpp"
#include "fk/fk_types.hpp"
#include "fk/fk_walk.hpp"

namespace {

enum class my_verdict : uint8_t { unknown, on_path, no_root, root, endless };

// A column under an id that leads to it.
struct my_col {
    uint32_t tbl;
    const char *id;
    KT_vhash *record;
    my_verdict verdict;
};

// One column pair of a table-level key: where it leads.
struct my_pair {
    const char *ref_tbl_id;
    const char *ref_col_id;
};

// A column on the way, and which of its references are still to be followed.
struct my_step {
    uint32_t col;
    bool col_level_is_done;
    uint32_t next_pair;
    uint32_t end_pair;
};

struct my_search {
    my_search(KT_context *ctx, tov_schema *searched, const fk_graph *tbl_graph) noexcept
        : schema(searched), graph(tbl_graph), tbls(ctx), referencing(ctx), pair_owner(ctx), pairs(ctx), first_pair(ctx),
          col_numbers(ctx), cols(ctx), path(ctx), members(ctx), first_member(ctx)
    {
    }
    tov_schema *schema;
    const fk_graph *graph;
    fk_array<KT_vhash *> tbls;     // table records by position
    fk_names referencing;          // columns of table-level keys, as their pairs write them; scope: the table
    fk_array<uint32_t> pair_owner; // by pair: the number of its referencing column
    fk_array<my_pair> pairs;       // in the order of the keys; grouped by referencing column once all are there
    fk_array<uint32_t> first_pair; // by referencing column
    fk_names col_numbers;          // scope: the column's record
    fk_array<my_col> cols;         // by such a number; columns of tables come first, in schema order
    fk_array<my_step> path;
    fk_array<uint32_t> members; // the cycles' columns, one cycle after another
    fk_array<uint32_t> first_member;
};

} // namespace

static void my_add_pairs(KT_context *ctx, my_search *s, uint32_t tbl, const fk_key &key) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(fk_get_cols(ctx, key, &cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        uint32_t owner = 0;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &col_id, &ref_col_id));
        KT_TRY(fk_add_name(ctx, &s->referencing, tbl, col_id, &owner));
        KT_TRY(fk_append(ctx, &s->pair_owner, owner));
        KT_TRY(fk_append(ctx, &s->pairs, {key.ref_tbl_id, ref_col_id}));
    }
}

static void my_group_pairs(KT_context *ctx, my_search *s) noexcept
{
    fk_array<uint32_t> order{ctx};
    fk_array<my_pair> grouped{ctx};
    for (uint32_t n = 0; n < s->pairs.count; n++)
        KT_TRY(fk_append(ctx, &order, n));
    KT_TRY(fk_sort_by(ctx, s->pair_owner, s->referencing.names.count, &order));
    for (uint32_t n = 0; n < order.count; n++) {
        while (s->first_pair.count <= s->pair_owner[order[n]])
            KT_TRY(fk_append(ctx, &s->first_pair, n));
        KT_TRY(fk_append(ctx, &grouped, s->pairs[order[n]]));
    }
    KT_TRY(fk_append(ctx, &s->first_pair, grouped.count));
    fk_move(&grouped, &s->pairs);
}

static void my_read_pairs(KT_context *ctx, my_search *s) noexcept
{
    fk_walk walk = {.schema = s->schema, .col_level = false};
    fk_key key;
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        KT_TRY(my_add_pairs(ctx, s, walk.tbl_n, key));
    }
    KT_TRY(my_group_pairs(ctx, s));
}

static void my_add_col(KT_context *ctx, my_search *s, uint32_t tbl, const char *col_id, KT_vhash *record,
                       uint32_t *number) noexcept
{
    KT_TRY(fk_add_name(ctx, &s->col_numbers, reinterpret_cast<uintptr_t>(record), col_id, number));
    if (*number == s->cols.count)
        KT_TRY(fk_append(ctx, &s->cols, {tbl, col_id, record, my_verdict::unknown}));
}

static void my_add_col_if_it_refers(KT_context *ctx, my_search *s, uint32_t tbl, const char *col_id,
                                    KT_vhash *record) noexcept
{
    KT_bool has = 0;
    uint32_t number = 0;
    KT_TRY(KT_vhash__has(ctx, record, "fk", &has));
    if (has || fk_find_name(s->referencing, tbl, col_id) != FK_NO_NUMBER)
        KT_TRY(my_add_col(ctx, s, tbl, col_id, record, &number));
}

static void my_add_cols_of_tbls(KT_context *ctx, my_search *s) noexcept
{
    for (uint32_t tbl = 0; tbl < s->graph->ids.names.count; tbl++) {
        const char *tbl_id = nullptr;
        KT_vhash *record = nullptr;
        KT_vhash *cols = nullptr;
        uint32_t count = 0;
        KT_TRY(_tov_schema__get_nth_tbl(ctx, s->schema, tbl, &tbl_id, &record));
        KT_TRY(fk_append(ctx, &s->tbls, record));
        KT_TRY(_tov_tbl__get_cols(ctx, record, &cols));
        KT_TRY(KT_vhash__count(ctx, cols, &count));
        for (uint32_t n = 0; n < count; n++) {
            const char *col_id = nullptr;
            KT_vhash *col = nullptr;
            KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, s->schema, record, tbl_id, cols, n, &col_id, &col));
            KT_TRY(my_add_col_if_it_refers(ctx, s, tbl, col_id, col));
        }
    }
}

// Finds a column as every lookup does: ids in any case, prepared columns first. A reference that leads nowhere ends
// the way there, and is nobody's error.
static void my_find_col(KT_context *ctx, my_search *s, const char *tbl_id, const char *col_id,
                        uint32_t *number) noexcept
{
    if (!tbl_id || !col_id)
        return;
    uint32_t tbl = FK_NO_NUMBER;
    KT_TRY(fk_find_tbl(ctx, *s->graph, fk_match::like_a_lookup, tbl_id, &tbl));
    if (tbl == FK_NO_NUMBER)
        return;
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_vhash *cols = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(_tov_tbl__get_cols(ctx, s->tbls[tbl], &cols));
    KT_TRY(KT_vhash__check__vhash(ctx, cols, key, &record));
    if (!record) {
        KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, s->schema, tbl_id, &cols));
        if (cols)
            KT_TRY(KT_vhash__check__vhash(ctx, cols, key, &record));
    }
    if (record)
        KT_TRY(my_add_col(ctx, s, tbl, col_id, record, number));
}

static void my_add_unprepared_cols_of_tbl(KT_context *ctx, my_search *s, const char *tbl_id,
                                          const KT_vhash *cols) noexcept
{
    uint32_t tbl = FK_NO_NUMBER;
    uint32_t count = 0;
    KT_TRY(fk_find_tbl(ctx, *s->graph, fk_match::like_a_lookup, tbl_id, &tbl));
    if (tbl == FK_NO_NUMBER)
        return;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, cols, n, &col_id, &record));
        KT_TRY(my_add_col_if_it_refers(ctx, s, tbl, col_id, record));
    }
}

static void my_add_unprepared_cols(KT_context *ctx, my_search *s) noexcept
{
    KT_vhash *tbls = nullptr;
    uint32_t count = 0;
    if (s->schema->host_internals)
        KT_TRY(KT_vhash__check__vhash(ctx, s->schema->host_internals, "unprep-cols", &tbls));
    if (tbls)
        KT_TRY(KT_vhash__count(ctx, tbls, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_vhash *cols = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n, &tbl_id, &cols));
        KT_TRY(my_add_unprepared_cols_of_tbl(ctx, s, tbl_id, cols));
    }
}

// A search may also begin with an id in the letter case in which a table-level key writes it.
static void my_add_cols_as_keys_write_them(KT_context *ctx, my_search *s) noexcept
{
    for (uint32_t n = 0; n < s->referencing.names.count; n++) {
        const fk_name &name = s->referencing.names[n];
        const char *tbl_id = s->graph->ids.names[static_cast<uint32_t>(name.scope)].text;
        uint32_t number = FK_NO_NUMBER;
        KT_TRY(my_find_col(ctx, s, tbl_id, name.text, &number));
    }
}

// What the type of a column says of it: a root, the end of a way, or unknown where its references decide.
static void my_judge_type(KT_context *ctx, const KT_vhash *record, my_verdict *verdict) noexcept
{
    KT_vhash *type = nullptr;
    const char *name = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, record, "type", &type));
    if (type)
        KT_TRY(KT_vhash__check__sz(ctx, type, "name", &name));
    *verdict = fk_is_identity(name)      ? my_verdict::root
               : fk_is_integer_key(name) ? my_verdict::unknown
                                         : my_verdict::no_root;
}

// Goes on to a column, or finds out that the way ends there.
static void my_step_onto(KT_context *ctx, my_search *s, uint32_t number) noexcept
{
    my_col *col = &s->cols[number];
    KT_TRY(my_judge_type(ctx, col->record, &col->verdict));
    if (col->verdict != my_verdict::unknown)
        return;
    my_step step = {number, false, 0, 0};
    const uint32_t owner = fk_find_name(s->referencing, col->tbl, col->id);
    if (owner != FK_NO_NUMBER) {
        step.next_pair = s->first_pair[owner];
        step.end_pair = s->first_pair[owner + 1];
    }
    col->verdict = my_verdict::on_path;
    KT_TRY(fk_append(ctx, &s->path, step));
}

// Follows the next reference of the last column on the path: the column-level key first, then the pairs it stands in.
// None is left when more is false; the reference leads nowhere when to stays FK_NO_NUMBER.
static void my_follow_next(KT_context *ctx, my_search *s, bool *more, uint32_t *to) noexcept
{
    my_step *step = &s->path[s->path.count - 1];
    my_pair next = {nullptr, nullptr};
    *more = true;
    if (!step->col_level_is_done) {
        KT_bool has = 0;
        step->col_level_is_done = true;
        KT_TRY(_tov_col__get_fk(ctx, s->cols[step->col].record, &has, nullptr, &next.ref_tbl_id, &next.ref_col_id,
                                nullptr, nullptr));
    } else if (step->next_pair < step->end_pair) {
        next = s->pairs[step->next_pair++];
    } else {
        *more = false;
    }
    KT_TRY(my_find_col(ctx, s, next.ref_tbl_id, next.ref_col_id, to));
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
static void my_leave_path(my_search *s, my_verdict verdict) noexcept
{
    while (s->path.count)
        s->cols[s->path[--s->path.count].col].verdict = verdict;
}

static void my_search_from(KT_context *ctx, my_search *s, uint32_t start) noexcept
{
    KT_TRY(my_step_onto(ctx, s, start));
    while (s->path.count) {
        bool more = false;
        uint32_t to = FK_NO_NUMBER;
        KT_TRY(my_follow_next(ctx, s, &more, &to));
        if (!more)
            s->cols[s->path[--s->path.count].col].verdict = my_verdict::no_root;
        if (to == FK_NO_NUMBER)
            continue;
        if (s->cols[to].verdict == my_verdict::on_path) {
            KT_TRY(my_note_cycle(ctx, s, to));
            my_leave_path(s, my_verdict::endless);
            continue;
        }
        if (s->cols[to].verdict == my_verdict::unknown)
            KT_TRY(my_step_onto(ctx, s, to));
        if (s->cols[to].verdict == my_verdict::root || s->cols[to].verdict == my_verdict::endless)
            my_leave_path(s, s->cols[to].verdict);
    }
}

// The place of a column in the schema: its number under the id that it is stored with, if it refers to anything.
static void my_get_rank(KT_context *ctx, const my_search *s, uint32_t number, uint32_t *rank) noexcept
{
    const my_col &col = s->cols[number];
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_TRY(tov_lower_id(ctx, col.id, &room, &key));
    const uint32_t stored = fk_find_name(s->col_numbers, reinterpret_cast<uintptr_t>(col.record), key);
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
    const my_col &col = s->cols[number];
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(tov_lower_id(ctx, col.id, &room, &key));
    KT_TRY(KT_varray__appendnew__vhash(ctx, members, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "tbl", s->graph->ids.names[col.tbl].text));
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
    KT_TRY(fk_sort_by(ctx, ranks, s->cols.count, &order));
    for (uint32_t n = 0; n < order.count; n++)
        KT_TRY(my_write_cycle(ctx, s, order[n], beginnings[order[n]], records));
}

void fk_find_col_cycles(KT_context *ctx, tov_schema *schema, const fk_graph &graph, kt_owned_varray *records) noexcept
{
    my_search search{ctx, schema, &graph};
    KT_TRY(my_read_pairs(ctx, &search));
    KT_TRY(my_add_cols_of_tbls(ctx, &search));
    KT_TRY(my_add_unprepared_cols(ctx, &search));
    KT_TRY(my_add_cols_as_keys_write_them(ctx, &search));
    for (uint32_t number = 0; number < search.cols.count; number++) {
        if (search.cols[number].verdict == my_verdict::unknown)
            KT_TRY(my_search_from(ctx, &search, number));
    }
    KT_TRY(my_write_cycles(ctx, &search, records));
}
