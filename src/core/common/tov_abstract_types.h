/*
 * The abstract types: what a column's values are, as far as SQLite can keep them.
 *
 * There are 21, each a row of one table that the schema module itself reads. A document may name a type that is none
 * of them; such a column is declared without a type.
 */
#ifndef TOV_ABSTRACT_TYPES_H
#define TOV_ABSTRACT_TYPES_H

#include "tov_export.h"

KT_BEGIN_DECLS

/** What kind of values a type has. Never renumbered. */
typedef uint8_t tov_type_kind;
enum {
    TOV_KIND_IDENTITY = 0, /* the table's identity column, which is SQLite's rowid */
    TOV_KIND_INTEGER = 1,
    TOV_KIND_BIT = 2,
    TOV_KIND_REAL = 3,
    TOV_KIND_DECIMAL = 4, /* an integer: the value times 10 to the power of the column's scale */
    TOV_KIND_MONEY = 5,   /* an integer: the value times 10,000 */
    TOV_KIND_DATE = 6,
    TOV_KIND_TIME = 7,
    TOV_KIND_DATETIME = 8,
    TOV_KIND_TEXT = 9,
    TOV_KIND_BLOB = 10,
    TOV_KIND_GUID = 11 /* 16 bytes */
};

typedef struct tov_abstract_type {
    const char *name;          /* "sint32" */
    const char *sqlite_decl;   /* what a column is declared as: "int" */
    const char *sqlite_typeof; /* what typeof() says of a value: "integer" */
    /* The members of a type record besides "name" in the order in which they are written, with blanks between. */
    const char *fields;
    tov_type_kind kind;
    uint8_t is_checked;     /* whether triggers hold values to sqlite_typeof */
    uint8_t is_integer_key; /* whether the type may hold the values of an identity column it refers to */
    int64_t low;            /* of an integer: the least and the greatest value; INT64_MIN and INT64_MAX: any */
    int64_t high;
} tov_abstract_type;

/** The type of this name, which matches exactly; a constant. Null for a name of no type, and for a null name. */
TOV_API const tov_abstract_type *tov_find_abstract_type(const char *name) KT_NOEXCEPT;

/** The n-th type, counted from 0; a constant. Null when n is not below their number. */
TOV_API const tov_abstract_type *tov_get_nth_abstract_type(uint32_t n) KT_NOEXCEPT;

KT_END_DECLS

#endif
