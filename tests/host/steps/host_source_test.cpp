// Which reader a source goes to.
#include "host_test.hpp"

class HostSourceTest : public HostTest {};

TEST_F(HostSourceTest, TheBytesSayWhatTheyAre)
{
    using namespace std::string_view_literals;
    const struct {
        const char *name;
        std::string_view bytes;
        int32_t source;
    } cases[] = {
        {"an object", "{\"tables\":[]}", TOV_HOST_SOURCE_JSON},
        {"a list of tables", " \r\n[ {\"id\":1}]", TOV_HOST_SOURCE_JSON},
        {"an empty list", "[]", TOV_HOST_SOURCE_JSON},
        {"a list that was cut off", "[", TOV_HOST_SOURCE_JSON},
        {"a header of sqlcmd", "document\n--------\n{}", TOV_HOST_SOURCE_JSON},
        {"a mark", "\xEF\xBB\xBF{}", TOV_HOST_SOURCE_JSON},
        {"UTF-16LE with a mark", "\xFF\xFE{\0}\0"sv, TOV_HOST_SOURCE_JSON},
        {"UTF-16LE without one", "{\0\"\0"sv, TOV_HOST_SOURCE_JSON},
        {"UTF-16BE with a mark", "\xFE\xFF\0{\0}"sv, TOV_HOST_SOURCE_JSON},
        {"a ZIP file", "PK\x03\x04rest", TOV_HOST_SOURCE_PACKAGE},
        {"an empty ZIP file", "PK\x05\x06", TOV_HOST_SOURCE_PACKAGE},
        {"a script", "CREATE TABLE T (A int)", TOV_HOST_SOURCE_SCRIPT},
        {"a script that begins with a name", "[dbo].[MakeTables]", TOV_HOST_SOURCE_SCRIPT},
        {"a script that begins with a comment", "------- {\nGO", TOV_HOST_SOURCE_SCRIPT},
        {"a script that begins with the letters of ZIP", "PK", TOV_HOST_SOURCE_SCRIPT},
        {"nothing", "", TOV_HOST_SOURCE_SCRIPT},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(tov_host__recognise(c.bytes.data(), c.bytes.size()), c.source);
    }
}

TEST_F(HostSourceTest, AnExportIsTheOnlyFile)
{
    const std::string json = an_export(a_table(7, "T", a_col(1, "A", "int")));
    const tov_host_file files[] = {{"a.json", json.data(), json.size()}, {"b.sql", "", 0}};
    tov_host__import_files(ctx, files, 1, nullptr, &schema, &findings);
    ASSERT_OK(ctx);
    EXPECT_TRUE(has(R"("name":"T")"));
    forget();
    tov_host__import_files(ctx, files, 2, nullptr, &schema, &findings);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "a.json is a JSON document: only scripts can be read together");
    reset();
    tov_host__import_files(ctx, files, 0, nullptr, &schema, &findings);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "there is no file to import");
    reset();
}

TEST_F(HostSourceTest, VariablesOfScriptsAreGivenByName)
{
    const char *const defines[] = {"Name=Customers=2", "{gone}"};
    tov_host_options options{};
    options.defines = {defines, 2};
    import_file("CREATE TABLE {gone}[$(Name)] (A int)", &options);
    ASSERT_OK(ctx);
    EXPECT_TRUE(has(R"("name":"Customers=2")")) << document();
}

TEST_F(HostSourceTest, OneExportIsReadAtATimeWhateverTheCallerSays)
{
    const tov_host_file files[] = {{"a.json", "{}", 2}, {nullptr, "{}", 2}};
    tov_host_options options{};
    options.source = TOV_HOST_SOURCE_JSON;
    tov_host__import_files(ctx, files, 2, &options, &schema, &findings);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "2 files: only scripts can be read together");
    reset();
}

TEST_F(HostSourceTest, TheCallerCanSayWhatItIs)
{
    tov_host_options options{};
    options.source = TOV_HOST_SOURCE_JSON;
    import_file("CREATE TABLE T (A int)", &options);
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    reset();
    options.source = 99;
    import_file("{}", &options);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "there is no reader for sources of kind 99");
    reset();
}
