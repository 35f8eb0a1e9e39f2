// Makes memory run out in each call that adds to a tree.
//
// A tree takes its memory in chunks, so an ordinary sweep fails only the few calls in which a chunk happens to end.
// Here what is done begins with a padding, a longer one each time, which the caller puts in front of all that the tree
// gets: it moves the ends of the chunks over everything that follows.
#pragma once

#include "failing_alloc.hpp"

#include <gtest/gtest.h>
#include <string>

// Does it with each padding, and each chunk in turn failing. prepare(padding) is called while memory can be had, and
// do_it() says whether it failed. The paddings grow by the step: small records need a small one, slow calls a large
// one.
template <class Prepare, class Do> void at_each_chunk_end(size_t step, Prepare prepare, Do do_it)
{
    constexpr size_t chunk_size = 1024; // of the smallest one
    size_t failures = 0;
    for (size_t length = 0; length < chunk_size; length += step) {
        prepare(std::string(length, 'x'));
        for (kt_failing_alloc fault(kt_failing_alloc::mode::once, chunk_size); fault.next();) {
            const bool failed = do_it();
            EXPECT_TRUE(!failed || fault.fired()) << length;
            failures += failed ? 1 : 0;
            if (!fault.fired())
                break;
        }
    }
    EXPECT_GT(failures, chunk_size / step);
}
