// Reads types.
#include "tsql/host_tsql_type.hpp"

#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <charconv>

struct host_type_synonym {
    std::string_view written;
    std::string_view name;
};

// The types of the server, with the other names that it knows for them.
static constexpr host_type_synonym system_types[] = {
    {"int", "int"},
    {"nvarchar", "nvarchar"},
    {"varchar", "varchar"},
    {"bit", "bit"},
    {"datetime", "datetime"},
    {"decimal", "decimal"},
    {"bigint", "bigint"},
    {"uniqueidentifier", "uniqueidentifier"},
    {"datetime2", "datetime2"},
    {"smallint", "smallint"},
    {"tinyint", "tinyint"},
    {"char", "char"},
    {"nchar", "nchar"},
    {"date", "date"},
    {"money", "money"},
    {"numeric", "numeric"},
    {"float", "float"},
    {"real", "real"},
    {"varbinary", "varbinary"},
    {"binary", "binary"},
    {"time", "time"},
    {"datetimeoffset", "datetimeoffset"},
    {"smalldatetime", "smalldatetime"},
    {"smallmoney", "smallmoney"},
    {"text", "text"},
    {"ntext", "ntext"},
    {"image", "image"},
    {"xml", "xml"},
    {"timestamp", "timestamp"},
    {"rowversion", "timestamp"},
    {"sql_variant", "sql_variant"},
    {"sysname", "sysname"},
    {"geography", "geography"},
    {"geometry", "geometry"},
    {"hierarchyid", "hierarchyid"},
    {"integer", "int"},
    {"dec", "decimal"},
    {"character", "char"},
    {"json", "json"},
    {"vector", "vector"},
    {"double precision", "float"},
    {"char varying", "varchar"},
    {"character varying", "varchar"},
    {"binary varying", "varbinary"},
    {"nchar varying", "nvarchar"},
    {"national char", "nchar"},
    {"national character", "nchar"},
    {"national text", "ntext"},
    {"national char varying", "nvarchar"},
    {"national character varying", "nvarchar"},
};

const char *host_nth_type_name(uint32_t n)
{
    return n < std::size(system_types) ? system_types[n].written.data() : nullptr;
}

// Empty when the server has no such type.
static std::string_view my_system_name(std::string_view written)
{
    for (const host_type_synonym &type : system_types) {
        if (host_same_text(type.written, written))
            return type.name;
    }
    return {};
}

// Adds the words that belong to the name after the first: PRECISION, CHARACTER, VARYING.
static void my_read_more_words(host_tsql_cursor &cursor, std::string &name)
{
    const auto take = [&cursor, &name](std::string_view word) {
        if (cursor.token.kind != host_tsql_kind::word || !host_same_text(cursor.token.text, word))
            return;
        name += ' ';
        name += word;
        cursor.advance();
    };
    if (host_same_text(name, "double"))
        return take("precision");
    const bool is_national = host_same_text(name, "national");
    if (is_national) {
        take("character");
        take("char");
        take("text");
    }
    if (is_national || host_same_text(name, "char") || host_same_text(name, "character") ||
        host_same_text(name, "nchar") || host_same_text(name, "binary"))
        take("varying");
}

static std::optional<int64_t> my_read_size(host_tsql_cursor &cursor)
{
    int64_t size = 0;
    const std::string_view text = cursor.token.text;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (cursor.token.kind != host_tsql_kind::number || error != std::errc{} || end != text.data() + text.size() ||
        size > 8000) {
        cursor.fail_expected("the size of the type");
        return {};
    }
    cursor.advance();
    return size;
}

namespace {
// What a size may be.
struct host_size_limits {
    std::string_view type;
    int64_t low;
    int64_t high;
};
} // namespace

static constexpr int64_t most_digits = 38; // of decimals alone

static constexpr host_size_limits size_limits[] = {
    {"decimal", 1, most_digits},
    {"numeric", 1, most_digits},
    {"char", 1, 8000},
    {"varchar", 1, 8000},
    {"binary", 1, 8000},
    {"varbinary", 1, 8000},
    {"nchar", 1, 4000},
    {"nvarchar", 1, 4000},
    {"float", 1, 53},
    {"time", 0, 7},
    {"datetime2", 0, 7},
    {"datetimeoffset", 0, 7},
};

