// References that lead back to where they began. They are kept: the findings say what cannot be asked of the schema.
#include "steps/host_import.hpp"

#include <charconv>
#include <cstring>

#define KT_HERE "src/host/steps/host_cycles"

// The table of an id of the schema, which this import has given.
static const host_table *my_find_table(const host_catalogue &catalogue, const char *tbl_id)
{
    int64_t id = 0;
    std::from_chars(tbl_id, tbl_id + strlen(tbl_id), id);
    return catalogue.tables_by_id.at(id);
}

static const host_column *my_find_col(const host_table &table, const char *col_id)
{
    for (const host_column &col : table.cols) {
        if (std::string_view(col.id_text) == col_id)
            return &col;
    }
    return nullptr;
}

static void my_report_tables(KT_context *ctx, host_import &import, const KT_vhash *cycle)
{
    KT_varray *tbl_ids = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__get__varray(ctx, cycle, "tbls", &tbl_ids));
    KT_TRY(KT_varray__count(ctx, tbl_ids, &count));
    const host_table *first = nullptr;
    std::string names;
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, tbl_ids, n, &tbl_id));
        const host_table *table = my_find_table(import.catalogue, tbl_id);
        first = first ? first : table;
        names += (n ? ", " : "") + table->label;
    }
    KT_TRY(import.findings.add(ctx, "tables-in-circle", first, nullptr, nullptr,
                               "kept: tables refer to each other in a cycle, so that none can come first: " + names));
}

static void my_report_cols(KT_context *ctx, host_import &import, const KT_vhash *cycle)
{
    KT_varray *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__get__varray(ctx, cycle, "cols", &cols));
    KT_TRY(KT_varray__count(ctx, cols, &count));
    const host_table *first_table = nullptr;
    const host_column *first_col = nullptr;
    std::string names;
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *member = nullptr;
        const char *tbl_id = nullptr;
        const char *col_id = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, cols, n, &member));
        KT_TRY(KT_vhash__get__sz(ctx, member, "tbl", &tbl_id));
        KT_TRY(KT_vhash__get__sz(ctx, member, "col", &col_id));
        const host_table *table = my_find_table(import.catalogue, tbl_id);
        const host_column *col = my_find_col(*table, col_id);
        first_table = first_table ? first_table : table;
        first_col = first_col ? first_col : col;
        names += (n ? ", " : "") + table->label + '.' + col->name;
    }
    KT_TRY(import.findings.add(ctx, "columns-in-circle", first_table, first_col, nullptr,
                               "kept: columns refer to each other in a cycle, so that no identity column is the "
                               "source of their values: " +
                                   names));
}

static void my_report_each(KT_context *ctx, host_import &import, const KT_varray *cycles,
                           void (*report)(KT_context *ctx, host_import &import, const KT_vhash *cycle))
{
    uint32_t count = 0;
    if (cycles)
        KT_TRY(KT_varray__count(ctx, cycles, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *cycle = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, cycles, n, &cycle));
        KT_TRY(report(ctx, import, cycle));
    }
}

void host_report_cycles(KT_context *ctx, host_import &import)
{
    kt_owned_varray tbl_cycles{ctx};
    kt_owned_varray col_cycles{ctx};
    KT_TRY(tov_schema__find_reference_cycles(ctx, import.schema, tbl_cycles.out(), col_cycles.out()));
    KT_TRY(my_report_each(ctx, import, tbl_cycles, my_report_tables));
    KT_TRY(my_report_each(ctx, import, col_cycles, my_report_cols));
}
