// ALTER TABLE
#include "script/host_script_parts.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_alter"

static void my_read_add(host_script_reader &reader, host_script_parts &parts)
{
    host_tsql_cursor &cursor = reader.cursor;
    do {
        if (cursor.token.is(host_word::period) && cursor.peek().is(host_word::for_)) {
            host_script_constraint period;
            period.kind = host_script_constraint_kind::period;
            cursor.advance();
            cursor.advance();
            cursor.advance();
            period.cols = host_read_names(reader);
            parts.constraints.push_back(std::move(period));
        } else if (host_begins_constraint(cursor.token)) {
            host_read_constraint(reader, nullptr, parts);
        } else {
            host_read_column(reader, parts);
        }
    } while (cursor.take(','));
}

// ALTER COLUMN name ADD | DROP what: only ROWGUIDCOL and SPARSE matter.
static void my_change_attribute(host_script_reader &reader, host_script_column &col, bool is_added)
{
    host_tsql_cursor &cursor = reader.cursor;
    cursor.advance();
    if (cursor.token.is(host_word::rowguidcol))
        col.record.change().is_rowguidcol = is_added;
    else if (cursor.token.is(host_word::sparse))
        col.record.change().is_sparse = is_added;
    else if (cursor.token.is(host_word::hidden))
        col.record.change().is_hidden = is_added;
    else if (cursor.token.is(host_word::persisted))
        col.record.change().is_persisted = is_added;
    else if (cursor.take(host_word::not_)) // FOR REPLICATION
        cursor.advance();
    cursor.advance();
    if (cursor.take(host_word::with))
        cursor.skip_parentheses();
}

// A column keeps what its new type does not say: its default, its description.
static void my_change_type(host_script_reader &reader, host_script_column &col)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_script_parts parts;
    host_script_column changed;
    host_read_column_type(reader, changed);
    for (;;) {
        if (cursor.take(host_word::collate))
            changed.collation = reader.read_kept_name("a collation");
        else if (cursor.take(host_word::null))
            changed.record.change().is_nullable = true;
        else if (cursor.token.is(host_word::not_)) {
            cursor.advance();
            cursor.expect(host_word::null, "NULL");
            changed.record.change().is_nullable = false;
        } else if (cursor.take(host_word::sparse))
            changed.record.change().is_sparse = true;
        else if (cursor.take(host_word::masked) || cursor.token.is(host_word::with)) {
            cursor.take(host_word::with);
            cursor.skip_parentheses();
        } else
            break;
    }
    if (cursor.failed())
        return;
    const host_column old = *col.record;
    host_column &record = col.record.change();
    record = *changed.record;
    col.type = changed.type;
    col.collation =
        changed.collation && host_same_text(changed.collation, "database_default") ? nullptr : changed.collation;
    record.description = old.description;
    record.is_rowguidcol = old.is_rowguidcol;
    record.is_identity = old.is_identity;
    record.identity = old.identity;
    record.is_sparse |= old.is_sparse;
    if (!col.defval)
        col.defval = changed.defval;
    if (old.rule)
        record.rule = old.rule;
}

static void my_alter_column(host_script_reader &reader, const host_tsql_token &first, host_script_table &table)
{
    host_tsql_cursor &cursor = reader.cursor;
    const std::string_view name = reader.read_plain_name("a column");
    host_script_column *col = table.find_col(name);
    if (!col) {
        host_skip_statement(reader);
        return reader.not_read(first, "the table has no column " + std::string(name));
    }
    if (cursor.token.is(host_word::add) || cursor.token.is(host_word::drop))
        return my_change_attribute(reader, *col, cursor.token.is(host_word::add));
    my_change_type(reader, *col);
}

template <class Record, class Is> static bool my_erase(std::vector<Record> &records, Is &&is)
{
    return std::erase_if(records, is) > 0;
}

static bool my_drop_constraint(host_script_state &state, host_script_table &table, std::string_view name)
{
    const auto is = [name](const char *found) { return found && host_same_text(found, name); };
    bool found = my_erase(table.keys, [&is](const auto &key) { return key.is_constraint() && is(key.name); }) ||
                 my_erase(table.fks, [&is](const auto &fk) { return is(fk.record.name); }) ||
                 my_erase(table.checks, [&is](const auto &check) { return is(check.record.name); });
    for (host_script_column *col : table.cols) {
        if (!found && col->has_default_constraint() && is(col->defval->name)) {
            col->defval = nullptr;
            found = true;
        }
    }
    if (found)
        state.forget_object(table.schema, name);
    return found;
}

static bool my_drop_column(host_script_table &table, std::string_view name)
{
    const host_script_column *col = table.find_col(name);
    if (!col)
        return false;
    const auto uses = [col](const auto &record) {
        return std::find(record.cols.begin(), record.cols.end(), col) != record.cols.end();
    };
    if (std::any_of(table.keys.begin(), table.keys.end(), uses) ||
        std::any_of(table.fks.begin(), table.fks.end(), uses))
        return false;
    std::erase(table.cols, col);
    return true;
}

