// Keys of the maps that are being read, and the making of a map or list when it closes.

#include "tree/kt_find.hpp"
#include "tree/kt_segments.hpp"
#include "json/kt_json_reader.hpp"

static kt_query my_query_of(const kt_packed_key &key) noexcept
{
    kt_query query{kt_key_text(key), kt_key_length(key), key.bytes[0] != kt_long_key, key};
    return query;
}

static const char *my_refuse_repeated_key(kt_json_reader *reader, const char *place) noexcept
{
    return kt_reader_fail(reader, place, "a key that the object does not have yet");
}

static bool my_take_up_shared(kt_json_reader *reader, const kt_query &query, const char *place) noexcept
{
    kt_reader_frame &frame = reader->frame;
    if (kt_find_in_shape(frame.shape, query) != kt_no_slot)
        return my_refuse_repeated_key(reader, place);
    kt_shape *next = nullptr;
    switch (kt_shape_next(frame.shape, query, &next)) {
    case kt_step::shared:
        frame.shape = next;
        return true;
    case kt_step::go_private:
        frame.kind = kt_reader_kind::private_map;
        return true;
    default:
        return false;
    }
}

// Whether a private map repeats a key shows when it closes and has its index.
static bool my_take_up_private(kt_json_reader *reader, const kt_query &query, const char *place) noexcept
{
    kt_reader_key *key = reader->keys.push();
    if (!key || !kt_key_store(reader->arena, query, &key->key))
        return false;
    key->place = place;
    return true;
}

const char *kt_reader_key_text(kt_json_reader *reader, const char *at) noexcept
{
    const char *place = at - 1;
    const char *bytes = nullptr;
    size_t length = 0;
    if (!(at = kt_reader_bytes(reader, at, &bytes, &length)))
        return nullptr;
    if (length >= UINT32_MAX)
        return kt_reader_fail(reader, place, "a shorter key");
    const kt_query query = kt_make_query(bytes, length);
    if (reader->frame.kind == kt_reader_kind::shared_map && !my_take_up_shared(reader, query, place))
        return nullptr;
    if (reader->frame.kind == kt_reader_kind::private_map && !my_take_up_private(reader, query, place))
        return nullptr;
    return at;
}

// The hash counts only where there is an index.
static bool my_has_key(const kt_private *layout, const kt_query &query, uint32_t hash) noexcept
{
    const uint32_t slot =
        layout->index.cells ? kt_find_in_private_index(layout, query, hash) : kt_scan_entries(layout, query);
    return slot != kt_no_slot;
}

static bool my_fill_private(kt_json_reader *reader, kt_private *layout, uint32_t count) noexcept
{
    const kt_reader_frame &frame = reader->frame;
    const KT_variant *values = reader->values.at(frame.first_value);
    for (uint32_t slot = 0; slot < count; slot++) {
        const bool is_shared = slot < frame.shape->count;
        const kt_reader_key *own = is_shared ? nullptr : reader->keys.at(frame.first_key + slot - frame.shape->count);
        const kt_packed_key &key = own ? own->key : frame.shape->keys->keys[slot].packed;
        const kt_query query = my_query_of(key);
        const uint32_t hash = layout->index.cells ? kt_hash(query, reader->arena->seeds) : 0;
        if (own && my_has_key(layout, query, hash))
            return my_refuse_repeated_key(reader, own->place);
        *kt_segment_at(layout->entries, slot) = {key, values[slot]};
        if (layout->index.cells)
            kt_index_put(&layout->index, hash, slot);
        layout->count = ++layout->used;
    }
    return true;
}

static bool my_close_map(kt_json_reader *reader, uint32_t count, KT_variant *value) noexcept
{
    const kt_reader_frame &frame = reader->frame;
    const bool is_shared = frame.kind == kt_reader_kind::shared_map || count == 0;
    KT_vhash *map = kt_map_new(reader->arena, is_shared ? count : 0);
    if (!map)
        return false;
    if (is_shared) {
        map->layout = frame.shape;
        std::memcpy(map->slots, reader->values.at(frame.first_value), count * sizeof(KT_variant));
    } else {
        kt_private *layout = kt_private_new(reader->arena, count);
        if (!layout || !my_fill_private(reader, layout, count))
            return false;
        map->layout = layout;
        reader->keys.shrink_to(frame.first_key);
    }
    *value = {};
    value->type = KT_VARIANT_VHASH;
    value->as.vhash = map;
    return true;
}

static bool my_close_list(kt_json_reader *reader, uint32_t count, KT_variant *value) noexcept
{
    KT_varray *list = kt_list_new(reader->arena, count);
    if (!list)
        return false;
    if (count)
        std::memcpy(list->elements.first, reader->values.at(reader->frame.first_value), count * sizeof(KT_variant));
    list->count = count;
    *value = {};
    value->type = KT_VARIANT_VARRAY;
    value->as.varray = list;
    return true;
}

bool kt_reader_close(kt_json_reader *reader, KT_variant *value) noexcept
{
    const auto count = static_cast<uint32_t>(reader->values.count() - reader->frame.first_value);
    const bool is_made = reader->frame.kind == kt_reader_kind::list ? my_close_list(reader, count, value)
                                                                    : my_close_map(reader, count, value);
    reader->values.shrink_to(reader->frame.first_value);
    return is_made;
}
