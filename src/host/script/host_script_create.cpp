// CREATE and ALTER of everything but tables and indexes.
#include "script/host_script_create.hpp"

#include "script/host_script_parts.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_create"

// Whether the statement takes effect; a finding says so where that is not known.
static bool my_takes_effect(host_script_reader &reader, const host_tsql_token &first)
{
    if (reader.mode == host_script_mode::doubt && !reader.cursor.failed())
        reader.not_read(first, host_script_undecided);
    return reader.mode == host_script_mode::execute && !reader.cursor.failed();
}

// CREATE TYPE name FROM type | AS TABLE (...) | EXTERNAL NAME assembly
static void my_create_type(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_script_name name = reader.read_name();
    if (cursor.take(host_word::from)) {
        const host_tsql_type type = host_read_type(cursor);
        bool is_nullable = true;
        if (cursor.take(host_word::not_)) {
            cursor.expect(host_word::null, "NULL");
            is_nullable = false;
        } else {
            cursor.take(host_word::null);
        }
        if (my_takes_effect(reader, first))
            host_make_alias_type(reader.state, name.schema, name.name, type, is_nullable);
        return;
    }
    const bool is_external = cursor.token.is(host_word::external);
    host_skip_statement(reader);
    if (!is_external || !my_takes_effect(reader, first) || reader.state.find_type(name.schema, name.name))
        return;
    host_script_type *type = reader.state.add_type(name.schema, name.name);
    type->base.is_assembly_type = true;
    type->base.max_length = -1;
    type->base.is_nullable = true;
    type->base.user_type = type->name;
    type->base.user_type_schema = type->schema;
}

// CREATE DEFAULT and CREATE RULE: the server keeps the whole batch.
static void my_create_bound(host_script_reader &reader, const char *kind, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_script_name name = reader.read_name();
    cursor.expect(host_word::as, "AS");
    if (cursor.failed())
        return;
    host_skip_to_batch_end(reader);
    if (!my_takes_effect(reader, first) || reader.state.find_bound(name.schema, name.name))
        return;
    const std::string_view script = cursor.scanner.script();
    host_script_bound *bound = reader.state.add_bound(name.schema, name.name);
    const size_t end = cursor.token.start_in(script);
    bound->definition = reader.state.keep(host_trimmed(script.substr(reader.batch_start, end - reader.batch_start)));
    reader.state.add_object(kind, reader.state.keep(name.schema), bound->name, nullptr);
}

// Statements that follow in the batch belong to the schema: what they make without one is made there.
static void my_create_schema(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    std::string_view name;
    if (!cursor.token.is(host_word::authorization))
        name = reader.read_plain_name("the name of a schema");
    if (cursor.take(host_word::authorization)) {
        const std::string_view owner = reader.read_plain_name("an owner");
        name = name.empty() ? owner : name;
    }
    if (!my_takes_effect(reader, first))
        return;
    reader.state.schemas.try_emplace(host_folded(name), reader.state.keep(name));
    reader.default_schema = name;
}

static void my_create_sequence(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_script_name name = reader.read_name();
    host_sequence sequence;
    sequence.schema_name = reader.state.keep(name.schema);
    sequence.name = reader.state.keep(name.name);
    sequence.system_type = "bigint";
    sequence.increment = "1";
    const auto read_number = [&reader, &cursor](const char *&number) {
        const std::string sign = cursor.take('-') ? "-" : "";
        number = reader.state.keep(sign + std::string(cursor.token.text));
        cursor.advance();
    };
    for (;;) {
        if (cursor.take(host_word::as)) {
            sequence.system_type = reader.state.keep(host_read_type(cursor).name());
        } else if (cursor.take(host_word::start)) {
            cursor.expect(host_word::with, "WITH");
            read_number(sequence.start);
        } else if (cursor.take(host_word::increment)) {
            cursor.expect(host_word::by, "BY");
            read_number(sequence.increment);
        } else if (cursor.token.is_word("MINVALUE") || cursor.token.is_word("MAXVALUE") ||
                   cursor.token.is_word("CACHE") || cursor.token.is_word("CYCLE") || cursor.token.is(host_word::no) ||
                   cursor.token.kind == host_tsql_kind::number || cursor.token.is('-')) {
            cursor.advance();
        } else {
            break;
        }
    }
    if (!my_takes_effect(reader, first))
        return;
    reader.state.add_object("SO", sequence.schema_name, sequence.name, nullptr);
    reader.state.sequences.insert_or_assign({sequence.schema_name, sequence.name}, sequence);
}

static bool my_may_follow_database(const host_tsql_token &token)
{
    static constexpr host_word words[] = {host_word::on, host_word::collate, host_word::with, host_word::for_,
                                          host_word::as, host_word::set,     host_word::add};
    static constexpr std::string_view others[] = {"CONTAINMENT", "MODIFY", "REMOVE"};
    return token.kind != host_tsql_kind::word || host_starts_statement(token.word) ||
           std::find(std::begin(words), std::end(words), token.word) != std::end(words) ||
           std::any_of(std::begin(others), std::end(others),
                       [&](std::string_view other) { return token.is_word(other); });
}

