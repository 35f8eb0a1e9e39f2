// What a caller says about files, and tables that are out of the ordinary.
#include "load_test.hpp"

#include "rows/convert/client_utf8.hpp"
#include "rows/load/client_dialect.hpp"

using namespace std::string_literals;

namespace {

class ClientLoadOptions : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        create();
    }
    // A load of a file of Customers that fails as a whole; the words of the error.
    std::string refusal(const std::string &file, const tov_client_load_options &options)
    {
        EXPECT_EQ(load({file}, options), "");
        EXPECT_TRUE(KT_context__has_err(ctx));
        const std::string words = KT_context__err_description(ctx);
        KT_context__err_reset(ctx);
        return words;
    }
};

const struct {
    const char *typed;
    std::string meant;
} terminator_cases[] = {
    {"\\t", "\t"},    {"\\r\\n", "\r\n"}, {"\\0", std::string(1, '\0')},
    {"\\\\", "\\"},   {"\\x1F", "\x1F"},  {"\\x1f", "\x1F"},
    {"\\x1", "\\x1"}, {"\\xZZ", "\\xZZ"}, {"\\q", "\\q"},
    {"a\\", "a\\"},
};

TEST_F(ClientLoadOptions, TerminatorsAreTypedWithBackslashes)
{
    for (const auto &c : terminator_cases) {
        SCOPED_TRACE(c.typed);
        EXPECT_EQ(client_unescape_terminator(c.typed), c.meant);
    }
    client_dialect dialect;
    dialect.field_end = "\x1F\t";
    dialect.row_end = "\\";
    EXPECT_EQ(client_show_dialect(dialect), "bcp, fields end with \"\\x1F\\t\", rows with \"\\\\\"");
}

TEST_F(ClientLoadOptions, Encodings)
{
    const std::string text = "1|\u00C4\U0001F600|ABC|\r\n2||ABC|1815-12-10\r\nx|\u00C4|ABC|\r\n";
    std::string little;
    client_append_as_utf16(little, text);
    std::string big;
    for (size_t n = 0; n < little.size(); n += 2)
        big += {little[n + 1], little[n]};
    const struct {
        const char *name;
        const char *encoding;
        std::string content;
        std::string refused;
    } cases[] = {
        {"UTF-8", "UTF8", text, "x|\u00C4|ABC|\r\n"},
        {"UTF-16 whose mark says it", "", "\xFE\xFF"s + big, "\xFE\xFF"s + big.substr(big.size() - 20)},
        {"UTF-16 in the other order", "", "\xFF\xFE"s + little, "\xFF\xFE"s + little.substr(little.size() - 20)},
        {"UTF-16 that is said", "UTF-16BE", big, "\xFE\xFF"s + big.substr(big.size() - 20)},
        {"UTF-16 that is said and marked", "utf16", "\xFF\xFE"s + little,
         "\xFF\xFE"s + little.substr(little.size() - 20)},
        {"an encoding of iconv's", "GB18030",
         "1|"
         "\x81\x30\x87\x32\x94\x39\xFC\x36|ABC|\r\n2||ABC|1815-12-10\r\nx|a|ABC|\r\n",
         "x|a|ABC|\r\n"},
    };
    const std::string rejects = path("rejects");
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        std::remove(path("db").c_str());
        std::remove(path("rejects/Customers.dat").c_str());
        std::remove(path("rejects/Customers.dat.jsonl").c_str());
        create();
        tov_client_load_options options = {};
        options.encoding = c.encoding;
        options.rejects = rejects.c_str();
        options.field_end = "|";
        options.row_end = "\\r\\n";
        EXPECT_EQ(load({write("Customers.dat", c.content)}, options), "Customers 3 2 1") << shown_remarks;
        EXPECT_EQ(query("SELECT Id, quote(Name), quote(Born) FROM Customers ORDER BY Id"),
                  "1|'\u00C4\U0001F600'|NULL 2|NULL|'1815-12-10'");
        EXPECT_EQ(read("rejects/Customers.dat"), c.refused);
    }
}

