// A database that somebody made, checked: bytes that are taken for a database file, or a script that fills one.
//
// A check ends in order whatever the database holds. It leaves the file as it was, tells the same violations each time,
// and stops at its limit.
#include "tov_check.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace {

void must(bool holds, const char *why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why);
    std::abort();
}

// Types of each family, a check that can fail, keys of all kinds, and a reference.
constexpr const char *document = R"json({"compat_level":1,"backend":{"indistinct_unique_nulls":true},"tbls":{
"1":{"name":"Rows","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"identity"},"notnull":{}},
 "2":{"name":"Name","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,
  "unicode":true,"width":10},"notnull":{}},
 "3":{"name":"Code","type":{"name":"text","fixed_width":true,"locale":"x","noaccent":false,"nocase":false,
  "unicode":false,"width":3}},
 "4":{"name":"Price","type":{"name":"decimal","precision":9,"scale":2},"check":[{"expr":"(abs([Price])<>7)"}]},
 "5":{"name":"At","type":{"name":"datetime","precision":3}},
 "6":{"name":"Born","type":{"name":"date"}},
 "7":{"name":"Clock","type":{"name":"time","precision":7}},
 "8":{"name":"Bytes","type":{"name":"blob","fixed_width":false,"width":4}},
 "9":{"name":"Guid","type":{"name":"guid"}},
 "10":{"name":"Flag","type":{"name":"uint1"}},
 "11":{"name":"Number","type":{"name":"real4"}},
 "12":{"name":"Parent","type":{"name":"sint64"},"fk":{"name":"fk","ref_tbl_id":"1","ref_col_id":"1",
  "deferred":true}}},
 "uniques":{"u":{"2":null,"3":null}},
 "check":{"c":{"expr":"[Number] < 5 OR [Name] LIKE 'a%'"}},
 "server":{"schema":"dbo","name":"Rows","cols":[
  {"name":"Id","id":"1","type":"smallint","identity":["1","1"]},
  {"name":"Name","id":"2","type":"nvarchar","length":20},
  {"name":"Code","id":"3","type":"char","length":3,"code_page":1252,"nullable":true},
  {"name":"Price","id":"4","type":"decimal","precision":9,"scale":2,"nullable":true},
  {"name":"At","id":"5","type":"datetime","nullable":true},
  {"name":"Born","id":"6","type":"date","nullable":true},
  {"name":"Clock","id":"7","type":"time","scale":7,"nullable":true},
  {"name":"Bytes","id":"8","type":"varbinary","length":4,"nullable":true},
  {"name":"Guid","id":"9","type":"uniqueidentifier","nullable":true},
  {"name":"Flag","id":"10","type":"bit","nullable":true},
  {"name":"Number","id":"11","type":"real","nullable":true},
  {"name":"Parent","id":"12","type":"bigint","nullable":true}],
 "indexes":[{"name":"f","unique":true,"cols":["6"],"filter":"([Flag]=(1))","where":"[Flag]=1"}]}},
"2":{"name":"Others","txid":0,"cols":{
 "1":{"name":"K","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,
  "unicode":true,"width":10}},
 "2":{"name":"V","type":{"name":"loose/text"}}},
 "pk":{"name":"pk","cols":{"1":null}},
 "foreignkeys":{"g":{"name":"g","cols":{"1":"2","2":"3"},"ref_tbl_id":"1","deferred":true,
  "on_delete":"NO ACTION","on_update":"NO ACTION"}}}}})json";

struct place {
    place()
    {
        const char *temporary = std::getenv("TMPDIR");
        file = std::string(temporary ? temporary : "/tmp") + "/tov_check_XXXXXX";
        const int made = mkstemp(file.data());
        must(made >= 0, "no file");
        close(made);
        sqlite3_hard_heap_limit64(int64_t{256} * 1024 * 1024); // values that a database computes may be large
        KT_context__alloc(&ctx);
        tov_schema__from_json(ctx, document, &schema);
        must(!KT_context__has_err(ctx), KT_context__err_description(ctx));
    }
    ~place()
    {
        std::remove(file.c_str());
        tov_schema__nullfree(ctx, &schema);
        KT_context__free(ctx);
    }
    place(const place &) = delete;
    place &operator=(const place &) = delete;

    std::string file;
    KT_context *ctx = nullptr;
    tov_schema *schema = nullptr;
};

int allow(void *, int action, const char *, const char *, const char *, const char *)
{
    return action == SQLITE_ATTACH || action == SQLITE_PRAGMA ? SQLITE_DENY : SQLITE_OK;
}

// Runs a script, as far as it goes.
void fill(const std::string &file, const std::string &script)
{
    sqlite3 *connection = nullptr;
    std::remove(file.c_str());
    sqlite3_open(file.c_str(), &connection);
    sqlite3_exec(connection, "PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY", nullptr, nullptr, nullptr);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, 100'000);
    sqlite3_set_authorizer(connection, allow, nullptr);
    sqlite3_progress_handler(
        connection, 200'000, [](void *) { return 1; }, nullptr);
    sqlite3_exec(connection, script.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(connection);
}

std::string read_file(const std::string &file)
{
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

struct told {
    std::string lines;
    int64_t count = 0;
};

void take(KT_context *, void *data, const tov_client_violation *violation)
{
    told &all = *static_cast<told *>(data);
    must(violation->kind && violation->message, "a violation without words");
    all.lines += std::string(violation->kind->code) + "|" + violation->message;
    for (const char *text : {violation->tbl, violation->key, violation->col, violation->value})
        all.lines += std::string("|") + (text ? text : "");
    all.lines += "|" + std::to_string(violation->has_rowid ? violation->rowid : 0) + "\n";
    all.count++;
}

told check(const place &at, const tov_client_check_options &options, bool &ended_well)
{
    told all;
    KT_bool is_whole = 1;
    tov_client__check_database(at.ctx, at.schema, at.file.c_str(), &options, take, &all, &is_whole);
    ended_well = !KT_context__has_err(at.ctx);
    if (!ended_well)
        must(KT_context__err_description(at.ctx)[0] != '\0', "no description");
    must(!ended_well || options.max == 0 || is_whole || all.count == options.max, "the limit");
    KT_context__err_reset(at.ctx);
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const place at;
    const std::string input(reinterpret_cast<const char *>(data), size);
    if (input.rfind("SQLite format 3", 0) == 0)
        std::ofstream(at.file, std::ios::binary) << input;
    else
        fill(at.file, input);
    const std::string before = read_file(at.file);
    tov_client_check_options options = {};
    bool ended_well = false;
    const told all = check(at, options, ended_well);
    must(read_file(at.file) == before, "the database was changed");
    if (!ended_well)
        return 0;
    options.max = 2;
    const told first = check(at, options, ended_well);
    must(all.lines.compare(0, first.lines.size(), first.lines) == 0, "another order");
    must(first.count == (all.count < 2 ? all.count : 2), "as many as the limit");
    options.max = 0;
    options.rules = TOV_CLIENT_RULES_BASIC;
    check(at, options, ended_well);
    return 0;
}
