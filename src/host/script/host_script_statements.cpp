// The flow of statements: batches, blocks, branches.
#include "script/host_script_reader.hpp"

#define KT_HERE "src/host/script/host_script_statements"

static constexpr int max_blocks = 200;
static constexpr int max_levels = 8; // of strings that execute strings

static bool my_is_text(const host_tsql_token &token, std::string_view text)
{
    return token.kind == host_tsql_kind::word && host_same_text(token.text, text);
}

// SET QUOTED_IDENTIFIER, ANSI_NULLS ON: what matters is whether quotes delimit names, what a column is that does not
// say whether it takes NULL, and whether statements run.
static void my_read_set(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    bool quotes = false, nulls_on = false, nulls_off = false, parsed_only = false;
    const host_tsql_token first = cursor.token;
    cursor.advance();
    do {
        parsed_only |= my_is_text(cursor.token, "NOEXEC") || my_is_text(cursor.token, "PARSEONLY");
        quotes |= my_is_text(cursor.token, "QUOTED_IDENTIFIER");
        nulls_on |= my_is_text(cursor.token, "ANSI_NULL_DFLT_ON");
        nulls_off |= my_is_text(cursor.token, "ANSI_NULL_DFLT_OFF");
        const bool all = my_is_text(cursor.token, "ANSI_DEFAULTS");
        quotes |= all;
        nulls_on |= all;
        cursor.advance();
    } while (cursor.take(','));
    const bool on = cursor.token.is(host_word::on);
    if ((on || cursor.token.is(host_word::off)) && reader.mode == host_script_mode::execute) {
        if (quotes)
            cursor.scanner.set_quoted_identifier(on);
        if (nulls_on && on)
            reader.columns_are_nullable = true;
        if (nulls_off && on)
            reader.columns_are_nullable = false;
        if (parsed_only)
            reader.is_parsed_only = on;
    }
    cursor.go_back(first);
    host_skip_statement(reader);
    host_note_locals(reader, first);
}

static void my_read_use(host_script_reader &reader)
{
    reader.cursor.advance();
    const std::string_view name = reader.read_plain_name("the name of a database");
    constexpr std::string_view system_databases[] = {"master", "model", "msdb", "tempdb"};
    for (const std::string_view system : system_databases) {
        if (host_same_text(name, system))
            return;
    }
    if (reader.mode != host_script_mode::execute || reader.cursor.failed())
        return;
    reader.database_in_use = name;
    if (reader.state.tables.empty()) // the first one that gets a table is read
        reader.state.database = name;
}

// BEGIN ... END; false when the batch ends inside.
static bool my_read_block(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    while (!cursor.token.is(host_word::end)) {
        if (cursor.token.is_end()) {
            if (!reader.is_over)
                reader.add_error(cursor.token.start_in(cursor.scanner.script()), "expected END, found the end of the "
                                                                                 "batch");
            return false;
        }
        host_read_statement(reader);
    }
    cursor.advance();
    return true;
}

static void my_read_try(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!my_read_block(reader))
        return;
    cursor.expect(host_word::try_, "TRY");
    cursor.take(';');
    cursor.expect(host_word::begin, "BEGIN CATCH");
    cursor.expect(host_word::catch_, "CATCH");
    const host_script_mode mode = std::exchange(reader.mode, host_script_mode::ignore);
    const bool is_whole = !cursor.failed() && my_read_block(reader);
    reader.mode = mode;
    if (is_whole)
        cursor.expect(host_word::catch_, "CATCH");
}

static void my_read_begin(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_word next = cursor.peek().word;
    if (next == host_word::tran || next == host_word::transaction || next == host_word::distributed ||
        next == host_word::dialog || next == host_word::conversation)
        return host_skip_statement(reader);
    cursor.advance();
    if (++reader.depth > max_blocks)
        return cursor.fail("blocks are nested too deep");
    if (cursor.take(host_word::try_))
        my_read_try(reader);
    else
        my_read_block(reader);
    reader.depth--;
}

static void my_read_branch(host_script_reader &reader, std::optional<bool> taken)
{
    const host_script_mode mode = reader.mode;
    if (mode == host_script_mode::execute && !taken)
        reader.mode = host_script_mode::doubt;
    else if (taken && !*taken)
        reader.mode = host_script_mode::ignore;
    host_read_statement(reader);
    reader.mode = mode;
}

static void my_read_if(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    if (++reader.depth > max_blocks)
        return cursor.fail("blocks are nested too deep");
    const std::optional<bool> test = host_read_test(reader);
    my_read_branch(reader, test);
    if (cursor.token.is(';') && cursor.peek().is(host_word::else_))
        cursor.advance();
    if (!cursor.failed() && cursor.take(host_word::else_))
        my_read_branch(reader, test ? std::optional<bool>(!*test) : test);
    reader.depth--;
}

// Nobody knows how often the body runs.
static void my_read_while(host_script_reader &reader)
{
    reader.cursor.advance();
    const std::optional<bool> test = host_read_test(reader);
    if (++reader.depth > max_blocks)
        return reader.cursor.fail("blocks are nested too deep");
    my_read_branch(reader, test && !*test ? test : std::nullopt);
    reader.depth--;
}

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

static void my_read_query(host_script_reader &reader)
{
    const host_tsql_token first = reader.cursor.token;
    host_skip_statement(reader);
    if (!reader.cursor.failed() && reader.mode != host_script_mode::ignore)
        my_note_into(reader, first);
    host_note_locals(reader, first);
}

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
        return my_read_query(reader);
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
        return my_read_if(reader);
    case host_word::while_:
        return my_read_while(reader);
    case host_word::begin:
        return my_read_begin(reader);
    case host_word::set:
        return my_read_set(reader);
    case host_word::use:
        return my_read_use(reader);
    case host_word::select:
        return my_read_query(reader);
    case host_word::return_:
        return my_read_return(reader);
    case host_word::end:
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

// What gives a script away as one of another database.
static std::string my_dialect_hint(const host_tsql_token &token)
{
    struct host_foreign_word {
        std::string_view word;
        const char *database;
    };
    static constexpr host_foreign_word words[] = {
        {"`", "MySQL"},
        {"AUTO_INCREMENT", "MySQL"},
        {"ENGINE", "MySQL"},
        {"UNSIGNED", "MySQL"},
        {"DELIMITER", "MySQL"},
        {"AUTOINCREMENT", "SQLite"},
        {"PRAGMA", "SQLite"},
        {"WITHOUT", "SQLite"},
        {"DEFERRABLE", "PostgreSQL"},
        {"::", "PostgreSQL"},
        {"RETURNING", "PostgreSQL"},
        {"PROMPT", "Oracle"},
        {"COMMENT", "another database"},
    };
    for (const host_foreign_word &foreign : words) {
        if (host_same_text(foreign.word, token.text))
            return std::string("; this looks like a script for ") + foreign.database;
    }
    return {};
}

// After a malformed statement reading goes on where the next one seems to begin.
static void my_recover(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token failed = cursor.failed_token();
    reader.add_error(failed.start_in(cursor.scanner.script()), cursor.message() + my_dialect_hint(failed));
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
