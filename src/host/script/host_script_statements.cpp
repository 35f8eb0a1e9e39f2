// Statements and batches, one after the other.
#include "script/host_script_reader.hpp"

#define KT_HERE "src/host/script/host_script_statements"

static constexpr int max_levels = 8; // of strings that execute strings

static void my_read_return(host_script_reader &reader)
{
    host_skip_statement(reader);
    if (reader.mode == host_script_mode::execute)
        reader.is_over = true;
}

// What begins with an ordinary word: a label, or a procedure, which needs no EXEC where a batch begins.
static void my_read_other(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token token = cursor.token;
    if (token.is(host_word::throw_) || token.is(host_word::enable) || token.is(host_word::disable) ||
        token.is(host_word::get) || token.is(host_word::send) || token.is(host_word::receive) ||
        token.is(host_word::move) || token.is(host_word::add) || token.is(host_word::with))
        return host_read_query(reader);
    if (!token.is_name() || host_is_reserved(token.word))
        return cursor.fail_expected("a statement");
    if (cursor.peek().is(':')) {
        cursor.advance();
        cursor.advance();
        return;
    }
    std::string buffer;
    const std::string_view name = host_unquoted(token, buffer);
    const bool is_procedure = cursor.peek().is('.') || host_same_text(name.substr(0, 3), "sp_") ||
                              host_same_text(name.substr(0, 3), "xp_") || token.kind == host_tsql_kind::name;
    if (!is_procedure)
        return cursor.fail_expected("a statement");
    host_read_exec(reader);
}

static void my_dispatch(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    switch (first.word) {
    case host_word::create:
        return host_read_create(reader);
    case host_word::alter: {
        const host_tsql_token second = cursor.peek();
        if (second.is(host_word::table))
            return host_read_alter_table(reader, first);
        if (second.is(host_word::index))
            return host_read_alter_index(reader, first);
        return host_read_create(reader);
    }
    case host_word::drop:
        return host_read_drop(reader);
    case host_word::exec:
    case host_word::execute:
        return host_read_exec(reader);
    case host_word::if_:
        return host_read_if(reader);
    case host_word::while_:
        return host_read_while(reader);
    case host_word::begin:
        return host_read_begin(reader);
    case host_word::set:
        return host_read_set(reader);
    case host_word::use:
        return host_read_use(reader);
    case host_word::select:
        return host_read_query(reader);
    case host_word::return_:
        return my_read_return(reader);
    case host_word::end:
        if (cursor.peek().is(host_word::conversation))
            return host_skip_statement(reader);
        return cursor.fail_expected("a statement");
    case host_word::else_:
        return cursor.fail_expected("a statement");
    default:
        if (!host_starts_statement(first.word))
            return my_read_other(reader);
        host_skip_statement(reader);
        if (first.is(host_word::declare) || !reader.locals.empty())
            host_note_locals(reader, first);
    }
}

// A statement that does not run. Once for each database that is not read a finding says so.
static void my_read_idly(host_script_reader &reader, const host_tsql_token &first)
{
    const host_script_mode mode = std::exchange(reader.mode, host_script_mode::ignore);
    const bool is_about_table =
        (first.is(host_word::create) || first.is(host_word::alter)) && reader.cursor.peek().is(host_word::table);
    my_dispatch(reader);
    if (is_about_table && !reader.cursor.failed() && !reader.is_parsed_only &&
        reader.session.other_databases.insert(host_folded(reader.database_in_use)).second)
        reader.not_read(first, "this and what follows is about database " + reader.database_in_use +
                                   "; the tables of " + reader.state.database + " are imported");
    reader.mode = mode;
}

// After a malformed statement reading goes on where the next one seems to begin.
static void my_recover(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token failed = cursor.failed_token();
    reader.add_error(failed.start_in(cursor.scanner.script()), cursor.message() + host_dialect_hint(failed));
    cursor.go_back(first);
    host_skip_statement(reader);
    if (!cursor.failed())
        return;
    cursor.go_back(cursor.failed_token());
    while (!cursor.token.is_end())
        cursor.advance();
}

// A line for the tool that runs the script. Variables have been replaced before.
static void my_read_command(host_script_reader &reader, const host_tsql_token &first)
{
    reader.cursor.advance();
    if (host_same_text(first.text.substr(0, 3), ":r ") && reader.mode != host_script_mode::ignore)
        reader.not_read(first, "the file that it names is read only when it is given too");
}

void host_read_statement(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    const host_script_mode mode = reader.mode;
    const int depth = reader.depth;
    if (reader.is_over && mode == host_script_mode::execute)
        return host_skip_to_batch_end(reader);
    if (cursor.take(';'))
        return;
    if (first.kind == host_tsql_kind::command)
        return my_read_command(reader, first);
    const bool is_setting = first.is(host_word::set) || first.is(host_word::use);
    if (mode == host_script_mode::execute && !is_setting && reader.is_idle())
        my_read_idly(reader, first);
    else
        my_dispatch(reader);
    if (!cursor.failed())
        return;
    reader.mode = mode;
    reader.depth = depth;
    my_recover(reader, first);
}

void host_read_statements(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    while (cursor.token.kind != host_tsql_kind::end && !kt_has_err(reader.session.ctx)) {
        if (cursor.token.kind != host_tsql_kind::batch) {
            host_read_statement(reader);
            continue;
        }
        reader.batch_start = cursor.scanner.position();
        reader.default_schema = "dbo";
        reader.locals.clear();
        reader.is_over = false;
        cursor.advance();
    }
}

void host_read_string(host_script_reader &outer, const host_tsql_token &at, std::string_view text)
{
    if (outer.level >= max_levels)
        return outer.not_read(at, "strings that execute strings are nested too deep");
    host_script_reader inner(outer.session, outer.source, text, outer.cursor.scanner.quoted_identifier());
    inner.mode = outer.mode;
    inner.level = outer.level + 1;
    inner.columns_are_nullable = outer.columns_are_nullable;
    inner.database_in_use = outer.database_in_use;
    inner.outer_at =
        outer.outer_at != std::string_view::npos ? outer.outer_at : at.start_in(outer.cursor.scanner.script());
    host_read_statements(inner);
}
