// The server's collations in definitions and indexes. What they do is tested with the extension.
#include "create/client_collations.hpp"

#include "client_test.hpp"
#include "failing_alloc.hpp"

namespace {

// A table T of a key Id and strings C (varchar) and N (nvarchar, may be NULL), with collations as the facts say them,
// which are unique together.
std::string document_of(const std::string &collation_of_c, const std::string &collation_of_n)
{
    const std::string text = R"("type":{"name":"text","nocase":true,"unicode":true,"width":9})";
    return R"({"compat_level":1,"backend":{"indistinct_unique_nulls":true},"tbls":{"t":{"name":"T","cols":{)"
           R"("i":{"name":"Id","notnull":{},"type":{"name":"sint32"}},"c":{"name":"C","notnull":{},)" +
           text + R"(,"defval":{"expr":"'x'"}},"n":{"name":"N",)" + text +
           R"(}},"pk":{"name":"PK","cols":{"i":null}},"uniques":{"U":{"c":null,"n":null}},"server":{"cols":[)"
           R"({"name":"Id","id":"i","type":"int","length":4},)"
           R"({"name":"C","id":"c","type":"varchar","length":9)" +
           collation_of_c + R"(},{"name":"N","id":"n","type":"nvarchar","length":18,"nullable":true)" + collation_of_n +
           "}]}}}}";
}

std::string named(const std::string &collation)
{
    return R"(,"collation":")" + collation + '"';
}

class ClientCollations : public ClientTest {
  protected:
    std::string script_with(int32_t collations)
    {
        tov_client_create_options options = {};
        options.collations = collations;
        options.no_record = 1;
        options.checks = TOV_CLIENT_CHECKS_TRIGGERS;
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, &options, &text);
        return take(ctx, text);
    }
    // The line of the server's script that begins with this, blanks aside.
    std::string line(const std::string &beginning)
    {
        const std::string text = script_with(TOV_CLIENT_COLLATIONS_SERVER);
        const size_t at = text.find(beginning);
        return at == std::string::npos ? "none" : text.substr(at, text.find('\n', at) - at);
    }
};

} // namespace

TEST_F(ClientCollations, StandAfterTheDefinition)
{
    load(document_of(named("Latin1_General_CI_AS"), named("Turkish_CI_AS")).c_str());
    EXPECT_EQ(line("\"C\""), R"("C" text COLLATE NOCASE NOT NULL DEFAULT 'x' COLLATE "Latin1_General_CI_AS",)");
    EXPECT_EQ(line("\"N\""), R"("N" text COLLATE NOCASE COLLATE "Turkish_CI_AS",)");
    EXPECT_EQ(line("CREATE UNIQUE INDEX"), R"(CREATE UNIQUE INDEX "U_nulls" ON "T" ("C") WHERE "N" IS NULL;)");
    EXPECT_EQ(script_with(TOV_CLIENT_COLLATIONS_BUILTIN), script(&with_triggers));
    EXPECT_EQ(script().find("Turkish"), std::string::npos);
}

TEST_F(ClientCollations, OfTheFirstKindDependOnTheKindOfStrings)
{
    const std::string sql = named("SQL_Latin1_General_CP1_CI_AS");
    load(document_of(sql, sql).c_str());
    EXPECT_NE(line("\"C\"").find(R"( COLLATE "SQL_Latin1_General_CP1_CI_AS.varchar",)"), std::string::npos);
    EXPECT_NE(line("\"N\"").find(R"( COLLATE "SQL_Latin1_General_CP1_CI_AS",)"), std::string::npos);
}

TEST_F(ClientCollations, AreLeftOutWhereTheDocumentHasNone)
{
    load(document_of("", named("Latin1_General_CI_AS")).c_str());
    EXPECT_EQ(line("\"C\""), "\"C\" text COLLATE NOCASE NOT NULL DEFAULT 'x',");
    std::string facts_of_fewer = document_of(named("A"), named("B"));
    facts_of_fewer.replace(facts_of_fewer.find(R"("id":"n")"), 8, R"("id":"o")");
    load(facts_of_fewer.c_str());
    EXPECT_EQ(script_with(TOV_CLIENT_COLLATIONS_SERVER), script(&with_triggers));
}

TEST_F(ClientCollations, WithOtherNamesAreRefused)
{
    for (const char *name : {"a b", "x\\\" y", "Latin1-General", "é", "a;b", "A.varchar"}) {
        SCOPED_TRACE(name);
        load(document_of(named("Latin1_General_CI_AS"), named(name)).c_str());
        ASSERT_OK(ctx);
        EXPECT_EQ(script_with(TOV_CLIENT_COLLATIONS_SERVER), "(null)");
        EXPECT_FAILED(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED);
        EXPECT_STREQ(KT_context__err_description(ctx),
                     "table \"T\", column \"N\", collation: not a name that a collation can have");
        KT_context__err_reset(ctx);
        EXPECT_NE(script_with(TOV_CLIENT_COLLATIONS_BUILTIN), "");
    }
}

TEST_F(ClientCollations, NeedTheExtension)
{
    load(document_of(named("Latin1_General_CI_AS"), named("Latin1_General_CI_AS")).c_str());
    const std::string text = script_with(TOV_CLIENT_COLLATIONS_SERVER);
    sqlite3 *plain = nullptr;
    ASSERT_EQ(sqlite3_open(":memory:", &plain), SQLITE_OK);
    EXPECT_EQ(run(plain, text), "no such collation sequence: Latin1_General_CI_AS");
    sqlite3_close(plain);
}

TEST_F(ClientCollations, SurviveMemoryThatIsLacking)
{
    const std::string text = document_of(named("Latin1_General_CI_AS"), named("Latin1_General_CI_AS"));
    load(text.c_str());
    const std::string whole = script_with(TOV_CLIENT_COLLATIONS_SERVER);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        const std::string written = script_with(TOV_CLIENT_COLLATIONS_SERVER);
        if (!fault.fired()) {
            EXPECT_EQ(written, whole);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(written, "(null)");
    }
}
