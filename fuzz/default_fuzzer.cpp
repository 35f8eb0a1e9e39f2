// Any text, read as a default that the schema module drops, of a column of every type: it is dropped, becomes a default
// that the module reads, or an expression that SQLite evaluates without error.
#include "watched_creation.hpp"

#include "defaults/host_second_default.hpp"

#include <sqlite3.h>
#include <string>

namespace {

struct column_kind {
    const char *type;
    int32_t length;
    uint8_t scale;
};

constexpr column_kind kinds[] = {
    {"int", 4, 0},           {"tinyint", 1, 0},
    {"bit", 1, 0},           {"decimal", 5, 2},
    {"money", 8, 4},         {"float", 8, 0},
    {"varchar", 20, 0},      {"char", 8, 0},
    {"nvarchar", -1, 0},     {"date", 3, 0},
    {"datetime", 8, 3},      {"datetime2", 8, 7},
    {"smalldatetime", 4, 0}, {"datetimeoffset", 10, 1},
    {"time", 5, 2},          {"varbinary", 9, 0},
    {"binary", 4, 0},        {"uniqueidentifier", 16, 0},
    {"xml", -1, 0},
};

void try_expression(const std::string &expr)
{
    static sqlite3 *connection = nullptr;
    if (!connection)
        sqlite3_open(":memory:", &connection);
    const std::string sql = "SELECT " + expr;
    sqlite3_stmt *statement = nullptr;
    check(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK, sql.c_str());
    check(sqlite3_step(statement) == SQLITE_ROW, sql.c_str());
    check(sqlite3_column_type(statement, 0) != SQLITE_NULL, sql.c_str());
    sqlite3_finalize(statement);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static constexpr const char *names[] = {"suser_sname=it's", "db_name="};
    const std::string expression(reinterpret_cast<const char *>(data), size);
    for (const column_kind &kind : kinds) {
        host_column col;
        col.name = "C";
        col.system_type = kind.type;
        col.max_length = kind.length;
        col.scale = kind.scale;
        for (const bool is_utc : {false, true}) {
            const host_second_default second = host_read_second_default(col, expression, {is_utc, {names, 2}});
            check(second.host_text.empty() || second.expr.empty(), "two readings");
            if (!second.expr.empty())
                try_expression(second.expr);
        }
    }
    std::string_view sequence;
    host_is_sequence_default(expression, sequence);
    return 0;
}
