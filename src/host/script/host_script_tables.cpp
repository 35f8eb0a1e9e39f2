// CREATE TABLE
#include "script/host_script_parts.hpp"

static void my_read_period(host_script_reader &reader, host_script_parts &parts)
{
    host_script_constraint period;
    period.kind = host_script_constraint_kind::period;
    reader.cursor.advance();
    reader.cursor.expect(host_word::for_, "FOR");
    reader.cursor.advance();
    period.cols = host_read_names(reader);
    parts.constraints.push_back(std::move(period));
}

// A comma may follow the last part, and may be left out before a constraint.
static void my_read_parts(host_script_reader &reader, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.expect('(');
    do {
        if (cursor.token.is(')'))
            break;
        if (cursor.token.is(host_word::period) && cursor.peek().is(host_word::for_))
            my_read_period(reader, parts);
        else if (host_begins_constraint(cursor.token))
            host_read_constraint(reader, nullptr, parts);
        else
            host_read_column(reader, parts);
        while (!cursor.failed() && host_begins_constraint(cursor.token))
            host_read_constraint(reader, nullptr, parts);
    } while (cursor.take(','));
    if (!cursor.take(')'))
        cursor.fail_expected("',' or ')'");
}

void host_read_versioning(host_script_reader &reader, bool &is_on, host_script_name &history)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.take('=');
    is_on = cursor.take(host_word::on);
    if (!is_on)
        cursor.take(host_word::off);
    if (!cursor.take('('))
        return;
    while (!cursor.token.is(')') && !cursor.token.is_end()) {
        const bool is_history = cursor.token.is_word("HISTORY_TABLE");
        cursor.advance();
        if (is_history && cursor.take('='))
            history = reader.read_name();
    }
    cursor.expect(')');
}

// WITH (MEMORY_OPTIMIZED = ON, SYSTEM_VERSIONING = ON (HISTORY_TABLE = dbo.X_History))
static void my_read_table_options(host_script_reader &reader, host_script_table &table, host_script_name &history)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    cursor.expect('(');
    while (!cursor.token.is(')') && !cursor.token.is_end()) {
        if (cursor.token.is('(')) {
            cursor.skip_parentheses();
            continue;
        }
        const host_tsql_token option = cursor.token;
        cursor.advance();
        if (option.is_word("SYSTEM_VERSIONING"))
            host_read_versioning(reader, table.is_temporal, history);
        else if (option.is_word("MEMORY_OPTIMIZED") && cursor.take('='))
            table.is_memory_optimized = cursor.token.is(host_word::on);
    }
    cursor.expect(')');
}

static void my_read_tail(host_script_reader &reader, host_script_table &table, host_script_name &history)
{
    host_tsql_cursor &cursor = reader.cursor;
    while (!cursor.failed()) {
        if (cursor.token.is(host_word::with) && cursor.peek().is('(')) {
            my_read_table_options(reader, table, history);
        } else if (cursor.token.is(host_word::as) && cursor.peek().is(host_word::node)) {
            cursor.advance();
            table.is_node = cursor.take(host_word::node);
        } else if (cursor.token.is(host_word::as) && cursor.peek().is(host_word::edge)) {
            cursor.advance();
            table.is_edge = cursor.take(host_word::edge);
        } else if (cursor.token.is(host_word::on) || cursor.token.is(host_word::textimage_on) ||
                   cursor.token.is(host_word::filestream_on)) {
            cursor.advance();
            cursor.advance();
            if (cursor.token.is('('))
                cursor.skip_parentheses();
        } else {
            return;
        }
    }
}

void host_set_history(host_script_reader &reader, host_script_table &table, const host_script_name &history)
{
    table.is_temporal = true;
    if (!history.name.empty()) {
        reader.state.histories.insert({reader.state.keep(history.schema), reader.state.keep(history.name)});
        if (host_script_table *existing = reader.state.find_table(history.schema, history.name))
            existing->is_history = true;
    }
}

// A statement must end here: a word that belongs to no other is the rest of something that was not understood.
static void my_expect_end(host_script_reader &reader)
{
    const host_tsql_token &token = reader.cursor.token;
    const bool is_end = token.is_end() || token.is(';') || host_starts_statement(token.word) ||
                        (token.is_name() && !host_is_reserved(token.word)) || token.kind == host_tsql_kind::command;
    if (!is_end)
        reader.cursor.fail_expected("the end of the statement");
}

static void my_add_table(host_script_reader &reader, const host_tsql_token &first, const host_script_name &name,
                         std::unique_ptr<host_script_table> table, host_script_parts &parts)
{
    host_script_state &state = reader.state;
    table->schema = state.keep(name.schema);
    table->name = state.keep(name.name);
    table->source = &reader.source;
    table->made_at =
        reader.outer_at != std::string_view::npos ? reader.outer_at : first.start_in(reader.cursor.scanner.script());
    if (const host_script_object *other = state.find_object(name.schema, name.name)) {
        const std::string place = other->table && std::string_view(other->kind) == "U"
                                      ? " at " + host_place_of(*other->table)
                                      : std::string();
        return reader.add_error(table->made_at, "table " + name.text() + " already exists: it was made" + place);
    }
    host_script_table &made = *table;
    state.add_object("U", made.schema, made.name, &made);
    state.tables.push_back(std::move(table));
    made.is_history = state.histories.contains({name.schema, name.name});
    host_apply_parts(reader, first, made, parts, true);
}

void host_read_create_table(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    auto table = std::make_unique<host_script_table>();
    table->is_external = cursor.take(host_word::external);
    cursor.advance(); // TABLE
    const host_script_name name = reader.read_name();
    if (reader.mode != host_script_mode::execute || name.is_temporary()) {
        host_skip_statement(reader);
        if (reader.mode == host_script_mode::doubt && !name.is_temporary())
            reader.not_read(first, host_script_undecided);
        return;
    }
    if (reader.is_elsewhere(name)) {
        host_skip_statement(reader);
        return reader.not_read(first, "the table is made in another database");
    }
    if (cursor.token.is(host_word::as) && !cursor.peek().is(host_word::node) && !cursor.peek().is(host_word::edge)) {
        host_skip_statement(reader);
        return reader.not_read(first, "the script does not list the columns of such a table");
    }
    host_script_parts parts;
    parts.cols.reserve(32);
    host_script_name history;
    if (cursor.token.is('('))
        my_read_parts(reader, parts);
    my_read_tail(reader, *table, history);
    if (!cursor.failed() && parts.cols.empty() && !table->is_edge)
        cursor.fail_expected("'(' and the columns of the table");
    my_expect_end(reader);
    if (cursor.failed())
        return;
    const bool is_temporal = table->is_temporal;
    my_add_table(reader, first, name, std::move(table), parts);
    if (host_script_table *made = reader.state.find_table(name.schema, name.name); made && is_temporal)
        host_set_history(reader, *made, history);
}
