/*
 * Impossible dates, such as February 30th.
 *
 * Older SQLite libraries, 3.40.1 among them, hand date('2024-02-30') and strftime(..., '2024-02-30 01:02:03') back
 * unchanged; newer ones move such a date into the next month ('2024-03-01'). The type checks that are generated for
 * date and datetime columns compare a value with what these functions make of it, so with an older library they
 * would let impossible dates pass. Which kind a library is is found out by asking it, not from its version number.
 *
 * The replacement holds for one connection of this process. A program that opens the database by itself, the sqlite3
 * shell included, checks with the functions of its own SQLite.
 */
#ifndef KT_SQLITE_DATES_H
#define KT_SQLITE_DATES_H

#include "kt_sqlite_functions.h"

KT_BEGIN_DECLS

/**
 * Makes date(x) and strftime(format, x) move impossible dates into the next month on a connection, where the SQLite
 * at hand does not do so by itself; otherwise does nothing. Every other string, number or blob gets the very value that
 * SQLite's own function gives, fractions included. The library is asked once in the life of the process.
 *
 * The replacements are deterministic and innocuous, so they work inside triggers under trusted_schema=OFF. They keep a
 * small in-memory connection from their first use on, which goes when the connection is closed. Two things differ
 * from SQLite's own: 'now' is taken anew at each call rather than once for each step of a statement, and is not
 * refused inside CHECK constraints and indexes.
 *
 * The open entry of the function table over the linked SQLite calls this already. Calling it again is harmless, but
 * as SQLite demands for adding any function, no statement may be running on the connection.
 *
 * @param functions   the table that the connection was opened with; must outlive the connection, and the table in
 *                    force must lead to the same SQLite library.
 *
 * Fails with KT_ERR_SQLITE(rc), described by SQLite; the connection is as good as before.
 */
KT_API void KT_sqlite__normalise_dates(KT_context *ctx, const KT_sqlite_functions *functions,
                                       struct sqlite3 *connection) KT_NOEXCEPT;

KT_END_DECLS

#endif
