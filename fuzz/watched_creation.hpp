// What a schema makes SQLite do: the client refuses it in order, or its script creates the schema's tables and
// triggers, and nothing else. The authorizer here knows nothing of the client's own: it names what a schema may make
// SQLite do.
#pragma once

#include "kt_sqlite_functions.h"
#include "schema_tbls.hpp"
#include "tov_client.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

inline void check(bool holds, const char *why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why);
    std::abort();
}

// What SQLite is asked to do, and whether a statement of the schema's own choosing is among it.
struct watch {
    std::set<std::string> tbls;    // in lower case
    std::set<std::string> indexes; // that were created, in lower case
    bool is_creating = true;       // else: statements on the tables, which bring their triggers with them
    bool may_select = false;       // the table of versions is being created
    bool may_be_refused = false;   // by SQLite, which then has created nothing
};

inline std::string lower(const char *text)
{
    std::string result = text ? text : "";
    for (char &byte : result)
        byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
    return result;
}

inline bool is_harmful_function(const char *name)
{
    for (const char *harmful : {"load_extension", "fts3_tokenizer", "readfile", "writefile", "edit", "eval"}) {
        if (sqlite3_stricmp(name, harmful) == 0)
            return true;
    }
    return sqlite3_strnicmp(name, "sqlite_", 7) == 0;
}

// A name of the client's own: tov and an ending, with a number between them where the schema has tables whose names
// begin like that.
inline bool is_named(const watch &w, const std::string &name, const char *ending)
{
    const size_t end = name.find_first_not_of("0123456789", 3);
    return name.rfind("tov", 0) == 0 && end != name.npos && name.substr(end) == ending && w.tbls.count(name) == 0;
}

// The table that numbers the rows of tables with a rowversion.
inline bool is_version_tbl(const watch &w, const std::string &name)
{
    return is_named(w, name, "_rowversion");
}

// A table of the client's own that is filled while a database is created: that one, or the record of the schema.
inline bool is_own_tbl(const watch &w, const std::string &name)
{
    return is_version_tbl(w, name) || is_named(w, name, "_schema");
}

inline bool may_create(watch &w, int action, const std::string &first, const std::string &second)
{
    const bool is_schema_tbl = first == "sqlite_master";
    switch (action) {
    case SQLITE_CREATE_TABLE:
        w.may_select = is_own_tbl(w, first);
        return w.tbls.count(first) == 1 || w.may_select;
    case SQLITE_CREATE_INDEX:
        w.indexes.insert(first);
        return w.tbls.count(second) == 1;
    case SQLITE_REINDEX:
        return w.indexes.count(first) == 1;
    case SQLITE_SELECT: // of constants
        return w.may_select;
    case SQLITE_CREATE_TRIGGER:
        w.may_select = false;
        return first.rfind("tov", 0) == 0 && w.tbls.count(second) == 1;
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
        return is_schema_tbl || is_own_tbl(w, first);
    case SQLITE_READ:
        return is_schema_tbl || is_own_tbl(w, first) || w.tbls.count(first) == 1;
    case SQLITE_PRAGMA:
        return first == "foreign_keys" || first == "recursive_triggers";
    case SQLITE_TRANSACTION:
        return true;
    default:
        return false;
    }
}

inline bool may_use(const watch &w, int action, const std::string &first)
{
    switch (action) {
    case SQLITE_UPDATE:
    case SQLITE_READ:
        return w.tbls.count(first) == 1 || is_version_tbl(w, first);
    case SQLITE_INSERT:
    case SQLITE_DELETE:
        return w.tbls.count(first) == 1;
    case SQLITE_SELECT:
        return true;
    case SQLITE_PRAGMA:
        return first == "integrity_check";
    default:
        return false;
    }
}

extern "C" inline int authorize(void *data, int action, const char *first, const char *second, const char *database,
                                const char *)
{
    auto &w = *static_cast<watch *>(data);
    check(!database || std::strcmp(database, "main") == 0, "another database");
    if (action == SQLITE_FUNCTION)
        check(!is_harmful_function(second), second);
    else if (w.is_creating)
        check(may_create(w, action, lower(first), lower(second)), "something else was to be created or done");
    else
        check(may_use(w, action, lower(first)), "a trigger does something else");
    return SQLITE_OK;
}

inline bool ended_well(KT_context *ctx)
{
    if (!KT_context__has_err(ctx))
        return true;
    check(KT_context__err_description(ctx)[0] != '\0', "no description");
    check(KT_context__err_code(ctx) != KT_ERR_OUT_OF_MEMORY, "out of memory");
    KT_context__err_reset(ctx);
    return false;
}

