// Any bytes, loaded as a file of rows. Every row is loaded or refused, and told as such; what was loaded passes the
// database's own checks, and comes out in each form and in again as it was.
#pragma once

#include "tov_client.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>

inline constexpr const char *rows_document = R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"Rows","txid":0,
"cols":{
"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
"2":{"name":"Name","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,"unicode":true,
 "width":10}},
"3":{"name":"Code","type":{"name":"text","fixed_width":true,"locale":"x","noaccent":false,"nocase":true,"unicode":false,
 "width":3}},
"4":{"name":"Price","type":{"name":"decimal","precision":9,"scale":2}},
"5":{"name":"At","type":{"name":"datetime","precision":3}},
"6":{"name":"Clock","type":{"name":"time","precision":7}},
"7":{"name":"Bytes","type":{"name":"blob","fixed_width":false,"width":8}},
"8":{"name":"Guid","type":{"name":"guid"}},
"9":{"name":"Flag","type":{"name":"uint1"}},
"10":{"name":"Amount","type":{"name":"real8"}},
"11":{"name":"Pay","type":{"name":"money8"}},
"12":{"name":"Parent","type":{"name":"sint32"}},
"13":{"name":"Note","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,"unicode":true,
 "width":0}}},
"server":{"schema":"dbo","name":"Rows","cols":[
{"name":"Id","id":"1","type":"int"},{"name":"Name","id":"2","type":"nvarchar","length":20,"nullable":true},
{"name":"Code","id":"3","type":"char","length":3,"code_page":1252,"nullable":true},
{"name":"Price","id":"4","type":"decimal","precision":9,"scale":2,"nullable":true},
{"name":"At","id":"5","type":"datetime","nullable":true},
{"name":"Clock","id":"6","type":"time","scale":7,"nullable":true},
{"name":"Bytes","id":"7","type":"varbinary","length":8,"nullable":true},
{"name":"Guid","id":"8","type":"uniqueidentifier","nullable":true},
{"name":"Flag","id":"9","type":"bit","nullable":true},{"name":"Amount","id":"10","type":"float","nullable":true},
{"name":"Pay","id":"11","type":"money","nullable":true},{"name":"Parent","id":"12","type":"int","nullable":true},
{"name":"Note","id":"13","type":"nvarchar","length":-1,"nullable":true}]}}}})json";

inline void rows_check(bool holds, const std::string &why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why.c_str());
    std::abort();
}

