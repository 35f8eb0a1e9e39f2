// tov-schema load and convert.

#include "package_builder.hpp"
#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CommandLoadTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        write("c.json", sample_catalogue);
        ASSERT_EQ(run({"import", path("c.json"), "-o", path("s.json")}).exit_code, 0);
        ASSERT_EQ(run({"create", path("s.json"), path("client.db")}).exit_code, 0);
    }
    std::string query(const char *sql) const
    {
        return run_program("sqlite3", {path("client.db"), sql}).out;
    }
};

TEST_F(CommandLoadTest, LoadsRowsAndPrintsATable)
{
    const command_result result =
        run({"load", path("s.json"), path("client.db"), write("Customers.dat", "1\tAda\n2\tBob\n")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(query("SELECT * FROM Customers"), "1|Ada\n2|Bob\n");
    EXPECT_EQ(result.out.rfind("table      read  loaded  rejected  shortened  seconds\n"
                               "Customers     2       2         0          0     ",
                               0),
              0u)
        << result.out;
    EXPECT_EQ(result.err,
              "tov-schema: note: Customers.dat was read as bcp, fields end with \"\\t\", rows with \"\\n\"\n");
}

TEST_F(CommandLoadTest, RejectsAreToldAndKept)
{
    const std::string file = write("Customers.dat", "1\tAda\nx\tBob\n");
    const command_result result =
        run({"load", path("s.json"), path("client.db"), file, "--rejects", path("rejects"), "--quiet"});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("Customers.dat:2: row 2, column CustomerId: x: not-a-number: "), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("1 rows were REJECTED; they are in "), std::string::npos) << result.err;
    EXPECT_EQ(read("rejects/Customers.dat"), "x\tBob\n");
}

TEST_F(CommandLoadTest, AFileThatIsNotThereIsNamed)
{
    const command_result result = run({"load", path("s.json"), path("client.db"), path("Customers.dat")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("No such file"), std::string::npos) << result.err;
}

TEST_F(CommandLoadTest, Csv)
{
    const std::string file = write("Orders.csv", "OrderId,Placed,Total\n1,-,\"1.50\"\n2,2013-07-01 00:00:00,-\n");
    const command_result result = run({"load", path("s.json"), path("client.db"), file, "--null", "-"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(query("SELECT OrderId, quote(Placed), quote(Total) FROM Orders"),
              "1|NULL|150\n2|'2013-07-01 00:00:00.000'|NULL\n");
    EXPECT_EQ(result.err,
              "tov-schema: note: Orders.csv was read as csv, fields end with \",\", names in the first line, "
              "NULL is -\n");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), write("Customers.txt", "3;\"-\"\n"), "--header",
                          "no", "--format", "csv", "--null", ""}),
                     0);
    EXPECT_EQ(query("SELECT quote(Name) FROM Customers WHERE CustomerId = 3"), "'-'\n");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), file, "--header", "maybe"}), 2);
}

TEST_F(CommandLoadTest, JsonThatComesOutAgain)
{
    const std::string file =
        write("Orders.json", "[{\"OrderId\":1,\"Total\":1.5,\"Placed\":\"2013-07-01T12:30:45.260\"},{\"OrderId\":2,"
                             "\"Placed\":null}]");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), file}), 0);
    const command_result result =
        run({"unload", path("s.json"), path("client.db"), path("out"), "--format", "json", "--table", "Orders"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, "Orders.jsonl 2\n");
    EXPECT_EQ(read("out/Orders.jsonl"),
              "{\"OrderId\":1,\"CustomerId\":null,\"Total\":1.50,\"Placed\":\"2013-07-01T12:30:45.26\"}\n"
              "{\"OrderId\":2,\"CustomerId\":null,\"Total\":null,\"Placed\":null}\n");
}

TEST_F(CommandLoadTest, ABcpFileComesOutAsItWas)
{
    const std::string file = write("Customers.dat", "1|Ada\r\n2|\r\n");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), file}), 0);
    EXPECT_EXIT_CODE(run({"unload", path("s.json"), path("client.db"), path("out"), "--quiet"}), 0);
    EXPECT_EQ(read("out/Customers.dat"), "1|Ada\r\n2|\r\n");
}

