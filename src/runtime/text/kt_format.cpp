// Formatted text, printf-style.
//
// Generated SQL is made of formats such as "%s\"%s\"" with short arguments, so the conversions that those use (%s %d
// %i %u, with l, ll or z, and %%) are written here, straight into the string. A format with any other conversion, a
// width, a flag or a precision goes to vsnprintf as a whole.
#include "base/kt_memory_private.hpp"
#include "kt_string.h"
#include "text/kt_string_private.hpp"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

enum class outcome { done, no_memory, not_simple };

// A va_list that can be handed on by reference whatever its type is.
struct arguments {
    va_list list;
};

} // namespace

template <class Number> static bool my_append_number(KT_string *string, Number value) noexcept
{
    constexpr size_t longest = 20;
    if (!kt_string_reserve(string, longest))
        return false;
    char *end = kt_string_end(string);
    kt_string_set_end(string, std::to_chars(end, end + longest, value).ptr);
    return true;
}

// Arguments do not point into the string, so there is no need to look after that as kt_string_append_bytes() does.
static bool my_append_piece(KT_string *string, const char *piece, size_t length) noexcept
{
    if (!kt_string_reserve(string, length))
        return false;
    char *end = kt_string_end(string);
    std::memcpy(end, piece, length);
    kt_string_set_end(string, end + length);
    return true;
}

static bool my_append_text(KT_string *string, const char *text) noexcept
{
    if (!text)
        text = "(null)";
    return my_append_piece(string, text, std::strlen(text));
}

// Appends what the conversion after a '%' stands for, and moves `at` past it.
static outcome my_append_conversion(KT_string *string, const char *&at, arguments &args) noexcept
{
    int longs = 0;
    for (; *at == 'l' && longs < 2; at++)
        longs++;
    const bool is_size = longs == 0 && *at == 'z';
    if (is_size)
        at++;
    const bool is_plain = longs == 0 && !is_size;
    bool is_made = false;
    switch (*at++) { // NOLINTBEGIN(bugprone-branch-clone): branches are only alike where two types are one.
    case '%':
        is_made = my_append_piece(string, "%", 1);
        break;
    case 's':
        if (!is_plain)
            return outcome::not_simple;
        is_made = my_append_text(string, va_arg(args.list, const char *));
        break;
    case 'd':
    case 'i':
        if (is_size)
            is_made = my_append_number(string, va_arg(args.list, ptrdiff_t));
        else if (longs == 0)
            is_made = my_append_number(string, va_arg(args.list, int));
        else if (longs == 1)
            is_made = my_append_number(string, va_arg(args.list, long));
        else
            is_made = my_append_number(string, va_arg(args.list, long long));
        break;
    case 'u':
        if (is_size)
            is_made = my_append_number(string, va_arg(args.list, size_t));
        else if (longs == 0)
            is_made = my_append_number(string, va_arg(args.list, unsigned));
        else if (longs == 1)
            is_made = my_append_number(string, va_arg(args.list, unsigned long));
        else
            is_made = my_append_number(string, va_arg(args.list, unsigned long long));
        break;
    default:
        return outcome::not_simple;
    } // NOLINTEND(bugprone-branch-clone)
    return is_made ? outcome::done : outcome::no_memory;
}

static outcome my_append_simple(KT_string *string, const char *format, arguments &args) noexcept
{
    for (const char *at = format; *at;) {
        const char *literal = at;
        while (*at && *at != '%')
            at++;
        if (at != literal && !my_append_piece(string, literal, static_cast<size_t>(at - literal)))
            return outcome::no_memory;
        if (!*at)
            break;
        at++;
        const outcome result = my_append_conversion(string, at, args);
        if (result != outcome::done)
            return result;
    }
    return outcome::done;
}

KT_PRINTF(2, 0) static bool my_append_any(KT_string *string, const char *format, va_list args) noexcept
{
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0 || !kt_string_reserve(string, static_cast<size_t>(length)))
        return false;
    char *end = kt_string_end(string);
    static_cast<void>(std::vsnprintf(end, static_cast<size_t>(length) + 1, format, args)); // measured above
    // A NUL that was written by %c ends the text, as it does everywhere.
    kt_string_set_end(string, end + std::strlen(end));
    return true;
}

bool kt_string_append_va(KT_string *string, const char *format, va_list args) noexcept
{
    const size_t old_length = kt_string_length(string);
    arguments simple;
    va_copy(simple.list, args);
    const outcome result = my_append_simple(string, format, simple);
    va_end(simple.list);
    if (result == outcome::done)
        return true;
    kt_string_set_end(string, string->begin + old_length);
    return result == outcome::not_simple && my_append_any(string, format, args);
}

char *KT_mprintf(const char *format, ...) noexcept
{
    KT_string string;
    kt_string_init(&string);
    va_list args;
    va_start(args, format);
    const bool is_made = kt_string_append_va(&string, format, args);
    va_end(args);
    char *text = nullptr;
    if (is_made)
        text = static_cast<char *>(kt_allocate(kt_string_length(&string) + 1));
    if (text)
        std::memcpy(text, string.begin, kt_string_length(&string) + 1);
    kt_string_clear(&string);
    return text;
}
