// A SQLite function table that counts its calls and what is open, and lets one call of one entry fail.
//
//     kt_counting_sqlite sqlite;
//     sqlite.fail(kt_sqlite_entry::step, 2);   // the second step from here on
//     the_operation(ctx);
//     EXPECT_TRUE(sqlite.fired());
//     EXPECT_EQ(sqlite.open_connections(), 0);
//     EXPECT_EQ(sqlite.open_statements(), 0);
//
// It is in force from its construction to its destruction. An entry fails as SQLite's would: open and prepare open
// nothing, close, finalize and reset still do their work, create_function gives its data back, readers answer that
// there is nothing, and the message of the connection is that of the code from then on.
#pragma once

#include "kt_sqlite_functions.h"

#include <cstddef>
#include <initializer_list>

// In the order of the table.
enum class kt_sqlite_entry : size_t {
    bind_blob,
    bind_double,
    bind_int64,
    bind_null,
    bind_parameter_count,
    bind_text,
    changes,
    clear_bindings,
    close,
    column_blob,
    column_bytes,
    column_count,
    column_double,
    column_int64,
    column_name,
    column_text,
    column_type,
    message,
    errstr,
    finalize,
    last_insert_rowid,
    open,
    prepare,
    reset,
    step,
    open_plain,
    prepare_next,
    exec,
    bind_value,
    column_value,
    extended_errcode,
    get_autocommit,
    busy_timeout,
    libversion,
    libversion_number,
    create_function,
    user_data,
    value_type,
    value_bytes,
    value_blob,
    value_text,
    value_int64,
    value_double,
    result_null,
    result_int64,
    result_double,
    result_text,
    result_value,
    result_error,
    result_error_code,
    allocate,
    release,
    set_authorizer,
    configure,
    bind_text_in_place,
    bind_blob_in_place,
    count,
    none = count
};
static_assert(sizeof(KT_sqlite_functions) == static_cast<size_t>(kt_sqlite_entry::count) * sizeof(void (*)()));

// The result codes of SQLite that an operation has to live with: busy, no memory, I/O error, corrupt, full, misuse.
inline constexpr int kt_sqlite_failures[] = {5, 7, 10, 11, 13, 21};

class kt_counting_sqlite {
  public:
    static constexpr int failure_code = 10;

    kt_counting_sqlite()
    {
        real = *tov__get_sqlite_functions();
        table = real;
        state = {};
        watch_codes();
        watch_readers();
        watch_what_opens();
        tov__set_sqlite_functions(&table);
    }
    ~kt_counting_sqlite()
    {
        tov__set_sqlite_functions(nullptr);
    }
    kt_counting_sqlite(const kt_counting_sqlite &) = delete;
    kt_counting_sqlite &operator=(const kt_counting_sqlite &) = delete;

    // Forgets the calls so far, and lets the turn-th call of an entry fail, counted from 1.
    void fail(kt_sqlite_entry entry, int turn, int code = failure_code)
    {
        for (int &calls : state.calls)
            calls = 0;
        state.failing = entry;
        state.turn = turn;
        state.code = code;
        state.fired = false;
    }
    bool fired() const
    {
        return state.fired;
    }
    int calls(kt_sqlite_entry entry) const
    {
        return state.calls[static_cast<size_t>(entry)];
    }
    int open_connections() const
    {
        return state.connections;
    }
    int open_statements() const
    {
        return state.statements;
    }
    // Whether an entry fails with a result code. Others answer that there is nothing, or cannot fail.
    static bool has_code(kt_sqlite_entry entry)
    {
        return state.has_code[static_cast<size_t>(entry)];
    }

  private:
    static constexpr size_t entry_count = static_cast<size_t>(kt_sqlite_entry::count);
    struct counts {
        int calls[entry_count];
        bool has_code[entry_count];
        int connections;
        int statements;
        kt_sqlite_entry failing;
        int turn;
        int code;
        bool fired;
    };
    static inline counts state;
    static inline KT_sqlite_functions real;
    static inline KT_sqlite_functions table;

