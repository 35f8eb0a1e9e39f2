// How maps and lists lie in memory.
//
// A document has tens of thousands of small maps with the same few lists of keys. Such a map is only {shape, values}:
// the shape is the ordered list of its keys, shared by every map that has it, and found by following transitions
// ("with this key added") from the empty shape on. Maps whose keys are not worth sharing, large ones, and those that
// lost a pair in the middle have a private layout instead: entries of key and value, an index from 9 pairs on.
//
// What callers borrow must not move, and short texts lie inside the variants. So no variant ever moves: a map grows
// by further blocks, and removal in a private layout leaves a hole that the next pair fills.
#pragma once

#include "kt_vhash.h"
#include "tree/kt_arena.hpp"
#include "tree/kt_key.hpp"

#include <bit>
#include <cassert>

inline constexpr uint32_t kt_no_slot = UINT32_MAX;
inline constexpr uint32_t kt_scan_limit = 8;     // up to here keys are scanned, beyond they are indexed
inline constexpr uint32_t kt_max_shape = 64;     // larger maps are private
inline constexpr uint32_t kt_first_capacity = 2; // own slots of a map that is added empty
inline constexpr uint8_t kt_free_slot = 0xFE;    // type of a slot whose pair was removed
inline constexpr uint8_t kt_outside_text = 0xFF; // inline_length of a text that lies outside its variant

struct kt_arena;

// Where a map's keys are described; the first members of a shape and of a private layout.
struct kt_layout {
    kt_arena *arena;
    uint32_t count; // of pairs
    bool is_private;
};

// Further values of a map that outgrew its own slots; each block is as large as all before it together.
struct kt_block {
    kt_block *next;
    uint32_t capacity;
    uint32_t own_capacity; // of the map that it belongs to
    KT_variant slots[1];
};

// A map. capacity_or_block is 2 * own capacity + 1, or the first further block.
//
// M1. A variant that holds a value never moves and is never handed to another pair while its pair is there.
// M2. With a shape, slot n holds the value of the shape's n-th key, and the map's blocks have room for all its keys.
// M3. A layout that has become private stays so; a private layout belongs to one map, a shape to its arena.
// M4. The outermost map of a tree (arena->root) may have the shape it was read or copied with, but a key that is added
//     to it makes it private.
struct KT_vhash {
    kt_layout *layout;
    uintptr_t capacity_or_block;
    KT_variant slots[1];
};

// Elements that are found by position in constant time and never move: the first block holds first_capacity of them,
// each further one as many as all before it.
template <class T> struct kt_segments {
    T *first;
    T **more;
    uint32_t first_capacity;
    uint32_t capacity;
};

struct KT_varray {
    kt_arena *arena;
    uint32_t count;
    kt_segments<KT_variant> elements;
};

// A key of a shape. Its text is followed by the text that the JSON writer copies: "key": with quotes and colon, and at
// least kt_json_key_room bytes that may be read.
inline constexpr uint32_t kt_json_key_room = 32;
struct kt_shape_key {
    kt_packed_key packed;
    const char *text;
    uint32_t hash;
    uint32_t json_length;
};

struct kt_index_cell {
    uint32_t hash;
    uint32_t slot_plus_1; // 0: empty
};

struct kt_index {
    kt_index_cell *cells;
    uint32_t mask; // number of cells - 1
};

// An ordered list of distinct keys. The shapes along one chain of transitions share it: each sees its first keys.
struct kt_shape_keys {
    kt_shape_key *keys;
    uint32_t count;
    uint32_t capacity;
    kt_index index; // over all keys, from kt_scan_limit + 1 keys on
};

struct kt_shape : kt_layout {
    kt_shape_keys *keys;
    kt_shape *parent;
    kt_shape *likely;      // the transition taken last
    kt_shape *also_likely; // and one that was taken before
    // The key added last with a quote after it, for the reader's guess: up to 16 bytes here, longer ones in the list
    // of keys. The length is 0 for a key that JSON writes otherwise.
    uint32_t quoted_length;
    uint8_t quoted[16];
    const char *long_quoted;
};

