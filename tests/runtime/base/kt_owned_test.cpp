// The failure idiom: frames, early return, ownership.
#include "failing_alloc.hpp"
#include "kt_owned.hpp"
#include "kt_test.hpp"

#include <new>
#include <string>

namespace {

using KtScopeTest = ContextTest;

void fail_with_text(KT_context *ctx, int number) noexcept
{
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "number %d", number);
}

void fail_generic(KT_context *ctx) noexcept
{
    KT_FAIL_GENERIC(KT_ERR_NOT_FOUND);
}

void call_twice(KT_context *ctx, bool is_first_to_fail, int *reached) noexcept
{
    *reached = 1;
    KT_TRY(if (is_first_to_fail) fail_generic(ctx));
    *reached = 2;
    KT_TRY(fail_with_text(ctx, 42));
    *reached = 3;
}

void make_text(KT_context *ctx, bool is_to_fail, KT_string **text) noexcept
{
    kt_owned_string made{ctx};
    KT_TRY(KT_string__alloc__sz(ctx, made.out(), "made"));
    KT_TRY(if (is_to_fail) fail_generic(ctx));
    made.move_to(text);
}

struct thing {
    bool *freed;
};

void free_thing(KT_context *ctx, thing *object) noexcept
{
    EXPECT_FALSE(kt_has_err(ctx)) << "freed in a level of its own";
    *object->freed = true;
    KT_FAIL_GENERIC(KT_ERR_BAD_JSON);
}

} // namespace

TEST_F(KtScopeTest, TryMakesNoCallWhileThereIsAnError)
{
    fail_generic(ctx);
    int reached = 0;
    call_twice(ctx, true, &reached);
    EXPECT_EQ(reached, 1);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "not found");
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 1u) << "the call was not made, so it has no frame";
    reset();
}

TEST_F(KtScopeTest, TryReturnsAtTheFirstFailureAndAddsOneFrame)
{
    int reached = 0;
    call_twice(ctx, true, &reached);
    EXPECT_EQ(reached, 1);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "not found");
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 2u);
    reset();

    call_twice(ctx, false, &reached);
    EXPECT_EQ(reached, 2);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "number 42");
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 2u);
    const char *file = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, 1, &file, &line);
    EXPECT_STREQ(file, KT_HERE);
    EXPECT_GT(line, 0);
    reset();
}

TEST_F(KtScopeTest, WhatIsOwnedIsFreedOnFailureAndMovedOnSuccess)
{
    kt_failing_alloc watch{kt_failing_alloc::mode::never};
    watch.next();
    KT_string *text = nullptr;
    make_text(ctx, true, &text);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(watch.leaked(), 0u);
    EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
    reset();

    make_text(ctx, false, &text);
    EXPECT_OK(ctx);
    EXPECT_EQ(take(ctx, text), "made");
    EXPECT_EQ(watch.leaked(), 0u);
}

TEST_F(KtScopeTest, FreeingCannotReplaceTheError)
{
    bool freed = false;
    thing object{&freed};
    {
        kt_owned<thing, free_thing> owner{ctx};
        *owner.out() = &object;
        KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, "the first error");
    }
    EXPECT_TRUE(freed);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "the first error");
    reset();
}

TEST_F(KtScopeTest, AFailedAllocationOfAContainerBecomesAnError)
{
    kt_contain(ctx, [] { throw std::bad_alloc{}; });
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
    reset();
    std::string text;
    kt_contain(ctx, [&] { text.assign(100, 'x'); });
    EXPECT_OK(ctx);
    EXPECT_EQ(text.size(), 100u);
}
