// The functions date(x) and strftime(format, x) for SQLite libraries that let impossible dates stand.
//
// A replacement hides SQLite's own function on its connection, so the replacements ask a second, plain connection,
// opened at their first use, which belongs to the functions and goes with them. SQLite reads the text, and only what
// SQLite's own date() renders is looked at, which has one form, [-]YYYY-MM-DD. A date in it whose day its month lacks
// can only come from such a date in the text; then SQLite is asked again with the modifier '+0 days', which makes it
// go by the day number. With any other text that modifier would do harm: it rounds to milliseconds, and the last
// fraction of a day would become the next one.
//
// What date columns hold is answered without SQLite: a text of that very form, of a day that there is, is its own date.
#include "kt_sqlite_dates.h"
#include "kt_try.hpp"
#include "sqlite/kt_sqlite_dates_private.hpp"

#include <atomic>
#include <cstring>
#include <sqlite3.h>

#define KT_HERE "src/runtime/kt_sqlite_dates"

namespace {

// The statements of the plain connection. Column 0 is the answer; the last column shows the date that SQLite read.
enum question { plain_date, moved_date, plain_strftime, moved_strftime, question_count };
constexpr const char *question_texts[question_count] = {
    "SELECT date(?1)",
    "SELECT date(?1, '+0 days')",
    "SELECT strftime(?1, ?2), date(?2)",
    "SELECT strftime(?1, ?2, '+0 days')",
};

// What the two functions of a connection share; lives in SQLite's memory, as the functions do.
struct date_functions {
    const KT_sqlite_functions *sqlite;
    sqlite3 *plain;
    sqlite3_stmt *statements[question_count];
    int users;
};

constexpr int open_flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
constexpr int function_flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;

} // namespace

static int my_number_of(const char *digits, int count)
{
    int number = 0;
    for (int n = 0; n < count; n++)
        number = 10 * number + (digits[n] - '0');
    return number;
}

// `date` is a date as SQLite renders it, so its year has four digits and its month is one of the twelve.
static bool my_is_impossible(const char *date)
{
    static constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const char *digits = *date == '-' ? date + 1 : date;
    const int year = my_number_of(digits, 4);
    const int month = my_number_of(digits + 5, 2);
    const int day = my_number_of(digits + 8, 2);
    const bool is_leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return day > days[month - 1] + (month == 2 && is_leap ? 1 : 0);
}

// Whether the value is a text YYYY-MM-DD and there is such a day.
static bool my_is_own_date(const KT_sqlite_functions *sqlite, sqlite3_value *value)
{
    constexpr char form[] = "0000-00-00";
    if (sqlite->value_type(value) != SQLITE_TEXT)
        return false;
    const char *text = sqlite->value_text(value);
    if (!text || sqlite->value_bytes(value) != sizeof form - 1)
        return false;
    for (size_t n = 0; n < sizeof form - 1; n++) {
        const bool is_digit = text[n] >= '0' && text[n] <= '9';
        if (form[n] == '0' ? !is_digit : text[n] != form[n])
            return false;
    }
    const int month = my_number_of(text + 5, 2);
    return month >= 1 && month <= 12 && my_number_of(text + 8, 2) >= 1 && !my_is_impossible(text);
}

// Prepares a question at its first use. The statement is left on its row; the caller resets it.
static int my_ask(date_functions *self, question which, int count, sqlite3_value **arguments, sqlite3_stmt **row)
{
    const KT_sqlite_functions *sqlite = self->sqlite;
    int code = SQLITE_OK;
    if (!self->plain)
        code = sqlite->open_plain(":memory:", &self->plain, open_flags);
    sqlite3_stmt *&statement = self->statements[which];
    if (code == SQLITE_OK && !statement)
        code = sqlite->prepare(self->plain, question_texts[which], &statement);
    *row = statement;
    for (int n = 0; code == SQLITE_OK && n < count; n++)
        code = sqlite->bind_value(statement, n + 1, arguments[n]);
    if (code != SQLITE_OK)
        return code;
    code = sqlite->step(statement);
    return code == SQLITE_ROW ? SQLITE_OK : code;
}

// Ends a question; the values bound may be large, so they go as well.
static void my_end_question(const KT_sqlite_functions *sqlite, sqlite3_stmt *row)
{
    sqlite->reset(row);
    sqlite->clear_bindings(row);
}

