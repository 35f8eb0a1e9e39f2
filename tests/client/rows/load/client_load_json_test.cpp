// JSON files: what FOR JSON gives, however a tool saved it, and an object a line.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"

namespace {

class ClientLoadJson : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
};

struct json_case {
    const char *name;
    std::string content;
    const char *report;
    const char *rows;
    const char *remark; // begins so; empty for none
};

const json_case json_cases[] = {
    {"an array", R"([{"Id":1,"Name":"Ada","Code":"ABC","Born":"1815-12-10"},{"Id":2,"Name":"Bob"}])", "Customers 2 2 0",
     "1|'Ada'|'ABC'|'1815-12-10' 2|'Bob'|NULL|NULL", ""},
    {"an object a line", "{\"Id\":1,\"Name\":\"Ada\"}\n{\"Name\":null,\"Id\":2}\r\n", "Customers 2 2 0",
     "1|'Ada'|NULL|NULL 2|NULL|NULL|NULL", ""},
    {"blanks between", " [ { \"Id\" : 1 , \"Name\" : \"\" } \n ,\n { \"id\" : 2 } ] \n", "Customers 2 2 0",
     "1|''|NULL|NULL 2|NULL|NULL|NULL", ""},
    {"a name for all rows", R"({"Customers":[{"Id":1},{"Id":2}]})", "Customers 2 2 0",
     "1|NULL|NULL|NULL 2|NULL|NULL|NULL", ""},
    {"escapes", R"([{"Id":1,"Name":"\"\\\/\n\u00c4\ud83d\ude00"}])", "Customers 1 1 0", "1|'\"\\/\nÄ😀'|NULL|NULL", ""},
    {"nothing at all", "[]", "Customers 0 0 0", "", ""},
    {"a date with a time of zero", R"([{"Id":1,"Born":"2013-07-01T00:00:00"}])", "Customers 1 1 0",
     "1|NULL|NULL|'2013-07-01'", ""},
    {"half a surrogate pair", R"([{"Id":1,"Name":"\ud83d"},{"Id":2}])", "Customers 2 1 1", "2|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Name: "},
    {"a column that is not there", R"([{"Id":1,"Nick":"A"},{"Id":2}])", "Customers 2 1 1", "2|NULL|NULL|NULL",
     "Customers.json:1: row 1: unknown-column: the table has no column of this name: Nick"},
    {"an object in an object", R"([{"Id":1,"Name":{"first":"A","last":"}"}},{"Id":2,"Name":["x"]},{"Id":3}])",
     "Customers 3 1 2", "3|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Name: : nested-value: an object or array is not a value of a column"},
    {"a member twice", R"([{"Id":1,"Id":2},{"Id":3}])", "Customers 2 1 1", "3|NULL|NULL|NULL",
     "Customers.json:1: row 1: bad-row: the row cannot be read: Id"},
    {"a missing member of a column that needs a value", R"([{"Name":"A"},{"Id":2}])", "Customers 2 1 1",
     "2|NULL|NULL|NULL", "Customers.json:1: row 1, column Id: : no-value: "},
    {"a number for a date", R"([{"Id":1,"Born":20130701},{"Id":2}])", "Customers 2 1 1", "2|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Born: 20130701: wrong-form: "},
    {"no comma", R"([{"Id":1 "Name":"A"},{"Id":2}])", "Customers 2 1 1", "2|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Id: 1: bad-row: "},
    {"words that are none of JSON's", "[{\"Id\":NaN},\n{\"Id\":01},\n{\"Id\":+1},{\"Id\":.5},{\"Id\":4}]",
     "Customers 5 1 4", "4|NULL|NULL|NULL", "Customers.json:1: row 1, column Id: "},
    {"something between the rows", "[{\"Id\":1},\nhello\n,{\"Id\":2}]", "Customers 3 2 1",
     "1|NULL|NULL|NULL 2|NULL|NULL|NULL", "Customers.json:2: row 2: bad-row: "},
    {"a cut last row", "[{\"Id\":1},{\"Id\":2,\"Na", "Customers 2 1 1", "1|NULL|NULL|NULL",
     "Customers.json:1: row 2: cut-row: the file ends inside the row"},
    {"escapes that are none",
     R"([{"Id":1,"Name":"\x"},{"Id":2,"Name":"\u12g4"},{"Id":3,"Name":"\ud83d\u0041"},)"
     R"({"Id":4,"Name":"\udE00"},{"Id":5,"Name":"\u12"},{"Id":6,"Name":"\b\f\r\t"}])",
     "Customers 6 1 5", "6|'\b\f\r\t'|NULL|NULL", "Customers.json:1: row 1, column Name: "},
    {"numbers that end too soon", R"([{"Id":1.},{"Id":1e},{"Id":1e+},{"Id":-},{"Id":1.0},{"Id":2e0}])",
     "Customers 6 2 4", "1|NULL|NULL|NULL 2|NULL|NULL|NULL", "Customers.json:1: row 1, column Id: "},
    {"no colon, and no name", R"([{"Id" 1},{1:2},{"Id":3}])", "Customers 3 1 2", "3|NULL|NULL|NULL",
     "Customers.json:1: row 1: bad-row: "},
    {"an empty object", R"([{},{"Id":1}])", "Customers 2 1 1", "1|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Id: : no-value: "},
    {"a line end inside a string", "{\"Id\":1,\"Name\":\"A\nB\"}\n{\"Id\":2}\n", "Customers 2 1 1", "2|NULL|NULL|NULL",
     "Customers.json:1: row 1, column Name: "},
};

