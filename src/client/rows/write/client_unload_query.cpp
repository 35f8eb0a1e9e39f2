// A query's columns have names and no types, so a type is taken from the tables' columns of the same name where it is
// the same in all of them.
#include "rows/write/client_unload.hpp"

#define KT_HERE "src/client/rows/write/client_unload_query"

static bool my_have_same_form(const client_server_type &a, const client_server_type &b) noexcept
{
    return a.base == b.base && a.scale == b.scale;
}

static client_server_type my_find_type(const std::vector<client_row_tbl> &tbls, const std::string &name)
{
    const client_server_type *found = nullptr;
    for (const client_row_tbl &tbl : tbls) {
        const size_t col = client_find_row_col(tbl, name);
        if (col == tbl.cols.size() || !tbl.cols[col].stored)
            continue;
        if (found && !my_have_same_form(*found, tbl.cols[col].type))
            return {};
        found = &tbl.cols[col].type;
    }
    return found ? *found : client_server_type();
}

// Of the one table that the rows are for.
static void my_take_tbl(const client_row_tbl &tbl, client_out_rows &rows)
{
    rows.schema_name = tbl.server_schema.empty() ? "dbo" : tbl.server_schema;
    rows.tbl_name = tbl.server_name;
    for (const client_out_col &out : rows.cols) {
        const size_t col = client_find_row_col(tbl, out.name);
        rows.has_identity |= col < tbl.cols.size() && tbl.cols[col].identity;
    }
}

void client_unload__query(KT_context *ctx, const client_unload_run &run, const char *query,
                          const std::vector<client_row_tbl> &wanted, bool is_named)
{
    const std::string name = std::string("query") + client_unload_ending(run.form.format);
    kt_owned_statement statement{run.database.functions};
    client_out_rows rows;
    client_unload_file file;
    client_unload_counts counts;
    KT_TRY(client_connection__prepare(ctx, run.database, query, statement));
    const int col_count = statement ? run.database.functions->column_count(statement) : 0;
    if (col_count == 0)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the query gives no rows: it is not a SELECT");
    if (run.form.format == client_format::insert && (!is_named || wanted.size() != 1))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "INSERT statements of a query's rows need the one table that they are for");
    for (int n = 0; n < col_count; n++) {
        const char *col = run.database.functions->column_name(statement, n);
        rows.cols.push_back({col ? col : "", my_find_type(wanted, col ? col : "")});
    }
    if (wanted.size() == 1)
        my_take_tbl(wanted.front(), rows);
    const bool is_script = run.form.format == client_format::insert;
    KT_TRY(file.open(ctx, run.folder + "/" + name, run.form.utf_16, is_script));
    const std::unique_ptr<client_row_writer> writer = client_make_row_writer(run.form, std::move(rows));
    KT_TRY(client_write_rows(ctx, run.database, statement, *writer, file, counts));
    KT_TRY(file.close(ctx));
    KT_TRY(client_unload__report(ctx, run, run.form, "", name, counts));
}
