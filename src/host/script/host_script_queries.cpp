// EXISTS (SELECT ... FROM sys.tables WHERE ...): queries of the server's catalogue, answered from the script's own.
//
// A query is a list of views and of tests joined by AND. Each test narrows down one fact: the object, its schema, its
// kind, the column. A view or test that is not known leaves the answer open, unless another test rules it out.
#include "script/host_script_conditions.hpp"

#include <algorithm>

namespace {

enum class host_view_kind { objects, columns, indexes, schemas, types, databases, properties };

// What a column of a view is about.
enum class host_topic {
    unknown,
    anything,
    object_name,
    object_id,
    parent_id,
    schema_id,
    schema_name,
    kind,
    column,
    index,
    type,
    database
};

struct host_view {
    std::string_view name;
    host_view_kind kind;
    std::string_view object_kinds; // separated by blanks; empty: all
    host_topic name_topic;         // of its column "name"
};

struct host_query_test {
    host_topic topic;
    std::vector<host_fact> values;
};

struct host_query_source {
    const host_view *view;
    std::string_view alias;
};

struct host_catalogue_query {
    std::vector<host_query_source> sources;
    std::vector<host_query_test> tests;
    std::vector<host_fact> arguments; // of fn_listextendedproperty
    bool is_open = false;             // something was not understood
};

} // namespace

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

static std::optional<bool> my_decide(host_script_reader &reader, const host_catalogue_query &query);

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
    return my_decide(reader, query);
}

static const host_query_test *my_find_test(const host_catalogue_query &query, std::initializer_list<host_topic> topics)
{
    for (const host_query_test &test : query.tests) {
        if (std::find(topics.begin(), topics.end(), test.topic) != topics.end())
            return &test;
    }
    return nullptr;
}

static bool my_is_among(const host_query_test *test, std::string_view value)
{
    return !test || std::any_of(test->values.begin(), test->values.end(),
                                [value](const host_fact &fact) { return host_same_text(fact.text, value); });
}

static bool my_is_object(const host_query_test *test, std::string_view schema, std::string_view name)
{
    return my_is_among(test, host_folded(schema) + '\0' + host_folded(name));
}

static bool my_fits(const host_catalogue_query &query, const host_script_object &object)
{
    const host_query_test *kinds = my_find_test(query, {host_topic::kind});
    const bool is_of_kind =
        !kinds || std::any_of(kinds->values.begin(), kinds->values.end(),
                              [&](const host_fact &kind) { return host_is_kind(object, kind.text); });
    const host_query_test *parent = my_find_test(query, {host_topic::parent_id});
    const bool has_parent = !parent || (object.table && my_is_object(parent, object.table->schema, object.table->name));
    return is_of_kind && has_parent &&
           my_is_among(my_find_test(query, {host_topic::schema_id, host_topic::schema_name}), object.schema) &&
           my_is_object(my_find_test(query, {host_topic::object_id}), object.schema, object.name) &&
           my_is_among(my_find_test(query, {host_topic::object_name}), object.name);
}

