// EXISTS (SELECT ... FROM sys.tables WHERE ...): queries of the server's catalogue, answered from the script's own.
#include "script/host_script_query.hpp"

#include <algorithm>

static constexpr host_view views[] = {
    {"tables", host_view_kind::objects, "U", host_topic::object_name},
    {"objects", host_view_kind::objects, "", host_topic::object_name},
    {"all_objects", host_view_kind::objects, "", host_topic::object_name},
    {"sysobjects", host_view_kind::objects, "", host_topic::object_name},
    {"views", host_view_kind::objects, "V", host_topic::object_name},
    {"procedures", host_view_kind::objects, "P", host_topic::object_name},
    {"triggers", host_view_kind::objects, "TR", host_topic::object_name},
    {"sequences", host_view_kind::objects, "SO", host_topic::object_name},
    {"synonyms", host_view_kind::objects, "SN", host_topic::object_name},
    {"foreign_keys", host_view_kind::objects, "F", host_topic::object_name},
    {"check_constraints", host_view_kind::objects, "C", host_topic::object_name},
    {"default_constraints", host_view_kind::objects, "D", host_topic::object_name},
    {"key_constraints", host_view_kind::objects, "PK UQ", host_topic::object_name},
    {"table_constraints", host_view_kind::objects, "PK UQ F C", host_topic::object_name},
    {"referential_constraints", host_view_kind::objects, "F", host_topic::object_name},
    {"columns", host_view_kind::columns, "", host_topic::column},
    {"all_columns", host_view_kind::columns, "", host_topic::column},
    {"syscolumns", host_view_kind::columns, "", host_topic::column},
    {"indexes", host_view_kind::indexes, "", host_topic::index},
    {"sysindexes", host_view_kind::indexes, "", host_topic::index},
    {"schemas", host_view_kind::schemas, "", host_topic::schema_name},
    {"schemata", host_view_kind::schemas, "", host_topic::schema_name},
    {"types", host_view_kind::types, "", host_topic::type},
    {"systypes", host_view_kind::types, "", host_topic::type},
    {"databases", host_view_kind::databases, "", host_topic::database},
    {"sysdatabases", host_view_kind::databases, "", host_topic::database},
    {"fn_listextendedproperty", host_view_kind::properties, "", host_topic::unknown},
};

struct host_view_column {
    std::string_view name;
    host_topic topic;
};

static constexpr host_view_column view_columns[] = {
    {"object_id", host_topic::object_id},
    {"id", host_topic::object_id},
    {"parent_object_id", host_topic::parent_id},
    {"parent_obj", host_topic::parent_id},
    {"schema_id", host_topic::schema_id},
    {"uid", host_topic::schema_id},
    {"type", host_topic::kind},
    {"xtype", host_topic::kind},
    {"table_schema", host_topic::schema_name},
    {"constraint_schema", host_topic::schema_name},
    {"schema_name", host_topic::schema_name},
    {"column_name", host_topic::column},
    {"constraint_name", host_topic::object_name},
    {"table_catalog", host_topic::anything},
    {"constraint_catalog", host_topic::anything},
};

static const host_view *my_find_view(std::string_view name)
{
    const auto *found = std::find_if(std::begin(views), std::end(views),
                                     [name](const host_view &view) { return host_same_text(view.name, name); });
    return found == std::end(views) ? nullptr : found;
}

static const host_view *my_view_of(const host_catalogue_query &query, std::string_view alias)
{
    for (const host_query_source &source : query.sources) {
        if (alias.empty() || host_same_text(source.alias, alias) || host_same_text(source.view->name, alias))
            return source.view;
    }
    return nullptr;
}

static host_topic my_topic(const host_catalogue_query &query, std::string_view alias, std::string_view column)
{
    const host_view *view = my_view_of(query, alias);
    if (!view)
        return host_topic::unknown;
    if (host_same_text(column, "name"))
        return view->name_topic;
    if (host_same_text(column, "table_name"))
        return view->object_kinds.find(' ') == std::string_view::npos ? host_topic::object_name : host_topic::unknown;
    for (const host_view_column &known : view_columns) {
        if (host_same_text(known.name, column))
            return known.topic;
    }
    return host_topic::unknown;
}

