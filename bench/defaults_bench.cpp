// Defaults: a trial against the same statements issued directly, and the scanner against sqlite3_complete(). Formatted
// text, which all texts are made of, against vsnprintf().

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "defval/defval_tokenizer.hpp"
#include "defval/defval_trial.hpp"
#include "kt_sqlite_functions.h"

#include <cstdarg>
#include <cstdio>
#include <sqlite3.h>

namespace {

constexpr const char *trial_type = "real8";
constexpr const char *trial_literal = "1.5";

void trial(benchmark::State &state)
{
    for (auto _ : state) {
        KT_bool ok = 0;
        _tov_is_valid_constant(bench_ctx(), trial_type, trial_literal, &ok);
        benchmark::DoNotOptimize(ok);
    }
    bench_check();
}

void run(sqlite3 *connection, const char *sql, benchmark::State &state)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr) != SQLITE_OK)
        state.SkipWithError(sqlite3_errmsg(connection));
    while (sqlite3_step(statement) == SQLITE_ROW) {
    }
    sqlite3_finalize(statement);
}

// What the trial makes SQLite do, with its texts at hand; the connection comes from the same door, which prepares it.
void direct(benchmark::State &state)
{
    KT_string *check = nullptr;
    tov_schema__get_validation_expression(bench_ctx(), trial_type, -1, -1, -1, 0, "v", &check);
    const std::string trigger =
        "CREATE TRIGGER bar BEFORE INSERT ON foo\nBEGIN\n\n" + std::string(KT_string__sz(check)) + ";\nEND";
    KT_string__free(bench_ctx(), check);
    for (auto _ : state) {
        sqlite3 *connection = nullptr;
        tov__get_sqlite_functions()->open(":memory:", &connection, 6);
        run(connection, "BEGIN TRANSACTION", state);
        run(connection, "CREATE TABLE foo (v real);", state);
        run(connection, trigger.c_str(), state);
        run(connection, "INSERT OR IGNORE INTO foo (v) VALUES (1.5);", state);
        run(connection, "ROLLBACK TRANSACTION", state);
        sqlite3_close(connection);
    }
}

// SQL as the product writes it: tables, triggers, rows.
std::string sql_text()
{
    std::string text;
    for (int n = 0; text.size() < 1000000; n++) {
        const std::string id = std::to_string(n);
        text += "CREATE TABLE \"Order" + id +
                "\" (\"OrderId\" integer primary key, \"Name\" text COLLATE NOCASE NOT NULL DEFAULT 'it''s', \"Total\" "
                "int CHECK (\"Total\">=0), CustomerId int REFERENCES \"Customers\" (\"Id\") DEFERRABLE INITIALLY "
                "DEFERRED);\n-- a comment\nINSERT INTO [Order" +
                id + "] VALUES (" + id + ", N'abc', 12.5e3, x'0A1B', /* why */ -" + id + ");\n";
    }
    return text;
}

void tokens(benchmark::State &state)
{
    const std::string text = sql_text();
    for (auto _ : state) {
        int64_t sum = 0;
        for (const char *at = text.c_str(); *at;) {
            int32_t code = 0;
            at += _tov_get_token(at, &code);
            sum += code;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

void complete(benchmark::State &state)
{
    const std::string text = sql_text();
    for (auto _ : state)
        benchmark::DoNotOptimize(sqlite3_complete(text.c_str()));
    state.SetBytesProcessed(static_cast<int64_t>(text.size()) * state.iterations());
}

// A list of columns as the generated statements have it, made piece by piece from one format.
constexpr const char *piece_format = "%s\"%s\" %s(%d)";
constexpr int piece_count = 1000;

void format_pieces(benchmark::State &state)
{
    KT_string *text = nullptr;
    for (auto _ : state) {
        KT_string__alloc(bench_ctx(), &text);
        for (int n = 0; n < piece_count; n++)
            KT_string__append__format(bench_ctx(), text, piece_format, n ? "," : "", "CustomerName", "nvarchar", n);
        benchmark::DoNotOptimize(KT_string__sz(text));
        KT_string__free(bench_ctx(), text);
    }
    bench_check();
}

// vsnprintf into a buffer that grows as the string does, which is what a string of our own would be made with.
__attribute__((format(printf, 2, 3))) void append(std::string &text, const char *format, ...)
{
    char piece[256];
    va_list args;
    va_start(args, format);
    const int length = vsnprintf(piece, sizeof(piece), format, args);
    va_end(args);
    text.append(piece, static_cast<size_t>(length));
}

void vsnprintf_pieces(benchmark::State &state)
{
    for (auto _ : state) {
        std::string text;
        for (int n = 0; n < piece_count; n++)
            append(text, piece_format, n ? "," : "", "CustomerName", "nvarchar", n);
        benchmark::DoNotOptimize(text.data());
    }
}

} // namespace

void register_defaults_benches()
{
    benchmark::RegisterBenchmark("format/1/ours", format_pieces)->UseRealTime();
    benchmark::RegisterBenchmark("format/1/vsnprintf", vsnprintf_pieces)->UseRealTime();
    benchmark::RegisterBenchmark("trial/1/ours", trial)->UseRealTime();
    benchmark::RegisterBenchmark("trial/1/direct", direct)->UseRealTime();
    benchmark::RegisterBenchmark("tokens/1/ours", tokens)->UseRealTime();
    benchmark::RegisterBenchmark("tokens/1/sqlite3_complete", complete)->UseRealTime();
}
