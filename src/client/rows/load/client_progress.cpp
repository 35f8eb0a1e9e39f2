#include "rows/load/client_progress.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>

#define KT_HERE "src/client/rows/load/client_progress"

namespace {
struct open_file {
    explicit open_file(const char *path) : file(std::fopen(path, "rbe"))
    {
    }
    ~open_file()
    {
        if (file)
            std::fclose(file);
    }
    open_file(const open_file &) = delete;
    open_file &operator=(const open_file &) = delete;
    std::FILE *file;
};
} // namespace

static uint64_t my_hash(std::string_view bytes, uint64_t hash) noexcept
{
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * UINT64_C(0x100000001B3);
    return hash;
}

void client_fingerprint(KT_context *ctx, const char *path, const std::string &dialect, std::string &fingerprint)
{
    const open_file open(path);
    if (!open.file || std::fseek(open.file, 0, SEEK_END) != 0)
        KT_FAIL(KT_ERR_NOT_FOUND, "%s: %s", path, std::strerror(errno));
    const long size = std::ftell(open.file);
    std::string piece(65536, '\0');
    uint64_t hash = my_hash(dialect, UINT64_C(0xCBF29CE484222325));
    for (const long from : {0L, size - static_cast<long>(piece.size())}) {
        std::fseek(open.file, from < 0 ? 0 : from, SEEK_SET);
        hash = my_hash({piece.data(), std::fread(piece.data(), 1, piece.size(), open.file)}, hash);
    }
    char text[64];
    std::snprintf(text, sizeof text, "%ld-%016llx", size, static_cast<unsigned long long>(hash));
    fingerprint = text;
}

static std::string my_table(const std::string &prefix, const char *name)
{
    return '"' + prefix + name + '"';
}

void client_progress__prepare(KT_context *ctx, client_connection &database, const std::string &prefix)
{
    KT_TRY(client_connection__run(
        ctx, database,
        "CREATE TABLE IF NOT EXISTS " + my_table(prefix, "load_progress") +
            " (id INTEGER PRIMARY KEY, file TEXT NOT NULL, tbl TEXT NOT NULL, fingerprint TEXT NOT NULL, state INTEGER "
            "NOT NULL, position INTEGER NOT NULL, line INTEGER NOT NULL, rows_read INTEGER NOT NULL, rows_loaded "
            "INTEGER NOT NULL, rows_rejected INTEGER NOT NULL, rows_size INTEGER NOT NULL, lines_size INTEGER NOT "
            "NULL, "
            "shortened TEXT NOT NULL, dialect TEXT NOT NULL, rejects TEXT NOT NULL, UNIQUE (file, tbl))"));
    KT_TRY(client_connection__run(ctx, database,
                                  "CREATE TABLE IF NOT EXISTS " + my_table(prefix, "load_runs") +
                                      " (load INTEGER NOT NULL, first_row INTEGER NOT NULL, rows INTEGER NOT NULL, "
                                      "first_rowid INTEGER NOT NULL, PRIMARY KEY (load, first_row)) WITHOUT ROWID"));
}

void client_progress__find(KT_context *ctx, client_connection &database, const std::string &prefix,
                           client_progress &progress)
{
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT id, state, position, line, rows_read, rows_loaded, rows_rejected, "
                                      "rows_size, lines_size, shortened, rejects FROM " +
                                          my_table(prefix, "load_progress") +
                                          " WHERE file = ?1 AND tbl = ?2 AND fingerprint = ?3",
                                      handle));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 1, progress.file));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 2, progress.tbl));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 3, progress.fingerprint));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    if (!has)
        return;
    int column = 0;
    progress.id = database.functions->column_int64(handle, column++);
    progress.state = static_cast<client_load_state>(database.functions->column_int64(handle, column++));
    for (int64_t *number : {&progress.position, &progress.line, &progress.read, &progress.loaded, &progress.rejected,
                            &progress.rows_size, &progress.lines_size})
        *number = database.functions->column_int64(handle, column++);
    progress.shortened = client_column_text(database, handle, column++);
    progress.rejects = client_column_text(database, handle, column);
}