// name [AS] [alias]; an unknown name leaves the question open.
static void my_read_source(host_script_reader &reader, host_catalogue_query &query)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!cursor.token.is_name()) {
        query.is_open = true;
        return cursor.token.is('(') ? cursor.skip_parentheses() : cursor.advance();
    }
    const host_script_name name = reader.read_name();
    const bool is_server = host_same_text(name.schema, "sys") || host_same_text(name.schema, "INFORMATION_SCHEMA") ||
                           host_same_text(name.name.substr(0, 3), "sys");
    const host_view *view = is_server ? my_find_view(name.name) : nullptr;
    if (cursor.token.is('(') && view && view->kind == host_view_kind::properties) {
        cursor.advance();
        do
            query.arguments.push_back(host_read_fact(reader));
        while (cursor.take(','));
        cursor.expect(')');
    } else if (cursor.token.is('(')) {
        cursor.skip_parentheses();
    }
    std::string_view alias;
    cursor.take(host_word::as);
    if (cursor.token.is_name() && !host_is_reserved(cursor.token.word) && !host_same_text(cursor.token.text, "INNER") &&
        !host_same_text(cursor.token.text, "LEFT"))
        alias = reader.read_plain_name();
    if (cursor.take(host_word::with))
        cursor.skip_parentheses();
    if (view)
        query.sources.push_back({view, alias});
    else
        query.is_open = true;
}

static void my_read_from(host_script_reader &reader, host_catalogue_query &query)
{
    host_tsql_cursor &cursor = reader.cursor;
    int depth = 0;
    while (!cursor.token.is(host_word::from) || depth > 0) {
        depth += cursor.token.is('(') ? 1 : 0;
        depth -= cursor.token.is(')') ? 1 : 0;
        if (cursor.token.is_end() || depth < 0)
            return cursor.fail_expected("FROM");
        cursor.advance();
    }
    cursor.advance();
    my_read_source(reader, query);
    while (!cursor.failed() && !cursor.token.is(host_word::where) && !cursor.token.is(')')) {
        if (cursor.token.is_end())
            return cursor.fail_expected("')'");
        const bool is_next = cursor.token.is(host_word::join) || cursor.token.is(',');
        if (cursor.token.is('(')) {
            cursor.skip_parentheses();
            continue;
        }
        query.is_open |= cursor.token.is(host_word::union_) || host_same_text(cursor.token.text, "HAVING");
        cursor.advance();
        if (is_next)
            my_read_source(reader, query);
    }
}

// OBJECTPROPERTY(id, 'IsUserTable') = 1
static bool my_read_property_test(host_script_reader &reader, host_catalogue_query &query)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!host_same_text(cursor.token.text, "OBJECTPROPERTY") || !cursor.peek().is('('))
        return false;
    cursor.advance();
    cursor.advance();
    reader.read_name();
    cursor.expect(',');
    const host_fact property = host_read_fact(reader);
    cursor.expect(')');
    const bool is_equal = cursor.take('=');
    const host_fact value = host_read_fact(reader);
    const std::string_view kinds = host_property_kinds(property.text);
    query.is_open |= kinds.empty() || !is_equal || value.text != "1";
    query.tests.push_back({host_topic::kind, {{host_fact_kind::text, std::string(kinds)}}});
    return true;
}

// column = value, column IN (values)
static void my_read_test(host_script_reader &reader, host_catalogue_query &query)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (my_read_property_test(reader, query))
        return;
    if (!cursor.token.is_name() || host_is_reserved(cursor.token.word))
        return cursor.fail_expected("a column");
    std::string_view alias;
    std::string_view column = reader.read_plain_name();
    while (cursor.take('.')) {
        alias = column;
        column = reader.read_plain_name();
    }
    host_query_test test{my_topic(query, alias, column), {}};
    if (cursor.take('=')) {
        test.values.push_back(host_read_fact(reader));
    } else if (cursor.take(host_word::in)) {
        cursor.expect('(');
        do
            test.values.push_back(host_read_fact(reader));
        while (cursor.take(','));
        cursor.expect(')');
    } else {
        return cursor.fail_expected("'='");
    }
    query.is_open |= test.topic == host_topic::unknown;
    query.tests.push_back(std::move(test));
}

std::optional<bool> host_read_exists(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    host_catalogue_query query;
    cursor.expect('(');
    cursor.expect(host_word::select, "SELECT");
    my_read_from(reader, query);
    if (cursor.take(host_word::where)) {
        do
            my_read_test(reader, query);
        while (!cursor.failed() && cursor.take(host_word::and_));
    }
    if (cursor.failed() || !cursor.take(')')) {
        cursor.go_back(first);
        cursor.skip_parentheses();
        return std::nullopt;
    }
    return host_answer(reader, query);
}
