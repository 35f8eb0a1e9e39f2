// Columns: name, type, and attributes in any order.
#include "script/host_script_parts.hpp"

#include "records/host_declared_type.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>

static constexpr size_t most_remembered = 1000; // declarations and defaults

void host_set_type(host_script_state &state, const host_tsql_type &type, host_column &record)
{
    host_set_declared_type(state.texts, host_declared(type), record);
    record.user_type_schema = "sys";
}

static void my_set_alias(host_script_state &state, const host_script_type &type, host_script_column &col)
{
    host_column &record = col.record.change();
    record = type.base;
    record.rule = type.rule ? type.rule->definition : nullptr;
    col.type = const_cast<host_script_type *>(&type);
    host_set_bound_default(state, col, type.defval);
}

void host_read_column_type(host_script_reader &reader, host_script_column &col)
{
    const host_tsql_token first = reader.cursor.token;
    const host_tsql_type type = host_read_type(reader.cursor);
    if (reader.cursor.failed())
        return;
    if (type.is_system()) {
        host_set_type(reader.state, type, col.record.change());
        col.record.change().is_nullable =
            reader.columns_are_nullable && type.system_name != "sysname" && type.system_name != "timestamp";
        return;
    }
    const std::string_view schema = type.schema.empty() ? std::string_view(reader.default_schema) : type.schema;
    if (const host_script_type *alias = reader.use_type(schema, type.written))
        return my_set_alias(reader.state, *alias, col);
    if (const char *database = host_other_database(type.written)) {
        reader.cursor.go_back(first);
        return reader.cursor.fail("'" + type.written + "' is a type of " + database + ", not of T-SQL");
    }
    host_set_type(reader.state, type, col.record.change());
    col.record.change().user_type_schema = reader.state.keep(schema);
    col.record.change().is_nullable = reader.columns_are_nullable;
}

static std::string my_read_signed(host_script_reader &reader)
{
    std::string number = reader.cursor.take('-') ? "-" : "";
    reader.cursor.take('+');
    if (reader.cursor.token.kind != host_tsql_kind::number)
        reader.cursor.fail_expected("a number");
    number += reader.cursor.token.text;
    reader.cursor.advance();
    return number;
}

static void my_read_identity(host_script_reader &reader, host_column &record)
{
    reader.cursor.advance();
    record.is_identity = true;
    record.is_nullable = false;
    record.identity = {"1", "1"};
    if (!reader.cursor.take('('))
        return;
    record.identity.seed = reader.state.keep(my_read_signed(reader));
    reader.cursor.expect(',');
    record.identity.increment = reader.state.keep(my_read_signed(reader));
    reader.cursor.expect(')');
}

static void my_read_collation(host_script_reader &reader, host_script_column &col)
{
    reader.cursor.advance();
    const std::string_view collation = reader.read_plain_name("a collation");
    col.collation = host_same_text(collation, "database_default") ? nullptr : reader.state.keep(collation);
}

// GENERATED ALWAYS AS ROW START [HIDDEN]
static void my_read_generated(host_script_reader &reader, host_column &record)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    cursor.expect(host_word::always, "ALWAYS");
    cursor.expect(host_word::as, "AS");
    struct host_generated {
        std::string_view word;
        uint8_t start;
    };
    static constexpr host_generated kinds[] = {{"ROW", 1}, {"TRANSACTION_ID", 7}, {"SEQUENCE_NUMBER", 9}};
    for (const host_generated &kind : kinds) {
        if (cursor.token.is_word(kind.word))
            record.generated_always_type = kind.start;
    }
    if (record.generated_always_type == 0)
        cursor.fail_expected("ROW START or ROW END");
    cursor.advance();
    if (cursor.take(host_word::end))
        record.generated_always_type++;
    else
        cursor.expect(host_word::start, "START");
    record.is_nullable = false;
    if (cursor.take(host_word::hidden))
        record.is_hidden = true;
}

