// Places in scripts, taken apart.

#include "cli_place.hpp"

#include <gtest/gtest.h>

namespace {

struct place_case {
    const char *text;
    const char *file;
    int64_t line, column;
};

const place_case place_cases[] = {
    {"orders.sql:12:5", "orders.sql", 12, 5},
    {"a:1:2.sql:12:5", "a:1:2.sql", 12, 5},
    {"orders.sql", "orders.sql", 0, 0},
    {"orders.sql:12", "orders.sql:12", 0, 0},
    {"orders.sql:12:", "orders.sql:12:", 0, 0},
    {"orders.sql:x:5", "orders.sql:x:5", 0, 0},
    {"orders.sql:12:-5", "orders.sql:12:-5", 0, 0},
    {"orders.sql:0:5", "orders.sql:0:5", 0, 0},
    {"orders.sql:99999999999999999999:5", "orders.sql:99999999999999999999:5", 0, 0},
    {":12:5", "", 12, 5},
    {"", "", 0, 0},
};

TEST(CliPlace, IsAFileALineAndAColumn)
{
    for (const place_case &c : place_cases) {
        SCOPED_TRACE(c.text);
        const cli_place place = cli_place_of(c.text);
        EXPECT_EQ(place.file, c.file);
        EXPECT_EQ(place.line, c.line);
        EXPECT_EQ(place.column, c.column);
    }
}

} // namespace