static bool my_is_of_view(const host_script_object &object, const host_view &view)
{
    if (view.object_kinds.empty())
        return true;
    if (view.name == "default_constraints" && !object.table)
        return false;
    std::string_view rest = view.object_kinds;
    while (!rest.empty()) {
        const size_t end = std::min(rest.find(' '), rest.size());
        if (host_is_kind(object, rest.substr(0, end)))
            return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

// The objects that the tests leave: the one with an id or a full name, or all that have a name.
static std::vector<const host_script_object *> my_find_objects(host_script_reader &reader,
                                                               const host_catalogue_query &query)
{
    std::vector<const host_script_object *> found;
    const auto add = [&](const host_script_object *object) {
        if (object && my_fits(query, *object))
            found.push_back(object);
    };
    if (const host_query_test *id = my_find_test(query, {host_topic::object_id})) {
        for (const host_fact &value : id->values) {
            const size_t at = value.text.find('\0');
            if (value.kind == host_fact_kind::object)
                add(reader.state.find_object(std::string_view(value.text).substr(0, at),
                                             std::string_view(value.text).substr(at + 1)));
        }
        return found;
    }
    const host_query_test *name = my_find_test(query, {host_topic::object_name});
    if (name) {
        for (const host_fact &value : name->values) {
            for (const host_script_object *object : reader.state.find_objects(value.text))
                add(object);
        }
        return found;
    }
    for (const auto &[key, object] : reader.state.objects)
        add(&object);
    return found;
}

static std::optional<bool> my_find_in_tables(host_script_reader &reader, const host_catalogue_query &query,
                                             bool columns)
{
    const host_query_test *name = my_find_test(query, {columns ? host_topic::column : host_topic::index});
    for (const host_script_object *object : my_find_objects(reader, query)) {
        if (!object->table || std::string_view(object->kind) != "U")
            continue;
        if (!name)
            return true;
        if (object->table->is_opaque)
            return std::nullopt;
        for (const host_fact &value : name->values) {
            if (columns ? static_cast<bool>(object->table->find_col(value.text))
                        : static_cast<bool>(object->table->find_key(value.text)))
                return true;
        }
    }
    return false;
}

// SELECT * FROM fn_listextendedproperty(name, 'SCHEMA', schema, 'TABLE', table, 'COLUMN', column)
static std::optional<bool> my_has_property(host_script_reader &reader, const std::vector<host_fact> &arguments)
{
    if (arguments.size() < 7 || !host_same_text(arguments[0].text, "MS_Description") ||
        !host_same_text(arguments[3].text, "TABLE"))
        return std::nullopt;
    const host_script_table *table = reader.state.find_table(arguments[2].text, arguments[4].text);
    if (!table)
        return false;
    if (arguments[5].kind == host_fact_kind::null)
        return table->description != nullptr;
    if (!host_same_text(arguments[5].text, "COLUMN"))
        return std::nullopt;
    const host_script_column *col = table->find_col(arguments[6].text);
    return col && col->record.description;
}

static std::optional<bool> my_answer(host_script_reader &reader, const host_catalogue_query &query,
                                     const host_view &view)
{
    const host_query_test *schema = my_find_test(query, {host_topic::schema_id, host_topic::schema_name});
    switch (view.kind) {
    case host_view_kind::columns:
        return my_find_in_tables(reader, query, true);
    case host_view_kind::indexes:
        return my_find_in_tables(reader, query, false);
    case host_view_kind::objects: {
        const auto objects = my_find_objects(reader, query);
        return std::any_of(objects.begin(), objects.end(),
                           [&view](const host_script_object *object) { return my_is_of_view(*object, view); });
    }
    case host_view_kind::schemas:
        return schema && std::any_of(schema->values.begin(), schema->values.end(), [&reader](const host_fact &value) {
                   return reader.state.schemas.contains(host_folded(value.text));
               });
    case host_view_kind::types: {
        const host_query_test *name = my_find_test(query, {host_topic::type});
        const auto &types = reader.state.types;
        return std::any_of(types.begin(), types.end(), [&](const auto &entry) {
            return my_is_among(name, entry.second->name) && my_is_among(schema, entry.second->schema);
        });
    }
    case host_view_kind::databases: {
        const host_query_test *name = my_find_test(query, {host_topic::database});
        return name && std::any_of(name->values.begin(), name->values.end(), [&reader](const host_fact &value) {
                   const std::string folded = host_folded(value.text);
                   return reader.state.databases.contains(folded) || folded == host_folded(reader.state.database);
               });
    }
    case host_view_kind::properties:
        return my_has_property(reader, query.arguments);
    }
    return std::nullopt;
}

// The view that the query is about: columns and indexes of tables, before tables, before their schemas.
static const host_view *my_main_view(const host_catalogue_query &query)
{
    constexpr host_view_kind order[] = {host_view_kind::properties, host_view_kind::columns, host_view_kind::indexes,
                                        host_view_kind::objects,    host_view_kind::types,   host_view_kind::schemas,
                                        host_view_kind::databases};
    for (const host_view_kind kind : order) {
        for (const host_query_source &source : query.sources) {
            if (source.view->kind == kind)
                return source.view;
        }
    }
    return nullptr;
}

static std::optional<bool> my_decide(host_script_reader &reader, const host_catalogue_query &query)
{
    bool is_open = query.is_open || query.sources.empty();
    for (const host_query_test &test : query.tests) {
        const auto is = [&test](host_fact_kind kind) {
            return std::all_of(test.values.begin(), test.values.end(),
                               [kind](const host_fact &value) { return value.kind == kind; });
        };
        if (is(host_fact_kind::null) && test.topic != host_topic::unknown)
            return false; // nothing equals NULL
        is_open |= std::any_of(test.values.begin(), test.values.end(),
                               [](const host_fact &value) { return value.kind == host_fact_kind::unknown; }) &&
                   test.topic != host_topic::anything;
    }
    if (is_open)
        return std::nullopt;
    return my_answer(reader, query, *my_main_view(query));
}
