// Which foreign keys refer to a table; see the header.
//
// What a plain walk answers has to come out exactly, failures included. So the index is made from a walk that reads
// all that any question reads, and serves only where this walk met nothing to fail at; else questions walk themselves.
// A walk over columns gives every table its "cols": no index is made while a table lacks them.

#include "fk/fk_index.hpp"

#include "fk/fk_group.hpp"
#include "fk/fk_names.hpp"

struct tov_fk_index {
    uint64_t reference_change_count; // of the schema that it describes
    bool serves;                     // whether it may be used at all
    bool has_actions;                // whether all table-level keys have their actions
    fk_name *ref_tbls;               // the ids that keys refer to
    uint32_t *slots;
    uint32_t slot_count;
    fk_index_entry *entries; // grouped by the table referred to
    uint32_t *first_entry;   // by its number
};

namespace {

// The parts of an index while it is made.
struct my_draft {
    explicit my_draft(KT_context *ctx) noexcept : ref_tbls(ctx), owner(ctx), entries(ctx), first_entry(ctx)
    {
    }
    fk_names ref_tbls;
    fk_array<uint32_t> owner; // by entry: the number of the table it refers to
    fk_array<fk_index_entry> entries;
    fk_array<uint32_t> first_entry;
};

} // namespace

void _tov_fk_index__free(KT_context *ctx, tov_fk_index *index) noexcept
{
    if (!index)
        return;
    _kt_free(ctx, index->ref_tbls);
    _kt_free(ctx, index->slots);
    _kt_free(ctx, index->entries);
    _kt_free(ctx, index->first_entry);
    _kt_free(ctx, index);
}

static void my_look_for_lacking_cols(KT_context *ctx, tov_schema *schema, bool *lacks) noexcept
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
    for (uint32_t n = 0; n < count && !*lacks; n++) {
        KT_vhash *tbl = nullptr;
        KT_bool has = 0;
        KT_TRY(_tov_schema__get_nth_tbl(ctx, schema, n, nullptr, &tbl));
        KT_TRY(KT_vhash__has(ctx, tbl, "cols", &has));
        *lacks = !has;
    }
}

static void my_add_entry(KT_context *ctx, const fk_key &key, my_draft *draft) noexcept
{
    uint32_t owner = 0;
    // A key that names no table refers to none that is asked for.
    if (!key.ref_tbl_id)
        return;
    KT_TRY(fk_add_name(ctx, &draft->ref_tbls, 0, key.ref_tbl_id, &owner));
    KT_TRY(fk_append(ctx, &draft->owner, owner));
    if (key.col)
        KT_TRY(fk_append(ctx, &draft->entries, {key.tbl_id, key.col_id, key.col, true}));
    else
        KT_TRY(fk_append(ctx, &draft->entries, {key.tbl_id, key.fk_id, key.fk, false}));
}

static void my_walk(KT_context *ctx, tov_schema *schema, uint32_t tbl_fields, my_draft *draft) noexcept
{
    fk_walk walk = {.schema = schema, .col_fields = FK_ALL_FIELDS, .tbl_fields = tbl_fields};
    fk_key key;
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        KT_TRY(my_add_entry(ctx, key, draft));
    }
    KT_TRY(fk_group_by(ctx, draft->owner, draft->ref_tbls.names.count, &draft->entries, &draft->first_entry));
}

static void my_fill(KT_context *ctx, tov_schema *schema, uint32_t tbl_fields, tov_fk_index *index) noexcept
{
    my_draft draft{ctx};
    KT_TRY(my_walk(ctx, schema, tbl_fields, &draft));
    index->serves = true;
    index->slot_count = draft.ref_tbls.slots.count;
    draft.ref_tbls.names.items.move_to(&index->ref_tbls);
    draft.ref_tbls.slots.items.move_to(&index->slots);
    draft.entries.items.move_to(&index->entries);
    draft.first_entry.items.move_to(&index->first_entry);
}

// Makes an attempt whose failure is for the questions to meet and report; only that memory ran out is reported here.
template <class Attempt> static void my_attempt(KT_context *ctx, Attempt attempt) noexcept
{
    KT_context__push_level(ctx);
    attempt();
    const uint64_t code = KT_context__err_code(ctx);
    KT_context__pop_level(ctx);
    if (code == KT_ERR_OUT_OF_MEMORY)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

static void my_make(KT_context *ctx, tov_schema *schema, tov_fk_index **made) noexcept
{
    void *block = nullptr;
    kt_owned<tov_fk_index, _tov_fk_index__free> index{ctx};
    KT_TRY(_kt_malloc(ctx, sizeof(tov_fk_index), &block));
    *index.out() = new (block) tov_fk_index{};
    index.get()->reference_change_count = schema->reference_change_count;
    KT_TRY(my_attempt(ctx, [&] { my_fill(ctx, schema, FK_ON_DELETE | FK_ON_UPDATE, index); }));
    index.get()->has_actions = index.get()->serves;
    if (!index.get()->serves)
        KT_TRY(my_attempt(ctx, [&] { my_fill(ctx, schema, 0, index); }));
    index.move_to(made);
}

static void my_drop(KT_context *ctx, tov_schema *schema) noexcept
{
    KT_context__push_level(ctx);
    _tov_fk_index__free(ctx, std::exchange(schema->fk_index, nullptr));
    KT_context__pop_level(ctx);
}

// The index of the schema as it is now; null while none can be made.
static void my_get_index(KT_context *ctx, tov_schema *schema, const tov_fk_index **index) noexcept
{
    bool lacks_cols = false;
    if (schema->fk_index && schema->fk_index->reference_change_count != schema->reference_change_count)
        my_drop(ctx, schema);
    if (!schema->fk_index)
        KT_TRY(my_attempt(ctx, [&] { my_look_for_lacking_cols(ctx, schema, &lacks_cols); }));
    if (!schema->fk_index && !lacks_cols)
        KT_TRY(my_make(ctx, schema, &schema->fk_index));
    *index = schema->fk_index;
}

void fk_find_in_index(KT_context *ctx, fk_walk *walk, bool *known) noexcept
{
    const tov_fk_index *index = nullptr;
    KT_TRY(my_get_index(ctx, walk->schema, &index));
    const bool reads_actions = walk->tbl_level && walk->tbl_fields;
    if (!index || !index->serves || (reads_actions && !index->has_actions))
        return;
    *known = true;
    const fk_name_table ref_tbls = {index->ref_tbls, index->slots, index->slot_count};
    const uint32_t number = fk_find_name(ref_tbls, 0, walk->ref_tbl_id);
    if (number == FK_NO_NUMBER)
        return;
    walk->next_entry = index->entries + index->first_entry[number];
    walk->end_entry = index->entries + index->first_entry[number + 1];
}