struct kt_entry {
    kt_packed_key key;
    KT_variant value; // unused where the map's own slots hold the value
};

// Slots of a private layout are entries in the order of adding, reused after removal.
//
// P1. The slots given out are those below `used`: `count` of them hold pairs, each of the others is once in the list
//     that begins at first_free. Such a slot's value has the type kt_free_slot and the next one's number in its
//     text_length, and its key equals none that can be looked for.
// P2. Without `order`, position and slot are equal, so there are no free slots: used == count.
// P3. With `order`, its first `count` numbers are the slots of the pairs, each once.
// P4. The values of slots below own_slots are in the map, those of all others in their entries.
// P5. The index has all pairs or no cells at all; it has cells from kt_scan_limit + 1 pairs on.
struct kt_private : kt_layout {
    uint32_t own_slots; // slots below this one have their values in the map itself
    uint32_t used;      // slots given out so far
    uint32_t first_free;
    uint32_t order_capacity;
    uint32_t *order; // position to slot; null as long as the two are equal
    kt_segments<kt_entry> entries;
    kt_index index;
};

struct kt_transition_table {
    kt_shape **cells;
    uint32_t mask;
    uint32_t count;
};

// A tree: its memory, its shapes, and the outermost map or list.
struct kt_arena {
    kt_pools pools;
    kt_shape empty_shape;
    kt_transition_table transitions;
    uint32_t *first_keys_seen; // hashes of keys that maps began with, see kt_shape_next
    uint32_t shape_credit;
    kt_seeds seeds;
    size_t json_size; // as last read or written
    const void *root;
};

inline constexpr size_t kt_map_header = offsetof(KT_vhash, slots);
inline constexpr size_t kt_block_header = offsetof(kt_block, slots);
// n slots take n + 1 granules; a header is half of one where pointers have 32 bits.
static_assert(sizeof(KT_variant) == kt_granule && kt_map_header <= kt_granule && kt_block_header <= kt_granule);

// Texts inside variants

inline char *kt_inline_text(KT_variant *value) noexcept
{
    return reinterpret_cast<char *>(value) + offsetof(KT_variant, inline_text);
}

inline const char *kt_variant_text(const KT_variant *value) noexcept
{
    return value->inline_length == kt_outside_text
               ? value->as.text
               : reinterpret_cast<const char *>(value) + offsetof(KT_variant, inline_text);
}

inline uint32_t kt_variant_text_length(const KT_variant *value) noexcept
{
    return value->inline_length == kt_outside_text ? value->text_length : value->inline_length;
}

// Values of maps

inline uint32_t kt_own_capacity(const KT_vhash *map) noexcept
{
    const uintptr_t field = map->capacity_or_block;
    return field & 1 ? static_cast<uint32_t>(field >> 1) : reinterpret_cast<const kt_block *>(field)->own_capacity;
}

KT_variant *kt_further_slot(const KT_vhash *map, uint32_t slot) noexcept;

inline KT_variant *kt_map_slot(const KT_vhash *map, uint32_t slot) noexcept
{
    if (slot < kt_own_capacity(map)) [[likely]]
        return const_cast<KT_variant *>(map->slots) + slot;
    return kt_further_slot(map, slot);
}

template <class T> inline T *kt_segment_at(const kt_segments<T> &segments, uint32_t i) noexcept
{
    if (i < segments.first_capacity) [[likely]]
        return segments.first + i;
    assert(segments.first_capacity);
    const uint32_t n = static_cast<uint32_t>(std::bit_width(i / segments.first_capacity));
    assert(n > 0);
    return segments.more[n - 1] + (i - (segments.first_capacity << (n - 1)));
}

inline kt_shape *kt_shape_of(const KT_vhash *map) noexcept
{
    return static_cast<kt_shape *>(map->layout);
}

inline kt_private *kt_private_of(const KT_vhash *map) noexcept
{
    return static_cast<kt_private *>(map->layout);
}

