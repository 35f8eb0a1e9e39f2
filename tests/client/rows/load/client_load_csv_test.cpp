// CSV files: with names or without, any of the usual separators, and what spoils them.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

using namespace std::string_view_literals;

namespace {

class ClientLoadCsv : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
};

constexpr const char *all_customers = "SELECT Id, quote(Name), quote(Code), quote(Born) FROM Customers ORDER BY Id";

struct csv_case {
    const char *name;
    std::string_view content;
    const char *null_word; // null: not said
    const char *report;
    const char *rows;
    const char *remark; // begins so; empty for none
};

const csv_case csv_cases[] = {
    {"names in the first line", "Id,Name,Code,Born\r\n1,Ada,ABC,1815-12-10\r\n2,Bob,B,\r\n"sv, nullptr,
     "Customers 2 2 0", "1|'Ada'|'ABC'|'1815-12-10' 2|'Bob'|'B  '|NULL", ""},
    {"names in another order and case", "BORN,name,ID\n1815-12-10,Ada,1\n"sv, nullptr, "Customers 1 1 0",
     "1|'Ada'|NULL|'1815-12-10'", ""},
    {"no names", "1,Ada,ABC,1815-12-10\n2,Bob,B,\n"sv, nullptr, "Customers 2 2 0",
     "1|'Ada'|'ABC'|'1815-12-10' 2|'Bob'|'B  '|NULL", ""},
    {"semicolons and no line end at the end", "Id;Name;Code;Born\n1;Ada;ABC;1815-12-10"sv, nullptr, "Customers 1 1 0",
     "1|'Ada'|'ABC'|'1815-12-10'", ""},
    {"tabs", "Id\tName\tCode\tBorn\n1\t\"A\tB\"\tABC\t1815-12-10\n"sv, nullptr, "Customers 1 1 0",
     "1|'A\tB'|'ABC'|'1815-12-10'", ""},
    {"quotes", "1,\"A,\"\"B\"\"\r\nC\",\"ABC\",\"1815-12-10\"\r\n"sv, nullptr, "Customers 1 1 0",
     "1|'A,\"B\"\r\nC'|'ABC'|'1815-12-10'", ""},
    {"an empty text in quotes, NULL without", "1,\"\",\"\",\n2,,,\n"sv, nullptr, "Customers 2 2 0",
     "1|''|'   '|NULL 2|NULL|NULL|NULL", ""},
    {"a quote inside a field that does not begin with one", "1,5\" disk,ABC,\n"sv, nullptr, "Customers 1 1 0",
     "1|'5\" disk'|'ABC'|NULL", ""},
    {"blank lines are no rows", "\nId,Name,Code,Born\n\n1,Ada,ABC,\n\r\n2,Bob,ABC,\n\n"sv, nullptr, "Customers 2 2 0",
     "1|'Ada'|'ABC'|NULL 2|'Bob'|'ABC'|NULL", ""},
    {"the word NULL is found out", "1,NULL,ABC,NULL\n2,,ABC,1815-12-10\n"sv, nullptr, "Customers 2 2 0",
     "1|NULL|'ABC'|NULL 2|''|'ABC'|'1815-12-10'", ""},
    {"the word for NULL is said", "1,\\N,ABC,\\N\n2,NULL,ABC,1815-12-10\n"sv, "\\N", "Customers 2 2 0",
     "1|NULL|'ABC'|NULL 2|'NULL'|'ABC'|'1815-12-10'", ""},
    {"NULL is said to be nothing", "1,NULL,ABC,\n"sv, "", "Customers 1 1 0", "1|'NULL'|'ABC'|NULL", ""},
    {"NULL in quotes is a text", "1,\"NULL\",ABC,\n"sv, nullptr, "Customers 1 1 0", "1|'NULL'|'ABC'|NULL", ""},
    {"UTF-8 with a mark", "\xEF\xBB\xBFId,Name\n1,Äda\n"sv, nullptr, "Customers 1 1 0", "1|'Äda'|NULL|NULL", ""},
    {"dates of a spreadsheet",
     "Id,Name,Code,Born\n1,Ada,ABC,00:00.0\n2,Bob,ABC,00/01/1900\n3,Eve,ABC,########\n"
     "4,Mia,ABC,\"May 31, 2016\"\n5,Ann,ABC,2016-05-31\n"sv,
     nullptr, "Customers 5 1 4", "5|'Ann'|'ABC'|'2016-05-31'",
     "Customers.csv:2: row 1, column Born: 00:00.0: not-a-date: "},
    {"a field too many", "1,Ada,ABC,\n2,B,ob,ABC,\n3,Eve,ABC,\n"sv, nullptr, "Customers 3 2 1",
     "1|'Ada'|'ABC'|NULL 3|'Eve'|'ABC'|NULL", "Customers.csv:2: row 2, column Born: ABC: too-many-fields: "},
    {"a field too few", "1,Ada,ABC,\n2,Bob,ABC\n3,Eve,ABC,\n"sv, nullptr, "Customers 3 2 1",
     "1|'Ada'|'ABC'|NULL 3|'Eve'|'ABC'|NULL", "Customers.csv:2: row 2, column Code: ABC: too-few-fields: "},
    {"a cut last line", "1,Ada,ABC,\n2,Bo"sv, nullptr, "Customers 2 1 1", "1|'Ada'|'ABC'|NULL",
     "Customers.csv:2: row 2, column Name: Bo: cut-row: "},
    {"a quote that does not close", "1,Ada,ABC,\n2,\"Bob,ABC,\n3,Eve,ABC,\n"sv, nullptr, "Customers 3 2 1",
     "1|'Ada'|'ABC'|NULL 3|'Eve'|'ABC'|NULL", "Customers.csv:2: row 2, column Id: 2: bad-row: "},
    {"something behind a quote", "1,Ada,ABC,\n2,\"Bob\"x,ABC,\n3,\"E\",ABC,\n"sv, nullptr, "Customers 3 2 1",
     "1|'Ada'|'ABC'|NULL 3|'E'|'ABC'|NULL", "Customers.csv:2: row 2, column Name: Bob: bad-row: "},
    {"True for a number", "Id,Name\nTrue,Ada\n"sv, nullptr, "Customers 1 0 1", "",
     "Customers.csv:2: row 1, column Id: True: not-a-number: "},
};

