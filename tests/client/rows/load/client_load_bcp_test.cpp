// Files of bcp's character form.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

using namespace std::string_view_literals;

namespace {

class ClientLoadBcp : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
};

constexpr const char *all_customers = "SELECT Id, quote(Name), quote(Code), quote(Born) FROM Customers ORDER BY Id";

struct file_case {
    const char *name;
    std::string_view content;
    const char *report;
    const char *rows;
    const char *remark; // begins so; empty for none
};

const file_case file_cases[] = {
    {"tabs and line ends", "1\tAda\tABC\t1815-12-10\n2\tBob\tB\t\n"sv, "Customers 2 2 0",
     "1|'Ada'|'ABC'|'1815-12-10' 2|'Bob'|'B  '|NULL", ""},
    {"bars and CRLF", "1|Ada|ABC|1815-12-10\r\n2|Bob|B|\r\n"sv, "Customers 2 2 0",
     "1|'Ada'|'ABC'|'1815-12-10' 2|'Bob'|'B  '|NULL", ""},
    {"long terminators", "1+|Ada+|ABC+|1815-12-10&|\n"sv, "Customers 1 1 0", "1|'Ada'|'ABC'|'1815-12-10'", ""},
    {"a NUL is an empty text, nothing is NULL", "1\t\0\tABC\t\n2\t\tABC\t\n"sv, "Customers 2 2 0",
     "1|''|'ABC'|NULL 2|NULL|'ABC'|NULL", ""},
    {"a line end inside a text", "1\tA\nB\tABC\t\n"sv, "Customers 1 1 0", "1|'A\nB'|'ABC'|NULL", ""},
    {"quotes are data", "1\t\"A\"\tABC\t\n"sv, "Customers 1 1 0", "1|'\"A\"'|'ABC'|NULL", ""},
    {"no rows", ""sv, "Customers 0 0 0", "", ""},
    {"nothing like the table", "hello\n"sv, "", "", "no dialect"},
    {"a date of a spreadsheet", "1\tAda\tABC\t1815-12-10\n2\tBob\tABC\t00:00.0\n"sv, "Customers 2 1 1",
     "1|'Ada'|'ABC'|'1815-12-10'", "Customers.dat:2: row 2, column Born: 00:00.0: not-a-date: "},
    {"a key twice", "1\tAda\tABC\t\n1\tBob\tABC\t\n"sv, "Customers 2 1 1", "1|'Ada'|'ABC'|NULL",
     "Customers.dat:2: row 2: duplicate-key: "},
    {"a key that is NULL", "1\tAda\tABC\t\n\tBob\tABC\t\n"sv, "Customers 2 1 1", "1|'Ada'|'ABC'|NULL",
     "Customers.dat:2: row 2, column Id: : null-not-allowed: "},
    {"a cut last line", "1\tAda\tABC\t1815-12-10\n2\tBob\tABC\t1815-12-1"sv, "Customers 2 1 1",
     "1|'Ada'|'ABC'|'1815-12-10'", "Customers.dat:2: row 2, column Born: : cut-row: "},
    {"a cut last line with too few fields", "1\tAda\tABC\t1815-12-10\n2\tBo"sv, "Customers 2 1 1",
     "1|'Ada'|'ABC'|'1815-12-10'", "Customers.dat:2: row 2, column Name: : cut-row: "},
    {"a field too many", "1\tAda\tABC\t1815-12-10\n2\tBob\tABC\t\t\n3\tEve\tABC\t\n"sv, "Customers 3 2 1",
     "1|'Ada'|'ABC'|'1815-12-10' 3|'Eve'|'ABC'|NULL", "Customers.dat:2: row 2, column Born: : too-many-fields: "},
    {"a terminator inside a value", "1\tAda\tABC\t1815-12-10\n2\tB\tob\tABC\t\n3\tEve\tABC\t\n"sv, "Customers 3 2 1",
     "1|'Ada'|'ABC'|'1815-12-10' 3|'Eve'|'ABC'|NULL", "Customers.dat:2: row 2, column Born: : too-many-fields: "},
    {"a field too few", "1\tAda\tABC\t1815-12-10\n2\tBob\tABC\n3\tEve\tABC\t\n4\tMia\tABC\t\n"sv, "Customers 4 3 1",
     "1|'Ada'|'ABC'|'1815-12-10' 3|'Eve'|'ABC'|NULL 4|'Mia'|'ABC'|NULL",
     "Customers.dat:2: row 2, column Born: : too-few-fields: "},
    {"UTF-8 with a mark", "\xEF\xBB\xBF\x31\tÄda\tABC\t\n"sv, "Customers 1 1 0", "1|'Äda'|'ABC'|NULL", ""},
    {"not UTF-8", "1\tAda\tABC\t\n2\t\xC4\x64\x61\tABC\t\n"sv, "Customers 2 1 1", "1|'Ada'|'ABC'|NULL",
     "Customers.dat:2: row 2, column Name: \xC4\x64\x61: not-utf-8: "},
};