static void my_read_encrypted(host_script_reader &reader, host_column &record)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    cursor.advance();
    cursor.expect(host_word::with, "WITH");
    cursor.skip_parentheses();
    const std::string options = host_folded(cursor.text_since(first));
    record.encryption_type = options.find("deterministic") != std::string::npos ? 1 : 2;
}

static void my_read_not(host_script_reader &reader, host_column &record)
{
    reader.cursor.advance();
    if (reader.cursor.take(host_word::for_))
        return reader.cursor.expect(host_word::replication, "REPLICATION");
    reader.cursor.expect(host_word::null, "NULL");
    record.is_nullable = false;
}

// Reads one attribute; false when the token begins none.
static bool my_read_attribute(host_script_reader &reader, host_script_column &col, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    switch (cursor.token.word) {
    case host_word::null:
        cursor.advance();
        col.record.change().is_nullable = true;
        return true;
    case host_word::not_:
        my_read_not(reader, col.record.change());
        return true;
    case host_word::identity:
        my_read_identity(reader, col.record.change());
        return true;
    case host_word::collate:
        my_read_collation(reader, col);
        return true;
    case host_word::rowguidcol:
        cursor.advance();
        col.record.change().is_rowguidcol = true;
        return true;
    case host_word::sparse:
        cursor.advance();
        col.record.change().is_sparse = true;
        return true;
    case host_word::filestream:
        cursor.advance();
        col.record.change().is_filestream = true;
        return true;
    case host_word::hidden:
        cursor.advance();
        col.record.change().is_hidden = true;
        return true;
    case host_word::persisted:
        cursor.advance();
        col.record.change().is_persisted = true;
        return true;
    case host_word::generated:
        my_read_generated(reader, col.record.change());
        return true;
    case host_word::encrypted:
        my_read_encrypted(reader, col.record.change());
        return true;
    case host_word::masked:
        cursor.advance();
        if (cursor.take(host_word::with))
            cursor.skip_parentheses();
        return true;
    case host_word::column_set:
        cursor.advance();
        cursor.expect(host_word::for_, "FOR");
        cursor.advance();
        col.record.change().is_column_set = true;
        return true;
    case host_word::with:
        if (!cursor.peek().is(host_word::values))
            return false;
        cursor.advance();
        cursor.advance();
        return true;
    default:
        if (!host_begins_constraint(cursor.token) && !cursor.token.is(host_word::references))
            return false;
        host_read_constraint(reader, col.name, parts);
        return true;
    }
}

// The rest of the line after the current token.
static std::string_view my_rest_of_line(const host_tsql_cursor &cursor)
{
    const std::string_view script = cursor.scanner.script();
    const size_t start = cursor.scanner.position();
    size_t end = std::min(script.find('\n', start), script.size());
    while (end > start && (script[end - 1] == '\r' || script[end - 1] == ' ' || script[end - 1] == '\t'))
        end--;
    return script.substr(start, end - start);
}

// Whether another column with the same text would be the same: it takes up the text to the comma at its end, has
// a type of the server's, and no constraint.
static bool my_is_plain(const host_tsql_cursor &cursor, std::string_view text, const host_script_column &col)
{
    return !cursor.failed() && cursor.token.is(',') && cursor.token.text.data() + 1 == text.data() + text.size() &&
           col.record->user_type_schema && std::string_view(col.record->user_type_schema) == "sys" &&
           text.find('"') == std::string_view::npos;
}

// Reads a column; answers whether a constraint is the last thing in it.
static bool my_read_declaration(host_script_reader &reader, host_script_column &col, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    col.set_name(reader.read_kept_name("a column"));
    if (cursor.take(host_word::as)) {
        col.record.change().is_computed = true;
        col.record.change().is_nullable = true;
        col.record.change().computed = host_read_definition(reader);
    } else if (first.is_word("timestamp") && (cursor.token.is(',') || cursor.token.is(')'))) {
        host_set_type(reader.state, {"", "", "timestamp", false, {}, {}},
                      col.record.change()); // a type can be its name
    } else {
        host_read_column_type(reader, col);
    }
    bool is_constraint = false;
    for (size_t count = parts.constraints.size(); !cursor.failed() && my_read_attribute(reader, col, parts);) {
        is_constraint = parts.constraints.size() > count;
        count = parts.constraints.size();
    }
    return is_constraint;
}

