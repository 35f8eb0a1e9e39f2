// Rows: loading and unloading a table of 8 columns, beside the sqlite3 shell, which checks nothing, and beside prepared
// INSERTs of values that are there already.
//
// Processor time is compared, that of the shell's process included, since what the disk takes is the same for both.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "package_builder.hpp"
#include "tov_client.h"
#include "tov_host.h"
#include "tov_row_parts.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sqlite3.h>
#include <sys/resource.h>

namespace fs = std::filesystem;

namespace {

constexpr const char *table_script =
    "CREATE TABLE dbo.Sales (Id int IDENTITY NOT NULL PRIMARY KEY, Name nvarchar(60) NOT NULL, Code char(9) NOT NULL, "
    "Price decimal(9,2) NOT NULL, Placed datetime NOT NULL, Done bit NOT NULL, Quantity smallint NULL, "
    "Note nvarchar(200) NULL);";

// A row as the server has it; a datetime is days since 1900 and 1/300 seconds.
struct sale {
    int32_t id;
    std::string name;
    std::string code;
    int32_t price; // cents
    int32_t days;
    uint32_t ticks;
    bool done;
    int16_t quantity;
    bool has_note;
    std::string note;
};

std::string words(std::mt19937 &random, int count)
{
    static constexpr const char *all[] = {"red", "green", "large", "chair", "table", "cover", "wooden", "express"};
    std::string text;
    for (int n = 0; n < count; n++)
        text += std::string(n ? " " : "") + all[random() % 8];
    return text;
}

sale make_sale(std::mt19937 &random, int32_t id)
{
    sale row;
    char code[10];
    std::snprintf(code, sizeof code, "%03u-%05u", static_cast<unsigned>(random() % 1000),
                  static_cast<unsigned>(random() % 100'000));
    row.id = id;
    row.name = words(random, 4);
    row.code = code;
    row.price = static_cast<int32_t>(random() % 10'000'000);
    row.days = static_cast<int32_t>(36'524 + random() % 8'000); // from 2000 on
    row.ticks = static_cast<uint32_t>(random() % (86'400U * 300U));
    row.done = random() % 2;
    row.quantity = static_cast<int16_t>(random() % 60'000 - 30'000);
    row.has_note = random() % 3 != 0;
    row.note = words(random, 6);
    return row;
}

std::string moment_of(const sale &row)
{
    char text[24];
    const time_t day = (static_cast<time_t>(row.days) - 25'567) * 86'400;
    const unsigned seconds = row.ticks / 300;
    const unsigned thousandths = (row.ticks % 300 * 10 + 1) / 3;
    const size_t size = std::strftime(text, sizeof text, "%Y-%m-%d ", std::gmtime(&day));
    std::snprintf(text + size, sizeof text - size, "%02u:%02u:%02u.%03u", seconds / 3600 % 24, seconds / 60 % 60,
                  seconds % 60, thousandths % 1000);
    return text;
}

std::string line_of(const sale &row)
{
    char price[16];
    std::snprintf(price, sizeof price, "%.2f", row.price / 100.0);
    return std::to_string(row.id) + "\t" + row.name + "\t" + row.code + "\t" + (price + (price[0] == '0' ? 1 : 0)) +
           "\t" + moment_of(row) + "\t" + (row.done ? "1" : "0") + "\t" + std::to_string(row.quantity) + "\t" +
           (row.has_note ? row.note : "") + "\n";
}

void append_little(std::string &bytes, uint64_t number, int size)
{
    for (int n = 0; n < size; n++)
        bytes.push_back(static_cast<char>(number >> (8 * n) & 0xFF));
}

void append_units(std::string &bytes, const std::string &ascii)
{
    for (const char c : ascii) {
        bytes.push_back(c);
        bytes.push_back('\0');
    }
}

// As packages have it: sizes stand before the values that have no size of their own, or may be NULL.
std::string native_of(const sale &row)
{
    std::string bytes;
    append_little(bytes, static_cast<uint32_t>(row.id), 4);
    append_little(bytes, row.name.size() * 2, 2);
    append_units(bytes, row.name);
    append_units(bytes, row.code);
    bytes += std::string("\x13\x09\x02\x01", 4);
    append_little(bytes, static_cast<uint64_t>(row.price), 16 / 2);
    append_little(bytes, 0, 16 / 2);
    append_little(bytes, static_cast<uint32_t>(row.days), 4);
    append_little(bytes, row.ticks, 4);
    bytes += std::string("\x01", 1) + (row.done ? '\1' : '\0');
    bytes.push_back('\2');
    append_little(bytes, static_cast<uint16_t>(row.quantity), 2);
    append_little(bytes, row.has_note ? row.note.size() * 2 : 0xFFFF, 2);
    append_units(bytes, row.has_note ? row.note : "");
    return bytes;
}

// The schema, the rows in each form, and a folder for files; kept for the whole run.
class stage {
  public:
    explicit stage(uint32_t count)
    {
        std::mt19937 random(8);
        std::string name = (fs::temp_directory_path() / "tov_rows_XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("no folder for files");
        folder_ = name;
        std::ofstream file(path("Sales.dat"), std::ios::binary);
        std::string native;
        for (uint32_t n = 0; n < count; n++) {
            rows.push_back(make_sale(random, static_cast<int32_t>(n + 1)));
            file << line_of(rows.back());
            native += native_of(rows.back());
        }
        file.close();
        package = a_package_of(a_model(a_model_table("[dbo].[Sales]", "")), true,
                               {{"Data/dbo.Sales/TableData-000-00000.BCP", native}});
        KT_varray *findings = nullptr;
        tov_host__import(bench_ctx(), table_script, std::char_traits<char>::length(table_script), nullptr, &schema,
                         &findings);
        KT_varray__free(bench_ctx(), findings);
        bench_check();
        create("empty.db");
        fs::copy_file(path("empty.db"), path("full.db"));
        load("full.db");
    }
    ~stage()
    {
        tov_schema__nullfree(bench_ctx(), &schema);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    stage(const stage &) = delete;
    stage &operator=(const stage &) = delete;

    std::string path(const std::string &name) const
    {
        return folder_ / name;
    }
    void create(const std::string &name)
    {
        tov_client__create_database(bench_ctx(), schema, path(name).c_str(), nullptr, nullptr);
        bench_check();
    }
    // A database with the table and nothing in it.
    std::string fresh(const std::string &name) const
    {
        fs::copy_file(path("empty.db"), path(name), fs::copy_options::overwrite_existing);
        return path(name);
    }
    void load(const std::string &database) const
    {
        tov_client_loader *loader = nullptr;
        tov_client__open_loader(bench_ctx(), schema, path(database).c_str(), nullptr, &loader);
        tov_client__load_file(bench_ctx(), loader, path("Sales.dat").c_str());
        finish(loader);
    }
    void load_package(const std::string &database) const;
    void finish(tov_client_loader *loader) const;

    tov_schema *schema = nullptr;
    std::vector<sale> rows;
    std::string package;

  private:
    fs::path folder_;
};

void stage::finish(tov_client_loader *loader) const
{
    KT_context *ctx = bench_ctx();
    KT_varray *report = nullptr;
    KT_varray *remarks = nullptr;
    KT_vhash *record = nullptr;
    int64_t loaded = 0;
    tov_client__finish_load(ctx, loader, &report, &remarks);
    bench_check();
    KT_varray__get__vhash(ctx, report, 0, &record);
    KT_vhash__get__int64(ctx, record, "loaded", &loaded);
    bench_check();
    const char *remark = "";
    uint32_t remark_count = 0;
    KT_varray__count(ctx, remarks, &remark_count);
    if (remark_count > 0)
        KT_varray__get__sz(ctx, remarks, 0, &remark);
    if (static_cast<size_t>(loaded) != rows.size())
        throw std::runtime_error(std::to_string(loaded) + " rows were loaded: " + remark);
    KT_varray__free(ctx, report);
    KT_varray__free(ctx, remarks);
    tov_client__free_loader(ctx, loader);
}

struct part_bridge {
    const std::string &package;
    tov_client_take_part take;
    void *data;
};

void stage::load_package(const std::string &database) const
{
    tov_client_loader *loader = nullptr;
    tov_client_load_options options = {};
    options.is_scratch = 1;
    const auto read = [](KT_context *ctx, void *data, tov_client_take_part take, void *take_data) {
        part_bridge bridge{*static_cast<const std::string *>(data), take, take_data};
        tov_host__read_row_parts(
            ctx, bridge.package.data(), bridge.package.size(),
            [](KT_context *context, void *to, const tov_host_row_part *part, const char *bytes, size_t size) {
                const auto &target = *static_cast<const part_bridge *>(to);
                target.take(context, target.data, part->schema_name, part->tbl_name, part->number, bytes, size);
            },
            &bridge);
    };
    std::string bytes = package;
    tov_client__open_loader(bench_ctx(), schema, path(database).c_str(), &options, &loader);
    tov_client__load_parts(bench_ctx(), loader, "package", read, &bytes);
    bench_check();
    finish(loader);
}

const stage &stage_of(uint32_t count)
{
    static std::map<uint32_t, std::unique_ptr<stage>> made;
    std::unique_ptr<stage> &entry = made[count];
    if (!entry)
        entry = std::make_unique<stage>(count);
    return *entry;
}

double seconds_of(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Processor time of this process, or of those that it waited for.
double processor_time(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return seconds_of(usage.ru_utime) + seconds_of(usage.ru_stime);
}

void run_shell(const stage &of, const std::string &database, const std::string &commands)
{
    std::ofstream(of.path("commands")) << commands;
    const std::string line =
        "sqlite3 -batch -bail '" + of.path(database) + "' < '" + of.path("commands") + "' > /dev/null";
    if (std::system(line.c_str()) != 0)
        throw std::runtime_error("the sqlite3 shell failed");
}

void load_ours(const stage &of)
{
    of.load("loaded.db");
}

void import_in_shell(const stage &of)
{
    run_shell(of, "shell.db", ".mode tabs\n.import '" + of.path("Sales.dat") + "' Sales\n");
}

void unload_as(const stage &of, const char *format)
{
    KT_varray *report = nullptr;
    tov_client_unload_options options = {};
    options.format = format;
    tov_client__unload(bench_ctx(), of.schema, of.path("full.db").c_str(), of.path("unloaded").c_str(), &options,
                       &report);
    bench_check();
    KT_varray__free(bench_ctx(), report);
}

void unload_bcp(const stage &of)
{
    unload_as(of, "bcp");
}

void unload_csv(const stage &of)
{
    unload_as(of, "csv");
}

void select_in_shell(const stage &of)
{
    run_shell(of, "full.db", ".mode csv\n.output '" + of.path("shell.csv") + "'\nSELECT * FROM Sales;\n");
}

void load_package(const stage &of)
{
    of.load_package("loaded.db");
}

// The values are bound as they will be stored; nothing is read, converted or checked.
void insert_prepared(const stage &of)
{
    static std::map<const stage *, std::vector<std::string>> moments; // made before the time counts
    std::vector<std::string> &texts = moments[&of];
    sqlite3 *connection = nullptr;
    sqlite3_stmt *insert = nullptr;
    for (size_t n = texts.size(); n < of.rows.size(); n++)
        texts.push_back(moment_of(of.rows[n]));
    sqlite3_open(of.path("inserted.db").c_str(), &connection);
    sqlite3_exec(connection, "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; BEGIN", nullptr, nullptr, nullptr);
    sqlite3_prepare_v2(connection, "INSERT INTO Sales VALUES (?,?,?,?,?,?,?,?)", -1, &insert, nullptr);
    for (size_t n = 0; n < of.rows.size(); n++) {
        const sale &row = of.rows[n];
        const auto bind = [&](int place, const std::string &text) {
            sqlite3_bind_text(insert, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
        };
        sqlite3_bind_int64(insert, 1, row.id);
        bind(2, row.name);
        bind(3, row.code);
        sqlite3_bind_int64(insert, 4, row.price);
        bind(5, texts[n]);
        sqlite3_bind_int64(insert, 6, row.done);
        sqlite3_bind_int64(insert, 7, row.quantity);
        if (row.has_note)
            bind(8, row.note);
        else
            sqlite3_bind_null(insert, 8);
        sqlite3_step(insert);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    if (sqlite3_exec(connection, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection));
    sqlite3_close(connection);
}

constexpr const char *bare_table =
    "CREATE TABLE Sales (Id INTEGER PRIMARY KEY, Name, Code, Price, Placed, Done, Quantity, Note)";

// A database without a check, a declared type or a trigger.
void make_bare(const stage &of, const char *name)
{
    sqlite3 *connection = nullptr;
    fs::remove(of.path(name));
    sqlite3_open(of.path(name).c_str(), &connection);
    sqlite3_exec(connection, bare_table, nullptr, nullptr, nullptr);
    sqlite3_close(connection);
}

struct rows_case {
    const char *name;
    void (*body)(const stage &of);
    int who; // whose processor time counts
};

constexpr rows_case rows_cases[] = {
    {"rows_load/%/ours", load_ours, RUSAGE_SELF},
    {"rows_load/%/.import into a bare table", import_in_shell, RUSAGE_CHILDREN},
    {"rows_unload/%/ours", unload_bcp, RUSAGE_SELF},
    {"rows_unload/%/.mode csv", select_in_shell, RUSAGE_CHILDREN},
    {"rows_unload_csv/%/ours", unload_csv, RUSAGE_SELF},
    {"rows_unload_csv/%/.mode csv", select_in_shell, RUSAGE_CHILDREN},
    {"rows_package/%/ours", load_package, RUSAGE_SELF},
    {"rows_package/%/prepared INSERTs into a bare table", insert_prepared, RUSAGE_SELF},
};

void measure(benchmark::State &state, const rows_case &which, uint32_t count)
{
    const stage &of = stage_of(count);
    for (auto _ : state) {
        of.fresh("loaded.db");
        make_bare(of, "shell.db");
        make_bare(of, "inserted.db");
        const double before = processor_time(which.who);
        which.body(of);
        state.SetIterationTime(processor_time(which.who) - before);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(count));
}

} // namespace

void register_rows_benches()
{
    for (const uint32_t count : {10'000U, 200'000U}) {
        for (const rows_case &which : rows_cases) {
            std::string name = which.name;
            name.replace(name.find('%'), 1, std::to_string(count));
            benchmark::RegisterBenchmark(name.c_str(), measure, which, count)
                ->Unit(benchmark::kMillisecond)
                ->UseManualTime();
        }
    }
}
