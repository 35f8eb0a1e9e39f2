// What a check finds in databases of our own making and of others', row by row.
#include "guide/declared_types.hpp"
#include "load_test.hpp"
#include "rules/client_rules.hpp"
#include "type_document.hpp"
#include "verify/client_value_conditions.hpp"

#include <algorithm>
#include <cstring>
#include <regex>

namespace {

// Violations as lines: table, rowid, key, column, value, code and message, with those left out that do not apply.
struct found {
    std::string lines;
    int64_t count = 0;
};

extern "C" void add_line(KT_context *, void *data, const tov_client_violation *violation)
{
    found &all = *static_cast<found *>(data);
    std::string line = violation->tbl ? violation->tbl : "";
    if (violation->has_rowid)
        line += " " + std::to_string(violation->rowid);
    for (const char *text : {violation->key, violation->col, violation->value, violation->kind->code})
        line += text ? std::string(" | ") + text : "";
    all.lines += line + ": " + violation->message + "\n";
    all.count++;
}

class ClientVerify : public LoadTest {
  protected:
    // A database file that a script fills.
    void fill(const std::string &sql, const std::string &name = "db")
    {
        std::remove(path(name).c_str());
        sqlite3 *file = nullptr;
        ASSERT_EQ(sqlite3_open(path(name).c_str(), &file), SQLITE_OK);
        EXPECT_EQ(run(file, sql), "") << sql;
        sqlite3_close(file);
    }
    std::string check(const tov_client_check_options &options = {}, const std::string &name = "db")
    {
        found all;
        is_whole = 1;
        tov_client__check_database(ctx, schema, path(name).c_str(), &options, add_line, &all, &is_whole);
        return all.lines;
    }
    KT_bool is_whole = 1;
};

struct check_case {
    const char *name;
    const char *sql; // fills the tables
    const char *expected;
};

const char *const plain_tables =
    "CREATE TABLE Customers(Id INTEGER, Name TEXT, Code TEXT, Born TEXT);"
    "CREATE TABLE \"Sales.Orders\"(Id INTEGER PRIMARY KEY, Customer INTEGER, Price INTEGER, Note TEXT);";

const check_case check_cases[] = {
    {"nothing in the tables", "", ""},
    {"rows that the server takes",
     "INSERT INTO Customers VALUES(1, 'Ada', 'A  ', '1815-12-10'), (2, NULL, NULL, NULL);"
     "INSERT INTO \"Sales.Orders\" VALUES(7, 1, 1250, ''), (8, NULL, NULL, NULL)",
     ""},
    {"a storage class", "INSERT INTO Customers VALUES('x', 'Ada', x'414243', NULL)",
     "Customers 1 | Id='x' | Id | 'x' | storage-class: type mismatch: sint32(integer)\n"
     "Customers 1 | Id='x' | Code | x'414243' | storage-class: type mismatch: text(text)\n"},
    {"several things in one row", "INSERT INTO Customers VALUES(5000000000, 'Ada Lovelace', 'A', '1815-02-30')",
     "Customers 1 | Id=5000000000 | Id | 5000000000 | out-of-range: out of range: sint32\n"
     "Customers 1 | Id=5000000000 | Name | 'Ada Lovelace' | too-long: width exceeded: 10\n"
     "Customers 1 | Id=5000000000 | Code | 'A' | not-filled: width not filled with blanks: 3\n"
     "Customers 1 | Id=5000000000 | Born | '1815-02-30' | wrong-form: invalid date (YYYY-MM-DD)\n"},
    {"several things in one value", "INSERT INTO Customers VALUES(1, 'Ada', 'ЯЯЯЯ', NULL)",
     "Customers 1 | Id=1 | Code | 'ЯЯЯЯ' | too-long: width exceeded: 3\n"
     "Customers 1 | Id=1 | Code | 'ЯЯЯЯ' | not-in-code-page: a character that code page 1252 lacks\n"},
    {"NULL where the server wants a value", "INSERT INTO Customers(Name) VALUES('Ada')",
     "Customers 1 | Id=NULL | Id | NULL | null: must not be NULL\n"},
    {"an identity beyond its type", "INSERT INTO \"Sales.Orders\"(Id) VALUES(2147483648)",
     "Sales.Orders 2147483648 | Id=2147483648 | Id | 2147483648 | out-of-range: out of range: int\n"},
    {"a decimal of too many digits, and the one that has no absolute value",
     "INSERT INTO \"Sales.Orders\"(Id, Price) VALUES(1, 1000000000), (2, -9223372036854775808)",
     "Sales.Orders 1 | Id=1 | Price | 1000000000 | out-of-range: precision exceeded (9)\n"
     "Sales.Orders 2 | Id=2 | Price | -9223372036854775808 | out-of-range: precision exceeded (9)\n"
     "Sales.Orders 2 | Id=2 | check: check \"c\": \"Price\" >= 0\n"},
    {"a check", "INSERT INTO \"Sales.Orders\"(Id, Price) VALUES(1, 0), (2, -1), (3, NULL)",
     "Sales.Orders 2 | Id=2 | check: check \"c\": \"Price\" >= 0\n"},
    {"a key twice", "INSERT INTO Customers(Id) VALUES(1), (2), (1), (1)",
     "Customers 3 | Id=1 | Id | 1 | duplicate-key: an earlier row has the same key\n"
     "Customers 4 | Id=1 | Id | 1 | duplicate-key: an earlier row has the same key\n"},
    {"a reference that leads to no row",
     "INSERT INTO Customers(Id) VALUES(1); INSERT INTO \"Sales.Orders\"(Id, Customer) VALUES(1, 1), (2, 3), (3, NULL)",
     "Sales.Orders 2 | Id=2 | Customer | 3 | no-such-row: no row of \"Customers\" has this key (Id)\n"},
};

TEST_F(ClientVerify, FindsWhatTheServerWouldRefuse)
{
    for (const check_case &c : check_cases) {
        SCOPED_TRACE(c.name);
        fill(std::string(plain_tables) + c.sql);
        EXPECT_EQ(check(), c.expected);
        EXPECT_OK(ctx);
        EXPECT_TRUE(is_whole);
    }
}

const char *const code_and_blanks =
    "CREATE TABLE Customers(Id INTEGER, Name TEXT, Code TEXT, Born TEXT);"
    "CREATE TABLE \"Sales.Orders\"(Id INTEGER PRIMARY KEY, Customer INTEGER, Price INTEGER, Note TEXT);"
    "INSERT INTO Customers VALUES(1, 'c5', NULL, NULL), (2, 'C5 ', NULL, NULL), (3, 'c5x', NULL, NULL),"
    "(4, NULL, NULL, NULL), (5, NULL, NULL, NULL)";

TEST_F(ClientVerify, ComparesKeysAsTheServerDoes)
{
    tov_schema__add_to_unique_constraint(ctx, schema, "1", "2", "u");
    fill(code_and_blanks);
    EXPECT_EQ(check(), "Customers 2 | Id=2 | Name | 'C5 ' | duplicate-key: an earlier row has the same key\n");
    tov_schema__set_backend_info__indistinct_unique_nulls(ctx, schema, 1);
    ASSERT_OK(ctx);
    EXPECT_EQ(check(), "Customers 5 | Id=5 | Name | NULL | duplicate-key: an earlier row has the same key\n"
                       "Customers 2 | Id=2 | Name | 'C5 ' | duplicate-key: an earlier row has the same key\n");
    tov_client_check_options basic = {};
    basic.rules = TOV_CLIENT_RULES_BASIC;
    EXPECT_EQ(check(basic), "");
}

// The server compares moments, not their texts.
TEST_F(ClientVerify, ComparesMomentsWithOffsetsInUtc)
{
    reset_schema_to(document_of_tables({declared(client_base::datetimeoffset, 0, 7)}).c_str());
    tov_schema__add_to_unique_constraint(ctx, schema, "0", "2", "UQ");
    ASSERT_OK(ctx);
    fill("CREATE TABLE T0(Id INTEGER PRIMARY KEY, c TEXT);"
         "INSERT INTO T0 VALUES(1, '2024-01-01 00:30:05.1234567 +01:00'), (2, '2023-12-31 23:30:05.1234567 +00:00'),"
         "(3, '2024-01-01 00:30:05.1234568 +01:00'), (4, '2023-12-31 09:30:05.1234567 -14:00')");
    EXPECT_EQ(check(), "T0 2 | Id=2 | c | '2023-12-31 23:30:05.1234567 +00:00' | duplicate-key: an earlier row has the "
                       "same key\n"
                       "T0 4 | Id=4 | c | '2023-12-31 09:30:05.1234567 -14:00' | duplicate-key: an earlier row has the "
                       "same key\n");
    tov_client_check_options basic = {};
    basic.rules = TOV_CLIENT_RULES_BASIC;
    EXPECT_EQ(check(basic), "");
}

TEST_F(ClientVerify, NumbersAreShownAsSqlWritesThem)
{
    fill("CREATE TABLE Customers(Id INTEGER, Name, Code, Born);"
         "INSERT INTO Customers VALUES(1, 0.1, 9e999, -9e999), (2, 2e0, 1e300, -1.5)");
    const std::string all = check();
    for (const char *value : {" 0.1 ", " 9e999 ", " -9e999 ", " 2.0 ", " 1e+300 ", " -1.5 "})
        EXPECT_NE(all.find(value), std::string::npos) << value << " in " << all;
}

TEST_F(ClientVerify, ComparesReferencesAsTheServerDoes)
{
    set_fk("1", "3", "1", "2", "NO ACTION");
    fill(std::string(plain_tables) +
         "INSERT INTO Customers VALUES(1, 'abc', 'ABC', NULL), (2, 'ab', 'AB ', NULL), (3, 'z', 'abd', NULL)");
    EXPECT_EQ(check(),
              "Customers 3 | Id=3 | Code | 'abd' | no-such-row: no row of \"Customers\" has this key (Name)\n");
}

// Takes strings for equal that begin alike, so that nothing else can be meant.
extern "C" int add_first_letter(sqlite3 *connection, char **, const void *)
{
    const auto compare = [](void *, int a_size, const void *a, int b_size, const void *b) {
        return std::memcmp(a, b, static_cast<size_t>(std::min({a_size, b_size, 1})));
    };
    for (const char *name : {"First_Letter", "SQL_First_Letter", "SQL_First_Letter.varchar"})
        sqlite3_create_collation(connection, name, SQLITE_UTF8, nullptr, compare);
    return SQLITE_OK;
}

TEST_F(ClientVerify, KeysCompareByTheServersCollationWhereItIsKnown)
{
    const auto extension = reinterpret_cast<void (*)()>(add_first_letter);
    std::string document = shop_document;
    const std::string unicode = R"("type":"nvarchar","length":20,)";
    const std::string page = R"("type":"char","length":3,)";
    document.insert(document.find(unicode), R"("collation":"First_Letter",)");
    document.insert(document.find(page), R"("collation":"SQL_First_Letter",)");
    reset_schema_to(document.c_str());
    tov_schema__add_to_unique_constraint(ctx, schema, "1", "2", "u");
    tov_schema__add_to_unique_constraint(ctx, schema, "1", "3", "v");
    fill(std::string(plain_tables) + "INSERT INTO Customers VALUES(1, 'Ada', 'abc', NULL), (2, 'Alma', 'axx', NULL)");
    EXPECT_EQ(check(), "");
    sqlite3_auto_extension(extension);
    const std::string all = check();
    tov_client_check_options basic = {};
    basic.rules = TOV_CLIENT_RULES_BASIC;
    EXPECT_EQ(check(basic), "");
    sqlite3_cancel_auto_extension(extension);
    EXPECT_EQ(all, "Customers 2 | Name | 'Alma' | duplicate-key: an earlier row has the same key\n"
                   "Customers 2 | Code | 'axx' | duplicate-key: an earlier row has the same key\n");
    EXPECT_OK(ctx);
}

TEST_F(ClientVerify, ADatabaseOfOurOwnMakingIsFoundInOrder)
{
    create();
    ASSERT_EQ(sqlite3_open(path("db").c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(run(connection, "INSERT INTO Customers VALUES(1, 'Ada', 'A  ', '1815-12-10');"
                              "INSERT INTO \"Sales.Orders\" VALUES(1, 1, 5, 'x')"),
              "");
    close();
    EXPECT_EQ(check(), "");
    EXPECT_OK(ctx);
}

TEST_F(ClientVerify, TablesWithoutRowidAreToldByTheirKeys)
{
    fill("CREATE TABLE Customers(Id INTEGER, Name TEXT, Code TEXT, Born TEXT, PRIMARY KEY(Born, Id)) WITHOUT ROWID;"
         "CREATE TABLE \"Sales.Orders\"(Id INTEGER, Customer INTEGER, Price INTEGER, Note TEXT, \"a\"\"b\" TEXT,"
         "PRIMARY KEY(\"a\"\"b\")) WITHOUT ROWID;"
         "INSERT INTO Customers(Id, Born, Code) VALUES(1, '2024-01-01', 'A'), (1, '2024-01-02', 'A  ');"
         "INSERT INTO \"Sales.Orders\" VALUES(NULL, 7, -1, '', 'it''s')");
    EXPECT_EQ(check(),
              "Customers | Id=1 | Code | 'A' | not-filled: width not filled with blanks: 3\n"
              "Customers | Id=1 | Id | 1 | duplicate-key: an earlier row has the same key\n"
              "Sales.Orders | a\"b | column-unknown: A table has a column that the schema does not have\n"
              "Sales.Orders | Id=NULL | Id | NULL | null: must not be NULL\n"
              "Sales.Orders | Id=NULL | check: check \"c\": \"Price\" >= 0\n"
              "Sales.Orders | Id=NULL | Customer | 7 | no-such-row: no row of \"Customers\" has this key (Id)\n");
    fill("CREATE TABLE Customers(Name TEXT, \"a\"\"b\" TEXT PRIMARY KEY) WITHOUT ROWID;"
         "INSERT INTO Customers VALUES('Ada Lovelace', 'it''s')");
    EXPECT_NE(check().find("Customers | a\"b='it''s' | Name | 'Ada Lovelace' | too-long: "), std::string::npos);
}

TEST_F(ClientVerify, WhatIsMissingIsTold)
{
    fill("CREATE TABLE \"sales.orders\"(ID INTEGER PRIMARY KEY, Price INTEGER, Extra TEXT)");
    EXPECT_EQ(check(),
              "Customers | table-missing: A table of the schema is not in the database\n"
              "Sales.Orders | Customer | column-missing: A table lacks a column, in which the server puts NULL or a "
              "value of its own\n"
              "Sales.Orders | Note | column-missing: A table lacks a column, in which the server puts NULL or a value "
              "of its own\n"
              "Sales.Orders | extra | column-unknown: A table has a column that the schema does not have\n"
              "Sales.Orders | not-checked: the reference to \"Customers\": a column or the table is missing\n");
    fill("CREATE TABLE Customers(Name TEXT)");
    EXPECT_NE(check().find("Customers | Id | column-required: "), std::string::npos);
    EXPECT_NE(check().find("Customers | not-checked: a key: "), std::string::npos);
    fill("CREATE TABLE Other(a)");
    EXPECT_NE(check().find("\n | no-tables: "), std::string::npos);
    fill("CREATE TABLE \"Sales.Orders\"(Id INTEGER PRIMARY KEY)");
    EXPECT_NE(check().find("Sales.Orders | not-checked: check \"c\": \"Price\" >= 0: no such column: "),
              std::string::npos)
        << check();
}

TEST_F(ClientVerify, OptionsChooseTablesAndLimitWhatIsTold)
{
    fill(std::string(plain_tables) + "INSERT INTO Customers VALUES(1, 'Ada', 'A', 'x'), (2, 'Ada', 'A', 'x');"
                                     "INSERT INTO \"Sales.Orders\"(Id, Price) VALUES(1, -1)");
    const char *orders[] = {"sales.orders"};
    tov_client_check_options options = {};
    options.only = orders;
    options.only_count = 1;
    EXPECT_EQ(check(options), "Sales.Orders 1 | Id=1 | check: check \"c\": \"Price\" >= 0\n");
    options = {};
    options.skip = orders;
    options.skip_count = 1;
    options.max = 4;
    EXPECT_EQ(check(options).find("Sales"), std::string::npos);
    EXPECT_TRUE(is_whole);
    options.max = 3;
    const std::string first = check(options);
    EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), 3);
    EXPECT_FALSE(is_whole);
    const char *absent[] = {"absent"};
    options.only = absent;
    options.only_count = 1;
    EXPECT_EQ(check(options), "");
    EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
    EXPECT_STREQ(KT_context__err_description(ctx), "the schema has no table \"absent\"");
    KT_context__err_reset(ctx);
}

TEST_F(ClientVerify, ACheckThatFailsForARowIsThatRowsViolation)
{
    tov_schema__add_check_constraint(ctx, schema, "2", "o", "abs(\"Price\") < 100");
    tov_schema__add_colcon_check(ctx, schema, "2", "3", "n", "(\"Price\" != 5)");
    ASSERT_OK(ctx);
    fill(std::string(plain_tables) + "INSERT INTO \"Sales.Orders\"(Id, Price) VALUES(1, 5), (2, 200), (3, 7),"
                                     "(4, -9223372036854775808), (5, 5), (9223372036854775807, 300)");
    const std::string all = check();
    EXPECT_NE(all.find("Sales.Orders 4 | Id=4 | check-fails: check \"o\": abs(\"Price\") < 100: integer overflow\n"),
              std::string::npos)
        << all;
    for (const char *line :
         {"Sales.Orders 1 | Id=1 | Price | 5 | check: check \"n\": (\"Price\" != 5)\n",
          "Sales.Orders 2 | Id=2 | check: check \"o\": ", "Sales.Orders 4 | Id=4 | check: check \"c\": ",
          "Sales.Orders 5 | Id=5 | Price | 5 | check: check \"n\": (\"Price\" != 5)\n",
          "Sales.Orders 9223372036854775807 | Id=9223372036854775807 | check: check \"o\": "}) {
        EXPECT_NE(all.find(line), std::string::npos) << line << "in:\n" << all;
        EXPECT_EQ(all.find(line), all.rfind(line)) << line << "in:\n" << all;
    }
}

// Texts of the database that SQLite would run, or that make it refuse a statement.
TEST_F(ClientVerify, NothingInADatabaseIsTrusted)
{
    fill("CREATE TABLE hidden(a); CREATE VIEW Customers AS SELECT 1 AS Id FROM hidden; PRAGMA writable_schema=ON;"
         "INSERT INTO sqlite_master VALUES('table', 'Sales.Orders', 'Sales.Orders', 0,"
         "'CREATE VIRTUAL TABLE \"Sales.Orders\" USING strange(Id, Price)')");
    EXPECT_EQ(check(), "Customers | not-a-table: A view or virtual table has the name of a table, and its rows are not "
                       "looked at\n"
                       "Sales.Orders | not-a-table: A view or virtual table has the name of a table, and its rows are "
                       "not looked at\n");
    fill("CREATE TABLE Customers(Id INTEGER, Name TEXT COLLATE RTRIM, rowid TEXT, _rowid_ TEXT, oid TEXT,"
         "Code TEXT AS (Name || 'x'), Born TEXT);"
         "CREATE TRIGGER t AFTER INSERT ON Customers BEGIN SELECT 1; END;"
         "CREATE INDEX i ON Customers(Name COLLATE NOCASE);"
         "INSERT INTO Customers(Id, Name) VALUES(1, 'abcd'), (1, 'ab')");
    const char *customers[] = {"Customers"};
    tov_client_check_options options = {};
    options.only = customers;
    options.only_count = 1;
    const std::string all = check(options);
    EXPECT_NE(all.find("Customers | Id=1 | Code | 'abcdx' | too-long: width exceeded: 3\n"), std::string::npos) << all;
    EXPECT_NE(all.find("Customers | Id=1 | Id | 1 | duplicate-key: "), std::string::npos) << all;
    EXPECT_OK(ctx);
}

TEST_F(ClientVerify, ACollationThatIsNotKnownDoesNotMatter)
{
    std::remove(path("db").c_str());
    sqlite3 *file = nullptr;
    ASSERT_EQ(sqlite3_open(path("db").c_str(), &file), SQLITE_OK);
    const auto compare = [](void *, int, const void *, int, const void *) { return 0; };
    sqlite3_create_collation(file, "STRANGE", SQLITE_UTF8, nullptr, compare);
    EXPECT_EQ(run(file, "CREATE TABLE Customers(Id INTEGER COLLATE STRANGE PRIMARY KEY DESC, Name TEXT COLLATE STRANGE,"
                        "Code TEXT COLLATE STRANGE UNIQUE, Born TEXT COLLATE STRANGE);"
                        "CREATE TABLE \"Sales.Orders\"(Id INTEGER PRIMARY KEY, Customer INTEGER COLLATE STRANGE,"
                        "Price INTEGER COLLATE STRANGE, Note TEXT);"
                        "INSERT INTO Customers VALUES(1, 'Ada', 'A  ', '2024-02-30');"
                        "INSERT INTO \"Sales.Orders\" VALUES(1, 2, -5, '')"),
              "");
    sqlite3_close(file);
    EXPECT_EQ(check(),
              "Customers 1 | Id=1 | Born | '2024-02-30' | wrong-form: invalid date (YYYY-MM-DD)\n"
              "Sales.Orders 1 | Id=1 | check: check \"c\": \"Price\" >= 0\n"
              "Sales.Orders 1 | Id=1 | Customer | 2 | no-such-row: no row of \"Customers\" has this key (Id)\n");
}

TEST_F(ClientVerify, AnotherEncodingChangesNothing)
{
    for (const char *encoding : {"UTF-8", "UTF-16le", "UTF-16be"}) {
        SCOPED_TRACE(encoding);
        fill(std::string("PRAGMA encoding='") + encoding + "';" + plain_tables +
             "INSERT INTO Customers VALUES(1, 'äöüäöüäöüä', 'äöü', NULL), (2, '😀😀😀😀😀', 'Я  ', NULL),"
             "(3, '😀😀😀😀😀x', NULL, NULL)");
        EXPECT_EQ(check(),
                  "Customers 2 | Id=2 | Code | 'Я  ' | not-in-code-page: a character that code page 1252 lacks\n"
                  "Customers 3 | Id=3 | Name | '😀😀😀😀😀x' | too-long: width exceeded: 10 (UTF-16 units)\n");
    }
}

TEST_F(ClientVerify, LongValuesAreShortened)
{
    fill(std::string(plain_tables) + "INSERT INTO Customers VALUES(1, printf('%.1000c', 'x'), zeroblob(1000), NULL),"
                                     "(2, 'it''s ' || char(10) || CAST(x'FF' AS TEXT) || '         ', NULL, NULL)");
    const std::string all = check();
    EXPECT_NE(all.find("| '" + std::string(60, 'x') + "…' | too-long"), std::string::npos) << all;
    EXPECT_NE(all.find("| x'" + std::string(60, '0') + "…' | storage-class"), std::string::npos) << all;
    EXPECT_NE(all.find("| 'it''s \n\xEF\xBF\xBD         ' | too-long"), std::string::npos) << all;
}

TEST_F(ClientVerify, WhatIsNotADatabaseIsRefused)
{
    write("db", "this is not a database, and long enough that nobody could take it for one: " + std::string(500, 'x'));
    EXPECT_EQ(check(), "");
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_NOTADB));
    KT_context__err_reset(ctx);
    EXPECT_EQ(check({}, "absent"), "");
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_CANTOPEN));
    KT_context__err_reset(ctx);
}

