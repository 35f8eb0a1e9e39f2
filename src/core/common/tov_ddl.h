/*
 * SQLite text: column and constraint definitions, validation statements, column lists; host select lists.
 *
 * Everything here produces text and runs nothing. How the pieces become statements is the caller's business:
 *
 *     CREATE TABLE "Item" (
 *       "Id" integer primary key,                       tov_schema__get_col_defin()
 *       "Sku" text COLLATE NOCASE NOT NULL,
 *       UNIQUE ("Sku")                                  tov_schema__get_unique_defin()
 *     );
 *     CREATE TRIGGER ... BEFORE INSERT ON "Item" BEGIN
 *       SELECT CASE ... END;                            tov_schema__get_col_validation_expression()
 *     END;
 *
 * A table or column without a stored name, which only a document from outside can hold, fails wherever its name would
 * be written (KT_ERR_KEY_NOT_FOUND).
 */
#ifndef TOV_DDL_H
#define TOV_DDL_H

#include "tov_export.h"

KT_BEGIN_DECLS

/**
 * What is wrong with a name that must not appear in SQL text, e.g. "a name with a double quote"; null for a safe one.
 * Statements hold names unescaped: whoever takes a schema from outside asks this of every name before using them.
 */
TOV_API const char *tov_find_name_flaw(const char *name) KT_NOEXCEPT;

/* Columns and constraints of CREATE TABLE. The texts live in the schema's string pool: borrowed until it is freed. */

/**
 * Builds the text of one column: quoted name, declared type, collation, constraints, e.g.
 * "Name" text COLLATE NOCASE NOT NULL CONSTRAINT "DF_Name" DEFAULT 'a'.
 *
 * Columns of the primary key get NOT NULL, except an identity column, which is declared "integer primary key". A
 * delete action other than NO ACTION is put in a comment, because it is left to triggers; a reference is always
 * deferred. Checks and defaults are written as they are stored, so a check must bring its own parentheses.
 *
 * @param reference_names  optional; table id to the name written after REFERENCES, ids as references store them. An id
 *                         that it lacks gets the table's stored name.
 *
 * Fails with KT_ERR_NOT_FOUND: unknown table or column, a reference to one or to none.
 * Fails with KT_ERR_KEY_NOT_FOUND: column without type, check or default without expression.
 */
TOV_API void tov_schema__get_col_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       KT_vhash *reference_names, const char **defin) KT_NOEXCEPT;

/**
 * Builds the primary key of a table, e.g. PRIMARY KEY ("Id","Ver"); null when the table's record lists none.
 *
 * An identity column does not change the answer, though its definition declares it a primary key already: the caller
 * leaves this text out of such a table.
 */
TOV_API void tov_schema__get_pk_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                      const char **defin) KT_NOEXCEPT;

/** Builds a unique constraint, e.g. UNIQUE ("A","B"). An unknown unique_id is KT_ERR_KEY_NOT_FOUND. */
TOV_API void tov_schema__get_unique_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          const char *unique_id, const char **defin) KT_NOEXCEPT;

/**
 * Builds a foreign key of the table, always deferred and without ON DELETE (left to triggers), e.g.
 * FOREIGN KEY ("A","B") REFERENCES "Parent" ("X","Y") ON UPDATE CASCADE DEFERRABLE INITIALLY DEFERRED.
 *
 * An unknown fk_id is KT_ERR_KEY_NOT_FOUND, an unknown referenced table or column KT_ERR_NOT_FOUND.
 */
TOV_API void tov_schema__get_foreignkey_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                              const char *fk_id, const char **defin) KT_NOEXCEPT;

/**
 * Builds a check of the table with parentheses of its own: CHECK (expr).
 *
 * An unknown check_id is KT_ERR_KEY_NOT_FOUND; in a table without checks the question leaves an empty "check" record.
 */
TOV_API void tov_schema__get_check_defin(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *check_id,
                                         const char **defin) KT_NOEXCEPT;

/* Validation: what SQLite must be told to check because it does not check types itself. Owned by the caller. */

