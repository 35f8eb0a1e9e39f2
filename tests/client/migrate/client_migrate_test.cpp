// Databases that are changed in place keep their rows and end as those that are created anew.
#include "migrated_database.hpp"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string customers = R"("1":{"name":"Customers","cols":{
"1":{"name":"Id","type":{"name":"identity","constraint_name":"PK_C"},"notnull":{}},
"2":{"name":"Name","type":{"name":"text","nocase":true,"unicode":true,"width":10},"notnull":{}}},
"server":{"schema":"dbo","name":"Customers","cols":[{"name":"Id","id":"1","type":"int","identity":["1","1"]},
{"name":"Name","id":"2","type":"nvarchar","length":20,"collation":"Latin1_General_CI_AS"}]}})";

const std::string orders = R"j("2":{"name":"Orders","cols":{
"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
"2":{"name":"Customer","type":{"name":"sint32"},"fk":{"name":"FK_C","ref_tbl_id":"1","ref_col_id":"1",
"deferred":false,"on_delete":"CASCADE","on_update":"NO ACTION"}},
"3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"check":[{"expr":"([Total]>=(0))","name":"CK"}]}},
"pk":{"name":"PK_O","cols":{"1":null}},
"server":{"schema":"dbo","name":"Orders","cols":[{"name":"Id","id":"1","type":"int"},
{"name":"Customer","id":"2","type":"int","nullable":true},
{"name":"Total","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true}],
"indexes":[{"name":"IX_Total","cols":["3"]}]}})j";

std::string document_of(const std::string &tables)
{
    return R"({"compat_level":1,"backend":{"indistinct_unique_nulls":true},"tbls":{)" + tables + "}}";
}

using replacements = std::vector<std::pair<std::string, std::string>>;

std::string changed(std::string text, const replacements &changes)
{
    for (const auto &[from, to] : changes) {
        EXPECT_NE(text.find(from), std::string::npos) << from;
        for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
    }
    return text;
}

// A step as the plan tells it.
struct planned_step {
    std::string description;
    std::string count;
    bool only_apply;
};

class MigrateShop : public MigrateTest {
  protected:
    // The steps of a class on the way from the shop to the new schema.
    std::vector<planned_step> plan(const std::string &wanted)
    {
        std::vector<planned_step> found;
        KT_varray *steps = nullptr;
        uint32_t count = 0;
        tov_client__plan_migration(ctx, schema, new_schema, nullptr, &steps);
        EXPECT_OK(ctx);
        KT_varray__count(ctx, steps, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *step = nullptr;
            KT_bool only_apply = 0;
            KT_varray__get__vhash(ctx, steps, n, &step);
            KT_vhash__check__bool(ctx, step, "only_apply", &only_apply);
            if (text_of(step, "class") == wanted)
                found.push_back({text_of(step, "description"), text_of(step, "count"), only_apply != 0});
        }
        KT_varray__free(ctx, steps);
        return found;
    }
    std::string text_of(const KT_vhash *step, const char *key)
    {
        const char *text = nullptr;
        KT_vhash__check__sz(ctx, step, key, &text);
        return text ? text : "";
    }
    void SetUp() override
    {
        MigrateTest::SetUp();
        create_from(shop);
        ASSERT_EQ(in_db("INSERT INTO Customers VALUES (1,'Ann'),(2,'Bob');"
                        "INSERT INTO Orders VALUES (10,1,1250),(11,2,NULL),(12,NULL,99);"),
                  "");
    }
    const std::string shop = document_of(customers + "," + orders);
};

struct migrate_case {
    const char *name;
    replacements changes;
    std::vector<const char *> losses;
    const char *query;
    const char *expected;
};

