/*
 * Looking for rows of a SQLite database that the server would refuse, before they are sent there.
 *
 * The database may have been made by tov_client__create_database() or by anything else: its tables are found by their
 * names, and nothing is expected of them. It is opened for reading only, looked at in one transaction, and nothing that
 * its own texts say is run: no trigger, no view, no function that is not harmless.
 *
 * The conventions are those of the schema module (tov_parse_defin.h).
 */
#ifndef TOV_CHECK_H
#define TOV_CHECK_H

#include "tov_client.h"

KT_BEGIN_DECLS

/** A kind of violation. Codes are stable; docs/check.md explains them. */
typedef struct tov_client_violation_kind {
    const char *code;     /* "out-of-range" */
    const char *severity; /* "error": the server refuses it; "note": something was not looked at */
    const char *meaning;  /* in general, in a clause */
} tov_client_violation_kind;

/** The n-th kind, counted from 0; a constant. Null when n is not below their number. */
TOV_API const tov_client_violation_kind *tov_client__get_nth_violation_kind(uint32_t n) KT_NOEXCEPT;

/**
 * A violation: what is wrong with a value, a row, or a table as a whole. Strings are UTF-8, borrowed until the callback
 * returns; those that do not apply are null.
 */
typedef struct tov_client_violation {
    const tov_client_violation_kind *kind;
    const char *tbl; /* its name in SQLite */
    /** Whether the row has a rowid; a table WITHOUT ROWID, and a violation of a table as a whole, has none. */
    KT_bool has_rowid;
    int64_t rowid;
    const char *key;     /* the row's primary key: OrderNo='2024-1', Line=3 */
    const char *col;     /* the column; of a key with several their names, joined with ", " */
    const char *value;   /* the value as an SQL literal, shortened; of several columns joined with ", " */
    const char *message; /* "out of range: sint16" */
} tov_client_violation;

/** How a database is checked. All zero looks at everything, with the server's rules. */
typedef struct tov_client_check_options {
    /** One of tov_client_rules. */
    int32_t rules;
    /** Only these tables, by their names in SQLite or on the server ("dbo.Orders"); all when their number is 0. */
    const char *const *only;
    uint32_t only_count;
    /** Tables to leave out. */
    const char *const *skip;
    uint32_t skip_count;
    /** Stop after so many violations; 0 for no limit. */
    int64_t max;
    /** Optional: called after each step with the number done and their total. */
    void (*progress)(void *data, uint32_t done, uint32_t total);
    void *progress_data;
} tov_client_check_options;

/**
 * Checks all rows of the schema's tables in a database, and hands each violation to a callback: table by table in
 * schema order, first the values, then checks, keys and references. Of a value with several things wrong the callback
 * gets each that can be told without the others.
 *
 * @code{.c}
 * static void print(KT_context *ctx, void *data, const tov_client_violation *violation)
 * {
 *     (void)ctx;
 *     fprintf((FILE *)data, "%s: %s: %s\n", violation->kind->code, violation->tbl, violation->message);
 * }
 *
 * void check(KT_context *ctx, tov_schema *schema)
 * {
 *     tov_client__check_database(ctx, schema, "shop.db", NULL, print, stdout, NULL);
 * }
 * @endcode
 *
 * @param database        the path of a file, always.
 * @param options         optional.
 * @param take            called for each violation; when it raises an error in the context, the check ends with that.
 * @param data            handed to take.
 * @param[out] is_whole   optional; 0 when the check ended at the limit.
 *
 * Fails with KT_ERR_NOT_FOUND when the options name a table that the schema does not have, with KT_ERR_SQLITE(26) for a
 * file that is not a database, and as tov_client__check_texts() for a schema that is not safe to make statements of.
 */
TOV_API void tov_client__check_database(KT_context *ctx, tov_schema *schema, const char *database,
                                        const tov_client_check_options *options,
                                        void (*take)(KT_context *ctx, void *data,
                                                     const tov_client_violation *violation),
                                        void *data, KT_bool *is_whole) KT_NOEXCEPT;

KT_END_DECLS

#endif