TEST_F(ClientVerify, TheDatabaseIsNotWrittenTo)
{
    fill(std::string(plain_tables) + "INSERT INTO Customers(Id) VALUES(1), (1)");
    const std::string before = read("db");
    check();
    EXPECT_EQ(read("db"), before);
    EXPECT_NE(access(path("db-journal").c_str(), F_OK), 0);
}

TEST_F(ClientVerify, EveryRuleOfATypeHasACode)
{
    client_code_pages pages;
    for (const client_declared_type &type : all_declared_types()) {
        SCOPED_TRACE(client_declared_type_text(type));
        for (const client_rule &rule : client_rules_of(type.type, "v", pages))
            EXPECT_STRNE(client_kind_of_message(rule.message)->code, "refused") << rule.message;
    }
}

TEST_F(ClientVerify, CodesAreDocumentedAsTheyAre)
{
    std::ostringstream page;
    page << std::ifstream(TOV_CHECK_PAGE).rdbuf();
    const std::string text = page.str();
    const std::regex row(R"(\n\| `([a-z-]+)` \| (error|note) \|)");
    std::string documented;
    std::string known;
    for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
        documented += (*match)[1].str() + " " + (*match)[2].str() + "\n";
    for (uint32_t n = 0; const tov_client_violation_kind *kind = tov_client__get_nth_violation_kind(n); n++)
        known += std::string(kind->code) + " " + kind->severity + "\n";
    EXPECT_EQ(documented, known);
}

} // namespace
