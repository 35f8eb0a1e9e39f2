/*
 * The shape of a schema document: its members, what type each has, and what a string in it is for.
 *
 * The shape is a tree of constant tables that begins with the document itself. docs/document.md shows the same tables
 * with the meaning of each member. Members that no table names are carried along and never looked at.
 */
#ifndef TOV_SHAPE_H
#define TOV_SHAPE_H

#include "tov_export.h"

KT_BEGIN_DECLS

/** What a member is. Never renumbered. */
typedef uint8_t tov_member_type;
enum {
    TOV_MEMBER_STRING = 0,
    TOV_MEMBER_INTEGER = 1,
    TOV_MEMBER_BOOLEAN = 2,
    TOV_MEMBER_RECORD = 3,    /* an object with the members of a shape */
    TOV_MEMBER_RECORDS = 4,   /* an object of such objects by their ids */
    TOV_MEMBER_LIST = 5,      /* a list of such objects */
    TOV_MEMBER_COL_SET = 6,   /* an object whose keys are ids of columns of the table; the values mean nothing */
    TOV_MEMBER_COL_SETS = 7,  /* an object of such objects by their ids */
    TOV_MEMBER_COL_PAIRS = 8, /* an object: ids of columns of the table to ids of columns of the table referred to */
    TOV_MEMBER_OPEN = 9       /* an object whose members are none of the module's business */
};

/** What a string is for. Never renumbered. */
typedef uint8_t tov_string_role;
enum {
    TOV_ROLE_FREE = 0,        /* is not part of any statement */
    TOV_ROLE_NAME = 1,        /* goes into statements between double quotes */
    TOV_ROLE_TYPE = 2,        /* an abstract type */
    TOV_ROLE_ACTION = 3,      /* follows ON DELETE or ON UPDATE */
    TOV_ROLE_DEFAULT = 4,     /* an expression, follows DEFAULT */
    TOV_ROLE_CHECK = 5,       /* an expression with parentheses around it, follows CHECK */
    TOV_ROLE_INNER_CHECK = 6, /* an expression, goes between the parentheses after CHECK */
    TOV_ROLE_TBL_ID = 7,      /* names the table referred to */
    TOV_ROLE_COL_ID = 8       /* names a column of the table that the same record refers to */
};

typedef struct tov_shape tov_shape;

typedef struct tov_member {
    const char *key;
    tov_member_type type;
    uint8_t is_required;
    tov_string_role role;
    const char *label;      /* what messages call it: "name of the primary key"; null: they name its record only */
    const tov_shape *shape; /* of a record, and of each record of several; null for other types */
} tov_member;

struct tov_shape {
    const char *name; /* what one record is: "table" */
    const tov_member *members;
    uint32_t count;
};

/** The shape of the whole document, from which all others are reached. */
TOV_API const tov_shape *tov_get_document_shape(void) KT_NOEXCEPT;

/**
 * Refuses a document that does not have the shape: to be asked of a document from outside before it is used.
 *
 * Fails with KT_ERR_KEY_NOT_FOUND where a member is missing and with KT_ERR_WRONG_TYPE where one is of another type;
 * the description names the place, e.g. "tbls.581577110.cols.2.type.name is missing".
 */
TOV_API void tov_schema__check_shape(KT_context *ctx, tov_schema *schema) KT_NOEXCEPT;

/** Gives the document, to be read only. Borrowed; it changes with the schema and goes with it. */
TOV_API void tov_schema__get_document(KT_context *ctx, tov_schema *schema, const KT_vhash **document) KT_NOEXCEPT;

KT_END_DECLS

#endif