static void my_answer(sqlite3_context *call, date_functions *self, question plain, question moved, int count,
                      sqlite3_value **arguments)
{
    const KT_sqlite_functions *sqlite = self->sqlite;
    sqlite3_stmt *row = nullptr;
    int code = my_ask(self, plain, count, arguments, &row);
    if (code == SQLITE_OK) {
        const char *date = sqlite->column_text(row, count - 1);
        if (date && my_is_impossible(date)) {
            my_end_question(sqlite, row);
            code = my_ask(self, moved, count, arguments, &row);
        }
    }
    if (code == SQLITE_OK)
        sqlite->result_value(call, sqlite->column_value(row, 0));
    else
        sqlite->result_error_code(call, code);
    if (row)
        my_end_question(sqlite, row);
}

// SQLite hands a function its call and no more, so what leads from there to the data is the table in force.
static date_functions *my_functions_of(sqlite3_context *call)
{
    return static_cast<date_functions *>(tov__get_sqlite_functions()->user_data(call));
}

static void my_date_of_text(sqlite3_context *call, int count, sqlite3_value **arguments)
{
    date_functions *self = my_functions_of(call);
    if (my_is_own_date(self->sqlite, arguments[0]))
        self->sqlite->result_value(call, arguments[0]);
    else
        my_answer(call, self, plain_date, moved_date, count, arguments);
}

static void my_strftime_of_text(sqlite3_context *call, int count, sqlite3_value **arguments)
{
    my_answer(call, my_functions_of(call), plain_strftime, moved_strftime, count, arguments);
}

static void my_leave(void *data)
{
    auto *self = static_cast<date_functions *>(data);
    if (--self->users > 0)
        return;
    const KT_sqlite_functions *sqlite = self->sqlite;
    for (sqlite3_stmt *statement : self->statements)
        sqlite->finalize(statement);
    if (self->plain)
        sqlite->close(self->plain);
    sqlite->release(self);
}

// Each function holds its data, and so does this function while it works: SQLite calls my_leave() when it cannot add
// one.
static int my_add_functions(const KT_sqlite_functions *sqlite, sqlite3 *connection)
{
    void *place = sqlite->allocate(sizeof(date_functions));
    if (!place)
        return SQLITE_NOMEM;
    auto *self = new (place) date_functions{sqlite, nullptr, {}, 1};
    self->users++;
    int code = sqlite->create_function(connection, "date", 1, function_flags, self, my_date_of_text, my_leave);
    if (code == SQLITE_OK) {
        self->users++;
        code = sqlite->create_function(connection, "strftime", 2, function_flags, self, my_strftime_of_text, my_leave);
    }
    my_leave(self);
    return code;
}

// Asks datetime(), which is never replaced, so that the answer is SQLite's own on any connection.
static int my_look(const KT_sqlite_functions *sqlite, sqlite3 *connection, bool *lets_stand)
{
    sqlite3_stmt *statement = nullptr;
    int code = sqlite->prepare(connection, "SELECT datetime('2024-02-30')", &statement);
    if (code != SQLITE_OK)
        return code;
    code = sqlite->step(statement);
    if (code == SQLITE_ROW) {
        const char *shown = sqlite->column_text(statement, 0);
        *lets_stand = shown && std::strcmp(shown, "2024-02-30 00:00:00") == 0;
    }
    const int finalized = sqlite->finalize(statement);
    return code == SQLITE_ROW ? finalized : code;
}

// What the last look found, with the version of the library it looked at (a program may put another in its place):
// the version number times 2, plus 1 when impossible dates stand. 0 before the first look.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): one SQLite library for a process.
static constinit std::atomic<int64_t> last_look{0};

int kt_sqlite_normalise_dates(const KT_sqlite_functions *functions, sqlite3 *connection) noexcept
{
    const int64_t version = functions->libversion_number();
    int64_t found = last_look.load(std::memory_order_relaxed);
    if (found / 2 != version) {
        bool lets_stand = false;
        const int code = my_look(functions, connection, &lets_stand);
        if (code != SQLITE_OK)
            return code;
        found = version * 2 + (lets_stand ? 1 : 0);
        last_look.store(found, std::memory_order_relaxed);
    }
    return found % 2 == 1 ? my_add_functions(functions, connection) : SQLITE_OK;
}

void KT_sqlite__normalise_dates(KT_context *ctx, const KT_sqlite_functions *functions, sqlite3 *connection) noexcept
{
    KT_RETURN_IF_FAILED;
    const int code = kt_sqlite_normalise_dates(functions, connection);
    if (code != SQLITE_OK)
        KT_FAIL(KT_ERR_SQLITE(code), "%s: %s", functions->errstr(code), functions->message(connection));
}
