// Values as a whole: making texts, freeing and copying what a variant owns.
//
// Documents may be as deep as memory allows, so neither freeing nor copying recurses. Freeing must not fail either:
// it takes no memory, and keeps the way back up in the slots that it has already emptied.

#include "base/kt_memory_private.hpp"
#include "tree/kt_segments.hpp"

bool kt_value_text(kt_arena *arena, const char *text, size_t length, KT_variant *value) noexcept
{
    *value = {};
    value->type = KT_VARIANT_STRING;
    char *place = kt_inline_text(value);
    if (length > KT_VARIANT_INLINE_TEXT) {
        if (length >= UINT32_MAX || !(place = kt_new_block<char>(arena, length + 1)))
            return false;
        value->inline_length = kt_outside_text;
        value->text_length = static_cast<uint32_t>(length);
        value->as.text = place;
    } else {
        value->inline_length = static_cast<uint8_t>(length);
    }
    std::memcpy(place, text, length);
    place[length] = '\0';
    return true;
}

static bool my_is_container(const KT_variant *value) noexcept
{
    return value->type == KT_VARIANT_VHASH || value->type == KT_VARIANT_VARRAY;
}

// A map or list on the way, and the slot that is looked at.
struct my_place {
    void *container;
    uint32_t slot;
    KT_variant_type type;

    KT_vhash *map() const noexcept
    {
        return static_cast<KT_vhash *>(container);
    }
    KT_varray *list() const noexcept
    {
        return static_cast<KT_varray *>(container);
    }
};

static my_place my_enter(const KT_variant *value) noexcept
{
    if (value->type == KT_VARIANT_VHASH)
        return {value->as.vhash, 0, KT_VARIANT_VHASH};
    return {value->as.varray, 0, KT_VARIANT_VARRAY};
}

// Freeing

static uint32_t my_count_slots(const my_place &at) noexcept
{
    if (at.type == KT_VARIANT_VARRAY)
        return at.list()->count;
    const kt_layout *layout = at.map()->layout;
    return layout->is_private ? static_cast<const kt_private *>(layout)->used : layout->count;
}

static KT_variant *my_slot(const my_place &at) noexcept
{
    return at.type == KT_VARIANT_VARRAY ? kt_segment_at(at.list()->elements, at.slot) : kt_value_at(at.map(), at.slot);
}

static void my_release_private(kt_arena *arena, kt_private *layout) noexcept
{
    for (uint32_t slot = 0; slot < layout->used; slot++) {
        const kt_packed_key &key = kt_segment_at(layout->entries, slot)->key;
        if (key.bytes[0] == kt_long_key && key.outside.owned)
            kt_pools_release(&arena->pools, const_cast<char *>(key.outside.text), size_t{key.outside.length} + 1);
    }
    kt_segments_release(arena, &layout->entries);
    kt_index_release(arena, &layout->index);
    if (layout->order)
        kt_pools_release(&arena->pools, layout->order, layout->order_capacity * sizeof(uint32_t));
    kt_pools_release(&arena->pools, layout, sizeof(kt_private));
}

static void my_release_container(kt_arena *arena, const my_place &at) noexcept
{
    if (at.type == KT_VARIANT_VARRAY) {
        kt_segments_release(arena, &at.list()->elements);
        kt_pools_release(&arena->pools, at.list(), sizeof(KT_varray));
        return;
    }
    KT_vhash *map = at.map();
    const size_t own_size = kt_map_header + kt_own_capacity(map) * sizeof(KT_variant);
    if (map->layout->is_private)
        my_release_private(arena, kt_private_of(map));
    if (!(map->capacity_or_block & 1)) {
        for (auto *block = reinterpret_cast<kt_block *>(map->capacity_or_block); block;) {
            kt_block *next = block->next;
            kt_pools_release(&arena->pools, block, kt_block_header + block->capacity * sizeof(KT_variant));
            block = next;
        }
    }
    kt_pools_release(&arena->pools, map, own_size);
}

static void my_release_text(kt_arena *arena, KT_variant *value) noexcept
{
    if (value->type == KT_VARIANT_STRING && value->inline_length == kt_outside_text)
        kt_pools_release(&arena->pools, const_cast<char *>(value->as.text), size_t{value->text_length} + 1);
}

