// Writing a map as JSON text, straight into the string's room, without recursion.
//
// Before each member there is room for its key and for any value that is not a long text, so that pieces are copied
// with fixed sizes and without further tests.

#include "base/kt_memory_private.hpp"
#include "kt_try.hpp"
#include "text/kt_string_private.hpp"
#include "tree/kt_tree.hpp"
#include "json/kt_json_text.hpp"

#include <charconv>
#include <cmath>

#define KT_HERE "src/runtime/kt_json_writer"

// A number, a word, or an inline text with every byte escaped, its comma, and 16 bytes that a copy may run over.
static constexpr size_t my_value_room = 6 * KT_VARIANT_INLINE_TEXT + 32;
// The same with a key of the common kind before it. Every step begins with that much room, and keeps what a closing
// bracket takes.
static constexpr size_t my_member_room = kt_json_key_room + my_value_room;

// A map or list that is being written.
struct my_level {
    const KT_vhash *map; // null: a list
    const KT_varray *list;
    uint32_t next;
    uint32_t count;
};

struct my_writer {
    KT_context *ctx;
    KT_string *json;
    char *limit;
    my_level *levels; // those around the innermost one
    uint32_t count;
    uint32_t capacity;
};

// Each piece is written to `out` and gives the place after it, or null after a failure, which is in the context. So
// that place stays in a register: bytes that are written could change any other.

