// EXEC: strings that are executed, and the procedures that change tables.
#include "script/host_script_exec.hpp"

#include "tsql/host_server_spelling.hpp"

#define KT_HERE "src/host/script/host_script_exec"

static host_script_argument my_read_argument(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_script_argument argument;
    std::string buffer;
    if (cursor.token.kind == host_tsql_kind::variable && cursor.peek().is('=')) {
        argument.name = host_folded(cursor.token.text.substr(1));
        cursor.advance();
        cursor.advance();
    }
    const host_tsql_token token = cursor.token;
    const bool is_negative = cursor.take('-');
    switch (cursor.token.kind) {
    case host_tsql_kind::text:
    case host_tsql_kind::name:
    case host_tsql_kind::word:
    case host_tsql_kind::number:
    case host_tsql_kind::binary:
        argument.is_null = cursor.token.is(host_word::null);
        argument.is_constant = !cursor.token.is(host_word::default_);
        argument.text = (is_negative ? "-" : "") + std::string(host_unquoted(cursor.token, buffer));
        break;
    case host_tsql_kind::variable:
        if (const auto local = reader.locals.find(host_folded(token.text)); local != reader.locals.end()) {
            argument.text = local->second;
            argument.is_constant = true;
        }
        break;
    default:
        cursor.fail_expected("an argument");
    }
    argument.at = token;
    cursor.advance();
    while (cursor.take('.')) // master.dbo.name, which need not be quoted
        cursor.advance();
    if (cursor.take(host_word::output) || cursor.take(host_word::out))
        reader.locals.erase(host_folded(token.text));
    return argument;
}

static bool my_begins_argument(const host_tsql_token &token)
{
    const bool is_word = token.kind == host_tsql_kind::word &&
                         (!host_is_reserved(token.word) || token.is(host_word::null) || token.is(host_word::default_));
    return is_word || token.kind == host_tsql_kind::text || token.kind == host_tsql_kind::name ||
           token.kind == host_tsql_kind::number || token.kind == host_tsql_kind::binary ||
           token.kind == host_tsql_kind::variable || token.is('-');
}

static host_script_arguments my_read_arguments(host_script_reader &reader)
{
    host_script_arguments arguments;
    if (!my_begins_argument(reader.cursor.token))
        return arguments;
    do
        arguments.push_back(my_read_argument(reader));
    while (!reader.cursor.failed() && reader.cursor.take(','));
    return arguments;
}

const host_script_argument *host_find_argument(const host_script_arguments &arguments, size_t position,
                                               std::string_view name)
{
    for (const host_script_argument &argument : arguments) {
        if (argument.name == name)
            return &argument;
    }
    const bool is_there = position < arguments.size() && arguments[position].name.empty();
    return is_there ? &arguments[position] : nullptr;
}

// EXEC ('...' + '...'), whose parts must be constants.
static void my_read_executed_string(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token at = cursor.token;
    cursor.expect('(');
    std::string text;
    if (!host_read_constant_string(reader, text) || !cursor.token.is(')')) {
        cursor.go_back(at);
        cursor.skip_parentheses();
        if (!cursor.failed() && reader.mode != host_script_mode::ignore)
            reader.not_read(first, "the statement is put together while the script runs");
        return;
    }
    cursor.advance();
    if (cursor.take(host_word::at)) // on another server
        return cursor.advance();
    if (reader.mode != host_script_mode::ignore)
        host_read_string(reader, at, text);
}

static void my_execute_sql(host_script_reader &reader, const host_tsql_token &first,
                           const host_script_arguments &arguments)
{
    const host_script_argument *statement = host_find_argument(arguments, 0, "stmt");
    statement = statement ? statement : host_find_argument(arguments, 0, "statement");
    if (statement && statement->is_constant)
        host_read_string(reader, statement->at, statement->text);
    else
        reader.not_read(first, "the statement is put together while the script runs");
}

using host_procedure = void (*)(host_script_reader &reader, const host_tsql_token &first,
                                const host_script_arguments &arguments);

struct host_known_procedure {
    std::string_view name;
    host_procedure run;
    bool changes_tables = true; // more than their descriptions
};

static constexpr host_known_procedure procedures[] = {
    {"sp_executesql", my_execute_sql},
    {"sp_rename", host_run_rename},
    {"sp_bindefault", host_run_bind_default},
    {"sp_unbindefault", host_run_unbind_default},
    {"sp_bindrule", host_run_bind_rule},
    {"sp_unbindrule", host_run_unbind_rule},
    {"sp_addtype", host_run_add_type},
    {"sp_addextendedproperty", host_run_add_property, false},
    {"sp_updateextendedproperty", host_run_add_property, false},
    {"sp_dropextendedproperty", host_run_drop_property, false},
};

static void my_run(host_script_reader &reader, const host_tsql_token &first, const std::string &procedure,
                   const host_script_arguments &arguments)
{
    for (const host_known_procedure &known : procedures) {
        if (!host_same_text(known.name, procedure))
            continue;
        const bool is_string = host_same_text(known.name, "sp_executesql");
        if (reader.mode == host_script_mode::execute || (is_string && reader.mode == host_script_mode::doubt))
            known.run(reader, first, arguments);
        else if (reader.mode == host_script_mode::doubt && known.changes_tables)
            reader.not_read(first, host_script_undecided);
        return;
    }
    const bool is_system =
        host_same_text(procedure.substr(0, 3), "sp_") || host_same_text(procedure.substr(0, 3), "xp_");
    if (host_same_text(procedure, "sp_MSforeachtable") || (!is_system && reader.mode == host_script_mode::execute))
        reader.not_read(first, "what the procedure does is not known");
}

void host_read_exec(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    if (cursor.token.is(host_word::exec) || cursor.token.is(host_word::execute))
        cursor.advance();
    if (cursor.token.is('('))
        return my_read_executed_string(reader, first);
    if (cursor.token.is(host_word::as)) // EXECUTE AS USER = 'name'
        return host_skip_statement(reader);
    if (cursor.token.kind == host_tsql_kind::variable && cursor.peek().is('=')) {
        reader.locals.erase(host_folded(cursor.token.text));
        cursor.advance();
        cursor.advance();
    }
    std::string procedure;
    if (cursor.token.kind == host_tsql_kind::variable)
        cursor.advance();
    else
        procedure = reader.read_name().name;
    if (cursor.token.is(';') && cursor.peek().kind == host_tsql_kind::number) { // procedure;1
        cursor.advance();
        cursor.advance();
    }
    const host_script_arguments arguments = my_read_arguments(reader);
    if (cursor.take(host_word::with))
        host_skip_statement(reader);
    if (!cursor.failed())
        my_run(reader, first, procedure, arguments);
}