TEST_F(ClientLoadBcp, Files)
{
    for (const file_case &c : file_cases) {
        SCOPED_TRACE(c.name);
        std::remove(path("db").c_str());
        create();
        const std::string report = load({write("Customers.dat", c.content)});
        if (!*c.report) {
            EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
            EXPECT_EQ(std::string(KT_context__err_description(ctx)).rfind(c.remark, 0), 0u);
            KT_context__err_reset(ctx);
            continue;
        }
        ASSERT_OK(ctx);
        EXPECT_EQ(report, c.report);
        EXPECT_EQ(query(all_customers), c.rows);
        EXPECT_EQ(shown_remarks.rfind(c.remark, 0), 0u) << shown_remarks;
        EXPECT_EQ(shown_remarks.empty(), !*c.remark) << shown_remarks;
    }
}

TEST_F(ClientLoadBcp, Utf16IsKnownByItsMark)
{
    std::string utf16 = "\xFF\xFE";
    client_append_as_utf16(utf16, "1|Ä😀|ABC|\r\n2||ABC|1815-12-10\r\n");
    EXPECT_EQ(load({write("Customers.csv", utf16)}), "Customers 2 2 0");
    EXPECT_EQ(query(all_customers), "1|'Ä😀'|'ABC'|NULL 2|NULL|'ABC'|'1815-12-10'");
}

TEST_F(ClientLoadBcp, Utf16WithoutAMarkIsRefusedRowByRow)
{
    std::string utf16;
    client_append_as_utf16(utf16, "1|Ada|ABC|\r\n2|Bob|ABC|1815-12-10\r\n");
    const std::string file = write("Customers.csv", utf16);
    tov_client_load_options options = {};
    options.field_end = "|";
    options.row_end = "\\n";
    const std::string report = load({file}, options);
    EXPECT_OK(ctx);
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "0");
    EXPECT_NE(shown_remarks.find("not-utf-8: every second byte of the file is zero"), std::string::npos) << report;
    options.encoding = "utf-16le";
    options.row_end = nullptr;
    EXPECT_EQ(load({file}, options), "Customers 2 2 0");
}

TEST_F(ClientLoadBcp, OtherEncodingsAreSaid)
{
    tov_client_load_options options = {};
    options.encoding = "CP850";
    options.rejects = directory.c_str();
    write("rows.dat", "1\t\x8E\x64\x61\tABC\t\n2\t\x8E\tABC\tx\n3\t\x84\tABC\t\n");
    options.tbl = "customers";
    EXPECT_EQ(load({path("rows.dat")}, options, "db"), "Customers 3 2 1");
    EXPECT_EQ(query(all_customers), "1|'Äda'|'ABC'|NULL 3|'ä'|'ABC'|NULL");
    EXPECT_NE(shown_remarks.find("row 2"), std::string::npos);
    options.encoding = "no-such";
    EXPECT_EQ(load({path("rows.dat")}, options), "");
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    KT_context__err_reset(ctx);
}

TEST_F(ClientLoadBcp, RefusedRowsAreKeptAsTheyStoodWithTheirPlaces)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    std::string utf16 = "\xFF\xFE";
    client_append_as_utf16(utf16, "1|Ä|ABC|\r\n2|Bob|ABC|soon\r\n3|Eve|ABC|\r\nx|\"\\|ABC|\r\n");
    EXPECT_EQ(load({write("Customers.csv", utf16)}, options), "Customers 4 2 2");
    std::string expected = "\xFF\xFE";
    client_append_as_utf16(expected, "2|Bob|ABC|soon\r\nx|\"\\|ABC|\r\n");
    EXPECT_EQ(read("rejects/Customers.csv"), expected);
    EXPECT_EQ(
        read("rejects/Customers.csv.jsonl"),
        "{\"file\":\"Customers.csv\",\"table\":\"Customers\",\"row\":2,\"line\":2,\"byte\":22,\"column\":\"Born\","
        "\"value\":\"soon\",\"code\":\"not-a-date\",\"message\":\"the value is not a date\"}\n"
        "{\"file\":\"Customers.csv\",\"table\":\"Customers\",\"row\":4,\"line\":4,\"byte\":78,\"column\":\"Id\","
        "\"value\":\"x\",\"code\":\"not-a-number\",\"message\":\"the value is not a number that the column's type "
        "can be read from\"}\n");
}

