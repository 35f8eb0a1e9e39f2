// Finds the end of statements that are not read.
//
// T-SQL needs no terminators: a statement ends where a word begins the next one. Those words are reserved, so they
// are no names; but some also occur inside statements: the SET of an UPDATE, the SELECT of an INSERT.
#include "script/host_script_reader.hpp"

#include <algorithm>
#include <array>

static constexpr host_word starters[] = {
    host_word::alter,      host_word::backup,      host_word::begin,    host_word::break_,    host_word::bulk,
    host_word::checkpoint, host_word::close,       host_word::commit,   host_word::continue_, host_word::create,
    host_word::dbcc,       host_word::deallocate,  host_word::declare,  host_word::delete_,   host_word::deny,
    host_word::drop,       host_word::else_,       host_word::end,      host_word::exec,      host_word::execute,
    host_word::fetch,      host_word::goto_,       host_word::grant,    host_word::if_,       host_word::insert,
    host_word::kill,       host_word::merge,       host_word::open,     host_word::print,     host_word::raiserror,
    host_word::readtext,   host_word::reconfigure, host_word::restore,  host_word::return_,   host_word::revert,
    host_word::revoke,     host_word::rollback,    host_word::save,     host_word::select,    host_word::set,
    host_word::setuser,    host_word::shutdown,    host_word::truncate, host_word::update,    host_word::updatetext,
    host_word::use,        host_word::waitfor,     host_word::while_,   host_word::writetext,
};

bool host_starts_statement(host_word word)
{
    static constexpr auto is_starter = [] {
        std::array<bool, 256> marks{};
        for (const host_word starter : starters)
            marks[static_cast<size_t>(starter)] = true;
        return marks;
    }();
    return is_starter[static_cast<size_t>(word)];
}

namespace {

// What has been seen of the statement that is skipped.
struct host_skipped {
    host_word first;
    host_word second;
    host_tsql_token last;
    bool has_main = false; // the query of an INSERT, the statement after WITH
    bool has_set = false;
    bool has_object = false; // ON, TO or FROM of a GRANT or REVOKE
    int cases = 0;
};

} // namespace

static bool my_is_one_of(host_word word, std::initializer_list<host_word> words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

static bool my_grants(const host_skipped &skipped)
{
    return my_is_one_of(skipped.first, {host_word::grant, host_word::deny, host_word::revoke});
}

// The first query of an INSERT and the statement after a WITH belong to it.
static bool my_takes_main(host_skipped &skipped, host_word word)
{
    const bool after_with =
        skipped.first == host_word::with && my_is_one_of(word, {host_word::select, host_word::insert, host_word::update,
                                                                host_word::delete_, host_word::merge});
    const bool after_insert = skipped.first == host_word::insert &&
                              my_is_one_of(word, {host_word::select, host_word::exec, host_word::execute});
    if (skipped.has_main || (!after_with && !after_insert))
        return false;
    skipped.has_main = word != host_word::insert;
    if (after_with)
        skipped.first = word == host_word::insert ? host_word::insert : word;
    return true;
}

// The SET of an UPDATE, of an ALTER DATABASE, of an action of a foreign key, and the one of an ALTER TABLE, which has
// parentheses.
static bool my_takes_set(host_script_reader &reader, host_skipped &skipped)
{
    const bool is_alter = skipped.first == host_word::alter;
    if (is_alter &&
        (my_is_one_of(skipped.last.word, {host_word::update, host_word::delete_}) || reader.cursor.peek().is('(')))
        return true;
    const bool has_own = my_is_one_of(skipped.second, {host_word::index, host_word::table, host_word::schema});
    const bool takes = skipped.first == host_word::update || (is_alter && !has_own);
    return takes && !std::exchange(skipped.has_set, true);
}

// DROP CONSTRAINT, DROP MEMBER and their like in an ALTER.
static bool my_takes_drop(host_script_reader &reader, const host_skipped &skipped)
{
    if (skipped.first != host_word::alter)
        return false;
    const host_tsql_token next = reader.cursor.peek();
    if (skipped.second == host_word::table)
        return my_is_one_of(next.word, {host_word::column, host_word::constraint}) ||
               (next.is_name() && !host_is_reserved(next.word));
    constexpr std::string_view parts[] = {"MEMBER", "EVENT", "TARGET", "CREDENTIAL", "VALUE", "ENCRYPTION"};
    return next.is('(') || std::any_of(std::begin(parts), std::end(parts),
                                       [&next](std::string_view part) { return host_same_text(next.text, part); });
}

// The IF EXISTS of a DROP, which no parenthesis follows.
static bool my_takes_if(host_script_reader &reader)
{
    return reader.cursor.peek().is(host_word::exists) && !reader.cursor.peek(2).is('(');
}

// Whether a word that can begin a statement is part of this one.
static bool my_belongs(host_script_reader &reader, host_skipped &skipped, host_word word)
{
    const host_word last = skipped.last.word;
    if (last == host_word::with || (my_grants(skipped) && !skipped.has_object) || my_takes_main(skipped, word))
        return true;
    switch (word) {
    case host_word::select:
        return my_is_one_of(last, {host_word::union_, host_word::all, host_word::except, host_word::intersect,
                                   host_word::for_, host_word::as});
    case host_word::update:
    case host_word::delete_:
        return my_is_one_of(last, {host_word::for_, host_word::on});
    case host_word::insert:
        return last == host_word::bulk;
    case host_word::set:
        return my_takes_set(reader, skipped);
    case host_word::fetch:
        return my_is_one_of(last, {host_word::row, host_word::rows});
    case host_word::merge:
        return reader.cursor.peek().is(host_word::join);
    case host_word::drop:
        return my_takes_drop(reader, skipped);
    case host_word::if_:
        return my_takes_if(reader);
    case host_word::alter:
        return skipped.first == host_word::alter && my_is_one_of(reader.cursor.peek().word, {host_word::column});
    case host_word::end:
        if (skipped.cases == 0)
            return false;
        skipped.cases--;
        return true;
    case host_word::else_:
        return skipped.cases > 0;
    default:
        return false;
    }
}

static void my_note(host_skipped &skipped, const host_tsql_token &token)
{
    if (token.is(host_word::case_))
        skipped.cases++;
    if (token.is(host_word::on) || token.is(host_word::to) || token.is(host_word::from))
        skipped.has_object = true;
    if (token.is(host_word::values) && skipped.first == host_word::insert)
        skipped.has_main = true;
}

void host_skip_statement(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    host_skipped skipped{cursor.token.word, host_word::none, cursor.token};
    cursor.advance();
    skipped.second = cursor.token.word;
    for (int depth = 0; !cursor.token.is_end(); cursor.advance()) {
        const host_tsql_token &token = cursor.token;
        if (token.kind == host_tsql_kind::unknown && token.text != "$")
            return cursor.fail_expected("T-SQL");
        if (token.is('('))
            depth++;
        if (token.is(')') && --depth < 0)
            depth = 0;
        if (depth > 0)
            continue;
        if (token.is(';'))
            return;
        const bool is_merge = skipped.first == host_word::merge; // ends at a semicolon only
        if (host_starts_statement(token.word) && !is_merge && !my_belongs(reader, skipped, token.word))
            return;
        my_note(skipped, token);
        skipped.last = token;
    }
}

void host_skip_to_batch_end(host_script_reader &reader)
{
    while (!reader.cursor.token.is_end()) {
        if (reader.cursor.token.kind == host_tsql_kind::unknown && reader.cursor.token.text.size() > 1)
            return reader.cursor.fail_expected("T-SQL");
        reader.cursor.advance();
    }
}
