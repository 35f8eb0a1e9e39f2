#include "kt_sqlite_functions.h"
#include "kt_test.hpp"
#include "tov_parse_defin.h"

static unsigned char expected_class(int byte)
{
    if (byte == ' ' || (byte >= 9 && byte <= 13))
        return 0x01;
    if (byte >= '0' && byte <= '9')
        return 0x0C;
    if (byte >= 'A' && byte <= 'F')
        return 0x0A;
    if (byte >= 'G' && byte <= 'Z')
        return 0x02;
    if (byte >= 'a' && byte <= 'f')
        return 0x2A;
    if (byte >= 'g' && byte <= 'z')
        return 0x22;
    return byte == '$' || byte == '_' || byte >= 0x80 ? 0x40 : 0;
}

TEST(CharTables, EachByteHasItsClass)
{
    for (int byte = 0; byte < 256; byte++)
        EXPECT_EQ(sqlite3CtypeMap[byte], expected_class(byte)) << "byte " << byte;
}

TEST(CharTables, OnlyCapitalLettersBecomeSmall)
{
    for (int byte = 0; byte < 256; byte++)
        EXPECT_EQ(sqlite3UpperToLower[byte], byte >= 'A' && byte <= 'Z' ? byte + 32 : byte) << "byte " << byte;
}

// Builds of SQLite that let the dynamic linker see their own tables must go on using them.
TEST(CharTables, DoNotTakeThePlaceOfThoseOfSQLite)
{
    const unsigned char *volatile classes = sqlite3CtypeMap;
    const unsigned char *volatile lower = sqlite3UpperToLower;
    int (*volatile code)(const char *, int) = sqlite3KeywordCode;
    EXPECT_EQ(classes[0x61], 0x2A);
    EXPECT_EQ(lower[0x41], 0x61);
    EXPECT_EQ(code("NULL", 4), 98);

    const KT_sqlite_functions *fns = tov__get_sqlite_functions();
    sqlite3 *connection = nullptr;
    ASSERT_EQ(fns->open(":memory:", &connection, 6), 0);
    for (const char *sql : {"CREATE TABLE t (\"a b\" int, [select] text)", "INSERT INTO t VALUES (1, 'x')",
                            "UPDATE t SET \"a b\" = 2 WHERE [select] < 'y'"}) {
        sqlite3_stmt *statement = nullptr;
        EXPECT_EQ(fns->prepare(connection, sql, &statement), 0) << sql << ": " << fns->message(connection);
        EXPECT_EQ(fns->step(statement), 101) << sql << ": " << fns->message(connection);
        EXPECT_EQ(fns->changes(connection), sql[0] == 'C' ? 0 : 1);
        fns->finalize(statement);
    }
    fns->close(connection);
}
