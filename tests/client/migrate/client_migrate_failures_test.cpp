// A migration in which memory runs out or SQLite fails, at every step in turn, leaves the database as it was.
#include "allocations_to_failure.hpp"
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"
#include "migrated_database.hpp"

namespace {

namespace fs = std::filesystem;

// A string that becomes a date goes through the loader's converters; the new column is added in place.
std::string document_of(const char *type, const char *facts, const char *more, const char *more_facts)
{
    return std::string(R"({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","cols":{
"1":{"name":"Id","type":{"name":"identity"},"notnull":{}},"2":{"name":"V","type":{)") +
           type + R"(}}},"server":{"schema":"dbo","name":"T","cols":[{"name":"Id","id":"1","type":"int"},
{"name":"V","id":"2","nullable":true,)" +
           facts + R"(}],"indexes":[{"name":"IX","cols":["2"]}]}},
"2":{"name":"U","cols":{"1":{"name":"A","type":{"name":"sint32"}})" +
           more +
           R"(},"server":{"schema":"dbo","name":"U","cols":[{"name":"A","id":"1","type":"int","nullable":true})" +
           more_facts + "]}}}}";
}

class MigrateFailures : public MigrateTest {
  protected:
    void SetUp() override
    {
        MigrateTest::SetUp();
        create_from(old_document());
        ASSERT_EQ(in_db("INSERT INTO T VALUES (1,'20240229'),(2,NULL);INSERT INTO U VALUES (7);"
                        "CREATE TRIGGER mine AFTER INSERT ON T BEGIN SELECT 1; END"),
                  "");
        set_new_schema(new_document());
        file = path("db");
        fs::copy_file(file, path("before"));
        before = state();
        attempt();
        ASSERT_OK(ctx);
        after = state();
        ASSERT_NE(before, after);
    }
    static std::string old_document()
    {
        return document_of(R"("name":"text","unicode":true,"width":20)", R"("type":"nvarchar","length":40)", "", "");
    }
    static std::string new_document()
    {
        return document_of(R"("name":"date")", R"("type":"date")", R"(,"2":{"name":"B","type":{"name":"sint32"}})",
                           R"(,{"name":"B","id":"2","type":"int","nullable":true})");
    }
    // A schema keeps the texts that were made of it: only without schemas is nothing left.
    void expect_nothing_leaks(const kt_failing_alloc &fault)
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__nullfree(ctx, &new_schema);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    void read_schemas()
    {
        reset_schema_to(old_document().c_str());
        set_new_schema(new_document());
    }
    void start_anew()
    {
        fs::copy_file(path("before"), file, fs::copy_options::overwrite_existing);
    }
    // Takes no memory of its own.
    void attempt()
    {
        tov_client__migrate_database(ctx, file.c_str(), new_schema, nullptr);
        allocations_to_failure = 0;
    }
    std::string state()
    {
        return rows_in_db("SELECT name, sql FROM sqlite_master") + rows_in_db("SELECT Id, quote(V) FROM T") +
               rows_in_db("SELECT * FROM U") + rows_in_db("PRAGMA integrity_check");
    }
    // All or nothing.
    void judge()
    {
        EXPECT_EQ(state(), KT_context__has_err(ctx) ? before : after);
        KT_context__err_reset(ctx);
    }
    void plan()
    {
        KT_varray *steps = nullptr;
        KT_string *script = nullptr;
        tov_client__plan_migration(ctx, schema, new_schema, nullptr, &steps);
        EXPECT_EQ(steps != nullptr, !KT_context__has_err(ctx));
        KT_varray__free(ctx, steps);
        if (!KT_context__has_err(ctx))
            tov_client__write_migration(ctx, schema, schema, nullptr, &script);
        allocations_to_failure = 0;
        EXPECT_EQ(script != nullptr, !KT_context__has_err(ctx));
        KT_string__free(ctx, script);
    }

    std::string file;
    std::string before;
    std::string after;
};

TEST_F(MigrateFailures, OfTheRuntimesMemory)
{
    for (kt_failing_alloc fault; fault.next();) {
        start_anew();
        attempt();
        const bool is_over = !fault.fired();
        EXPECT_EQ(KT_context__has_err(ctx) != 0, !is_over);
        if (!is_over) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        fault.pause();
        judge();
        expect_nothing_leaks(fault);
        if (is_over)
            break;
        read_schemas();
    }
}

TEST_F(MigrateFailures, OfTheContainersMemory)
{
    bool is_over = false;
    size_t turn = 1;
    for (; !is_over; turn++) {
        SCOPED_TRACE(turn);
        start_anew();
        allocations_to_failure = turn;
        attempt();
        is_over = !KT_context__has_err(ctx);
        if (!is_over) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        judge();
    }
    EXPECT_GT(turn, 300u);
}

// Memory that runs out on the way to an error, or while it is told, leaves an error.
TEST_F(MigrateFailures, OfMemoryWhereARowIsNotTaken)
{
    start_anew();
    ASSERT_EQ(in_db("UPDATE T SET V = 'Ann' WHERE Id = 2"), "");
    before = state();
    bool is_over = false;
    for (size_t turn = 1; !is_over; turn++) {
        SCOPED_TRACE(turn);
        allocations_to_failure = turn;
        tov_client__migrate_database(ctx, file.c_str(), new_schema, nullptr);
        is_over = allocations_to_failure > 0;
        allocations_to_failure = 0;
        EXPECT_TRUE(KT_context__has_err(ctx));
        judge();
    }
}

// What reads a value cannot fail, except where it makes a text of it.
bool cannot_fail(kt_sqlite_entry entry)
{
    return entry == kt_sqlite_entry::column_type || entry == kt_sqlite_entry::column_int64 ||
           entry == kt_sqlite_entry::column_bytes || entry == kt_sqlite_entry::column_value;
}

TEST_F(MigrateFailures, OfSqlite)
{
    kt_counting_sqlite sqlite;
    size_t failed_calls = 0;
    for (size_t n = 0; n < static_cast<size_t>(kt_sqlite_entry::count); n++) {
        const auto entry = static_cast<kt_sqlite_entry>(n);
        bool is_over = cannot_fail(entry);
        for (int turn = 1; !is_over; turn++) {
            const int code = kt_sqlite_failures[failed_calls % std::size(kt_sqlite_failures)];
            SCOPED_TRACE("entry " + std::to_string(n) + ", call " + std::to_string(turn));
            start_anew();
            sqlite.fail(entry, turn, code);
            attempt();
            is_over = !sqlite.fired();
            EXPECT_EQ(sqlite.open_statements(), 0);
            EXPECT_EQ(sqlite.open_connections(), 0);
            if (KT_context__has_err(ctx) && sqlite.has_code(entry)) {
                EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code)) << KT_context__err_description(ctx);
            }
            sqlite.fail(kt_sqlite_entry::none, 0);
            judge();
            failed_calls += is_over ? 0U : 1U;
        }
    }
    EXPECT_GT(failed_calls, 100u);
}

// Planning needs no database but one in memory.
TEST_F(MigrateFailures, OfAPlan)
{
    for (kt_failing_alloc fault; fault.next();) {
        plan();
        const bool is_over = !fault.fired();
        EXPECT_EQ(KT_context__has_err(ctx) != 0, !is_over);
        KT_context__err_reset(ctx);
        expect_nothing_leaks(fault);
        fault.pause();
        read_schemas();
        if (is_over)
            break;
    }
    bool is_over = false;
    for (size_t turn = 1; !is_over; turn++) {
        allocations_to_failure = turn;
        plan();
        is_over = !KT_context__has_err(ctx);
        KT_context__err_reset(ctx);
    }
    kt_counting_sqlite sqlite;
    const auto judge_call = [&](kt_sqlite_entry, int, int) {
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        KT_context__err_reset(ctx);
    };
    kt_sweep_sqlite(
        sqlite, [this] { plan(); }, judge_call);
}

} // namespace
