// Constraints are set aside while loading where conversion decides the same, and nowhere else: what a user's check
// refuses is refused with the same message, however it came into the database.
#include "load_test.hpp"

namespace {

// Statements that connections of this process run, as long as one of these lives.
class statement_log {
  public:
    statement_log()
    {
        lines() = "";
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(watch)); // SQLite declares it without parameters
    }
    ~statement_log()
    {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(watch));
    }
    statement_log(const statement_log &) = delete;
    statement_log &operator=(const statement_log &) = delete;

    static bool has(const std::string &text)
    {
        return lines().find(text) != std::string::npos;
    }

  private:
    static std::string &lines()
    {
        static std::string all;
        return all;
    }
    static int watch(sqlite3 *connection, char **, const sqlite3_api_routines *)
    {
        const auto note = [](unsigned, void *, void *statement, void *) {
            lines() += std::string(sqlite3_sql(static_cast<sqlite3_stmt *>(statement))) + "\n";
            return 0;
        };
        return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, note, nullptr);
    }
};

constexpr const char *set_aside = "PRAGMA ignore_check_constraints=ON";

// A key, and a number that some of the cases have a check for.
constexpr const char *plain_document = R"json({"compat_level":1,"backend":{},"tbls":{
"1":{"name":"T","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"identity"},"notnull":{}},
 "2":{"name":"c","type":{"name":"sint16"}}},
 "server":{"schema":"dbo","name":"T","cols":[
  {"name":"Id","id":"1","type":"tinyint","identity":["1","1"]},
  {"name":"c","id":"2","type":"smallint","nullable":true}]}},
"2":{"name":"U","txid":0,"cols":{
 "1":{"name":"c","type":{"name":"sint16"}}}}}})json";

class ClientLoadConstraints : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        reset_schema_to(plain_document);
    }
    void change(const std::string &sql)
    {
        sqlite3 *other = nullptr;
        sqlite3_open(path("db").c_str(), &other);
        EXPECT_EQ(run(other, sql), "");
        sqlite3_close(other);
    }
    // After the first two rows.
    static void add_trigger(void *test, const char *, int64_t, int64_t)
    {
        auto *self = static_cast<ClientLoadConstraints *>(test);
        if (self->query("SELECT count(*) FROM T") == "2")
            self->change(
                "CREATE TRIGGER few BEFORE INSERT ON T WHEN NEW.c > 100 BEGIN SELECT raise(ABORT, 'few'); END");
    }
    std::string load_rows(const std::string &text, tov_client_load_options options = {})
    {
        return load({write("T.dat", text)}, options);
    }
    // What SQLite itself says of a row.
    std::string message_of(const std::string &insert)
    {
        return query(insert).substr(std::char_traits<char>::length("error: "));
    }
};

TEST_F(ClientLoadConstraints, AreSetAsideWhereConversionDecides)
{
    create();
    const statement_log log;
    EXPECT_EQ(load_rows("1\t2\n2\t40000\n3\t-5\n300\t1\n"), "T 4 2 2");
    EXPECT_TRUE(log.has(set_aside));
    EXPECT_EQ(query("SELECT Id, c FROM T"), "1|2 3|-5");
}

TEST_F(ClientLoadConstraints, AreAskedWhereTheyAreWanted)
{
    create();
    const statement_log log;
    tov_client_load_options options = {};
    options.with_triggers = 1;
    EXPECT_EQ(load_rows("1\t2\n", options), "T 1 1 0");
    EXPECT_FALSE(log.has(set_aside));
}

struct kept_case {
    const char *name;
    void (*prepare)(KT_context *, tov_schema *); // before the database is created
    const char *change;                          // after it
    const char *message;                         // of SQLite, for a number that is too great
};

