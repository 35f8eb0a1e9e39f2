// Values that conditions compare: literals, and what the server's functions say about the objects of the script.
#include "script/host_script_conditions.hpp"

#include "script/host_script_exec.hpp"

#include <charconv>

struct host_property_kind {
    std::string_view property;
    std::string_view kinds;
};

std::string_view host_property_kinds(std::string_view property)
{
    static constexpr host_property_kind properties[] = {
        {"IsUserTable", "U"},
        {"IsTable", "U"},
        {"IsView", "V"},
        {"IsProcedure", "P"},
        {"IsForeignKey", "F"},
        {"IsPrimaryKey", "PK"},
        {"IsUniqueCnst", "UQ"},
        {"IsCheckCnst", "C"},
        {"IsDefaultCnst", "D"},
        {"IsTrigger", "TR"},
        {"IsScalarFunction", "FN"},
        {"IsTableFunction", "FN"},
        {"IsInlineFunction", "FN"},
        {"IsRule", "R"},
        {"IsDefault", "D"},
    };
    for (const host_property_kind &known : properties) {
        if (host_same_text(known.property, property))
            return known.kinds;
    }
    return {};
}

bool host_is_kind(const host_script_object &object, std::string_view kind)
{
    kind = host_trimmed(kind);
    if (host_same_text(kind, "IF") || host_same_text(kind, "TF") || host_same_text(kind, "FS"))
        kind = "FN";
    if (host_same_text(kind, "K"))
        return std::string_view(object.kind) == "PK" || std::string_view(object.kind) == "UQ";
    return host_same_text(object.kind, kind);
}

static std::string my_key(std::string_view schema, std::string_view name)
{
    return host_folded(schema) + '\0' + host_folded(name);
}

static const host_script_object *my_find(host_script_reader &reader, const host_fact &id)
{
    if (id.kind != host_fact_kind::object)
        return nullptr;
    const size_t at = id.text.find('\0');
    return reader.state.find_object(std::string_view(id.text).substr(0, at), std::string_view(id.text).substr(at + 1));
}

// Schema and name; nothing for an object that is not of this database.
static std::optional<host_script_name> my_split(host_script_reader &reader, std::string_view text)
{
    const std::vector<std::string> parts = host_split_name(text);
    const size_t count = parts.size();
    const auto kept = [&](size_t from_last) {
        return from_last <= count ? std::string_view(reader.state.keep(parts[count - from_last])) : std::string_view();
    };
    host_script_name name{kept(3), kept(2), kept(1)};
    if (name.schema.empty())
        name.schema = reader.default_schema;
    if (name.is_temporary() || reader.is_elsewhere(name))
        return std::nullopt;
    return name;
}

static host_fact my_known(bool exists, host_fact_kind kind, std::string text)
{
    return exists ? host_fact{kind, std::move(text)} : host_fact{host_fact_kind::null, {}};
}

using host_facts = std::vector<host_fact>;

static host_fact my_object_id(host_script_reader &reader, const host_facts &arguments)
{
    const std::optional<host_script_name> name = my_split(reader, arguments[0].text);
    if (!name)
        return {};
    const host_script_object *object = reader.state.find_object(name->schema, name->name);
    if (arguments.size() > 1 && arguments[1].kind != host_fact_kind::text)
        return {};
    const bool exists = object && (arguments.size() == 1 || host_is_kind(*object, arguments[1].text));
    return my_known(exists, host_fact_kind::object, my_key(name->schema, name->name));
}

static host_fact my_schema_id(host_script_reader &reader, const host_facts &arguments)
{
    const std::string folded = host_folded(arguments[0].text);
    const bool exists = reader.state.schemas.contains(folded) || folded == "sys";
    return my_known(exists, host_fact_kind::schema, folded);
}

static host_fact my_db_id(host_script_reader &reader, const host_facts &arguments)
{
    const std::string folded = host_folded(arguments[0].text);
    const bool exists = reader.state.databases.contains(folded) || folded == host_folded(reader.state.database);
    return my_known(exists, host_fact_kind::something, {});
}

static host_fact my_type_id(host_script_reader &reader, const host_facts &arguments)
{
    const std::optional<host_script_name> name = my_split(reader, arguments[0].text);
    return my_known(name && reader.state.find_type(name->schema, name->name), host_fact_kind::something, {});
}

