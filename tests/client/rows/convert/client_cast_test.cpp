// What a column of one type stores of a literal that a script casts to another.
#include "rows/convert/client_cast.hpp"

#include <gtest/gtest.h>

namespace {

constexpr client_server_type simple(client_base base)
{
    return {base};
}
constexpr client_server_type decimal(uint8_t precision, uint8_t scale)
{
    return {client_base::decimal, true, precision, scale};
}
constexpr client_server_type scaled(client_base base, uint8_t scale)
{
    return {base, true, 0, scale};
}
constexpr client_server_type sized(client_base base, int32_t length)
{
    return {base, true, 0, 0, 1252, length};
}

// The value that is stored, numbers as they are, or the code of the reject.
std::string stored(const client_server_type &cast, const client_field &literal, const client_server_type &col)
{
    client_converter converter;
    std::deque<std::string> made;
    client_value value;
    const client_field field = client_cast(converter, cast, literal, made);
    const client_reject reject = client_convert(converter, col, field, value);
    if (reject != client_reject::none)
        return client_reject_word(reject);
    char text[32] = "";
    switch (value.storage) {
    case client_storage::null:
        return "NULL";
    case client_storage::integer:
        return std::to_string(value.integer);
    case client_storage::real:
        std::snprintf(text, sizeof text, "%.17g", value.real);
        return text;
    case client_storage::text:
        return std::string(value.bytes);
    case client_storage::blob:
        break;
    }
    std::string hex;
    for (const char byte : value.bytes) {
        std::snprintf(text, sizeof text, "%02X", static_cast<unsigned char>(byte));
        hex += text;
    }
    return "x" + hex;
}

constexpr client_field quoted(std::string_view text)
{
    return {client_form::literal, text};
}
constexpr client_field number(std::string_view text)
{
    return {client_form::number, text};
}

using base = client_base;

const struct {
    const char *name;
    client_server_type cast;
    client_field literal;
    client_server_type col;
    const char *expected;
} cases[] = {
    {"a datetime is rounded before it becomes a datetime2", simple(base::datetime), quoted("2024-05-06T10:11:12.001"),
     scaled(base::datetime2, 3), "2024-05-06 10:11:12.000"},
    {"of its 1/300 seconds three digits are sure", simple(base::datetime), quoted("2024-05-06T10:11:12.004"),
     scaled(base::datetime2, 3), "2024-05-06 10:11:12.003"},
    {"and more than three are the server's affair", simple(base::datetime), quoted("2024-05-06T10:11:12.004"),
     scaled(base::datetime2, 7), "server-value"},
    {"unless they are zeros", simple(base::datetime), quoted("2024-05-06T10:11:12.010"), scaled(base::datetime2, 7),
     "2024-05-06 10:11:12.0100000"},
    {"a smalldatetime is rounded to its minute", simple(base::smalldatetime), quoted("2024-05-06T10:11:45"),
     simple(base::datetime), "2024-05-06 10:12:00.000"},
    {"a datetime in its own column", simple(base::datetime), quoted("2024-05-06T10:11:12.001"), simple(base::datetime),
     "2024-05-06 10:11:12.000"},
    {"a datetime of bytes",
     simple(base::datetime),
     {client_form::hex, "0x0000A2E500000000"},
     scaled(base::datetime2, 0),
     "2014-03-05 00:00:00"},
    {"a date in a datetime", simple(base::date), quoted("2024-05-06"), simple(base::datetime),
     "2024-05-06 00:00:00.000"},
    {"a datetime2 that a datetime rounds", scaled(base::datetime2, 3), quoted("2024-05-06 10:11:12.002"),
     simple(base::datetime), "2024-05-06 10:11:12.003"},
    {"a datetime2 with more digits than a datetime reads", scaled(base::datetime2, 7),
     quoted("2024-05-06 10:11:12.1234567"), simple(base::datetime), "too-precise"},
    {"an offset is the server's to take away", scaled(base::datetimeoffset, 0), quoted("2024-05-06 10:11:12 +02:00"),
     scaled(base::datetime2, 0), "server-value"},
    {"a time has no date", scaled(base::time, 0), quoted("10:11:12"), simple(base::datetime), "server-value"},
    {"a moment's string is the server's", simple(base::datetime), quoted("2024-05-06"), sized(base::nvarchar, 30),
     "server-value"},
    {"a real keeps its 32 bits in a float", simple(base::real), number("0.1"), simple(base::floating),
     "0.10000000149011612"},
    {"a float is rounded to a real", simple(base::floating), number("0.1"), simple(base::real), "0.10000000149011612"},
    {"a float in a float", simple(base::floating), number("0.1"), simple(base::floating), "0.10000000000000001"},
    {"a real with digits that a decimal would round", simple(base::real), number("0.1"), decimal(9, 2), "too-precise"},
    {"a float of few digits in a decimal", simple(base::floating), number("2.5E-1"), decimal(9, 2), "25"},
    {"a float's string is the server's", simple(base::floating), number("1.5"), sized(base::varchar, 30),
     "server-value"},
    {"a decimal's string has all its digits", decimal(9, 3), number("-.5"), sized(base::varchar, 30), "-0.500"},
    {"a decimal in an integer", decimal(9, 2), number("12.00"), simple(base::integer), "12"},
    {"a decimal that an integer would cut", decimal(9, 2), number("12.50"), simple(base::integer), "too-precise"},
    {"an integer's string", simple(base::integer), quoted("007"), sized(base::varchar, 30), "7"},
    {"a bit is 0 or 1", simple(base::bit), number("5"), simple(base::integer), "1"},
    {"money in a decimal", simple(base::money), number("1.5"), decimal(9, 2), "150"},
    {"money's string is the server's", simple(base::money), number("1.5"), sized(base::varchar, 30), "server-value"},
    {"a char is filled up, also in a varchar", sized(base::fixed_char, 4), quoted("ab"), sized(base::varchar, 9),
     "ab  "},
    {"a binary is filled up, also in a varbinary",
     sized(base::binary, 3),
     {client_form::hex, "0x01"},
     sized(base::varbinary, 9),
     "x010000"},
    {"a varbinary stays", sized(base::varbinary, 3), {client_form::hex, "0x01"}, sized(base::varbinary, 9), "x01"},
    {"bytes in a string are the server's",
     sized(base::varbinary, 3),
     {client_form::hex, "0x41"},
     sized(base::varchar, 9),
     "server-value"},
    {"a guid", simple(base::guid), quoted("6F9619FF-8B86-D011-B42D-00C04FC964FF"), simple(base::guid),
     "xFF19966F868B11D0B42D00C04FC964FF"},
    {"a guid's string is the server's", simple(base::guid), quoted("6f9619ff-8b86-d011-b42d-00c04fc964ff"),
     sized(base::varchar, 40), "server-value"},
    {"what is too long is cut by the server only", sized(base::varchar, 3), quoted("abcd"), sized(base::varchar, 9),
     "server-value"},
    {"bytes of a type with methods", simple(base::clr), {client_form::hex, "0x58"}, simple(base::clr), "x58"},
    {"its text form is the server's to read", simple(base::clr), quoted("/1/"), simple(base::clr), "not-binary"},
    {"its string is the server's",
     simple(base::clr),
     {client_form::hex, "0x58"},
     sized(base::nvarchar, 9),
     "server-value"},
    {"what a sql_variant comes to is the server's affair", simple(base::variant), number("1"), simple(base::integer),
     "server-value"},
    {"NULL", simple(base::money), {client_form::null, {}}, sized(base::varchar, 9), "NULL"},
};

TEST(ClientCast, IntoAColumnOfAnotherType)
{
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(stored(c.cast, c.literal, c.col), c.expected);
    }
}

} // namespace
