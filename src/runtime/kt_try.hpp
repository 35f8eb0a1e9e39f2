// Failure in C++ code on top of the runtime: one idiom.
//
// The context carries the error. A call that may fail is written inside KT_TRY, which adds this function's frame and
// returns. kt_owned.hpp has the other half: what frees an object that such a function still owns.
//
// A source file that uses these macros defines KT_HERE, the file name of its frames, and names its context `ctx`.
#pragma once

#include "kt_context.h"

#include <cassert>
#include <cstdint>
#include <new>

// The first member of a context is the current level's error code (asserted in kt_context.cpp), so that the test
// after every call costs a load and a branch.
inline bool kt_has_err(const KT_context *ctx) noexcept
{
    return *reinterpret_cast<const uint64_t *>(ctx) != 0;
}

[[gnu::cold, gnu::noinline]] inline void kt_add_frame(KT_context *ctx, const char *file, int32_t line) noexcept
{
    KT_context__err_stackframe_add(ctx, file, line);
}

// A function that fails leaves an error, which its callers' KT_TRY finds. Stated for the analyzers: they cannot see
// into other sources, and would follow a failure on into code that is only reached after a success.
inline void kt_assert_failed(const KT_context *ctx) noexcept
{
    assert(kt_has_err(ctx));
    static_cast<void>(ctx);
}

inline bool kt_failed_at(KT_context *ctx, const char *file, int32_t line) noexcept
{
    if (!kt_has_err(ctx)) [[likely]]
        return false;
    kt_add_frame(ctx, file, line);
    kt_assert_failed(ctx);
    return true;
}

// Refuses to go on while the context holds an error: the door of an operation that does something before its first
// KT_TRY. One that begins with KT_TRY has its door there.
#define KT_RETURN_IF_FAILED               \
    do {                                  \
        if (kt_has_err(ctx)) [[unlikely]] \
            return;                       \
    } while (0)

// Makes one call, and returns with a frame added when it failed. Makes none and just returns while the context holds
// an error already; between calls that succeed the compiler drops this second look.
#define KT_TRY(...)                               \
    do {                                          \
        KT_RETURN_IF_FAILED;                      \
        __VA_ARGS__;                              \
        if (kt_failed_at(ctx, KT_HERE, __LINE__)) \
            return;                               \
    } while (0)

// Raises an error found here, with a printf-style description, and returns.
#define KT_FAIL(code, ...)                                        \
    do {                                                          \
        KT_context__err__generic(ctx, (code), KT_HERE, __LINE__); \
        KT_context__err_set_description(ctx, __VA_ARGS__);        \
        kt_assert_failed(ctx);                                    \
        return;                                                   \
    } while (0)

// Raises an error with the code's generic text, and returns.
#define KT_FAIL_GENERIC(code)                                     \
    do {                                                          \
        KT_context__err__generic(ctx, (code), KT_HERE, __LINE__); \
        kt_assert_failed(ctx);                                    \
        return;                                                   \
    } while (0)

// Runs code that uses allocating std:: containers and turns std::bad_alloc into KT_ERR_OUT_OF_MEMORY.
template <class Body> void kt_contain_at(KT_context *ctx, const char *file, int32_t line, Body &&body) noexcept
{
    try {
        body();
    } catch (const std::bad_alloc &) {
        KT_context__err__generic(ctx, KT_ERR_OUT_OF_MEMORY, file, line);
    }
}
#define kt_contain(ctx, ...) kt_contain_at(ctx, KT_HERE, __LINE__, __VA_ARGS__)
