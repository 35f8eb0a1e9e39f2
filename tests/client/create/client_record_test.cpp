// The record that a database keeps of its schema.
#include "failing_alloc.hpp"
#include "load_test.hpp"

namespace {

class ClientRecord : public LoadTest {
  protected:
    // The schema's JSON as the database has it recorded.
    std::string recorded(tov_client_create_options *options = nullptr)
    {
        tov_schema *read = nullptr;
        KT_string *json = nullptr;
        tov_client__read_record(ctx, path("db").c_str(), &read, options);
        if (!KT_context__has_err(ctx))
            tov_schema__to_json(ctx, read, &json);
        const std::string text = json ? take(ctx, json) : "";
        tov_schema__nullfree(ctx, &read);
        return text;
    }
    void create(const tov_client_create_options &options)
    {
        tov_client__create_database__with(ctx, schema, path("db").c_str(), &options);
    }
};

TEST_F(ClientRecord, IsTheSchemaAndWhatWasSaid)
{
    reset_schema_to(R"({"compat_level":1,"tbls":{"a":{"name":"T","cols":{"x":{"name":"X","type":{"name":"sint32"},)"
                    R"("defval":{"expr":"'it''s'"}}}}}})");
    tov_client_create_options options = {1,
                                         nullptr,
                                         nullptr,
                                         TOV_CLIENT_RULES_BASIC,
                                         TOV_CLIENT_INDEXES_NONE,
                                         TOV_CLIENT_COLLATIONS_BUILTIN,
                                         0,
                                         TOV_CLIENT_CHECKS_CONSTRAINTS};
    create(options);
    ASSERT_OK(ctx);
    tov_client_create_options read = {};
    EXPECT_EQ(recorded(&read), document());
    EXPECT_OK(ctx);
    EXPECT_EQ(read.views, 1);
    EXPECT_EQ(read.rules, TOV_CLIENT_RULES_BASIC);
    EXPECT_EQ(read.indexes, TOV_CLIENT_INDEXES_NONE);
}

// The script has the record in pieces, whatever members the document has.
TEST_F(ClientRecord, OfAScriptIsTheSame)
{
    const std::string tbls =
        R"("tbls":{"a":{"name":"T","note":"it's","cols":{"x":{"name":"X","type":{"name":"sint32"}}}},)"
        R"("b":{"name":"U","cols":{"x":{"name":"X","type":{"name":"sint32"},"notnull":{}}}}})";
    for (const std::string more :
         {"", R"(,"it's \"more\"":{},"o'":"'\n\u00e9","n":-7,"r":1.5,"t":true,"z":null)", R"(,"list":[1,{"a":"'"}])"}) {
        SCOPED_TRACE(more);
        KT_string *script = nullptr;
        reset_schema_to((R"({"compat_level":1,)" + tbls + more + "}").c_str());
        tov_client__write_script(ctx, schema, &script);
        ASSERT_OK(ctx);
        ASSERT_EQ(sqlite3_open(path("db").c_str(), &connection), SQLITE_OK);
        EXPECT_EQ(run(connection, take(ctx, script)), "");
        close();
        EXPECT_EQ(recorded(), document());
        EXPECT_OK(ctx);
        std::remove(path("db").c_str());
    }
}

// A table of the schema that has the record's name makes the record take another.
TEST_F(ClientRecord, KeepsOutOfTheWayOfTables)
{
    reset_schema_to(R"({"compat_level":1,"tbls":{"a":{"name":"tov_schema","cols":{
        "1":{"name":"version","type":{"name":"sint32"}},"2":{"name":"document","type":{"name":"sint32"}},
        "3":{"name":"rules","type":{"name":"sint32"}},"4":{"name":"indexes","type":{"name":"sint32"}},
        "5":{"name":"views","type":{"name":"sint32"}}}}}})");
    create({});
    ASSERT_OK(ctx);
    EXPECT_EQ(recorded(), document());
}

TEST_F(ClientRecord, CanBeLeftOut)
{
    tov_client_create_options options = {};
    options.no_record = 1;
    create(options);
    ASSERT_OK(ctx);
    EXPECT_EQ(recorded(), "");
    EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_NOT_FOUND);
    EXPECT_STREQ(KT_context__err_description(ctx), "the database has no record of its schema");
    KT_context__err_reset(ctx);
}

TEST_F(ClientRecord, AFileThatIsNoDatabaseIsRefused)
{
    tov_schema *read = nullptr;
    tov_client__read_record(ctx, path("absent").c_str(), &read, nullptr);
    EXPECT_GE(KT_context__err_code(ctx), KT_ERR_SQLITE(0));
    KT_context__err_reset(ctx);
    EXPECT_EQ(read, nullptr);
}

TEST_F(ClientRecord, SurvivesFailingAllocations)
{
    create({});
    ASSERT_OK(ctx);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        tov_schema *read = nullptr;
        tov_client__read_record(ctx, path("db").c_str(), &read, nullptr);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            tov_schema__nullfree(ctx, &read);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(read, nullptr);
    }
}

} // namespace
