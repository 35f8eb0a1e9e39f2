// KT_sqlite__normalise_dates() without a context, for the function table's own open. Answers SQLite's result code.
#pragma once

#include "kt_sqlite_dates.h"

[[nodiscard]] int kt_sqlite_normalise_dates(const KT_sqlite_functions *functions, sqlite3 *connection) noexcept;
