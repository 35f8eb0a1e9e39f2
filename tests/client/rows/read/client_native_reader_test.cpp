// Fields of bcp's native form: how many bytes each type takes, and what goes before them.
#include "rows/read/client_reader.hpp"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using base = client_base;

struct native_case {
    const char *name;
    client_server_type type;
    std::string_view data;  // what the field takes, followed by "!"
    std::string_view field; // "NULL" for none
};

constexpr client_server_type required(base type, uint8_t scale = 0, int32_t length = 0)
{
    return {type, false, 0, scale, 0, length};
}
constexpr client_server_type nullable(base type, uint8_t scale = 0, int32_t length = 0)
{
    return {type, true, 0, scale, 0, length};
}

const native_case native_cases[] = {
    {"bit always has a length", required(base::bit), "\1b!"sv, "b"},
    {"tinyint has none", required(base::tinyint), "t!"sv, "t"},
    {"but where it may be NULL", nullable(base::tinyint), "\1t!"sv, "t"},
    {"NULL", nullable(base::tinyint), "\xFF!"sv, "NULL"},
    {"smallint", required(base::smallint), "si!"sv, "si"},
    {"int", nullable(base::integer), "\4int4!"sv, "int4"},
    {"bigint", required(base::bigint), "bigint88!"sv, "bigint88"},
    {"real", required(base::real), "real!"sv, "real"},
    {"float", nullable(base::floating), "\10floating!"sv, "floating"},
    {"smallmoney", required(base::smallmoney), "mony!"sv, "mony"},
    {"money", required(base::money), "moneymon!"sv, "moneymon"},
    {"decimal always has a length", required(base::decimal), "\023decimaldecimaldecim!"sv, "decimaldecimaldecim"},
    {"uniqueidentifier too", required(base::guid), "\020uniqueidentifier!"sv, "uniqueidentifier"},
    {"rowversion too", required(base::rowversion), "\10rowversi!"sv, "rowversi"},
    {"date", required(base::date), "day!"sv, "day"},
    {"time(2)", required(base::time, 2), "tim!"sv, "tim"},
    {"time(4)", required(base::time, 4), "time!"sv, "time"},
    {"time(7)", nullable(base::time, 7), "\5time5!"sv, "time5"},
    {"smalldatetime", required(base::smalldatetime), "smal!"sv, "smal"},
    {"datetime", required(base::datetime), "datetime!"sv, "datetime"},
    {"datetime2(3)", required(base::datetime2, 3), "datetim!"sv, "datetim"},
    {"datetimeoffset(0)", required(base::datetimeoffset, 0), "dateoffs!"sv, "dateoffs"},
    {"datetimeoffset(7)", nullable(base::datetimeoffset, 7), "\012dateoffset!"sv, "dateoffset"},
    {"char takes all its room", required(base::fixed_char, 0, 2), "a\0b\0!"sv, "a\0b\0"sv},
    {"but where it may be NULL", nullable(base::fixed_char, 0, 2), "\4\0a\0b\0!"sv, "a\0b\0"sv},
    {"nchar has a length", required(base::fixed_nchar, 0, 2), "\4\0a\0b\0!"sv, "a\0b\0"sv},
    {"varchar", nullable(base::varchar, 0, 9), "\2\0a\0!"sv, "a\0"sv},
    {"nvarchar that is NULL", nullable(base::nvarchar, 0, 9), "\xFF\xFF!"sv, "NULL"},
    {"nvarchar(max)", nullable(base::nvarchar, 0, -1), "\2\0\0\0\0\0\0\0a\0!"sv, "a\0"sv},
    {"nvarchar(max) that is NULL", nullable(base::nvarchar, 0, -1), "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF!"sv, "NULL"},
    {"text", nullable(base::text), "\2\0\0\0a\0!"sv, "a\0"sv},
    {"ntext that is NULL", nullable(base::ntext), "\xFF\xFF\xFF\xFF!"sv, "NULL"},
    {"image", required(base::image), "\3\0\0\0abc!"sv, "abc"},
    {"xml", nullable(base::xml), "\2\0\0\0\0\0\0\0<\0!"sv, "<\0"sv},
    {"a type of a library", nullable(base::clr), "\1\0\0\0\0\0\0\0c!"sv, "c"},
    {"binary", required(base::binary, 0, 2), "\2\0ab!"sv, "ab"},
    {"varbinary", nullable(base::varbinary, 0, 9), "\1\0a!"sv, "a"},
    {"varbinary(max)", nullable(base::varbinary, 0, -1), "\1\0\0\0\0\0\0\0a!"sv, "a"},
};

TEST(ClientNativeReader, Fields)
{
    for (const native_case &c : native_cases) {
        SCOPED_TRACE(c.name);
        const auto reader = client_make_native_reader({c.type});
        client_row row;
        ASSERT_EQ(reader->read(c.data, true, row), client_step::row);
        EXPECT_EQ(row.reject, client_reject::none);
        EXPECT_EQ(c.data.substr(row.size), "!");
        EXPECT_EQ(row.fields[0].form == client_form::null ? "NULL" : row.fields[0].bytes, c.field);
    }
}

// A field that is cut is read again with more; at the end of all the row is refused, and with it the rest.
TEST(ClientNativeReader, FieldsThatAreCut)
{
    for (const native_case &c : native_cases) {
        SCOPED_TRACE(c.name);
        for (size_t size = 1; size + 1 < c.data.size(); size++) {
            const auto reader = client_make_native_reader({c.type});
            const std::string_view cut = c.data.substr(0, size);
            client_row row;
            EXPECT_EQ(reader->read(cut, false, row), client_step::more);
            EXPECT_EQ(reader->read(cut, true, row), client_step::row);
            EXPECT_EQ(row.reject, client_reject::cut_row);
            EXPECT_EQ(row.place, 0u);
            EXPECT_EQ(row.size, size);
        }
        const auto reader = client_make_native_reader({c.type});
        client_row row;
        EXPECT_EQ(reader->read("", false, row), client_step::more);
        EXPECT_EQ(reader->read("", true, row), client_step::end);
    }
}

const native_case broken_cases[] = {
    {"a length that is not the type's", nullable(base::integer), "\5int45"sv, ""},
    {"half a character", nullable(base::nvarchar, 0, 9), "\3\0abc"sv, ""},
    {"a length that no row has", nullable(base::varbinary, 0, -1), "\0\0\0\0\1\0\0\0a"sv, ""},
};

TEST(ClientNativeReader, AfterALengthThatCannotBeNothingIsRead)
{
    for (const native_case &c : broken_cases) {
        SCOPED_TRACE(c.name);
        const auto reader = client_make_native_reader({c.type});
        client_row row;
        EXPECT_EQ(reader->read(c.data, true, row), client_step::row);
        EXPECT_EQ(row.reject, client_reject::bad_row);
        EXPECT_EQ(row.size, c.data.size());
        EXPECT_EQ(reader->read("more", false, row), client_step::skip);
        EXPECT_EQ(row.size, 4u);
    }
}

} // namespace
