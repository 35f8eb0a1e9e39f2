// Each gives NULL for NULL. Nothing is guessed: a value of another kind than is meant is an error.
#include "entry/ext_functions.hpp"

#include "collate/ext_case.hpp"
#include "collate/ext_utf8.hpp"

#include <sqlite3ext.h>

#include <array>
#include <new>
#include <string>
#include <string_view>

SQLITE_EXTENSION_INIT3

namespace {

using sql_function = void (*)(sqlite3_context *call, int count, sqlite3_value **arguments);

struct function_entry {
    const char *name;
    int argument_count;
    sql_function function;
};

} // namespace

static std::string_view my_text(sqlite3_value *value) noexcept
{
    const auto *text = reinterpret_cast<const char *>(sqlite3_value_text(value));
    return text ? std::string_view(text, static_cast<size_t>(sqlite3_value_bytes(value))) : std::string_view();
}

static bool my_is_null(sqlite3_value *value) noexcept
{
    return sqlite3_value_type(value) == SQLITE_NULL;
}

static void my_give(sqlite3_context *call, std::string_view text) noexcept
{
    sqlite3_result_text64(call, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

// What is not UTF-8 stays as it is.
static std::string my_mapped(std::string_view text, UChar32 (*map)(UChar32) noexcept)
{
    std::string result;
    result.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const size_t start = at;
        const UChar32 c = ext_next_character(text, at);
        if (c < 0)
            result.append(text, start, at - start);
        else
            ext_append_character(result, map(c));
    }
    return result;
}

static void my_change_case(sqlite3_context *call, sqlite3_value *value, UChar32 (*map)(UChar32) noexcept) noexcept
try {
    if (my_is_null(value))
        return;
    const std::string_view text = my_text(value);
    if (text.data())
        my_give(call, my_mapped(text, map));
    else
        sqlite3_result_error_nomem(call);
} catch (const std::bad_alloc &) {
    sqlite3_result_error_nomem(call);
}

// The order in which the bytes of a uniqueidentifier appear in its text, and a dash before some of them.
static constexpr std::array<size_t, 16> guid_bytes{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
static constexpr size_t guid_text_size = 36;

static bool my_has_dash_before(size_t n) noexcept
{
    return n == 4 || n == 6 || n == 8 || n == 10;
}

static int my_hex_value(char digit) noexcept
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char small = static_cast<char>(digit | 0x20);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

static bool my_read_guid(std::string_view text, std::array<unsigned char, 16> &bytes) noexcept
{
    if (text.size() == guid_text_size + 2 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, guid_text_size);
    if (text.size() != guid_text_size)
        return false;
    size_t at = 0;
    for (size_t n = 0; n < bytes.size(); n++) {
        if (my_has_dash_before(n) && text[at++] != '-')
            return false;
        const int high = my_hex_value(text[at++]);
        const int low = my_hex_value(text[at++]);
        if (high < 0 || low < 0)
            return false;
        bytes[guid_bytes[n]] = static_cast<unsigned char>(high << 4 | low);
    }
    return true;
}

// The digits of a number with a point before the last of them, and at least one before it.
static std::string my_decimal_text(sqlite3_int64 number, int scale)
{
    const auto bits = static_cast<sqlite3_uint64>(number);
    std::string digits = std::to_string(number < 0 ? 0 - bits : bits);
    const auto places = static_cast<size_t>(scale);
    if (digits.size() <= places)
        digits.insert(0, places + 1 - digits.size(), '0');
    if (places > 0)
        digits.insert(digits.size() - places, ".");
    return number < 0 ? '-' + digits : digits;
}

extern "C" {

static void my_upper(sqlite3_context *call, int, sqlite3_value **arguments)
{
    my_change_case(call, arguments[0], ext_upper);
}

static void my_lower(sqlite3_context *call, int, sqlite3_value **arguments)
{
    my_change_case(call, arguments[0], ext_lower);
}

static void my_guid_text(sqlite3_context *call, int, sqlite3_value **arguments)
{
    static constexpr const char *hex = "0123456789ABCDEF";
    if (my_is_null(arguments[0]))
        return;
    if (sqlite3_value_type(arguments[0]) != SQLITE_BLOB ||
        sqlite3_value_bytes(arguments[0]) != static_cast<int>(guid_bytes.size()))
        return sqlite3_result_error(call, "tov_guid_text: not a blob of 16 bytes", -1);
    const auto *bytes = static_cast<const unsigned char *>(sqlite3_value_blob(arguments[0]));
    std::array<char, guid_text_size> text{};
    size_t at = 0;
    for (size_t n = 0; n < guid_bytes.size(); n++) {
        if (my_has_dash_before(n))
            text[at++] = '-';
        text[at++] = hex[bytes[guid_bytes[n]] >> 4];
        text[at++] = hex[bytes[guid_bytes[n]] & 15];
    }
    my_give(call, {text.data(), text.size()});
}

static void my_guid_blob(sqlite3_context *call, int, sqlite3_value **arguments)
{
    std::array<unsigned char, 16> bytes{};
    if (my_is_null(arguments[0]))
        return;
    if (sqlite3_value_type(arguments[0]) != SQLITE_TEXT || !my_read_guid(my_text(arguments[0]), bytes))
        return sqlite3_result_error(call, "tov_guid_blob: not the text of a guid", -1);
    sqlite3_result_blob(call, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
}

static void my_decimal(sqlite3_context *call, int, sqlite3_value **arguments)
try {
    static constexpr sqlite3_int64 most_places = 38;
    if (my_is_null(arguments[0]) || my_is_null(arguments[1]))
        return;
    if (sqlite3_value_type(arguments[0]) != SQLITE_INTEGER || sqlite3_value_type(arguments[1]) != SQLITE_INTEGER)
        return sqlite3_result_error(call, "tov_decimal_text: not an integer", -1);
    const sqlite3_int64 scale = sqlite3_value_int64(arguments[1]);
    if (scale < 0 || scale > most_places)
        return sqlite3_result_error(call, "tov_decimal_text: the scale is not from 0 to 38", -1);
    my_give(call, my_decimal_text(sqlite3_value_int64(arguments[0]), static_cast<int>(scale)));
} catch (const std::bad_alloc &) {
    sqlite3_result_error_nomem(call);
}
}

int ext_add_functions(sqlite3 *connection) noexcept
{
    static constexpr function_entry functions[] = {
        {"upper", 1, my_upper},
        {"lower", 1, my_lower},
        {"tov_guid_text", 1, my_guid_text},
        {"tov_guid_blob", 1, my_guid_blob},
        {"tov_decimal_text", 2, my_decimal},
    };
    static constexpr int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
    int code = SQLITE_OK;
    for (const function_entry &entry : functions) {
        if (code == SQLITE_OK)
            code = sqlite3_create_function_v2(connection, entry.name, entry.argument_count, flags, nullptr,
                                              entry.function, nullptr, nullptr, nullptr);
    }
    return code;
}
