/*
 * Looking at a created database as a whole: whether its file is sound, whether it still has the tables, indexes and
 * triggers that its schema makes, and what a program that opens it has to see to.
 *
 * The database is opened for reading only, and nothing that its own texts say is run: no trigger, no view, no function
 * that is not harmless. The conventions are those of the schema module (tov_parse_defin.h).
 */
#ifndef TOV_DOCTOR_H
#define TOV_DOCTOR_H

#include "tov_client.h"

KT_BEGIN_DECLS

/** A kind of diagnosis. Codes are stable; docs/doctor.md explains them. */
typedef struct tov_client_diagnosis_kind {
    const char *code;     /* "object-missing" */
    const char *severity; /* "error": something is broken; "note": something to know */
    const char *advice;   /* what to do */
} tov_client_diagnosis_kind;

/** The n-th kind, counted from 0; a constant. Null when n is not below their number. */
TOV_API const tov_client_diagnosis_kind *tov_client__get_nth_diagnosis_kind(uint32_t n) KT_NOEXCEPT;

/**
 * Examines a database.
 *
 *
 * @code{.c}
 * void print_cures(KT_context *ctx)
 * {
 *     KT_varray *diagnoses = NULL;
 *     uint32_t count = 0;
 *     tov_client__examine_database(ctx, "shop.db", &diagnoses);
 *     KT_varray__count(ctx, diagnoses, &count);
 *     for (uint32_t n = 0; n < count && !KT_context__has_err(ctx); n++) {
 *         KT_vhash *diagnosis = NULL;
 *         const char *sql = NULL;
 *         KT_varray__get__vhash(ctx, diagnoses, n, &diagnosis);
 *         KT_vhash__check__sz(ctx, diagnosis, "sql", &sql);
 *         if (sql)
 *             puts(sql);
 *     }
 *     KT_varray__free(ctx, diagnoses);
 * }
 * @endcode
 * @param file_name       the path of a file, always.
 * @param[out] diagnoses  owned; a map for each, in the order in which things are looked at; members that have nothing
 *                        to say are left out:
 *                        - "code", "severity", "advice": of its kind; where all is well the severity is "ok", and
 *                          there is no advice
 *                        - "message": what is the matter, with the names of what it is about
 *                        - "sql": the statement that mends it
 *
 * Fails with KT_ERR_SQLITE(26) for a file that is not a database, and with other codes of SQLite's where it cannot be
 * opened. What cannot be read in it is a diagnosis.
 */
TOV_API void tov_client__examine_database(KT_context *ctx, const char *file_name, KT_varray **diagnoses) KT_NOEXCEPT;

KT_END_DECLS

#endif
