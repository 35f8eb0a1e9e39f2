// Ownership in C++ code on top of the runtime: a scope guard for each kind of object.
//
// What a function owns lives in a kt_owned, whose destructor frees it between push and pop of a context level, so that
// freeing can neither hide nor replace the error. A result leaves its owner on the function's last line.
#pragma once

#include "kt_memory.h"
#include "kt_nullhash.h"
#include "kt_string.h"
#include "kt_strpool.h"
#include "kt_try.hpp"
#include "kt_varray.h"
#include "kt_vhash.h"

#include <utility>

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
