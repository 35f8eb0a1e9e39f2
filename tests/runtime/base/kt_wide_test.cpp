#include "base/kt_wide.hpp"

#include <gtest/gtest.h>

#include <random>

TEST(WideTest, MultipliesTo128Bits)
{
    struct product_case {
        uint64_t a, b, high, low;
    };
    static constexpr product_case cases[] = {
        {0, UINT64_MAX, 0, 0},
        {3, 5, 0, 15},
        {UINT64_C(1) << 32, UINT64_C(1) << 32, 1, 0},
        {UINT32_MAX, UINT32_MAX, 0, 0xFFFFFFFE00000001},
        {UINT64_MAX, 2, 1, UINT64_MAX - 1},
        {UINT64_MAX, UINT64_MAX, UINT64_MAX - 1, 1},
        {0x123456789ABCDEF0, 0xFEDCBA9876543210, 0x121FA00AD77D7422, 0x236D88FE5618CF00},
    };
    for (const product_case &c : cases) {
        SCOPED_TRACE(c.a);
        for (const kt_wide &product : {kt_multiply(c.a, c.b), kt_multiply_by_halves(c.a, c.b)}) {
            EXPECT_EQ(product.high, c.high);
            EXPECT_EQ(product.low, c.low);
        }
    }
}

TEST(WideTest, IsTheSameByHalves)
{
    std::mt19937_64 random(7);
    for (int n = 0; n < 100000; n++) {
        const uint64_t a = random(), b = random() >> random() % 64;
        const kt_wide whole = kt_multiply(a, b), halves = kt_multiply_by_halves(a, b);
        ASSERT_EQ(whole.high, halves.high);
        ASSERT_EQ(whole.low, halves.low);
    }
}
