// A load that is killed and started again ends like one that is not. Each run has other moments; scripts/kill makes
// many runs.
#include "load_test.hpp"

#include <chrono>
#include <filesystem>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Machines with times that have to be shortened, and their runs; on both tables keys and checks refuse rows. Counts are
// the row parts of a package, and a table without a key, which would not refuse a row that came twice.
constexpr const char *plant_document = R"json({"compat_level":1,"backend":{},"tbls":{
"1":{"name":"Machines","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
 "2":{"name":"At","type":{"name":"time","precision":7}}},
 "server":{"schema":"dbo","name":"Machines","cols":[
  {"name":"Id","id":"1","type":"int"},{"name":"At","id":"2","type":"time","scale":7,"nullable":true}]}},
"2":{"name":"Runs","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"identity"},"notnull":{}},
 "2":{"name":"Machine","type":{"name":"sint32"}},
 "3":{"name":"Price","type":{"name":"decimal","precision":9,"scale":2}}},
 "server":{"schema":"dbo","name":"Runs","cols":[
  {"name":"Id","id":"1","type":"int","identity":["1","1"]},{"name":"Machine","id":"2","type":"int","nullable":true},
  {"name":"Price","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true}]}},
"3":{"name":"Counts","txid":0,"cols":{
 "1":{"name":"N","type":{"name":"sint32"},"notnull":{}}},
 "server":{"schema":"dbo","name":"Counts","cols":[{"name":"N","id":"1","type":"int"}]}}}})json";

constexpr int machine_count = 1500;
constexpr int run_count = 2500;
constexpr int count_count = 1000;

void read_counts(KT_context *ctx, void *, tov_client_take_part take, void *take_data)
{
    for (int n = 0; n < count_count && !KT_context__has_err(ctx); n++) {
        const char row[] = {static_cast<char>(n & 0xFF), static_cast<char>(n >> 8), 0, 0};
        take(ctx, take_data, "dbo", "Counts", 0, row, sizeof row);
    }
    if (!KT_context__has_err(ctx))
        take(ctx, take_data, "dbo", "Counts", 0, nullptr, 0);
}

class ClientLoadKilled : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        reset_schema_to(plant_document);
        set_pk("1", "1");
        set_fk("2", "2", "1", "1", "NO ACTION");
        tov_schema__add_check_constraint(ctx, schema, "2", "c", "\"Price\" < 90000");
        ASSERT_OK(ctx);
        files = {write("Machines.dat", machines()), write("Runs.dat", runs()), write("more.sql", statements())};
    }
    static std::string machines()
    {
        std::string text;
        for (int n = 0; n < machine_count; n++) {
            const int id = n % 97 == 96 ? n - 1 : n; // some twice
            text +=
                std::to_string(id) + (n % 31 == 30 ? "\tnoon\n" : "\t07:00:00.123" + std::to_string(n % 10) + "567\n");
        }
        return text;
    }
    static std::string runs()
    {
        std::string text;
        for (int n = 1; n <= run_count; n++) {
            const int machine = n % 53 == 52 ? machine_count + n : n % machine_count; // some refer to nothing
            text += std::to_string(n) + "\t" + std::to_string(machine) + "\t" + std::to_string(n % 910) + ".50\n";
        }
        return text;
    }
    static std::string statements()
    {
        std::string text;
        for (int n = 0; n < 400; n++) {
            text += "INSERT Machines (Id, At) VALUES (" + std::to_string(10'000 + n) + ", '08:00:00.000499');\n";
            text += "INSERT INTO dbo.Runs (Id, Machine) VALUES (" + std::to_string(20'000 + n) + ", " +
                    std::to_string(n % 7 == 6 ? 99'999 : 10'000 + n) + ");\n";
        }
        return text;
    }
    tov_client_load_options options(const std::string &rejects) const
    {
        tov_client_load_options result = {};
        result.rejects = rejects.c_str();
        result.batch = 150;
        return result;
    }
    void load_more(tov_client_loader *loader) override
    {
        tov_client__load_parts(ctx, loader, "package", read_counts, nullptr);
    }
    // Loads into a database in a process of its own, which is killed after a while; whether it was faster.
    bool load_until(const std::string &name, const std::string &rejects, std::chrono::steady_clock::duration wait)
    {
        const pid_t child = fork();
        if (child == 0) {
            load(files, options(rejects), name);
            _exit(KT_context__has_err(ctx) ? 1 : 0);
        }
        std::this_thread::sleep_for(wait);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
        return !WIFSIGNALED(status);
    }
    // Everything that a load leaves: rows, records, refused rows, and what it tells.
    std::string state_of(const std::string &name, const std::string &rejects)
    {
        std::string state = load(files, options(rejects), name) + "\n" + told + "\n";
        for (const char *sql :
             {"PRAGMA integrity_check", "PRAGMA foreign_key_check", "SELECT * FROM Machines", "SELECT * FROM Runs",
              "SELECT * FROM Counts", "SELECT * FROM tov_load_progress ORDER BY id", "SELECT * FROM tov_load_runs"})
            state += query(sql, name) + "\n";
        for (const std::string &file : files) {
            const std::string refused = fs::path(rejects).filename() / fs::path(file).filename();
            state += read(refused) + read(refused + ".jsonl");
        }
        return state;
    }

    std::vector<std::string> files;
};

TEST_F(ClientLoadKilled, AtAnyMomentItGoesOnAsIfItHadNotBeen)
{
    const std::string rejects = path("rejects");
    create("whole");
    const auto start = std::chrono::steady_clock::now();
    load(files, options(rejects), "whole");
    ASSERT_OK(ctx);
    const auto usual = std::chrono::steady_clock::now() - start;
    const std::string expected = state_of("whole", rejects);
    ASSERT_NE(expected.find("Machines 1500 1438 62; Runs 2500 "), std::string::npos) << expected.substr(0, 200);
    std::random_device seed;
    std::minstd_rand random(seed());
    std::uniform_int_distribution<int64_t> moment(0, usual.count() / 4);
    int kills = 0;
    for (int loads = 0; kills < 20; loads++) {
        const std::string name = "killed" + std::to_string(loads);
        const std::string kept = path(name + "_rejects");
        create(name);
        // A process that never lives to its first commit would be started for ever: each gets longer than the last.
        std::chrono::steady_clock::duration wait(moment(random));
        for (; !load_until(name, kept, wait); kills++)
            wait += wait / 2 + usual / 16;
        EXPECT_EQ(state_of(name, kept), expected);
    }
    std::printf("load killed %d times\n", kills);
}

} // namespace