/**
 * Builds a SELECT CASE statement, without a semicolon, for a BEFORE trigger: it aborts with a message such as
 * "[Qty] constraint violation: out of range: sint16" when NEW."col_name" does not fit the type, and else gives 1.
 * Null always passes.
 *
 * Dates are checked with SQLite's date() and strftime(), which in older SQLite libraries let days pass that their
 * month lacks; see KT_sqlite__normalise_dates() in kt_sqlite_dates.h.
 *
 * @param abstract_type  e.g. "sint16", see tov_col_types.h; any value but null of an unknown type is rejected.
 * @param width          longest "text" (characters) or "blob" (bytes); unbounded when not above 0.
 * @param precision      most digits of a "decimal", whose value is a scaled integer.
 * @param scale          not used by the text, as notnull is not.
 * @param[out] result    owned.
 */
TOV_API void tov_schema__get_validation_expression(KT_context *ctx, const char *abstract_type, int32_t width,
                                                   int32_t precision, int32_t scale, KT_bool notnull,
                                                   const char *col_name, KT_string **result) KT_NOEXCEPT;

/**
 * Builds the same for a column of the schema, with what its type says.
 *
 * @code{.c}
 * #include "tov_parse_defin.h"
 *
 * // CREATE TRIGGER "check_Qty" BEFORE INSERT ON "Orders" BEGIN SELECT CASE ... END; END
 * void make_trigger(KT_context *ctx, tov_schema *schema, KT_string *sql)
 * {
 *     KT_string *check = NULL;
 *     tov_schema__get_col_validation_expression(ctx, schema, "101", "3", &check);
 *     KT_string__append__sz(ctx, sql, "CREATE TRIGGER \"check_Qty\" BEFORE INSERT ON \"Orders\" BEGIN ");
 *     if (check)
 *         KT_string__append__sz(ctx, sql, KT_string__sz(check));
 *     KT_string__append__sz(ctx, sql, "; END");
 *     KT_string__free(ctx, check);
 * }
 * @endcode
 * Fails with KT_ERR_KEY_NOT_FOUND: no type, text or blob without width, decimal without precision or scale.
 */
TOV_API void tov_schema__get_col_validation_expression(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                       const char *col_id, KT_string **result) KT_NOEXCEPT;

/**
 * Reads how wide a column of type "text" is.
 *
 * @param[out] name          optional; owned, freed with _kt_free(). Written for a text column only; null when the
 *                           column has no name.
 * @param[out] pIsText       0 for every other type, "loose/text" and dates among them. Set to 0, as pIsFixedWidth is,
 *                           before the column is looked up.
 * @param[out] pIsFixedWidth whether values are padded with blanks to the width.
 * @param[out] pWidth        characters; 0 or less is unbounded. Written for a text column only.
 *
 * Fails with KT_ERR_NULL_ARGUMENT, before anything is written, for one of the last three that is null.
 */
TOV_API void tov_schema__get_textwidth(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                       char **name, KT_bool *pIsText, KT_bool *pIsFixedWidth,
                                       int64_t *pWidth) KT_NOEXCEPT;

/*
 * Column lists, owned by the caller. Items are in double quotes with commas and no blanks between them, in table
 * order, those of the primary key in key order: "a","b". A table with an identity column has that column alone as its
 * primary key. No columns give an empty string.
 */

/** Lists the ids of all columns: "a","b". */
TOV_API void tov_schema__get_col_ids_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                     KT_string **result) KT_NOEXCEPT;

/** Lists the names of all columns: "A","B". */
TOV_API void tov_schema__get_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                       KT_string **result) KT_NOEXCEPT;

/** Lists the names of all columns after a qualifier: "NEW"."A","NEW"."B". */
TOV_API void tov_schema__get_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema,
                                                                     const char *tbl_id, const char *qualifier,
                                                                     KT_string **result) KT_NOEXCEPT;

/** Lists the names of the columns that are not in the primary key. */
TOV_API void tov_schema__get_col_names_comma_separated_without_pk(KT_context *ctx, tov_schema *schema,
                                                                  const char *tbl_id, KT_string **result) KT_NOEXCEPT;

