/*
 * The server's comparison rules in SQLite, as an extension. A connection that has it knows, by their names, the
 * collations of the server (docs/collations.md): each is made when a statement first needs it. It replaces upper() and
 * lower() by functions that know all letters, and adds
 * - tov_guid_text(blob): the text of a stored uniqueidentifier, and tov_guid_blob(text), the reverse
 * - tov_decimal_text(number, scale): the text of a stored decimal, e.g. '12.50' of 1250 and 2
 *
 * It only needs SQLite and ICU; the other libraries of the project can do without it, and it without them.
 */
#ifndef TOV_SQLITE_H
#define TOV_SQLITE_H

#include "kt_export.h"

KT_BEGIN_DECLS

struct sqlite3;
struct sqlite3_api_routines;

/**
 * Adds the extension to a connection. SQLite calls it when it loads the shared library (load_extension(), .load in the
 * shell). A program that links the library has it added to every connection that is opened from then on:
 *
 *     sqlite3_auto_extension((void (*)(void))sqlite3_tovsqlite_init);
 *
 * A connection has one answer to unknown collations (sqlite3_collation_needed()), which this takes.
 *
 * @param message  SQLite's; not used.
 * @param api      SQLite's functions, which the shared library calls; the static one is linked with SQLite.
 *
 * Gives SQLite's result code.
 */
KT_API int sqlite3_tovsqlite_init(struct sqlite3 *connection, char **message,
                                  const struct sqlite3_api_routines *api) KT_NOEXCEPT;

KT_END_DECLS

#endif
