// Writing rows: what was loaded comes out as it was.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

using namespace std::string_literals;

namespace {

class ClientUnload : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
    std::string unload(tov_client_unload_options options = {})
    {
        KT_varray *report = nullptr;
        tov_client__unload(ctx, schema, path("db").c_str(), path("out").c_str(), &options, &report);
        uint32_t count = 0;
        std::string result;
        if (report)
            KT_varray__count(ctx, report, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *record = nullptr;
            const char *file = nullptr;
            int64_t rows = 0;
            KT_varray__get__vhash(ctx, report, n, &record);
            KT_vhash__get__sz(ctx, record, "file", &file);
            KT_vhash__get__int64(ctx, record, "rows", &rows);
            result += (n ? " " : "") + std::string(file) + ":" + std::to_string(rows);
        }
        KT_varray__free(ctx, report);
        return result;
    }
};

TEST_F(ClientUnload, AFileComesOutAsItWas)
{
    const std::string good = "1\tAda\tABC\t1815-12-10\n2\t\0\tB  \t\n3\t\t\t2000-01-01\n4\tA\nB\"\t\t\n"s;
    EXPECT_EQ(load({write("Customers.dat", good)}), "Customers 4 4 0");
    EXPECT_EQ(unload(), "Customers.dat:4 Sales.Orders.dat:0");
    EXPECT_OK(ctx);
    EXPECT_EQ(read("out/Customers.dat"), good);
    EXPECT_EQ(read("out/Sales.Orders.dat"), "");
}

TEST_F(ClientUnload, InUtf16WithOtherTerminators)
{
    std::string utf16 = "\xFF\xFE";
    client_append_as_utf16(utf16, "1|Ä😀|ABC|\r\n2||ABC|1815-12-10\r\n");
    EXPECT_EQ(load({write("Customers.csv", utf16)}), "Customers 2 2 0");
    tov_client_unload_options options = {};
    const char *tbl = "dbo.customers";
    options.encoding = "utf-16le";
    options.field_end = "|";
    options.row_end = "\\r\\n";
    options.tbls = &tbl;
    options.tbl_count = 1;
    EXPECT_EQ(unload(options), "Customers.dat:2");
    EXPECT_EQ(read("out/Customers.dat"), utf16);
}

TEST_F(ClientUnload, Decimals)
{
    load({write("Orders.dat", "1\t\t.50\t\t\n2\t\t12.30\t\tx\n3\t\t\t\t\0\n"s)});
    unload();
    EXPECT_EQ(read("out/Sales.Orders.dat"), "1\t\t.50\t\n2\t\t12.30\tx\n3\t\t\t\0\n"s);
    tov_client_unload_options options = {};
    options.format = "csv";
    EXPECT_EQ(unload(options), "Customers.csv:0 Sales.Orders.csv:3");
    EXPECT_EQ(read("out/Sales.Orders.csv"), "Id,Customer,Price,Note\r\n1,,0.50,\r\n2,,12.30,x\r\n3,,,\"\"\r\n");
}

// A file that was loaded comes out as it was: its terminators, its encoding, and whether zeros of a fraction are
// written.
TEST_F(ClientUnload, AsItWasLoaded)
{
    std::string utf16 = "\xFF\xFE";
    client_append_as_utf16(utf16, "1+|Ä+|ABC+|\r\n2+|+|ABC+|1815-12-10\r\n");
    EXPECT_EQ(load({write("Customers.csv", utf16)}), "Customers 2 2 0");
    EXPECT_EQ(unload(), "Customers.dat:2 Sales.Orders.dat:0");
    EXPECT_EQ(read("out/Customers.dat"), utf16);
    tov_client_unload_options options = {};
    options.encoding = "utf-8";
    options.field_end = ";";
    EXPECT_EQ(unload(options), "Customers.dat:2 Sales.Orders.dat:0");
    EXPECT_EQ(read("out/Customers.dat"), "1;Ä;ABC;\r\n2;;ABC;1815-12-10\r\n");
}

struct number_case {
    const char *file;
    const char *rows; // empty: as the file
};