static const host_script_column *my_find_column(const host_script_table *table, const host_fact &name)
{
    return table ? table->find_col(name.text) : nullptr;
}

static host_fact my_col_length(host_script_reader &reader, const host_facts &arguments)
{
    const std::optional<host_script_name> name = my_split(reader, arguments[0].text);
    if (!name || arguments.size() < 2)
        return {};
    const host_script_table *table = reader.state.find_table(name->schema, name->name);
    if (table && table->is_opaque)
        return {};
    const host_script_column *col = my_find_column(table, arguments[1]);
    return my_known(col, host_fact_kind::number, col ? std::to_string(col->record.max_length) : "");
}

static host_fact my_column_property(host_script_reader &reader, const host_facts &arguments)
{
    const host_script_object *object = my_find(reader, arguments[0]);
    if (arguments.size() < 3 || (object && object->table && object->table->is_opaque))
        return {};
    const host_script_column *col = my_find_column(object ? object->table : nullptr, arguments[1]);
    if (!col)
        return {host_fact_kind::null, {}};
    if (host_same_text(arguments[2].text, "IsIdentity"))
        return {host_fact_kind::number, col->record.is_identity ? "1" : "0"};
    if (host_same_text(arguments[2].text, "AllowsNull"))
        return {host_fact_kind::number, col->record.is_nullable ? "1" : "0"};
    return {host_fact_kind::something, {}};
}

static host_fact my_index_property(host_script_reader &reader, const host_facts &arguments)
{
    const host_script_object *object = my_find(reader, arguments[0]);
    const bool exists = arguments.size() > 1 && object && object->table && object->table->find_key(arguments[1].text);
    return my_known(exists, host_fact_kind::something, {});
}

static host_fact my_object_property(host_script_reader &reader, const host_facts &arguments)
{
    const host_script_object *object = my_find(reader, arguments[0]);
    const std::string_view kinds = arguments.size() > 1 ? host_property_kinds(arguments[1].text) : std::string_view();
    if (!object)
        return {host_fact_kind::null, {}};
    if (kinds.empty())
        return {};
    return {host_fact_kind::number, host_is_kind(*object, kinds) ? "1" : "0"};
}

static host_fact my_isnull(host_script_reader &, const host_facts &arguments)
{
    return arguments[0].kind == host_fact_kind::null && arguments.size() > 1 ? arguments[1] : arguments[0];
}

struct host_fact_function {
    std::string_view name;
    host_fact_kind first; // of its first argument; unknown: any
    host_fact (*ask)(host_script_reader &reader, const host_facts &arguments);
};

static constexpr host_fact_function functions[] = {
    {"OBJECT_ID", host_fact_kind::text, my_object_id},
    {"SCHEMA_ID", host_fact_kind::text, my_schema_id},
    {"DB_ID", host_fact_kind::text, my_db_id},
    {"TYPE_ID", host_fact_kind::text, my_type_id},
    {"COL_LENGTH", host_fact_kind::text, my_col_length},
    {"COLUMNPROPERTY", host_fact_kind::object, my_column_property},
    {"INDEXPROPERTY", host_fact_kind::object, my_index_property},
    {"OBJECTPROPERTY", host_fact_kind::object, my_object_property},
    {"ISNULL", host_fact_kind::unknown, my_isnull},
};

static host_facts my_read_arguments(host_script_reader &reader)
{
    host_facts arguments;
    reader.cursor.expect('(');
    if (!reader.cursor.token.is(')')) {
        do
            arguments.push_back(host_read_fact(reader));
        while (reader.cursor.take(','));
    }
    reader.cursor.expect(')');
    return arguments;
}

static host_fact my_ask(host_script_reader &reader, std::string_view name)
{
    for (const host_fact_function &function : functions) {
        if (!host_same_text(function.name, name))
            continue;
        const host_facts arguments = my_read_arguments(reader);
        if (arguments.empty() || reader.cursor.failed())
            return {};
        const bool fits = function.first == host_fact_kind::unknown || arguments[0].kind == function.first;
        if (arguments[0].kind == host_fact_kind::null && !fits)
            return {host_fact_kind::null, {}};
        return fits ? function.ask(reader, arguments) : host_fact{};
    }
    reader.cursor.skip_parentheses();
    return {};
}

