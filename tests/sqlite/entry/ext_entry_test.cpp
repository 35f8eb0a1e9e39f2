// The extension in a database: collations by name, and the functions.
#include "failing_new.hpp"
#include "sqlite_database.hpp"
#include "tov_sqlite.h"

#include <gtest/gtest.h>

namespace {

using any_entry = void (*)();

class ExtensionTest : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        ASSERT_EQ(sqlite3_auto_extension(reinterpret_cast<any_entry>(sqlite3_tovsqlite_init)), SQLITE_OK);
    }
    static void TearDownTestSuite()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<any_entry>(sqlite3_tovsqlite_init));
    }
    sqlite_database database;
};

struct expression_case {
    const char *name;
    const char *expression;
    const char *expected;
};

} // namespace

TEST_F(ExtensionTest, AUniqueKeyComparesAsTheServerDoes)
{
    EXPECT_EQ(database.run(R"(CREATE TABLE t (c text COLLATE "Latin1_General_CI_AS" UNIQUE))"), "");
    EXPECT_EQ(database.run("INSERT INTO t VALUES ('c5 ')"), "");
    EXPECT_EQ(database.run("INSERT INTO t VALUES ('C5')"), "UNIQUE constraint failed: t.c");
    EXPECT_EQ(database.run("INSERT INTO t VALUES ('Ċ5')"), "");
    EXPECT_EQ(database.ask("SELECT c FROM t WHERE c = 'C5  '"), "c5 ");
}

TEST_F(ExtensionTest, AForeignKeyComparesAsTheServerDoes)
{
    EXPECT_EQ(database.run(R"(CREATE TABLE p (c text COLLATE "Latin1_General_CI_AS" PRIMARY KEY);
                              CREATE TABLE k (c text COLLATE "Latin1_General_CI_AS" REFERENCES p))"),
              "");
    EXPECT_EQ(database.run("INSERT INTO p VALUES ('Straße'); INSERT INTO k VALUES ('STRASSE ')"), "");
    EXPECT_EQ(database.run("INSERT INTO k VALUES ('Strase')"), "FOREIGN KEY constraint failed");
}

TEST_F(ExtensionTest, ANameThatIsNoCollationsIsRefused)
{
    EXPECT_EQ(database.ask("SELECT 'a' = 'b' COLLATE Klingon_CI_AS"), "no such collation sequence: Klingon_CI_AS");
    EXPECT_EQ(database.ask("SELECT 'a' = 'A' COLLATE NOCASE"), "1");
}

TEST_F(ExtensionTest, AStatementStopsWhereMemoryIsLacking)
{
    ASSERT_EQ(database.ask("SELECT 'é' = 'É' COLLATE Latin1_General_CI_AS"), "1");
    ASSERT_EQ(database.run("CREATE TABLE t (c text COLLATE Latin1_General_CI_AS)"), "");
    const std::string longer(1000, 'x');
    ASSERT_EQ(database.run("INSERT INTO t VALUES ('é" + longer + "'), ('È" + longer + "'), ('ê" + longer + "')"), "");
    const std::string query = "SELECT count(DISTINCT c) FROM t";
    std::string result;
    bool failed = true;
    for (size_t n = 1; failed; n++) {
        allocations_to_failure = n;
        result = database.ask(query);
        failed = allocations_to_failure == 0;
        allocations_to_failure = 0;
        if (failed)
            EXPECT_EQ(result, "interrupted");
        else
            EXPECT_GT(n, 1u);
    }
    EXPECT_EQ(result, "3");
}

// An INSERT of one row does nothing after its comparison at which SQLite would stop it.
TEST_F(ExtensionTest, NothingIsCommittedThatCouldNotBeCompared)
{
    ASSERT_EQ(database.run("CREATE TABLE t (c text COLLATE Latin1_General_CI_AS UNIQUE)"), "");
    size_t length = 0;
    for (const bool is_in_transaction : {false, true}) {
        SCOPED_TRACE(is_in_transaction);
        size_t n = 1;
        for (bool failed = true; failed; n++) {
            length += 1000; // so that the memory which is kept of the last ones does not do
            const std::string longer(length, 'x');
            ASSERT_EQ(database.run("DELETE FROM t; INSERT INTO t VALUES ('é" + longer + "')"), "");
            ASSERT_EQ(database.run(is_in_transaction ? "BEGIN" : ""), "");
            const std::string again = "INSERT INTO t VALUES ('É" + longer + "')";
            allocations_to_failure = n;
            int code = database.code_of(again);
            failed = allocations_to_failure == 0;
            allocations_to_failure = 0;
            if (is_in_transaction && failed) {
                EXPECT_EQ(code, SQLITE_OK) << n;
                code = database.code_of("COMMIT");
            }
            EXPECT_EQ(code, SQLITE_CONSTRAINT) << n;
            database.run("ROLLBACK"); // where there is something to
            EXPECT_EQ(database.ask("SELECT count(*) FROM t"), "1") << n;
            EXPECT_EQ(database.ask("PRAGMA integrity_check"), "ok") << n;
        }
        EXPECT_GT(n, 2u);
    }
    EXPECT_EQ(database.run("INSERT INTO t VALUES ('other')"), "");
}

