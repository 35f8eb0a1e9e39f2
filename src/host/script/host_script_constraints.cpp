// Constraints, of columns and of tables.
#include "script/host_script_parts.hpp"

#include "tsql/host_server_spelling.hpp"

bool host_begins_constraint(const host_tsql_token &token)
{
    switch (token.word) {
    case host_word::constraint:
    case host_word::primary:
    case host_word::unique:
    case host_word::check:
    case host_word::foreign:
    case host_word::index:
    case host_word::default_:
        return true;
    default:
        return false;
    }
}

std::vector<std::string_view> host_read_names(host_script_reader &reader)
{
    std::vector<std::string_view> names;
    reader.cursor.expect('(');
    do
        names.push_back(reader.read_plain_name("a column"));
    while (reader.cursor.take(','));
    reader.cursor.expect(')');
    return names;
}

void host_read_key_cols(host_script_reader &reader, host_script_constraint &constraint)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.expect('(');
    do {
        constraint.cols.push_back(reader.read_plain_name("a column"));
        const bool is_descending = cursor.take(host_word::desc);
        constraint.descending.push_back(is_descending);
        if (!is_descending)
            cursor.take(host_word::asc);
    } while (cursor.take(','));
    cursor.expect(')');
}

// WITH (...), or the older WITH FILLFACTOR = 90, PAD_INDEX.
static void my_skip_with(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    if (cursor.token.is('('))
        return cursor.skip_parentheses();
    for (;;) {
        cursor.advance();
        if (cursor.take('='))
            cursor.advance();
        const bool goes_on = cursor.token.is(',') && cursor.peek().kind == host_tsql_kind::word &&
                             (cursor.peek(2).is('=') || host_same_text(cursor.peek().text, "PAD_INDEX"));
        if (!goes_on)
            return;
        cursor.advance();
    }
}

void host_skip_storage(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    for (;;) {
        const host_tsql_token next =
            cursor.token.is(host_word::on) || cursor.token.is(host_word::with) ? cursor.peek() : host_tsql_token{};
        if (cursor.token.is(host_word::with) && !next.is(host_word::values)) {
            my_skip_with(reader);
        } else if ((cursor.token.is(host_word::on) && !next.is(host_word::delete_) && !next.is(host_word::update)) ||
                   cursor.token.is(host_word::textimage_on) || cursor.token.is(host_word::filestream_on)) {
            cursor.advance();
            cursor.advance();
            if (cursor.token.is('('))
                cursor.skip_parentheses();
        } else {
            return;
        }
    }
}

const char *host_read_enclosed_condition(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    if (!cursor.take('(')) {
        cursor.fail_expected("'('");
        return nullptr;
    }
    const std::string condition = host_read_condition(cursor);
    cursor.expect(')');
    if (!cursor.failed())
        return reader.state.keep(condition);
    cursor.go_back(first);
    cursor.skip_parentheses();
    return reader.state.keep(cursor.text_since(first));
}

const char *host_read_definition(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token first = cursor.token;
    const std::string expression = host_read_expression(cursor);
    if (!cursor.failed())
        return reader.state.keep(expression);
    if (!first.is('('))
        return nullptr;
    cursor.go_back(first);
    cursor.skip_parentheses();
    return reader.state.keep(cursor.text_since(first));
}

static void my_read_clustering(host_script_reader &reader, host_script_constraint &constraint)
{
    constraint.is_clustered = reader.cursor.take(host_word::clustered);
    if (!constraint.is_clustered)
        constraint.is_nonclustered = reader.cursor.take(host_word::nonclustered);
    if (reader.cursor.take(host_word::columnstore))
        constraint.index_kind = "COLUMNSTORE";
    reader.cursor.take(host_word::hash);
}

// The columns of a key: a list, or the column that it is written at.
static void my_read_key(host_script_reader &reader, const char *col_name, host_script_constraint &constraint)
{
    my_read_clustering(reader, constraint);
    if (reader.cursor.token.is('(') || !col_name) {
        host_read_key_cols(reader, constraint);
    } else {
        constraint.cols.emplace_back(col_name);
        constraint.descending.push_back(false);
    }
    host_skip_storage(reader);
}

