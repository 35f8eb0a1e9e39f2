// Queries: only one that makes a table matters.
#include "script/host_script_reader.hpp"

// A SELECT that makes a table. Its columns are those of the query, which is not followed.
static void my_note_into(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token after = cursor.token;
    cursor.go_back(first);
    host_script_name name;
    int depth = 0;
    while (cursor.token.text.data() < after.text.data() && name.name.empty() && !cursor.failed()) {
        depth += cursor.token.is('(') ? 1 : 0;
        depth -= cursor.token.is(')') ? 1 : 0;
        const bool is_into = depth == 0 && cursor.token.is(host_word::into);
        const bool is_other = cursor.token.is(host_word::insert) || cursor.token.is(host_word::merge);
        if (is_other)
            break;
        cursor.advance();
        if (is_into && cursor.token.is_name())
            name = reader.read_name();
    }
    if (!name.name.empty() && !name.is_temporary() && !reader.is_elsewhere(name)) {
        if (reader.mode == host_script_mode::doubt) {
            cursor.go_back(after);
            return reader.not_read(first, "it makes a table under a condition that the script does not decide");
        }
        auto table = std::make_unique<host_script_table>();
        table->schema = reader.state.keep(name.schema);
        table->name = reader.state.keep(name.name);
        table->is_opaque = true;
        table->source = &reader.source;
        table->made_at =
            reader.outer_at != std::string_view::npos ? reader.outer_at : first.start_in(cursor.scanner.script());
        if (!reader.state.find_object(table->schema, table->name)) {
            reader.state.add_object("U", table->schema, table->name, table.get());
            reader.state.tables.push_back(std::move(table));
        }
    }
    cursor.go_back(after);
}

void host_read_query(host_script_reader &reader)
{
    const host_tsql_token first = reader.cursor.token;
    host_skip_statement(reader);
    if (!reader.cursor.failed() && reader.mode != host_script_mode::ignore)
        my_note_into(reader, first);
    host_note_locals(reader, first);
}
