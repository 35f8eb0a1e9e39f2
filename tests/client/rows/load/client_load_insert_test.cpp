// INSERT statements of scripts.
#include "load_test.hpp"

namespace {

class ClientLoadInsert : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
};

struct script_case {
    const char *name;
    const char *script;
    const char *report;
    const char *rows; // of Customers, or of Orders where the report names them
};

const script_case script_cases[] = {
    {"a row a statement", "INSERT [dbo].[Customers] ([Id], [Name]) VALUES (1, N'Ada')\nGO\n", "Customers 1 1 0",
     "1|'Ada'|NULL|NULL"},
    {"many rows a statement", "insert into Customers (Id, Name) values (1, 'A'), (2,'B') , (3, 'C');",
     "Customers 3 3 0", "1|'A'|NULL|NULL 2|'B'|NULL|NULL 3|'C'|NULL|NULL"},
    {"without a list of columns", "insert Customers\n   values(1, 'Ada', 'AB',\n '7/4/1996')\n", "Customers 1 1 0",
     "1|'Ada'|'AB '|'1996-07-04'"},
    {"quotes and line ends", "INSERT INTO \"Customers\" (\"Id\",\"Name\") VALUES (1,'O''Hara\n''')", "Customers 1 1 0",
     "1|'O''Hara\n'''|NULL|NULL"},
    {"casts", "INSERT Customers (Id, Born) VALUES (CAST(1 AS int), CAST(N'2024-06-25' AS Date))", "Customers 1 1 0",
     "1|NULL|NULL|'2024-06-25'"},
    {"a cast with commas in its type",
     "SET IDENTITY_INSERT Sales.Orders ON INSERT Sales.Orders (Id, Price) VALUES (7, CAST(1.50 AS Decimal(9, 2)))",
     "Sales.Orders 1 1 0", "7|NULL|150"},
    {"money and signs", "INSERT Sales.Orders (Id, Price) VALUES (7, $1.50), (-8, +2), (9, -0.0)", "Sales.Orders 3 3 0",
     "-8|NULL|200 7|NULL|150 9|NULL|0"},
    {"casts that would change the value are the server's",
     "INSERT Sales.Orders (Id, Price, Note) VALUES (1, CAST(1.5 AS int), NULL), (2, NULL, CAST('abcd' AS varchar(3))), "
     "(3, CAST(N'2.50' AS [decimal](9, 2)), CAST(N'abc' AS [nvarchar](max))), (4, CAST(NULL AS int), CAST(5 AS "
     "int)), "
     "(5, CAST(1 + 1 AS int), NULL)",
     "Sales.Orders 5 2 3", "3|NULL|250 4|NULL|NULL"},
    {"a cast fills up, and what it makes is the value", "INSERT Customers (Id, Name) VALUES (1, CAST('ab' AS char(4)))",
     "Customers 1 1 0", "1|'ab  '|NULL|NULL"},
    {"a cast to a type of the database's own is to the column's",
     "INSERT Customers (Id, Name, Code) VALUES (CAST(1 AS dbo.Key), CAST(N'Ada' AS [dbo].[Name]), CAST(NULL AS Code))",
     "Customers 1 1 0", "1|'Ada'|NULL|NULL"},
    {"a cast to a type with methods is not a string",
     "INSERT Customers (Id, Name) VALUES (1, CAST(N'/1/' AS [sys].[hierarchyid])), (2, CAST(0x58 AS geography))",
     "Customers 2 0 2", ""},
    {"expressions in parentheses",
     "INSERT Sales.Orders (Id, Price) VALUES (1, (2)), ((2), 3), (3, -(4)), (4, (SELECT 1, 2)), (5, f((1), 2) + 1), "
     "(6, 7)",
     "Sales.Orders 6 1 5", "6|NULL|700"},
    {"a sign before a sign", "INSERT Sales.Orders (Id, Price) VALUES (1, - -5), (2, -$5), (3, $-5)",
     "Sales.Orders 3 0 3", ""},
    {"the identity is left out", "INSERT Sales.Orders VALUES (NULL, .5, 'note')", "Sales.Orders 1 1 0", "1|NULL|50"},
    {"NULL and DEFAULT", "INSERT Customers (Id, Name, Code) VALUES (1, NULL, DEFAULT)", "Customers 1 1 0",
     "1|NULL|NULL|NULL"},
    {"what the server computes", "INSERT Customers (Id, Born) VALUES (1, getdate()), (2, NULL), (3, '2' + '0')",
     "Customers 3 1 2", "2|NULL|NULL|NULL"},
    {"rows of a query", "INSERT INTO Customers (Id) SELECT 1\nINSERT Customers (Id) VALUES (2)", "Customers 2 1 1",
     "2|NULL|NULL|NULL"},
    {"comments", "/* INSERT Customers VALUES (1) */ INSERT -- into\n Customers (Id) /* /* */ */ VALUES (1) -- end",
     "Customers 1 1 0", "1|NULL|NULL|NULL"},
    {"procedures are no rows",
     "CREATE PROCEDURE p AS INSERT Customers (Id) VALUES (9)\nGO\nINSERT Customers (Id) VALUES (1)", "Customers 1 1 0",
     "1|NULL|NULL|NULL"},
    {"the order of dates", "SET DATEFORMAT dmy\nINSERT Customers (Id, Born) VALUES (1, '7/4/1996')", "Customers 1 1 0",
     "1|NULL|NULL|'1996-04-07'"},
    {"other orders of dates",
     "SET DATEFORMAT ymd\nINSERT Customers (Id, Born) VALUES (1, '96/7/4')\nSET DATEFORMAT mdy\nINSERT Customers (Id, "
     "Born) VALUES (2, '7/4/1996')\nSET DATEFORMAT xyz\nINSERT Customers (Id, Born) VALUES (3, '7/4/1996')",
     "Customers 3 3 0", "1|NULL|NULL|'1996-07-04' 2|NULL|NULL|'1996-07-04' 3|NULL|NULL|'1996-07-04'"},
    {"views, functions and triggers are no rows either",
     "CREATE OR ALTER VIEW v AS SELECT 1 AS A\nINSERT Customers (Id) VALUES (7)\ngo \nALTER FUNCTION f() RETURNS int "
     "AS "
     "BEGIN\nINSERT Customers (Id) VALUES (8)\nEND\nGO;\r\nINSERT Customers (Id) VALUES (1)\nGO\nCREATE TRIGGER t ON "
     "Customers AFTER INSERT AS\nINSERT Customers (Id) VALUES (9)",
     "Customers 1 1 0", "1|NULL|NULL|NULL"},
    {"names with quotes within",
     "INSERT [Cust\"omers] (Id) VALUES (1)\nINSERT [Cust]]omers] (Id) VALUES (2)\nINSERT "
     "\"Cust\"\"omers\" (Id) VALUES (3)\nINSERT Customers (Id) VALUES (4)",
     " 3 0 3; Customers 1 1 0", "4|NULL|NULL|NULL"},
    {"bytes, variables and N in lower case", "INSERT Customers (Id, Name) VALUES (0x01, n'A'), (2, @name), (3, n'B')",
     "Customers 3 1 2", "3|'B'|NULL|NULL"},
    {"too few and too many values", "INSERT Customers (Id, Name) VALUES (1), (2, 'B'), (3, 'C', 'x')",
     "Customers 3 1 2", "2|'B'|NULL|NULL"},
    {"a column that is not there", "INSERT Customers (Id, Nam) VALUES (1, 'A')", "Customers 1 0 1", ""},
    {"a script that ends in a row", "INSERT Customers (Id, Name) VALUES (1, 'A'), (2, 'B", "Customers 2 1 1",
     "1|'A'|NULL|NULL"},
    {"no rows at all", "PRINT 'INSERT Customers VALUES (1)'", "", ""},
};

