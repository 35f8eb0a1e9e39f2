#include "client_test.hpp"
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

class ClientCreate : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        std::string folder = (fs::temp_directory_path() / "client_create_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        file = folder_ / "created.db";
    }
    void TearDown() override
    {
        tov__set_sqlite_functions(nullptr);
        fs::remove_all(folder_);
        ClientTest::TearDown();
    }
    void create()
    {
        tov_client__create_database(ctx, schema, file.c_str(), nullptr, nullptr);
    }
    void expect_created()
    {
        create();
        EXPECT_OK(ctx);
    }
    // What a query on the file gives.
    std::string in_file(const std::string &sql)
    {
        sqlite3 *other = nullptr;
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &other, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
        const std::string result = rows(other, sql);
        sqlite3_close(other);
        return result;
    }
    void make_file(const std::string &sql)
    {
        sqlite3 *other = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
        ASSERT_EQ(run(other, sql), "");
        sqlite3_close(other);
    }
    void make_tbls(int count)
    {
        reset_schema();
        for (int n = 0; n < count; n++) {
            const std::string name = "T" + std::to_string(n);
            add_tbl(name.c_str(), name.c_str());
            add_col(name.c_str(), "a", "A");
            add_text_col(name.c_str(), "b", "B", true);
            set_pk(name.c_str(), "a");
            tov_schema__add_to_unique_constraint(ctx, schema, name.c_str(), "b", "uq");
            if (n > 0)
                set_fk(name.c_str(), "a", ("T" + std::to_string(n / 2)).c_str(), "a", "CASCADE");
        }
    }
    size_t count_files() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    fs::path folder_;
    fs::path file;
};

static constexpr const char *all_objects = "SELECT rowid, type, name, tbl_name, rootpage, sql FROM sqlite_master";

TEST_F(ClientCreate, MakesTheFileThatTheScriptMakes)
{
    make_tbls(5);
    open(nullptr);
    expect_created();
    const std::string objects = in_file(all_objects);
    EXPECT_EQ(objects, rows(connection, all_objects));
    EXPECT_NE(objects.find("tov_delete_T0"), std::string::npos);
    EXPECT_EQ(in_file("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(in_file("PRAGMA foreign_key_check"), "");
    EXPECT_EQ(count_files(), 1u);
}

TEST_F(ClientCreate, MakesChecksAndTriggersThatWork)
{
    make_tbls(3);
    expect_created();
    EXPECT_EQ(in_file("INSERT INTO T0 VALUES('x', 'y')"),
              "error: CHECK constraint failed: [A] constraint violation: type mismatch: sint32(integer)");
    EXPECT_EQ(in_file("INSERT INTO T0 VALUES(1,'x'); INSERT INTO T1 VALUES(1,'x'); INSERT INTO T2 VALUES(1,'x');"
                      "DELETE FROM T0; SELECT (SELECT count(*) FROM T1), (SELECT count(*) FROM T2)"),
              "0|0");
}

TEST_F(ClientCreate, AddsToADatabaseThatHasOtherThings)
{
    make_file("CREATE TABLE mine(x); INSERT INTO mine VALUES(42)");
    make_tbls(2);
    expect_created();
    EXPECT_EQ(in_file("SELECT x FROM mine"), "42");
    EXPECT_EQ(in_file("SELECT group_concat(name) FROM sqlite_master WHERE type = 'table'"), "mine,T0,T1,tov_schema");
}

namespace {
struct taken_case {
    const char *sql;
    const char *named;
};
} // namespace

TEST_F(ClientCreate, RefusesADatabaseThatHasAThingOfANeededName)
{
    static constexpr taken_case cases[] = {
        {"CREATE TABLE t1(x)", "table \"T1\""},
        {"CREATE VIEW T1 AS SELECT 1", "table \"T1\""},
        {"CREATE TABLE x(x); CREATE INDEX t0 ON x(x)", "table \"T0\""},
        {"CREATE TABLE x(x); CREATE TRIGGER TOV_delete_T0 AFTER INSERT ON x BEGIN SELECT 1; END",
         "trigger \"tov_delete_T0\""},
    };
    make_tbls(2);
    for (const taken_case &c : cases) {
        SCOPED_TRACE(c.sql);
        fs::remove(file);
        make_file(c.sql);
        const std::string before = in_file(all_objects);
        create();
        const std::string expected = std::string(c.named) + ": an object of this name already exists";
        EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_ERROR), expected.c_str());
        reset();
        EXPECT_EQ(in_file(all_objects), before);
    }
}

