// DROP
#include "script/host_script_create.hpp"

#include <algorithm>

static void my_drop_table(host_script_reader &reader, const host_script_name &name)
{
    if (reader.mode != host_script_mode::execute || name.is_temporary() || reader.is_elsewhere(name))
        return;
    if (host_script_table *table = reader.state.find_table(name.schema, name.name))
        reader.state.drop_table(table);
}

static void my_drop_left_object(host_script_reader &reader, const host_script_name &name)
{
    const host_script_object *object = reader.state.find_object(name.schema, name.name);
    if (reader.mode != host_script_mode::execute || !object || object->table)
        return;
    reader.state.forget_object(name.schema, name.name);
    reader.state.sequences.erase({name.schema, name.name});
    reader.state.retire_bound(name.schema, name.name);
    std::erase_if(reader.session.left_objects,
                  [&name](const host_left_object &left) { return host_same_text(left.name, name.text()); });
}

static void my_drop_schema(host_script_reader &reader, const host_script_name &name)
{
    if (reader.mode == host_script_mode::execute)
        reader.state.schemas.erase(host_folded(name.name));
}

static void my_drop_type(host_script_reader &reader, const host_script_name &name)
{
    if (reader.mode == host_script_mode::execute)
        reader.state.retire_type(name.schema, name.name);
}

using host_drop = void (*)(host_script_reader &reader, const host_script_name &name);

static host_drop my_find_drop(host_word word)
{
    switch (word) {
    case host_word::table:
        return my_drop_table;
    case host_word::view:
    case host_word::proc:
    case host_word::procedure:
    case host_word::function:
    case host_word::trigger:
    case host_word::synonym:
    case host_word::sequence:
    case host_word::default_:
    case host_word::rule:
        return my_drop_left_object;
    case host_word::schema:
        return my_drop_schema;
    case host_word::type:
        return my_drop_type;
    default:
        return nullptr;
    }
}

void host_read_drop(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    cursor.advance();
    const host_word what = cursor.token.word;
    const host_drop drop = my_find_drop(what);
    if (what == host_word::index) {
        cursor.advance();
        return host_read_drop_index(reader, first);
    }
    if (!drop) {
        cursor.go_back(first);
        return host_skip_statement(reader);
    }
    cursor.advance();
    if (cursor.take(host_word::if_))
        cursor.expect(host_word::exists, "EXISTS");
    bool is_ours = false;
    do {
        const host_script_name name = reader.read_name();
        if (cursor.failed())
            return;
        is_ours |= what == host_word::table && reader.state.find_table(name.schema, name.name);
        drop(reader, name);
    } while (cursor.take(','));
    if (what == host_word::trigger && cursor.token.is(host_word::on))
        host_skip_statement(reader);
    if (is_ours && reader.mode == host_script_mode::doubt)
        reader.not_read(first, host_script_undecided);
}