[[gnu::cold]] static void my_raise_out_of_memory(KT_context *ctx) noexcept
{
    KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

[[gnu::cold]] static void my_raise_bad_text(KT_context *ctx, const char *text) noexcept
{
    KT_FAIL(KT_ERR_BAD_VALUE, "a text is not UTF-8: '%.40s'", text);
}

[[gnu::cold]] static void my_raise_bad_number(KT_context *ctx) noexcept
{
    KT_FAIL(KT_ERR_BAD_VALUE, "a number that is not finite has no JSON form");
}

[[gnu::noinline]] static char *my_grow(my_writer *writer, char *out, size_t more) noexcept
{
    kt_string_set_end(writer->json, out);
    if (!kt_string_reserve(writer->json, more)) {
        my_raise_out_of_memory(writer->ctx);
        return nullptr;
    }
    writer->limit = writer->json->limit;
    return writer->json->end;
}

static inline char *my_reserve(my_writer *writer, char *out, size_t more) noexcept
{
    return static_cast<size_t>(writer->limit - out) >= more ? out : my_grow(writer, out, more);
}

static char *my_escape(char *out, uint8_t byte) noexcept
{
    static constexpr char letters[] = "btn?fr"; // from \b = 8 on; 11 has no letter
    static constexpr char digits[] = "0123456789abcdef";
    *out++ = '\\';
    if (byte == '"' || byte == '\\') {
        *out++ = static_cast<char>(byte);
    } else if (byte >= 8 && byte <= 13 && byte != 11) {
        *out++ = letters[byte - 8];
    } else {
        out[0] = 'u';
        out[1] = out[2] = '0';
        out[3] = digits[byte >> 4];
        out[4] = digits[byte & 15];
        out += 5;
    }
    return out;
}

// A text that needs escapes or holds more than ASCII. It must be UTF-8, or nobody could read it back.
[[gnu::noinline]] static char *my_write_special_text(my_writer *writer, char *out, const char *text,
                                                     size_t length) noexcept
{
    if (!(out = my_reserve(writer, out, 6 * length + my_member_room)))
        return nullptr;
    const char *end = text + length;
    *out++ = '"';
    while (text < end) {
        const auto byte = static_cast<uint8_t>(*text);
        if (byte >= 0x80) {
            const uint32_t bytes = kt_utf8_sequence(text, end);
            if (bytes == 0) {
                my_raise_bad_text(writer->ctx, end - length);
                return nullptr;
            }
            std::memcpy(out, text, bytes);
            out += bytes;
            text += bytes;
        } else if (kt_json_is_plain(*text)) {
            *out++ = *text++;
        } else {
            out = my_escape(out, byte);
            text++;
        }
    }
    *out++ = '"';
    return out;
}

static char *my_write_text(my_writer *writer, char *out, const char *text, size_t length) noexcept
{
    if (kt_json_skip_plain(text, text + length) != text + length)
        return my_write_special_text(writer, out, text, length);
    if (!(out = my_reserve(writer, out, length + my_member_room)))
        return nullptr;
    *out = '"';
    std::memcpy(out + 1, text, length);
    out[length + 1] = '"';
    return out + length + 2;
}

// A text inside its variant: the whole variant can be looked at and copied at once.
static inline char *my_write_inline_text(my_writer *writer, char *out, const KT_variant *value) noexcept
{
    static constexpr uint32_t before = offsetof(KT_variant, inline_text);
    const char *bytes = reinterpret_cast<const char *>(value);
    const uint32_t length = value->inline_length;
    if ((kt_json_special_16(bytes) >> before) & ((1U << length) - 1)) [[unlikely]]
        return my_write_special_text(writer, out, bytes + before, length);
    *out = '"';
    std::memcpy(out + 1, bytes + before, sizeof(KT_variant) - before);
    out[length + 1] = '"';
    return out + length + 2;
}

static char *my_write_double(my_writer *writer, char *out, double number) noexcept
{
    if (!std::isfinite(number)) {
        my_raise_bad_number(writer->ctx);
        return nullptr;
    }
    char *end = std::to_chars(out, out + 32, number).ptr;
    if (!std::memchr(out, '.', static_cast<size_t>(end - out)) &&
        !std::memchr(out, 'e', static_cast<size_t>(end - out))) {
        *end++ = '.'; // or it would come back as an integer
        *end++ = '0';
    }
    return end;
}

static inline char *my_write_word(char *out, const char (&word)[5]) noexcept
{
    std::memcpy(out, word, 4);
    return out + 4;
}

// A value that is not a map or list.
static inline char *my_write_scalar(my_writer *writer, char *out, const KT_variant *value) noexcept
{
    switch (value->type) {
    case KT_VARIANT_STRING:
        if (value->inline_length != kt_outside_text)
            return my_write_inline_text(writer, out, value);
        return my_write_text(writer, out, value->as.text, value->text_length);
    case KT_VARIANT_BOOL:
        if (value->as.boolean)
            return my_write_word(out, "true");
        *out++ = 'f';
        return my_write_word(out, "alse");
    case KT_VARIANT_INT64:
        return std::to_chars(out, out + 24, value->as.int64).ptr;
    case KT_VARIANT_DOUBLE:
        return my_write_double(writer, out, value->as.real);
    default:
        return my_write_word(out, "null");
    }
}

static char *my_write_uncommon_key(my_writer *writer, char *out, const char *text) noexcept
{
    if (!(out = my_write_text(writer, out, text, std::strlen(text))))
        return nullptr;
    *out++ = ':';
    return my_reserve(writer, out, my_value_room);
}

static inline char *my_write_key(my_writer *writer, char *out, const KT_vhash *map, uint32_t slot) noexcept
{
    if (!map->layout->is_private) [[likely]] {
        const kt_shape_key &key = kt_shape_of(map)->keys->keys[slot];
        if (key.json_length - 1 < kt_json_key_room) [[likely]] {                // 0 is none of these
            std::memcpy(out, key.text + key.json_length - 2, kt_json_key_room); // there is room after both
            return out + key.json_length;
        }
    }
    return my_write_uncommon_key(writer, out, kt_key_at(map, slot));
}

[[gnu::noinline]] static bool my_grow_levels(my_writer *writer) noexcept
{
    const uint32_t wanted = writer->capacity ? writer->capacity * 2 : 32;
    auto *grown = static_cast<my_level *>(
        kt_resize(writer->levels, writer->capacity * sizeof(my_level), wanted * sizeof(my_level)));
    if (!grown) {
        my_raise_out_of_memory(writer->ctx);
        return false;
    }
    writer->levels = grown;
    writer->capacity = wanted;
    return true;
}

static inline bool my_push(my_writer *writer, my_level level) noexcept
{
    if (writer->count == writer->capacity && !my_grow_levels(writer)) [[unlikely]]
        return false;
    writer->levels[writer->count++] = level;
    return true;
}

static inline my_level my_level_of(const KT_vhash *map) noexcept
{
    return {map, nullptr, 0, map->layout->count};
}

// Opens the map or list that a value is, or writes the value.
static inline char *my_write_value(my_writer *writer, char *out, const KT_variant *value, my_level *level) noexcept
{
    if (value->type == KT_VARIANT_VHASH) {
        *out++ = '{';
        if (value->as.vhash->layout->count == 0) {
            *out++ = '}';
            return out;
        }
        if (!my_push(writer, *level))
            return nullptr;
        *level = my_level_of(value->as.vhash);
        return out;
    }
    if (value->type == KT_VARIANT_VARRAY) {
        *out++ = '[';
        if (!my_push(writer, *level))
            return nullptr;
        *level = {nullptr, value->as.varray, 0, value->as.varray->count};
        return out;
    }
    return my_write_scalar(writer, out, value);
}

// Writes the next member of the innermost map or list.
static inline char *my_write_member(my_writer *writer, char *out, my_level *level) noexcept
{
    if (!(out = my_reserve(writer, out, my_member_room + 1)))
        return nullptr;
    const uint32_t n = level->next++;
    if (n)
        *out++ = ',';
    const KT_variant *value = nullptr;
    if (level->map) {
        const uint32_t slot = kt_slot_at_position(level->map, n);
        if (!(out = my_write_key(writer, out, level->map, slot)))
            return nullptr;
        value = kt_value_at(level->map, slot);
    } else {
        value = kt_segment_at(level->list->elements, n);
    }
    return my_write_value(writer, out, value, level);
}

static char *my_write(my_writer *writer, char *out, const KT_vhash *map) noexcept
{
    my_level level = my_level_of(map);
    const kt_arena *arena = map->layout->arena;
    const size_t expected = map == arena->root ? arena->json_size : 0;
    if (!(out = my_grow(writer, out, expected + my_member_room)))
        return nullptr;
    *out++ = '{';
    for (;;) {
        while (level.next < level.count)
            if (!(out = my_write_member(writer, out, &level)))
                return nullptr;
        if (!(out = my_reserve(writer, out, my_member_room)))
            return nullptr;
        *out++ = level.map ? '}' : ']';
        if (writer->count == 0)
            return out;
        level = writer->levels[--writer->count];
    }
}

void KT_vhash__to_json(KT_context *ctx, const KT_vhash *map, KT_string *json) noexcept
{
    KT_RETURN_IF_FAILED;
    const size_t before = kt_string_length(json);
    my_writer writer{ctx, json, json->limit, nullptr, 0, 0};
    char *end = my_write(&writer, json->end, map);
    kt_release(writer.levels);
    kt_string_set_end(json, end ? end : json->begin + before);
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        return;
    if (map == map->layout->arena->root)
        map->layout->arena->json_size = kt_string_length(json) - before;
}
