// Growable arrays of plain values, for the analyses that work on positions instead of ids.
#pragma once

#include "document/tov_parse_defin_private.hpp"

#include <cassert>
#include <cstring>
#include <type_traits>

template <class T> void fk_free_items(KT_context *ctx, T *items) noexcept
{
    _kt_free(ctx, items);
}

template <class T> struct fk_array {
    static_assert(std::is_trivially_copyable_v<T>);

    explicit fk_array(KT_context *ctx) noexcept : items(ctx)
    {
    }
    T &operator[](uint32_t n) noexcept
    {
        return items.get()[n];
    }
    const T &operator[](uint32_t n) const noexcept
    {
        return items.get()[n];
    }

    kt_owned<T, fk_free_items<T>> items;
    uint32_t count = 0;
    uint32_t capacity = 0;
};

// Makes room for more items, at least twice the room there was, so that appending is cheap in the long run.
template <class T> void fk_reserve(KT_context *ctx, fk_array<T> *array, uint32_t more) noexcept
{
    if (array->capacity - array->count >= more)
        return;
    if (array->count > UINT32_MAX / 2 - more)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    uint32_t capacity = array->capacity > UINT32_MAX / 4 ? UINT32_MAX / 2 : array->capacity * 2;
    if (capacity < array->count + more)
        capacity = array->count + more;
    if (capacity < 16)
        capacity = 16;
    constexpr size_t item_size = sizeof(T); // NOLINT(bugprone-sizeof-expression): an item may be a pointer itself.
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, capacity * item_size, &block));
    if (array->count)
        memcpy(block, array->items.get(), array->count * item_size);
    array->items.reset();
    *array->items.out() = static_cast<T *>(block);
    array->capacity = capacity;
}

template <class T> void fk_append(KT_context *ctx, fk_array<T> *array, std::type_identity_t<T> item) noexcept
{
    if (array->count == array->capacity)
        KT_TRY(fk_reserve(ctx, array, 1));
    array->items.get()[array->count++] = item;
}

template <class T>
void fk_append_many(KT_context *ctx, fk_array<T> *array, uint32_t many, std::type_identity_t<T> item) noexcept
{
    KT_TRY(fk_reserve(ctx, array, many));
    assert(array->items.get() || many == 0);
    for (uint32_t n = 0; n < many; n++)
        array->items.get()[array->count++] = item;
}

template <class T> void fk_move(fk_array<T> *from, fk_array<T> *to) noexcept
{
    to->items.reset();
    from->items.move_to(to->items.out());
    to->count = std::exchange(from->count, 0);
    to->capacity = std::exchange(from->capacity, 0);
}
