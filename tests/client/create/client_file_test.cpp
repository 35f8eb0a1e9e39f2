// Which file a failing creation removes, while others look for the same file.
#include "create/client_file.hpp"

#include "client_test.hpp"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

// What happens in the moment before a file is removed; the program's own unlink() stands before the C library's.
static std::function<void()> before_unlink;

extern "C" int unlink(const char *path) noexcept
{
    if (const auto hook = std::exchange(before_unlink, nullptr))
        hook();
    return static_cast<int>(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

class ClientFile : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        std::string folder = (fs::temp_directory_path() / "client_file_XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        folder_ = folder;
        path = folder_ / "created.db";
    }
    void TearDown() override
    {
        before_unlink = nullptr;
        fs::remove_all(folder_);
        ClientTest::TearDown();
    }
    // Creates the database with one table; fails where it has two identity columns.
    void create(const char *tbl_name, bool fails)
    {
        reset_schema();
        add_tbl("t", tbl_name);
        add_col("t", "a", "A", "identity");
        if (fails)
            add_col("t", "b", "B", "identity");
        tov_client__create_database(ctx, schema, path.c_str(), nullptr, nullptr);
    }
    std::string tbls_in_file()
    {
        sqlite3 *other = nullptr;
        if (sqlite3_open_v2(path.c_str(), &other, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
            return "no file";
        const std::string result = rows(other, "SELECT name FROM sqlite_master WHERE type = 'table'");
        sqlite3_close(other);
        return result;
    }
    size_t count_files() const
    {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    fs::path folder_;
    fs::path path;
};

// Another process gets half a second to finish a database of its own between the look at the file and its removal. It
// is there from the beginning, because what SQLite knows of locks must not be carried over a fork.
TEST_F(ClientFile, IsNeverRemovedFromUnderAnotherProcess)
{
    int signal[2];
    ASSERT_EQ(pipe(signal), 0);
    const pid_t other = fork();
    if (other == 0) {
        char byte = 0;
        const bool begin = read(signal[0], &byte, 1) == 1;
        create("OfTheOther", false);
        _exit(begin && !KT_context__has_err(ctx) ? 0 : 1);
    }
    bool removed = false;
    before_unlink = [&] {
        removed = write(signal[1], "", 1) == 1;
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    };
    create("Mine", true);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_ERROR));
    reset();
    EXPECT_TRUE(removed);
    ::close(signal[1]);
    int status = 0;
    waitpid(other, &status, 0);
    ::close(signal[0]);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(tbls_in_file(), "OfTheOther tov_schema");
    EXPECT_EQ(count_files(), 1u);
}

TEST_F(ClientFile, IsLeftAloneWhereAnotherIsInItsPlace)
{
    client_file file;
    client_file__make(ctx, path.c_str(), file);
    EXPECT_OK(ctx);
    EXPECT_TRUE(file.made);
    EXPECT_TRUE(client_file__is_there(file));
    fs::rename(path, folder_ / "aside.db");
    EXPECT_FALSE(client_file__is_there(file));
    client_file second;
    client_file__make(ctx, path.c_str(), second);
    EXPECT_FALSE(client_file__is_there(file));
    client_file__remove_if_empty(file);
    EXPECT_TRUE(fs::exists(path));
    client_file__remove_if_empty(second);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(ClientFile, IsLeftAloneWhereAnotherHoldsTheLock)
{
    client_file file;
    client_file__make(ctx, path.c_str(), file);
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(run(other, "BEGIN IMMEDIATE"), "");
    client_file__remove_if_empty(file);
    EXPECT_TRUE(client_file__is_there(file));
    sqlite3_close(other);
}

TEST_F(ClientFile, IsLeftAloneWhereItWasThereBefore)
{
    client_file file;
    client_file__make(ctx, path.c_str(), file);
    client_file second;
    client_file__make(ctx, path.c_str(), second);
    EXPECT_FALSE(second.made);
    EXPECT_TRUE(client_file__is_there(second));
    client_file__remove_if_empty(second);
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(ClientFile, IsNotMadeBehindALinkThatLeadsNowhere)
{
    fs::create_symlink("nowhere.db", path);
    for (const bool fails : {true, false}) {
        create("T", fails);
        EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_CANTOPEN),
                     "unable to open database file: a symbolic link that leads to no file");
        reset();
        EXPECT_EQ(count_files(), 1u);
    }
}

TEST_F(ClientFile, BehindALinkIsUsedAndNeverRemoved)
{
    const fs::path real = folder_ / "real.db";
    ASSERT_EQ(::close(::open(real.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)), 0);
    fs::create_symlink("real.db", path);
    create("T", true);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(SQLITE_ERROR));
    reset();
    EXPECT_TRUE(fs::exists(real));
    create("T", false);
    EXPECT_OK(ctx);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(tbls_in_file(), "T tov_schema");
}

TEST_F(ClientFile, ThatIsRemovedAgainAndAgainIsGivenUp)
{
    static const KT_sqlite_functions *linked;
    static std::string gone;
    linked = tov__get_sqlite_functions();
    gone = path.string();
    KT_sqlite_functions thwarted = *linked;
    thwarted.prepare = [](sqlite3 *database, const char *sql, sqlite3_stmt **statement) {
        if (std::string(sql) == "BEGIN IMMEDIATE")
            fs::remove(gone);
        return linked->prepare(database, sql, statement);
    };
    tov__set_sqlite_functions(&thwarted);
    create("T", false);
    tov__set_sqlite_functions(nullptr);
    EXPECT_ERROR(ctx, KT_ERR_SQLITE(SQLITE_CANTOPEN), "other programs remove the file again and again");
    reset();
    EXPECT_EQ(count_files(), 0u);
}