// Floats, reals, money and datetimes of real files, and at the edges of their forms.
const number_case number_cases[] = {
    {"1\t0.99980003999200195\t0.99989998\t12.5000\t2010-12-29 00:00:00.000\n2\t1.0\t1.0\t.0000\t\n", ""},
    {"1\t5.0000000000000003E-2\t\t\t\n2\t0.02\t\t\t\n3\t8.90487809221892E-4\t\t\t\n4\t0.00069204152249135\t\t\t\n", ""},
    {"1\t22080.0\t\t\t\n2\t-657203.80000000005\t\t\t\n3\t0.0\t0.0\t\t\n4\t1.0E+20\t1.0E+10\t\t\n", ""},
    {"1\t1.7976931348623157E+308\t3.4028235E+38\t\t\n2\t4.9406564584124654E-324\t16777217.0\t\t\n",
     "1\t1.7976931348623157E+308\t3.4028235E+38\t\t\n2\t4.9406564584124654E-324\t16777216.0\t\t\n"},
    {"1\t0\t3\t28000\t2010-12-29 00:00:00\n2\t0.40000000000000002\t\t1.5000\t2010-12-29 00:00:00.123\n", ""},
    {"1\t.5\t1e-1\t1.5\t\n", "1\t0.5\t0.1\t1.5000\t\n"},
};

TEST_F(ClientUnload, Numbers)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{
        "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
        "2":{"name":"F","type":{"name":"real8"}},"3":{"name":"R","type":{"name":"real4"}},
        "4":{"name":"M","type":{"name":"money8"}},"5":{"name":"D","type":{"name":"datetime","precision":3}}},
        "server":{"schema":"dbo","name":"T","cols":[{"name":"Id","id":"1","type":"int"},
        {"name":"F","id":"2","type":"float","nullable":true},{"name":"R","id":"3","type":"real","nullable":true},
        {"name":"M","id":"4","type":"money","nullable":true},
        {"name":"D","id":"5","type":"datetime","nullable":true}]}}}})json");
    for (const number_case &c : number_cases) {
        SCOPED_TRACE(c.file);
        std::remove(path("db").c_str());
        create();
        const std::string report = load({write("T.dat", c.file)});
        EXPECT_EQ(report.substr(report.size() - 2), " 0") << report << shown_remarks;
        unload();
        EXPECT_EQ(read("out/T.dat"), *c.rows ? c.rows : c.file);
    }
}

TEST_F(ClientUnload, JsonLines)
{
    load({write("Customers.dat", "1\tA\"/\\\tABC\t1815-12-10\n2\t\0\t\t\n"s),
          write("Orders.dat", "7\t1\t.50\t\tÄ\nB\t\n8\t\t-12.30\t\t\n"s)});
    tov_client_unload_options options = {};
    options.format = "json";
    EXPECT_EQ(unload(options), "Customers.jsonl:2 Sales.Orders.jsonl:1");
    EXPECT_EQ(read("out/Customers.jsonl"), "{\"Id\":1,\"Name\":\"A\\\"\\/\\\\\",\"Code\":\"ABC\",\"Born\":"
                                           "\"1815-12-10\"}\n{\"Id\":2,\"Name\":\"\",\"Code\":null,\"Born\":null}\n");
}

TEST_F(ClientUnload, AScriptOfAllTables)
{
    load({write("Customers.dat", "1\tO'Hara\tABC\t1815-12-10\n2\t\0\t\t\n"s),
          write("Orders.dat", "7\t1\t.50\t\tÄ\n9\t\t\t\t\n"s)});
    tov_client_unload_options options = {};
    options.format = "insert";
    EXPECT_EQ(unload(options), "rows.sql:2 rows.sql:2");
    const std::string script =
        "\xEF\xBB\xBF"
        "INSERT [dbo].[Customers] ([Id], [Name], [Code], [Born]) VALUES (1, N'O''Hara', 'ABC', "
        "'1815-12-10')\n"
        "INSERT [dbo].[Customers] ([Id], [Name], [Code], [Born]) VALUES (2, N'', NULL, NULL)\nGO\n"
        "SET IDENTITY_INSERT [Sales].[Orders] ON\nGO\n"
        "INSERT [Sales].[Orders] ([Id], [Customer], [Price], [Note]) VALUES (7, 1, 0.50, N'Ä')\n"
        "INSERT [Sales].[Orders] ([Id], [Customer], [Price], [Note]) VALUES (9, NULL, NULL, NULL)\n"
        "GO\nSET IDENTITY_INSERT [Sales].[Orders] OFF\nGO\n";
    EXPECT_EQ(read("out/rows.sql"), script);
    const std::string before = query("SELECT * FROM Customers") + query("SELECT * FROM \"Sales.Orders\"");
    create("other");
    EXPECT_EQ(load({path("out/rows.sql")}, {}, "other"), "Customers 2 2 0; Sales.Orders 2 2 0");
    EXPECT_EQ(query("SELECT * FROM Customers", "other") + query("SELECT * FROM \"Sales.Orders\"", "other"), before);
}