TEST_F(CommandLoadTest, UnloadsScriptsAndQueries)
{
    run({"load", path("s.json"), path("client.db"), write("Customers.dat", "1\tA\t\n2\tB\n"), "-t", "\\t", "-r",
         "\\n"});
    const command_result script =
        run({"unload", path("s.json"), path("client.db"), path("out"), "--format", "insert", "--table", "Customers"});
    EXPECT_EXIT_CODE(script, 0);
    EXPECT_EQ(script.out, "rows.sql Customers 1\n");
    const command_result rows = run({"unload", path("s.json"), path("client.db"), path("out"), "--format", "csv",
                                     "--query", "SELECT Name AS Who FROM Customers"});
    EXPECT_EXIT_CODE(rows, 0);
    EXPECT_EQ(rows.out, "query.csv 1\n");
    EXPECT_EQ(read("out/query.csv"), "Who\r\nB\r\n");
    EXPECT_EXIT_CODE(run({"unload", path("s.json"), path("client.db"), path("out"), "--query", "DROP TABLE Customers"}),
                     2);
}

TEST_F(CommandLoadTest, ValuesThatCannotBeReadAgainAreToldOf)
{
    query("INSERT INTO Customers VALUES (1, 'A' || char(9) || 'B')");
    const command_result result = run({"unload", path("s.json"), path("client.db"), path("out")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err,
              "tov-schema: warning: Customers.dat: 1 values hold what ends a field or row, and cannot be read "
              "again; choose other terminators\n");
}

// A table of a package's model with one integer column.
std::string a_tbl(const std::string &name)
{
    return "<Element Type=\"SqlTable\" Name=\"[dbo].[" + name +
           "]\"><Relationship Name=\"Columns\"><Entry><Element Type=\"SqlSimpleColumn\" Name=\"[dbo].[" + name +
           "].[Id]\"><Property Name=\"IsNullable\" Value=\"False\"/><Relationship "
           "Name=\"TypeSpecifier\"><Entry><Element "
           "Type=\"SqlTypeSpecifier\"><Relationship Name=\"Type\"><Entry><References ExternalSource=\"BuiltIns\" "
           "Name=\"[int]\"/></Entry></Relationship></Element></Entry></Relationship></Element></Entry></Relationship>"
           "<Relationship Name=\"Schema\"><Entry><References ExternalSource=\"BuiltIns\" Name=\"[dbo]\"/></Entry>"
           "</Relationship></Element>";
}

// Two rows of A and three of B, and what the package says of their number.
std::string a_package_with_rows(int said)
{
    const std::string model = a_model(a_tbl("A") + a_tbl("B"));
    const std::string count = "<ExportStatistics><TableRowCountTotalTag>" + std::to_string(said) +
                              "</TableRowCountTotalTag></ExportStatistics>";
    return a_zip({{"model.xml", model},
                  {"Origin.xml", an_origin(model, true, count)},
                  {"Data/dbo.A/TableData-000-00000.BCP", std::string("\1\0\0\0\2\0\0\0", 8)},
                  {"Data/dbo.B/TableData-000-00000.BCP", std::string("\1\0\0\0\2\0\0\0\3\0\0\0", 12)}});
}

TEST_F(CommandLoadTest, RowsThatAreLeftOutAreCounted)
{
    const std::string file = write("shop.bacpac", a_package_with_rows(5));
    const command_result whole = run({"convert", file, path("whole.db")});
    EXPECT_EXIT_CODE(whole, 0);
    EXPECT_NE(whole.out.find("\ntotal     5       5         0          0"), std::string::npos) << whole.out;
    const command_result part = run({"convert", file, path("part.db"), "--skip", "B"});
    EXPECT_EXIT_CODE(part, 0);
    EXPECT_NE(part.out.find("\ndbo.B     3       0         0         3          0"), std::string::npos) << part.out;
    EXPECT_NE(part.out.find("\ntotal     5       2         0         3          0"), std::string::npos) << part.out;
    EXPECT_NE(part.err.find("rows of dbo.B are left out"), std::string::npos) << part.err;
}

TEST_F(CommandLoadTest, APackageThatSaysAnotherNumberOfRowsIsToldOf)
{
    const command_result result = run({"convert", write("shop.bacpac", a_package_with_rows(6)), path("whole.db")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.err.find("the package says that it has 6 rows; 5 were READ"), std::string::npos) << result.err;
}

TEST_F(CommandLoadTest, ConvertMakesADatabaseInOneStep)
{
    const command_result result = run({"convert", path("c.json"), path("whole.db"), "--schema", path("whole.json")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(read("whole.json"), read("s.json"));
    EXPECT_EQ(run_program("sqlite3", {path("whole.db"), ".tables"}).out,
              run_program("sqlite3", {path("client.db"), ".tables"}).out);
    EXPECT_FALSE(exists("whole.db.new"));
}

TEST_F(CommandLoadTest, ConvertLoadsTheRowsOfAScriptFromStandardInput)
{
    const std::string script = "CREATE TABLE dbo.T (Id int NOT NULL PRIMARY KEY)\nGO\n"
                               "INSERT dbo.T VALUES (1), (2)\nINSERT dbo.T VALUES (1)\n";
    const command_result result = run({"convert", "-", path("t.db"), "--rejects", path("kept")}, script);
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.out.find("\ntotal     3       2         1"), std::string::npos) << result.out;
    EXPECT_NE(result.err.find("standard input:4: row 3"), std::string::npos) << result.err;
    EXPECT_EQ(run_program("sqlite3", {path("t.db"), "SELECT group_concat(Id) FROM T"}).out, "1,2\n");
    EXPECT_TRUE(exists("kept/standard input"));
}

TEST_F(CommandLoadTest, ConvertKeepsAFileThatIsThere)
{
    const command_result result = run({"convert", path("c.json"), path("client.db")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_NE(result.err.find("there is a file of this name already"), std::string::npos) << result.err;
    EXPECT_EXIT_CODE(run({"convert", path("c.json")}), 2);
    EXPECT_EQ(run({"convert", path("c.json"), "-"}).err.find("tov-schema: a database cannot be written to standard"),
              0u);
}

TEST_F(CommandLoadTest, AFileThatWasLoadedBeforeIsToldOf)
{
    const std::string file = write("Customers.dat", "1\tAda\n");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), file}), 0);
    const command_result again = run({"load", path("s.json"), path("client.db"), file});
    EXPECT_EXIT_CODE(again, 0);
    EXPECT_EQ(again.err, "tov-schema: note: Customers.dat was loaded before; --again loads it once more\n");
    EXPECT_EXIT_CODE(run({"load", path("s.json"), path("client.db"), file, "--again"}), 1);
}

TEST_F(CommandLoadTest, AScriptOfSeveralTablesIsToldOfOnce)
{
    const std::string file =
        write("rows.sql", "INSERT Customers (CustomerId, Name) VALUES (1, 'A')\n"
                          "INSERT Orders (OrderId, CustomerId, Placed) VALUES (1, 1, '2013-07-01')\n");
    const command_result result = run({"load", path("s.json"), path("client.db"), file});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.err, "tov-schema: note: rows.sql was read as insert\n");
    EXPECT_NE(result.out.find("\nOrders        1       1         0 "), std::string::npos) << result.out;
}

