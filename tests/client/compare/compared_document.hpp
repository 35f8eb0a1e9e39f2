// A document to change in one place, and changes as lines.
#pragma once

#include "kt_test.hpp"
#include "tov_changes.h"

#include <string>

// Customers, who are referred to, and Orders with a bit of everything.
inline const std::string compared_document = R"json({"compat_level":1,"backend":{"indistinct_unique_nulls":true},
"server":{"version":1,"database":"Shop","collation":"Latin1_General_CI_AS","code_page":1252,
"sequences":[{"schema":"dbo","name":"Numbers","type":"bigint","start":"1","increment":"1"}]},
"tbls":{
"1":{"name":"Customers","txid":5,"cols":{
"1":{"name":"Id","type":{"name":"identity","constraint_name":"PK_Customers"},"mssql_col_data_type":"int","notnull":{}},
"2":{"name":"Name","type":{"name":"text","nocase":true,"unicode":true,"width":40},"mssql_col_data_type":"nvarchar"}},
"pk":{"name":"PK_Customers","cols":{"1":null}},
"server":{"schema":"dbo","name":"Customers","description":"who buys","row_count":7,"cols":[
{"name":"Id","id":"1","type":"int","identity":["1","1"]},
{"name":"Name","id":"2","type":"nvarchar","length":80,"collation":"Latin1_General_CI_AS","nullable":true}]}},
"2":{"name":"Orders","txid":6,"cols":{
"1":{"name":"Id","type":{"name":"sint32"},"mssql_col_data_type":"int","notnull":{}},
"2":{"name":"CustomerId","type":{"name":"sint32"},"mssql_col_data_type":"int","fk":{"name":"FK_Orders_Customers",
"ref_tbl_id":"1","ref_col_id":"1","deferred":false,"on_delete":"CASCADE","on_update":"NO ACTION"}},
"3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"mssql_col_data_type":"decimal","notnull":{},
"defval":{"expr":"0","name":"DF_Orders_Total"},"check":[{"expr":"([Total]>=(0))","name":"CK_Orders_Total"}]},
"4":{"name":"Code","type":{"name":"text","fixed_width":true,"binary":true,"unicode":false,"width":4},
"mssql_col_data_type":"char"},
"5":{"name":"Paid","type":{"name":"datetime","precision":3},"mssql_col_data_type":"datetime"}},
"pk":{"name":"PK_Orders","cols":{"1":null}},"uniques":{"UX_Code":{"4":null,"2":null}},
"check":{"CK_Orders_Paid":{"expr":"([Total]>(0) OR [Paid] IS NULL)"}},
"server":{"schema":"dbo","name":"Orders","cols":[
{"name":"Id","id":"1","type":"int"},
{"name":"CustomerId","id":"2","type":"int","nullable":true},
{"name":"Total","id":"3","type":"decimal","precision":9,"scale":2,"default":"((0))"},
{"name":"Code","id":"4","type":"char","length":4,"collation":"Latin1_General_BIN2","nullable":true},
{"name":"Double","type":"decimal","precision":10,"scale":2,"computed":"([Total]*(2))"},
{"name":"Paid","id":"5","type":"datetime","nullable":true}],
"indexes":[{"name":"IX_Paid","cols":["5","3"],"descending":[true,false],"included":["4","2"],
"filter":"([Paid] IS NOT NULL)","where":"([Paid] IS NOT NULL)"}]}}}})json";

class CompareTest : public ContextTest {
  protected:
    // The document with some texts replaced, each everywhere; the first must be there.
    static std::string changed(const std::vector<std::pair<std::string, std::string>> &replacements)
    {
        std::string text = compared_document;
        for (const auto &[from, to] : replacements) {
            EXPECT_NE(text.find(from), std::string::npos) << "not in the document: " << from;
            for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
                text.replace(at, from.size(), to);
        }
        return text;
    }
    // What has changed, a line each: "dbo.Orders: column Total: type: decimal(9,2) -> decimal(12,2)".
    std::string compare(const std::string &old_document, const std::string &new_document,
                        const tov_client_compare_options &options = {})
    {
        tov_schema *old_schema = nullptr;
        tov_schema *new_schema = nullptr;
        KT_vhash *changes = nullptr;
        tov_schema__from_json(ctx, old_document.c_str(), &old_schema);
        tov_schema__from_json(ctx, new_document.c_str(), &new_schema);
        EXPECT_OK(ctx);
        tov_client__compare(ctx, old_schema, new_schema, &options, &changes);
        const std::string lines = changes ? lines_of(changes) : "";
        KT_vhash__free(ctx, changes);
        tov_schema__nullfree(ctx, &old_schema);
        tov_schema__nullfree(ctx, &new_schema);
        return lines;
    }

  private:
    std::string text(const KT_vhash *map, const char *key)
    {
        const char *value = nullptr;
        KT_vhash__check__sz(ctx, map, key, &value);
        return value ? value : "";
    }
    std::string guess(const KT_vhash *map)
    {
        KT_bool is_guess = 0;
        KT_vhash__check__bool(ctx, map, "guess", &is_guess);
        return is_guess ? " (guess)" : "";
    }
    static std::string joined(std::string line, const std::string &before, const std::string &part)
    {
        return part.empty() ? line : line + before + part;
    }
    std::string line_of(const std::string &place, const KT_vhash *change)
    {
        std::string line = joined(place + text(change, "kind"), " ", text(change, "name"));
        const std::string what = text(change, "change");
        line = joined(line, ": ", what == "changed" ? text(change, "member") : what);
        line = joined(line, " from ", text(change, "old_name")) + guess(change);
        const std::string old_text = text(change, "old");
        const std::string new_text = text(change, "new");
        if (what == "changed")
            return line + ": " + old_text + " -> " + new_text + "\n";
        return joined(joined(line, ": ", old_text), ": ", new_text) + "\n";
    }
    std::string lines_of(const std::string &place, const KT_vhash *map)
    {
        std::string lines;
        KT_varray *list = nullptr;
        uint32_t count = 0;
        KT_vhash__get__varray(ctx, map, "changes", &list);
        KT_varray__count(ctx, list, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *change = nullptr;
            KT_varray__get__vhash(ctx, list, n, &change);
            lines += line_of(place, change);
        }
        return lines;
    }
    std::string lines_of(const KT_vhash *changes)
    {
        std::string lines = lines_of("", changes);
        KT_varray *tables = nullptr;
        uint32_t count = 0;
        KT_vhash__get__varray(ctx, changes, "tables", &tables);
        KT_varray__count(ctx, tables, &count);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash *table = nullptr;
            KT_varray__get__vhash(ctx, tables, n, &table);
            const std::string what = text(table, "change");
            const std::string name = text(table, "name");
            if (what != "changed")
                lines += joined(name + ": " + what, " from ", text(table, "old_name")) + guess(table) + "\n";
            lines += lines_of(name + ": ", table);
        }
        return lines;
    }
};
