// Reading JSON text straight into a tree: one pass, no recursion.
//
// Values lie on a stack until their map or list closes and is made in its final size. A map follows the transitions
// of shapes while it is read; two that were taken before are tried first, with one comparison each and no hashing.
// Since the text ends at a NUL, which no rule accepts, the end needs no test of its own.

#include "json/kt_json_reader.hpp"
#include "kt_try.hpp"
#include "json/kt_json_text.hpp"

#define KT_HERE "src/runtime/kt_json_reader"

// Whether the next key is the one that leads to a likely shape.
static inline bool my_guess_key(const kt_json_reader *reader, const kt_shape *likely, const char *at) noexcept
{
    alignas(16) static constexpr uint8_t ones[32] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                     0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    if (!likely || likely->quoted_length == 0)
        return false;
    if (likely->quoted_length > sizeof(likely->quoted))
        return reader->end - at >= static_cast<ptrdiff_t>(likely->quoted_length) &&
               std::memcmp(at, likely->long_quoted, likely->quoted_length) == 0;
    if (reader->end - at < 16)
        return false;
    uint64_t text[2], key[2], mask[2];
    std::memcpy(text, at, 16);
    std::memcpy(key, likely->quoted, 16);
    std::memcpy(mask, ones + 16 - likely->quoted_length, 16);
    return (((text[0] ^ key[0]) & mask[0]) | ((text[1] ^ key[1]) & mask[1])) == 0;
}

static inline const char *my_read_key(kt_json_reader *reader, const char *at) noexcept
{
    if (*at != '"')
        return kt_reader_fail(reader, at, "a key in quotes");
    at++;
    kt_reader_frame &frame = reader->frame;
    const kt_shape *shape = frame.kind == kt_reader_kind::shared_map ? frame.shape : nullptr;
    kt_shape *guess = shape ? shape->likely : nullptr;
    if (!my_guess_key(reader, guess, at) && !my_guess_key(reader, guess = shape ? shape->also_likely : nullptr, at))
        guess = nullptr;
    if (guess) [[likely]] {
        frame.shape = guess;
        at += guess->quoted_length;
    } else if (!(at = kt_reader_key_text(reader, at))) {
        return nullptr;
    }
    at = kt_reader_skip_blanks(at);
    return *at == ':' ? at + 1 : kt_reader_fail(reader, at, "':'");
}

static inline const char *my_read_text(kt_json_reader *reader, const char *at, KT_variant *value) noexcept
{
    if (reader->end - at < 16)
        return kt_reader_long_text(reader, at, value);
    const uint32_t run = kt_json_plain_run_16(at);
    if (run > KT_VARIANT_INLINE_TEXT || at[run] != '"')
        return kt_reader_long_text(reader, at, value);
    value->type = KT_VARIANT_STRING;
    value->inline_length = static_cast<uint8_t>(run);
    char *text = kt_inline_text(value);
    std::memcpy(text, at, KT_VARIANT_INLINE_TEXT + 1);
    text[run] = '\0';
    return at + run + 1;
}

// The text's NUL is the first byte that differs, at the latest.
template <size_t Size> static inline bool my_begins_with(const char *at, const char (&word)[Size]) noexcept
{
    for (size_t i = 0; i < Size - 1; i++)
        if (at[i] != word[i])
            return false;
    return true;
}

static const char *my_read_word(kt_json_reader *reader, const char *at, KT_variant *value) noexcept
{
    *value = {};
    value->type = KT_VARIANT_BOOL;
    if (my_begins_with(at, "true")) {
        value->as.boolean = 1;
        return at + 4;
    }
    if (my_begins_with(at, "false"))
        return at + 5;
    value->type = KT_VARIANT_NULL;
    return my_begins_with(at, "null") ? at + 4 : kt_reader_fail(reader, at, "a value");
}

static inline const char *my_read_scalar(kt_json_reader *reader, const char *at) noexcept
{
    KT_variant *value = reader->values.push();
    if (!value)
        return nullptr;
    if (*at == '"')
        return my_read_text(reader, at + 1, value);
    if (*at >= 'a')
        return my_read_word(reader, at, value);
    return kt_reader_number(reader, at, value);
}

static inline bool my_open(kt_json_reader *reader, const char *at, kt_reader_kind kind) noexcept
{
    // The frame that is left is pushed, so the stack counts the levels around the new one.
    if (reader->frames.count() + 1 >= KT_JSON_MAX_DEPTH)
        return kt_reader_fail(reader, at, "no deeper nesting (the limit is 1024 levels)");
    kt_reader_frame *outer = reader->frames.push();
    if (!outer)
        return false;
    *outer = reader->frame;
    reader->frame.shape = &reader->arena->empty_shape;
    reader->frame.first_value = static_cast<uint32_t>(reader->values.count());
    reader->frame.first_key = static_cast<uint32_t>(reader->keys.count());
    reader->frame.kind = kind;
    return true;
}

// Closes the innermost map or list and puts it among the values of the one around it.
static inline bool my_close(kt_json_reader *reader) noexcept
{
    KT_variant made;
    if (!kt_reader_close(reader, &made))
        return false;
    KT_variant *value = reader->values.push();
    if (!value)
        return false;
    *value = made;
    const size_t outer = reader->frames.count();
    if (outer) {
        reader->frame = *reader->frames.at(outer - 1);
        reader->frames.shrink_to(outer - 1);
    }
    return true;
}

