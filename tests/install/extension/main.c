/* A program whose connections all compare as the server does. */
#include "tov_sqlite.h"

#include <sqlite3.h>
#include <stdio.h>

int main(void)
{
    sqlite3 *connection = NULL;
    sqlite3_stmt *statement = NULL;
    sqlite3_auto_extension((void (*)(void))sqlite3_tovsqlite_init);
    if (sqlite3_open(":memory:", &connection) != SQLITE_OK ||
        sqlite3_prepare_v2(connection,
                           "SELECT 'Stra\xC3\x9F"
                           "e' = 'STRASSE ' COLLATE Latin1_General_CI_AS",
                           -1, &statement, NULL) != SQLITE_OK ||
        sqlite3_step(statement) != SQLITE_ROW) {
        fprintf(stderr, "%s\n", sqlite3_errmsg(connection));
        return 1;
    }
    printf("equal: %d\n", sqlite3_column_int(statement, 0));
    sqlite3_finalize(statement);
    sqlite3_close(connection);
    return 0;
}
