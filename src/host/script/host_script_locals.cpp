// Variables of a batch that hold strings which the script itself says: what EXEC is given is often one of them.
//
// Whatever else might give a variable a value makes it unknown.
#include "script/host_script_reader.hpp"

// Adds the string that a constant or variable is; false when the script does not say it.
static bool my_add_operand(host_script_reader &reader, std::string &text)
{
    host_tsql_cursor &cursor = reader.cursor;
    std::string buffer;
    if (cursor.token.kind == host_tsql_kind::text) {
        text += host_unquoted(cursor.token, buffer);
    } else {
        const auto local = cursor.token.kind == host_tsql_kind::variable
                               ? reader.locals.find(host_folded(cursor.token.text))
                               : reader.locals.end();
        if (local == reader.locals.end())
            return false;
        text += local->second;
    }
    cursor.advance();
    return text.size() <= cursor.scanner.script().size() * 16; // a variable added to itself grows without bound
}

bool host_read_constant_string(host_script_reader &reader, std::string &text)
{
    do {
        if (!my_add_operand(reader, text))
            return false;
    } while (reader.cursor.take('+'));
    return true;
}

// Past the type of a declaration.
static void my_skip_type(host_tsql_cursor &cursor)
{
    while (!cursor.token.is('=') && !cursor.token.is(',') && !cursor.token.is_end() &&
           cursor.token.kind != host_tsql_kind::variable) {
        if (cursor.token.is('('))
            cursor.skip_parentheses();
        else
            cursor.advance();
    }
}

// After a variable: = constant, += constant, or something else.
static void my_note_value(host_script_reader &reader, const std::string &name, const host_tsql_token &after)
{
    host_tsql_cursor &cursor = reader.cursor;
    const auto known = reader.locals.find(name);
    std::string text;
    bool is_known = false;
    if (cursor.take('=')) {
        is_known = host_read_constant_string(reader, text);
    } else if (cursor.token.is("+=")) {
        cursor.advance();
        text = known == reader.locals.end() ? std::string() : known->second;
        is_known = known != reader.locals.end() && host_read_constant_string(reader, text);
    }
    const bool ends_here = cursor.token.is(',') || cursor.token.text.data() >= after.text.data();
    if (is_known && ends_here && reader.mode == host_script_mode::execute)
        reader.locals.insert_or_assign(name, std::move(text));
    else
        reader.locals.erase(name);
}

void host_note_locals(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (cursor.failed() || reader.mode == host_script_mode::ignore)
        return;
    const host_tsql_token after = cursor.token;
    const bool is_declaration = first.is(host_word::declare);
    cursor.go_back(first);
    while (!cursor.failed() && cursor.token.text.data() < after.text.data()) {
        if (cursor.token.kind != host_tsql_kind::variable) {
            cursor.advance();
            continue;
        }
        const std::string name = host_folded(cursor.token.text);
        cursor.advance();
        if (is_declaration)
            my_skip_type(cursor);
        const bool may_change = is_declaration || cursor.token.is('=') || cursor.token.is("+=") ||
                                cursor.token.is(host_word::output) || cursor.token.is(host_word::out) ||
                                first.is(host_word::fetch);
        if (may_change)
            my_note_value(reader, name, after);
    }
    cursor.go_back(after);
}
