// Literals of dates and times: the form in which a column of a type stores them, and those that no column takes.
#include "steps/host_moment_literal.hpp"

#include <gtest/gtest.h>

namespace {

struct moment_case {
    const char *type;
    int scale;
    const char *text;
    const char *stored; // empty: refused, for the reason
    const char *reason = "";
};

const char *const no_moment = "it is not a moment of the calendar in a form that is known";

const moment_case moment_cases[] = {
    // days
    {"date", 0, "2024-02-29", "2024-02-29"},
    {"date", 0, "2000-02-29", "2000-02-29"},
    {"date", 0, "1900-02-29", "", no_moment},
    {"date", 0, "2023-02-29", "", no_moment},
    {"date", 0, "0000-01-01", "", no_moment},
    {"date", 0, "2024-00-01", "", no_moment},
    {"date", 0, "2024-13-01", "", no_moment},
    {"date", 0, "2024-01-00", "", no_moment},
    {"date", 0, "2024-04-31", "", no_moment},
    {"date", 0, "2024/01/01", "", no_moment},
    {"date", 0, "2024-01/01", "", no_moment},
    {"date", 0, "2024-1-1", "", no_moment},
    {"date", 0, "2024-01-01x", "", no_moment},
    {"date", 0, "2024-01-01  ", "2024-01-01"},
    {"date", 0, "2024-01-01 00:00:00", "2024-01-01"},
    {"date", 0, "2024-01-01 12:00:00", "", no_moment},
    // times
    {"time", 0, "23:59", "23:59:00"},
    {"time", 0, "23:59:59", "23:59:59"},
    {"time", 3, "01:02:03.5", "01:02:03.500"},
    {"time", 7, "01:02:03.1234567", "01:02:03.1234567"},
    {"time", 7, "01:02:03.12345678", "", no_moment},
    {"time", 7, "01:02:03.", "", no_moment},
    {"time", 7, "01:02:03,5", "", no_moment},
    {"time", 7, "01:02:03.x", "", no_moment},
    {"time", 0, "24:00", "", no_moment},
    {"time", 0, "12:60", "", no_moment},
    {"time", 0, "12:00:60", "", no_moment},
    {"time", 0, "x2:00", "", no_moment},
    {"time", 0, "12:x0", "", no_moment},
    {"time", 0, "12:00:x0", "", no_moment},
    {"time", 0, "12.00", "", no_moment},
    {"time", 0, "12:00.30", "", no_moment},
    {"time", 0, "1:0", "", no_moment},
    {"time", 0, "", "", no_moment},
    {"time", 0, "01:02:03.5", "", "it has more fraction digits than the column"},
    // both
    {"datetime2", 0, "2024-01-02T03:04:05", "2024-01-02 03:04:05"},
    {"datetime2", 1, "2024-01-02 03:04:05.5", "2024-01-02 03:04:05.500"},
    {"datetime2", 0, "2024-01-02", "2024-01-02 00:00:00"},
    {"datetime", 3, "2024-01-02 03:04:05.002", "2024-01-02 03:04:05.003"},
    {"datetime", 3, "2024-01-02 03:04:05.0021", "", "it has more fraction digits than the column"},
    {"datetime", 3, "2024-01-02 23:59:59.999", "", "it is rounded into the next day"},
    {"datetime", 3, "1752-12-31", "", "it is before 1753-01-01, the first day of a datetime"},
    {"smalldatetime", 0, "2024-01-02 03:04:30", "2024-01-02 03:05:00"},
    {"smalldatetime", 0, "2024-01-02 03:04:29", "2024-01-02 03:04:00"},
    {"smalldatetime", 0, "1899-12-31", "", "it is not from 1900-01-01 to 2079-06-06, the days of a smalldatetime"},
    {"smalldatetime", 0, "2079-06-07", "", "it is not from 1900-01-01 to 2079-06-06, the days of a smalldatetime"},
    // offsets
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +02:00", "2024-01-02 03:04:05 +02:00"},
    {"datetimeoffset", 0, "2024-01-02 03:04:05-14:00", "2024-01-02 03:04:05 -14:00"},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 -00:00", "2024-01-02 03:04:05 +00:00"},
    {"datetimeoffset", 0, "2024-01-02 03:04:05", "2024-01-02 03:04:05 +00:00"},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +14:01", "", no_moment},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +02:60", "", no_moment},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +0x:00", "", no_moment},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +02:0x", "", no_moment},
    {"datetimeoffset", 0, "2024-01-02 03:04:05 +02.00", "", no_moment},
};

TEST(HostMomentLiteral, IsStoredInTheFormOfItsType)
{
    for (const moment_case &c : moment_cases) {
        SCOPED_TRACE(std::string(c.type) + " '" + c.text + "'");
        host_column col;
        col.system_type = c.type;
        col.scale = static_cast<uint8_t>(c.scale);
        const host_stored_default stored = host_store_moment(col, c.text);
        EXPECT_EQ(stored.refusal, c.reason);
        if (!*c.reason) {
            EXPECT_EQ(stored.expr, "'" + std::string(c.stored) + "'");
        }
    }
}

} // namespace
