// Shared by the tests of generated SQL text.
#pragma once

#include "schema_test.hpp"
#include "sqlite_database.hpp"

#include "failing_alloc.hpp"

#include <functional>

class DdlTest : public SchemaTest {
  protected:
    // Replaces the schema by one with a table "t", named T, that has these members besides, e.g. R"("cols":{...})".
    void load_tbl(const std::string &members)
    {
        load((R"({"compat_level":1,"tbls":{"t":{"name":"T",)" + members + "}}}").c_str());
    }

    // Replaces the schema by one with a table "t" and a column "c", named C, that has these members besides.
    void load_col(const std::string &members)
    {
        load_tbl(R"("cols":{"c":{"name":"C",)" + members + "}}");
    }

    // The last call failed like this, and its last frame is the module's; clears the error.
    void expect_failure(uint64_t code, const char *description)
    {
        EXPECT_ERROR(ctx, code, description);
        const char *file = "";
        int32_t line = 0;
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        if (count > 0)
            KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
        EXPECT_GT(line, 0);
        reset();
    }

    // Fails every allocation of build() in turn: out of memory, nothing leaked, and the output, which is null before
    // each call, still null.
    template <class Result>
    void sweep(const std::function<void(Result **)> &build, const std::function<void(Result *)> &free)
    {
        bool failed_once = false;
        for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
            Result *result = nullptr;
            build(&result);
            if (!fault.fired()) {
                EXPECT_OK(ctx);
                EXPECT_NE(result, nullptr);
                free(result);
                break;
            }
            failed_once = true;
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(result, nullptr);
            EXPECT_EQ(fault.leaked(), 0u);
        }
        EXPECT_TRUE(failed_once);
    }
    void sweep_string(const std::function<void(KT_string **)> &build)
    {
        sweep<KT_string>(build, [this](KT_string *text) { KT_string__free(ctx, text); });
    }
    void sweep_vhash(const std::function<void(KT_vhash **)> &build)
    {
        sweep<KT_vhash>(build, [this](KT_vhash *map) { KT_vhash__free(ctx, map); });
    }
    void sweep_defin(const std::function<void(const char **)> &build)
    {
        sweep<const char>(build, [](const char *) {});
    }
};
