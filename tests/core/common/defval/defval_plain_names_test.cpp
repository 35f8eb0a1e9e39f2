// The plain names that the static form of the library carries for code that declares them itself.

#include <gtest/gtest.h>

extern "C" {
extern const unsigned char sqlite3CtypeMap[256];
extern const unsigned char sqlite3UpperToLower[256];
int sqlite3KeywordCode(const char *text, int n);
extern const unsigned char tov_sqlite3CtypeMap[256];
extern const unsigned char tov_sqlite3UpperToLower[256];
}

TEST(PlainNames, AreTheExportedTables)
{
    EXPECT_NE(sqlite3CtypeMap, tov_sqlite3CtypeMap);
    for (int byte = 0; byte < 256; byte++) {
        EXPECT_EQ(sqlite3CtypeMap[byte], tov_sqlite3CtypeMap[byte]);
        EXPECT_EQ(sqlite3UpperToLower[byte], tov_sqlite3UpperToLower[byte]);
    }
    EXPECT_EQ(sqlite3KeywordCode("Select", 6), 116);
}