void client_progress__begin(KT_context *ctx, client_connection &database, const std::string &prefix,
                            client_progress &progress)
{
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    const std::string old = "SELECT id FROM " + my_table(prefix, "load_progress") + " WHERE file = ?1 AND tbl = ?2";
    for (const std::string &sql : {"DELETE FROM " + my_table(prefix, "load_runs") + " WHERE load IN (" + old + ")",
                                   "INSERT OR REPLACE INTO " + my_table(prefix, "load_progress") +
                                       " VALUES (NULL, ?1, ?2, ?3, 0, 0, 1, 0, 0, 0, 0, 0, '', ?4, '')"}) {
        KT_TRY(client_connection__prepare(ctx, database, sql, handle));
        KT_TRY(client_connection__bind_text(ctx, database, handle, 1, progress.file));
        KT_TRY(client_connection__bind_text(ctx, database, handle, 2, progress.tbl));
        if (database.functions->bind_parameter_count(handle) > 2) {
            KT_TRY(client_connection__bind_text(ctx, database, handle, 3, progress.fingerprint));
            KT_TRY(client_connection__bind_text(ctx, database, handle, 4, progress.dialect));
        }
        KT_TRY(client_connection__step(ctx, database, handle, has));
    }
    progress.id = database.functions->last_insert_rowid(database.connection);
}

void client_progress__save(KT_context *ctx, client_connection &database, const std::string &prefix,
                           const client_progress &progress)
{
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(
        client_connection__prepare(ctx, database,
                                   "UPDATE " + my_table(prefix, "load_progress") +
                                       " SET state = ?1, position = ?2, line = ?3, rows_read = ?4, rows_loaded = ?5, "
                                       "rows_rejected = ?6, rows_size = ?7, lines_size = ?8, shortened = ?9, "
                                       "rejects = ?10 WHERE id = ?11",
                                   handle));
    int index = 1;
    for (const int64_t number : {static_cast<int64_t>(progress.state), progress.position, progress.line, progress.read,
                                 progress.loaded, progress.rejected, progress.rows_size, progress.lines_size})
        KT_TRY(client_connection__bind_int64(ctx, database, handle, index++, number));
    KT_TRY(client_connection__bind_text(ctx, database, handle, index++, progress.shortened));
    KT_TRY(client_connection__bind_text(ctx, database, handle, index++, progress.rejects));
    KT_TRY(client_connection__bind_int64(ctx, database, handle, index, progress.id));
    KT_TRY(client_connection__step(ctx, database, handle, has));
}

void client_progress__add_run(KT_context *ctx, client_connection &database, const std::string &prefix,
                              const client_progress &progress, const client_run &run)
{
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(client_connection__prepare(
        ctx, database, "INSERT INTO " + my_table(prefix, "load_runs") + " VALUES (?1, ?2, ?3, ?4)", handle));
    int index = 1;
    for (const int64_t number : {progress.id, run.first_row, run.count, run.first_rowid})
        KT_TRY(client_connection__bind_int64(ctx, database, handle, index++, number));
    KT_TRY(client_connection__step(ctx, database, handle, has));
}

void client_progress__find_dialect(KT_context *ctx, client_connection &database, const std::string &prefix,
                                   const std::string &tbl, client_dialect &dialect, bool &found)
{
    int64_t is_there = 0;
    found = false;
    KT_TRY(client_connection__ask(
        ctx, database, "SELECT count(*) FROM sqlite_master WHERE name = '" + prefix + "load_progress'", is_there));
    if (is_there == 0)
        return;
    kt_owned_statement handle{database.functions};
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT dialect FROM " + my_table(prefix, "load_progress") +
                                          " WHERE tbl = ?1 AND dialect <> '' ORDER BY id DESC LIMIT 1",
                                      handle));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 1, tbl));
    bool has = false;
    KT_TRY(client_connection__step(ctx, database, handle, has));
    found = has && client_unpack_dialect(client_column_text(database, handle, 0), dialect);
}

void client_progress__list_tbls(KT_context *ctx, client_connection &database, const std::string &prefix,
                                const client_progress &progress, std::vector<std::string> &tbls)
{
    kt_owned_statement handle{database.functions};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database,
                                      "SELECT tbl FROM " + my_table(prefix, "load_progress") +
                                          " WHERE file = ?1 AND fingerprint = ?2 AND tbl <> '' ORDER BY id",
                                      handle));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 1, progress.file));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 2, progress.fingerprint));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    while (has) {
        tbls.emplace_back(client_column_text(database, handle, 0));
        KT_TRY(client_connection__step(ctx, database, handle, has));
    }
}