// INDEX name [UNIQUE] [CLUSTERED] (columns) [INCLUDE (columns)] [WHERE condition]
static void my_read_index(host_script_reader &reader, const char *col_name, host_script_constraint &constraint)
{
    host_tsql_cursor &cursor = reader.cursor;
    constraint.name = reader.read_kept_name("the name of an index");
    constraint.is_unique = cursor.take(host_word::unique);
    my_read_clustering(reader, constraint);
    if (constraint.index_kind && !cursor.token.is('(')) {
        host_skip_storage(reader);
        return;
    }
    if (cursor.token.is('(') || !col_name) {
        host_read_key_cols(reader, constraint);
    } else {
        constraint.cols.emplace_back(col_name);
        constraint.descending.push_back(false);
    }
    if (cursor.take(host_word::include))
        constraint.included = host_read_names(reader);
    if (cursor.take(host_word::where))
        constraint.definition = reader.state.keep(host_read_condition(cursor));
    host_skip_storage(reader);
}

static const char *my_read_action(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (cursor.take(host_word::cascade))
        return "CASCADE";
    if (cursor.take(host_word::no)) {
        cursor.expect(host_word::action, "ACTION");
        return "NO ACTION";
    }
    cursor.expect(host_word::set, "CASCADE, SET NULL, SET DEFAULT or NO ACTION");
    if (cursor.take(host_word::null))
        return "SET NULL";
    cursor.expect(host_word::default_, "NULL or DEFAULT");
    return "SET DEFAULT";
}

static bool my_takes_not_for_replication(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!cursor.token.is(host_word::not_) || !cursor.peek().is(host_word::for_))
        return false;
    cursor.advance();
    cursor.advance();
    cursor.expect(host_word::replication, "REPLICATION");
    return true;
}

// REFERENCES table [(columns)] and what is to happen when a row there changes.
static void my_read_reference(host_script_reader &reader, host_script_constraint &constraint)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.expect(host_word::references, "REFERENCES");
    constraint.parent = reader.read_name();
    if (cursor.token.is('('))
        constraint.parent_cols = host_read_names(reader);
    for (;;) {
        if (my_takes_not_for_replication(reader)) {
            constraint.not_for_replication = true;
            continue;
        }
        if (!cursor.token.is(host_word::on))
            return;
        const host_word event = cursor.peek().word;
        if (event != host_word::delete_ && event != host_word::update)
            return;
        cursor.advance();
        cursor.advance();
        (event == host_word::delete_ ? constraint.on_delete : constraint.on_update) = my_read_action(reader);
    }
}

static void my_read_foreign(host_script_reader &reader, const char *col_name, host_script_constraint &constraint)
{
    if (reader.cursor.token.is('(') || !col_name)
        constraint.cols = host_read_names(reader);
    else
        constraint.cols.emplace_back(col_name);
    my_read_reference(reader, constraint);
}

static void my_read_check(host_script_reader &reader, host_script_constraint &constraint)
{
    constraint.not_for_replication = my_takes_not_for_replication(reader);
    constraint.definition = host_read_enclosed_condition(reader);
}

static void my_read_default(host_script_reader &reader, const char *col_name, host_script_constraint &constraint)
{
    constraint.definition = host_read_definition(reader);
    if (!col_name) {
        reader.cursor.expect(host_word::for_, "FOR");
        constraint.cols.push_back(reader.read_plain_name("a column"));
        if (reader.cursor.take(host_word::with))
            reader.cursor.expect(host_word::values, "VALUES");
        return;
    }
    constraint.cols.emplace_back(col_name);
}

void host_read_constraint(host_script_reader &reader, const char *col_name, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_script_constraint constraint;
    constraint.is_on_column = col_name;
    if (cursor.take(host_word::constraint))
        constraint.name = reader.read_kept_name("the name of a constraint");
    using kind = host_script_constraint_kind;
    if (cursor.take(host_word::primary)) {
        cursor.expect(host_word::key, "KEY");
        constraint.kind = kind::primary;
        my_read_key(reader, col_name, constraint);
    } else if (cursor.take(host_word::unique)) {
        constraint.kind = kind::unique;
        my_read_key(reader, col_name, constraint);
    } else if (cursor.take(host_word::check)) {
        constraint.kind = kind::check;
        my_read_check(reader, constraint);
    } else if (cursor.token.is(host_word::foreign) || cursor.token.is(host_word::references)) {
        constraint.kind = kind::foreign;
        if (cursor.take(host_word::foreign))
            cursor.expect(host_word::key, "KEY");
        my_read_foreign(reader, col_name, constraint);
    } else if (cursor.take(host_word::default_)) {
        constraint.kind = kind::defval;
        my_read_default(reader, col_name, constraint);
    } else if (cursor.take(host_word::index)) {
        constraint.kind = kind::index;
        my_read_index(reader, col_name, constraint);
    } else if (!col_name || (!cursor.token.is(host_word::null) && !cursor.token.is(host_word::not_))) {
        cursor.fail_expected("a constraint");
    } else {
        return; // CONSTRAINT name NOT NULL
    }
    parts.constraints.push_back(std::move(constraint));
}
