// Types as scripts write them.
#include "tsql/host_tsql_type.hpp"

#include <gtest/gtest.h>

namespace {

struct size_case {
    const char *written;
    const char *failure; // empty: the server has the type
};

const size_case size_cases[] = {
    {"decimal(38, 38)", ""},
    {"decimal(1)", ""},
    {"decimal(0)", "decimal takes a size from 1 to 38, not 0"},
    {"dec(39)", "decimal takes a size from 1 to 38, not 39"},
    {"numeric(300, 299)", "numeric takes a size from 1 to 38, not 300"},
    {"decimal(9, 10)", "decimal(9,10) has more digits after the point than digits"},
    {"varchar(8000)", ""},
    {"varchar(0)", "varchar takes a size from 1 to 8000, not 0"},
    {"nvarchar(4000)", ""},
    {"national char varying(4001)", "nvarchar takes a size from 1 to 4000, not 4001"},
    {"nvarchar(max)", ""},
    {"datetime2(7)", ""},
    {"time(0)", ""},
    {"time(8)", "time takes a size from 0 to 7, not 8"},
    {"float(53)", ""},
    {"float(54)", "float takes a size from 1 to 53, not 54"},
    {"dbo.Money(99)", ""},
    {"vector(3, float16)", ""},
    {"vector(3)", ""},
};

} // namespace

TEST(TsqlType, SizesAreThoseOfTheServer)
{
    for (const size_case &c : size_cases) {
        host_tsql_cursor cursor(c.written);
        host_read_type(cursor);
        EXPECT_EQ(cursor.failed(), *c.failure != '\0') << c.written;
        EXPECT_EQ(cursor.message(), c.failure) << c.written;
    }
}
