// A fixture that imports small catalogues, and functions that write them.
#pragma once

#include "kt_test.hpp"
#include "tov_host.h"

#include <string_view>

// One column as the export has it. more is appended, e.g. R"("scale":2)".
inline std::string a_col(int id, const std::string &name, const std::string &type, const std::string &more = "")
{
    const bool says_null = more.find("is_nullable") != more.npos;
    const bool says_length = more.find("max_length") != more.npos;
    return R"({"id":)" + std::to_string(id) + R"(,"name":")" + name + R"(","system_type":")" + type +
           R"(","user_type":")" + type + '"' + (says_length ? "" : R"(,"max_length":4)") +
           (says_null ? "" : R"(,"is_nullable":false)") + (more.empty() ? "" : ',' + more) + '}';
}

// One table; more is appended, e.g. its keys.
inline std::string a_table(int id, const std::string &name, const std::string &cols, const std::string &more = "")
{
    return R"({"id":)" + std::to_string(id) + R"(,"schema":"dbo","name":")" + name + R"(","columns":[)" + cols + ']' +
           (more.empty() ? "" : ',' + more) + '}';
}

// A list of names as the columns of a key: "A B" becomes [{"name":"A"},{"name":"B"}].
inline std::string key_cols(std::string_view names)
{
    std::string list;
    while (!names.empty()) {
        const size_t end = std::min(names.find(' '), names.size());
        list += (list.empty() ? R"({"name":")" : R"(,{"name":")") + std::string(names.substr(0, end)) + R"("})";
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return '[' + list + ']';
}

inline std::string a_pk(const std::string &name, const std::string &cols, const std::string &more = "")
{
    return R"("pk":{"name":")" + name + '"' + more + R"(,"columns":)" + key_cols(cols) + '}';
}

inline std::string a_unique(const std::string &name, const std::string &cols, const std::string &more = "")
{
    return R"({"name":")" + name + '"' + more + R"(,"columns":)" + key_cols(cols) + '}';
}

inline std::string an_export(const std::string &tables)
{
    return R"({"format":"sqlserver-catalogue","format_version":1,"database":{"can_view_definitions":true},"tables":[)" +
           tables + "]}";
}

class HostTest : public ContextTest {
  protected:
    void TearDown() override
    {
        forget();
        ContextTest::TearDown();
    }
    void forget()
    {
        tov_schema__nullfree(ctx, &schema);
        KT_varray__free(ctx, std::exchange(findings, nullptr));
    }
    // Imports a file; the error, if any, stays in the context.
    void import_file(std::string_view file, const tov_host_options *options = nullptr)
    {
        forget();
        tov_host__import(ctx, file.data(), file.size(), options, &schema, &findings);
    }
    // Imports tables, which must succeed.
    void import_tables(const std::string &tables)
    {
        import_file(an_export(tables));
        ASSERT_OK(ctx);
    }
    // The findings as "code table.column", one per line.
    std::string codes()
    {
        return each_finding([this](KT_vhash *finding) {
            const char *code = nullptr, *table = nullptr, *column = nullptr;
            KT_vhash__get__sz(ctx, finding, "code", &code);
            KT_vhash__check__sz(ctx, finding, "table", &table);
            KT_vhash__check__sz(ctx, finding, "column", &column);
            return std::string(code) + (table ? std::string(" ") + table : "") +
                   (column ? std::string(".") + column : "");
        });
    }
    // The findings as lines.
    std::string lines()
    {
        return each_finding([this](KT_vhash *finding) {
            KT_string *line = nullptr;
            KT_string__alloc(ctx, &line);
            tov_host__format_finding(ctx, finding, line);
            return take(ctx, line);
        });
    }
    std::string document()
    {
        KT_string *json = nullptr;
        tov_schema__to_json(ctx, schema, &json);
        return take(ctx, json);
    }
    std::string everything()
    {
        kt_owned_vhash both{ctx};
        KT_vhash__alloc(ctx, both.out());
        tov_schema__copy_into_vhash(ctx, schema, both, 1);
        return json_of(ctx, both);
    }
    std::string defin(const char *tbl_id, const char *col_id)
    {
        const char *text = nullptr;
        tov_schema__get_col_defin(ctx, schema, tbl_id, col_id, nullptr, &text);
        return text ? text : "(null)";
    }
    bool has(const std::string &part)
    {
        return document().find(part) != std::string::npos;
    }

    tov_schema *schema = nullptr;
    KT_varray *findings = nullptr;

  private:
    template <class Format> std::string each_finding(Format &&format)
    {
        std::string text;
        uint32_t count = 0;
        if (findings)
            KT_varray__count(ctx, findings, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *finding = nullptr;
            KT_varray__get__vhash(ctx, findings, n, &finding);
            text += (n ? "\n" : "") + format(finding);
        }
        return text;
    }
};