    static bool is_to_fail(kt_sqlite_entry entry)
    {
        const bool fails = ++state.calls[static_cast<size_t>(entry)] == state.turn && entry == state.failing;
        state.fired = state.fired || fails;
        return fails;
    }
    template <kt_sqlite_entry Entry, class... Params> static void watch_code(int (*&entry)(Params...))
    {
        static int (*passed_on)(Params...);
        passed_on = entry;
        state.has_code[static_cast<size_t>(Entry)] = true;
        entry = [](Params... params) { return is_to_fail(Entry) ? state.code : passed_on(params...); };
    }
    // An entry that does its work all the same.
    template <kt_sqlite_entry Entry, class Param> static void watch_end(int (*&entry)(Param))
    {
        static int (*passed_on)(Param);
        passed_on = entry;
        state.has_code[static_cast<size_t>(Entry)] = true;
        entry = [](Param param) {
            const int code = passed_on(param);
            return is_to_fail(Entry) ? state.code : code;
        };
    }
    // An entry that answers nothing when it fails, which is 0, null or the answer given.
    template <kt_sqlite_entry Entry, auto Nothing = 0, class Answer, class... Params>
    static void watch_reader(Answer (*&entry)(Params...))
    {
        static Answer (*passed_on)(Params...);
        passed_on = entry;
        entry = [](Params... params) {
            return is_to_fail(Entry) ? static_cast<Answer>(Nothing) : passed_on(params...);
        };
    }
    static void watch_codes()
    {
        watch_code<kt_sqlite_entry::bind_blob>(table.bind_blob);
        watch_code<kt_sqlite_entry::bind_double>(table.bind_double);
        watch_code<kt_sqlite_entry::bind_int64>(table.bind_int64);
        watch_code<kt_sqlite_entry::bind_null>(table.bind_null);
        watch_code<kt_sqlite_entry::bind_text>(table.bind_text);
        watch_code<kt_sqlite_entry::bind_text_in_place>(table.bind_text_in_place);
        watch_code<kt_sqlite_entry::bind_blob_in_place>(table.bind_blob_in_place);
        watch_code<kt_sqlite_entry::bind_value>(table.bind_value);
        watch_code<kt_sqlite_entry::busy_timeout>(table.busy_timeout);
        watch_code<kt_sqlite_entry::configure>(table.configure);
        watch_code<kt_sqlite_entry::exec>(table.exec);
        watch_code<kt_sqlite_entry::set_authorizer>(table.set_authorizer);
        watch_code<kt_sqlite_entry::step>(table.step);
        watch_end<kt_sqlite_entry::clear_bindings>(table.clear_bindings);
        watch_end<kt_sqlite_entry::reset>(table.reset);
    }
    static void watch_readers()
    {
        constexpr int null_value = 5;
        watch_reader<kt_sqlite_entry::changes>(table.changes);
        watch_reader<kt_sqlite_entry::column_type, null_value>(table.column_type);
        watch_reader<kt_sqlite_entry::column_blob, nullptr>(table.column_blob);
        watch_reader<kt_sqlite_entry::column_name, nullptr>(table.column_name);
        watch_reader<kt_sqlite_entry::column_text, nullptr>(table.column_text);
        watch_reader<kt_sqlite_entry::value_blob, nullptr>(table.value_blob);
        watch_reader<kt_sqlite_entry::value_text, nullptr>(table.value_text);
        watch_reader<kt_sqlite_entry::allocate, nullptr>(table.allocate);
        table.message = message;
        table.errstr = errstr;
    }
    static void watch_what_opens()
    {
        table.open = open<kt_sqlite_entry::open, &KT_sqlite_functions::open>;
        table.open_plain = open<kt_sqlite_entry::open_plain, &KT_sqlite_functions::open_plain>;
        table.prepare = prepare;
        table.prepare_next = prepare_next;
        table.close = close;
        table.finalize = finalize;
        table.create_function = create_function;
        for (const kt_sqlite_entry entry :
             {kt_sqlite_entry::open, kt_sqlite_entry::open_plain, kt_sqlite_entry::prepare,
              kt_sqlite_entry::prepare_next, kt_sqlite_entry::close, kt_sqlite_entry::finalize,
              kt_sqlite_entry::create_function})
            state.has_code[static_cast<size_t>(entry)] = true;
    }

