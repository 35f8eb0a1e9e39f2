// A SQLite function table that counts what is open and lets one call of one entry fail.
//
//     kt_counting_sqlite sqlite;
//     sqlite.fail(kt_sqlite_entry::step, 2);   // the second step from here on
//     the_operation(ctx);
//     EXPECT_TRUE(sqlite.fired());
//     EXPECT_EQ(sqlite.open_connections(), 0);
//     EXPECT_EQ(sqlite.open_statements(), 0);
//
// It is in force from its construction to its destruction. A failing open or prepare opens nothing, a failing close or
// finalize still closes, and the readers answer that there is nothing.
#pragma once

#include "kt_sqlite_functions.h"

#include <cstddef>

enum class kt_sqlite_entry {
    none,
    changes,
    close,
    column_text,
    column_type,
    message,
    errstr,
    finalize,
    open,
    prepare,
    step,
    count
};

class kt_counting_sqlite {
  public:
    static constexpr int failure_code = 10;

    kt_counting_sqlite()
    {
        real = *tov__get_sqlite_functions();
        table = real;
        state = {};
        table.changes = changes;
        table.close = close;
        table.column_text = column_text;
        table.column_type = column_type;
        table.message = message;
        table.errstr = errstr;
        table.finalize = finalize;
        table.open = open;
        table.prepare = prepare;
        table.step = step;
        tov__set_sqlite_functions(&table);
    }
    ~kt_counting_sqlite()
    {
        tov__set_sqlite_functions(nullptr);
    }
    kt_counting_sqlite(const kt_counting_sqlite &) = delete;
    kt_counting_sqlite &operator=(const kt_counting_sqlite &) = delete;

    // Forgets the calls so far, and lets the turn-th call of an entry fail, counted from 1.
    void fail(kt_sqlite_entry entry, int turn)
    {
        for (int &calls : state.calls)
            calls = 0;
        state.failing = entry;
        state.turn = turn;
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

  private:
    struct counts {
        int calls[static_cast<size_t>(kt_sqlite_entry::count)];
        int connections;
        int statements;
        kt_sqlite_entry failing;
        int turn;
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
    static int changes(sqlite3 *connection)
    {
        return is_to_fail(kt_sqlite_entry::changes) ? 0 : real.changes(connection);
    }
    static int close(sqlite3 *connection)
    {
        const int code = real.close(connection);
        state.connections -= code == 0;
        return is_to_fail(kt_sqlite_entry::close) ? failure_code : code;
    }
    static const char *column_text(sqlite3_stmt *statement, int column)
    {
        return is_to_fail(kt_sqlite_entry::column_text) ? nullptr : real.column_text(statement, column);
    }
    static int column_type(sqlite3_stmt *statement, int column)
    {
        constexpr int null_value = 5;
        return is_to_fail(kt_sqlite_entry::column_type) ? null_value : real.column_type(statement, column);
    }
    static const char *message(sqlite3 *connection)
    {
        return is_to_fail(kt_sqlite_entry::message) ? "" : real.message(connection);
    }
    static const char *errstr(int code)
    {
        return is_to_fail(kt_sqlite_entry::errstr) ? "" : real.errstr(code);
    }
    static int finalize(sqlite3_stmt *statement)
    {
        state.statements -= statement != nullptr;
        const int code = real.finalize(statement);
        return is_to_fail(kt_sqlite_entry::finalize) ? failure_code : code;
    }
    static int open(const char *file_name, sqlite3 **connection, int flags)
    {
        if (is_to_fail(kt_sqlite_entry::open)) {
            *connection = nullptr;
            return failure_code;
        }
        const int code = real.open(file_name, connection, flags);
        state.connections += *connection != nullptr;
        return code;
    }
    static int prepare(sqlite3 *connection, const char *sql, sqlite3_stmt **statement)
    {
        if (is_to_fail(kt_sqlite_entry::prepare)) {
            *statement = nullptr;
            return failure_code;
        }
        const int code = real.prepare(connection, sql, statement);
        state.statements += *statement != nullptr;
        return code;
    }
    static int step(sqlite3_stmt *statement)
    {
        return is_to_fail(kt_sqlite_entry::step) ? failure_code : real.step(statement);
    }
};