TEST_F(ClientLoadJson, Files)
{
    for (const json_case &c : json_cases) {
        SCOPED_TRACE(c.name);
        std::remove(path("db").c_str());
        create();
        tov_client_load_options options = {};
        options.format = "json";
        EXPECT_EQ(load({write("Customers.json", c.content)}, options), c.report);
        ASSERT_OK(ctx);
        EXPECT_EQ(query("SELECT Id, quote(Name), quote(Code), quote(Born) FROM Customers ORDER BY Id"), c.rows);
        EXPECT_EQ(shown_remarks.rfind(c.remark, 0), 0u) << shown_remarks;
        EXPECT_EQ(shown_remarks.empty(), !*c.remark) << shown_remarks;
    }
}

TEST_F(ClientLoadJson, IsFoundOut)
{
    EXPECT_EQ(load({write("Customers.dat", "[{\"Id\":1}]")}), "Customers 1 1 0");
}

TEST_F(ClientLoadJson, NumbersLoseNoDigit)
{
    EXPECT_EQ(load({write("Orders.json", R"([{"Id":8,"Price":1234567.89,"Total":2},{"Price":1e3},)"
                                         R"({"Price":0.001}])")}),
              "Sales.Orders 3 2 1");
    EXPECT_EQ(query("SELECT Id, Price FROM \"Sales.Orders\" ORDER BY Id"), "8|123456789 9|100000");
    EXPECT_NE(shown_remarks.find("column Price: 0.001: too-precise"), std::string::npos) << shown_remarks;
}

// The server hands JSON out in lines of 2,033 characters, and tools save them as lines: wherever they end is no part of
// the text, be it inside a string, an escape or a number.
TEST_F(ClientLoadJson, LinesThatTheServerCutAreJoined)
{
    std::string json = "[";
    for (int n = 1; n <= 400; n++)
        json += std::string(n > 1 ? "," : "") + "{\"Id\":" + std::to_string(100000 + n) + ",\"Name\":\"\\u00c4\\\\ä😀" +
                std::to_string(n) + "\"}";
    json += "]";
    for (const char *line_end : {"\n", "\r\n"}) {
        std::string utf16;
        std::string cut = "\xFF\xFE";
        std::string ends;
        client_append_as_utf16(utf16, json);
        client_append_as_utf16(ends, line_end);
        for (size_t at = 0; at < utf16.size(); at += 2033 * 2)
            cut += utf16.substr(at, 2033 * 2) + ends;
        std::remove(path("db").c_str());
        create();
        tov_client_load_options options = {};
        options.batch = 7;
        EXPECT_EQ(load({write("Customers.json", cut)}, options), "Customers 400 400 0") << shown_remarks;
        EXPECT_EQ(query("SELECT count(*), min(Id), max(Id) FROM Customers WHERE Name = 'Ä\\ä😀' || (Id - 100000)"),
                  "400|100001|100400");
    }
}