namespace {

// A column's text taken apart around the name of its default constraint, which no other column has.
struct host_default_split {
    std::string_view before; // " [int] NOT NULL"
    std::string_view name;
    std::string_view after; // " DEFAULT ((0)),"
};

} // namespace

// The parts are empty when there is no such constraint, or its name has brackets in it.
static host_default_split my_split_default(std::string_view text)
{
    constexpr std::string_view opening = " CONSTRAINT [";
    const size_t at = text.find(opening);
    if (at == std::string_view::npos)
        return {};
    const size_t start = at + opening.size();
    const size_t end = std::min(text.find(']', start), text.size());
    if (end == start || !text.substr(end).starts_with("] DEFAULT "))
        return {};
    return {text.substr(0, at), text.substr(start, end - start), text.substr(end + 1)};
}

// Gives the column the declaration that another one with this text had; false when there was none.
static bool my_repeat(host_script_reader &reader, std::string_view text, host_script_column &col)
{
    const auto &declarations = reader.session.declarations[reader.columns_are_nullable ? 1 : 0];
    const auto known = declarations.find(text);
    if (known == declarations.end())
        return false;
    col.record.share(known->second.record);
    col.collation = known->second.collation;
    return true;
}

// The same for a column with a default constraint, whose name takes effect with the statement.
static bool my_repeat_with_default(host_script_reader &reader, std::string_view text, host_script_column &col,
                                   host_script_parts &parts)
{
    const host_default_split split = my_split_default(text);
    const auto &definitions = reader.session.definitions;
    if (split.before.empty())
        return false;
    const auto definition = definitions.find(split.after);
    if (definition == definitions.end() || !my_repeat(reader, split.before, col))
        return false;
    col.defval = reader.state.defaults.add();
    col.defval->kind = "constraint";
    col.defval->name = reader.state.keep(split.name);
    col.defval->definition = definition->second;
    parts.named_defaults.push_back(&col);
    return true;
}

static void my_remember(host_script_reader &reader, std::string_view text, const host_script_column &col)
{
    auto &declarations = reader.session.declarations[reader.columns_are_nullable ? 1 : 0];
    if (declarations.size() < most_remembered && !declarations.contains(text))
        declarations.try_emplace(reader.state.keep(text), host_script_declaration{*col.record, col.collation});
}

static void my_remember_default(host_script_reader &reader, std::string_view text, const host_script_column &col,
                                const host_script_constraint &constraint)
{
    const host_default_split split = my_split_default(text);
    auto &definitions = reader.session.definitions;
    // What looks like the constraint may be inside a string or a comment: then the name is another.
    const bool is_it = constraint.kind == host_script_constraint_kind::defval && constraint.name &&
                       split.name == constraint.name && !split.before.empty();
    if (!is_it || definitions.size() >= most_remembered)
        return;
    my_remember(reader, split.before, col);
    if (!definitions.contains(split.after))
        definitions.try_emplace(reader.state.keep(split.after), constraint.definition);
}

void host_read_column(host_script_reader &reader, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_script_column &col = *reader.state.cols.add();
    parts.cols.push_back(&col);
    const std::string_view text = my_rest_of_line(cursor);
    if (text.ends_with(',') && (my_repeat(reader, text, col) || my_repeat_with_default(reader, text, col, parts))) {
        cursor.scanner.set_position(cursor.scanner.position() + text.size() - 1); // at the comma
        return col.set_name(reader.read_kept_name("a column"));
    }
    const size_t constraint_count = parts.constraints.size();
    const bool ends_with_constraint = my_read_declaration(reader, col, parts);
    if (!my_is_plain(cursor, text, col))
        return;
    if (parts.constraints.size() == constraint_count)
        my_remember(reader, text, col);
    else if (parts.constraints.size() == constraint_count + 1 && ends_with_constraint)
        my_remember_default(reader, text, col, parts.constraints.back());
}
