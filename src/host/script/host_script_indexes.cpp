// CREATE, ALTER and DROP INDEX
#include "script/host_script_parts.hpp"

#include "tsql/host_server_spelling.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_indexes"

// UNIQUE, CLUSTERED, XML ... up to INDEX
static void my_read_kind(host_script_reader &reader, host_script_constraint &index)
{
    host_tsql_cursor &cursor = reader.cursor;
    while (!cursor.token.is(host_word::index) && !cursor.token.is_end()) {
        index.is_unique |= cursor.token.is(host_word::unique);
        index.is_clustered |= cursor.token.is(host_word::clustered);
        if (cursor.token.is(host_word::columnstore))
            index.index_kind = "COLUMNSTORE";
        else if (cursor.token.is(host_word::xml))
            index.index_kind = "XML";
        else if (cursor.token.is(host_word::spatial))
            index.index_kind = "SPATIAL";
        cursor.advance();
    }
    cursor.expect(host_word::index, "INDEX");
}

static void my_replace(host_script_table &table, const char *name)
{
    std::erase_if(table.keys, [name](const host_script_key &key) {
        return !key.is_constraint() && key.name && host_same_text(key.name, name);
    });
}

// What follows the columns; whether an index of the same name is replaced.
static bool my_read_tail(host_script_reader &reader, host_script_constraint &index)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (cursor.take(host_word::include))
        index.included = host_read_names(reader);
    if (cursor.take(host_word::where)) {
        const host_tsql_token first = cursor.token;
        index.definition = reader.state.keep(host_read_condition(cursor));
        if (cursor.failed()) {
            cursor.go_back(first);
            host_skip_statement(reader);
            index.definition = reader.state.keep('(' + std::string(cursor.text_since(first)) + ')');
            return false;
        }
    }
    const host_tsql_token options = cursor.token;
    if (cursor.token.is_word("USING") || cursor.token.is(host_word::for_)) {
        host_skip_statement(reader);
        return false;
    }
    host_skip_storage(reader);
    const std::string text = host_folded(cursor.text_since(options));
    const size_t at = text.find("drop_existing");
    return at != std::string::npos && text.find("on", at) < text.find_first_of(",)", at);
}

void host_read_create_index(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_script_parts parts;
    host_script_constraint index;
    index.kind = host_script_constraint_kind::index;
    my_read_kind(reader, index);
    index.name = reader.read_kept_name("the name of an index");
    cursor.expect(host_word::on, "ON");
    const host_script_name name = reader.read_name();
    if (cursor.failed())
        return;
    if (index.index_kind && !cursor.token.is('(')) // a clustered columnstore holds all columns
        host_skip_storage(reader);
    else
        host_read_key_cols(reader, index);
    const bool is_replaced = my_read_tail(reader, index);
    if (cursor.failed() || reader.mode == host_script_mode::ignore || name.is_temporary())
        return;
    if (reader.mode == host_script_mode::doubt)
        return reader.not_read(first, host_script_undecided);
    host_script_table *table = reader.is_elsewhere(name) ? nullptr : reader.use_table(name);
    const host_script_object *object = reader.state.find_object(name.schema, name.name);
    if (!table && object) // a view
        return;
    if (!table)
        return reader.not_read(first, "table " + name.text() + " is not made by the script");
    if (table->is_opaque)
        return;
    if (is_replaced)
        my_replace(*table, index.name);
    parts.constraints.push_back(std::move(index));
    host_apply_parts(reader, first, *table, parts, true);
}

// ALTER INDEX name | ALL ON table DISABLE | REBUILD; the rest does not matter.
void host_read_alter_index(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    cursor.advance();
    const bool is_all = cursor.take(host_word::all);
    const std::string_view index = is_all ? std::string_view() : reader.read_plain_name("the name of an index");
    cursor.expect(host_word::on, "ON");
    const host_script_name name = reader.read_name();
    const bool is_disabled = cursor.token.is(host_word::disable);
    const bool is_rebuilt = cursor.token.is(host_word::rebuild);
    if (cursor.failed())
        return;
    host_skip_statement(reader);
    if ((!is_disabled && !is_rebuilt) || reader.mode == host_script_mode::ignore || name.is_temporary())
        return;
    if (reader.mode == host_script_mode::doubt)
        return reader.not_read(first, host_script_undecided);
    host_script_table *table = reader.use_table(name);
    if (!table)
        return;
    for (host_script_key &key : table->keys) {
        if (is_all || (key.name && host_same_text(key.name, index)))
            key.is_disabled = is_disabled;
    }
}

static void my_drop_index(host_script_reader &reader, const host_tsql_token &first, const host_script_name &table_name,
                          std::string_view index, bool if_exists)
{
    if (reader.mode != host_script_mode::execute || table_name.is_temporary())
        return;
    host_script_table *table = reader.use_table(table_name);
    const host_script_key *key = table ? table->find_key(index) : nullptr;
    if (key && !key->is_constraint())
        my_replace(*table, key->name);
    else if (table && !if_exists && !table->is_opaque)
        reader.not_read(first, "the table has no index " + std::string(index));
}

// DROP INDEX [IF EXISTS] name ON table, ... or the older table.name
void host_read_drop_index(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const bool if_exists = cursor.take(host_word::if_);
    if (if_exists)
        cursor.expect(host_word::exists, "EXISTS");
    do {
        host_script_name name;
        std::string_view parts[3];
        size_t count = 0;
        do
            parts[count++] = reader.read_plain_name("the name of an index");
        while (count < 3 && cursor.take('.'));
        const std::string_view index = parts[count - 1];
        if (cursor.take(host_word::on)) {
            name = reader.read_name();
        } else if (count > 1) {
            name.name = parts[count - 2];
            name.schema = count > 2 ? parts[0] : std::string_view(reader.default_schema);
        } else {
            cursor.fail_expected("ON");
        }
        host_skip_storage(reader);
        if (cursor.failed())
            return;
        my_drop_index(reader, first, name, index, if_exists);
    } while (cursor.take(','));
    if (reader.mode == host_script_mode::doubt)
        reader.not_read(first, host_script_undecided);
}