const migrate_case migrate_cases[] = {
    {"nothing", {}, {}, "SELECT * FROM Orders ORDER BY Id", "10|1|1250 11|2|NULL 12|NULL|99"},
    {"a column is added in place",
     {{R"("3":{"name":"Total")",
       R"("4":{"name":"Paid","type":{"name":"uint1"},"notnull":{},"defval":{"expr":"1"}},"3":{"name":"Total")"},
      {R"({"name":"Total","id":"3")",
       R"j({"name":"Paid","id":"4","type":"bit","default":"((1))"},{"name":"Total","id":"3")j"}},
     {},
     "SELECT Id, Paid, Total FROM Orders ORDER BY Id",
     "10|1|1250 11|1|NULL 12|1|99"},
    {"a scale grows",
     {{R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}},
     {},
     "SELECT Total FROM Orders ORDER BY Id",
     "125000 NULL 9900"},
    {"a number becomes a text",
     {{R"j("type":{"name":"decimal","precision":9,"scale":2},"check":[{"expr":"([Total]>=(0))","name":"CK"}])j",
       R"("type":{"name":"text","unicode":true,"width":20})"},
      {R"("type":"decimal","precision":9,"scale":2)", R"("type":"nvarchar","length":40)"}},
     {},
     "SELECT Total FROM Orders ORDER BY Id",
     "12.50 NULL 0.99"},
    {"a column is renamed, and what names it",
     {{R"("name":"Total")", R"("name":"Amount")"}, {"[Total]", "[Amount]"}},
     {},
     "SELECT Amount FROM Orders ORDER BY Id",
     "1250 NULL 99"},
    {"a table is renamed, and what refers to it",
     {{R"("1":{"name":"Customers")", R"("1":{"name":"Clients")"},
      {R"("schema":"dbo","name":"Customers")", R"("schema":"dbo","name":"Clients")"}},
     {},
     "SELECT c.Name FROM Clients c JOIN Orders ON Customer = c.Id",
     "Ann Bob"},
    {"a table's name changes its letters",
     {{R"("1":{"name":"Customers")", R"("1":{"name":"CUSTOMERS")"},
      {R"("schema":"dbo","name":"Customers")", R"("schema":"dbo","name":"CUSTOMERS")"}},
     {},
     "SELECT count(*) FROM CUSTOMERS",
     "2"},
    {"a column goes",
     {{R"j(,
"3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"check":[{"expr":"([Total]>=(0))","name":"CK"}]})j",
       ""},
      {R"(,
{"name":"Total","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true})",
       ""},
      {R"("indexes":[{"name":"IX_Total","cols":["3"]}])", R"("indexes":[])"}},
     {"dbo.Orders.Total"},
     "SELECT * FROM Orders ORDER BY Id",
     "10|1 11|2 12|NULL"},
    {"a reference gets another action", {{"CASCADE", "SET NULL"}}, {}, "SELECT count(*) FROM Orders", "3"},
    {"an index gets another column",
     {{R"("cols":["3"])", R"("cols":["3","2"])"}},
     {},
     "SELECT count(*) FROM Orders ORDER BY Id",
     "3"},
    {"the primary key changes", {{R"("cols":{"1":null})", R"("cols":{"1":null,"3":null})"}}, {}, "", ""},
    {"a column gets wider",
     {{R"("width":10)", R"("width":12)"}, {R"("length":20)", R"("length":24)"}},
     {},
     "SELECT Name FROM Customers",
     "Ann Bob"},
    {"a row's versions begin",
     {{R"("3":{"name":"Total")",
       R"("5":{"name":"V","type":{"name":"blob","fixed_width":true,"width":8},"notnull":{}},"3":{"name":"Total")"},
      {R"({"name":"Total","id":"3")", R"({"name":"V","id":"5","type":"timestamp"},{"name":"Total","id":"3")"}},
     {},
     "SELECT hex(V) FROM Orders ORDER BY Id",
     "00000000000007D1 00000000000007D2 00000000000007D3"},
};

TEST_F(MigrateShop, EndsAsCreatedWithItsRows)
{
    for (const migrate_case &c : migrate_cases) {
        SCOPED_TRACE(c.name);
        create_from(shop);
        ASSERT_EQ(in_db("INSERT INTO Customers VALUES (1,'Ann'),(2,'Bob');"
                        "INSERT INTO Orders VALUES (10,1,1250),(11,2,NULL),(12,NULL,99);"),
                  "");
        const std::string why = migrate(changed(shop, c.changes), c.losses);
        if (!*c.query) { // NULL in a key is refused
            EXPECT_NE(why, "");
            EXPECT_EQ(rows_in_db("SELECT count(*) FROM Orders"), "3");
            continue;
        }
        EXPECT_EQ(why, "");
        EXPECT_EQ(rows_in_db(c.query), c.expected);
        expect_as_created();
    }
}

TEST_F(MigrateShop, ARowThatIsNotTakenLeavesAllAsItWas)
{
    const std::vector<std::string> before = objects_of("db");
    const std::string narrow = changed(shop, {{R"("width":10)", R"("width":2)"}, {R"("length":20)", R"("length":4)"}});
    EXPECT_NE(migrate(narrow).find("[Name] constraint violation"), std::string::npos);
    EXPECT_EQ(objects_of("db"), before);
    EXPECT_EQ(rows_in_db("SELECT Name FROM Customers"), "Ann Bob");
}

TEST_F(MigrateShop, LossesAreRefusedUnlessTheyAreAllowed)
{
    const std::string only_customers = document_of(customers);
    EXPECT_EQ(migrate(only_customers), "this would lose data: dbo.Orders: is dropped");
    EXPECT_EQ(rows_in_db("SELECT count(*) FROM Orders"), "3");
    EXPECT_EQ(migrate(only_customers, {"Orders"}), "");
    expect_as_created();
}

TEST_F(MigrateShop, RowsThatReferToNothingAreRefused)
{
    ASSERT_EQ(in_db("PRAGMA foreign_keys=OFF;INSERT INTO Orders VALUES (13,77,1)"), "");
    const std::string wider = changed(shop, {{R"("precision":9)", R"("precision":12)"}});
    EXPECT_NE(migrate(wider).find("rows of Orders refer to rows of Customers that are not there: 1"),
              std::string::npos);
}

// Views, indexes and triggers of somebody's own outlive a table that is made anew.
TEST_F(MigrateShop, WhatSomebodyHasAddedIsKept)
{
    ASSERT_EQ(in_db("CREATE VIEW mine AS SELECT Id, Total FROM Orders;CREATE INDEX my_index ON Orders (Customer, Id);"
                    "CREATE TABLE notes (text);CREATE TRIGGER my_trigger AFTER INSERT ON Orders BEGIN INSERT INTO "
                    "notes VALUES (NEW.Id); END;"),
              "");
    EXPECT_EQ(migrate(changed(shop, {{R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}})), "");
    EXPECT_EQ(rows_in_db("SELECT Total FROM mine ORDER BY Id"), "125000 NULL 9900");
    EXPECT_EQ(rows_in_db("SELECT count(*) FROM sqlite_master WHERE name IN ('my_index','my_trigger','mine')"), "3");
    ASSERT_EQ(in_db("INSERT INTO Orders VALUES (20,1,0)"), "");
    EXPECT_EQ(rows_in_db("SELECT * FROM notes"), "20");
}

TEST_F(MigrateShop, ATableThatWasChangedByHandIsRefused)
{
    ASSERT_EQ(in_db("ALTER TABLE Orders ADD COLUMN Extra"), "");
    EXPECT_EQ(migrate(shop), "table \"Orders\" is not as the database's record of its schema says");
}

TEST_F(MigrateShop, NamesCanBeExchanged)
{
    const std::string exchanged =
        changed(shop, {{R"("1":{"name":"Customers")", R"("1":{"name":"Temporary")"},
                       {R"("2":{"name":"Orders")", R"("2":{"name":"Customers")"},
                       {R"("1":{"name":"Temporary")", R"("1":{"name":"Orders")"},
                       {R"("schema":"dbo","name":"Customers")", R"("schema":"dbo","name":"Temporary")"},
                       {R"("schema":"dbo","name":"Orders")", R"("schema":"dbo","name":"Customers")"},
                       {R"("schema":"dbo","name":"Temporary")", R"("schema":"dbo","name":"Orders")"}});
    EXPECT_EQ(migrate(exchanged, {}, {"dbo.Customers=Orders", "dbo.Orders=Customers"}), "");
    EXPECT_EQ(rows_in_db("SELECT Name FROM Orders"), "Ann Bob");
    expect_as_created();
}

// The script does in the shell what migrating does.
TEST_F(MigrateShop, TheScriptDoesTheSame)
{
    const std::string wider = changed(shop, {{R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}});
    KT_string *script = nullptr;
    set_new_schema(wider);
    tov_client__write_migration(ctx, schema, new_schema, nullptr, &script);
    ASSERT_OK(ctx);
    EXPECT_EQ(in_db(take(ctx, script)), "");
    EXPECT_EQ(rows_in_db("SELECT Total FROM Orders ORDER BY Id"), "125000 NULL 9900");
    expect_as_created();
}

// Killed at each of its statements, it has done nothing or all.
int statements_left = 0;
const KT_sqlite_functions *real_functions = nullptr;

int killing_step(sqlite3_stmt *statement)
{
    if (statements_left-- == 0)
        raise(SIGKILL);
    return real_functions->step(statement);
}

TEST_F(MigrateShop, KilledAtAnyStatementLeavesAllOrNothing)
{
    const std::string wider = changed(shop, {{R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}});
    real_functions = tov__get_sqlite_functions();
    set_new_schema(wider);
    int killed = 0;
    for (bool is_done = false; !is_done; killed++) {
        SCOPED_TRACE(killed);
        const pid_t child = fork();
        if (child == 0) {
            KT_sqlite_functions functions = *real_functions;
            functions.step = killing_step;
            statements_left = killed;
            tov__set_sqlite_functions(&functions);
            tov_client__migrate_database(ctx, path("db").c_str(), new_schema, nullptr);
            _exit(KT_context__has_err(ctx) ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        is_done = WIFEXITED(status);
        EXPECT_TRUE(!is_done || WEXITSTATUS(status) == 0);
        EXPECT_EQ(rows_in_db("SELECT Total FROM Orders ORDER BY Id"), is_done ? "125000 NULL 9900" : "1250 NULL 99");
        EXPECT_EQ(rows_in_db("SELECT instr(document, '\"scale\":4') > 0 FROM tov_schema"), is_done ? "1" : "0");
    }
    EXPECT_GT(killed, 20);
    expect_as_created();
}

// Names that move on in a row, where each has to be free before the next takes it.
TEST_F(MigrateShop, ANameCanGoToAnotherAtOnce)
{
    const std::string moved =
        changed(shop, {{R"("2":{"name":"Orders")", R"("2":{"name":"Zones")"},
                       {R"("1":{"name":"Customers")", R"("1":{"name":"Orders")"},
                       {R"("schema":"dbo","name":"Orders")", R"("schema":"dbo","name":"Zones")"},
                       {R"("schema":"dbo","name":"Customers")", R"("schema":"dbo","name":"Orders")"}});
    EXPECT_EQ(migrate(moved, {}, {"dbo.Orders=Zones", "dbo.Customers=Orders"}), "");
    EXPECT_EQ(rows_in_db("SELECT Name FROM Orders"), "Ann Bob");
    expect_as_created();
}

// A view of somebody's own knows a column by its new name, in a table that is made anew too.
TEST_F(MigrateShop, ViewsFollowTheNamesOfColumns)
{
    ASSERT_EQ(in_db("CREATE VIEW mine AS SELECT Total FROM Orders"), "");
    EXPECT_EQ(migrate(changed(shop, {{R"("name":"Total")", R"("name":"Amount")"},
                                     {"[Total]", "[Amount]"},
                                     {R"("precision":9,"scale":2)", R"("precision":9,"scale":4)"}}),
                      {}, {"dbo.Orders.Total=Amount"}),
              "");
    EXPECT_EQ(rows_in_db("SELECT Amount FROM mine ORDER BY Amount"), "NULL 9900 125000");
    expect_as_created_but("mine");
}

TEST_F(MigrateShop, AnIndexOfSomebodysOwnThatCannotStayIsNamed)
{
    ASSERT_EQ(in_db("CREATE INDEX my_index ON Orders (Total)"), "");
    const std::string why =
        migrate(changed(shop, {{R"j(,
"3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"check":[{"expr":"([Total]>=(0))","name":"CK"}]})j",
                                ""},
                               {R"(,
{"name":"Total","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true})",
                                ""},
                               {R"("indexes":[{"name":"IX_Total","cols":["3"]}])", R"("indexes":[])"}}),
                {"dbo.Orders"});
    EXPECT_NE(why.find("my_index, which was added to the table"), std::string::npos) << why;
}

TEST_F(MigrateShop, AValueThatIsNotTakenIsShown)
{
    const std::string number =
        changed(shop, {{R"("name":"text","nocase":true,"unicode":true,"width":10)", R"("name":"date")"},
                       {R"("type":"nvarchar","length":20,"collation":"Latin1_General_CI_AS")", R"("type":"date")"}});
    EXPECT_EQ(migrate(number),
              "dbo.Customers: is made anew with its rows: dbo.Customers.Name: the value is not a date: "
              "\"Ann\"");
    EXPECT_EQ(rows_in_db("SELECT Name FROM Customers"), "Ann Bob");
}

// What a migration of the shop may fail on, with the rows that its query counts.
struct risk_case {
    const char *name;
    replacements changes;
    const char *description;
    const char *count;
};

const risk_case risk_cases[] = {
    {"a string that is too long",
     {{R"("width":10)", R"("width":2)"}, {R"("length":20)", R"("length":4)"}},
     "dbo.Customers.Name: not every value is one of its new type",
     "2"},
    {"digits that would be lost",
     {{R"("precision":9,"scale":2)", R"("precision":9,"scale":1)"}},
     "dbo.Orders.Total: not every value is one of its new type",
     "1"},
    {"a number that is too large",
     {{R"("precision":9,"scale":2)", R"("precision":3,"scale":2)"}},
     "dbo.Orders.Total: not every value is one of its new type",
     "2"},
    {"NULL in a column that does not take it",
     {{R"("scale":2},"check")", R"("scale":2},"notnull":{},"check")"},
      {R"("scale":2,"nullable":true)", R"("scale":2)"}},
     "dbo.Orders.Total: is NOT NULL from now on",
     "1"},
    {"a check that a row does not obey",
     {{R"j(([Total]>=(0)))j", R"j(([Total]>=(100)))j"}},
     "dbo.Orders: the check CK is new",
     "1"},
    {"a check of values in their new form",
     {{R"j(([Total]>=(0)))j", R"j(([Total]<(100000)))j"},
      {R"("precision":9,"scale":2)", R"("precision":12,"scale":4)"}},
     "dbo.Orders: the check CK is new",
     "2"},
    {"a key of values that are there twice",
     {{R"("cols":{"1":null})", R"("cols":{"2":null})"}},
     "dbo.Orders: the key PK_O is new",
     "2"},
    {"a unique key of values that are there twice",
     {{R"("pk":{"name":"PK_O","cols":{"1":null}})",
       R"("uniques":{"UQ_C":{"2":null}},"pk":{"name":"PK_O","cols":{"1":null}})"}},
     "dbo.Orders: the key UQ_C is new",
     "2"},
    {"a unique index of some rows whose values are there twice",
     {{R"("cols":["3"])", R"j("unique":true,"cols":["2"],"filter":"([Total]>(0))","where":"[Total]>(0)")j"}},
     "dbo.Orders: the key IX_Total is new",
     "2"},
    {"a reference to what is not there",
     {{R"("3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2})",
       R"("3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"fk":{"name":"FK_T","ref_tbl_id":"1",
        "ref_col_id":"1","deferred":false,"on_delete":"NO ACTION","on_update":"NO ACTION"})"}},
     "dbo.Orders: the reference FK_T is new",
     "3"},
};

TEST_F(MigrateShop, RowsThatMayFailAreCounted)
{
    ASSERT_EQ(in_db("INSERT INTO Orders VALUES (13,1,1500)"), "");
    for (const risk_case &c : risk_cases) {
        SCOPED_TRACE(c.name);
        set_new_schema(changed(shop, c.changes));
        const std::vector<planned_step> risks = plan("may fail");
        const auto risk = std::find_if(risks.begin(), risks.end(),
                                       [&](const planned_step &step) { return step.description == c.description; });
        ASSERT_NE(risk, risks.end());
        EXPECT_EQ(rows_in_db(risk->count), c.count) << risk->count;
        EXPECT_NE(migrate(changed(shop, c.changes)), "");
    }
}

// SQL reads strings otherwise than loading does, so a script would come to something else.
TEST_F(MigrateShop, AScriptDoesNotConvertStrings)
{
    KT_string *script = nullptr;
    set_new_schema(
        changed(shop, {{R"("name":"text","nocase":true,"unicode":true,"width":10)", R"("name":"date")"},
                       {R"("type":"nvarchar","length":20,"collation":"Latin1_General_CI_AS")", R"("type":"date")"}}));
    const std::vector<planned_step> rebuilt = plan("rebuilds");
    ASSERT_EQ(rebuilt.size(), 1u);
    EXPECT_TRUE(rebuilt[0].only_apply);
    tov_client__write_migration(ctx, schema, new_schema, nullptr, &script);
    EXPECT_FAILED(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED);
    EXPECT_NE(std::string(KT_context__err_description(ctx)).find("dbo.Customers.Name"), std::string::npos);
    KT_context__err_reset(ctx);
}

TEST_F(MigrateShop, WhatIsTheSameIsLeftAlone)
{
    set_new_schema(shop);
    EXPECT_EQ(plan("rebuilds").size(), 0u);
    const std::vector<planned_step> free = plan("free");
    ASSERT_EQ(free.size(), 1u);
    EXPECT_EQ(free[0].description, "references are checked");
}

} // namespace
