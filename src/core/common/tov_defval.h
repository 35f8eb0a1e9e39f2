/* SQL Server defaults become SQLite defaults. */
#ifndef TOV_DEFVAL_H
#define TOV_DEFVAL_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * Translates the host's default of a column, as the host reports it, into a default that SQLite takes for the column:
 *
 *     host text          column                    result
 *     ((0))              sint32                    0
 *     (N'a''b')          text                      'a''b'
 *     ((12.5))           decimal with scale 2      1250
 *     ('True')           uint1                     1
 *     ((0x0A1B))         blob                      x'0A1B'
 *     (newid())          guid                      (randomblob(16))
 *     (getutcdate())     datetime                  (datetime('now'))
 *     (getdate())        datetime                  null
 *
 * The column's type must be recorded before. Some literals are tried out in an in-memory database of their own.
 *
 * @param host_text    the host's text, with the parentheses around it.
 * @param[out] result  owned, freed with _kt_free(); null when the default cannot be carried over: a call of any other
 *                     function, an expression, an integer out of the type's range. That is not a failure.
 *
 * Fails with KT_ERR_SQLITE(19) when the column's type check rejects the literal, e.g. text for a number or a date that
 * does not exist; the description ends in the check's message. Fails with KT_ERR_NOT_FOUND when a decimal has more
 * than one point or more decimals than the scale, with KT_ERR_BAD_NUMBER when a money or decimal literal is not a
 * number otherwise, and with the runtime's codes when the column has no type.
 */
TOV_API void tov_schema__fix_mssql_defval(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *host_text, char **result) KT_NOEXCEPT;

/**
 * Says whether a host default can be carried over: 1 when a column of that type would get a default, 0 when it would
 * get none, when the default is refused, for an unknown type, and when memory is short. Takes no context.
 *
 * @param type_code  the host's system type id, e.g. 56 for int, 231 for nvarchar.
 * @param scale      decimals of a decimal or numeric (106, 108), of which the low 8 bits count; else not looked at.
 */
TOV_API KT_bool tov_is_defval_legit(const char *host_text, int32_t type_code, uint32_t scale) KT_NOEXCEPT;

/**
 * Reads a decimal constant as a number of units of 10^-scale: "12.5" with scale 2 is 1250, "7" with scale 3 is 7000.
 * With scale 0 the digits of a fraction join the others ("1.5" is 15). A number of units that 64 bits do not hold
 * wraps around.
 *
 * @param scale  decimals, of which the low 8 bits count.
 *
 * Fails with KT_ERR_NOT_FOUND when the text has a second point or more decimals than the scale, e.g. "problem with
 * decimal string for scale=2: 1.234", and with KT_ERR_BAD_NUMBER when it is not a number otherwise, does not fit 64
 * bits without the point, or has more than 39 characters without it.
 */
TOV_API void tov_convert_decimal_constant_to_scaled_integer(KT_context *ctx, const char *text, uint32_t scale,
                                                            int64_t *value) KT_NOEXCEPT;

/*
 * The three names below are also names inside SQLite, and there are builds of SQLite whose shared library lets the
 * dynamic linker see them, Debian's among them. Exported under the same names, ours would take their place in such a
 * SQLite, whose own tables hold more than these, and it would fail from the first CREATE TABLE on. So the linker knows
 * ours by names with a prefix. Code that is linked with the static form may also declare the plain names itself.
 */
#define sqlite3KeywordCode tov_sqlite3KeywordCode
#define sqlite3CtypeMap tov_sqlite3CtypeMap
#define sqlite3UpperToLower tov_sqlite3UpperToLower

/**
 * The token code of the SQL keyword that the first n bytes of text spell, in any letter case; 26 when they are none.
 */
TOV_API int sqlite3KeywordCode(const char *text, int n) KT_NOEXCEPT;

/**
 * What each byte can be in SQL text, as bits: 0x01 space, 0x02 letter, 0x04 decimal digit, 0x08 hexadecimal digit,
 * 0x20 small letter, 0x40 any other byte that may appear in an identifier ("$", "_", 0x80 and above).
 */
TOV_API extern const unsigned char sqlite3CtypeMap[256];

/** Each byte with "A" to "Z" as small letters. */
TOV_API extern const unsigned char sqlite3UpperToLower[256];

KT_END_DECLS

#endif