TEST_F(ExtensionTest, Functions)
{
    const expression_case cases[] = {
        {"upper knows all letters", "upper('straße éλя')", "STRAßE ÉΛЯ"},
        {"lower knows all letters", "lower('ÉΛЯŸ')", "éλяÿ"},
        {"letters that are not the other's partner stay", "upper('ıµſ') || lower('İK')", "ıµſİk"},
        {"a script that got capitals later stays", "upper('ა')", "ა"},
        {"letters beyond U+FFFF have case too", "upper('𐐨')", "𐐀"},
        {"a number becomes its text", "upper(1.5)", "1.5"},
        {"NULL stays NULL", "upper(NULL)", "(null)"},
        {"what is not UTF-8 stays", "hex(upper(CAST(x'61FFE282' AS TEXT)))", "41FFE282"},
        {"nothing stays nothing", "upper('')", ""},
        {"the text of a guid", "tov_guid_text(x'FF19966F868B11D0B42D00C04FC964FF')",
         "6F9619FF-8B86-D011-B42D-00C04FC964FF"},
        {"a guid of a text", "hex(tov_guid_blob('6f9619ff-8b86-d011-b42d-00c04fc964ff'))",
         "FF19966F868B11D0B42D00C04FC964FF"},
        {"a guid in braces", "hex(tov_guid_blob('{6F9619FF-8B86-D011-B42D-00C04FC964FF}'))",
         "FF19966F868B11D0B42D00C04FC964FF"},
        {"there and back",
         "tov_guid_blob(tov_guid_text(x'000102030405060708090A0B0C0D0E0F')) = "
         "x'000102030405060708090A0B0C0D0E0F'",
         "1"},
        {"no guid", "tov_guid_text(NULL)", "(null)"},
        {"no text of a guid", "tov_guid_blob(NULL)", "(null)"},
        {"15 bytes", "tov_guid_text(zeroblob(15))", "tov_guid_text: not a blob of 16 bytes"},
        {"16 characters", "tov_guid_text('0123456789abcdef')", "tov_guid_text: not a blob of 16 bytes"},
        {"a text without dashes", "tov_guid_blob('6F9619FF8B86D011B42D00C04FC964FF')",
         "tov_guid_blob: not the text of a guid"},
        {"a digit that is none", "tov_guid_blob('6F9619FG-8B86-D011-B42D-00C04FC964FF')",
         "tov_guid_blob: not the text of a guid"},
        {"a dash too early", "tov_guid_blob('6F9619F-F8B86-D011-B42D-00C04FC964FF')",
         "tov_guid_blob: not the text of a guid"},
        {"a decimal", "tov_decimal_text(1250, 2)", "12.50"},
        {"a small one", "tov_decimal_text(-5, 2)", "-0.05"},
        {"a whole one", "tov_decimal_text(-42, 0)", "-42"},
        {"zero", "tov_decimal_text(0, 4)", "0.0000"},
        {"the least", "tov_decimal_text(-9223372036854775807 - 1, 18)", "-9.223372036854775808"},
        {"more places than digits", "tov_decimal_text(1, 38)", "0.00000000000000000000000000000000000001"},
        {"no decimal", "tov_decimal_text(NULL, 2)", "(null)"},
        {"no scale", "tov_decimal_text(1, NULL)", "(null)"},
        {"a real", "tov_decimal_text(1.5, 2)", "tov_decimal_text: not an integer"},
        {"a scale that is none", "tov_decimal_text(1, 39)", "tov_decimal_text: the scale is not from 0 to 38"},
        {"a negative scale", "tov_decimal_text(1, -1)", "tov_decimal_text: the scale is not from 0 to 38"},
    };
    for (const expression_case &c : cases)
        EXPECT_EQ(database.ask(std::string("SELECT ") + c.expression), c.expected) << c.name;
}

TEST_F(ExtensionTest, FunctionsWorkInIndexesAndInDistrustedSchemas)
{
    EXPECT_EQ(database.run("CREATE TABLE t (c text); CREATE UNIQUE INDEX i ON t (upper(c)); "
                           "PRAGMA trusted_schema=OFF; INSERT INTO t VALUES ('é')"),
              "");
    EXPECT_EQ(database.run("INSERT INTO t VALUES ('É')"), "UNIQUE constraint failed: index 'i'");
}
