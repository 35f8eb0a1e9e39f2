// tov-schema columns.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandColumnsTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        ASSERT_EQ(run({"import", write("c.json", sample_catalogue), "-o", path("s.json")}).exit_code, 0);
    }
};

TEST_F(CommandColumnsTest, SaysHowValuesAreKept)
{
    const command_result result = run({"columns", path("s.json"), "Orders"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(
        result.out,
        "Orders, on the server dbo.Orders\n"
        "  column      server type        NULL  insert  default  stored as  example                  stored            "
        "         form                                          keys\n"
        "  OrderId     int identity(1,1)  no                     INTEGER    -42                      -42               "
        "         the number                                    primary key\n"
        "  CustomerId  int                yes                    INTEGER    -42                      -42               "
        "         the number                                    -> Customers.CustomerId\n"
        "  Total       decimal(9,2)       yes                    INTEGER    12.50                    1250              "
        "         the value times 10^2\n"
        "  Placed      datetime           yes                    TEXT       2013-07-01 12:30:45.263  '2013-07-01 "
        "12:30:45.263'  YYYY-MM-DD HH:MM:SS.fff, ending in 0, 3 or 7\n"
        "\n"
        "  Total  show   substr('-', 1, \"Total\" < 0) || abs(\"Total\" / 100) || '.' || substr('00' || abs(\"Total\" "
        "% "
        "100), -2)\n"
        "         store  CASE WHEN CAST(?1 AS NUMERIC) = ?1 AND ?1 NOT GLOB '*[^-+.0-9]*' AND ?1 NOT GLOB '*.???*' "
        "THEN "
        "CAST(replace(?1, '.', '') || substr('00', length(?1) - instr(?1 || '.', '.') + 1) AS NUMERIC) ELSE CAST(?1 AS "
        "BLOB) END    -- ?1: a number, or its digits as a text\n");
}

TEST_F(CommandColumnsTest, DescribesAllTables)
{
    const command_result result = run({"columns", path("s.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find("Customers, on the server dbo.Customers\n"), 0u) << result.out;
    EXPECT_NE(result.out.find("\n\nOrders, on the server dbo.Orders\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("no            'nobody'  TEXT"), std::string::npos) << result.out;
}

TEST_F(CommandColumnsTest, PrintsJson)
{
    const command_result result = run({"columns", "--json", path("s.json"), "Orders"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(
        result.out.find(R"({"tables":[{"table":"Orders","server_table":"dbo.Orders","columns":[{"name":"OrderId")"), 0u)
        << result.out;
    EXPECT_NE(result.out.find(R"("insert":"INSERT INTO \"Orders\")"), std::string::npos) << result.out;
    EXPECT_TRUE(result.out.ends_with("}\n"));
}

TEST_F(CommandColumnsTest, RefusesATableThatIsNotThere)
{
    const command_result result = run({"columns", path("s.json"), "Order"});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err, "tov-schema: there is no table 'Order'; did you mean 'Orders'?\n");
}

TEST_F(CommandColumnsTest, OfEveryKind)
{
    const std::string script = write(
        "t.sql", "CREATE TABLE T (Id int NOT NULL, Part int NOT NULL, Code nvarchar(60) UNIQUE DEFAULT N'a default "
                 "that is so löng that a line has no room for it', Twice AS Id * 2, V sql_variant, H hierarchyid, "
                 "PRIMARY KEY (Id, Part))\nCREATE TABLE U (Id int NOT NULL, Part int NOT NULL, FOREIGN KEY (Id, Part) "
                 "REFERENCES T)\n");
    ASSERT_EXIT_CODE(run({"import", script, "-o", path("t.json"), "--quiet"}), 0);
    const std::string out = run({"columns", path("t.json")}).out;
    for (const char *part : {"primary key\n", "primary key 2\n", "unique\n", "left out", "-> T.Id\n", "-> T.Part\n",
                             "löng", "...", "-- ?1: the text; SQLite 3.41 or later\n"})
        EXPECT_NE(out.find(part), std::string::npos) << part << "\n" << out;
    EXPECT_EQ(out.find("no room for it"), std::string::npos) << out;
}

TEST_F(CommandColumnsTest, ARowversionNeedNotBeGiven)
{
    write("v.sql", "CREATE TABLE dbo.V (Id int NOT NULL PRIMARY KEY, Changed rowversion NOT NULL)");
    ASSERT_EXIT_CODE(run({"import", path("v.sql"), "-o", path("v.json")}), 0);
    const command_result result = run({"columns", path("v.json"), "--json"});
    EXPECT_EXIT_CODE(result, 0);
    const size_t column = result.out.find("\"name\":\"Changed\"");
    ASSERT_NE(column, std::string::npos) << result.out;
    EXPECT_NE(result.out.find("\"nullable\":false,\"required\":false", column), std::string::npos) << result.out;
    ASSERT_EXIT_CODE(run({"create", path("v.json"), path("v.db")}), 0);
    EXPECT_EQ(run_program("sqlite3", {path("v.db"), "INSERT INTO V (Id) VALUES (1), (2);"
                                                    "SELECT count(DISTINCT Changed), typeof(min(Changed)) FROM V"})
                  .out,
              "2|blob\n");
}

} // namespace