const kept_case kept_cases[] = {
    {"a check of the table",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_check_constraint(ctx, s, "1", "few", "\"c\" < 100"); }, "",
     "CHECK constraint failed: c"},
    {"a check of a column",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_colcon_check(ctx, s, "1", "2", "few", "(\"c\" < 100)"); }, "",
     "CHECK constraint failed: few"},
    {"a check that was added by hand", [](KT_context *, tov_schema *) {},
     "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = replace(sql, char(10) || ')', "
     "', CONSTRAINT few CHECK (c < 100))') WHERE name = 'T'",
     "CHECK constraint failed: few"},
    {"a column that was added by hand", [](KT_context *, tov_schema *) {},
     "ALTER TABLE T ADD COLUMN d CONSTRAINT few CHECK (c < 100)", "CHECK constraint failed: few"},
    {"a check of another table, to which a trigger copies rows", [](KT_context *, tov_schema *) {},
     "CREATE TABLE log (c CONSTRAINT few CHECK (c < 100)); "
     "CREATE TRIGGER copy AFTER INSERT ON T BEGIN INSERT INTO log VALUES (NEW.c); END",
     "CHECK constraint failed: few"},
};

TEST_F(ClientLoadConstraints, AreAskedWhereThereIsAnother)
{
    for (const kept_case &c : kept_cases) {
        SCOPED_TRACE(c.name);
        reset_schema_to(plain_document);
        c.prepare(ctx, schema);
        create();
        change(c.change);
        const statement_log log;
        EXPECT_EQ(load_rows("1\t2\n2\t100\n3\t99\n"), "T 3 2 1");
        const std::string message = message_of("INSERT INTO T(c) VALUES (100)");
        EXPECT_EQ(message, c.message);
        EXPECT_NE(shown_remarks.find(": check-violated: " + message), std::string::npos) << shown_remarks;
        EXPECT_FALSE(log.has(set_aside));
        EXPECT_EQ(query("SELECT Id, c FROM T"), "1|2 3|99");
        std::remove(path("db").c_str());
    }
}

TEST_F(ClientLoadConstraints, AreAskedAboutTheTableThatHasAnother)
{
    tov_schema__add_check_constraint(ctx, schema, "2", "few", "\"c\" < 100");
    create();
    const statement_log log;
    const std::string script = write("all.sql", "INSERT INTO T VALUES (1, 100);\nINSERT INTO U VALUES (100);\n"
                                                "INSERT INTO T VALUES (2, 101);\nINSERT INTO U VALUES (99);\n"
                                                "INSERT INTO U VALUES (101);\nINSERT INTO T VALUES (3, 102);\n");
    EXPECT_EQ(load({script}), "T 3 3 0; U 3 1 2");
    EXPECT_TRUE(log.has(set_aside));
    EXPECT_TRUE(log.has("PRAGMA ignore_check_constraints=OFF"));
    EXPECT_EQ(query("SELECT c FROM U"), "99");
}

TEST_F(ClientLoadConstraints, AreAskedAboutNumbersThatSQLiteChooses)
{
    create();
    change("INSERT INTO T VALUES (254, 1)");
    tov_client_load_options options = {};
    options.format = "csv";
    options.header = 1;
    EXPECT_EQ(load({write("T.csv", "c\n7\n8\n")}, options), "T 2 1 1");
    EXPECT_NE(shown_remarks.find("[Id] constraint violation: out of range: tinyint"), std::string::npos)
        << shown_remarks;
    EXPECT_EQ(query("SELECT Id, c FROM T"), "254|1 255|7");
}

TEST_F(ClientLoadConstraints, AreAskedAboutDefaults)
{
    tov_schema__set_colcon_defval(ctx, schema, "1", "2", 1, nullptr, "70000");
    create();
    tov_client_load_options options = {};
    options.format = "csv";
    options.header = 1;
    EXPECT_EQ(load({write("T.csv", "Id\n7\n")}, options), "T 1 0 1");
    EXPECT_NE(shown_remarks.find("[c] constraint violation: out of range: sint16"), std::string::npos) << shown_remarks;
}

// Another program may change the database whenever the load does not hold it.
TEST_F(ClientLoadConstraints, AreAskedOnceTheDatabaseIsChanged)
{
    create();
    tov_client_load_options options = {};
    options.batch = 2;
    options.data = this;
    options.progress = add_trigger;
    EXPECT_EQ(load_rows("1\t200\n2\t200\n3\t200\n4\t7\n", options), "T 4 3 1");
    EXPECT_EQ(query("SELECT Id FROM T"), "1 2 4");
}

} // namespace