TEST_F(ClientLoadJson, RejectsAreObjectsThatCanBeCorrected)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    EXPECT_EQ(
        load({write("Customers.json", "[{\"Id\":1},\n {\"Id\":\"two\"}, {\"Id\":3,\"Born\":\"soon\"}]")}, options),
        "Customers 3 1 2");
    EXPECT_EQ(read("rejects/Customers.json"), "{\"Id\":\"two\"}\n{\"Id\":3,\"Born\":\"soon\"}\n");
    write("rejects/Customers.json", "{\"Id\":2}\n{\"Id\":3,\"Born\":null}\n");
    EXPECT_EQ(load({path("rejects/Customers.json")}, options), "Customers 2 2 0");
}

TEST_F(ClientLoadJson, ALoadGoesOn)
{
    tov_client_load_options options = {};
    options.batch = 2;
    options.max_rejects = 1;
    write("Orders.json", R"([{"Id":1,"Customer":9},{"Id":2},{"Id":"x"},{"Id":"y"},{"Id":5}])");
    load({path("Orders.json")}, options);
    EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
    KT_context__err_reset(ctx);
    options.max_rejects = 0;
    EXPECT_EQ(load({path("Orders.json")}, options), "Sales.Orders 5 2 3");
    EXPECT_EQ(query("SELECT Id FROM \"Sales.Orders\""), "2 5");
    EXPECT_NE(shown_remarks.find("row 1, column Customer: 9: no-parent"), std::string::npos) << shown_remarks;
}

TEST_F(ClientLoadJson, BytesAreBase64)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{
        "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
        "2":{"name":"Bytes","type":{"name":"blob","fixed_width":false,"width":0}},
        "3":{"name":"Place","type":{"name":"blob","fixed_width":false,"width":0}},
        "6":{"name":"Big","type":{"name":"sint64"}},
        "4":{"name":"Guid","type":{"name":"guid"}},"5":{"name":"Flag","type":{"name":"uint1"}}},
        "server":{"schema":"dbo","name":"T","cols":[{"name":"Id","id":"1","type":"int"},
        {"name":"Bytes","id":"2","type":"varbinary","length":-1,"nullable":true},
        {"name":"Place","id":"3","type":"hierarchyid","length":892,"nullable":true},
        {"name":"Big","id":"6","type":"bigint","nullable":true},
        {"name":"Guid","id":"4","type":"uniqueidentifier","nullable":true},
        {"name":"Flag","id":"5","type":"bit","nullable":true}]}}}})json");
    tov_client__create_database(ctx, schema, path("t.db").c_str(), nullptr, nullptr);
    ASSERT_OK(ctx);
    EXPECT_EQ(load({write("T.json", R"([{"Id":1,"Bytes":"Chs=","Place":"WA==","Flag":true,"Big":9007199254740993,
        "Guid":"6F9619FF-8B86-D011-B42D-00C04FC964FF"},{"Id":2,"Bytes":"0x0A1B"},{"Id":3,"Place":"\/11\/"},
        {"Id":4,"Bytes":"","Flag":0}])")},
                   {}, "t.db"),
              "T 4 2 2")
        << shown_remarks;
    EXPECT_EQ(query("SELECT Id, quote(Bytes), quote(Place), quote(Guid), Flag, Big FROM T", "t.db"),
              "1|X'0A1B'|X'58'|X'FF19966F868B11D0B42D00C04FC964FF'|1|9007199254740993 4|X''|NULL|NULL|0|NULL");
}

} // namespace
