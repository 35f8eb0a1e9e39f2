// Numbers for texts; see the header.

#include "fk/fk_names.hpp"

#include <cassert>

static uint64_t my_hash(uint64_t scope, const char *text) noexcept
{
    uint64_t hash = scope * UINT64_C(0x9E3779B97F4A7C15) ^ UINT64_C(0xCBF29CE484222325);
    for (; *text; text++)
        hash = (hash ^ static_cast<unsigned char>(*text)) * UINT64_C(0x100000001B3);
    // The product carries differences upwards only; the slot is taken from the low bits.
    return hash ^ hash >> 32;
}

static bool my_is_name(const fk_name &name, uint64_t scope, const char *text, uint64_t hash) noexcept
{
    return name.hash == hash && name.scope == scope && strcmp(name.text, text) == 0;
}

static fk_name_table my_get_table(const fk_names &numbering) noexcept
{
    return {numbering.names.items, numbering.slots.items, numbering.slots.count};
}

// The slot that holds the text's number, or the empty one where it belongs. The number of slots is a power of two.
static uint32_t my_find_slot(const fk_name_table &table, uint64_t scope, const char *text, uint64_t hash) noexcept
{
    assert(table.slots && table.slot_count);
    const uint32_t mask = table.slot_count - 1;
    uint32_t slot = static_cast<uint32_t>(hash) & mask;
    while (table.slots[slot] && !my_is_name(table.names[table.slots[slot] - 1], scope, text, hash))
        slot = (slot + 1) & mask;
    return slot;
}

uint32_t fk_find_name(const fk_name_table &table, uint64_t scope, const char *text) noexcept
{
    if (!table.slot_count)
        return FK_NO_NUMBER;
    const uint32_t found = table.slots[my_find_slot(table, scope, text, my_hash(scope, text))];
    return found ? found - 1 : FK_NO_NUMBER;
}

uint32_t fk_find_name(const fk_names &numbering, uint64_t scope, const char *text) noexcept
{
    return fk_find_name(my_get_table(numbering), scope, text);
}

// Keeps at most half of the slots in use.
static void my_grow(KT_context *ctx, fk_names *numbering) noexcept
{
    fk_array<uint32_t> slots{ctx};
    const uint32_t slot_count = numbering->slots.count ? numbering->slots.count * 2 : 64;
    KT_TRY(fk_append_many(ctx, &slots, slot_count, 0));
    for (uint32_t number = 0; number < numbering->names.count; number++) {
        uint32_t slot = static_cast<uint32_t>(numbering->names[number].hash) & (slot_count - 1);
        while (slots[slot])
            slot = (slot + 1) & (slot_count - 1);
        slots[slot] = number + 1;
    }
    fk_move(&slots, &numbering->slots);
}

void fk_add_name(KT_context *ctx, fk_names *numbering, uint64_t scope, const char *text, uint32_t *number) noexcept
{
    if (numbering->slots.count / 2 <= numbering->names.count)
        KT_TRY(my_grow(ctx, numbering));
    const uint64_t hash = my_hash(scope, text);
    const uint32_t slot = my_find_slot(my_get_table(*numbering), scope, text, hash);
    if (!numbering->slots[slot]) {
        KT_TRY(fk_append(ctx, &numbering->names, {scope, text, hash}));
        numbering->slots[slot] = numbering->names.count;
    }
    *number = numbering->slots[slot] - 1;
}
