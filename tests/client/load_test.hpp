// A fixture that creates a database from a document, loads files into it, and looks at what became of them.
#pragma once

#include "client_test.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

// Customers and their orders, with what the server says of the columns; Total is computed, and SQLite lacks it.
inline constexpr const char *shop_document = R"json({"compat_level":1,"backend":{},"tbls":{
"1":{"name":"Customers","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"sint32"},"notnull":{}},
 "2":{"name":"Name","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,
  "unicode":true,"width":10}},
 "3":{"name":"Code","type":{"name":"text","fixed_width":true,"locale":"x","noaccent":false,"nocase":true,
  "unicode":false,"width":3}},
 "4":{"name":"Born","type":{"name":"date"}}},
 "server":{"schema":"dbo","name":"Customers","cols":[
  {"name":"Id","id":"1","type":"int"},
  {"name":"Name","id":"2","type":"nvarchar","length":20,"nullable":true},
  {"name":"Code","id":"3","type":"char","length":3,"code_page":1252,"nullable":true},
  {"name":"Born","id":"4","type":"date","nullable":true}]}},
"2":{"name":"Sales.Orders","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"identity"},"notnull":{}},
 "2":{"name":"Customer","type":{"name":"sint32"}},
 "3":{"name":"Price","type":{"name":"decimal","precision":9,"scale":2}},
 "5":{"name":"Note","type":{"name":"text","fixed_width":false,"locale":"x","noaccent":false,"nocase":true,
  "unicode":true,"width":0}}},
 "server":{"schema":"Sales","name":"Orders","cols":[
  {"name":"Id","id":"1","type":"int","identity":["1","1"]},
  {"name":"Customer","id":"2","type":"int","nullable":true},
  {"name":"Price","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true},
  {"name":"Total","type":"decimal","precision":9,"scale":2,"nullable":true,"computed":"([Price]*2)"},
  {"name":"Note","id":"5","type":"nvarchar","length":-1,"nullable":true}]}}}})json";

class LoadTest : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        // Where memory is a file system no load waits for a disk.
        directory = access("/dev/shm", W_OK) == 0 ? "/dev/shm/tov_load_XXXXXX" : "/tmp/tov_load_XXXXXX";
        ASSERT_NE(mkdtemp(directory.data()), nullptr);
        reset_schema_to(shop_document);
        set_pk("1", "1");
        set_fk("2", "2", "1", "1", "NO ACTION");
        tov_schema__add_check_constraint(ctx, schema, "2", "c", "\"Price\" >= 0");
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        close();
        const std::string command = "rm -rf " + directory;
        EXPECT_EQ(std::system(command.c_str()), 0);
        ClientTest::TearDown();
    }
    void reset_schema_to(const char *document)
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__from_json(ctx, document, &schema);
        ASSERT_OK(ctx);
    }
    std::string path(const std::string &name) const
    {
        return directory + "/" + name;
    }
    std::string write(const std::string &name, std::string_view content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
    std::string read(const std::string &name) const
    {
        std::ostringstream content;
        content << std::ifstream(path(name), std::ios::binary).rdbuf();
        return content.str();
    }
    void create(const std::string &name = "db")
    {
        tov_client__create_database(ctx, schema, path(name).c_str(), nullptr, nullptr);
        ASSERT_OK(ctx);
    }
    // What is loaded after the files.
    virtual void load_more(tov_client_loader *)
    {
    }
    // Loads files, and gives for each "table read loaded rejected", and the words of the first rejects.
    std::string load(const std::vector<std::string> &files, tov_client_load_options options = {},
                     const std::string &database = "db")
    {
        tov_client_loader *loader = nullptr;
        KT_varray *report = nullptr;
        KT_varray *remarks = nullptr;
        std::string result;
        tov_client__open_loader(ctx, schema, path(database).c_str(), &options, &loader);
        for (const std::string &file : files) {
            if (!KT_context__has_err(ctx))
                tov_client__load_file(ctx, loader, file.c_str());
        }
        if (!KT_context__has_err(ctx))
            load_more(loader);
        if (!KT_context__has_err(ctx))
            tov_client__finish_load(ctx, loader, &report, &remarks);
        if (!KT_context__has_err(ctx))
            result = shown_report(report);
        told = KT_context__has_err(ctx) ? "" : shortened_in(report);
        shown_remarks = "";
        if (!KT_context__has_err(ctx))
            shown_remarks = shown_texts(remarks);
        KT_varray__free(ctx, report);
        KT_varray__free(ctx, remarks);
        tov_client__free_loader(ctx, loader);
        return result;
    }
    std::string shown_report(KT_varray *report)
    {
        std::string text;
        uint32_t count = 0;
        KT_varray__count(ctx, report, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *record = nullptr;
            const char *tbl = nullptr;
            KT_varray__get__vhash(ctx, report, n, &record);
            KT_vhash__get__sz(ctx, record, "table", &tbl);
            text += (n ? "; " : "") + std::string(tbl);
            for (const char *key : {"read", "loaded", "rejected"}) {
                int64_t number = 0;
                KT_vhash__get__int64(ctx, record, key, &number);
                text += " " + std::to_string(number);
            }
        }
        return text;
    }
    // The numbers of shortened values, as JSON.
    std::string shortened_in(KT_varray *report)
    {
        std::string text;
        uint32_t count = 0;
        KT_varray__count(ctx, report, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *record = nullptr;
            KT_vhash *counts = nullptr;
            KT_string *json = nullptr;
            KT_varray__get__vhash(ctx, report, n, &record);
            KT_vhash__get__vhash(ctx, record, "shortened", &counts);
            KT_string__alloc(ctx, &json);
            KT_vhash__to_json(ctx, counts, json);
            text += take(ctx, json);
        }
        return text;
    }
    std::string shown_texts(KT_varray *texts)
    {
        std::string result;
        uint32_t count = 0;
        KT_varray__count(ctx, texts, &count);
        for (uint32_t n = 0; n < count; n++) {
            const char *text = nullptr;
            KT_varray__get__sz(ctx, texts, n, &text);
            result += std::string(text) + "\n";
        }
        return result;
    }
    // The rows of a query of the database.
    std::string query(const std::string &sql, const std::string &database = "db")
    {
        sqlite3 *other = nullptr;
        sqlite3_open(path(database).c_str(), &other);
        const std::string result = ::rows(other, sql);
        sqlite3_close(other);
        return result;
    }

    std::string directory;
    std::string shown_remarks;
    std::string told; // of shortened values, by the last load
};