static host_fact my_read_call(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token name = cursor.token;
    cursor.advance();
    bool is_plain = true;
    while (cursor.take('.')) {
        is_plain = false;
        cursor.advance();
    }
    if (!cursor.token.is('('))
        return {};
    if (is_plain)
        return my_ask(reader, name.text);
    cursor.skip_parentheses();
    return {};
}

// (SELECT COUNT(*) FROM sys.tables WHERE ...)
static host_fact my_read_count(host_script_reader &reader)
{
    const std::optional<bool> exists = host_read_exists(reader);
    if (!exists)
        return {};
    return *exists ? host_fact{host_fact_kind::count, {}} : host_fact{host_fact_kind::number, "0"};
}

static host_fact my_read_operand(host_script_reader &reader)
{
    constexpr int max_nesting = 400;
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token token = cursor.token;
    std::string buffer;
    switch (token.kind) {
    case host_tsql_kind::text:
        cursor.advance();
        return {host_fact_kind::text, std::string(host_unquoted(token, buffer))};
    case host_tsql_kind::number:
        cursor.advance();
        return {host_fact_kind::number, std::string(token.text)};
    case host_tsql_kind::variable:
    case host_tsql_kind::binary:
        cursor.advance();
        return {};
    case host_tsql_kind::name:
        return my_read_call(reader);
    case host_tsql_kind::word:
        if (cursor.take(host_word::null))
            return {host_fact_kind::null, {}};
        if (!host_is_reserved(token.word))
            return my_read_call(reader);
        break;
    default:
        break;
    }
    if (cursor.token.is('(')) {
        if (cursor.peek().is(host_word::select) && host_same_text(cursor.peek(2).text, "COUNT"))
            return my_read_count(reader);
        if (cursor.peek().is(host_word::select) || ++reader.nesting > max_nesting) {
            cursor.skip_parentheses();
            return {};
        }
        cursor.advance();
        host_fact inner = host_read_fact(reader);
        cursor.expect(')');
        reader.nesting--;
        return inner;
    }
    if (cursor.take('-') && cursor.token.kind == host_tsql_kind::number) {
        host_fact number{host_fact_kind::number, '-' + std::string(cursor.token.text)};
        cursor.advance();
        return number;
    }
    cursor.fail_expected("a value");
    return {};
}

host_fact host_read_fact(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_fact fact = my_read_operand(reader);
    while (cursor.token.is('+') || cursor.token.is('-') || cursor.token.is('*') || cursor.token.is('/') ||
           cursor.token.is('%') || cursor.token.is('&')) {
        cursor.advance();
        my_read_operand(reader);
        fact = {};
    }
    return fact;
}

static std::optional<bool> my_decide(int order, std::string_view comparison)
{
    if (comparison == "=")
        return order == 0;
    if (comparison == "<>" || comparison == "!=")
        return order != 0;
    if (comparison == "<")
        return order < 0;
    if (comparison == ">")
        return order > 0;
    if (comparison == "<=" || comparison == "!>")
        return order <= 0;
    return order >= 0;
}

// A count of which only is known that it is not 0.
static std::optional<bool> my_compare_count(std::string_view comparison, const host_fact &right)
{
    if (right.kind == host_fact_kind::number && right.text == "0")
        return my_decide(1, comparison);
    if (right.kind == host_fact_kind::number && right.text == "1" && (comparison == ">=" || comparison == "<"))
        return comparison == ">=";
    return std::nullopt;
}

std::optional<bool> host_compare_facts(const host_fact &left, std::string_view comparison, const host_fact &right)
{
    if (left.kind == host_fact_kind::null || right.kind == host_fact_kind::null)
        return false;
    if (left.kind == host_fact_kind::count)
        return my_compare_count(comparison, right);
    if (left.kind == host_fact_kind::object && right.kind == host_fact_kind::number)
        return my_decide(right.text == "0" ? 1 : -1, comparison); // ids are greater than 0
    if (left.kind != right.kind || left.kind == host_fact_kind::unknown || left.kind == host_fact_kind::something)
        return std::nullopt;
    if (left.kind != host_fact_kind::number)
        return my_decide(host_folded(left.text).compare(host_folded(right.text)), comparison);
    double a = 0, b = 0;
    std::from_chars(left.text.data(), left.text.data() + left.text.size(), a);
    std::from_chars(right.text.data(), right.text.data() + right.text.size(), b);
    return my_decide(a < b ? -1 : a > b ? 1 : 0, comparison);
}
