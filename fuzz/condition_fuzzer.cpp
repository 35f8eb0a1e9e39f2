// Any text, read as a check of a table with a column of every kind: it is refused, or becomes a condition that SQLite
// compiles and that runs without error on whatever the columns hold.
#include "watched_creation.hpp"

#include "checks/host_check_grammar.hpp"

#include <algorithm>
#include <iterator>
#include <sqlite3.h>
#include <string>

namespace {

struct column_kind {
    const char *name;
    const char *type;
    int32_t length;
    uint8_t precision;
    uint8_t scale;
    const char *collation;
    const char *declaration; // in SQLite
};

constexpr const char *ci = "Latin1_General_CI_AS";

constexpr column_kind kinds[] = {
    {"I", "int", 4, 10, 0, nullptr, "int"},
    {"J", "smallint", 2, 5, 0, nullptr, "int"},
    {"Y", "tinyint", 1, 3, 0, nullptr, "int"},
    {"L", "bigint", 8, 19, 0, nullptr, "int"},
    {"B", "bit", 1, 1, 0, nullptr, "int"},
    {"F", "float", 8, 53, 0, nullptr, "real"},
    {"R", "real", 4, 24, 0, nullptr, "real"},
    {"D", "decimal", 5, 9, 2, nullptr, "int"},
    {"E", "decimal", 17, 38, 20, nullptr, "int"},
    {"M", "money", 8, 19, 4, nullptr, "int"},
    {"S", "smallmoney", 4, 10, 4, nullptr, "int"},
    {"V", "varchar", 20, 0, 0, ci, "text"},
    {"C", "char", 3, 0, 0, "SQL_Latin1_General_CP1_CS_AS", "text"},
    {"N", "nvarchar", 40, 0, 0, ci, "text COLLATE NOCASE"},
    {"X", "nvarchar", -1, 0, 0, "Latin1_General_100_BIN2", "text"},
    {"A", "date", 3, 10, 0, nullptr, "text"},
    {"T", "datetime", 8, 23, 3, nullptr, "text"},
    {"U", "datetime2", 8, 27, 7, nullptr, "text"},
    {"W", "smalldatetime", 4, 16, 0, nullptr, "text"},
    {"H", "time", 5, 16, 7, nullptr, "text"},
    {"G", "uniqueidentifier", 16, 0, 0, nullptr, "blob"},
    {"K", "varbinary", 20, 0, 0, nullptr, "blob"},
};

// Values of every type, and some that no rule would let in.
constexpr const char *values[] = {"NULL",
                                  "0",
                                  "-9223372036854775808",
                                  "9223372036854775807",
                                  "1e308",
                                  "''",
                                  "'  '",
                                  "'aB 1'",
                                  "'[]'",
                                  "'{\"a\":'",
                                  "char(128512)||char(55357)",
                                  "'9999-12-31 23:59:59.999'",
                                  "'2020-01-01'",
                                  "zeroblob(16)",
                                  "x'FF00'",
                                  "char(0)||'a'"};

host_table make_table()
{
    host_table table;
    for (const column_kind &kind : kinds) {
        host_column &col = table.cols.emplace_back();
        col.name = kind.name;
        col.system_type = kind.type;
        col.max_length = kind.length;
        col.precision = kind.precision;
        col.scale = kind.scale;
        col.collation = kind.collation;
        col.code_page = kind.collation ? 1252 : 0;
    }
    return table;
}

std::string statement_of_rows()
{
    std::string columns, rows;
    for (const column_kind &kind : kinds)
        columns += (columns.empty() ? "" : ",") + std::string(kind.name) + ' ' + kind.declaration;
    for (const char *value : values) {
        rows += rows.empty() ? "(" : ",(";
        for (size_t n = 0; n < std::size(kinds); n++)
            rows += (n ? "," : "") + std::string(value);
        rows += ')';
    }
    return "CREATE TABLE t (" + columns + "); INSERT INTO t VALUES " + rows;
}

sqlite3 *open_rows()
{
    sqlite3 *connection = nullptr;
    sqlite3_open(":memory:", &connection);
    check(sqlite3_exec(connection, statement_of_rows().c_str(), nullptr, nullptr, nullptr) == SQLITE_OK, "rows");
    return connection;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    constexpr size_t most = 2000; // SQLite has limits for the depth of an expression
    static const host_table table = make_table();
    static sqlite3 *const connection = open_rows();
    const std::string definition(reinterpret_cast<const char *>(data), std::min(size, most));
    const host_check_reading reading = host_read_check(table, definition);
    check(!reading.refusal == !reading.condition.empty(), "a refusal or a condition");
    if (reading.refusal)
        return 0;
    const std::string sql = "SELECT (" + reading.condition + ") FROM t";
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, sql.c_str());
    int code = SQLITE_ROW;
    while (code == SQLITE_ROW) {
        code = sqlite3_step(statement);
        const int type = code == SQLITE_ROW ? sqlite3_column_type(statement, 0) : SQLITE_NULL;
        check(type == SQLITE_NULL || type == SQLITE_INTEGER, "a truth");
    }
    check(code == SQLITE_DONE, sql.c_str());
    sqlite3_finalize(statement);
    return 0;
}
