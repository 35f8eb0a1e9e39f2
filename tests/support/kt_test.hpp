// Shared by all tests: a fixture with a context, expectations on it, and failing allocations.
#pragma once

#include "kt_owned.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#ifndef KT_HERE
#define KT_HERE "tests"
#endif

// The context holds no error.
#define EXPECT_OK(ctx) EXPECT_EQ(KT_context__err_code(ctx), 0u) << "description: " << KT_context__err_description(ctx)
#define ASSERT_OK(ctx) ASSERT_EQ(KT_context__err_code(ctx), 0u) << "description: " << KT_context__err_description(ctx)
// The context holds this error.
#define EXPECT_FAILED(ctx, code)                                      \
    EXPECT_EQ(KT_context__err_code(ctx), static_cast<uint64_t>(code)) \
        << "description: " << KT_context__err_description(ctx)
// The context holds this error with this description.
#define EXPECT_ERROR(ctx, code, description)                         \
    do {                                                             \
        EXPECT_FAILED(ctx, code);                                    \
        EXPECT_STREQ(KT_context__err_description(ctx), description); \
    } while (0)

// A context for each test; a test that ends with an error left in it has not looked at it.
class ContextTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        KT_context__alloc(&ctx);
        ASSERT_NE(ctx, nullptr);
    }
    void TearDown() override
    {
        EXPECT_OK(ctx);
        KT_context__free(ctx);
    }
    // Clears an error that the test has looked at.
    void reset()
    {
        KT_context__err_reset(ctx);
    }

    KT_context *ctx = nullptr;
};

// The map's JSON text, for comparing whole trees at a glance.
inline std::string json_of(KT_context *ctx, const KT_vhash *map)
{
    if (!map)
        return "null";
    KT_string *text = nullptr;
    KT_string__alloc(ctx, &text);
    if (!text)
        return "(no memory)";
    KT_vhash__to_json(ctx, map, text);
    std::string result = KT_string__sz(text);
    KT_string__free(ctx, text);
    return result;
}

// Takes over a string's text and frees it; "(null)" for none.
inline std::string take(KT_context *ctx, KT_string *string)
{
    if (!string)
        return "(null)";
    std::string result = KT_string__sz(string);
    KT_string__free(ctx, string);
    return result;
}
