// 64 by 64 bits multiplied to 128, on compilers for 32-bit machines too.
#pragma once

#include <cstdint>

struct kt_wide {
    uint64_t high;
    uint64_t low;
};

// By halves of 32 bits, as on paper: no step overflows.
constexpr kt_wide kt_multiply_by_halves(uint64_t a, uint64_t b) noexcept
{
    constexpr uint64_t low_half = UINT32_MAX;
    const uint64_t low = (a & low_half) * (b & low_half);
    const uint64_t cross = (a >> 32) * (b & low_half) + (low >> 32);
    const uint64_t middle = (a & low_half) * (b >> 32) + (cross & low_half);
    return {(a >> 32) * (b >> 32) + (cross >> 32) + (middle >> 32), (middle << 32) | (low & low_half)};
}

constexpr kt_wide kt_multiply(uint64_t a, uint64_t b) noexcept
{
#ifdef __SIZEOF_INT128__
    __extension__ using wide = unsigned __int128;
    const wide product = static_cast<wide>(a) * b;
    return {static_cast<uint64_t>(product >> 64), static_cast<uint64_t>(product)};
#else
    return kt_multiply_by_halves(a, b);
#endif
}
