// The guard that stands between a schema's texts and SQLite: an authorizer that knows which statement is meant to be
// compiled and refuses everything that this statement has no need of.
#pragma once

#include "kt_sqlite_functions.h"

enum class client_duty {
    nothing,       // every action is refused
    expression,    // SELECT of an expression without tables
    tbl,           // CREATE TABLE of the table named
    index,         // CREATE INDEX of the index named, on the table named
    column,        // ALTER TABLE ... ADD COLUMN of the table named
    rows,          // INSERT into and UPDATE of the table named
    copying,       // INSERT into the table named, of what is selected from the other one named
    trigger,       // CREATE TRIGGER of the trigger named, on the table named
    view,          // CREATE VIEW of the view named
    reading,       // SELECT from any table
    own_statement, // a statement that holds no text of a schema: every action is allowed
};

struct client_guard {
    client_duty duty = client_duty::nothing;
    const char *tbl = nullptr;
    const char *name = nullptr; // of an index, trigger or view, or of the table that is copied
};

// Gives a guard a duty until the end of the scope, and then none.
struct client_on_duty {
    client_on_duty(client_guard &guard, const client_guard &duty) noexcept : guard_(guard)
    {
        guard_ = duty;
    }
    ~client_on_duty()
    {
        guard_ = {};
    }
    client_on_duty(const client_on_duty &) = delete;
    client_on_duty &operator=(const client_on_duty &) = delete;

  private:
    client_guard &guard_;
};

// Puts a guard on a connection; it is borrowed and can be given its duties from then on. The code is SQLite's.
int client_guard__watch(const KT_sqlite_functions *functions, struct sqlite3 *connection, client_guard *guard) noexcept;

// Whether an SQL function may be called in a default or a check: it only computes a value from its arguments, the
// clock and chance.
bool client_is_harmless_function(const char *name) noexcept;