TEST_F(CommandLoadTest, ValuesThatWereShortenedAreToldOf)
{
    const std::string script = write("t.sql", "CREATE TABLE T (Id int NOT NULL PRIMARY KEY, At time(7))\nGO\n"
                                              "INSERT T VALUES (1, '07:00:00.1235'), (2, '07:00:00.5')\n");
    const command_result result = run({"convert", script, path("t.db")});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_NE(result.err.find("note: T, column At: 1 values were shortened to three fraction digits\n"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.out.find("\nT         2       2         0          1 "), std::string::npos) << result.out;
    const command_result exact = run({"convert", script, path("e.db"), "--exact", "--all-or-nothing"});
    EXPECT_EXIT_CODE(exact, 1);
    EXPECT_NE(exact.err.find("needs-shortening"), std::string::npos) << exact.err;
    EXPECT_FALSE(exists("e.db"));
    EXPECT_FALSE(exists("e.db.new"));
}

TEST_F(CommandLoadTest, ConvertWritesTheFindings)
{
    const std::string script = write("t.sql", "CREATE TABLE T (Id int NOT NULL PRIMARY KEY, V sql_variant)\n");
    const command_result result = run({"convert", script, path("t.db"), "--findings", path("f.json"), "--quiet"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_NE(read("f.json").find("\"column\":\"V\""), std::string::npos) << read("f.json");
    EXPECT_EXIT_CODE(run({"convert", script, path("t.db")}), 2); // it is there already
    EXPECT_EXIT_CODE(run({"convert", script}), 2);
}

} // namespace
