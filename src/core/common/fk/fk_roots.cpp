// Identity roots: the identity column whose values an integer key column carries.
//
// A root is searched by following references through columns of an integer type. Nothing guards the search against
// a cycle of references, by contract: callers that cannot rule one out look for cycles first. The search keeps a
// stack of its own, because a chain may be as long as the schema has columns.
//
// Columns that are reached in many ways would be searched once for each of them, which is without bound in practice:
// two references from each of forty columns to the next one make 2^40 ways. So a search that has looked at more
// columns than any ordinary one takes note of those that lead to no root, and passes by them from then on.

#include "fk/fk_array.hpp"
#include "fk/fk_names.hpp"
#include "fk/fk_types.hpp"
#include "fk/fk_walk.hpp"

namespace {

struct my_target {
    const char *tbl_id = nullptr;
    const char *col_id = nullptr;
};

// A column whose references are being tried: its column-level key first, then the pairs of its table's keys in which
// it stands.
struct my_step {
    const char *tbl_id;
    const char *col_id;
    KT_vhash *tbl;
    KT_vhash *col;
    bool col_level_is_done;
    bool keys_are_open;
    KT_vhash *keys;
    uint32_t next_key;
    uint32_t key_count;
    // The key whose pairs are being tried, and the table that it refers to.
    KT_vhash *pairs;
    const char *ref_tbl_id;
    uint32_t next_pair;
    uint32_t pair_count;
    // Its number among the columns that are taken note of.
    uint32_t number;
};

enum class my_verdict : uint8_t { on_path, no_root };

struct my_search {
    fk_array<my_step> path;
    uint32_t looks = 0;
    fk_names noted; // columns under the ids that lead to them; scope: the column's record
    fk_array<my_verdict> verdicts;
};

// As many columns are looked at before any is taken note of.
constexpr uint32_t ordinary_looks = 64;

} // namespace

static bool my_has_more(const my_step &step) noexcept
{
    return !step.col_level_is_done || !step.keys_are_open || step.next_pair < step.pair_count ||
           step.next_key < step.key_count;
}

static void my_try_col_level(KT_context *ctx, my_step *step, my_target *target) noexcept
{
    fk_key key = {.tbl_id = step->tbl_id, .col_id = step->col_id};
    KT_bool has = 0;
    step->col_level_is_done = true;
    KT_TRY(_tov_col__get_fk(ctx, step->col, &has, nullptr, &key.ref_tbl_id, &key.ref_col_id, nullptr, nullptr));
    if (!has)
        return;
    KT_TRY(fk_need_ref_col(ctx, key));
    *target = {key.ref_tbl_id, key.ref_col_id};
}

static void my_open_keys(KT_context *ctx, my_step *step) noexcept
{
    step->keys_are_open = true;
    KT_TRY(KT_vhash__check__vhash(ctx, step->tbl, "foreignkeys", &step->keys));
    if (step->keys)
        KT_TRY(KT_vhash__count(ctx, step->keys, &step->key_count));
}

static void my_open_next_key(KT_context *ctx, my_step *step) noexcept
{
    fk_key key;
    KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, step->keys, step->next_key++, &key.fk_id, &key.fk));
    KT_TRY(KT_vhash__get__sz(ctx, key.fk, "ref_tbl_id", &step->ref_tbl_id));
    KT_TRY(fk_get_cols(ctx, key, &step->pairs, &step->pair_count));
    step->next_pair = 0;
}

static void my_try_next_pair(KT_context *ctx, my_step *step, my_target *target) noexcept
{
    const char *col_id = nullptr;
    const char *ref_col_id = nullptr;
    KT_TRY(KT_vhash__get_nth_pair__sz(ctx, step->pairs, step->next_pair++, &col_id, &ref_col_id));
    if (strcmp(col_id, step->col_id) == 0)
        *target = {step->ref_tbl_id, ref_col_id};
}

