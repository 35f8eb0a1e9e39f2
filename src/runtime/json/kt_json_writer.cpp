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
static constexpr size_t my_member_room = 6 * KT_VARIANT_INLINE_TEXT + 32;

// A map or list that is being written.
struct my_level {
    const void *container;
    uint32_t next;
    uint32_t count;
    bool is_list;
};

struct my_writer {
    KT_context *ctx;
    KT_string *json;
    char *out;
    char *limit;
    my_level *levels;
    uint32_t count;
    uint32_t capacity;
};

static void my_grow(my_writer *writer, size_t more) noexcept
{
    KT_context *ctx = writer->ctx;
    kt_string_set_end(writer->json, writer->out);
    if (!kt_string_reserve(writer->json, more))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    writer->out = writer->json->end;
    writer->limit = writer->json->limit;
}

static inline void my_reserve(my_writer *writer, size_t more) noexcept
{
    if (static_cast<size_t>(writer->limit - writer->out) < more) [[unlikely]]
        my_grow(writer, more);
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
static void my_write_special_text(my_writer *writer, const char *text, size_t length) noexcept
{
    KT_context *ctx = writer->ctx;
    KT_TRY(my_reserve(writer, 6 * length + my_member_room));
    char *out = writer->out;
    const char *end = text + length;
    *out++ = '"';
    while (text < end) {
        const auto byte = static_cast<uint8_t>(*text);
        if (byte >= 0x80) {
            const uint32_t bytes = kt_utf8_sequence(text, end);
            if (bytes == 0)
                KT_FAIL(KT_ERR_BAD_VALUE, "a text is not UTF-8: '%.40s'", end - length);
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
    writer->out = out;
}

static void my_write_text(my_writer *writer, const char *text, size_t length) noexcept
{
    KT_context *ctx = writer->ctx;
    if (kt_json_skip_plain(text, text + length) != text + length) {
        KT_TRY(my_write_special_text(writer, text, length));
        return;
    }
    KT_TRY(my_reserve(writer, length + my_member_room));
    char *out = writer->out;
    *out = '"';
    std::memcpy(out + 1, text, length);
    out[length + 1] = '"';
    writer->out = out + length + 2;
}

// A text inside its variant: the whole variant can be looked at and copied at once.
static inline void my_write_inline_text(my_writer *writer, const KT_variant *value) noexcept
{
    static constexpr uint32_t before = offsetof(KT_variant, inline_text);
    const char *bytes = reinterpret_cast<const char *>(value);
    const uint32_t length = value->inline_length;
    if ((kt_json_special_16(bytes) >> before) & ((1U << length) - 1)) [[unlikely]] {
        my_write_special_text(writer, bytes + before, length);
        return;
    }
    char *out = writer->out;
    *out = '"';
    std::memcpy(out + 1, bytes + before, sizeof(KT_variant) - before);
    out[length + 1] = '"';
    writer->out = out + length + 2;
}

static void my_write_double(my_writer *writer, double number) noexcept
{
    KT_context *ctx = writer->ctx;
    if (!std::isfinite(number))
        KT_FAIL(KT_ERR_BAD_VALUE, "a number that is not finite has no JSON form");
    char *out = writer->out;
    char *end = std::to_chars(out, out + 32, number).ptr;
    if (!std::memchr(out, '.', static_cast<size_t>(end - out)) &&
        !std::memchr(out, 'e', static_cast<size_t>(end - out))) {
        *end++ = '.'; // or it would come back as an integer
        *end++ = '0';
    }
    writer->out = end;
}

static inline char *my_put_word(char *out, const char (&word)[5]) noexcept
{
    std::memcpy(out, word, 4);
    return out + 4;
}

static void my_push(my_writer *writer, const void *container, uint32_t count, bool is_list) noexcept
{
    KT_context *ctx = writer->ctx;
    if (writer->count == writer->capacity) {
        const uint32_t wanted = writer->capacity ? writer->capacity * 2 : 32;
        auto *grown = static_cast<my_level *>(
            kt_resize(writer->levels, writer->capacity * sizeof(my_level), wanted * sizeof(my_level)));
        if (!grown)
            KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
        writer->levels = grown;
        writer->capacity = wanted;
    }
    writer->levels[writer->count++] = {container, 0, count, is_list};
}

// Writes a value, or opens the map or list that it is.
static inline void my_write_value(my_writer *writer, const KT_variant *value) noexcept
{
    switch (value->type) {
    case KT_VARIANT_STRING:
        if (value->inline_length != kt_outside_text)
            my_write_inline_text(writer, value);
        else
            my_write_text(writer, value->as.text, value->text_length);
        return;
    case KT_VARIANT_BOOL:
        if (value->as.boolean) {
            writer->out = my_put_word(writer->out, "true");
        } else {
            *writer->out++ = 'f';
            writer->out = my_put_word(writer->out, "alse");
        }
        return;
    case KT_VARIANT_INT64:
        writer->out = std::to_chars(writer->out, writer->out + 24, value->as.int64).ptr;
        return;
    case KT_VARIANT_DOUBLE:
        my_write_double(writer, value->as.real);
        return;
    case KT_VARIANT_VHASH:
        *writer->out++ = '{';
        my_push(writer, value->as.vhash, value->as.vhash->layout->count, false);
        return;
    case KT_VARIANT_VARRAY:
        *writer->out++ = '[';
        my_push(writer, value->as.varray, value->as.varray->count, true);
        return;
    default:
        writer->out = my_put_word(writer->out, "null");
    }
}

static inline void my_write_key(my_writer *writer, const KT_vhash *map, uint32_t slot) noexcept
{
    KT_context *ctx = writer->ctx;
    if (!map->layout->is_private) [[likely]] {
        const kt_shape_key &key = kt_shape_of(map)->keys->keys[slot];
        if (key.json_length) [[likely]] {
            KT_TRY(my_reserve(writer, key.json_length + my_member_room));
            const char *json = key.text + key.json_length - 2;
            if (key.json_length <= kt_json_key_room) [[likely]]
                std::memcpy(writer->out, json, kt_json_key_room); // there is room after both
            else
                std::memcpy(writer->out, json, key.json_length);
            writer->out += key.json_length;
            return;
        }
    }
    const char *text = kt_key_at(map, slot);
    KT_TRY(my_write_text(writer, text, std::strlen(text)));
    *writer->out++ = ':';
    KT_TRY(my_reserve(writer, my_member_room));
}

// Writes the next member of the innermost container, or closes it. Every step leaves room for a comma and a bracket.
static inline void my_write_step(my_writer *writer) noexcept
{
    KT_context *ctx = writer->ctx;
    my_level *level = &writer->levels[writer->count - 1];
    if (level->next == level->count) {
        KT_TRY(my_reserve(writer, my_member_room));
        *writer->out++ = level->is_list ? ']' : '}';
        writer->count--;
        return;
    }
    const uint32_t n = level->next++;
    KT_TRY(my_reserve(writer, my_member_room));
    if (n)
        *writer->out++ = ',';
    if (level->is_list) {
        KT_TRY(my_reserve(writer, my_member_room));
        KT_TRY(my_write_value(writer, kt_segment_at(static_cast<const KT_varray *>(level->container)->elements, n)));
        return;
    }
    const auto *map = static_cast<const KT_vhash *>(level->container);
    const uint32_t slot = kt_slot_at_position(map, n);
    KT_TRY(my_write_key(writer, map, slot));
    KT_TRY(my_write_value(writer, kt_value_at(map, slot)));
}

static void my_write(my_writer *writer, const KT_vhash *map) noexcept
{
    KT_context *ctx = writer->ctx;
    KT_TRY(my_grow(writer, map->layout->arena->json_size + my_member_room));
    *writer->out++ = '{';
    KT_TRY(my_push(writer, map, map->layout->count, false));
    while (writer->count)
        KT_TRY(my_write_step(writer));
}

void KT_vhash__to_json(KT_context *ctx, const KT_vhash *map, KT_string *json) noexcept
{
    KT_RETURN_IF_FAILED;
    const size_t before = kt_string_length(json);
    my_writer writer{ctx, json, json->end, json->limit, nullptr, 0, 0};
    my_write(&writer, map);
    kt_release(writer.levels);
    if (kt_has_err(ctx)) {
        kt_string_set_end(json, json->begin + before);
        KT_context__err_stackframe_add(ctx, KT_HERE, __LINE__);
        return;
    }
    kt_string_set_end(json, writer.out);
    if (map == map->layout->arena->root)
        map->layout->arena->json_size = kt_string_length(json) - before;
}
