// Views, procedures, functions and triggers: noted by name, read to the end of their batch whatever they hold.
#include "script/host_script_create.hpp"

void host_add_left_object(host_script_reader &reader, const char *kind, const char *kinds, const host_script_name &name)
{
    if (reader.state.find_object(name.schema, name.name))
        return;
    const char *schema = reader.state.keep(name.schema);
    const char *kept = reader.state.keep(name.name);
    reader.state.add_object(kind, schema, kept, nullptr);
    reader.session.left_objects.push_back({kinds, reader.state.keep(name.text())});
}

void host_read_module(host_script_reader &reader, bool is_new)
{
    struct host_module_kind {
        host_word word;
        const char *kind;
        const char *kinds;
    };
    static constexpr host_module_kind kinds[] = {
        {host_word::view, "V", "views"},           {host_word::proc, "P", "procedures"},
        {host_word::procedure, "P", "procedures"}, {host_word::function, "FN", "functions"},
        {host_word::trigger, "TR", "triggers"},
    };
    host_tsql_cursor &cursor = reader.cursor;
    const host_module_kind *found = nullptr;
    for (const host_module_kind &kind : kinds) {
        if (cursor.token.is(kind.word))
            found = &kind;
    }
    if (!found)
        return cursor.fail_expected("VIEW, PROCEDURE, FUNCTION or TRIGGER");
    cursor.advance();
    const host_script_name name = reader.read_name();
    const bool is_for_database = found->word == host_word::trigger && cursor.take(host_word::on) &&
                                 (cursor.token.is(host_word::database) || cursor.token.is(host_word::all));
    if (cursor.failed())
        return;
    if (is_new && reader.mode == host_script_mode::execute && !is_for_database)
        host_add_left_object(reader, found->kind, found->kinds, name);
    host_skip_to_batch_end(reader);
}
