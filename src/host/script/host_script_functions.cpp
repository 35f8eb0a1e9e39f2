// What the server's functions say about the objects of the script.
#include "script/host_script_conditions.hpp"

#include "script/host_script_exec.hpp"

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
    return my_known(col, host_fact_kind::number, col ? std::to_string(col->record->max_length) : "");
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
        return {host_fact_kind::number, col->record->is_identity ? "1" : "0"};
    if (host_same_text(arguments[2].text, "AllowsNull"))
        return {host_fact_kind::number, col->record->is_nullable ? "1" : "0"};
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

static host_facts my_read_facts(host_script_reader &reader)
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

host_fact host_ask_function(host_script_reader &reader, std::string_view name)
{
    for (const host_fact_function &function : functions) {
        if (!host_same_text(function.name, name))
            continue;
        const host_facts arguments = my_read_facts(reader);
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
