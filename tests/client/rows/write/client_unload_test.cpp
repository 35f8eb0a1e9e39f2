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
