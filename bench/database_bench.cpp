// What a program feels that uses a created database: opening it, inserting and changing rows. Each form of checks
// beside the same tables, keys, references, defaults and indexes without them.
#include "bench_business.hpp"
#include "bench_report.hpp"

#include <sqlite3.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr const char *bare = "the bare tables";

// Tables and columns of the databases that are opened.
constexpr std::pair<uint32_t, uint32_t> sizes[] = {{71, 497}, {835, 8350}};

constexpr uint32_t row_count = 100'000;

constexpr const char *sales_script = "CREATE TABLE Customer (Id int NOT NULL PRIMARY KEY, Name nvarchar(50) NOT NULL)\n"
                                     "GO\n"
                                     "CREATE TABLE Sales (\n"
                                     "  Id int IDENTITY(1,1) NOT NULL PRIMARY KEY,\n"
                                     "  CustomerId int NOT NULL REFERENCES Customer(Id),\n"
                                     "  Name nvarchar(50) NOT NULL,\n"
                                     "  Code varchar(20) NULL,\n"
                                     "  Price decimal(18, 2) NOT NULL DEFAULT 0,\n"
                                     "  Placed datetime NOT NULL DEFAULT getdate(),\n"
                                     "  Shipped date NULL,\n"
                                     "  Done bit NOT NULL DEFAULT 0,\n"
                                     "  Quantity smallint NOT NULL DEFAULT 1,\n"
                                     "  Tax money NULL,\n"
                                     "  Weight float NULL,\n"
                                     "  RowKey uniqueidentifier NOT NULL)\n";

// A prepared statement with values for its parameters.
class statement {
  public:
    statement(sqlite3 *connection, const char *sql) : connection_(connection)
    {
        if (sqlite3_prepare_v2(connection, sql, -1, &handle_, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection));
    }
    ~statement()
    {
        sqlite3_finalize(handle_);
    }
    statement(const statement &) = delete;
    statement &operator=(const statement &) = delete;

    statement &bind(int64_t value)
    {
        sqlite3_bind_int64(handle_, ++place_, value);
        return *this;
    }
    statement &bind(double value)
    {
        sqlite3_bind_double(handle_, ++place_, value);
        return *this;
    }
    statement &bind(const char *value)
    {
        sqlite3_bind_text(handle_, ++place_, value, -1, SQLITE_STATIC);
        return *this;
    }
    statement &bind_guid(const char *value)
    {
        sqlite3_bind_blob(handle_, ++place_, value, 16, SQLITE_STATIC);
        return *this;
    }
    void run()
    {
        sqlite3_step(handle_);
        if (sqlite3_reset(handle_) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection_));
        place_ = 0;
    }

  private:
    sqlite3 *connection_;
    sqlite3_stmt *handle_ = nullptr;
    int place_ = 0;
};

struct sale {
    int64_t customer, price, done, quantity, tax;
    double weight;
    char name[40], code[20], placed[24], shipped[12], key[17];
};

