// Places, messages and names, which all statements share.
#include "script/host_script_reader.hpp"

#include <algorithm>

#define KT_HERE "src/host/script/host_script_reader"

std::string host_script_reader::place_of(size_t at)
{
    if (outer_at != std::string_view::npos)
        at = outer_at;
    const std::string_view text = source.text;
    if (at < counted_to_) {
        counted_to_ = 0;
        counted_lines_ = 0;
    }
    const std::string_view passed = text.substr(counted_to_, at - counted_to_);
    counted_lines_ += static_cast<size_t>(std::count(passed.begin(), passed.end(), '\n'));
    counted_to_ = at;
    const size_t line_start = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;
    const std::string_view before = text.substr(line_start, at - line_start);
    const auto column = std::count_if(before.begin(), before.end(),
                                      [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
    return source.name + ':' + std::to_string(counted_lines_ + 1) + ':' + std::to_string(column + 1);
}

// A statement as a finding shows it: not more than a line or two.
static std::string my_shown(std::string_view statement)
{
    constexpr size_t longest = 200;
    statement = host_trimmed(statement);
    if (statement.size() <= longest)
        return std::string(statement);
    size_t end = longest;
    while (end > 0 && (static_cast<unsigned char>(statement[end]) & 0xC0) == 0x80)
        end--;
    return std::string(statement.substr(0, end)) + " ...";
}

void host_script_reader::not_read(const host_tsql_token &first, const std::string &reason)
{
    if (kt_has_err(session.ctx))
        return;
    const std::string text = my_shown(cursor.text_since(first));
    session.findings.add_at(session.ctx, "statement-not-read",
                            place_of(first.start_in(cursor.scanner.script())).c_str(), text.c_str(),
                            "not followed: " + reason);
}

void host_script_reader::add_error(size_t at, const std::string &message)
{
    constexpr size_t most = 50;
    if (session.errors.size() < most)
        session.errors.push_back(place_of(at) + ": " + message);
    session.error_count++;
}

std::string_view host_script_reader::read_plain_name(std::string_view expected)
{
    std::string buffer;
    std::string_view name;
    if (!cursor.token.is_name() || (cursor.token.kind == host_tsql_kind::word && host_is_reserved(cursor.token.word)))
        cursor.fail_expected(expected);
    else if (name = host_unquoted(cursor.token, buffer); name.empty())
        cursor.fail("a name is empty");
    if (!buffer.empty())
        name = state.keep(buffer);
    cursor.advance();
    return name;
}

const char *host_script_reader::read_kept_name(std::string_view expected)
{
    return state.keep(read_plain_name(expected));
}

host_script_name host_script_reader::read_name()
{
    host_script_name found;
    found.name = read_plain_name("a name");
    while (cursor.take('.')) {
        found.database = found.schema;
        found.schema = found.name;
        found.name = {};
        if (!cursor.token.is('.'))
            found.name = read_plain_name("a name");
    }
    if (found.schema.empty())
        found.schema = default_schema;
    return found;
}

bool host_script_reader::is_elsewhere(const host_script_name &name) const
{
    const std::string_view database = name.database.empty() ? std::string_view(database_in_use) : name.database;
    return !database.empty() && !state.database.empty() && !host_same_text(database, state.database);
}

bool host_script_reader::is_idle() const
{
    return is_parsed_only || is_elsewhere({});
}

host_script_table *host_script_reader::use_table(const host_script_name &name)
{
    host_script_table *table = state.find_table(name.schema, name.name);
    if (!table && host_read_maker(session, name.schema, name.name))
        table = state.find_table(name.schema, name.name);
    return table;
}

host_script_type *host_script_reader::use_type(std::string_view schema, std::string_view name)
{
    host_script_type *type = state.find_type(schema, name);
    if (!type && host_read_maker(session, schema, name))
        type = state.find_type(schema, name);
    return type;
}

host_script_bound *host_script_reader::use_bound(std::string_view schema, std::string_view name)
{
    host_script_bound *bound = state.find_bound(schema, name);
    if (!bound && host_read_maker(session, schema, name))
        bound = state.find_bound(schema, name);
    return bound;
}

std::string host_place_of(const host_script_table &table)
{
    return table.source->name + ':' + host_tsql_place(table.source->text, table.made_at);
}
