// Any JSON text, read as a lite schema: every reader answers or fails in order.
#include "kt_owned.hpp"
#include "tov_parse_defin.h"

#include <cstdlib>
#include <string>

namespace {

// Whether the last call succeeded; a failure is cleared, so that reading goes on.
bool went_well(KT_context *ctx)
{
    const bool failed = kt_has_err(ctx);
    KT_context__err_reset(ctx);
    return !failed;
}

void read_cols(KT_context *ctx, KT_vhash *lite, const char *tbl_id)
{
    uint32_t count = 0;
    tov_schema_lite__count_cols(ctx, lite, tbl_id, &count);
    went_well(ctx);
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *name = nullptr;
        tov_schema_lite__get_nth_col_id(ctx, lite, tbl_id, n, &col_id);
        if (!went_well(ctx))
            std::abort(); // the columns have just been counted
        tov_schema_lite__get_col_name(ctx, lite, tbl_id, col_id, &name);
        if (went_well(ctx) && !name)
            std::abort();
    }
}

void read_lite(KT_context *ctx, KT_vhash *lite)
{
    uint32_t count = 0;
    tov_schema_lite__count_tbls(ctx, lite, &count);
    went_well(ctx);
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        int64_t txid = 0;
        tov_schema_lite__get_nth_tbl_id(ctx, lite, n, &tbl_id);
        if (!went_well(ctx))
            std::abort(); // the tables have just been counted
        tov_schema_lite__get_tbl_txid(ctx, lite, tbl_id, &txid);
        went_well(ctx);
        read_cols(ctx, lite, tbl_id);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    KT_vhash *lite = nullptr;
    const std::string text(reinterpret_cast<const char *>(data), size);
    KT_vhash__alloc__from_json__sz(ctx, &lite, text.c_str());
    if (went_well(ctx))
        read_lite(ctx, lite);
    KT_vhash__free(ctx, lite);
    KT_context__free(ctx);
    return 0;
}
