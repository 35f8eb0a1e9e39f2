// Scripts have rows of several tables, and each statement says which columns its values are for.
#include "rows/load/client_loader.hpp"

#define KT_HERE "src/client/rows/load/client_load_script"

// The tables that an earlier load met: what it recorded of them goes on, whether or not more rows of them follow.
static void my_take_up_parts(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    std::vector<std::string> tbls;
    const std::string fingerprint = job.parts.front().progress.fingerprint;
    if (loader.settings.again)
        return;
    KT_TRY(
        client_progress__list_tbls(ctx, loader.database, loader.plan.trigger_prefix, job.parts.front().progress, tbls));
    for (const std::string &name : tbls) {
        std::string tbl_id;
        client_target *target = nullptr;
        client_load_part *part = nullptr;
        client_loader__find_tbl(loader, name, tbl_id);
        if (tbl_id.empty())
            continue;
        KT_TRY(client_loader__get_target(ctx, loader, tbl_id.c_str(), &target));
        KT_TRY(client_loader__begin_part(ctx, loader, job, target, fingerprint, &part));
    }
}

void client_loader__begin_script(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    client_load_part *part = nullptr;
    std::string fingerprint;
    job.dialect.format = client_format::insert;
    job.reader = client_make_insert_reader();
    KT_TRY(client_fingerprint(ctx, job.path.c_str(), loader.settings.encoding, fingerprint));
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_loader__begin_part(ctx, loader, job, nullptr, fingerprint, &part));
    KT_TRY(my_take_up_parts(ctx, loader, job));
}

static std::string my_find_tbl(const tov_client_loader &loader, const client_insert_head &head)
{
    std::string tbl_id;
    client_loader__find_server_tbl(loader, head.schema_name.empty() ? "dbo" : head.schema_name, head.tbl_name, tbl_id);
    if (tbl_id.empty() && head.schema_name.empty())
        client_loader__find_tbl(loader, head.tbl_name, tbl_id);
    return tbl_id;
}

// The columns that values without a list of columns are for: those that the server does not fill by itself.
static std::vector<size_t> my_own_cols(const client_row_tbl &tbl, size_t count)
{
    std::vector<size_t> without_identity;
    std::vector<size_t> with_identity;
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        const client_row_col &col = tbl.cols[n];
        if (col.computed || col.type.base == client_base::rowversion)
            continue;
        with_identity.push_back(n);
        if (!col.identity && (!col.rowid || tbl.has_facts))
            without_identity.push_back(n);
    }
    return count == with_identity.size() ? with_identity : without_identity;
}

static client_reject my_lay_out_cols(const client_row_tbl &tbl, const client_row &row, std::vector<size_t> &cols)
{
    if (!row.head->has_cols) {
        cols = my_own_cols(tbl, row.fields.size());
    } else {
        for (const std::string &name : row.head->cols) {
            const size_t col = client_find_row_col(tbl, name);
            if (col == tbl.cols.size())
                return client_reject::unknown_column;
            cols.push_back(col);
        }
    }
    if (row.fields.size() == cols.size())
        return client_reject::none;
    return row.fields.size() < cols.size() ? client_reject::too_few_fields : client_reject::too_many_fields;
}

static void my_lay_out(KT_context *ctx, tov_client_loader &loader, client_row &row, client_load_part &part)
{
    std::vector<size_t> cols;
    if (row.reject != client_reject::none)
        return;
    row.reject = my_lay_out_cols(part.target->tbl, row, cols);
    if (row.reject != client_reject::none)
        return;
    KT_TRY(client_target__lay_out(ctx, loader.database, *part.target, cols, &part.layout));
}

static void my_get_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, const std::string &tbl_id,
                        client_load_part **part)
{
    client_target *target = nullptr;
    KT_TRY(client_loader__get_target(ctx, loader, tbl_id.c_str(), &target));
    for (client_load_part &known : job.parts) {
        if (known.target == target) {
            *part = &known;
            return;
        }
    }
    const std::string fingerprint = job.parts.front().progress.fingerprint;
    KT_TRY(client_loader__begin_part(ctx, loader, job, target, fingerprint, part));
}

void client_loader__find_script_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_row &row,
                                     client_load_part **part)
{
    const std::string key = std::to_string(row.head->number) + ":" + std::to_string(row.fields.size());
    for (client_load_part &known : job.parts) {
        if (known.head == key && row.reject == client_reject::none) {
            *part = &known;
            return;
        }
    }
    const std::string tbl_id = my_find_tbl(loader, *row.head);
    *part = &job.parts.front();
    if (tbl_id.empty()) { // counted with the file
        row.reject = client_reject::unknown_table;
        return;
    }
    KT_TRY(my_get_part(ctx, loader, job, tbl_id, part));
    KT_TRY(my_lay_out(ctx, loader, row, **part));
    (*part)->head = row.reject == client_reject::none ? key : "";
}