inline KT_variant *kt_private_value(const KT_vhash *map, const kt_private *layout, uint32_t slot) noexcept
{
    return slot < layout->own_slots ? kt_map_slot(map, slot) : &kt_segment_at(layout->entries, slot)->value;
}

inline KT_variant *kt_value_at(const KT_vhash *map, uint32_t slot) noexcept
{
    return map->layout->is_private ? kt_private_value(map, kt_private_of(map), slot) : kt_map_slot(map, slot);
}

// The slot of the n-th pair; n is below the count.
inline uint32_t kt_slot_at_position(const KT_vhash *map, uint32_t n) noexcept
{
    return map->layout->is_private && kt_private_of(map)->order ? kt_private_of(map)->order[n] : n;
}

inline const char *kt_key_at(const KT_vhash *map, uint32_t slot) noexcept
{
    return map->layout->is_private ? kt_key_text(kt_segment_at(kt_private_of(map)->entries, slot)->key)
                                   : kt_shape_of(map)->keys->keys[slot].text;
}

// Indexes, in kt_index.cpp. An index is at most half full.
inline uint32_t kt_index_start(const kt_index &index, uint32_t hash) noexcept
{
    return hash & index.mask;
}
// Makes room for `count` members; false when memory is short, and then nothing has changed.
bool kt_index_reserve(kt_arena *arena, kt_index *index, uint32_t count) noexcept;
void kt_index_put(kt_index *index, uint32_t hash, uint32_t slot) noexcept;
void kt_index_remove(kt_index *index, uint32_t hash, uint32_t slot) noexcept;
void kt_index_release(kt_arena *arena, kt_index *index) noexcept;

// Shapes, in kt_shape.cpp.
enum class kt_step { shared, go_private, out_of_memory };
// The shape that has one key more; creates it where that is worth while.
kt_step kt_shape_next(kt_shape *shape, const kt_query &query, kt_shape **next) noexcept;

// Layouts, in kt_layout.cpp. Those that return bool give false when memory is short; then nothing has changed.
KT_vhash *kt_map_new(kt_arena *arena, uint32_t own_capacity) noexcept;
kt_private *kt_private_new(kt_arena *arena, uint32_t capacity) noexcept;
// Adds a pair whose key is not there yet.
bool kt_map_append(KT_vhash *map, const kt_query &query, const KT_variant &value) noexcept;
// Removes the pair of a slot with its value.
bool kt_map_remove(KT_vhash *map, uint32_t slot) noexcept;
// Stores a key; a long one gets a copy of its text.
bool kt_key_store(kt_arena *arena, const kt_query &query, kt_packed_key *key) noexcept;

// Lists, in kt_varray.cpp.
KT_varray *kt_list_new(kt_arena *arena, uint32_t capacity) noexcept;
bool kt_list_append(KT_varray *list, const KT_variant &value) noexcept;

// Values, in kt_value.cpp.
// A text as a variant; false when memory is short.
bool kt_value_text(kt_arena *arena, const char *text, size_t length, KT_variant *value) noexcept;
// Frees what a value owns, however deep, without recursion.
void kt_value_release(kt_arena *arena, KT_variant *value) noexcept;
// A deep copy into the memory of a tree, without recursion; false when memory is short.
bool kt_value_copy(kt_arena *arena, const KT_variant &source, KT_variant *copy) noexcept;

// Trees, in kt_tree.cpp.
kt_arena *kt_arena_new(size_t size_hint) noexcept;
void kt_arena_destroy(kt_arena *arena) noexcept;
// A copy of a map as a tree of its own; null when memory is short.
KT_vhash *kt_tree_copy(const KT_vhash *source) noexcept;

inline KT_variant kt_null_value() noexcept
{
    return KT_variant{};
}

template <class T> inline T *kt_new_block(kt_arena *arena, size_t size) noexcept
{
    return static_cast<T *>(kt_pools_alloc(&arena->pools, size));
}
