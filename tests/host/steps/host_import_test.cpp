// The import as a whole.
#include "host_test.hpp"

#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sqlite3.h>

class HostImportTest : public HostTest {};

static const std::string one_table = a_table(7, "T", a_col(1, "A", "int", R"("is_identity":true)"), a_pk("PK", "A"));

TEST_F(HostImportTest, SettingsOfTheSchema)
{
    import_tables(one_table);
    EXPECT_TRUE(has(R"("compat_level":1)")) << document();
    EXPECT_TRUE(has(R"("backend":{"name":"SQL Server","api":"catalogue export","indistinct_unique_nulls":true})"))
        << document();
    EXPECT_EQ(findings, nullptr);
}

TEST_F(HostImportTest, TheTransactionIdIsTheCallers)
{
    tov_host_options options{};
    options.txid = INT64_C(9007199254740993);
    import_file(an_export(one_table), &options);
    EXPECT_TRUE(has(R"("txid":9007199254740993)")) << document();
}

TEST_F(HostImportTest, NotNullIsRecorded)
{
    import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "int", R"("is_nullable":true)")));
    EXPECT_EQ(defin("7", "1"), R"("A" int NOT NULL)");
    EXPECT_EQ(defin("7", "2"), R"("B" int)");
}

TEST_F(HostImportTest, RulesAreLeftOut)
{
    import_tables(a_table(7, "T", a_col(1, "A", "int", R"("rule":"CREATE RULE r AS @x > 0")")));
    EXPECT_EQ(lines(), "rule-left-out: dbo.T.A: left out: rules bound to a column are not carried over: CREATE RULE r "
                       "AS @x > 0");
}

TEST_F(HostImportTest, ATableWithoutPreparedColumnsIsLeftOut)
{
    import_tables(a_table(7, "T", a_col(1, "A", "sql_variant")) + ',' + a_table(8, "U", ""));
    EXPECT_EQ(codes(), "type-unsupported dbo.T.A\ntable-without-columns dbo.T\ntable-without-columns dbo.U");
    EXPECT_FALSE(has(R"("7":)") || has(R"("8":)")) << document();
}

TEST_F(HostImportTest, SplitTextsAreReported)
{
    std::string file = an_export(one_table);
    file.insert(file.find("dbo") + 1, "\r\n");
    import_file(file);
    EXPECT_OK(ctx);
    EXPECT_EQ(codes(), "text-split");
    EXPECT_TRUE(has(R"("name":"T")"));
}

TEST_F(HostImportTest, WhatIsNoJsonIsRefusedWithItsPlace)
{
    const struct {
        const char *name;
        std::string file;
        const char *part;
    } cases[] = {
        {"a truncated document", an_export(one_table).substr(0, 100), "line 1"},
        {"a repeated key", "\n{\"tables\":[],\n\"tables\":[]}", "line 3"},
        {"text at the end", "{\"tables\":[]} x", "line 1"},
        {"a list that is not closed", "[", "line 1"},
        {"broken UTF-8", "{\"tables\":[\"\xFF\"]}", "line 1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_file(c.file);
        EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
        EXPECT_NE(std::string(KT_context__err_description(ctx)).find(c.part), std::string::npos)
            << KT_context__err_description(ctx);
        EXPECT_EQ(schema, nullptr);
        reset();
    }
}

TEST_F(HostImportTest, ADocumentThatAToolCutSaysHowToKeepItWhole)
{
    const std::string whole = an_export(one_table);
    for (const std::string &file :
         {whole.substr(0, 100), "document\n-----\n" + whole.substr(0, 120) + "\n\n(1 rows affected)\n"}) {
        import_file(file);
        EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
        const std::string message = KT_context__err_description(ctx);
        EXPECT_NE(message.find("the document was cut off after "), std::string::npos) << message;
        EXPECT_NE(message.find("sqlcmd needs -y 0"), std::string::npos) << message;
        reset();
    }
    import_file(whole + "x");
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    EXPECT_EQ(std::string(KT_context__err_description(ctx)).find("cut off"), std::string::npos);
    reset();
}

// No byte of a file, changed or missing, may lead to anything but a schema or a refusal.
TEST_F(HostImportTest, DamagedFilesAreRefusedOrRead)
{
    const std::string file =
        an_export(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "decimal"),
                          a_pk("PK", "A B") + R"x(,"checks":[{"name":"C","definition":"([A]>(0))"}])x"));
    for (size_t at = 0; at < file.size(); at++) {
        for (const char other : {'"', '{', '}', '[', ']', '0', ',', '\\', '\n', '\0', '\xFF'}) {
            std::string damaged = file;
            damaged[at] = other;
            import_file(damaged);
            EXPECT_EQ(KT_context__has_err(ctx) != 0, schema == nullptr);
            reset();
        }
        import_file(file.substr(0, at));
        EXPECT_TRUE(KT_context__has_err(ctx)) << at;
        reset();
    }
}

// A table with defaults that are tried in SQLite and others, and checks that are compiled there and others.
static std::string an_export_of_all_kinds()
{
    return an_export(a_table(
        7, "T",
        a_col(1, "A", "int", R"("is_identity":true)") + ',' +
            a_col(2, "B", "int", R"x("is_nullable":true,"default":{"definition":"((1))"})x") + ',' +
            a_col(3, "C", "money", R"x("default":{"definition":"((1.23456))"})x") + ',' +
            a_col(5, "E", "float", R"x("default":{"definition":"((1.5))"})x") + ',' +
            a_col(4, "D", "datetime", R"x("default":{"definition":"(getdate())"})x"),
        a_pk("PK", "A") + R"(,"uniques":[)" + a_unique("UQ", "B") + R"(],"checks":[)" +
            R"x({"name":"CK1","definition":"([A]>(0))"},{"name":"CK2","definition":"([A]>f())"}],"fks":[)x" +
            R"({"name":"FK","id":5,"ref_table_id":7,"ref_schema":"dbo","ref_table":"T","on_delete":"NO_ACTION",)" +
            R"("on_update":"NO_ACTION","columns":[{"column":"B","ref_column":"A"}]}])"));
}

