// What SQLite calls: at loading, for a collation that it does not know, and to compare.
#include "collate/ext_collation.hpp"
#include "entry/ext_functions.hpp"
#include "tov_sqlite.h"

#include <sqlite3ext.h>

#include <new>

SQLITE_EXTENSION_INIT1

namespace {

struct added_collation {
    std::unique_ptr<ext_collation> collation;
    sqlite3 *connection;
};

} // namespace

extern "C" {

static int my_refuse_commit(void *) noexcept
{
    return 1;
}

static void my_allow_commits(void *connection) noexcept
{
    sqlite3_commit_hook(static_cast<sqlite3 *>(connection), nullptr, nullptr);
    sqlite3_rollback_hook(static_cast<sqlite3 *>(connection), nullptr, nullptr);
}

// A comparison cannot fail, and a statement is stopped only where it goes back in its program, which an INSERT of one
// row never does. So what an index became where memory was lacking is kept from being committed, too.
static void my_give_up(sqlite3 *connection) noexcept
{
    sqlite3_interrupt(connection);
    if (sqlite3_txn_state(connection, nullptr) != SQLITE_TXN_WRITE)
        return;
    sqlite3_commit_hook(connection, my_refuse_commit, nullptr);
    sqlite3_rollback_hook(connection, my_allow_commits, connection);
}

static int my_compare(void *data, int left_size, const void *left, int right_size, const void *right)
{
    auto &added = *static_cast<added_collation *>(data);
    const std::string_view left_text(static_cast<const char *>(left), static_cast<size_t>(left_size));
    const std::string_view right_text(static_cast<const char *>(right), static_cast<size_t>(right_size));
    try {
        return ext_compare(*added.collation, left_text, right_text);
    } catch (const std::bad_alloc &) {
        my_give_up(added.connection);
        return left_text.compare(right_text);
    }
}

static void my_free(void *data)
{
    delete static_cast<added_collation *>(data);
}

// A name that is no collation's stays unknown, and SQLite says so.
static void my_add_collation(void *, sqlite3 *connection, int, const char *name)
try {
    auto added = std::make_unique<added_collation>(added_collation{ext_open_collation(name), connection});
    if (added->collation &&
        sqlite3_create_collation_v2(connection, name, SQLITE_UTF8, added.get(), my_compare, my_free) == SQLITE_OK)
        static_cast<void>(added.release());
} catch (const std::bad_alloc &) {
    sqlite3_interrupt(connection);
}

int sqlite3_tovsqlite_init(sqlite3 *connection, char **, const sqlite3_api_routines *api) noexcept
{
    SQLITE_EXTENSION_INIT2(api);
    static_cast<void>(api);
    const int code = ext_add_functions(connection);
    return code == SQLITE_OK ? sqlite3_collation_needed(connection, nullptr, my_add_collation) : code;
}
}