TEST_F(ClientUnload, RowsThatReferToLaterOnesAreCheckedAfterThem)
{
    set_fk("1", "1", "2", "1", "NO ACTION");
    ASSERT_OK(ctx);
    tov_client_unload_options options = {};
    options.format = "insert";
    unload(options);
    ASSERT_OK(ctx);
    const std::string script = read("out/rows.sql");
    EXPECT_NE(script.find("ALTER TABLE [dbo].[Customers] NOCHECK CONSTRAINT ALL\nGO\n"), std::string::npos) << script;
    EXPECT_NE(script.find("ALTER TABLE [dbo].[Customers] WITH CHECK CHECK CONSTRAINT ALL\nGO\n"), std::string::npos);
}

TEST_F(ClientUnload, AQuery)
{
    load({write("Orders.dat", "7\t\t.50\t\tx\n9\t\t2.25\t\t\n")});
    tov_client_unload_options options = {};
    options.query = "SELECT Price, Price * 2 AS Twice, Note FROM \"Sales.Orders\" ORDER BY Id DESC";
    options.format = "csv";
    EXPECT_EQ(unload(options), "query.csv:2");
    EXPECT_EQ(read("out/query.csv"), "Price,Twice,Note\r\n2.25,450,\r\n0.50,100,x\r\n");
    const char *tbl = "Sales.Orders";
    options.tbls = &tbl;
    options.tbl_count = 1;
    options.format = "insert";
    options.query = "SELECT Id, Price FROM \"Sales.Orders\" WHERE Price > 100";
    EXPECT_EQ(unload(options), "query.sql:1");
    EXPECT_EQ(read("out/query.sql"), "\xEF\xBB\xBFSET IDENTITY_INSERT [Sales].[Orders] ON\nGO\nINSERT [Sales].[Orders] "
                                     "([Id], [Price]) VALUES (9, 2.25)\nGO\nSET IDENTITY_INSERT [Sales].[Orders] OFF\n"
                                     "GO\n");
    for (const char *query : {"DELETE FROM Customers", "", "SELECT nothing FROM Customers", "COMMIT"}) {
        options.query = query;
        unload(options);
        EXPECT_TRUE(KT_context__has_err(ctx)) << query;
        KT_context__err_reset(ctx);
    }
}

TEST_F(ClientUnload, ValuesThatCannotBeReadAgainAreCounted)
{
    ASSERT_EQ(query("INSERT INTO Customers (Id, Name) VALUES (1, 'A' || char(9) || 'B'), (2, 'A' || char(10) || 'B')"),
              "");
    KT_varray *report = nullptr;
    KT_vhash *record = nullptr;
    int64_t count = 0;
    tov_client__unload(ctx, schema, path("db").c_str(), path("out").c_str(), nullptr, &report);
    KT_varray__get__vhash(ctx, report, 0, &record);
    KT_vhash__get__int64(ctx, record, "unreadable", &count);
    EXPECT_OK(ctx);
    EXPECT_EQ(count, 1);
    KT_varray__free(ctx, report);
}

TEST_F(ClientUnload, OtherFormsAreRefused)
{
    tov_client_unload_options options = {};
    options.format = "native";
    unload(options);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "rows cannot be written as \"native\"");
    KT_context__err_reset(ctx);
    options.format = "bcp";
    options.encoding = "cp1252";
    unload(options);
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    KT_context__err_reset(ctx);
}

} // namespace