TEST_F(HostImportTest, EveryAllocationMayFail)
{
    const std::string file = an_export_of_all_kinds();
    int survived = 0;
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        import_file(file);
        const bool is_imported = !KT_context__has_err(ctx);
        EXPECT_EQ(is_imported, schema != nullptr);
        EXPECT_EQ(is_imported, findings != nullptr);
        forget();
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired()) {
            EXPECT_TRUE(is_imported);
            break;
        }
        survived += is_imported;
        if (!is_imported) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
    }
    EXPECT_EQ(survived, 1); // what a trial's rollback wanted is not missed
}

// What SQLite refuses is left out of the schema and reported; that SQLite cannot work is an error.
TEST_F(HostImportTest, EveryCallOfSqliteMayFail)
{
    const std::string file = an_export_of_all_kinds();
    kt_counting_sqlite sqlite;
    std::string whole;
    const auto import_it = [&] { import_file(file); };
    const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
        SCOPED_TRACE(std::to_string(static_cast<int>(entry)) + ", call " + std::to_string(turn) + ", code " +
                     std::to_string(code));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        EXPECT_EQ(KT_context__has_err(ctx) != 0, schema == nullptr);
        if (entry == kt_sqlite_entry::none) {
            whole = codes();
        } else if (KT_context__has_err(ctx)) {
            EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code));
            EXPECT_NE(std::string(KT_context__err_description(ctx)).find(sqlite3_errstr(code)), std::string::npos);
        } else if (codes() != whole) {
            EXPECT_EQ(entry, kt_sqlite_entry::changes); // a default whose trial changed no row is left out
        }
        reset();
    };
    const int failed_calls = kt_sweep_sqlite(sqlite, import_it, judge);
    EXPECT_GT(failed_calls, 6 * 10);
    RecordProperty("failed calls", failed_calls);
}

static std::string read_file(const std::string &path)
{
    std::ifstream file(std::string(TOV_SOURCE_DIR "/") + path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(HostImportTest, TheSampleCatalogue)
{
    import_file(read_file("examples/shop.json"));
    ASSERT_OK(ctx);
    EXPECT_EQ(codes(), "column-computed dbo.Products.Margin\n"
                       "type-unsupported dbo.Warehouses.Notes\n"
                       "column-computed sales.OrderLines.LineTotal\n"
                       "default-clock dbo.ProductPrices.SetAt\n"
                       "rowversion-as-bytes dbo.Products.Changed\n"
                       "type-as-text sales.Shipments.LastSeen\n"
                       "unique-nullable dbo.Customers.Email\n"
                       "pk-as-unique sales.Shipments\n"
                       "check-left-out dbo.Products.Sku\n"
                       "comparison-approximate dbo.Categories.Name\n"
                       "comparison-approximate dbo.Countries.Name\n"
                       "comparison-approximate dbo.Customers.CustomerNo\n"
                       "comparison-approximate dbo.Customers.Email\n"
                       "comparison-approximate dbo.Customers.Kind\n"
                       "comparison-approximate dbo.Products.Sku\n"
                       "comparison-approximate dbo.Warehouses.Name\n"
                       "comparison-approximate sales.Orders.OrderNo\n"
                       "comparison-approximate sales.Orders.Status\n"
                       "comparison-approximate sales.ShipmentLines.ShipmentNo\n"
                       "comparison-approximate sales.Shipments.ShipmentNo");
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    EXPECT_EQ(count, 12u);
}

// Every code is in use, documented, and of a severity that the documentation says; there are no others.
TEST_F(HostImportTest, CodesAreDocumented)
{
    const std::regex code_in_source(R"re([{\s("]"([a-z]+(?:-[a-z]+)+)")re");
    const std::regex code_in_table(R"re(\n\| `([a-z-]+)` \|)re");
    const auto find_all = [](const std::string &text, const std::regex &pattern) {
        std::set<std::string> found;
        for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
            found.insert((*match)[1]);
        return found;
    };
    std::string sources;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(TOV_SOURCE_DIR "/src/host")) {
        if (entry.path().extension() == ".cpp")
            sources += read_file(std::filesystem::relative(entry.path(), TOV_SOURCE_DIR).string());
    }
    std::set<std::string> codes_in_use = find_all(sources, code_in_source);
    codes_in_use.erase("sqlserver-catalogue");
    const std::string page = read_file("docs/findings.md");
    EXPECT_EQ(find_all(page, code_in_table), codes_in_use);
    std::map<std::string, std::string> documented, known;
    const std::regex severity_in_table(R"re(\n\| (error|warning|note|info) \| [^|]* \| ([^|]*) \|)re");
    for (std::sregex_iterator match(page.begin(), page.end(), severity_in_table), end; match != end; ++match) {
        for (const std::string &code : find_all((*match)[2], std::regex("`([a-z-]+)`")))
            documented[code] = (*match)[1];
    }
    for (uint32_t n = 0; const tov_host_finding_kind *kind = tov_host__get_nth_finding_kind(n); n++)
        known[kind->code] = kind->severity;
    EXPECT_EQ(documented, known);
    EXPECT_EQ(known.size(), codes_in_use.size());
}
