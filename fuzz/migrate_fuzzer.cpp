// Two schema documents in one JSON text, {"old":...,"new":...}: a database of the first is migrated to the second,
// which ends in order. It then has what creating it from the second would make; or it is as it was, and the error says
// why.
#include "migrate/client_object_list.hpp"
#include "schema_pair.hpp"
#include "schema_tbls.hpp"
#include "tov_migrate.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

void must(bool holds, const char *why, const std::string &what = "")
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s: %s\n", why, what.c_str());
    std::abort();
}

// Files where no disk has to be waited for, if there is such a place.
struct place {
    place()
    {
        const char *temporary = std::getenv("TMPDIR");
        folder = temporary ? temporary : access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
        folder += "/tov_migrate_XXXXXX";
        must(mkdtemp(folder.data()) != nullptr, "no folder");
        migrated = folder + "/migrated";
        fresh = folder + "/fresh";
        sqlite3_hard_heap_limit64(int64_t{256} * 1024 * 1024); // defaults may ask for much
        KT_context__alloc(&ctx);
    }
    ~place()
    {
        std::remove(migrated.c_str());
        std::remove(fresh.c_str());
        rmdir(folder.c_str());
        KT_context__free(ctx);
    }
    place(const place &) = delete;
    place &operator=(const place &) = delete;

    std::string folder, migrated, fresh;
    KT_context *ctx = nullptr;
};

// Whether the schemas can be compared: they have the shape of schemas, and so has what they say of the server.
bool are_comparable(KT_context *ctx, tov_schema *a, tov_schema *b)
{
    KT_vhash *changes = nullptr;
    tov_client__compare(ctx, a, b, nullptr, &changes);
    KT_vhash__free(ctx, changes);
    const bool are = !KT_context__has_err(ctx);
    KT_context__err_reset(ctx);
    return are;
}

// What went wrong, if anything; an error always says so.
std::string ended(KT_context *ctx)
{
    if (!KT_context__has_err(ctx))
        return "";
    std::string why = KT_context__err_description(ctx);
    must(!why.empty(), "no description");
    must(KT_context__err_code(ctx) != KT_ERR_OUT_OF_MEMORY || why.find("SQLite") != why.npos, "out of memory");
    KT_context__err_reset(ctx);
    return why;
}

std::string create(KT_context *ctx, tov_schema *schema, const std::string &file)
{
    std::remove(file.c_str());
    tov_client__create_database(ctx, schema, file.c_str(), nullptr, nullptr);
    return ended(ctx);
}

// All that a database has, in a form that does not depend on how SQLite rewrote a statement.
std::vector<std::string> objects_of(const std::string &file)
{
    std::vector<std::string> objects;
    sqlite3 *connection = nullptr;
    sqlite3_stmt *statement = nullptr;
    sqlite3_open(file.c_str(), &connection);
    sqlite3_prepare_v2(connection, "SELECT type || ' ' || name || ' ' || tbl_name, sql FROM sqlite_master", -1,
                       &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        const auto text = [&](int column) {
            const unsigned char *bytes = sqlite3_column_text(statement, column);
            return std::string(bytes ? reinterpret_cast<const char *>(bytes) : "");
        };
        objects.push_back(text(0) + '\n' + client_statement_meaning(text(1)));
    }
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    std::sort(objects.begin(), objects.end());
    return objects;
}

std::string first_value(const std::string &file, const std::string &sql)
{
    std::string value;
    sqlite3 *connection = nullptr;
    sqlite3_stmt *statement = nullptr;
    sqlite3_open(file.c_str(), &connection);
    sqlite3_limit(connection, SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 100);
    sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr);
    if (sqlite3_step(statement) == SQLITE_ROW && sqlite3_column_text(statement, 0))
        value = reinterpret_cast<const char *>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return value;
}

// A row of defaults in each table that takes one.
void add_rows(const std::string &file, const std::vector<std::string> &tbls)
{
    for (const std::string &tbl : tbls)
        first_value(file, "INSERT INTO " + client_quoted(tbl) + " DEFAULT VALUES");
}

void migrate(const place &at, tov_schema *a, tov_schema *b, bool with_rows, const std::string &refusal)
{
    KT_context *ctx = at.ctx;
    const std::vector<std::string> tbls = tbl_names_of(ctx, a);
    std::vector<const char *> losses;
    for (const std::string &tbl : tbls)
        losses.push_back(tbl.c_str());
    tov_client_migrate_options options = {};
    options.allowed_losses = losses.data();
    options.allowed_loss_count = static_cast<uint32_t>(losses.size());
    if (!create(ctx, a, at.migrated).empty())
        return;
    if (with_rows)
        add_rows(at.migrated, tbls);
    const std::vector<std::string> before = objects_of(at.migrated);
    tov_client__migrate_database(ctx, at.migrated.c_str(), b, &options);
    const std::string why = ended(ctx);
    if (!why.empty()) {
        must(objects_of(at.migrated) == before, "a failed migration has changed something", why);
        must(with_rows || !refusal.empty(), "a database without rows is not migrated", why);
        return;
    }
    must(refusal.empty(), "creating the new schema fails, migrating does not", refusal);
    must(objects_of(at.migrated) == objects_of(at.fresh), "not what creating makes");
    must(first_value(at.migrated, "PRAGMA integrity_check") == first_value(at.fresh, "PRAGMA integrity_check"),
         "the database is not sound");
}

void plan(KT_context *ctx, tov_schema *a, tov_schema *b)
{
    KT_varray *steps = nullptr;
    KT_string *script = nullptr;
    tov_client__plan_migration(ctx, a, b, nullptr, &steps);
    const std::string why = ended(ctx);
    must(why.empty() == (steps != nullptr), "a plan and a failure", why);
    tov_client__write_migration(ctx, a, b, nullptr, &script);
    must(ended(ctx).empty() == (script != nullptr), "a script and a failure");
    KT_varray__free(ctx, steps);
    KT_string__free(ctx, script);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const place at;
    KT_context *ctx = at.ctx;
    const schema_pair pair(ctx, data, size);
    tov_schema *a = pair.old_schema;
    tov_schema *b = pair.new_schema;
    if (!pair.is_whole())
        return 0;
    plan(ctx, a, b);
    if (!are_comparable(ctx, a, b))
        return 0;
    const std::string refusal = create(ctx, b, at.fresh);
    migrate(at, a, b, false, refusal);
    migrate(at, a, b, true, refusal);
    return 0;
}