TEST_F(ClientLoadCsv, Files)
{
    for (const csv_case &c : csv_cases) {
        SCOPED_TRACE(c.name);
        std::remove(path("db").c_str());
        create();
        tov_client_load_options options = {};
        options.null_word = c.null_word;
        EXPECT_EQ(load({write("Customers.csv", c.content)}, options), c.report);
        ASSERT_OK(ctx);
        EXPECT_EQ(query(all_customers), c.rows);
        EXPECT_EQ(shown_remarks.rfind(c.remark, 0), 0u) << shown_remarks;
        EXPECT_EQ(shown_remarks.empty(), !*c.remark) << shown_remarks;
    }
}

// After so many rows without it nobody has decided what the word means.
TEST_F(ClientLoadCsv, AWordThatMayMeanNullIsNotGuessedInSilence)
{
    std::string content = "Id,Name\n";
    for (int n = 1; n <= 60; n++)
        content += std::to_string(n) + ",x\n";
    write("Customers.csv", content + "61,NULL\n62,\"NULL\"\n");
    EXPECT_EQ(load({path("Customers.csv")}), "Customers 62 61 1");
    EXPECT_EQ(shown_remarks,
              "Customers.csv:62: row 61, column Name: NULL: null-or-text: the word NULL may be a text or mean "
              "NULL here; say which\n");
    EXPECT_EQ(query("SELECT count(*), sum(Name = 'NULL') FROM Customers"), "61|1");
}

