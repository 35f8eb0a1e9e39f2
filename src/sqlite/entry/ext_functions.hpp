// The SQL functions of the extension.
#pragma once

struct sqlite3;

// Adds them to a connection; the code is SQLite's.
int ext_add_functions(sqlite3 *connection) noexcept;
