#include "cli_types.hpp"

#include "kt_string.h"

#include <charconv>

static constexpr const char *a_literal = "a single literal carries over, an expression does not";
static constexpr const char *an_integer = "an integer within the type's range carries over, an expression does not";
static constexpr const char *a_number = "a single number carries over, an expression does not";
static constexpr const char *a_date = "a literal, getutcdate() and sysutcdatetime() carry over, nothing else";
static constexpr const char *a_guid = "newid() and newsequentialid() carry over, nothing else";
static constexpr const char *a_blob = "a constant 0x... of whole bytes carries over, nothing else";
static constexpr const char *no_default = "an identity column has no default";
static constexpr const char *written = "the server writes the values of the column itself";
static constexpr const char *left_out = "a column of this type is left out of its table";

static constexpr cli_type types[] = {
    {"identity", "identity", no_default},
    {"sint64", "sint64", an_integer},
    {"sint32", "sint32", an_integer},
    {"sint16", "sint16", an_integer},
    {"uint8", "uint8", an_integer},
    {"uint1", "uint1", an_integer},
    {"loose/int", "loose/int", a_literal},
    {"real8", "real8", a_number},
    {"real4", "real4", a_number},
    {"loose/real", "loose/real", a_literal},
    {"decimal", "decimal", a_number},
    {"money8", "money8", a_number},
    {"money4", "money4", a_number},
    {"date", "date", a_date},
    {"time", "time", a_date},
    {"datetime", "datetime", a_date},
    {"text", "text", a_literal},
    {"loose/text", "loose/text", a_literal},
    {"blob", "blob", a_blob},
    {"loose/blob", "loose/blob", a_blob},
    {"guid", "guid", a_guid},
    {"bigint", "sint64", an_integer},
    {"int", "sint32", an_integer},
    {"smallint", "sint16", an_integer},
    {"tinyint", "uint8", an_integer},
    {"bit", "uint1", an_integer},
    {"float", "real8", a_number},
    {"real", "real4", a_number},
    {"numeric", "decimal", a_number},
    {"money", "money8", a_number},
    {"smallmoney", "money4", a_number},
    {"datetime2", "datetime", a_date},
    {"smalldatetime", "datetime", a_date},
    {"char", "text", a_literal},
    {"varchar", "text", a_literal},
    {"nchar", "text", a_literal},
    {"nvarchar", "text", a_literal},
    {"sysname", "text", a_literal},
    {"xml", "text", a_literal},
    {"ntext", "text", a_literal},
    {"binary", "blob", a_blob},
    {"varbinary", "blob", a_blob},
    {"image", "blob", a_blob},
    {"geography", "blob", a_blob},
    {"geometry", "blob", a_blob},
    {"hierarchyid", "blob", a_blob},
    {"uniqueidentifier", "guid", a_guid},
    {"timestamp", nullptr, written},
    {"rowversion", nullptr, written},
    {"datetimeoffset", nullptr, left_out},
    {"sql_variant", nullptr, left_out},
    {"json", nullptr, left_out},
    {"vector", nullptr, left_out},
    {"integer", "sint32", an_integer},
    {"dec", "decimal", a_number},
    {"double precision", "real8", a_number},
    {"character", "text", a_literal},
    {"char varying", "text", a_literal},
    {"character varying", "text", a_literal},
    {"binary varying", "blob", a_blob},
    {"national char", "text", a_literal},
    {"national character", "text", a_literal},
    {"national char varying", "text", a_literal},
    {"national character varying", "text", a_literal},
    {"national text", "text", a_literal},
};

// The second number between parentheses, as in decimal(9, 2).
static void my_read_scale(const std::string &declared, uint32_t *scale)
{
    const size_t comma = declared.find(',');
    if (comma == std::string::npos)
        return;
    const size_t digits = declared.find_first_not_of(' ', comma + 1);
    if (digits != std::string::npos)
        std::from_chars(declared.data() + digits, declared.data() + declared.size(), *scale);
}

std::string cli_type_name(const std::string &declared)
{
    std::string name = declared.substr(0, declared.find('('));
    while (!name.empty() && name.back() == ' ')
        name.pop_back();
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        name = name.substr(1, name.size() - 2);
    return name;
}

const cli_type *cli_find_type(const std::string &declared, uint32_t *scale)
{
    const std::string name = cli_type_name(declared);
    for (const cli_type &type : types) {
        if (KT_stricmp(type.name, name.c_str()) != 0)
            continue;
        my_read_scale(declared, scale);
        return &type;
    }
    return nullptr;
}

std::vector<std::string> cli_type_names()
{
    std::vector<std::string> names;
    for (const cli_type &type : types)
        names.emplace_back(type.name);
    return names;
}