inline watch watch_of(KT_context *ctx, tov_schema *schema)
{
    watch w;
    for (const std::string &name : tbl_names_of(ctx, schema))
        w.tbls.insert(lower(name.c_str()));
    check(!KT_context__has_err(ctx), "tables of an imported schema");
    return w;
}

// SQLite has limits of its own, which no part of the system repeats, and leaves keys without a parent to their use.
inline bool is_limit(const std::string &message)
{
    for (const char *limit :
         {"too many", "too large", "too big", "too complex", "stack overflow", "foreign key mismatch"}) {
        if (message.find(limit) != std::string::npos)
            return true;
    }
    return false;
}

// Fills in a table's name, or anything else that has no double quote in it.
inline std::string with(const char *format, const std::string &name)
{
    char *sql = sqlite3_mprintf(format, name.c_str());
    std::string result = sql;
    sqlite3_free(sql);
    return result;
}

// Compiles a statement, which must succeed, runs it, and gives its first value. A row may be refused for what is in it.
inline std::string use(sqlite3 *connection, const std::string &sql)
{
    sqlite3_stmt *statement = nullptr;
    const int compiled = sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    check(compiled == SQLITE_OK || is_limit(sqlite3_errmsg(connection)), sqlite3_errmsg(connection));
    const int code = sqlite3_step(statement);
    const bool in_order = code == SQLITE_DONE || code == SQLITE_ROW || code == SQLITE_CONSTRAINT ||
                          code == SQLITE_ERROR || code == SQLITE_TOOBIG;
    check(compiled != SQLITE_OK || in_order, sqlite3_errmsg(connection));
    const unsigned char *value = code == SQLITE_ROW ? sqlite3_column_text(statement, 0) : nullptr;
    const std::string result = value ? reinterpret_cast<const char *>(value) : "";
    sqlite3_finalize(statement);
    return result;
}

inline std::string col_list(sqlite3 *connection, const std::string &tbl)
{
    sqlite3_stmt *statement = nullptr;
    sqlite3_prepare_v2(connection, with("SELECT * FROM \"%w\"", tbl).c_str(), -1, &statement, nullptr);
    std::string list;
    for (int n = 0; n < sqlite3_column_count(statement); n++)
        list += (n ? ",\"" : "\"") + std::string(sqlite3_column_name(statement, n)) + "\"";
    sqlite3_finalize(statement);
    return list;
}

// Writes, changes and deletes rows, which brings every check, default and trigger with it, and asks SQLite whether the
// database is sound. A check may hold at one time and not at another, where it asks the clock.
inline void use_tbls(sqlite3 *connection, const watch &w)
{
    for (const std::string &tbl : w.tbls) {
        const std::string cols = col_list(connection, tbl);
        use(connection, with("INSERT INTO \"%w\" DEFAULT VALUES", tbl));
        use(connection, with("UPDATE \"%w\" SET ", tbl) + "(" + cols + ") = (" + cols + ")");
    }
    const std::string state = use(connection, "PRAGMA integrity_check");
    check(state == "ok" || state.rfind("CHECK constraint failed", 0) == 0, state.c_str());
    for (const std::string &tbl : w.tbls)
        use(connection, with("DELETE FROM \"%w\"", tbl));
}

inline void run_script(watch &w, const char *script)
{
    sqlite3 *connection = nullptr;
    tov__get_sqlite_functions()->open(":memory:", &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    sqlite3_set_authorizer(connection, authorize, &w);
    // A default may ask for as much memory as SQLite allows, and a pattern for as much time.
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, 1 << 20);
    sqlite3_limit(connection, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100);
    const int code = sqlite3_exec(connection, script, nullptr, nullptr, nullptr);
    check(code == SQLITE_OK || w.may_be_refused || is_limit(sqlite3_errmsg(connection)), sqlite3_errmsg(connection));
    w.is_creating = false;
    if (code == SQLITE_OK)
        use_tbls(connection, w);
    sqlite3_close(connection);
}

inline void create_watched(KT_context *ctx, tov_schema *schema, bool may_be_refused)
{
    tov_client__check_texts(ctx, schema);
    const bool is_accepted = ended_well(ctx);
    KT_string *script = nullptr;
    tov_client__write_script(ctx, schema, &script);
    const bool is_written = ended_well(ctx);
    check(is_written == (script != nullptr), "script and failure");
    check(is_accepted || !is_written, "refused and written");
    if (!is_written)
        return;
    watch w = watch_of(ctx, schema);
    w.may_be_refused = may_be_refused;
    run_script(w, KT_string__sz(script));
    KT_string__free(ctx, script);
}