// A database's name is one word, and an option or another statement follows. Two words name something within it: an
// audit, an encryption key, a credential, a setting.
static bool my_is_database_name(host_tsql_cursor &cursor)
{
    if (!cursor.token.is_name() || host_is_reserved(cursor.token.word))
        return false;
    return cursor.token.kind != host_tsql_kind::word || my_may_follow_database(cursor.peek());
}

// CREATE and ALTER DATABASE: the name of the first, the collation of both.
static void my_read_database(host_script_reader &reader, bool is_new)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!my_is_database_name(cursor))
        return host_skip_statement(reader);
    const host_tsql_token first = cursor.token;
    std::string buffer;
    const std::string name(host_unquoted(first, buffer));
    cursor.advance();
    const char *collation = nullptr;
    while (!cursor.token.is_end() && !cursor.token.is(';') && !host_starts_statement(cursor.token.word)) {
        if (cursor.take(host_word::collate))
            collation = reader.read_kept_name("a collation");
        else if (cursor.token.is('('))
            cursor.skip_parentheses();
        else
            cursor.advance();
    }
    if (cursor.token.is(host_word::set))
        host_skip_statement(reader);
    if (cursor.failed() || reader.mode == host_script_mode::ignore)
        return;
    if (collation)
        reader.state.collation = collation;
    if (is_new && reader.state.database.empty())
        reader.state.database = name;
    if (is_new)
        reader.state.databases.insert(host_folded(name));
}

static void my_create_synonym(host_script_reader &reader)
{
    const host_script_name name = reader.read_name();
    host_skip_statement(reader);
    if (reader.mode == host_script_mode::execute && !reader.cursor.failed())
        host_add_left_object(reader, "SN", "synonyms", name);
}

// ALTER SCHEMA name TRANSFER [OBJECT::]name
static void my_alter_schema(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    const std::string_view schema = reader.read_plain_name("the name of a schema");
    cursor.expect(host_word::transfer, "TRANSFER");
    bool is_type = false;
    if (cursor.peek().is("::")) {
        is_type = !cursor.token.is_word("OBJECT");
        cursor.advance();
        cursor.advance();
    }
    const host_script_name name = reader.read_name();
    if (!my_takes_effect(reader, first))
        return;
    const host_script_object *found = is_type ? nullptr : reader.state.find_object(name.schema, name.name);
    if (!found && reader.use_table(name))
        found = reader.state.find_object(name.schema, name.name);
    if (!found)
        return reader.not_read(first, "the script does not make what is transferred");
    const host_script_object object = *found;
    const char *kept = reader.state.keep(schema);
    if (object.table) {
        for (const char *constraint : object.table->constraint_names()) {
            if (const host_script_object *other = reader.state.find_object(object.schema, constraint))
                reader.state.move_object(host_script_object(*other), kept, other->name);
        }
        object.table->schema = kept;
    }
    reader.state.move_object(object, kept, object.name);
}

static bool my_begins_module(const host_tsql_token &token)
{
    return token.is(host_word::view) || token.is(host_word::proc) || token.is(host_word::procedure) ||
           token.is(host_word::function) || token.is(host_word::trigger);
}

static bool my_begins_index(const host_tsql_token &token)
{
    return token.is(host_word::unique) || token.is(host_word::clustered) || token.is(host_word::nonclustered) ||
           token.is(host_word::columnstore) || token.is(host_word::index) || token.is(host_word::spatial) ||
           token.is(host_word::primary);
}

void host_read_create(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    const bool is_new = cursor.token.is(host_word::create);
    const host_tsql_token second = cursor.peek();
    if (second.is(host_word::or_) || my_begins_module(second)) {
        cursor.advance();
        if (cursor.take(host_word::or_))
            cursor.expect(host_word::alter, "ALTER");
        return host_read_module(reader, is_new);
    }
    if (second.is(host_word::database)) {
        cursor.advance();
        cursor.advance();
        return my_read_database(reader, is_new);
    }
    if (!is_new) {
        if (!second.is(host_word::schema))
            return host_skip_statement(reader);
        cursor.advance();
        cursor.advance();
        return my_alter_schema(reader, first);
    }
    const bool is_xml_index = second.is(host_word::xml) && cursor.peek(2).is(host_word::index);
    if (my_begins_index(second) || is_xml_index) {
        cursor.advance();
        return host_read_create_index(reader, first);
    }
    if (second.is(host_word::table) || (second.is(host_word::external) && cursor.peek(2).is(host_word::table))) {
        cursor.advance();
        return host_read_create_table(reader, first);
    }
    cursor.advance();
    if (cursor.take(host_word::type))
        return my_create_type(reader, first);
    if (cursor.take(host_word::default_))
        return my_create_bound(reader, "D", first);
    if (cursor.take(host_word::rule))
        return my_create_bound(reader, "R", first);
    if (cursor.take(host_word::schema))
        return my_create_schema(reader, first);
    if (cursor.take(host_word::sequence))
        return my_create_sequence(reader, first);
    if (cursor.take(host_word::synonym))
        return my_create_synonym(reader);
    cursor.go_back(first);
    host_skip_statement(reader);
}
