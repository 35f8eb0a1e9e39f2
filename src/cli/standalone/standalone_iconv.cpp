// iconv for the standalone command. The C library's own loads a file of the machine for each encoding, which a command
// that is one file cannot count on; ICU's converters are linked in.
//
// Either side is UTF-8, which is all that the libraries ask for.
#include <cerrno>
#include <charconv>
#include <iconv.h>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

namespace {
struct close_converter {
    void operator()(UConverter *converter) const
    {
        ucnv_close(converter);
    }
};
using owned_converter = std::unique_ptr<UConverter, close_converter>;

// A code page by its number, or 0 for any other encoding.
struct encoding {
    owned_converter converter;
    unsigned page = 0;
};

struct conversion {
    encoding from;
    encoding to;
};

struct page_char {
    unsigned page;
    unsigned char byte;
    UChar32 character;
};
} // namespace

// The same schema must become the same database, whichever form of the command makes it. So where ICU's code pages have
// other characters of one byte than the C library's, these count: ASCII, where ICU has three controls in each other's
// places, the bytes of this table, and undefined bytes, which are characters in one page of the C library's only.
static constexpr page_char other_chars[] = {{437, 0xE6, 0xB5}, {950, 0x80, 0x80}};
static constexpr unsigned page_with_undefined = 932;

// More than any character takes in any encoding, twice over: some are two in Unicode.
static constexpr size_t needed_room = 8;

// ICU's own callback passes over what it takes for formatting.
static void my_stop(const void *, UConverterFromUnicodeArgs *, const UChar *, int32_t, UChar32,
                    UConverterCallbackReason, UErrorCode *)
{
}

// The number of a code page that is called CP1252; 0 for any other encoding.
static unsigned my_page(std::string_view name)
{
    unsigned number = 0;
    if (name.starts_with("CP") || name.starts_with("cp"))
        std::from_chars(name.data() + 2, name.data() + name.size(), number);
    return number;
}

// The code pages of Windows have their numbers in common with older ones, which ICU tells apart.
static encoding my_open(std::string_view name)
{
    UErrorCode code = U_ZERO_ERROR;
    encoding opened{nullptr, my_page(name)};
    if (opened.page != 0)
        opened.converter.reset(ucnv_open(("windows-" + std::to_string(opened.page)).c_str(), &code));
    code = U_ZERO_ERROR;
    if (!opened.converter && !name.empty())
        opened.converter.reset(ucnv_open(std::string(name).c_str(), &code));
    if (!opened.converter)
        return opened;
    ucnv_setToUCallBack(opened.converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &code);
    ucnv_setFromUCallBack(opened.converter.get(), my_stop, nullptr, nullptr, nullptr, &code);
    return opened;
}

static iconv_t my_fail_to_open(int number)
{
    errno = number;
    return reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr): what iconv_open returns
}

extern "C" iconv_t iconv_open(const char *to, const char *from)
{
    try {
        conversion opened{my_open(from), my_open(to)};
        if (!opened.from.converter || !opened.to.converter)
            return my_fail_to_open(EINVAL);
        return new conversion(std::move(opened));
    } catch (const std::bad_alloc &) {
        return my_fail_to_open(ENOMEM);
    }
}

extern "C" int iconv_close(iconv_t used)
{
    delete static_cast<conversion *>(used);
    return 0;
}

// The character of a byte that ICU need not be asked for; negative for others.
static UChar32 my_char_of_byte(unsigned page, unsigned char byte)
{
    if (page != 0 && byte < 0x80)
        return byte;
    for (const page_char &other : other_chars) {
        if (other.page == page && other.byte == byte)
            return other.character;
    }
    return U_SENTINEL;
}

// Whether ICU has this character for a byte that the code page leaves undefined.
static bool my_is_undefined(unsigned page, UChar32 character)
{
    const bool is_control = character >= 0x80 && character <= 0x9F;
    const bool is_private = character >= 0xE000 && character <= 0xF8FF;
    const bool is_ordinal = page == 1253 && character == 0xAA;
    return page != 0 && page != page_with_undefined && (is_control || is_private || is_ordinal);
}

// The byte of a character that ICU has another one for; 0 for others.
static unsigned char my_byte_of_char(unsigned page, UChar32 character)
{
    if (page != 0 && character > 0 && character < 0x80)
        return static_cast<unsigned char>(character);
    for (const page_char &other : other_chars) {
        if (other.page == page && other.character == character)
            return other.byte;
    }
    return 0;
}

// Appends a character; false when the encoding lacks it.
static bool my_append(const encoding &used, UChar32 character, char **to, size_t *room)
{
    if (const unsigned char byte = my_byte_of_char(used.page, character)) {
        *(*to)++ = static_cast<char>(byte);
        --*room;
        return true;
    }
    UConverter *converter = used.converter.get();
    UChar units[2];
    int32_t count = 0;
    U16_APPEND_UNSAFE(units, count, character);
    const UChar *next = units;
    char *at = *to;
    UErrorCode code = U_ZERO_ERROR;
    ucnv_fromUnicode(converter, &at, *to + *room, &next, units + count, nullptr, /*flush*/ true, &code);
    if (U_FAILURE(code)) {
        ucnv_resetFromUnicode(converter);
        return false;
    }
    *room -= static_cast<size_t>(at - *to);
    *to = at;
    return true;
}

// Converts the first sequence of bytes, which may be more than one character; the error's number, or 0.
static int my_convert(const conversion &used, const char **from, const char *end, char **to, size_t *room)
{
    const UChar32 known = my_char_of_byte(used.from.page, static_cast<unsigned char>(**from));
    if (known >= 0) {
        ++*from;
        return my_append(used.to, known, to, room) ? 0 : EILSEQ;
    }
    const char *next = *from;
    for (bool is_first = true;; is_first = false) {
        UErrorCode code = U_ZERO_ERROR;
        const UChar32 character = ucnv_getNextUChar(used.from.converter.get(), &next, is_first ? end : next, &code);
        if (code == U_INDEX_OUTOFBOUNDS_ERROR)
            break;
        if (U_FAILURE(code)) {
            ucnv_resetToUnicode(used.from.converter.get());
            return code == U_TRUNCATED_CHAR_FOUND ? EINVAL : EILSEQ;
        }
        if (next - *from == 1 && my_is_undefined(used.from.page, character))
            return EILSEQ;
        if (!my_append(used.to, character, to, room))
            return EILSEQ;
    }
    *from = next;
    return 0;
}

extern "C" size_t iconv(iconv_t opened, char **from, size_t *left, char **to, size_t *room)
{
    const conversion &used = *static_cast<conversion *>(opened);
    if (!from || !*from) {
        ucnv_reset(used.from.converter.get());
        ucnv_reset(used.to.converter.get());
        return 0;
    }
    const char *next = *from;
    const char *const end = next + *left;
    int error = 0;
    while (next < end && error == 0)
        error = *room < needed_room ? E2BIG : my_convert(used, &next, end, to, room);
    *from += next - *from;
    *left = static_cast<size_t>(end - next);
    if (error == 0)
        return 0;
    errno = error;
    return static_cast<size_t>(-1);
}