/** Lists the names of the primary key's columns. */
TOV_API void tov_schema__get_pk_col_names_comma_separated(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_string **result) KT_NOEXCEPT;

/** Lists the names of the primary key's columns, fixed-width text left out. */
TOV_API void tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols(KT_context *ctx, tov_schema *schema,
                                                                               const char *tbl_id,
                                                                               KT_string **result) KT_NOEXCEPT;

/** Lists the names of the primary key's columns with a prefix inside the quotes: "old_A","old_B". */
TOV_API void tov_schema__get_pk_col_names_comma_separated_and_prefixed(KT_context *ctx, tov_schema *schema,
                                                                       const char *tbl_id, const char *prefix,
                                                                       KT_string **result) KT_NOEXCEPT;

/** Lists the names of the primary key's columns after a qualifier: "t"."A","t"."B". */
TOV_API void tov_schema__get_pk_col_names_comma_separated_and_qualified(KT_context *ctx, tov_schema *schema,
                                                                        const char *tbl_id, const char *qualifier,
                                                                        KT_string **result) KT_NOEXCEPT;

/**
 * Maps the name of every column to its id, e.g. {"A":"a","B":"b"}, in table order.
 *
 * @param[out] result  owned; freed with KT_vhash__free().
 *
 * Fails with KT_ERR_DUPLICATE_KEY when two columns have the same name.
 */
TOV_API void tov_schema__get_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                KT_vhash **result) KT_NOEXCEPT;

/*
 * Select expressions for SQL Server, owned by the caller: "q"."A" for a column, or a conversion where the host cannot
 * hand it over as it is.
 */

/**
 * Maps the name of every column to the type it must be cast to when the host selects it: "VARBINARY(MAX)" for a blob
 * of variable width, else null, e.g. {"Id":null,"Photo":"VARBINARY(MAX)"}.
 *
 * @param include_unprepared  whether the unprepared columns follow the others.
 * @param[out] result         owned; freed with KT_vhash__free().
 *
 * Fails with KT_ERR_DUPLICATE_KEY when two columns have the same name.
 */
TOV_API void tov_schema__get_converted_col_names_as_vhash(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                          KT_bool include_unprepared, KT_vhash **result) KT_NOEXCEPT;

/**
 * Writes the expression of one column that is found by its exact name: "q"."Id" or
 * CAST("q"."Photo" AS VARBINARY(MAX)). No column of that name is KT_ERR_NOT_FOUND.
 */
TOV_API void tov_schema__get_converted_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                const char *col_name, const char *qualifier,
                                                KT_string **result) KT_NOEXCEPT;

/** Lists these expressions for the primary key's columns. */
TOV_API void tov_schema__get_pk_col_names_converted(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                                    const char *qualifier, KT_string **result) KT_NOEXCEPT;

/**
 * Lists the expressions of chosen columns, in the order of a map, e.g. one that
 * tov_schema__get_converted_col_names_as_vhash() made: "q"."Id",CAST("q"."Photo" AS VARBINARY(MAX)).
 *
 * @param mode                what becomes of integer columns that go back to an identity column through references
 *                            (tov_schema__find_ipk_root_column()): 1, the host holds the text "S:" and the value, and
 *                            it is selected as an integer; 2, the host holds the integer, and it is selected as that
 *                            text; any other number, as it is.
 * @param cols                column names; a text value is a type to cast to.
 * @param skipped_name        optional; the exact name of an entry to leave out.
 * @param use_hash_values     whether the types in cols are used.
 * @param look_up_host_types  whether columns that the former flag gives no type are cast to VARBINARY when their host
 *                            type is spatial. Every column of the list must then have a recorded host type
 *                            (KT_ERR_KEY_NOT_FOUND) and be in the table (KT_ERR_NULL_ARGUMENT).
 */
TOV_API void tov_schema__get_pvh_col_names_comma_separated_and_qualified(
    KT_context *ctx, uint32_t mode, tov_schema *schema, const char *tbl_id, KT_vhash *cols, const char *skipped_name,
    const char *qualifier, KT_bool use_hash_values, KT_bool look_up_host_types, KT_string **result) KT_NOEXCEPT;

KT_END_DECLS

#endif
