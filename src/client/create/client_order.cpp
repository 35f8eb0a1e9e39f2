// The order in which tables are created, and why it is not always the order of references.
#include "kt_chars.h"
#include "kt_owned.hpp"
#include "tov_client.h"

#include <cstdio>

#define KT_HERE "src/client/create/client_order"

static constexpr const char *refused_remark = "the tables cannot be put in the order of their references, although "
                                              "these form no cycle; tables are created in schema order";

// SQLite takes a table that refers to one that is yet to come, so any order works; this one is at least predictable.
static void my_list_in_schema_order(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids) noexcept
{
    KT_TRY(tov_schema__list_tbls(ctx, schema, tbl_ids));
    if (!*tbl_ids)
        KT_TRY(KT_varray__alloc(ctx, tbl_ids));
}

static void my_append_members(KT_context *ctx, tov_schema *schema, const KT_varray *members, KT_string *text) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, members, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        const char *name = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, members, n, &tbl_id));
        KT_TRY(tov_schema__get_tbl_name(ctx, schema, tbl_id, &name));
        KT_TRY(KT_string__append__sz(ctx, text, n == 0 ? "" : n + 1 < count ? ", " : " and "));
        KT_TRY(KT_string__append__shown(ctx, text, name ? name : tbl_id));
    }
}

static void my_append_cycle_remark(KT_context *ctx, tov_schema *schema, const KT_varray *members,
                                   KT_varray *remarks) noexcept
{
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, text.out(), "tables "));
    KT_TRY(my_append_members(ctx, schema, members, text));
    KT_TRY(KT_string__append__sz(ctx, text, " refer to each other in a cycle; tables are created in schema order"));
    KT_TRY(KT_varray__append__string__sz(ctx, remarks, KT_string__sz(text)));
}

static void my_list_cycles(KT_context *ctx, tov_schema *schema, const KT_varray *cycles, KT_varray *remarks) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, cycles, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *cycle = nullptr;
        KT_varray *members = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, cycles, n, &cycle));
        KT_TRY(KT_vhash__get__varray(ctx, cycle, "tbls", &members));
        KT_TRY(my_append_cycle_remark(ctx, schema, members, remarks));
    }
}

// Sorts by references. Where the order is refused the list stays null: that is not a failure here.
static void my_sort(KT_context *ctx, tov_schema *schema, kt_owned_varray &tbl_ids) noexcept
{
    char description[200];
    KT_context__push_level(ctx);
    tov_schema__sort_by_references(ctx, schema, tbl_ids.out());
    const uint64_t code = KT_context__err_code(ctx);
    // A long description is cut.
    static_cast<void>(std::snprintf(description, sizeof description, "%s", KT_context__err_description(ctx)));
    KT_context__pop_level(ctx);
    if (code && code != KT_ERR_SCHEMA_NOT_SUPPORTED)
        KT_FAIL(code, "%s", description);
}

void tov_client__creation_order(KT_context *ctx, tov_schema *schema, KT_varray **tbl_ids, KT_varray **remarks) noexcept
{
    kt_owned_varray notes{ctx};
    KT_TRY(KT_varray__alloc(ctx, notes.out()));
    kt_owned_varray cycles{ctx};
    KT_TRY(tov_schema__find_reference_cycles(ctx, schema, cycles.out(), nullptr));
    kt_owned_varray order{ctx};
    if (cycles) {
        KT_TRY(my_list_cycles(ctx, schema, cycles, notes));
    } else {
        KT_TRY(my_sort(ctx, schema, order));
        if (!order)
            KT_TRY(KT_varray__append__string__sz(ctx, notes, refused_remark));
    }
    if (!order)
        KT_TRY(my_list_in_schema_order(ctx, schema, order.out()));
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, notes, &count));
    if (count == 0)
        notes.reset();
    order.move_to(tbl_ids);
    notes.move_to(remarks);
}
