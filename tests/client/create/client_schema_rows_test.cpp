#include "create/client_schema_rows.hpp"

#include "client_test.hpp"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

// More tables than are created between two walks to the shelf, so that there is more than one.
static constexpr int tbl_count = 600;

class ClientSchemaRows : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        std::string folder = (fs::temp_directory_path() / "client_rows_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        file_ = folder_ / "created.db";
        for (int n = 0; n < tbl_count; n++)
            add(n);
    }
    void TearDown() override
    {
        tov__set_sqlite_functions(nullptr);
        fs::remove_all(folder_);
        ClientTest::TearDown();
    }
    // The n-th table; every third has a key with an index of its own, all but the first one for their reference.
    void add(int n)
    {
        const std::string name = "T" + std::to_string(n);
        add_tbl(name.c_str(), name.c_str());
        add_col(name.c_str(), "a", "A");
        add_text_col(name.c_str(), "b", "B", true);
        if (n % 3 == 0)
            set_pk(name.c_str(), "a");
        if (n > 0)
            set_fk(name.c_str(), "b", ("T" + std::to_string((n - 1) / 3 * 3)).c_str(), "a", "CASCADE");
    }
    std::string create_and_look(const std::string &sql)
    {
        tov_client__create_database(ctx, schema, file_.c_str(), nullptr, nullptr);
        EXPECT_OK(ctx);
        return look(sql);
    }
    std::string look(const std::string &sql)
    {
        sqlite3 *other = nullptr;
        EXPECT_EQ(sqlite3_open(file_.c_str(), &other), SQLITE_OK);
        const std::string result = rows(other, sql);
        sqlite3_close(other);
        return result;
    }

    fs::path folder_;
    fs::path file_;
};

static constexpr const char *all_objects = "SELECT rowid, type, name, tbl_name, sql FROM sqlite_master";
static constexpr const char *root_pages = "SELECT count(DISTINCT rootpage) FROM sqlite_master WHERE rootpage > 0";

TEST_F(ClientSchemaRows, AreThoseThatSqliteItselfWrites)
{
    open(nullptr);
    EXPECT_EQ(create_and_look(all_objects), rows(connection, all_objects));
    EXPECT_EQ(look(root_pages), std::to_string(tbl_count + tbl_count / 3 + tbl_count - 1 + 1)); // and the record's
    EXPECT_EQ(look("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(look("PRAGMA foreign_keys=ON; INSERT INTO T300 VALUES(1, NULL); INSERT INTO T302 VALUES(7, 'x')"),
              "error: FOREIGN KEY constraint failed");
}

TEST_F(ClientSchemaRows, StandAfterThoseThatWereThere)
{
    look("CREATE TABLE mine(x); CREATE TABLE gone(x); CREATE VIEW v AS SELECT * FROM mine; DROP TABLE gone;"
         "INSERT INTO mine VALUES(42)");
    create_and_look("SELECT 1");
    EXPECT_EQ(look("SELECT group_concat(name) FROM (SELECT name FROM sqlite_master ORDER BY rowid LIMIT 3)"),
              "mine,v,T0");
    EXPECT_EQ(look("SELECT * FROM v"), "42");
    EXPECT_EQ(look("PRAGMA integrity_check"), "ok");
}

// Nothing that would end the creation of tables comes after them: no trigger, no view, no record.
TEST_F(ClientSchemaRows, AreAllThereWhereOnlyTablesAreWanted)
{
    reset_schema();
    for (int n = 0; n < tbl_count; n++) {
        const std::string name = "T" + std::to_string(n);
        add_tbl(name.c_str(), name.c_str());
        add_col(name.c_str(), "a", "A");
    }
    tov_client__create_database__with(ctx, schema, file_.c_str(), &without_record);
    EXPECT_OK(ctx);
    EXPECT_EQ(look("SELECT count(*) FROM sqlite_master"), std::to_string(tbl_count));
}

TEST_F(ClientSchemaRows, SurviveAutomaticVacuuming)
{
    look("PRAGMA auto_vacuum=FULL; CREATE TABLE mine(x); INSERT INTO mine VALUES(zeroblob(100000))");
    create_and_look("SELECT 1");
    EXPECT_EQ(look("PRAGMA auto_vacuum"), "1");
    EXPECT_EQ(look("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(look("SELECT length(x) FROM mine"), "100000");
}

// A schema of ordinary size is created without a word about the schema table.
TEST_F(ClientSchemaRows, AreNotTouchedForFewTables)
{
    static const KT_sqlite_functions *linked = tov__get_sqlite_functions();
    static KT_sqlite_functions watching = *linked; // outlives the connections opened with it
    static bool is_touched;
    watching.prepare = [](sqlite3 *database, const char *sql, sqlite3_stmt **statement) {
        is_touched = is_touched || strstr(sql, "writable_schema");
        return linked->prepare(database, sql, statement);
    };
    tov__set_sqlite_functions(&watching);
    for (const auto &[count, touched] : {std::pair{255, false}, std::pair{256, true}}) {
        SCOPED_TRACE(count);
        reset_schema();
        for (int n = 0; n < count; n++)
            add(n);
        is_touched = false;
        create_and_look("SELECT 1");
        EXPECT_EQ(is_touched, touched);
        fs::remove(file_);
    }
}

// Where writing to the schema table is refused, everything is created the ordinary way.
TEST_F(ClientSchemaRows, AreLeftToSqliteWhereItInsists)
{
    static const KT_sqlite_functions *linked = tov__get_sqlite_functions();
    static KT_sqlite_functions defensive = *linked; // outlives the connections opened with it
    defensive.open = [](const char *file_name, sqlite3 **database, int flags) {
        const int code = linked->open(file_name, database, flags);
        return code ? code : linked->configure(*database, SQLITE_DBCONFIG_DEFENSIVE, 1);
    };
    tov__set_sqlite_functions(&defensive);
    open(nullptr);
    EXPECT_EQ(create_and_look(all_objects), rows(connection, all_objects));
    EXPECT_EQ(look("PRAGMA integrity_check"), "ok");
}