TEST_F(ClientCreate, RefusesASchemaBeforeItTouchesTheFile)
{
    make_tbls(2);
    tov_schema__set_tbl_name(ctx, schema, "T1", "x\"y");
    create();
    EXPECT_ERROR(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"x\"y\": a name with a double quote");
    reset();
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(ClientCreate, RemovesTheFileThatItMadeWhenItFails)
{
    make_tbls(2);
    add_col("T1", "i", "I", "identity");
    add_col("T1", "j", "J", "identity");
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_ERROR), "table \"T1\": table \"T1\" has more than one primary key");
    reset();
    EXPECT_EQ(count_files(), 0u);
}

TEST_F(ClientCreate, LeavesAnEmptyFileThatWasThere)
{
    std::ofstream(file).close();
    make_tbls(1);
    add_col("T0", "i", "I", "identity");
    add_col("T0", "j", "J", "identity");
    create();
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_ERROR));
    reset();
    EXPECT_TRUE(fs::exists(file));
    make_tbls(1);
    expect_created();
}

TEST_F(ClientCreate, SaysWhatIsWrongWithTheFile)
{
    make_tbls(1);
    std::ofstream(file) << std::string(4096, 'x');
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_NOTADB), "file is not a database");
    reset();
    file = folder_ / "absent" / "created.db";
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_CANTOPEN), "unable to open database file");
    reset();
}

TEST_F(ClientCreate, MakesAFileOfEachName)
{
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    make_tbls(1);
    for (const char *name : {":memory:", "file:created.db?mode=memory", "created.db"}) {
        SCOPED_TRACE(name);
        tov_client__create_database(ctx, schema, name, nullptr, nullptr);
        EXPECT_OK(ctx);
        file = folder_ / name;
        EXPECT_EQ(in_file("SELECT group_concat(name) FROM sqlite_master WHERE type = 'table'"), "T0,tov_schema");
    }
    tov_client__create_database(ctx, schema, "", nullptr, nullptr);
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_CANTOPEN), "unable to open database file");
    reset();
    fs::current_path(before);
}

// While SQLite reads the schema of a connection that may write to it, it overlooks such damage.
TEST_F(ClientCreate, RefusesADamagedDatabase)
{
    make_file("CREATE TABLE mine(x); PRAGMA writable_schema=ON;"
              "UPDATE sqlite_master SET sql = 'CREATE TABLE mine(x, x)'");
    make_tbls(1);
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_CORRUPT), "malformed database schema (mine) - duplicate column name: x");
    reset();
}

TEST_F(ClientCreate, TellsHowFarItIs)
{
    make_tbls(3);
    std::vector<std::pair<uint32_t, uint32_t>> told;
    const auto note = [](void *data, uint32_t done, uint32_t total) {
        static_cast<std::vector<std::pair<uint32_t, uint32_t>> *>(data)->emplace_back(done, total);
    };
    tov_client__create_database(ctx, schema, file.c_str(), note, &told);
    EXPECT_OK(ctx);
    // Three tables, the triggers of two that others refer to, and the record of the schema.
    ASSERT_EQ(told.size(), 6u);
    for (uint32_t n = 0; n < told.size(); n++)
        EXPECT_EQ(told[n], std::pair(n + 1, 6u));
}

TEST_F(ClientCreate, OfNoTablesRecordsThat)
{
    expect_created();
    EXPECT_EQ(in_file("SELECT group_concat(name) FROM sqlite_master"), "tov_schema");
}

// Failures that change nothing: when a statement or a connection ends, and when no wait can be agreed on.
static bool may_be_survived(kt_sqlite_entry entry)
{
    return entry == kt_sqlite_entry::none || entry == kt_sqlite_entry::finalize || entry == kt_sqlite_entry::close ||
           entry == kt_sqlite_entry::busy_timeout || entry == kt_sqlite_entry::column_text;
}

TEST_F(ClientCreate, SurvivesEachFailureOfSqlite)
{
    make_tbls(2);
    tov_schema__set_colcon_defval(ctx, schema, "T0", "b", 1, nullptr, "'x'");
    tov_schema__add_check_constraint(ctx, schema, "T0", "ck", "A > 0");
    kt_counting_sqlite sqlite;
    const auto create_anew = [&] {
        fs::remove(file);
        create();
    };
    const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
        SCOPED_TRACE(std::to_string(static_cast<int>(entry)) + ", call " + std::to_string(turn) + ", code " +
                     std::to_string(code));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        sqlite.fail(kt_sqlite_entry::none, 0);
        if (KT_context__has_err(ctx)) {
            const int expected = code ? code : SQLITE_NOMEM; // what comes of an entry that answers nothing
            EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(expected)) << KT_context__err_description(ctx);
            EXPECT_NE(strstr(KT_context__err_description(ctx), sqlite3_errstr(expected)), nullptr)
                << KT_context__err_description(ctx);
            EXPECT_GT(KT_context__count_err_stackframes(ctx), 1u);
            EXPECT_FALSE(fs::exists(file));
        } else {
            EXPECT_TRUE(may_be_survived(entry));
            EXPECT_EQ(in_file("SELECT count(*) FROM sqlite_master WHERE type='trigger'"), "1");
        }
        reset();
    };
    const int failed_calls = kt_sweep_sqlite(sqlite, create_anew, judge);
    EXPECT_GT(failed_calls, 6 * 60);
    RecordProperty("failed calls", failed_calls);
}