// Finds the next column to go on to; none when this one has no references left.
static void my_find_next_target(KT_context *ctx, my_step *step, my_target *target) noexcept
{
    while (!target->tbl_id && my_has_more(*step)) {
        if (!step->col_level_is_done)
            KT_TRY(my_try_col_level(ctx, step, target));
        else if (!step->keys_are_open)
            KT_TRY(my_open_keys(ctx, step));
        else if (step->next_pair < step->pair_count)
            KT_TRY(my_try_next_pair(ctx, step, target));
        else
            KT_TRY(my_open_next_key(ctx, step));
    }
}

// Takes note of a column, and tells whether it is known to lead to no root. One that is on the way already closes a
// cycle: nothing before it will be gone back to.
static void my_note(KT_context *ctx, my_search *search, my_step *step, bool *is_known) noexcept
{
    step->number = FK_NO_NUMBER;
    *is_known = false;
    if (search->looks++ < ordinary_looks)
        return;
    KT_TRY(fk_add_name(ctx, &search->noted, reinterpret_cast<uintptr_t>(step->col), step->col_id, &step->number));
    if (step->number == search->verdicts.count)
        KT_TRY(fk_append(ctx, &search->verdicts, my_verdict::on_path));
    else if (search->verdicts[step->number] == my_verdict::no_root)
        *is_known = true;
    else
        search->path.count = 0;
}

// Looks at a column: its type, and with an integer type the references to be tried.
static void my_look_at(KT_context *ctx, tov_schema *schema, const my_target &at, my_search *search,
                       bool *is_root) noexcept
{
    my_step step = {};
    const char *abstract_type = nullptr;
    KT_bool has_keys = 0;
    bool is_known = false;
    step.tbl_id = at.tbl_id;
    step.col_id = at.col_id;
    KT_TRY(_tov_schema__get_tbl(ctx, schema, at.tbl_id, &step.tbl));
    KT_TRY(_tov_schema__get_col_in_tbl(ctx, schema, step.tbl, at.tbl_id, at.col_id, &step.col));
    KT_TRY(_tov_col__get_type(ctx, step.col, &abstract_type, nullptr));
    *is_root = fk_is_identity(abstract_type);
    if (!fk_is_integer_key(abstract_type))
        return;
    KT_TRY(KT_vhash__has(ctx, step.tbl, "foreignkeys", &has_keys));
    step.keys_are_open = !has_keys;
    KT_TRY(my_note(ctx, search, &step, &is_known));
    if (!is_known)
        KT_TRY(fk_append(ctx, &search->path, step));
}

// Goes back to the last column that has references left, and on to the next one. A column that is taken note of stays
// until all that it leads to is known.
static void my_go_on(KT_context *ctx, my_search *search, my_target *target) noexcept
{
    while (search->path.count && !target->tbl_id) {
        my_step *last = &search->path[search->path.count - 1];
        KT_TRY(my_find_next_target(ctx, last, target));
        const bool is_noted = last->number != FK_NO_NUMBER;
        if (is_noted ? target->tbl_id != nullptr : my_has_more(*last))
            continue;
        if (is_noted)
            search->verdicts[last->number] = my_verdict::no_root;
        search->path.count--;
    }
}

void tov_schema__find_ipk_root_column(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                      const char **root_tbl_id, const char **root_col_id) noexcept
{
    my_search search = {fk_array<my_step>{ctx}, 0, fk_names{ctx}, fk_array<my_verdict>{ctx}};
    my_target at = {tbl_id, col_id};
    while (at.tbl_id) {
        bool is_root = false;
        KT_TRY(my_look_at(ctx, schema, at, &search, &is_root));
        *root_tbl_id = is_root ? at.tbl_id : nullptr;
        if (root_col_id)
            *root_col_id = is_root ? at.col_id : nullptr;
        if (is_root)
            return;
        at = {};
        KT_TRY(my_go_on(ctx, &search, &at));
    }
}
