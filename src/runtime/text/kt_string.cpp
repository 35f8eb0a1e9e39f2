// Growable text. Short texts lie inside the object; longer ones in a block that doubles, so that appending takes
// amortised constant time for each byte. The room is kept until the string is freed.
//
// Everything that grows reports failure as false and leaves the string as it was; the operations turn that into an
// error of the context.
#include "kt_string.h"
#include "base/kt_memory_private.hpp"
#include "kt_owned.hpp"
#include "text/kt_string_private.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#define KT_HERE "src/runtime/kt_string"

// Most texts that outgrow the object are definitions and conditions, which seldom outgrow this.
static constexpr size_t my_first_block = 512;

void kt_string_init(KT_string *string) noexcept
{
    string->begin = string->inside;
    string->end = string->inside;
    string->limit = string->inside + KT_string::inline_room - 1;
    string->inside[0] = '\0';
}

void kt_string_clear(KT_string *string) noexcept
{
    if (string->begin != string->inside)
        kt_release(string->begin);
    kt_string_init(string);
}

bool kt_string_grow(KT_string *string, size_t more) noexcept
{
    const size_t length = kt_string_length(string);
    if (more > std::numeric_limits<size_t>::max() / 4 - length)
        return false;
    const size_t old_size = static_cast<size_t>(string->limit - string->begin) + 1;
    const size_t new_size = std::max({2 * old_size, length + more + 1, my_first_block});
    const bool is_inside = string->begin == string->inside;
    void *block = is_inside ? kt_allocate(new_size) : kt_resize(string->begin, old_size, new_size);
    if (!block)
        return false;
    if (is_inside)
        std::memcpy(block, string->inside, length + 1);
    string->begin = static_cast<char *>(block);
    string->end = string->begin + length;
    string->limit = string->begin + new_size - 1;
    return true;
}

bool kt_string_append_bytes(KT_string *string, const char *bytes, size_t count) noexcept
{
    // Growing moves the string's own bytes along.
    const uintptr_t offset = reinterpret_cast<uintptr_t>(bytes) - reinterpret_cast<uintptr_t>(string->begin);
    const bool is_own = offset <= kt_string_length(string);
    if (!kt_string_reserve(string, count))
        return false;
    std::memcpy(string->end, is_own ? string->begin + offset : bytes, count);
    kt_string_set_end(string, string->end + count);
    return true;
}

void KT_string__alloc(KT_context *ctx, KT_string **string) noexcept
{
    void *block = nullptr;
    KT_TRY(_kt_malloc(ctx, sizeof(KT_string), &block));
    KT_string *made = new (block) KT_string;
    kt_string_init(made);
    *string = made;
}

void KT_string__alloc__sz(KT_context *ctx, KT_string **string, const char *text) noexcept
{
    kt_owned_string made{ctx};
    KT_TRY(KT_string__alloc(ctx, made.out()));
    KT_TRY(KT_string__append__sz(ctx, made, text));
    made.move_to(string);
}

void KT_string__free(KT_context *, KT_string *string) noexcept
{
    if (!string)
        return;
    kt_string_clear(string);
    kt_release(string);
}

void KT_string__append__sz(KT_context *ctx, KT_string *string, const char *text) noexcept
{
    KT_RETURN_IF_FAILED;
    if (!kt_string_append_bytes(string, text, std::strlen(text)))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

// Most pieces are a few bytes long, for which a call takes longer than the copy: two moves that may overlap.
static inline char *my_copy(char *to, const char *from, size_t length) noexcept
{
    if (length > 16 || length < 4) {
        std::memcpy(to, from, length);
    } else if (length >= 8) {
        uint64_t first, last;
        std::memcpy(&first, from, 8);
        std::memcpy(&last, from + length - 8, 8);
        std::memcpy(to, &first, 8);
        std::memcpy(to + length - 8, &last, 8);
    } else {
        uint32_t first, last;
        std::memcpy(&first, from, 4);
        std::memcpy(&last, from + length - 4, 4);
        std::memcpy(to, &first, 4);
        std::memcpy(to + length - 4, &last, 4);
    }
    return to + length;
}

void KT_string__append__pieces(KT_context *ctx, KT_string *string, const KT_piece *pieces, size_t count) noexcept
{
    KT_RETURN_IF_FAILED;
    size_t length = 0;
    for (size_t n = 0; n < count; n++) {
        if (pieces[n].length > SIZE_MAX - length)
            KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
        length += pieces[n].length;
    }
    if (!kt_string_reserve(string, length))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    char *end = string->end;
    for (size_t n = 0; n < count; n++)
        end = my_copy(end, pieces[n].text, pieces[n].length);
    kt_string_set_end(string, end);
}

void KT_string__append__string(KT_context *ctx, KT_string *string, const KT_string *other) noexcept
{
    KT_RETURN_IF_FAILED;
    if (!kt_string_append_bytes(string, other->begin, kt_string_length(other)))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

void KT_string__append__format(KT_context *ctx, KT_string *string, const char *format, ...) noexcept
{
    KT_RETURN_IF_FAILED;
    va_list args;
    va_start(args, format);
    const bool is_made = kt_string_append_va(string, format, args);
    va_end(args);
    if (!is_made)
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
}

void KT_string__vsprintf(KT_context *ctx, KT_string *string, const char *format, va_list args) noexcept
{
    KT_RETURN_IF_FAILED;
    // Made after the present text, which stays whole until the new one is.
    const size_t old_length = kt_string_length(string);
    if (!kt_string_append_va(string, format, args))
        KT_FAIL_GENERIC(KT_ERR_OUT_OF_MEMORY);
    const size_t length = kt_string_length(string) - old_length;
    std::memmove(string->begin, string->begin + old_length, length);
    kt_string_set_end(string, string->begin + length);
}

const char *KT_string__sz(const KT_string *string) noexcept
{
    return string->begin;
}