TEST_F(ClientCreate, SaysWhatSqliteSays)
{
    make_tbls(1);
    kt_counting_sqlite sqlite;
    sqlite.fail(kt_sqlite_entry::open, 1, SQLITE_FULL);
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_FULL), "database or disk is full");
    EXPECT_GE(KT_context__count_err_stackframes(ctx), 2u);
    const char *frame = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, 0, &frame, &line);
    EXPECT_STREQ(frame, "src/client/create/client_database");
    reset();
}

TEST_F(ClientCreate, SurvivesFailingAllocations)
{
    make_tbls(2);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        fs::remove(file);
        create();
        const bool failed = KT_context__has_err(ctx);
        EXPECT_EQ(fs::exists(file), !failed);
        if (!failed && !fault.fired())
            break;
        if (failed) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
    }
}

TEST_F(ClientCreate, WaitsForItsTurnAndGivesUp)
{
    make_file("CREATE TABLE mine(x)");
    make_tbls(1);
    static const KT_sqlite_functions *linked;
    linked = tov__get_sqlite_functions();
    KT_sqlite_functions hasty = *linked;
    hasty.busy_timeout = [](sqlite3 *database, int) { return linked->busy_timeout(database, 1); };
    tov__set_sqlite_functions(&hasty);
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(run(other, "BEGIN IMMEDIATE"), "");
    create();
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_BUSY), "database is locked");
    reset();
    sqlite3_close(other);
    EXPECT_EQ(in_file("SELECT count(*) FROM sqlite_master"), "1");
}

static constexpr const char *count_objects = "SELECT count(*) FROM sqlite_master WHERE type IN ('table', 'trigger')";

// Creates in a process of its own, which is killed at a moment between its beginning and half as long again as it
// usually takes. Each run has other moments; scripts/kill makes many runs.
TEST_F(ClientCreate, KilledAtAnyMomentLeavesAllTablesOrNone)
{
    make_tbls(300);
    const auto start = std::chrono::steady_clock::now();
    expect_created();
    const auto usual = std::chrono::steady_clock::now() - start;
    const std::string all = in_file(count_objects);
    std::random_device seed;
    std::minstd_rand random(seed());
    std::uniform_int_distribution<int64_t> moment(0, usual.count() * 3 / 2);
    const int count = 12;
    int none_left = 0;
    for (int n = 0; n < count; n++) {
        fs::remove(file);
        const std::chrono::steady_clock::duration wait(moment(random));
        SCOPED_TRACE(std::chrono::duration_cast<std::chrono::microseconds>(wait).count());
        const pid_t child = fork();
        if (child == 0) {
            create();
            _exit(0);
        }
        std::this_thread::sleep_for(wait);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string left = fs::exists(file) ? in_file(count_objects) : "0";
        EXPECT_TRUE(left == all || left == "0") << left;
        none_left += left == "0";
    }
    EXPECT_GT(none_left, 0);
    std::printf("killed %d times, %d times before the tables were there\n", count, none_left);
}

// A limit to the size of files is a disk that is full at that point.
TEST_F(ClientCreate, OnAFullDiskLeavesNoTables)
{
    make_tbls(300);
    expect_created();
    const uintmax_t size = fs::file_size(file);
    int count = 0;
    for (uintmax_t limit = 1; limit < size; limit += size / 16, count++) {
        SCOPED_TRACE(limit);
        fs::remove(file);
        const pid_t child = fork();
        if (child == 0) {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit file_size = {limit, limit};
            setrlimit(RLIMIT_FSIZE, &file_size);
            create();
            const uint64_t code = KT_context__err_code(ctx);
            _exit(code == KT_ERR_SQLITE(SQLITE_FULL) || code == KT_ERR_SQLITE(SQLITE_IOERR) ? 7 : 8);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 7);
        EXPECT_EQ(fs::exists(file) ? in_file(count_objects) : "0", "0");
    }
    std::printf("out of disk %d times\n", count);
}