void kt_value_release(kt_arena *arena, KT_variant *value) noexcept
{
    if (!my_is_container(value)) {
        my_release_text(arena, value);
        return;
    }
    my_place up{};
    my_place at = my_enter(value);
    for (;;) {
        if (at.slot < my_count_slots(at)) {
            KT_variant *slot = my_slot(at);
            if (my_is_container(slot)) {
                // The slot has told where its child is; from now on it tells the way up.
                const my_place child = my_enter(slot);
                slot->as.vhash = static_cast<KT_vhash *>(up.container);
                slot->text_length = up.slot;
                slot->inline_length = up.type;
                up = at;
                at = child;
                continue;
            }
            my_release_text(arena, slot);
            at.slot++;
            continue;
        }
        my_release_container(arena, at);
        if (!up.container)
            return;
        at = up;
        const KT_variant *slot = my_slot(at);
        up = {slot->as.vhash, slot->text_length, slot->inline_length};
        at.slot++;
    }
}

// Copying

struct my_copy_step {
    my_place source;
    my_place copy;
};

struct my_copy_stack {
    my_copy_step *steps = nullptr;
    size_t count = 0;
    size_t capacity = 0;

    ~my_copy_stack()
    {
        kt_release(steps);
    }
    bool push(const my_copy_step &step) noexcept
    {
        if (count == capacity) {
            const size_t wanted = capacity ? capacity * 2 : 16;
            auto *grown = static_cast<my_copy_step *>(
                kt_resize(steps, capacity * sizeof(my_copy_step), wanted * sizeof(my_copy_step)));
            if (!grown)
                return false;
            steps = grown;
            capacity = wanted;
        }
        steps[count++] = step;
        return true;
    }
};

// An empty container that will hold as many members, laid out like its source.
static bool my_copy_empty(kt_arena *arena, const KT_variant &source, KT_variant *copy) noexcept
{
    *copy = {};
    if (source.type == KT_VARIANT_VARRAY) {
        copy->as.varray = kt_list_new(arena, source.as.varray->count);
        copy->type = copy->as.varray ? KT_VARIANT_VARRAY : KT_VARIANT_NULL;
        return copy->as.varray;
    }
    const kt_layout *layout = source.as.vhash->layout;
    copy->as.vhash = kt_map_new(arena, layout->is_private ? 0 : layout->count);
    copy->type = copy->as.vhash ? KT_VARIANT_VHASH : KT_VARIANT_NULL;
    if (copy->as.vhash && layout->is_private && layout->count) {
        kt_private *own = kt_private_new(arena, layout->count);
        if (!own)
            return false;
        copy->as.vhash->layout = own;
    }
    return copy->as.vhash;
}

static bool my_copy_value(kt_arena *arena, const KT_variant &source, KT_variant *copy) noexcept
{
    if (my_is_container(&source))
        return my_copy_empty(arena, source, copy);
    if (source.type == KT_VARIANT_STRING)
        return kt_value_text(arena, kt_variant_text(&source), kt_variant_text_length(&source), copy);
    *copy = source;
    return true;
}

static bool my_append_copy(const my_copy_step &step, uint32_t slot, const KT_variant &value) noexcept
{
    if (step.copy.type == KT_VARIANT_VARRAY)
        return kt_list_append(step.copy.list(), value);
    return kt_map_append(step.copy.map(), kt_make_query(kt_key_at(step.source.map(), slot)), value);
}

// Copies the next member, and goes into it when it is a container.
static bool my_copy_step_on(kt_arena *arena, my_copy_stack *stack, uint32_t count) noexcept
{
    my_copy_step &step = stack->steps[stack->count - 1];
    const uint32_t n = step.source.slot++;
    my_place member = step.source;
    member.slot = step.source.type == KT_VARIANT_VHASH ? kt_slot_at_position(member.map(), n) : n;
    const KT_variant *source = my_slot(member);
    KT_variant copy;
    const bool is_copied = my_copy_value(arena, *source, &copy);
    if (!is_copied || !my_append_copy(step, member.slot, copy)) {
        kt_value_release(arena, &copy);
        return false;
    }
    if (step.source.slot == count)
        stack->count--;
    return !my_is_container(source) || stack->push({my_enter(source), my_enter(&copy)});
}

static uint32_t my_count_members(const my_place &at) noexcept
{
    return at.type == KT_VARIANT_VARRAY ? at.list()->count : at.map()->layout->count;
}

bool kt_value_copy(kt_arena *arena, const KT_variant &source, KT_variant *copy) noexcept
{
    my_copy_stack stack;
    bool ok = my_copy_value(arena, source, copy);
    if (ok && my_is_container(&source))
        ok = stack.push({my_enter(&source), my_enter(copy)});
    while (ok && stack.count) {
        const uint32_t count = my_count_members(stack.steps[stack.count - 1].source);
        if (count == 0)
            stack.count--;
        else
            ok = my_copy_step_on(arena, &stack, count);
    }
    if (!ok)
        kt_value_release(arena, copy);
    return ok;
}
