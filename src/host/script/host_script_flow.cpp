// Blocks and branches.
#include "script/host_script_reader.hpp"

static constexpr int max_blocks = 200;

// Whether a block ends here; END CONVERSATION is a statement.
static bool my_ends_block(host_tsql_cursor &cursor)
{
    return cursor.token.is(host_word::end) && !cursor.peek().is(host_word::conversation);
}

// BEGIN ... END; false when the batch ends inside.
static bool my_read_block(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    while (!my_ends_block(cursor)) {
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

// What the block holds has been carried out: reading goes on after it, and not with a statement that failed as a whole
// and is looked through again, which would take twice as long for each block around it.
static void my_report_missing(host_script_reader &reader)
{
    host_tsql_cursor &cursor = reader.cursor;
    const host_tsql_token failed = cursor.failed_token();
    reader.add_error(failed.start_in(cursor.scanner.script()), cursor.message());
    cursor.go_back(failed);
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
    if (cursor.failed())
        my_report_missing(reader);
}

void host_read_begin(host_script_reader &reader)
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

void host_read_if(host_script_reader &reader)
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
void host_read_while(host_script_reader &reader)
{
    reader.cursor.advance();
    const std::optional<bool> test = host_read_test(reader);
    if (++reader.depth > max_blocks)
        return reader.cursor.fail("blocks are nested too deep");
    my_read_branch(reader, test && !*test ? test : std::nullopt);
    reader.depth--;
}
