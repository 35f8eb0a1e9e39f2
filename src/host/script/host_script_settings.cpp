// SET and USE: how what follows is read.
#include "script/host_script_reader.hpp"

static bool my_is_text(const host_tsql_token &token, std::string_view text)
{
    return token.kind == host_tsql_kind::word && host_same_text(token.text, text);
}

// SET QUOTED_IDENTIFIER, ANSI_NULLS ON: what matters is whether quotes delimit names, what a column is that does not
// say whether it takes NULL, and whether statements run.
void host_read_set(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    bool quotes = false, nulls_on = false, nulls_off = false, parsed_only = false;
    const host_tsql_token first = cursor.token;
    cursor.advance();
    const bool is_assignment = cursor.token.kind == host_tsql_kind::variable;
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
    if (is_assignment)
        host_note_locals(reader, first);
}

void host_read_use(host_script_reader &reader)
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
