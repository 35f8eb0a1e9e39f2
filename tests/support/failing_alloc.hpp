// Makes the 1st, 2nd, 3rd ... allocation fail, to sweep an operation through every place where memory can run out.
//
//     for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
//         KT_string *text = nullptr;
//         the_operation(ctx, &text);
//         if (!fault.fired()) { EXPECT_OK(ctx); KT_string__free(ctx, text); break; }
//         EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
//         EXPECT_EQ(text, nullptr);
//         EXPECT_EQ(fault.leaked(), 0u);
//     }
//
// Objects that live through the sweep are made before it; leaked() counts the blocks taken since next() and not
// given back. The error's own record is taken without the hook failing it, so it is not counted as a leak while the
// context holds it.
#pragma once

#include "kt_memory.h"

#include <cstddef>

class kt_failing_alloc {
  public:
    // Fails one allocation, or all from it on, or none: then it only watches what is taken and given back.
    enum class mode { once, from_there_on, never };

    // Allocations of fewer bytes than the least neither fail nor count.
    explicit kt_failing_alloc(mode how = mode::once, size_t least = 0);
    ~kt_failing_alloc();
    kt_failing_alloc(const kt_failing_alloc &) = delete;
    kt_failing_alloc &operator=(const kt_failing_alloc &) = delete;

    // Arms the next allocation in turn; always true, since the caller stops when nothing fired.
    bool next();
    // Lets every allocation succeed until next(); what is known of those before stays.
    void pause();
    // Whether an allocation was made to fail since next().
    bool fired() const;
    // Blocks taken since next() and not given back yet.
    size_t leaked() const;

    struct state;

  private:
    state *state_;
};