    static const char *message(sqlite3 *connection)
    {
        if (is_to_fail(kt_sqlite_entry::message))
            return "";
        return state.fired && has_code(state.failing) ? real.errstr(state.code) : real.message(connection);
    }
    static const char *errstr(int code)
    {
        return is_to_fail(kt_sqlite_entry::errstr) ? "" : real.errstr(code);
    }
    template <kt_sqlite_entry Entry, auto Member>
    static int open(const char *file_name, sqlite3 **connection, int flags)
    {
        *connection = nullptr;
        const int code = is_to_fail(Entry) ? state.code : (real.*Member)(file_name, connection, flags);
        state.connections += *connection != nullptr;
        return code;
    }
    static int close(sqlite3 *connection)
    {
        const int code = real.close(connection);
        state.connections -= code == 0;
        return is_to_fail(kt_sqlite_entry::close) ? state.code : code;
    }
    static int prepare(sqlite3 *connection, const char *sql, sqlite3_stmt **statement)
    {
        *statement = nullptr;
        const int code = is_to_fail(kt_sqlite_entry::prepare) ? state.code : real.prepare(connection, sql, statement);
        state.statements += *statement != nullptr;
        return code;
    }
    static int prepare_next(sqlite3 *connection, const char *sql, sqlite3_stmt **statement, const char **rest)
    {
        *statement = nullptr;
        const int code = is_to_fail(kt_sqlite_entry::prepare_next)
                             ? state.code
                             : real.prepare_next(connection, sql, statement, rest);
        state.statements += *statement != nullptr;
        return code;
    }
    static int finalize(sqlite3_stmt *statement)
    {
        state.statements -= statement != nullptr;
        const int code = real.finalize(statement);
        return is_to_fail(kt_sqlite_entry::finalize) ? state.code : code;
    }
    static int create_function(sqlite3 *connection, const char *name, int argument_count, int flags, void *data,
                               void (*function)(sqlite3_context *, int, sqlite3_value **), void (*release)(void *))
    {
        if (!is_to_fail(kt_sqlite_entry::create_function))
            return real.create_function(connection, name, argument_count, flags, data, function, release);
        if (release)
            release(data);
        return state.code;
    }
};

// Calls an operation with every entry that it uses failing at its 1st, 2nd, 3rd ... call, with each code of
// kt_sqlite_failures where it fails with a code. After each call, and first of all after one without a failure, the
// judge looks at how it ended: judge(entry, turn, code), with code 0 for an entry that has none. Answers the number of
// failed calls.
template <class Operation, class Judge>
int kt_sweep_sqlite(kt_counting_sqlite &sqlite, Operation operation, Judge judge)
{
    int failed_calls = 0;
    sqlite.fail(kt_sqlite_entry::none, 0);
    operation();
    judge(kt_sqlite_entry::none, 0, 0);
    for (size_t n = 0; n < static_cast<size_t>(kt_sqlite_entry::count); n++) {
        const auto entry = static_cast<kt_sqlite_entry>(n);
        for (const int code : kt_sqlite_failures) {
            for (int turn = 1;; turn++) {
                sqlite.fail(entry, turn, code);
                operation();
                if (!sqlite.fired())
                    break;
                failed_calls++;
                judge(entry, turn, sqlite.has_code(entry) ? code : 0);
            }
            if (!sqlite.has_code(entry))
                break;
        }
    }
    return failed_calls;
}