// Characters of a file that is read in pieces stay whole wherever a piece ends.
TEST_F(ClientLoadOptions, CharactersAreNotCutBetweenPieces)
{
    for (size_t shift = 0; shift < 4; shift++) {
        SCOPED_TRACE(shift);
        std::remove(path("db").c_str());
        create();
        std::string note(shift, 'x');
        for (int n = 0; n < 100'000; n++)
            note += "\U0001F600";
        std::string utf16 = "\xFF\xFE";
        client_append_as_utf16(utf16, "Id,Customer,Note\r\n1,," + note + "\r\n");
        EXPECT_EQ(load({write("Orders.csv", utf16)}), "Sales.Orders 1 1 0") << shown_remarks;
        EXPECT_EQ(query("SELECT length(Note) FROM \"Sales.Orders\""), std::to_string(100'000 + shift));
        tov_client_load_options options = {};
        options.encoding = "GB18030";
        std::string bytes = "Id,Customer,Note\r\n2,,"s + std::string(shift, 'x');
        for (int n = 0; n < 100'000; n++)
            bytes += "\x94\x39\xFC\x36";
        EXPECT_EQ(load({write("Orders-2.csv", bytes + "\r\n")}, options), "Sales.Orders 1 1 0") << shown_remarks;
        EXPECT_EQ(query("SELECT length(Note) FROM \"Sales.Orders\" WHERE Id = 2"), std::to_string(100'000 + shift));
    }
}

TEST_F(ClientLoadOptions, WhatCannotBe)
{
    const std::string file = write("Customers.dat", "1\tAda\tABC\t\n");
    tov_client_load_options options = {};
    options.format = "xls";
    EXPECT_EQ(refusal(file, options), "no format is called \"xls\"");
    options = {};
    options.encoding = "windows-1252";
    EXPECT_EQ(refusal(write("Customers.dat", "1\t\x81\tABC\t\n"), options), "byte 2 is not of the file's encoding");
    options = {};
    EXPECT_EQ(refusal(path("nowhere"), options).substr(path("nowhere").size()), ": No such file or directory");
    EXPECT_NE(refusal(path(""), options), "");
    options.rejects = file.c_str();
    EXPECT_EQ(refusal(file, options), file + ": not a directory, and cannot be made");
    tov_client_loader *loader = nullptr;
    tov_client__open_loader(ctx, schema, path("no.db").c_str(), nullptr, &loader);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(14));
    EXPECT_EQ(loader, nullptr);
    // Nothing happens while the context holds an error.
    tov_client__load_file(ctx, loader, file.c_str());
    KT_varray *report = nullptr;
    KT_varray *remarks = nullptr;
    tov_client__finish_load(ctx, loader, &report, &remarks);
    EXPECT_EQ(report, nullptr);
    tov_client__load_parts(ctx, loader, "x", nullptr, nullptr);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(14));
    KT_context__err_reset(ctx);
    tov_client__free_loader(ctx, loader);
}

TEST_F(ClientLoadOptions, RejectsThatAreGoneEndALoadThatGoesOn)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    options.batch = 1;
    options.max_rejects = 1;
    const std::string file = write("Customers.dat", "1\tAda\tABC\t\nx\tBob\tABC\t\n3\tEve\tABC\t\ny\tMia\tABC\t\n");
    refusal(file, options);
    ASSERT_EQ(std::remove((rejects + "/Customers.dat").c_str()), 0);
    EXPECT_EQ(refusal(file, options),
              rejects + "/Customers.dat: the rejects of an interrupted load are not there any more");
}

TEST_F(ClientLoadOptions, ProgressIsToldOf)
{
    std::vector<std::pair<int64_t, int64_t>> steps;
    tov_client_load_options options = {};
    options.batch = 1;
    options.data = &steps;
    options.progress = [](void *data, const char *file, int64_t done, int64_t total) {
        EXPECT_STREQ(file, "Customers.dat");
        static_cast<std::vector<std::pair<int64_t, int64_t>> *>(data)->emplace_back(done, total);
    };
    EXPECT_EQ(load({write("Customers.dat", "1\tAda\tABC\t\n2\tBob\tABC\t\n")}, options), "Customers 2 2 0");
    const std::vector<std::pair<int64_t, int64_t>> expected = {{11, 22}, {22, 22}, {22, 22}};
    EXPECT_EQ(steps, expected);
}

TEST_F(ClientLoadOptions, LongValuesAreCutWhereTheyAreShown)
{
    const std::string rejects = path("rejects");
    tov_client_load_options options = {};
    options.rejects = rejects.c_str();
    std::string name = "x";
    for (int n = 0; n < 3000; n++)
        name += "\u00E4";
    EXPECT_EQ(load({write("Customers.dat", "1\t" + name + "\tABC\t\n2\tBob\tABC\t\n")}, options), "Customers 2 1 1");
    EXPECT_EQ(read("rejects/Customers.dat"), "1\t" + name + "\tABC\t\n");
    const std::string line = read("rejects/Customers.dat.jsonl");
    EXPECT_LT(line.size(), 3000u);
    EXPECT_NE(line.find("\"value\":\"x\u00E4\u00E4"), std::string::npos) << line;
    EXPECT_NE(line.find(",\"bytes\":6001,"), std::string::npos) << line;
    EXPECT_EQ(line.find("\xC3\""), std::string::npos) << line;
}

// Versions are the server's; rows that come without get the next ones.
TEST_F(ClientLoadOptions, VersionsOfRowsAreMadeUp)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T T","txid":0,"cols":{
        "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
        "2":{"name":"V","type":{"name":"blob","fixed_width":true,"width":8},"notnull":{}}},
        "server":{"schema":"dbo","name":"T T","cols":[{"name":"Id","id":"1","type":"int"},
        {"name":"V","id":"2","type":"timestamp","length":8}]}}}})json");
    create("v");
    tov_client_load_options options = {};
    options.tbl = "T T";
    options.format = "csv";
    options.header = 1;
    EXPECT_EQ(load({write("a.csv", "Id\n1\n2\n")}, options, "v"), "T T 2 2 0");
    EXPECT_EQ(load({write("b.csv", "Id,V\n3,00000000000007D5\n")}, options, "v"), "T T 1 1 0");
    EXPECT_EQ(load({write("c.csv", "Id\n4\n")}, options, "v"), "T T 1 1 0");
    EXPECT_EQ(query("SELECT Id, hex(V) FROM \"T T\"", "v"),
              "1|00000000000007D1 2|00000000000007D2 3|00000000000007D5 4|00000000000007D6");
}

// A table with a column named like SQLite's row number, and one without a key, are searched for rows without a parent.
TEST_F(ClientLoadOptions, RowsWithoutAParentAreFoundInAnyTable)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{
        "1":{"name":"P","txid":0,"cols":{"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}}}},
        "2":{"name":"Its","txid":0,"cols":{"1":{"name":"rowid","type":{"name":"sint32"}},
        "2":{"name":"_rowid_","type":{"name":"sint32"}}}}}})json");
    set_pk("1", "1");
    set_fk("2", "1", "1", "1", "NO ACTION");
    ASSERT_OK(ctx);
    create("r");
    tov_client_load_options options = {};
    options.tbl = "Its";
    options.field_end = "\\t";
    options.row_end = "\\n";
    EXPECT_EQ(load({write("rows.dat", "7\t1\n\t2\n9\t3\n")}, options, "r"), "Its 3 1 2");
    EXPECT_EQ(query("SELECT quote(\"rowid\"), _rowid_ FROM \"Its\"", "r"), "NULL|2");
}

} // namespace
