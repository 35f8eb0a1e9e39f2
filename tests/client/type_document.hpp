// A document with one table that has a column of each of many types, with what the server says of them.
#pragma once

#include "guide/client_guide.hpp"

#include <string>
#include <vector>

inline std::string abstract_type_of(const client_server_type &type)
{
    using base = client_base;
    const std::string width = std::to_string(type.length > 0 ? type.length : 0);
    const std::string precision = std::to_string(type.precision);
    const std::string scale = std::to_string(type.scale);
    const bool is_fixed = type.base == base::fixed_char || type.base == base::fixed_nchar || type.base == base::binary;
    const std::string fixed = is_fixed ? "true" : "false";
    switch (type.base) {
    case base::bit:
        return R"("name":"uint1")";
    case base::tinyint:
        return R"("name":"uint8")";
    case base::smallint:
        return R"("name":"sint16")";
    case base::integer:
        return R"("name":"sint32")";
    case base::bigint:
        return R"("name":"sint64")";
    case base::decimal:
        return R"("name":"decimal","precision":)" + precision + R"(,"scale":)" + scale;
    case base::money:
        return R"("name":"money8")";
    case base::smallmoney:
        return R"("name":"money4")";
    case base::real:
        return R"("name":"real4")";
    case base::floating:
        return R"("name":"real8")";
    case base::guid:
        return R"("name":"guid")";
    case base::date:
        return R"("name":"date")";
    case base::time:
        return R"("name":"time","precision":)" + scale;
    case base::smalldatetime:
    case base::datetime:
    case base::datetime2:
        return R"("name":"datetime","precision":)" + scale;
    case base::rowversion:
        return R"("name":"blob","fixed_width":true,"width":8)";
    default:
        break;
    }
    if (client_is_binary(type.base))
        return R"("name":"blob","fixed_width":)" + fixed + R"(,"width":)" + width;
    const std::string unicode = client_is_unicode(type.base) ? "true" : "false";
    return R"("name":"text","fixed_width":)" + fixed + R"(,"locale":"x","noaccent":false,"nocase":false,"unicode":)" +
           unicode + R"(,"width":)" + width;
}

inline std::string server_facts_of(const client_declared_type &declared)
{
    const client_server_type &type = declared.type;
    const bool is_unit = type.base == client_base::nvarchar || type.base == client_base::fixed_nchar;
    const std::string name = type.base == client_base::clr ? std::string(declared.name) : client_base_name(type.base);
    std::string facts = R"("type":")" + name + R"(","length":)";
    facts += std::to_string(type.length > 0 && is_unit ? type.length * 2 : type.length);
    facts += R"(,"precision":)" + std::to_string(type.precision) + R"(,"scale":)" + std::to_string(type.scale);
    facts += R"(,"code_page":)" + std::to_string(type.code_page);
    return facts + (type.nullable ? R"(,"nullable":true)" : "");
}

// Tables "T0", "T1" ... with a key "Id" and a column "c" of one type each, and what the document says of the server's.
inline std::string document_of_tables(const std::vector<client_declared_type> &types,
                                      const std::vector<client_declared_type> &facts)
{
    std::string tbls;
    for (size_t n = 0; n < types.size(); n++) {
        const std::string id = std::to_string(n);
        tbls += (n ? ",\"" : "\"") + id + R"(":{"name":"T)" + id + R"(","txid":0,"cols":{)";
        tbls += R"("1":{"name":"Id","type":{"name":"identity"},"notnull":{}},"2":{"name":"c","type":{)";
        tbls += abstract_type_of(types[n].type) + "}" + (types[n].type.nullable ? "" : R"(,"notnull":{})");
        tbls += R"(}},"server":{"schema":"dbo","name":"T)" + id + R"(","cols":[{"name":"Id","id":"1","type":"int"},)";
        tbls += R"({"name":"c","id":"2",)" + server_facts_of(facts[n]) + "}]}}";
    }
    return R"({"compat_level":1,"backend":{},"tbls":{)" + tbls + "}}";
}

inline std::string document_of_tables(const std::vector<client_declared_type> &types)
{
    return document_of_tables(types, types);
}

// Table "T", on the server "dbo.T", with columns "c0", "c1" ... Types without a form in SQLite are left out of it.
inline std::string document_of_types(const std::vector<client_declared_type> &types)
{
    std::string cols;
    std::string facts;
    for (size_t n = 0; n < types.size(); n++) {
        const std::string number = std::to_string(n);
        const bool is_stored = types[n].type.base != client_base::variant;
        facts += (n ? "," : "") + (R"({"name":"c)" + number + "\",");
        facts += is_stored ? R"("id":")" + number + "\"," : "";
        facts += server_facts_of(types[n]) + "}";
        if (!is_stored)
            continue;
        cols += (n ? "," : "") + (R"(")" + number + R"(":{"name":"c)" + number + R"(","type":{)");
        cols += abstract_type_of(types[n].type) + "}" + (types[n].type.nullable ? "" : R"(,"notnull":{})") + "}";
    }
    return R"({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{)" + cols +
           R"(},"server":{"schema":"dbo","name":"T","cols":[)" + facts + "]}}}}";
}
