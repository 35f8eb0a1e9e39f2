// Growth of elements that must not move.
#pragma once

#include "tree/kt_tree.hpp"

#include <algorithm>

inline constexpr uint32_t kt_first_segments = 4;
inline constexpr uint32_t kt_most_segments = 32;

// Adds a segment as large as all before it. The list of segments has room for 4, then for the 32 that suffice.
template <class T> bool kt_segments_double(kt_arena *arena, kt_segments<T> *segments) noexcept
{
    if (segments->capacity > UINT32_MAX / 2)
        return false;
    const size_t size = segments->capacity * sizeof(T);
    auto *segment = kt_new_block<T>(arena, size);
    if (!segment)
        return false;
    const auto n = static_cast<uint32_t>(std::bit_width(segments->capacity / segments->first_capacity)) - 1;
    if (n == 0 || n == kt_first_segments) {
        auto **more = kt_new_block<T *>(arena, (n ? kt_most_segments : kt_first_segments) * sizeof(T *));
        if (!more) {
            kt_pools_release(&arena->pools, segment, size);
            return false;
        }
        if (n) {
            std::copy_n(segments->more, n, more);
            kt_pools_release(&arena->pools, segments->more, kt_first_segments * sizeof(T *));
        }
        segments->more = more;
    }
    segments->more[n] = segment;
    segments->capacity *= 2;
    return true;
}

// Makes room for `count` elements; the first call takes exactly that many, later ones double. False when memory is
// short; the elements there are stay where they are in any case.
template <class T> bool kt_segments_reserve(kt_arena *arena, kt_segments<T> *segments, uint32_t count) noexcept
{
    if (count <= segments->capacity)
        return true;
    if (!segments->first_capacity) {
        segments->first = kt_new_block<T>(arena, count * sizeof(T));
        if (!segments->first)
            return false;
        segments->first_capacity = segments->capacity = count;
        return true;
    }
    while (count > segments->capacity)
        if (!kt_segments_double(arena, segments))
            return false;
    return true;
}

template <class T> void kt_segments_release(kt_arena *arena, kt_segments<T> *segments) noexcept
{
    if (!segments->first_capacity)
        return;
    uint32_t capacity = segments->first_capacity;
    uint32_t n = 0;
    for (; capacity < segments->capacity; capacity *= 2)
        kt_pools_release(&arena->pools, segments->more[n++], capacity * sizeof(T));
    if (n)
        kt_pools_release(&arena->pools, segments->more,
                         (n > kt_first_segments ? kt_most_segments : kt_first_segments) * sizeof(T *));
    kt_pools_release(&arena->pools, segments->first, segments->first_capacity * sizeof(T));
    *segments = {};
}
