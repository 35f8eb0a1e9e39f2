// Answers queries of the server's catalogue from what the script has made so far.
#include "script/host_script_query.hpp"

#include <algorithm>

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
    reader.state.objects.each([&add](const host_script_object &object) { add(&object); });
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
    return col && col->record->description;
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
        return !schema || std::any_of(schema->values.begin(), schema->values.end(), [&reader](const host_fact &value) {
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
        return !name || std::any_of(name->values.begin(), name->values.end(), [&reader](const host_fact &value) {
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

std::optional<bool> host_answer(host_script_reader &reader, const host_catalogue_query &query)
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