TEST_F(ClientLoadCsv, Utf16WithNames)
{
    std::string utf16 = "\xFF\xFE";
    client_append_as_utf16(utf16, "Id,Name\r\n1,\"Ä\r\n😀\"\r\nx,Bob\r\n");
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("Customers.csv", utf16)}, options), "Customers 2 1 1");
    EXPECT_EQ(query(all_customers), "1|'Ä\r\n😀'|NULL|NULL");
    std::string refused = "\xFF\xFE";
    client_append_as_utf16(refused, "Id,Name\r\nx,Bob\r\n");
    EXPECT_EQ(read("rejects/Customers.csv"), refused);
}

TEST_F(ClientLoadCsv, RejectsBeginWithTheNamesAndCanBeCorrected)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("Customers.csv", "Name,Id\r\nAda,1\r\nBob,two\r\n\"Eve, or \"\"E\"\"\",\r\nMia,x")}, options),
              "Customers 4 1 3");
    EXPECT_EQ(read("rejects/Customers.csv"), "Name,Id\r\nBob,two\r\n\"Eve, or \"\"E\"\"\",\r\nMia,x\n");
    write("rejects/Customers.csv", "Name,Id\r\nBob,2\r\n\"Eve, or \"\"E\"\"\",3\r\nMia,4\n");
    options.rejects = nullptr;
    EXPECT_EQ(load({path("rejects/Customers.csv")}, options), "Customers 3 2 1"); // "Eve, or "E"" is too long
    EXPECT_NE(shown_remarks.find("row 2, column Name: Eve, or \"E\": too-long"), std::string::npos) << shown_remarks;
}

TEST_F(ClientLoadCsv, HeadersAreHeldAgainstTheTable)
{
    write("Customers.csv", "Id,Name,Nick\n1,Ada,A\n");
    load({path("Customers.csv")});
    EXPECT_ERROR(ctx, KT_ERR_BAD_VALUE, "the first line names a column \"Nick\", which the table does not have");
    KT_context__err_reset(ctx);
    tov_client_load_options options = {};
    options.format = "csv";
    options.header = 1;
    write("Customers.csv", "1,Ada,A,\n");
    load({path("Customers.csv")}, options);
    EXPECT_ERROR(ctx, KT_ERR_BAD_VALUE, "the first line does not have names of the table's columns");
    KT_context__err_reset(ctx);
}

TEST_F(ClientLoadCsv, ColumnsThatAreNotNamedGetTheirDefaults)
{
    EXPECT_EQ(load({write("Orders.csv", "Customer,Price\n,1.5\n,.25\n")}), "Sales.Orders 2 2 0");
    EXPECT_EQ(query("SELECT Id, Price, quote(Note) FROM \"Sales.Orders\""), "1|150|NULL 2|25|NULL");
    EXPECT_EQ(load({write("Customers.csv", "Name,Code\nAda,ABC\n")}), "Customers 1 0 1");
    EXPECT_NE(shown_remarks.find("column Id: : no-value"), std::string::npos) << shown_remarks;
}

TEST_F(ClientLoadCsv, ALoadGoesOnAfterTheNames)
{
    tov_client_load_options options = {};
    options.batch = 1;
    options.max_rejects = 1;
    write("Customers.csv", "Id,Name\n1,A\n2,B\nx,C\ny,D\n5,E\n");
    load({path("Customers.csv")}, options);
    EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
    KT_context__err_reset(ctx);
    EXPECT_EQ(query("SELECT Id FROM Customers"), "1 2");
    options.max_rejects = 0;
    EXPECT_EQ(load({path("Customers.csv")}, options), "Customers 5 3 2");
    EXPECT_EQ(query("SELECT Id FROM Customers"), "1 2 5");
}

TEST_F(ClientLoadCsv, AnEmptyFileHasNoRows)
{
    EXPECT_EQ(load({write("Customers.csv", "")}), "Customers 0 0 0");
    EXPECT_EQ(load({write("Customers.csv", "Id,Name\r\n")}), "Customers 0 0 0");
}

} // namespace
