// Any bytes, read as a catalogue export: it is imported or refused in order, and of a schema that comes out of it the
// client creates the tables and triggers, and nothing else, or refuses it in order. The authorizer here knows nothing
// of the client's own: it names what a schema may make SQLite do.
#include "kt_sqlite_functions.h"
#include "tov_client.h"
#include "tov_host.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

namespace {

void check(bool holds, const char *why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why);
    std::abort();
}

// What SQLite is asked to do, and whether a statement of the schema's own choosing is among it.
struct watch {
    std::set<std::string> tbls; // in lower case
    bool is_creating = true;    // else: statements on the tables, which bring their triggers with them
};

std::string lower(const char *text)
{
    std::string result = text ? text : "";
    for (char &byte : result)
        byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
    return result;
}

bool is_harmful_function(const char *name)
{
    for (const char *harmful : {"load_extension", "fts3_tokenizer", "readfile", "writefile", "edit", "eval"}) {
        if (sqlite3_stricmp(name, harmful) == 0)
            return true;
    }
    return sqlite3_strnicmp(name, "sqlite_", 7) == 0;
}

bool may_create(const watch &w, int action, const std::string &first, const std::string &second)
{
    const bool is_schema_tbl = first == "sqlite_master";
    switch (action) {
    case SQLITE_CREATE_TABLE:
        return w.tbls.count(first) == 1;
    case SQLITE_CREATE_INDEX:
        return first.rfind("sqlite_autoindex_", 0) == 0 && w.tbls.count(second) == 1;
    case SQLITE_CREATE_TRIGGER:
        return first.rfind("tov", 0) == 0 && w.tbls.count(second) == 1;
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
        return is_schema_tbl;
    case SQLITE_READ:
        return is_schema_tbl || w.tbls.count(first) == 1;
    case SQLITE_PRAGMA:
        return first == "foreign_keys" || first == "recursive_triggers";
    case SQLITE_TRANSACTION:
        return true;
    default:
        return false;
    }
}

bool may_use(const watch &w, int action, const std::string &first)
{
    switch (action) {
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
    case SQLITE_READ:
        return w.tbls.count(first) == 1;
    case SQLITE_SELECT:
        return true;
    default:
        return false;
    }
}

extern "C" int authorize(void *data, int action, const char *first, const char *second, const char *database,
                         const char *)
{
    const auto &w = *static_cast<const watch *>(data);
    check(!database || std::strcmp(database, "main") == 0, "another database");
    if (action == SQLITE_FUNCTION)
        check(!is_harmful_function(second), second);
    else if (w.is_creating)
        check(may_create(w, action, lower(first), lower(second)), "something else was to be created or done");
    else
        check(may_use(w, action, lower(first)), "a trigger does something else");
    return SQLITE_OK;
}

bool ended_well(KT_context *ctx)
{
    if (!KT_context__has_err(ctx))
        return true;
    check(KT_context__err_description(ctx)[0] != '\0', "no description");
    check(KT_context__err_code(ctx) != KT_ERR_OUT_OF_MEMORY, "out of memory");
    KT_context__err_reset(ctx);
    return false;
}

watch watch_of(KT_context *ctx, tov_schema *schema)
{
    watch w;
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        const char *name = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id);
        tov_schema__get_tbl_name(ctx, schema, tbl_id, &name);
        w.tbls.insert(lower(name));
    }
    check(!KT_context__has_err(ctx), "tables of an imported schema");
    return w;
}

// SQLite has limits of its own, which no part of the system repeats.
bool is_limit(const std::string &message)
{
    for (const char *limit : {"too many", "too large", "too big", "too complex", "stack overflow"}) {
        if (message.find(limit) != std::string::npos)
            return true;
    }
    return false;
}

// Compiles what comes first to the triggers' statements.
void compile_uses(sqlite3 *connection, const watch &w)
{
    for (const std::string &tbl : w.tbls) {
        for (const char *use : {"INSERT INTO \"%w\" DEFAULT VALUES", "DELETE FROM \"%w\""}) {
            char *sql = sqlite3_mprintf(use, tbl.c_str());
            sqlite3_stmt *statement = nullptr;
            const int code = sqlite3_prepare_v2(connection, sql, -1, &statement, nullptr);
            check(code == SQLITE_OK || is_limit(sqlite3_errmsg(connection)), sqlite3_errmsg(connection));
            sqlite3_finalize(statement);
            sqlite3_free(sql);
        }
    }
}

void run_script(watch &w, const char *script)
{
    sqlite3 *connection = nullptr;
    tov__get_sqlite_functions()->open(":memory:", &connection, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    sqlite3_set_authorizer(connection, authorize, &w);
    const int code = sqlite3_exec(connection, script, nullptr, nullptr, nullptr);
    check(code == SQLITE_OK || is_limit(sqlite3_errmsg(connection)), sqlite3_errmsg(connection));
    w.is_creating = false;
    if (code == SQLITE_OK)
        compile_uses(connection, w);
    sqlite3_close(connection);
}

void create(KT_context *ctx, tov_schema *schema)
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
    run_script(w, KT_string__sz(script));
    KT_string__free(ctx, script);
}

void format_findings(KT_context *ctx, const KT_varray *findings)
{
    uint32_t count = 0;
    KT_varray__count(ctx, findings, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *finding = nullptr;
        KT_string *line = nullptr;
        KT_varray__get__vhash(ctx, findings, n, &finding);
        KT_string__alloc(ctx, &line);
        tov_host__format_finding(ctx, finding, line);
        check(!KT_context__has_err(ctx), "a finding cannot be shown");
        for (const char *at = KT_string__sz(line); *at; at++)
            check(static_cast<unsigned char>(*at) >= ' ', "a control character in a finding");
        KT_string__free(ctx, line);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    const tov_host_options options{7, true};
    tov_schema *schema = nullptr;
    KT_varray *findings = nullptr;
    tov_host__import(ctx, bytes.data(), bytes.size(), &options, &schema, &findings);
    const bool is_imported = ended_well(ctx);
    check(is_imported == (schema != nullptr) && (is_imported || !findings), "results and failure");
    if (schema)
        create(ctx, schema);
    if (findings)
        format_findings(ctx, findings);
    KT_varray__free(ctx, findings);
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return 0;
}
