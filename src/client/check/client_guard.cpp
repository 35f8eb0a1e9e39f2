// SQLite asks its authorizer, while it compiles a statement, about each thing that the statement would do. The answers
// here name what is allowed; whatever is not named is refused, what later versions of SQLite may add included.
#include "check/client_guard.hpp"

#include "kt_string.h"

#include <algorithm>
#include <iterator>
#include <sqlite3.h>
#include <string_view>

// In alphabetical order.
static constexpr std::string_view harmless_functions[] = {
    "->",           "->>",          "abs",
    "acos",         "acosh",        "asin",
    "asinh",        "atan",         "atan2",
    "atanh",        "ceil",         "ceiling",
    "char",         "coalesce",     "concat",
    "concat_ws",    "cos",          "cosh",
    "current_date", "current_time", "current_timestamp",
    "date",         "datetime",     "degrees",
    "exp",          "floor",        "format",
    "glob",         "hex",          "ifnull",
    "iif",          "instr",        "json_array_length",
    "json_extract", "json_type",    "json_valid",
    "julianday",    "length",       "like",
    "likelihood",   "likely",       "ln",
    "log",          "log10",        "log2",
    "lower",        "ltrim",        "max",
    "min",          "mod",          "nullif",
    "octet_length", "pi",           "pow",
    "power",        "printf",       "quote",
    "radians",      "random",       "randomblob",
    "replace",      "round",        "rtrim",
    "sign",         "sin",          "sinh",
    "sqrt",         "strftime",     "substr",
    "substring",    "tan",          "tanh",
    "time",         "timediff",     "trim",
    "trunc",        "typeof",       "unhex",
    "unicode",      "unixepoch",    "unlikely",
    "upper",        "zeroblob",
};
static_assert(std::is_sorted(std::begin(harmless_functions), std::end(harmless_functions)));

bool client_is_harmless_function(const char *name) noexcept
{
    return std::binary_search(std::begin(harmless_functions), std::end(harmless_functions), std::string_view{name});
}

static bool my_equal(const char *a, const char *b) noexcept
{
    return a && b && KT_stricmp(a, b) == 0;
}

static bool my_is_schema_tbl(const char *tbl) noexcept
{
    return my_equal(tbl, "sqlite_master") || my_equal(tbl, "sqlite_schema");
}

// Creating a table writes the schema table, adds the indexes that its keys need, and compiles its checks.
static bool my_may_create_tbl(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_CREATE_TABLE:
        return my_equal(first, guard.tbl);
    case SQLITE_CREATE_INDEX:
        return my_equal(second, guard.tbl);
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
        return my_is_schema_tbl(first);
    case SQLITE_READ:
        return my_is_schema_tbl(first) || my_equal(first, guard.tbl);
    case SQLITE_FUNCTION:
        return client_is_harmless_function(second);
    default:
        return false;
    }
}

// Creating an index writes the schema table, fills the index, and compiles its condition and expressions.
static bool my_may_create_index(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_CREATE_INDEX:
        return my_equal(first, guard.name) && my_equal(second, guard.tbl);
    case SQLITE_REINDEX:
        return my_equal(first, guard.name);
    case SQLITE_INSERT:
        return my_is_schema_tbl(first);
    case SQLITE_READ:
        return my_is_schema_tbl(first) || my_equal(first, guard.tbl);
    case SQLITE_FUNCTION:
        return client_is_harmless_function(second);
    default:
        return false;
    }
}

// Adding a column writes the schema table, and asks whether the rows obey the column's check.
static bool my_may_add_column(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_ALTER_TABLE:
        return my_equal(second, guard.tbl);
    case SQLITE_UPDATE:
        return my_is_schema_tbl(first);
    case SQLITE_READ:
        return my_is_schema_tbl(first) || my_equal(first, guard.tbl) || my_equal(first, "pragma_quick_check");
    case SQLITE_PRAGMA:
        return my_equal(first, "quick_check") && my_equal(second, guard.tbl);
    case SQLITE_FUNCTION:
        return client_is_harmless_function(second);
    default:
        return action == SQLITE_SELECT;
    }
}

// The new table's trigger looks at each row.
static bool my_may_copy(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_INSERT:
        return my_equal(first, guard.tbl);
    case SQLITE_READ:
        return my_equal(first, guard.tbl) || my_equal(first, guard.name);
    case SQLITE_FUNCTION:
        return client_is_harmless_function(second);
    default:
        return action == SQLITE_SELECT;
    }
}

static bool my_may_change_rows(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_READ:
        return my_equal(first, guard.tbl);
    case SQLITE_FUNCTION:
        return client_is_harmless_function(second);
    default:
        return false;
    }
}

static bool my_may_create_trigger(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (action) {
    case SQLITE_CREATE_TRIGGER:
        return my_equal(first, guard.name) && my_equal(second, guard.tbl);
    case SQLITE_INSERT:
    case SQLITE_READ:
        return my_is_schema_tbl(first);
    default:
        return false;
    }
}

// What the view selects is looked at when it is used.
static bool my_may_create_view(const client_guard &guard, int action, const char *first) noexcept
{
    switch (action) {
    case SQLITE_CREATE_VIEW:
        return my_equal(first, guard.name);
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_READ:
        return my_is_schema_tbl(first);
    default:
        return false;
    }
}

// Functions of the client's own are called in it too, and those that look at several rows.
static bool my_may_read(int action, const char *second) noexcept
{
    if (action != SQLITE_FUNCTION)
        return action == SQLITE_SELECT || action == SQLITE_READ;
    return client_is_harmless_function(second) || my_equal(second, "count") || my_equal(second, "row_number") ||
           KT_strnicmp(second, "tov_", 4) == 0;
}

static bool my_may(const client_guard &guard, int action, const char *first, const char *second) noexcept
{
    switch (guard.duty) {
    case client_duty::nothing:
        return false;
    case client_duty::expression:
        return action == SQLITE_SELECT || (action == SQLITE_FUNCTION && client_is_harmless_function(second));
    case client_duty::tbl:
        return my_may_create_tbl(guard, action, first, second);
    case client_duty::index:
        return my_may_create_index(guard, action, first, second);
    case client_duty::column:
        return my_may_add_column(guard, action, first, second);
    case client_duty::copying:
        return my_may_copy(guard, action, first, second);
    case client_duty::rows:
        return my_may_change_rows(guard, action, first, second);
    case client_duty::trigger:
        return my_may_create_trigger(guard, action, first, second);
    case client_duty::view:
        return my_may_create_view(guard, action, first);
    case client_duty::reading:
        return my_may_read(action, second);
    case client_duty::own_statement:
        return true;
    }
    return false;
}

extern "C" {
static int my_authorize(void *data, int action, const char *first, const char *second, const char *database,
                        const char * /* trigger or view */) noexcept
{
    const auto &guard = *static_cast<const client_guard *>(data);
    const bool elsewhere = database && !my_equal(database, "main") && guard.duty != client_duty::own_statement;
    return !elsewhere && my_may(guard, action, first, second) ? SQLITE_OK : SQLITE_DENY;
}
}

int client_guard__watch(const KT_sqlite_functions *functions, sqlite3 *connection, client_guard *guard) noexcept
{
    return functions->set_authorizer(connection, my_authorize, guard);
}