sale make_sale(std::mt19937 &random)
{
    sale row{};
    const auto part = [&](unsigned below) { return static_cast<unsigned>(random() % below); };
    row.customer = 1 + part(1000);
    row.price = part(10'000'000);
    row.done = part(2);
    row.quantity = part(30'000);
    row.tax = part(1'000'000);
    row.weight = part(100'000) / 8.0;
    const unsigned year = 2000 + part(25), month = 1 + part(12), day = 1 + part(28);
    std::snprintf(row.name, sizeof row.name, "Customer's parcel number %u", part(1'000'000));
    std::snprintf(row.code, sizeof row.code, "%03u-%05u", part(1000), part(100'000));
    std::snprintf(row.placed, sizeof row.placed, "%04u-%02u-%02u %02u:%02u:%02u.%02u%c", year % 10'000, month % 100,
                  day % 100, part(24), part(60), part(60), part(100), "037"[part(3)]);
    std::snprintf(row.shipped, sizeof row.shipped, "%04u-%02u-%02u", year % 10'000, month % 100, day % 100);
    for (size_t n = 0; n < 16; n++)
        row.key[n] = static_cast<char>(random());
    return row;
}

// Two sets of rows, so that changing to the one and back changes something each time.
const std::vector<sale> &rows(size_t turn)
{
    static const std::vector<std::vector<sale>> sets = [] {
        std::mt19937 random(8);
        std::vector<std::vector<sale>> made(2);
        for (std::vector<sale> &set : made)
            for (uint32_t n = 0; n < row_count; n++)
                set.push_back(make_sale(random));
        return made;
    }();
    return sets[turn % 2];
}

void bind_all(statement &to, const sale &row)
{
    to.bind(row.customer).bind(row.name).bind(row.code).bind(row.price).bind(row.placed).bind(row.shipped);
    to.bind(row.done).bind(row.quantity).bind(row.tax).bind(row.weight).bind_guid(row.key);
}

struct change {
    const char *name;
    const char *title;
    const char *sql;
    void (*bind)(statement &to, const sale &row);
};

constexpr change changes[] = {
    {"insert", "insert 100,000 rows of 12 columns, checks ",
     "INSERT INTO Sales(CustomerId, Name, Code, Price, Placed, Shipped, Done, Quantity, Tax, Weight, RowKey, Id) "
     "VALUES(?,?,?,?,?,?,?,?,?,?,?,?)",
     bind_all},
    {"update_row", "change 100,000 rows, 11 columns each, checks ",
     "UPDATE Sales SET CustomerId=?, Name=?, Code=?, Price=?, Placed=?, Shipped=?, Done=?, Quantity=?, Tax=?, "
     "Weight=?, "
     "RowKey=? WHERE Id=?",
     bind_all},
    {"update_integer", "change 100,000 integers, checks ", "UPDATE Sales SET Quantity=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind(row.quantity); }},
    {"update_string", "change 100,000 strings, checks ", "UPDATE Sales SET Name=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind(row.name); }},
    {"update_moment", "change 100,000 moments, checks ", "UPDATE Sales SET Placed=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind(row.placed); }},
    {"update_decimal", "change 100,000 decimals, checks ", "UPDATE Sales SET Price=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind(row.price); }},
    {"update_float", "change 100,000 floats, checks ", "UPDATE Sales SET Weight=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind(row.weight); }},
    {"update_guid", "change 100,000 guids, checks ", "UPDATE Sales SET RowKey=? WHERE Id=?",
     [](statement &to, const sale &row) { to.bind_guid(row.key); }},
};

// A database of sales and the connection to it.
class shop {
  public:
    explicit shop(const std::string &path)
    {
        sqlite3_open(path.c_str(), &connection_);
        run("PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF; PRAGMA foreign_keys=ON; "
            "PRAGMA recursive_triggers=ON; WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<1000) "
            "INSERT INTO Customer SELECT i, 'Customer '||i FROM n");
    }
    ~shop()
    {
        sqlite3_close(connection_);
    }
    shop(const shop &) = delete;
    shop &operator=(const shop &) = delete;

    void go(const change &what, size_t turn)
    {
        statement prepared(connection_, what.sql);
        run("BEGIN");
        for (uint32_t n = 0; n < row_count; n++) {
            what.bind(prepared, rows(turn)[n]);
            prepared.bind(int64_t{n} + 1).run();
        }
        run("COMMIT");
    }
    void run(const char *sql)
    {
        if (sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(connection_));
    }

  private:
    sqlite3 *connection_ = nullptr;
};

bench_business &sales()
{
    static bench_business made(sales_script);
    return made;
}

std::unique_ptr<shop> fresh_shop(const bench_form *form)
{
    const std::string path = sales().path(std::string("rows_") + (form ? form->name : "bare") + ".db");
    fs::copy_file(sales().database(form), path, fs::copy_options::overwrite_existing);
    return std::make_unique<shop>(path);
}

// One with all rows, for changing them.
shop &full_shop(const bench_form *form)
{
    static std::map<const bench_form *, std::unique_ptr<shop>> made;
    std::unique_ptr<shop> &entry = made[form];
    if (!entry) {
        entry = fresh_shop(form);
        entry->go(changes[0], 0);
    }
    return *entry;
}

void measure_change(benchmark::State &state, const change *what, const bench_form *form)
{
    const bool inserts = what == changes;
    rows(0);
    static size_t turn = 0;
    for (auto _ : state) {
        const std::unique_ptr<shop> fresh = inserts ? fresh_shop(form) : nullptr;
        shop &of = inserts ? *fresh : full_shop(form);
        const double before = bench_processor_time();
        of.go(*what, ++turn);
        state.SetIterationTime(bench_processor_time() - before);
    }
}

// Opens a connection that has read the whole schema.
sqlite3 *open(const std::string &path)
{
    sqlite3 *connection = nullptr;
    sqlite3_open_v2(path.c_str(), &connection, SQLITE_OPEN_READWRITE, nullptr);
    if (sqlite3_exec(connection, "SELECT 1 FROM sqlite_master LIMIT 1", nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection));
    return connection;
}

void measure_open(benchmark::State &state, const bench_form *form, const std::string &place, uint32_t tables,
                  uint32_t columns)
{
    const std::string &path = bench_business_of(tables, columns).database(form);
    int bytes = 0, most = 0;
    for (auto _ : state) {
        const double before = bench_processor_time();
        sqlite3 *connection = open(path);
        state.SetIterationTime(bench_processor_time() - before);
        sqlite3_db_status(connection, SQLITE_DBSTATUS_SCHEMA_USED, &bytes, &most, 0);
        sqlite3_close(connection);
    }
    bench_add_figure("bytes_schema_" + place, bytes);
    bench_add_figure("bytes_file_" + place, static_cast<double>(fs::file_size(path)));
}

// "constraints/71/ours" of a form and "constraints/71/the bare tables" beside it.
void for_each_pair(uint32_t size, const std::function<void(const bench_form *form, const std::string &place)> &add)
{
    for (const bench_form &form : bench_forms) {
        const std::string place = std::string(form.name) + "/" + std::to_string(size) + "/";
        add(&form, place + "ours");
        add(nullptr, place + bare);
    }
}

// The text lives as long as the program, as the names of cases do.
const char *kept(const std::string &text)
{
    static std::vector<std::unique_ptr<std::string>> texts;
    texts.push_back(std::make_unique<std::string>(text));
    return texts.back()->c_str();
}

} // namespace

// The server's rules may cost 1.3 times what the schema's own checks may. Triggers are for those who need them.
void add_database_cases(std::vector<bench_case> &cases)
{
    const auto add = [&](const std::string &name, const std::string &title, double target) {
        for (const bench_form &form : bench_forms) {
            std::map<std::string, double> targets;
            if (form.checks == TOV_CLIENT_CHECKS_CONSTRAINTS)
                targets[""] = target * (form.rules == TOV_CLIENT_RULES_SERVER ? 1.3 : 1.0);
            cases.push_back({kept(name + form.name), kept(title + form.title), targets});
        }
    };
    add("open_", "open a database, checks ", 4.0);
    add("bytes_schema_", "memory of a connection, checks ", 4.0);
    add("bytes_file_", "file without rows, checks ", 1.4);
    for (const change &what : changes)
        add(std::string(what.name) + "_", what.title, &what == changes ? 1.5 : 1.3);
}

void register_database_benches()
{
    for (const auto &[tables, columns] : sizes) {
        for_each_pair(
            tables, [&, tables = tables, columns = columns](const bench_form *form, const std::string &place) {
                benchmark::RegisterBenchmark(("open_" + place).c_str(), measure_open, form, place, tables, columns)
                    ->UseManualTime();
            });
    }
    for (const change &what : changes) {
        for_each_pair(row_count, [&](const bench_form *form, const std::string &place) {
            benchmark::RegisterBenchmark((std::string(what.name) + "_" + place).c_str(), measure_change, &what, form)
                ->Unit(benchmark::kMillisecond)
                ->Repetitions(5)
                ->UseManualTime();
        });
    }
}