// A file of rejects may be what is loaded, or have been corrected since: it is never written over.
TEST_F(ClientLoadBcp, FilesOfRejectsKeepTheirContent)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("Customers.dat", "1\tAda\tABC\t\n2\tBob\tABC\tsoon\n3\tEve\tABC\tsoon\n")}, options),
              "Customers 3 1 2");
    write("rejects/Customers.dat", "2\tBob\tABC\t1900-01-01\n3\tEve\tABC\tnow\n");
    EXPECT_EQ(load({path("rejects/Customers.dat")}, options), "Customers 2 1 1");
    EXPECT_EQ(read("rejects/Customers.dat"), "2\tBob\tABC\t1900-01-01\n3\tEve\tABC\tnow\n");
    EXPECT_EQ(read("rejects/Customers-2.dat"), "3\tEve\tABC\tnow\n");
    write("rejects/Customers-2.dat", "3\tEve\tABC\t1900-01-01\n");
    EXPECT_EQ(load({path("rejects/Customers-2.dat")}, options), "Customers 1 1 0");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "3");
}

TEST_F(ClientLoadBcp, TwoFilesOfOneNameHaveFilesOfRejectsOfTheirOwn)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    ASSERT_EQ(std::system(("mkdir " + path("a") + " " + path("b")).c_str()), 0);
    write("a/Orders.dat", "1\t9\t1\t1\t\n");
    write("b/Orders.dat", "x\t\t1\t1\t\n2\t\t1\t1\t\n");
    EXPECT_EQ(load({path("a/Orders.dat"), path("b/Orders.dat")}, options), "Sales.Orders 1 0 1; Sales.Orders 2 1 1");
    EXPECT_EQ(read("rejects/Orders.dat"), "1\t9\t1\t1\t\n");
    EXPECT_EQ(read("rejects/Orders-2.dat"), "x\t\t1\t1\t\n");
}

// The end of the cut row is not made up, and yet the row after it stays a row.
TEST_F(ClientLoadBcp, ACutRowIsKeptApartFromTheNext)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("Orders.dat", "1\t9\t1\t1\t\n2\t\t1\t1\t")}, options), "Sales.Orders 2 0 2");
    EXPECT_EQ(read("rejects/Orders.dat"), "2\t\t1\t1\t\n1\t9\t1\t1\t\n");
}

TEST_F(ClientLoadBcp, ShortenedValuesAreCountedForEachFile)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{
        "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
        "2":{"name":"At","type":{"name":"time","precision":7}}},
        "server":{"schema":"dbo","name":"T","cols":[{"name":"Id","id":"1","type":"int"},
        {"name":"At","id":"2","type":"time","scale":7,"nullable":true}]}}}})json");
    tov_client__create_database(ctx, schema, path("t.db").c_str(), nullptr, nullptr);
    ASSERT_OK(ctx);
    write("T-1.dat", "1\t00:00:00.0005000\n");
    write("T-2.dat", "2\t00:00:00.0005000\n3\t00:00:00.0009000\n");
    tov_client_loader *loader = nullptr;
    KT_varray *report = nullptr;
    KT_varray *remarks = nullptr;
    tov_client__open_loader(ctx, schema, path("t.db").c_str(), nullptr, &loader);
    for (const char *name : {"T-1.dat", "T-2.dat"})
        tov_client__load_file(ctx, loader, path(name).c_str());
    tov_client__finish_load(ctx, loader, &report, &remarks);
    ASSERT_OK(ctx);
    for (uint32_t n = 0; n < 2; n++) {
        KT_vhash *record = nullptr;
        KT_vhash *shortened = nullptr;
        int64_t count = 0;
        KT_varray__get__vhash(ctx, report, n, &record);
        KT_vhash__get__vhash(ctx, record, "shortened", &shortened);
        KT_vhash__get__int64(ctx, shortened, "At", &count);
        EXPECT_EQ(count, n + 1);
    }
    KT_varray__free(ctx, report);
    KT_varray__free(ctx, remarks);
    tov_client__free_loader(ctx, loader);
}

TEST_F(ClientLoadBcp, RejectsCanBeCorrectedAndLoaded)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("Customers.dat", "1\tAda\tABC\t\n2\tBob\tABC\tsoon\n")}, options), "Customers 2 1 1");
    write("rejects/Customers.dat", "2\tBob\tABC\t1900-01-01\n");
    options.rejects = nullptr;
    EXPECT_EQ(load({path("rejects/Customers.dat")}, options), "Customers 1 1 0");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "2");
}

