// Blocks, the allocator hook, and the failing allocator that the other tests rely on.
#include "base/kt_memory_private.hpp"
#include "failing_alloc.hpp"
#include "kt_memory.h"
#include "kt_test.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using KtMemoryTest = ContextTest;

constexpr size_t too_large = SIZE_MAX / 2;

// An allocator that counts, refuses what is too large, and has no resize.
struct counting_allocator {
    int allocated = 0;
    int released = 0;

    static void *allocate(void *data, size_t size)
    {
        static_cast<counting_allocator *>(data)->allocated++;
        if (size >= too_large)
            return nullptr;
        return std::malloc(size);
    }
    static void release(void *data, void *block)
    {
        static_cast<counting_allocator *>(data)->released++;
        std::free(block);
    }
    KT_allocator hook()
    {
        return {allocate, nullptr, release, this};
    }
};

} // namespace

TEST_F(KtMemoryTest, ABlockIsAlignedAndItsOwn)
{
    for (size_t size : {size_t{0}, size_t{1}, size_t{7}, size_t{16}, size_t{1000}, size_t{1} << 20}) {
        void *block = nullptr;
        _kt_malloc(ctx, size, &block);
        EXPECT_OK(ctx);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 16, 0u);
        std::memset(block, 0xAA, size);
        _kt_free(ctx, block);
    }
    _kt_free(ctx, nullptr);
}

TEST_F(KtMemoryTest, ABlockThatCannotBeHadIsOutOfMemory)
{
    kt_failing_alloc fault;
    fault.next();
    void *block = ctx;
    _kt_malloc(ctx, 1, &block);
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
    EXPECT_EQ(block, static_cast<void *>(ctx));
    const char *file = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, 0, &file, &line);
    EXPECT_STREQ(file, "src/runtime/kt_memory");
    reset();
}

TEST_F(KtMemoryTest, StrdupCopies)
{
    for (const char *text : {"", "a", "a longer text, with \xC3\xA4"}) {
        char *copy = nullptr;
        KT_strdup(ctx, text, &copy);
        EXPECT_OK(ctx);
        EXPECT_STREQ(copy, text);
        EXPECT_NE(copy, text);
        _kt_free(ctx, copy);
    }
}

TEST_F(KtMemoryTest, StrdupReportsFailingMemory)
{
    for (kt_failing_alloc fault; fault.next(); reset()) {
        char *copy = nullptr;
        KT_strdup(ctx, "text", &copy);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            _kt_free(ctx, copy);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(KT_context__count_err_stackframes(ctx), 2u);
        EXPECT_EQ(copy, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

TEST_F(KtMemoryTest, AllMemoryComesThroughTheHook)
{
    counting_allocator counter;
    const KT_allocator hook = counter.hook();
    KT_memory__set_allocator(&hook);
    char *copy = nullptr;
    KT_strdup(ctx, "text", &copy);
    char *formatted = KT_mprintf("%s %d", copy, 1);
    KT_string *string = nullptr;
    KT_string__alloc__sz(ctx, &string, std::string(500, 'x').c_str());
    KT_context *other = nullptr;
    KT_context__alloc(&other);
    EXPECT_EQ(counter.allocated, 5);
    KT_context__free(other);
    KT_string__free(ctx, string);
    _kt_free(ctx, formatted);
    _kt_free(ctx, copy);
    EXPECT_EQ(counter.released, 5);
    KT_memory__set_allocator(nullptr);
    KT_strdup(ctx, "text", &copy);
    _kt_free(ctx, copy);
    EXPECT_EQ(counter.allocated, 5);
}

TEST_F(KtMemoryTest, ResizingKeepsTheContentWithAndWithoutTheHooksHelp)
{
    for (const bool has_hook : {false, true}) {
        counting_allocator counter;
        const KT_allocator hook = counter.hook();
        KT_memory__set_allocator(has_hook ? &hook : nullptr);
        char *block = static_cast<char *>(kt_resize(nullptr, 0, 4));
        ASSERT_NE(block, nullptr);
        std::memcpy(block, "abc", 4);
        block = static_cast<char *>(kt_resize(block, 4, 100000));
        ASSERT_NE(block, nullptr);
        EXPECT_STREQ(block, "abc");
        block[99999] = 'x';
        block = static_cast<char *>(kt_resize(block, 100000, 2));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(std::string(block, 2), "ab");
        if (has_hook) {
            EXPECT_EQ(kt_resize(block, 2, too_large), nullptr);
            EXPECT_EQ(std::string(block, 2), "ab");
        }
        block = static_cast<char *>(kt_resize(block, 2, 0));
        EXPECT_NE(block, nullptr) << "no bytes are a block too";
        kt_release(block);
        KT_memory__set_allocator(nullptr);
        EXPECT_EQ(counter.released, has_hook ? 4 : 0);
    }
}

TEST_F(KtMemoryTest, SeveralThreadsMayTakeMemoryAtOnce)
{
    std::vector<std::thread> threads;
    for (int n = 0; n < 4; n++)
        threads.emplace_back([n] {
            KT_context *own = nullptr;
            KT_context__alloc(&own);
            for (int turn = 0; turn < 200; turn++) {
                char *copy = nullptr;
                KT_strdup(own, std::to_string(n * turn).c_str(), &copy);
                EXPECT_EQ(copy, std::to_string(n * turn));
                _kt_free(own, copy);
            }
            KT_context__free(own);
        });
    for (std::thread &thread : threads)
        thread.join();
}

TEST_F(KtMemoryTest, TheFailingAllocatorFailsEachTurnOnceOrFromThereOn)
{
    const auto outcomes = [](kt_failing_alloc &fault) {
        std::string text;
        fault.next();
        void *blocks[4];
        for (void *&block : blocks) {
            block = kt_allocate(8);
            text += block ? '+' : '-';
        }
        text += fault.fired() ? " fired, " : " not, ";
        text += std::to_string(fault.leaked());
        for (void *block : blocks)
            kt_release(block);
        return text + ", " + std::to_string(fault.leaked());
    };
    {
        kt_failing_alloc fault;
        for (const char *expected :
             {"-+++ fired, 3, 0", "+-++ fired, 3, 0", "++-+ fired, 3, 0", "+++- fired, 3, 0", "++++ not, 4, 0"})
            EXPECT_EQ(outcomes(fault), expected);
    }
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    for (const char *expected :
         {"---- fired, 0, 0", "+--- fired, 1, 0", "++-- fired, 2, 0", "+++- fired, 3, 0", "++++ not, 4, 0"})
        EXPECT_EQ(outcomes(fault), expected);
}

TEST_F(KtMemoryTest, TheFailingAllocatorTellsOldBlocksFromNew)
{
    void *old = kt_allocate(8);
    void *older = kt_allocate(8);
    kt_failing_alloc fault;
    for (int turn = 0; turn < 3; turn++)
        fault.next();
    old = kt_resize(old, 8, 1000);
    ASSERT_NE(old, nullptr);
    EXPECT_EQ(fault.leaked(), 0u) << "a block that was there grew";
    kt_release(older);
    void *block = kt_allocate(8);
    EXPECT_EQ(kt_resize(block, 8, 1000), nullptr) << "resizing counts as an allocation";
    EXPECT_EQ(fault.leaked(), 1u);
    block = kt_resize(block, 8, 2000);
    EXPECT_EQ(fault.leaked(), 1u);
    kt_release(block);
    EXPECT_EQ(fault.leaked(), 0u);
    kt_release(old);
}
