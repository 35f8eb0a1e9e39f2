// Views that show values as the server does; their values are tried in client_describe_test.cpp.
#include "failing_alloc.hpp"
#include "load_test.hpp"

#include <unistd.h>

namespace {

class ClientViews : public LoadTest {
  protected:
    void create_with_views()
    {
        tov_client_create_options options = {};
        options.views = 1;
        tov_client__create_database__with(ctx, schema, path("db").c_str(), &options);
    }
    // A table with nothing but a key.
    void add_small_tbl(const std::string &name)
    {
        add_tbl(name.c_str(), name.c_str());
        add_col(name.c_str(), "a", "A");
        set_pk(name.c_str(), "a");
    }
    static constexpr const char *names_of_views =
        "SELECT name, tbl_name FROM sqlite_master WHERE type = 'view' ORDER BY rowid";
};

TEST_F(ClientViews, AreThereForEachTableWhereTheyAreAskedFor)
{
    create_with_views();
    ASSERT_OK(ctx);
    EXPECT_EQ(query(names_of_views), "v_Customers|v_Customers v_Sales.Orders|v_Sales.Orders");
    create("other");
    EXPECT_EQ(query(names_of_views, "other"), "");
}

TEST_F(ClientViews, HaveTheColumnsOfTheirTable)
{
    create_with_views();
    query("INSERT INTO \"Sales.Orders\" (Id, Price) VALUES (1, 5), (2, NULL)");
    EXPECT_EQ(query("SELECT group_concat(name) FROM pragma_table_info('v_Sales.Orders')"), "Id,Customer,Price,Note");
    EXPECT_EQ(query("SELECT * FROM \"v_Sales.Orders\""), "1|NULL|0.05|NULL 2|NULL|NULL|NULL");
}

TEST_F(ClientViews, StandInTheScriptToo)
{
    tov_client_create_options options = {};
    options.views = 1;
    KT_string *text = nullptr;
    tov_client__write_script__with(ctx, schema, &options, &text);
    ASSERT_OK(ctx);
    const std::string with_views = take(ctx, text);
    sqlite3_open(path("db").c_str(), &connection);
    ASSERT_EQ(run(connection, with_views), "") << with_views;
    EXPECT_EQ(rows(connection, names_of_views), "v_Customers|v_Customers v_Sales.Orders|v_Sales.Orders");
    EXPECT_EQ(script().find("CREATE VIEW"), std::string::npos);
}

TEST_F(ClientViews, OfVeryManyTablesAreThoseThatSqliteItselfWrites)
{
    reset_schema();
    for (int n = 0; n < 300; n++)
        add_small_tbl("T" + std::to_string(n));
    create_with_views();
    ASSERT_OK(ctx);
    tov_client_create_options options = {};
    options.views = 1;
    KT_string *text = nullptr;
    tov_client__write_script__with(ctx, schema, &options, &text);
    sqlite3_open(":memory:", &connection);
    ASSERT_EQ(run(connection, take(ctx, text)), "");
    const char *all = "SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY type, name";
    EXPECT_EQ(query(all), rows(connection, all));
    EXPECT_EQ(query("PRAGMA integrity_check"), "ok");
}

TEST_F(ClientViews, ThatATableIsNamedLikeAreRefused)
{
    add_small_tbl("V_customers");
    create_with_views();
    EXPECT_FAILED(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED);
    EXPECT_STREQ(KT_context__err_description(ctx),
                 "table \"Customers\": its view would have the name \"V_customers\", which a table has");
    KT_context__err_reset(ctx);
    EXPECT_NE(access(path("db").c_str(), F_OK), 0);
    create();
}

TEST_F(ClientViews, OfATableThatIsNamedLikeAViewAreThereToo)
{
    add_small_tbl("v_something");
    create_with_views();
    ASSERT_OK(ctx);
    EXPECT_EQ(query("SELECT count(*) FROM v_v_something"), "0");
}

TEST_F(ClientViews, ThatTheDatabaseHasAreRefused)
{
    query("CREATE VIEW V_CUSTOMERS AS SELECT 1");
    create_with_views();
    ASSERT_TRUE(KT_context__has_err(ctx));
    EXPECT_STREQ(KT_context__err_description(ctx), "view \"v_Customers\": an object of this name already exists");
    KT_context__err_reset(ctx);
}

TEST_F(ClientViews, SurviveFailingAllocations)
{
    tov_client_create_options options = {};
    options.views = 1;
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, &options, &text);
        if (KT_context__has_err(ctx)) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(text, nullptr);
            continue;
        }
        EXPECT_NE(take(ctx, text).find("CREATE VIEW"), std::string::npos);
        if (!fault.fired())
            break;
    }
}

} // namespace