TEST_F(ClientLoadBcp, ReferencesAreCheckedAfterTheLastFile)
{
    write("Orders.dat", "10\t1\t1.50\t3.00\t\n11\t9\t1.50\t3.00\tlost\n12\t\t.25\t\t\n");
    write("Customers.dat", "1\tAda\tABC\t\n");
    EXPECT_EQ(load({path("Orders.dat"), path("Customers.dat")}), "Sales.Orders 3 2 1; Customers 1 1 0");
    EXPECT_EQ(query("SELECT Id, Customer, Price FROM \"Sales.Orders\" ORDER BY Id"), "10|1|150 12|NULL|25");
    EXPECT_EQ(query("PRAGMA foreign_key_check"), "");
    EXPECT_EQ(shown_remarks,
              "Orders.dat:2: row 2, column Customer: 9: no-parent: no row of Customers has this key (Customer)\n");
}

TEST_F(ClientLoadBcp, ReferencesCanWaitForALaterLoad)
{
    tov_client_load_options options = {};
    options.skip_references = 1;
    write("Orders.dat", "10\t1\t1.50\t3.00\t\n11\t9\t1.50\t3.00\tlost\n");
    write("Customers.dat", "1\tAda\tABC\t\n");
    EXPECT_EQ(load({path("Orders.dat")}, options), "Sales.Orders 2 2 0");
    EXPECT_EQ(load({path("Orders.dat"), path("Customers.dat")}), "Sales.Orders 2 1 1; Customers 1 1 0");
    EXPECT_EQ(query("PRAGMA foreign_key_check"), "");
}

TEST_F(ClientLoadBcp, RowsThatWereThereBeforeAreLeftAlone)
{
    ASSERT_EQ(query("INSERT INTO \"Sales.Orders\" (Id, Customer) VALUES (5, 77)"), "");
    EXPECT_EQ(load({write("Orders.dat", "10\t\t1.50\t3.00\t\n")}), "Sales.Orders 1 1 0");
    EXPECT_EQ(query("SELECT Id FROM \"Sales.Orders\" ORDER BY Id"), "5 10");
}

TEST_F(ClientLoadBcp, ChecksAreTheDatabases)
{
    EXPECT_EQ(load({write("Orders.dat", "10\t\t1.50\t3.00\t\n11\t\t-1.50\t-3.00\t\n")}), "Sales.Orders 2 1 1");
    EXPECT_NE(shown_remarks.find("check-violated"), std::string::npos) << shown_remarks;
}

TEST_F(ClientLoadBcp, AllOrNothingKeepsNothing)
{
    tov_client_load_options options = {};
    options.all_or_nothing = 1;
    write("Customers.dat", "1\tAda\tABC\t\n2\tBob\tABC\tsoon\n");
    EXPECT_EQ(load({path("Customers.dat")}, options), "Customers 2 0 1");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "0");
    EXPECT_EQ(load({path("Customers.dat")}), "Customers 2 1 1");
}

TEST_F(ClientLoadBcp, AFileIsLoadedOnce)
{
    write("Customers.dat", "1\tAda\tABC\t\n");
    EXPECT_EQ(load({path("Customers.dat")}), "Customers 1 1 0");
    EXPECT_EQ(load({path("Customers.dat")}), "Customers 1 1 0");
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "1");
    tov_client_load_options options = {};
    options.again = 1;
    EXPECT_EQ(load({path("Customers.dat")}, options), "Customers 1 0 1");
}

TEST_F(ClientLoadBcp, TooManyRejectsEndTheLoad)
{
    tov_client_load_options options = {};
    options.max_rejects = 1;
    write("Customers.dat", "1\tAda\tABC\t\nx\tBob\tABC\t\ny\tBob\tABC\t\n");
    EXPECT_EQ(load({path("Customers.dat")}, options), "");
    EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
    KT_context__err_reset(ctx);
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "0");
}

TEST_F(ClientLoadBcp, OtherTriggersRun)
{
    ASSERT_EQ(query("CREATE TRIGGER mine AFTER INSERT ON Customers BEGIN SELECT RAISE(ABORT, 'not him') WHERE "
                    "NEW.Name = 'Bob'; END"),
              "");
    EXPECT_EQ(load({write("Customers.dat", "1\tAda\tABC\t\n2\tBob\tABC\t\n")}), "Customers 2 1 1");
    EXPECT_EQ(shown_remarks, "Customers.dat:2: row 2: not-accepted: not him\n");
}

TEST_F(ClientLoadBcp, ATableThatIsNotKnownIsNamed)
{
    load({write("Nobody.dat", "1\n")});
    EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
    EXPECT_STREQ(KT_context__err_description(ctx), "no table is called \"Nobody\"; say which one the rows are for");
    KT_context__err_reset(ctx);
}

} // namespace
