// What the sources of the schema module share: the file text of its stack frames, the handle, and the lookups through
// which every operation reaches a table or a column. Not exported; the static library's users (tests) can link it.
#pragma once

#include "kt_owned.hpp"
#include "tov_parse_defin.h"

#define KT_HERE "src/core/common/tov_parse_defin"

struct tov_schema {
    KT_vhash *document;
    KT_vhash *host_internals; // null until a write first needs it
    KT_vhash *tbls;           // the document's "tbls", which nothing removes; null until a lookup first needs it
    // The table and the prepared column that a lookup found last, each with its id in the map it was found in, since
    // who asks one thing of a column asks the next of it too. Nothing removes either, nor moves its record.
    struct {
        const char *id;
        KT_vhash *tbl;  // null while nothing is known
        KT_vhash *cols; // null until a lookup first needs them
    } last_tbl;
    struct {
        const KT_vhash *tbl; // null while nothing is known
        const char *id;
        KT_vhash *col;
    } last_col;
    KT_strpool *strpool;
    // Counts the operations that may have changed either tree, failed ones too: what is derived from the document
    // holds as long as this number stays the same. A read that creates an empty record is not a change.
    uint64_t change_count;
    // Counts those among them that may have changed which tables, columns and foreign keys there are, or a foreign key.
    uint64_t reference_change_count;
    // Whether the document had the shape of one when it was checked last. Who checks it before use hands it on to
    // others who do. What a caller may change without a call, the server's facts, has no shape.
    struct {
        bool is_right;
        uint64_t change_count;
    } known_shape;
    // The keys by the table that they refer to, once questions about that were asked.
    struct tov_fk_index *fk_index;
    // The order of the tables, once it was asked for.
    struct tov_fk_order *fk_order;
    // The integer primary key of the table that was asked about last. Who writes a table asks once for each column,
    // and the answer takes a look at every column's type. Nothing is known of a table whose answer may depend on how
    // its id was spelled.
    struct {
        const KT_vhash *tbl; // null while nothing is known
        uint64_t change_count;
        const char *col_id; // null when the table has none
        KT_vhash *col;
    } integer_pk;
};

// A flag that is true exactly when the argument's low byte is 1, whatever the upper bytes hold.
inline KT_bool tov_low_byte_flag(KT_bool argument) noexcept
{
    return (static_cast<uint32_t>(argument) & 0xFFU) == 1U;
}

// Whether a foreign key's action is one: given, and not "NO ACTION" in any letter case.
inline bool tov_is_fk_action(const char *action) noexcept
{
    return action && KT_stricmp(action, "NO ACTION") != 0;
}

extern "C" {

// Lookups. Results are borrowed from the document. A table that does not exist is KT_ERR_NOT_FOUND, first of all.

void _tov_schema__get_tbls(KT_context *ctx, tov_schema *schema, KT_vhash **tbls) noexcept;
void _tov_schema__get_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **tbl) noexcept;
void _tov_schema__get_tbl_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **cols) noexcept;
// Finds a prepared column or, failing that, an unprepared one.
void _tov_schema__get_col(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                          KT_vhash **col) noexcept;
// The table's unprepared columns under the id as written; creates what is missing on the way, asks for no table.
void _tov_schema__get_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                          KT_vhash **cols) noexcept;
// The same without creating anything: null when any level is absent.
void _tov_schema__check_tbl_unprepared_cols(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                            KT_vhash **cols) noexcept;
void _tov_schema__get_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept;
void _tov_schema__get_uniques(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **uniques) noexcept;
void _tov_schema__get_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                  KT_vhash **foreignkeys) noexcept;
void _tov_schema__check_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **pk) noexcept;
void _tov_schema__check_foreignkeys(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                    KT_vhash **foreignkeys) noexcept;
void _tov_schema__get_checks(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **checks) noexcept;

// Lookups that start from a table record (tbl) already at hand, so that a walk over many columns searches only once
// for each. They find, create and report exactly what the lookups by id do; tbl_id goes with tbl, as the caller of
// the public operation passed it.