TEST_F(ClientLoadInsert, Scripts)
{
    for (const script_case &c : script_cases) {
        SCOPED_TRACE(c.name);
        std::remove(path("db").c_str());
        create();
        EXPECT_EQ(load({write("rows.sql", c.script)}), c.report);
        ASSERT_OK(ctx);
        const bool of_orders = std::string(c.report).rfind("Sales", 0) == 0;
        EXPECT_EQ(query(of_orders ? "SELECT Id, quote(Customer), Price FROM \"Sales.Orders\" ORDER BY Id"
                                  : "SELECT Id, quote(Name), quote(Code), quote(Born) FROM Customers ORDER BY Id"),
                  c.rows);
    }
}

TEST_F(ClientLoadInsert, ARefusedStatementIsKeptWithoutTheOneBeforeIt)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("rows.sql", "INSERT Customers (Id, Name, Code) VALUES (1, 'A', 'B')\n"
                                      "INSERT INTO Customers (Id) SELECT 2\n")},
                   options),
              "Customers 2 1 1");
    EXPECT_EQ(read("rejects/rows.sql"), "INSERT INTO Customers (Id) SELECT 2;\n");
}

// A query is refused as a whole, wherever it ends, and what follows it is read.
TEST_F(ClientLoadInsert, RefusedQueriesAreKeptWhole)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    const std::string queries[] = {
        "INSERT INTO Customers (Id)\n  SELECT 2 UNION ALL SELECT 3 -- three\n  FROM t WHERE a = 'x;y'",
        "INSERT Customers (Id) SELECT CASE WHEN a = 1 THEN 2 END FROM (SELECT 1 a) t",
        "INSERT INTO Customers (Id) EXEC dbo.p @a = 1, @b = 'SET'",
        "INSERT Customers DEFAULT VALUES",
        "INSERT Customers (Id) (SELECT 5)",
    };
    std::string script, kept;
    for (const std::string &query : queries) {
        script += query + (script.empty() ? ";\n" : "\n") + "INSERT Customers (Id) VALUES (" +
                  std::to_string(script.size()) + ")\n";
        kept += query + ";\n";
    }
    EXPECT_EQ(load({write("rows.sql", script + "INSERT Customers (Id) SELECT 9 SELECT 8\nGO\n")}, options),
              "Customers 11 5 6");
    EXPECT_EQ(read("rejects/rows.sql"), kept + "INSERT Customers (Id) SELECT 9;\n");
}

