#include "bench_business.hpp"

#include "bench_schema.hpp"
#include "create/client_indexes.hpp"
#include "create/client_tbl_statement.hpp"
#include "tov_host.h"

#include <sqlite3.h>

#include <ctime>
#include <memory>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

// What a column is and its default; the shares are those of everyday schemas.
struct column_kind {
    const char *type;
    const char *defval;
};
constexpr column_kind kinds[] = {
    {"nvarchar(50)", "N''"},
    {"nvarchar(100)", "N''"},
    {"nvarchar(20)", "N'new'"},
    {"nvarchar(255)", ""},
    {"varchar(20)", "''"},
    {"nvarchar(max)", ""},
    {"int", "0"},
    {"int", "1"},
    {"int", "0"},
    {"smallint", "0"},
    {"decimal(18, 2)", "0"},
    {"money", "0"},
    {"bit", "0"},
    {"bit", "1"},
    {"datetime", "getdate()"},
    {"datetime", ""},
    {"date", ""},
    {"float", "0"},
    {"int", "0"},
    {"uniqueidentifier", ""},
};

std::string tbl_name(uint32_t n)
{
    constexpr const char *words[] = {"Order", "Customer", "Stock", "Invoice", "Address", "Product", "Shipment"};
    return words[n % std::size(words)] + std::to_string(n);
}

std::string key_of(uint32_t n)
{
    return "CONSTRAINT PK_" + tbl_name(n) + " PRIMARY KEY (Id)";
}

std::string column(uint32_t tbl, uint32_t n, std::mt19937 &random)
{
    const column_kind &kind = kinds[random() % std::size(kinds)];
    const std::string name = "Column" + std::to_string(n);
    std::string text = "  " + name + " " + kind.type + (random() % 2 ? " NOT NULL" : " NULL");
    if (*kind.defval && random() % 5 == 0)
        text += " CONSTRAINT DF_" + tbl_name(tbl) + "_" + name + " DEFAULT " + kind.defval;
    return text + ",\n";
}

// The second column and, in wide tables, some more refer to earlier tables.
std::string reference(uint32_t tbl, uint32_t n, std::mt19937 &random)
{
    const std::string name = "Column" + std::to_string(n);
    return "  " + name + " int NULL CONSTRAINT FK_" + tbl_name(tbl) + "_" + name + " REFERENCES " +
           tbl_name(static_cast<uint32_t>(random() % tbl)) + "(Id),\n";
}

void run(sqlite3 *connection, const std::string &sql)
{
    if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(connection));
}

} // namespace

std::string bench_business_script(uint32_t tables, uint32_t columns)
{
    std::mt19937 random(42);
    std::string script;
    uint32_t left = columns;
    for (uint32_t n = 0; n < tables; n++) {
        const uint32_t count = left / (tables - n);
        left -= count;
        script += "CREATE TABLE " + tbl_name(n) + " (\n  Id int IDENTITY(1,1) NOT NULL,\n";
        for (uint32_t c = 2; c <= count; c++)
            script += n > 0 && c % 8 == 2 ? reference(n, c, random) : column(n, c, random);
        script += "  " + key_of(n) + (random() % 3 ? "" : ",\n  CONSTRAINT UQ_" + tbl_name(n) + " UNIQUE (Column3)") +
                  "\n)\nGO\n";
    }
    return script;
}

bench_business::bench_business(const std::string &script)
{
    std::string name = (fs::temp_directory_path() / "tov_business_XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no folder for databases");
    folder_ = name;
    KT_varray *findings = nullptr;
    tov_host__import(bench_ctx(), script.data(), script.size(), nullptr, &schema, &findings);
    bench_check();
    KT_varray__free(bench_ctx(), findings);
}

bench_business::~bench_business()
{
    tov_schema__nullfree(bench_ctx(), &schema);
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void bench_business::create(const bench_form &form, const std::string &path) const
{
    tov_client_create_options options{};
    options.checks = form.checks;
    options.rules = form.rules;
    options.no_record = 1;
    tov_client__create_database__with(bench_ctx(), schema, path.c_str(), &options);
    bench_check();
}

void bench_business::make_bare_statements()
{
    if (!bare_tbls_.empty())
        return;
    KT_context *ctx = bench_ctx();
    client_plan plan;
    client_code_pages pages;
    plan.with_rules = false;
    client_make_plan(ctx, schema, plan);
    bench_check();
    for (const client_tbl &tbl : plan.tbls) {
        kt_owned_string sql{ctx};
        KT_string__alloc(ctx, sql.out());
        client_write_tbl(ctx, schema, tbl, {false, false, pages}, sql);
        bench_check();
        bare_tbls_.emplace_back(KT_string__sz(sql));
        for (const client_index &index : tbl.indexes)
            bare_indexes_.push_back(client_index_statement(tbl, index));
    }
}

void bench_business::create_bare(const std::string &path, bool with_indexes)
{
    sqlite3 *connection = nullptr;
    make_bare_statements();
    sqlite3_open(path.c_str(), &connection);
    run(connection, "BEGIN IMMEDIATE");
    for (const std::string &statement : bare_tbls_)
        run(connection, statement);
    for (size_t n = 0; with_indexes && n < bare_indexes_.size(); n++)
        run(connection, bare_indexes_[n]);
    run(connection, "COMMIT");
    sqlite3_close(connection);
}

const std::string &bench_business::database(const bench_form *form)
{
    std::string &database = databases_[form ? form->name : "bare"];
    if (!database.empty())
        return database;
    database = path(std::string(form ? form->name : "bare") + ".db");
    if (form)
        create(*form, database);
    else
        create_bare(database, true);
    return database;
}

bench_business &bench_business_of(uint32_t tables, uint32_t columns)
{
    static std::map<uint32_t, std::unique_ptr<bench_business>> made;
    std::unique_ptr<bench_business> &entry = made[tables];
    if (!entry)
        entry = std::make_unique<bench_business>(bench_business_script(tables, columns));
    return *entry;
}

double bench_processor_time()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}