// The table's prepared columns, created empty when absent.
void _tov_tbl__get_cols(KT_context *ctx, KT_vhash *tbl, KT_vhash **cols) noexcept;
void _tov_schema__get_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                 const char *col_id, KT_vhash **col) noexcept;
// The n-th table, and the n-th pair of a table's cols (from _tov_tbl__get_cols()): the id, optional, and the record
// that a lookup by this id finds. An n that is not below the count is KT_ERR_OUT_OF_RANGE.
void _tov_schema__get_nth_tbl(KT_context *ctx, tov_schema *schema, uint32_t n, const char **tbl_id,
                              KT_vhash **tbl) noexcept;
void _tov_schema__get_nth_col_in_tbl(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                     const KT_vhash *cols, uint32_t n, const char **col_id, KT_vhash **col) noexcept;

// The host internals, created when the schema has none yet.
void _tov_schema__ensure_host_internals(KT_context *ctx, tov_schema *schema, KT_vhash **host_internals) noexcept;
// A table's entry in one map of the host internals, such as "collations", under the id as written: created with all
// that is missing on the way, or null when any level is absent.
void _tov_schema__ensure_host_entry(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                                    KT_vhash **entry) noexcept;
void _tov_schema__check_host_entry(KT_context *ctx, tov_schema *schema, const char *map_key, const char *tbl_id,
                                   KT_vhash **entry) noexcept;

// Readers of a column record (col) already at hand; the public operation of the same name says what they answer.
// Outputs called optional there are optional here.

void _tov_col__get_type(KT_context *ctx, const KT_vhash *col, const char **abstract_type,
                        const char **sqlite_typeof) noexcept;
void _tov_col__get_type_field_bool(KT_context *ctx, const KT_vhash *col, const char *field, KT_bool *has,
                                   KT_bool *value) noexcept;
void _tov_col__get_type_field_int32(KT_context *ctx, const KT_vhash *col, const char *field, int32_t absent_value,
                                    int32_t *value) noexcept;
void _tov_col__get_notnull(KT_context *ctx, const KT_vhash *col, KT_bool *notnull, const char **name) noexcept;
void _tov_col__get_defval(KT_context *ctx, const KT_vhash *col, KT_bool *has, const char **name,
                          const char **expr) noexcept;
void _tov_col__get_fk(KT_context *ctx, const KT_vhash *col, KT_bool *has, const char **name, const char **ref_tbl_id,
                      const char **ref_col_id, const char **on_delete, const char **on_update) noexcept;
void _tov_col__is_integer_primary_key(KT_context *ctx, const KT_vhash *col, KT_bool *is_integer_pk,
                                      const char **constraint_name) noexcept;

// The primary key of a table whose record is at hand; see the public operations.

// The first integer primary key among the prepared columns: id and record (each optional), null when there is none.
void _tov_tbl__find_integer_primary_key(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                                        const char **col_id, KT_vhash **col) noexcept;
void _tov_tbl__count_pk_cols(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                             uint32_t *count) noexcept;
void _tov_tbl__get_nth_pk_col(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id, uint32_t n,
                              const char **col_id, const char **col_name) noexcept;
void _tov_tbl__is_col_id_in_pk(KT_context *ctx, tov_schema *schema, KT_vhash *tbl, const char *tbl_id,
                               const char *col_id, KT_bool *is_in_pk) noexcept;

// One field of a column's type record, by its key.
void _tov_schema__get_col_type_field_bool(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                          const char *field, KT_bool *has, KT_bool *value) noexcept;
void _tov_schema__get_col_type_field_int32(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                           const char *field, int32_t absent_value, int32_t *value) noexcept;

// Frees an index of foreign keys. Null does nothing.
void _tov_fk_index__free(KT_context *ctx, struct tov_fk_index *index) noexcept;
void _tov_fk_order__free(KT_context *ctx, struct tov_fk_order *order) noexcept;

// Records a rule for a foreign key; TOV_VIOLATION_ON_INSERT is the only conflict situation known.
constexpr int32_t TOV_VIOLATION_ON_INSERT = 5;
void _tov_schema__set_fk_rule(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *fk_id,
                              int32_t situation, int32_t value) noexcept;
// Drops the rules under this key's id, whatever table they were recorded for.
void _tov_schema__drop_fk_rules(KT_context *ctx, tov_schema *schema, const char *fk_id) noexcept;

// Abstract type names to SQLite's words: constant texts, "" for an unknown name.
const char *tov_abstract_type_to_sqlite_decl(const char *abstract_type) noexcept;
const char *tov_abstract_type_to_sqlite_typeof(const char *abstract_type) noexcept;

} // extern "C"
