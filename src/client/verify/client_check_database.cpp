// The check as a whole: which tables are looked at, and what of them is not there.
#include "kt_folded.hpp"
#include "tov_check.h"
#include "verify/client_verify.hpp"

#include <iterator>

#define KT_HERE "src/client/verify/client_check_database"

const tov_client_violation_kind *tov_client__get_nth_violation_kind(uint32_t n) noexcept
{
    return n < std::size(client_violation_kinds) ? &client_violation_kinds[n] : nullptr;
}

namespace {

using look = void (*)(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl);

} // namespace

static constexpr look looks[] = {client_verify__values, client_verify__checks, client_verify__keys,
                                 client_verify__references};

static bool my_names(const char *name, const client_row_tbl &tbl)
{
    return kt_equal_folded(name, tbl.name) || kt_equal_folded(name, tbl.server_schema + "." + tbl.server_name);
}

static bool my_is_among(const char *const *names, uint32_t count, const client_row_tbl &tbl)
{
    return std::any_of(names, names + count, [&](const char *name) { return my_names(name, tbl); });
}

// The ids of the tables that are looked at. A name that no table has is a mistake.
static void my_choose(KT_context *ctx, const client_verify &run, std::vector<std::string> &ids)
{
    const tov_client_check_options &options = run.options;
    std::vector<client_row_tbl> tbls;
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, run.schema, &count));
    tbls.resize(count);
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, run.schema, n, &id));
        KT_TRY(client_read_row_tbl(ctx, run.schema, id, tbls[n]));
        const bool is_wanted = options.only_count == 0 || my_is_among(options.only, options.only_count, tbls[n]);
        if (is_wanted && !my_is_among(options.skip, options.skip_count, tbls[n]))
            ids.emplace_back(id);
    }
    for (uint32_t n = 0; n < options.only_count + options.skip_count; n++) {
        const char *name = n < options.only_count ? options.only[n] : options.skip[n - options.only_count];
        if (std::none_of(tbls.begin(), tbls.end(), [&](const client_row_tbl &tbl) { return my_names(name, tbl); }))
            KT_FAIL(KT_ERR_NOT_FOUND, "the schema has no table \"%s\"", name);
    }
}

static void my_are_nulls_equal(KT_context *ctx, client_verify &run)
{
    const KT_vhash *document = nullptr;
    KT_vhash *backend = nullptr;
    KT_bool are_equal = 0;
    KT_TRY(tov_schema__get_document(ctx, run.schema, &document));
    KT_TRY(KT_vhash__check__vhash(ctx, document, "backend", &backend));
    if (backend)
        KT_TRY(KT_vhash__check__bool(ctx, backend, "indistinct_unique_nulls", &are_equal));
    run.nulls_are_equal = are_equal && run.options.rules == TOV_CLIENT_RULES_SERVER;
}

// What the server puts in by itself, or takes NULL for.
static bool my_may_lack(const client_row_col &col) noexcept
{
    return col.type.nullable || col.has_default || col.has_server_default || col.identity || col.computed ||
           col.type.base == client_base::rowversion;
}

static void my_report_cols(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    std::vector<std::string> cols = tbl.found->cols;
    for (const client_row_col &col : tbl.tbl.cols) {
        const auto place = std::find(cols.begin(), cols.end(), kt_folded(col.name));
        if (place != cols.end()) {
            cols.erase(place);
            continue;
        }
        const tov_client_violation_kind *kind = client_violation_code("column-required").kind;
        if (my_may_lack(col))
            kind = client_violation_code("column-missing").kind;
        if (col.stored)
            KT_TRY(client_verify__report_tbl(ctx, run, tbl.tbl.name.c_str(), {kind, kind->meaning, col.name, ""}));
    }
    const tov_client_violation_kind *unknown = client_violation_code("column-unknown").kind;
    for (const std::string &col : cols)
        KT_TRY(client_verify__report_tbl(ctx, run, tbl.tbl.name.c_str(), {unknown, unknown->meaning, col, ""}));
}

static void my_check_tbl(KT_context *ctx, client_verify &run, const std::string &id, bool &is_there)
{
    client_verify_tbl tbl;
    KT_TRY(client_verify__read_tbl(ctx, run, id.c_str(), tbl));
    is_there = is_there || tbl.found;
    if (!tbl.found || !tbl.found->is_tbl) {
        const tov_client_violation_kind *kind =
            tbl.found ? client_violation_code("not-a-table").kind : client_violation_code("table-missing").kind;
        KT_TRY(client_verify__report_tbl(ctx, run, tbl.tbl.name.c_str(), {kind, kind->meaning, "", ""}));
        return;
    }
    KT_TRY(my_report_cols(ctx, run, tbl));
    for (const look &one : looks)
        KT_TRY(one(ctx, run, tbl));
}

static void my_check(KT_context *ctx, client_verify &run, const char *database)
{
    std::vector<std::string> ids;
    bool is_there = false;
    KT_TRY(tov_client__check_texts(ctx, run.schema));
    KT_TRY(my_choose(ctx, run, ids));
    KT_TRY(my_are_nulls_equal(ctx, run));
    KT_TRY(client_verify__open(ctx, run, database));
    for (size_t n = 0; n < ids.size() && run.is_whole; n++) {
        KT_TRY(my_check_tbl(ctx, run, ids[n], is_there));
        if (run.options.progress)
            run.options.progress(run.options.progress_data, static_cast<uint32_t>(n) + 1,
                                 static_cast<uint32_t>(ids.size()));
    }
    const tov_client_violation_kind *none = client_violation_code("no-tables").kind;
    if (!is_there && !ids.empty() && run.is_whole)
        KT_TRY(client_verify__report_tbl(ctx, run, nullptr, {none, none->meaning, "", ""}));
}

void tov_client__check_database(KT_context *ctx, tov_schema *schema, const char *database,
                                const tov_client_check_options *options,
                                void (*take)(KT_context *ctx, void *data, const tov_client_violation *violation),
                                void *data, KT_bool *is_whole) noexcept
{
    kt_contain(ctx, [&] {
        client_verify run;
        run.schema = schema;
        run.options = options ? *options : tov_client_check_options{};
        run.take = take;
        run.data = data;
        KT_TRY(my_check(ctx, run, database));
        if (is_whole)
            *is_whole = run.is_whole;
    });
}