inline std::string rows_read_file(const std::string &path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

// A directory with an empty database, made once.
struct rows_place {
    rows_place()
    {
        const char *temporary = std::getenv("TMPDIR");
        directory = std::string(temporary ? temporary : "/tmp") + "/tov_rows_XXXXXX";
        rows_check(mkdtemp(directory.data()) != nullptr, "no directory");
        KT_context__alloc(&ctx);
        tov_schema__from_json(ctx, rows_document, &schema);
        tov_schema__set_pk_name(ctx, schema, "1", "PK");
        tov_schema__add_to_pk(ctx, schema, "1", "1");
        tov_schema__set_colcon_fk(ctx, schema, "1", "12", 1, "fk", nullptr, "1", "1", 1, "NO ACTION", "NO ACTION", 0);
        tov_client__create_database(ctx, schema, path("empty").c_str(), nullptr, nullptr);
        rows_check(!KT_context__has_err(ctx), KT_context__err_description(ctx));
        empty = rows_read_file(path("empty"));
    }
    ~rows_place()
    {
        const std::string command = "rm -rf " + directory;
        rows_check(std::system(command.c_str()) == 0, "the directory stays");
        tov_schema__nullfree(ctx, &schema);
        KT_context__free(ctx);
    }
    rows_place(const rows_place &) = delete;
    rows_place &operator=(const rows_place &) = delete;

    std::string path(const std::string &name) const
    {
        return directory + "/" + name;
    }
    void write(const std::string &name, std::string_view content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
    }

    std::string directory;
    std::string empty;
    KT_context *ctx = nullptr;
    tov_schema *schema = nullptr;
};

struct rows_sums {
    bool ended_well = false;
    int64_t read = 0;
    int64_t loaded = 0;
    int64_t rejected = 0;
};

inline rows_sums rows_load(const rows_place &place, const std::string &database, const std::string &file,
                           const tov_client_load_options &options)
{
    rows_sums sums;
    KT_context *ctx = place.ctx;
    tov_client_loader *loader = nullptr;
    KT_varray *report = nullptr;
    KT_varray *remarks = nullptr;
    tov_client__open_loader(ctx, place.schema, database.c_str(), &options, &loader);
    if (!KT_context__has_err(ctx))
        tov_client__load_file(ctx, loader, file.c_str());
    if (!KT_context__has_err(ctx))
        tov_client__finish_load(ctx, loader, &report, &remarks);
    sums.ended_well = !KT_context__has_err(ctx);
    rows_check(sums.ended_well || KT_context__err_description(ctx)[0], "no description");
    KT_context__err_reset(ctx);
    uint32_t count = 0;
    if (report)
        KT_varray__count(ctx, report, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        int64_t read = 0, loaded = 0, rejected = 0;
        KT_varray__get__vhash(ctx, report, n, &record);
        KT_vhash__get__int64(ctx, record, "read", &read);
        KT_vhash__get__int64(ctx, record, "loaded", &loaded);
        KT_vhash__get__int64(ctx, record, "rejected", &rejected);
        rows_check(read == loaded + rejected, "rows in are not rows loaded and rejected");
        sums.read += read;
        sums.loaded += loaded;
        sums.rejected += rejected;
    }
    KT_varray__free(ctx, report);
    KT_varray__free(ctx, remarks);
    tov_client__free_loader(ctx, loader);
    return sums;
}

// The rows that a query gives, a line each.
inline std::string rows_query(const std::string &database, const std::string &sql)
{
    sqlite3 *connection = nullptr;
    std::string text;
    sqlite3_open(database.c_str(), &connection);
    const auto append = [](void *data, int count, char **values, char **) {
        for (int n = 0; n < count; n++)
            *static_cast<std::string *>(data) += std::string(values[n] ? values[n] : "NULL") + "|";
        *static_cast<std::string *>(data) += "\n";
        return 0;
    };
    char *message = nullptr;
    sqlite3_exec(connection, sql.c_str(), append, &text, &message);
    if (message)
        text += std::string("error: ") + message;
    sqlite3_free(message);
    sqlite3_close(connection);
    return text;
}

// A time that was shortened to three digits comes in again with all of its column's, which are zeros.
inline constexpr const char *rows_all =
    "SELECT Id, hex(Name), Name IS NULL, hex(Code), Code IS NULL, Price, At, rtrim(Clock, '0'), hex(Bytes), Bytes IS "
    "NULL, "
    "hex(Guid), Guid IS NULL, Flag, quote(Amount), Pay, Parent, hex(Note), Note IS NULL FROM Rows ORDER BY Id";

// What was loaded goes out in a form and in again.
inline void rows_take_round(const rows_place &place, const char *format, const std::string &before)
{
    KT_context *ctx = place.ctx;
    KT_varray *report = nullptr;
    KT_vhash *record = nullptr;
    const char *name = nullptr;
    int64_t unreadable = 0;
    tov_client_unload_options unload = {};
    unload.format = format;
    unload.field_end = "\\t";
    unload.row_end = "\\n";
    unload.encoding = "utf-8";
    tov_client__unload(ctx, place.schema, place.path("db").c_str(), place.path("out").c_str(), &unload, &report);
    rows_check(!KT_context__has_err(ctx), std::string("unloading: ") + KT_context__err_description(ctx));
    KT_varray__get__vhash(ctx, report, 0, &record);
    KT_vhash__get__sz(ctx, record, "file", &name);
    KT_vhash__get__int64(ctx, record, "unreadable", &unreadable);
    const std::string file = place.path("out/") + name;
    KT_varray__free(ctx, report);
    if (unreadable > 0)
        return;
    tov_client_load_options load = {};
    load.format = format;
    load.tbl = "Rows";
    load.field_end = "\\t";
    load.row_end = "\\n";
    load.null_word = "";
    load.header = 1;
    load.is_scratch = 1;
    place.write("again", place.empty);
    const rows_sums sums = rows_load(place, place.path("again"), file, load);
    rows_check(sums.ended_well && sums.rejected == 0, std::string("not loaded again from ") + format);
    const std::string after = rows_query(place.path("again"), rows_all);
    rows_check(after == before, std::string("not the same again from ") + format + ":\n" + before + after);
}

inline int64_t rows_count_lines(const std::string &path)
{
    int64_t lines = 0;
    for (const char byte : rows_read_file(path))
        lines += byte == '\n' ? 1 : 0;
    return lines;
}

inline void rows_fuzz(const char *format, const char *file, const uint8_t *data, size_t size)
{
    static const rows_place place;
    if (size == 0)
        return;
    const unsigned choice = data[0];
    const std::string rejects = place.path("rejects");
    tov_client_load_options options = {};
    options.format = choice & 1 ? nullptr : format;
    options.batch = choice & 2 ? 1 : 0;
    options.rejects = rejects.c_str();
    options.tbl = "Rows";
    options.is_scratch = 1;
    options.null_word = choice & 4 ? "NULL" : nullptr;
    place.write("db", place.empty);
    place.write(file, {reinterpret_cast<const char *>(data) + 1, size - 1});
    std::remove((rejects + "/" + file).c_str());
    std::remove((rejects + "/" + file + ".jsonl").c_str());
    const rows_sums sums = rows_load(place, place.path("db"), place.path(file), options);
    if (!sums.ended_well)
        return;
    rows_check(rows_count_lines(rejects + "/" + file + ".jsonl") == sums.rejected, "rejects are not all told");
    rows_check(rows_query(place.path("db"), "SELECT count(*) FROM Rows") == std::to_string(sums.loaded) + "|\n",
               "rows in the table are not those that were loaded");
    if (sums.loaded == 0)
        return;
    rows_check(rows_query(place.path("db"), "PRAGMA integrity_check; PRAGMA foreign_key_check") == "ok|\n",
               "integrity");
    const std::string before = rows_query(place.path("db"), rows_all);
    const std::string again = rows_query(
        place.path("db"), "CREATE TEMP TABLE kept AS SELECT * FROM Rows; DELETE FROM Rows; INSERT INTO Rows SELECT * "
                          "FROM kept");
    rows_check(again.empty(), "the checks refuse what was loaded: " + again);
    for (const char *other : {"bcp", "csv", "json", "insert"})
        rows_take_round(place, other, before);
}