// Goes down through the opening brackets at `at` and reads the first value that is not an opening bracket, or stops at
// a closing one.
static inline const char *my_read_value(kt_json_reader *reader, const char *at, bool *is_closing) noexcept
{
    for (;;) {
        at = kt_reader_skip_blanks(at);
        if (*at == '{') {
            if (!my_open(reader, at, kt_reader_kind::shared_map))
                return nullptr;
            at = kt_reader_skip_blanks(at + 1);
            if (*at == '}') {
                *is_closing = true;
                return at;
            }
            if (!(at = my_read_key(reader, at)))
                return nullptr;
        } else if (*at == '[') {
            if (!my_open(reader, at, kt_reader_kind::list))
                return nullptr;
            at = kt_reader_skip_blanks(at + 1);
            if (*at == ']') {
                *is_closing = true;
                return at;
            }
        } else {
            *is_closing = false;
            return my_read_scalar(reader, at);
        }
    }
}

// Goes from after a value to the next one, closing all that ends between them, or to after the outermost map, which
// is the end. is_closing: from a bracket that closes an empty map or list.
static inline const char *my_go_on(kt_json_reader *reader, const char *at, bool is_closing, bool *is_end) noexcept
{
    for (;; is_closing = false) {
        at = kt_reader_skip_blanks(at);
        const bool is_list = reader->frame.kind == kt_reader_kind::list;
        if (*at == ',' && !is_closing)
            return is_list ? at + 1 : my_read_key(reader, kt_reader_skip_blanks(at + 1));
        if (*at != (is_list ? ']' : '}'))
            return kt_reader_fail(reader, at, is_list ? "',' or ']'" : "',' or '}'");
        *is_end = reader->frames.count() == 0;
        reader->progress.place = at;
        if (!my_close(reader))
            return nullptr;
        at++;
        if (*is_end)
            return at;
    }
}

// Reads from after the first key of the outermost map to after its closing bracket.
static const char *my_read_members(kt_json_reader *reader, const char *at) noexcept
{
    bool is_end = false;
    while (at && !is_end) {
        bool is_closing = false;
        at = my_read_value(reader, at, &is_closing);
        if (at)
            at = my_go_on(reader, at, is_closing, &is_end);
    }
    return at;
}

static const char *my_read_document(kt_json_reader *reader) noexcept
{
    const char *at = reader->text;
    if (std::strncmp(at, "\xEF\xBB\xBF", 3) == 0)
        at += 3;
    at = kt_reader_skip_blanks(at);
    if (*at != '{')
        return kt_reader_fail(reader, at, "'{'");
    // The outermost map shares its keys with no other.
    reader->frame = {&reader->arena->empty_shape, 0, 0, kt_reader_kind::private_map};
    at = kt_reader_skip_blanks(at + 1);
    if (*at == '}')
        at = my_close(reader) ? at + 1 : nullptr;
    else if ((at = my_read_key(reader, at)))
        at = my_read_members(reader, at);
    if (!at)
        return nullptr;
    at = kt_reader_skip_blanks(at);
    return at == reader->end ? at : kt_reader_fail(reader, at, "nothing after the object");
}

// Line and column count from 1; columns are characters, not bytes.
static void my_raise(KT_context *ctx, const kt_json_reader *reader) noexcept
{
    if (!reader->failed_at)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    uint32_t line = 1, column = 1;
    for (const char *at = reader->text; at < reader->failed_at; at++) {
        if (*at == '\n') {
            line++;
            column = 1;
        } else if ((static_cast<uint8_t>(*at) & 0xC0) != 0x80) {
            column++;
        }
    }
    const auto found = static_cast<uint8_t>(*reader->failed_at);
    if (found == 0)
        KT_FAIL(KT_ERR_BAD_JSON, "JSON text, line %u, column %u: expected %s, found the end", line, column,
                reader->expected);
    if (found > 0x20 && found < 0x7F)
        KT_FAIL(KT_ERR_BAD_JSON, "JSON text, line %u, column %u: expected %s, found '%c'", line, column,
                reader->expected, found);
    KT_FAIL(KT_ERR_BAD_JSON, "JSON text, line %u, column %u: expected %s, found byte 0x%02X", line, column,
            reader->expected, unsigned{found});
}

void KT_vhash__alloc__from_json__sz(KT_context *ctx, KT_vhash **map, const char *text) noexcept
{
    KT_RETURN_IF_FAILED;
    const size_t length = std::strlen(text);
    // Values are counted in 32 bits, and each takes two bytes of the text at least.
    if (length / 2 >= UINT32_MAX)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    kt_json_reader reader;
    reader.text = text;
    reader.end = text + length;
    reader.failed_at = nullptr;
    reader.arena = kt_arena_new(length);
    if (!reader.arena)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    reader.progress = {text, text, reader.end};
    reader.arena->pools.progress = &reader.progress;
    const bool is_read = my_read_document(&reader) != nullptr;
    reader.arena->pools.progress = nullptr;
    if (!is_read) {
        kt_arena_destroy(reader.arena);
        KT_TRY(my_raise(ctx, &reader));
    }
    *map = reader.values.at(0)->as.vhash;
    reader.arena->root = *map;
    reader.arena->json_size = length;
}
