// Which columns refer to others; see the header.

#include "fk/fk_col_refs.hpp"

#include "document/document_ids.hpp"
#include "fk/fk_group.hpp"
#include "fk/fk_walk.hpp"

static void my_add_pairs(KT_context *ctx, fk_col_refs *refs, uint32_t tbl, const fk_key &key) noexcept
{
    KT_vhash *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(fk_get_cols(ctx, key, &cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        uint32_t owner = 0;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &col_id, &ref_col_id));
        KT_TRY(fk_add_name(ctx, &refs->referencing, tbl, col_id, &owner));
        KT_TRY(fk_append(ctx, &refs->pair_owner, owner));
        KT_TRY(fk_append(ctx, &refs->pairs, {key.ref_tbl_id, ref_col_id}));
    }
}

static void my_read_pairs(KT_context *ctx, fk_col_refs *refs) noexcept
{
    fk_walk walk = {.schema = refs->schema, .col_level = false};
    fk_key key;
    KT_TRY(fk_walk_schema(ctx, &walk));
    for (;;) {
        KT_TRY(fk_next(ctx, &walk, &key));
        if (!key.tbl_id)
            break;
        KT_TRY(my_add_pairs(ctx, refs, walk.tbl_n, key));
    }
    KT_TRY(fk_group_by(ctx, refs->pair_owner, refs->referencing.names.count, &refs->pairs, &refs->first_pair));
}

static void my_add_col(KT_context *ctx, fk_col_refs *refs, uint32_t tbl, const char *col_id, KT_vhash *record,
                       uint32_t *number) noexcept
{
    KT_TRY(fk_add_name(ctx, &refs->col_numbers, reinterpret_cast<uintptr_t>(record), col_id, number));
    if (*number == refs->cols.count)
        KT_TRY(fk_append(ctx, &refs->cols, {tbl, col_id, record, fk_verdict::unknown}));
}

static void my_add_col_if_it_refers(KT_context *ctx, fk_col_refs *refs, uint32_t tbl, const char *col_id,
                                    KT_vhash *record) noexcept
{
    KT_bool has = 0;
    uint32_t number = 0;
    KT_TRY(KT_vhash__has(ctx, record, "fk", &has));
    if (has || fk_find_name(refs->referencing, tbl, col_id) != FK_NO_NUMBER)
        KT_TRY(my_add_col(ctx, refs, tbl, col_id, record, &number));
}

static void my_add_cols_of_tbls(KT_context *ctx, fk_col_refs *refs) noexcept
{
    for (uint32_t tbl = 0; tbl < refs->graph->ids.names.count; tbl++) {
        const char *tbl_id = nullptr;
        KT_vhash *record = nullptr;
        KT_vhash *cols = nullptr;
        uint32_t count = 0;
        KT_TRY(_tov_schema__get_nth_tbl(ctx, refs->schema, tbl, &tbl_id, &record));
        KT_TRY(fk_append(ctx, &refs->tbls, record));
        KT_TRY(_tov_tbl__get_cols(ctx, record, &cols));
        KT_TRY(KT_vhash__count(ctx, cols, &count));
        for (uint32_t n = 0; n < count; n++) {
            const char *col_id = nullptr;
            KT_vhash *col = nullptr;
            KT_TRY(_tov_schema__get_nth_col_in_tbl(ctx, refs->schema, record, tbl_id, cols, n, &col_id, &col));
            KT_TRY(my_add_col_if_it_refers(ctx, refs, tbl, col_id, col));
        }
    }
}

void fk_find_col(KT_context *ctx, fk_col_refs *refs, const char *tbl_id, const char *col_id, uint32_t *number) noexcept
{
    if (!tbl_id || !col_id)
        return;
    uint32_t tbl = FK_NO_NUMBER;
    KT_TRY(fk_find_tbl(ctx, *refs->graph, fk_match::like_a_lookup, tbl_id, &tbl));
    if (tbl == FK_NO_NUMBER)
        return;
    tov_id_room room{ctx};
    const char *key = nullptr;
    KT_vhash *cols = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(tov_lower_id(ctx, col_id, &room, &key));
    KT_TRY(_tov_tbl__get_cols(ctx, refs->tbls[tbl], &cols));
    KT_TRY(KT_vhash__check__vhash(ctx, cols, key, &record));
    if (!record) {
        KT_TRY(_tov_schema__check_tbl_unprepared_cols(ctx, refs->schema, tbl_id, &cols));
        if (cols)
            KT_TRY(KT_vhash__check__vhash(ctx, cols, key, &record));
    }
    if (record)
        KT_TRY(my_add_col(ctx, refs, tbl, col_id, record, number));
}

static void my_add_unprepared_cols_of_tbl(KT_context *ctx, fk_col_refs *refs, const char *tbl_id,
                                          const KT_vhash *cols) noexcept
{
    uint32_t tbl = FK_NO_NUMBER;
    uint32_t count = 0;
    KT_TRY(fk_find_tbl(ctx, *refs->graph, fk_match::like_a_lookup, tbl_id, &tbl));
    if (tbl == FK_NO_NUMBER)
        return;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, cols, n, &col_id, &record));
        KT_TRY(my_add_col_if_it_refers(ctx, refs, tbl, col_id, record));
    }
}

static void my_add_unprepared_cols(KT_context *ctx, fk_col_refs *refs) noexcept
{
    KT_vhash *tbls = nullptr;
    uint32_t count = 0;
    if (refs->schema->host_internals)
        KT_TRY(KT_vhash__check__vhash(ctx, refs->schema->host_internals, "unprep-cols", &tbls));
    if (tbls)
        KT_TRY(KT_vhash__count(ctx, tbls, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_vhash *cols = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n, &tbl_id, &cols));
        KT_TRY(my_add_unprepared_cols_of_tbl(ctx, refs, tbl_id, cols));
    }
}

// A search may also begin with an id in the letter case in which a table-level key writes it.
static void my_add_cols_as_keys_write_them(KT_context *ctx, fk_col_refs *refs) noexcept
{
    for (uint32_t n = 0; n < refs->referencing.names.count; n++) {
        const fk_name &name = refs->referencing.names[n];
        const char *tbl_id = refs->graph->ids.names[static_cast<uint32_t>(name.scope)].text;
        uint32_t number = FK_NO_NUMBER;
        KT_TRY(fk_find_col(ctx, refs, tbl_id, name.text, &number));
    }
}

void fk_read_col_refs(KT_context *ctx, fk_col_refs *refs) noexcept
{
    KT_TRY(my_read_pairs(ctx, refs));
    KT_TRY(my_add_cols_of_tbls(ctx, refs));
    KT_TRY(my_add_unprepared_cols(ctx, refs));
    KT_TRY(my_add_cols_as_keys_write_them(ctx, refs));
}