// The server has no type of other sizes, and takes no statement that names one.
static void my_check_sizes(host_tsql_cursor &cursor, const host_tsql_type &type)
{
    for (const host_size_limits &limits : size_limits) {
        if (type.system_name != limits.type || !type.first)
            continue;
        std::string what(limits.type);
        const std::string size = std::to_string(*type.first);
        if (*type.first < limits.low || *type.first > limits.high) {
            what.append(" takes a size from ").append(std::to_string(limits.low));
            what.append(" to ").append(std::to_string(limits.high)).append(", not ").append(size);
            cursor.fail(what);
        } else if (limits.high == most_digits && type.second && *type.second > *type.first) {
            what.append("(").append(size).append(",").append(std::to_string(*type.second));
            cursor.fail(what.append(") has more digits after the point than digits"));
        }
    }
}

static void my_read_sizes(host_tsql_cursor &cursor, host_tsql_type &type)
{
    if (!cursor.token.is('('))
        return;
    if (type.system_name == "xml")
        return cursor.skip_parentheses();
    cursor.advance();
    type.is_max = cursor.take(host_word::max);
    if (!type.is_max)
        type.first = my_read_size(cursor);
    if (cursor.take(',') && cursor.token.kind == host_tsql_kind::number)
        type.second = my_read_size(cursor);
    else if (cursor.token.kind == host_tsql_kind::word) // vector(3, float16)
        cursor.advance();
    if (!cursor.failed())
        my_check_sizes(cursor, type);
    cursor.expect(')');
}

// Whether more words may belong to the name.
static bool my_may_go_on(std::string_view name)
{
    constexpr std::string_view words[] = {"char", "character", "nchar", "binary", "national", "double"};
    return std::any_of(std::begin(words), std::end(words),
                       [name](std::string_view word) { return host_same_text(word, name); });
}

// name, schema.name, or several words: NATIONAL CHARACTER VARYING
static void my_read_names(host_tsql_cursor &cursor, host_tsql_type &type)
{
    std::string buffer;
    const bool is_word = cursor.token.kind == host_tsql_kind::word;
    std::string_view name = host_unquoted(cursor.token, buffer);
    cursor.advance();
    if (!cursor.token.is('.') && !(is_word && my_may_go_on(name)))
        type.system_name = my_system_name(name);
    if (type.is_system())
        return;
    type.written = name;
    while (cursor.take('.')) {
        if (!cursor.token.is_name())
            return cursor.fail_expected("a type");
        type.schema = type.written;
        type.written = host_unquoted(cursor.token, buffer);
        cursor.advance();
    }
    if (is_word && type.schema.empty())
        my_read_more_words(cursor, type.written);
    if (type.schema.empty() || host_same_text(type.schema, "sys"))
        type.system_name = my_system_name(type.written);
}

host_tsql_type host_read_type(host_tsql_cursor &cursor)
{
    host_tsql_type type;
    if (!cursor.token.is_name() || host_is_reserved(cursor.token.word)) {
        cursor.fail_expected("a type");
        return type;
    }
    my_read_names(cursor, type);
    my_read_sizes(cursor, type);
    return type;
}

host_declared_type host_declared(const host_tsql_type &type)
{
    host_declared_type declared;
    declared.name = type.name();
    declared.length = type.is_max ? -1 : type.first;
    declared.precision = type.first;
    declared.scale = type.system_name == "decimal" || type.system_name == "numeric" ? type.second : type.first;
    return declared;
}

std::string host_read_type_spelling(host_tsql_cursor &cursor)
{
    const host_tsql_type type = host_read_type(cursor);
    std::string text = type.is_system() || type.schema.empty() ? "" : host_bracketed(type.schema) + '.';
    text += host_bracketed(type.name());
    if (type.is_max)
        return text + "(max)";
    if (!type.first)
        return text;
    text += '(' + std::to_string(*type.first);
    return text + (type.second ? ',' + std::to_string(*type.second) + ')' : ")");
}
