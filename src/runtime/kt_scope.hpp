// Failure and clean-up in C++ code on top of the runtime: one idiom, never installed.
//
// The context carries the error. A call that may fail stands inside KT_TRY, which adds this function's frame and
// returns; what a function owns lives in a kt_owned, whose destructor frees it between push and pop of a context
// level, so that freeing can neither hide nor replace the error.
//
// A source file that uses these macros defines KT_HERE, the file text of its frames, and names its context `ctx`.
#pragma once

#include "kt_nullhash.h"
#include "kt_string.h"
#include "kt_strpool.h"
#include "kt_varray.h"
#include "kt_vhash.h"

#include <cassert>
#include <new>
#include <utility>

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

// Makes one call, and returns with a frame added when it failed.
#define KT_TRY(...)                               \
    do {                                          \
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

// Owns one object of the runtime or of a caller until it is moved to a result.
template <class T, void (*Free)(KT_context *, T *) noexcept> class kt_owned {
  public:
    explicit kt_owned(KT_context *ctx) noexcept : ctx_(ctx)
    {
    }
    kt_owned(const kt_owned &) = delete;
    kt_owned &operator=(const kt_owned &) = delete;
    ~kt_owned()
    {
        reset();
    }

    // For an operation that stores a new object; a former one must have been moved or reset.
    T **out() noexcept
    {
        return &object_;
    }
    T *get() const noexcept
    {
        return object_;
    }
    operator T *() const noexcept
    {
        return object_;
    }
    void move_to(T **result) noexcept
    {
        *result = std::exchange(object_, nullptr);
    }
    void reset() noexcept
    {
        if (!object_)
            return;
        KT_context__push_level(ctx_);
        Free(ctx_, std::exchange(object_, nullptr));
        KT_context__pop_level(ctx_);
    }

  private:
    KT_context *ctx_;
    T *object_ = nullptr;
};

inline void kt_free_text(KT_context *ctx, char *text) noexcept
{
    _kt_free(ctx, text);
}

using kt_owned_string = kt_owned<KT_string, KT_string__free>;
using kt_owned_strpool = kt_owned<KT_strpool, KT_strpool__free>;
using kt_owned_vhash = kt_owned<KT_vhash, KT_vhash__free>;
using kt_owned_varray = kt_owned<KT_varray, KT_varray__free>;
using kt_owned_nullhash = kt_owned<KT_nullhash, KT_nullhash__free>;
using kt_owned_text = kt_owned<char, kt_free_text>;

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