// DROP [CONSTRAINT] [IF EXISTS] name, COLUMN name ...
static void my_drop_parts(host_script_reader &reader, const host_tsql_token &first, host_script_table &table)
{
    host_tsql_cursor &cursor = reader.cursor;
    bool is_column = false;
    do {
        if (cursor.token.is(host_word::period)) {
            cursor.advance();
            cursor.advance();
            cursor.advance();
            continue;
        }
        if (cursor.token.is(host_word::column) || cursor.token.is(host_word::constraint)) {
            is_column = cursor.token.is(host_word::column);
            cursor.advance();
        }
        const bool if_exists = cursor.take(host_word::if_);
        if (if_exists)
            cursor.expect(host_word::exists, "EXISTS");
        const std::string_view name = reader.read_plain_name(is_column ? "a column" : "a constraint");
        if (cursor.token.is(host_word::with))
            host_skip_storage(reader);
        if (cursor.failed())
            return;
        const bool is_done = is_column ? my_drop_column(table, name) : my_drop_constraint(reader.state, table, name);
        if (!is_done && !if_exists && !table.is_opaque)
            reader.not_read(first, "the table has no " + std::string(is_column ? "column " : "constraint ") +
                                       std::string(name) + ", or something uses it");
    } while (cursor.take(','));
}

// CHECK | NOCHECK CONSTRAINT ALL | names
static void my_switch_constraints(host_script_reader &reader, host_script_table &table, bool is_checked)
{
    host_tsql_cursor &cursor = reader.cursor;
    const bool is_enabled = cursor.token.is(host_word::check);
    cursor.advance();
    cursor.expect(host_word::constraint, "CONSTRAINT");
    const auto set = [is_enabled, is_checked](auto &record) {
        record.is_disabled = !is_enabled;
        if (!is_enabled)
            record.is_not_trusted = true;
        else if (is_checked)
            record.is_not_trusted = record.not_for_replication;
    };
    const auto set_named = [&table, &set](const std::string_view *name) {
        for (host_script_fk &fk : table.fks) {
            if (!name || (fk.record.name && host_same_text(fk.record.name, *name)))
                set(fk.record);
        }
        for (host_script_check &check : table.checks) {
            if (!name || (check.record.name && host_same_text(check.record.name, *name)))
                set(check.record);
        }
    };
    if (cursor.take(host_word::all))
        return set_named(nullptr);
    do {
        const std::string_view name = reader.read_plain_name("a constraint");
        if (!cursor.failed())
            set_named(&name);
    } while (cursor.take(','));
}

// SET (SYSTEM_VERSIONING = ON (...)); the other options do not matter.
static void my_set_options(host_script_reader &reader, host_script_table &table)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (!cursor.token.is('(') || !cursor.peek().is_word("SYSTEM_VERSIONING"))
        return host_skip_statement(reader);
    cursor.advance();
    cursor.advance();
    host_script_name history;
    bool is_on = false;
    host_read_versioning(reader, is_on, history);
    cursor.expect(')');
    if (cursor.failed())
        return;
    table.is_temporal = is_on;
    if (is_on)
        host_set_history(reader, table, history);
}

static void my_read_action(host_script_reader &reader, const host_tsql_token &first, host_script_table &table)
{
    host_tsql_cursor &cursor = reader.cursor;
    bool with_check = false, with_nocheck = false;
    if (cursor.token.is(host_word::with)) {
        cursor.advance();
        with_check = cursor.take(host_word::check);
        with_nocheck = !with_check && cursor.take(host_word::nocheck);
    }
    if (cursor.take(host_word::add)) {
        host_script_parts parts;
        my_read_add(reader, parts);
        if (!cursor.failed() && !table.is_opaque)
            host_apply_parts(reader, first, table, parts, !with_nocheck);
        return;
    }
    if (cursor.token.is(host_word::alter) && cursor.peek().is(host_word::column)) {
        cursor.advance();
        cursor.advance();
        return table.is_opaque ? host_skip_statement(reader) : my_alter_column(reader, first, table);
    }
    if (cursor.take(host_word::drop))
        return my_drop_parts(reader, first, table);
    if (cursor.token.is(host_word::check) || cursor.token.is(host_word::nocheck))
        return my_switch_constraints(reader, table, with_check);
    if (cursor.take(host_word::set))
        return my_set_options(reader, table);
    if (cursor.token.is(host_word::enable) || cursor.token.is(host_word::disable) ||
        cursor.token.is(host_word::rebuild) || cursor.token.is_word("SWITCH"))
        return host_skip_statement(reader);
    cursor.fail_expected("ADD, ALTER COLUMN, DROP, CHECK, NOCHECK or SET");
}

void host_read_alter_table(host_script_reader &reader, const host_tsql_token &first)
{
    host_tsql_cursor &cursor = reader.cursor;
    if (reader.mode != host_script_mode::execute) {
        host_skip_statement(reader);
        if (reader.mode == host_script_mode::doubt)
            reader.not_read(first, host_script_undecided);
        return;
    }
    cursor.advance();
    cursor.advance();
    const host_script_name name = reader.read_name();
    if (cursor.failed())
        return;
    host_script_table *table = name.is_temporary() || reader.is_elsewhere(name) ? nullptr : reader.use_table(name);
    if (table)
        return my_read_action(reader, first, *table);
    cursor.go_back(first);
    host_skip_statement(reader);
    if (!name.is_temporary())
        reader.not_read(first, "table " + name.text() + " is not made by the script");
}
