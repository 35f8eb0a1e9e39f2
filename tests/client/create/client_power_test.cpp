// What creating leaves where the power goes off: all tables or none, whatever the disk had written by then.
#include "client_test.hpp"
#include "lossy_disk.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

class ClientPower : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        std::string folder = (fs::temp_directory_path() / "client_power_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        file = folder_ / "created.db";
        make_tbls();
    }
    void TearDown() override
    {
        fs::remove_all(folder_);
        ClientTest::TearDown();
    }
    // Enough tables for some dozens of pages.
    void make_tbls()
    {
        reset_schema();
        for (int n = 0; n < 12; n++) {
            const std::string name = "T" + std::to_string(n);
            add_tbl(name.c_str(), name.c_str());
            add_col(name.c_str(), "a", "A");
            add_text_col(name.c_str(), "b", "B", true);
            set_pk(name.c_str(), "a");
            if (n > 0)
                set_fk(name.c_str(), "a", ("T" + std::to_string(n / 2)).c_str(), "a", "CASCADE");
        }
    }
    // Creates on the disk, loses the power after every step in several ways, and answers how many ways were not in
    // order: neither all that create makes nor nothing of it, rows of before that are gone, a damaged file.
    int count_damages(lossy_disk &disk)
    {
        const bool has_rows = fs::exists(file);
        if (has_rows) {
            std::ifstream input(file, std::ios::binary);
            disk.add_file("created.db", {std::istreambuf_iterator<char>(input), {}});
        }
        tov_client__create_database(ctx, schema, file.c_str(), nullptr, nullptr);
        EXPECT_OK(ctx);
        const std::string all = state_of(file, has_rows);
        std::minstd_rand random(1);
        int damages = 0;
        for (size_t n = 0; n <= disk.steps(); n++) {
            for (int way = 0; way < 8; way++) {
                const fs::path left = folder_ / "left";
                fs::create_directory(left);
                disk.lose_power(n, random, left);
                const std::string state = state_of(left / "created.db", has_rows);
                damages += state != all && state != "0 objects, ok";
                none_left += state == "0 objects, ok";
                all_left += state == all;
                fs::remove_all(left);
            }
        }
        return damages;
    }
    // The number of objects that create made, and whether SQLite finds the database sound.
    static std::string state_of(const fs::path &path, bool has_rows)
    {
        if (!fs::exists(path))
            return has_rows ? "no file" : "0 objects, ok";
        sqlite3 *database = nullptr;
        sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, "unix");
        std::string state = rows(database, "SELECT count(*) || ' objects' FROM sqlite_master WHERE name <> 'mine'");
        state += ", " + rows(database, "PRAGMA integrity_check");
        if (has_rows && rows(database, "SELECT sum(x) FROM mine") != "500500")
            state += ", rows are gone";
        sqlite3_close(database);
        return state;
    }

    fs::path folder_;
    fs::path file;
    int none_left = 0;
    int all_left = 0;
};

TEST_F(ClientPower, LossLeavesAllTablesOrNone)
{
    lossy_disk disk;
    EXPECT_EQ(count_damages(disk), 0);
    EXPECT_GT(disk.steps(), 20u);
    EXPECT_GT(none_left, 0);
    EXPECT_GT(all_left, 0);
}

TEST_F(ClientPower, LossLeavesWhatWasThereBefore)
{
    sqlite3 *before = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &before), SQLITE_OK);
    ASSERT_EQ(run(before, "CREATE TABLE mine(x); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE "
                          "i < 1000) INSERT INTO mine SELECT i FROM n"),
              "");
    sqlite3_close(before);
    lossy_disk disk;
    EXPECT_EQ(count_damages(disk), 0);
    EXPECT_GT(none_left, 0);
    EXPECT_GT(all_left, 0);
}

// The test itself: a disk that does not do what it says is found out.
TEST_F(ClientPower, LossOfADiskThatLiesDoesDamage)
{
    lossy_disk disk(true);
    EXPECT_GT(count_damages(disk), 0);
}
