// Whether a document has the shape of one.
//
// Nearly every document has, and it is asked of each one that is read, so this is one walk that compares no strings
// twice: maps of a tree share their keys, so that a key of one record is mostly the very string that a key of a record
// before was, and what is known of it is remembered by its address.

#include "document/document_shape_proof.hpp"

#include <cassert>
#include <cstring>
#include <iterator>

namespace {

constexpr uint32_t my_known_count = 64; // keys of the records of one shape that are remembered
constexpr uint32_t my_shape_count = 16;

struct my_knowledge;

// What is known of a key that a record has.
struct my_known_key {
    const char *key;
    const tov_member *member; // null: none of the shape's
    my_knowledge *inside;     // of the member's own shape; null: it has none
    uint32_t bit;             // of the member
};

// What is known of the records of one shape.
struct my_knowledge {
    const tov_shape *shape;
    uint32_t required;                 // the bits of members that must be there
    my_known_key keys[my_known_count]; // each where its address says, as my_place_of() has it
};

struct my_walk {
    KT_context *ctx;
    uint32_t count = 0;
    my_knowledge all[my_shape_count] = {};
};

} // namespace

// By member type.
static constexpr KT_variant_type my_variants[] = {
    KT_VARIANT_STRING, KT_VARIANT_INT64, KT_VARIANT_BOOL,  KT_VARIANT_VHASH, KT_VARIANT_VHASH,
    KT_VARIANT_VARRAY, KT_VARIANT_VHASH, KT_VARIANT_VHASH, KT_VARIANT_VHASH, KT_VARIANT_VHASH,
};
static_assert(std::size(my_variants) == TOV_MEMBER_OPEN + 1);

KT_variant_type document_variant_of(tov_member_type type) noexcept
{
    return my_variants[type];
}

const tov_member *document_find_member(const tov_shape &shape, const char *key) noexcept
{
    for (uint32_t n = 0; n < shape.count; n++)
        if (std::strcmp(shape.members[n].key, key) == 0)
            return &shape.members[n];
    return nullptr;
}

bool document_is_absent(const KT_variant *value, const tov_member &member) noexcept
{
    return value->type == KT_VARIANT_NULL && member.type == TOV_MEMBER_STRING && !member.is_required;
}

static my_knowledge &my_knowledge_of(my_walk *walk, const tov_shape &shape) noexcept
{
    for (uint32_t n = 0; n < walk->count; n++)
        if (walk->all[n].shape == &shape)
            return walk->all[n];
    assert(walk->count < my_shape_count && shape.count <= 32);
    my_knowledge &made = walk->all[walk->count++];
    made.shape = &shape;
    for (uint32_t n = 0; n < shape.count; n++)
        made.required |= static_cast<uint32_t>(shape.members[n].is_required) << n;
    return made;
}

static my_known_key my_look_at_key(my_walk *walk, const tov_shape &shape, const char *key) noexcept
{
    const tov_member *member = document_find_member(shape, key);
    if (!member)
        return {key, nullptr, nullptr, 0};
    return {key, member, member->shape ? &my_knowledge_of(walk, *member->shape) : nullptr,
            uint32_t{1} << (member - shape.members)};
}

// Blocks of a tree's memory are multiples of 16 bytes.
static uint32_t my_place_of(const char *key) noexcept
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key) / 16) % my_known_count;
}

static bool my_has_shape(my_walk *walk, const KT_vhash *record, my_knowledge &knowledge) noexcept;

static bool my_have_shape(my_walk *walk, const KT_varray *list, my_knowledge &knowledge) noexcept
{
    uint32_t count = 0;
    KT_varray__count(walk->ctx, list, &count);
    for (uint32_t n = 0; n < count; n++) {
        const KT_variant *value = nullptr;
        KT_varray__get_nth(walk->ctx, list, n, &value);
        if (value->type != KT_VARIANT_VHASH || !my_has_shape(walk, value->as.vhash, knowledge))
            return false;
    }
    return true;
}

// The values of a map that is keyed by ids: records of a shape, or others of one type.
static bool my_are_values(my_walk *walk, const KT_vhash *map, KT_variant_type type, my_knowledge *knowledge) noexcept
{
    uint32_t count = 0;
    KT_vhash__count(walk->ctx, map, &count);
    for (uint32_t n = 0; n < count; n++) {
        const KT_variant *value = nullptr;
        KT_vhash__get_nth_pair(walk->ctx, map, n, nullptr, &value);
        if (value->type != type || (knowledge && !my_has_shape(walk, value->as.vhash, *knowledge)))
            return false;
    }
    return true;
}

static bool my_is_value(my_walk *walk, const KT_variant *value, const my_known_key &known) noexcept
{
    if (value->type != my_variants[known.member->type])
        return document_is_absent(value, *known.member);
    switch (known.member->type) {
    case TOV_MEMBER_RECORD:
        return !known.inside || my_has_shape(walk, value->as.vhash, *known.inside);
    case TOV_MEMBER_LIST:
        return !known.inside || my_have_shape(walk, value->as.varray, *known.inside);
    case TOV_MEMBER_RECORDS:
    case TOV_MEMBER_COL_SETS:
        return my_are_values(walk, value->as.vhash, KT_VARIANT_VHASH, known.inside);
    case TOV_MEMBER_COL_PAIRS:
        return my_are_values(walk, value->as.vhash, KT_VARIANT_STRING, nullptr);
    default: // has nothing inside that could be wrong
        return true;
    }
}

static bool my_has_shape(my_walk *walk, const KT_vhash *record, my_knowledge &knowledge) noexcept
{
    uint32_t count = 0, found = 0;
    KT_vhash__count(walk->ctx, record, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_vhash__get_nth_pair(walk->ctx, record, n, &key, &value);
        my_known_key &known = knowledge.keys[my_place_of(key)];
        if (known.key != key)
            known = my_look_at_key(walk, *knowledge.shape, key);
        const my_known_key now = known; // a record inside may have the same shape
        found |= now.bit;
        if (now.member && !my_is_value(walk, value, now))
            return false;
    }
    return (knowledge.required & ~found) == 0;
}

bool document_has_shape(KT_context *ctx, const KT_vhash *record, const tov_shape &shape) noexcept
{
    my_walk walk{ctx};
    return my_has_shape(&walk, record, my_knowledge_of(&walk, shape));
}
