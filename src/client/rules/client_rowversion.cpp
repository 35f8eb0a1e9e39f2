#include "rules/client_rowversion.hpp"

#include "rows/convert/client_bytes.hpp"
#include "rules/client_rule_parts.hpp"

#include <algorithm>

// Before the first, as on the server.
static constexpr const char *number_before = "2000";
static constexpr const char *bytes_before = "x'00000000000007D0'";

client_versioned client_find_version(const client_row_tbl &tbl)
{
    const auto version = std::find_if(tbl.cols.begin(), tbl.cols.end(), [](const client_row_col &col) {
        return col.stored && col.type.base == client_base::rowversion && !col.has_default;
    });
    if (!tbl.has_facts || version == tbl.cols.end())
        return {};
    for (const char *name : {"rowid", "oid", "_rowid_"}) {
        if (client_find_row_col(tbl, name) == tbl.cols.size())
            return {version->col_id, client_quoted(version->name), name};
    }
    return {};
}

std::string client_version_counter(const std::string &counter)
{
    std::string all;
    for (int byte = 0; byte < 256; byte++)
        all.push_back(static_cast<char>(byte));
    std::string bytes;
    client_append_hex(bytes, all);
    return "CREATE TABLE " + client_quoted(counter) + " AS SELECT " + number_before + " AS last, " + bytes_before +
           " AS stored, x'" + bytes + "' AS bytes";
}

// The 8 bytes of a number, the highest first.
static std::string my_bytes_of(std::string_view number)
{
    std::string text;
    for (int shift = 56; shift >= 0; shift -= 8)
        text += (text.empty() ? "" : "||") + ("substr(bytes,(" + std::string(number) + ">>" + std::to_string(shift)) +
                "&255)+1,1)";
    return "CAST(" + text + " AS BLOB)";
}

static std::string my_number_of(const std::string &version)
{
    std::string text;
    for (int place = 1; place <= 8; place++)
        text += (text.empty() ? "" : "|") + ("(instr(bytes,substr(" + version) + "," + std::to_string(place) +
                ",1))-1<<" + std::to_string(64 - 8 * place) + ")";
    return text;
}

std::string client_version_body(const client_versioned &versioned, const std::string &tbl, const std::string &counter,
                                bool is_insert)
{
    const std::string given = "NEW." + versioned.col;
    const std::string lacks = given + (is_insert ? std::string(" = ") + client_no_version : " IS OLD." + versioned.col);
    const std::string update = "UPDATE " + client_quoted(counter) + " SET last = ";
    return update + "last+1, stored = " + my_bytes_of("last+1") + "\nWHERE " + lacks + ";\nUPDATE " +
           client_quoted(tbl) + " SET " + versioned.col + " = (SELECT stored FROM " + client_quoted(counter) +
           ")\nWHERE " + versioned.rowid + " = NEW." + versioned.rowid + " AND " + lacks + ";\n" + update +
           my_number_of(given) + ", stored = " + given + "\nWHERE " + given + " > stored;\n";
}