// Wherever a script is cut into pieces while it is read, its strings stay whole.
TEST_F(ClientLoadInsert, StringsThatLookLikeTheEndsOfRows)
{
    std::string script = "INSERT Sales.Orders (Id, Note) VALUES\n";
    for (int n = 1; n <= 30'000; n++)
        script += (n > 1 ? ",\n(" : "(") + std::to_string(n) + ", N'), (x'') ; GO'" + ")";
    EXPECT_EQ(load({write("rows.sql", script)}), "Sales.Orders 30000 30000 0");
    EXPECT_EQ(query("SELECT count(*) FROM \"Sales.Orders\" WHERE Note = '), (x'') ; GO'"), "30000");
    std::remove(path("db").c_str());
    create();
    EXPECT_EQ(load({write("rows.sql", script.substr(0, script.size() - 6))}), "Sales.Orders 30000 29999 1");
    EXPECT_NE(shown_remarks.find("row 30000: cut-row"), std::string::npos) << shown_remarks;
}

// What a script says at one place holds on after it, and rows of an earlier load are still looked at in the end.
TEST_F(ClientLoadInsert, AScriptGoesOnWhereItWas)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.batch = 1;
    options.max_rejects = 1;
    options.rejects = rejects.c_str();
    write("rows.sql", "SET DATEFORMAT dmy\nINSERT Sales.Orders (Id, Customer) VALUES (5, 1), (6, 9)\n"
                      "INSERT Customers (Id, Born) VALUES (1, '2/1/1996'), (2, 'soon'), (3, 'now'), (4, '4/3/1996')\n");
    EXPECT_EQ(load({path("rows.sql")}, options), "");
    EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
    KT_context__err_reset(ctx);
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "1");
    options.max_rejects = 0;
    EXPECT_EQ(load({path("rows.sql")}, options), "Sales.Orders 2 1 1; Customers 4 2 2");
    EXPECT_EQ(query("SELECT Id, Born FROM Customers"), "1|1996-01-02 4|1996-03-04");
    EXPECT_EQ(query("SELECT Id FROM \"Sales.Orders\""), "5");
    EXPECT_EQ(read("rejects/rows.sql"), "INSERT Customers (Id, Born) VALUES(2, 'soon');\n"
                                        "INSERT Customers (Id, Born) VALUES(3, 'now');\n"
                                        "INSERT Sales.Orders (Id, Customer) VALUES(6, 9);\n");
    EXPECT_EQ(load({path("rows.sql")}, options), "Sales.Orders 2 1 1; Customers 4 2 2"); // loaded before
    EXPECT_EQ(query("SELECT count(*) FROM Customers"), "2");
}

TEST_F(ClientLoadInsert, RefusedRowsAreStatementsAgain)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(load({write("rows.sql", "INSERT Customers (Id, Born) VALUES (1, '1996-07-04'),\n (2, 'soon')\n"
                                      "INSERT Sales.Orders (Id, Customer) VALUES (5, 1), (6, 9)\n")},
                   options),
              "Customers 2 1 1; Sales.Orders 2 1 1");
    EXPECT_EQ(read("rejects/rows.sql"), "INSERT Customers (Id, Born) VALUES(2, 'soon');\n"
                                        "INSERT Sales.Orders (Id, Customer) VALUES(6, 9);\n");
    EXPECT_NE(read("rejects/rows.sql.jsonl").find("\"row\":2,\"line\":2,"), std::string::npos);
    EXPECT_EQ(query("PRAGMA foreign_key_check"), "");
}

} // namespace
