/*
 * The server's types as people write them, and what a schema makes of them.
 */
#ifndef TOV_HOST_TYPES_H
#define TOV_HOST_TYPES_H

#include "tov_export.h"

#include <stdint.h>

KT_BEGIN_DECLS

/** What a schema makes of a column of one of the server's types. */
typedef struct tov_host_type {
    /** As in tov_abstract_types.h, e.g. "sint32"; static. Null for a type that no column of a schema can hold. */
    const char *abstract_type;
    /** Decimals of a decimal or numeric; 0 for other types. */
    uint32_t scale;
    /** Whether the server itself writes the values, as it does for a rowversion. */
    KT_bool is_row_version;
} tov_host_type;

/**
 * Finds one of the server's types by what a declaration says, e.g. "[decimal](9,2)" or "national char varying(20)":
 * any of the type's names, in any letter case, perhaps in brackets, with its sizes or without.
 *
 * @param[out] type      written when the server has the type.
 * @param[out] is_known  whether it has. An alias type is not known, nor is a string that is not one type.
 */
TOV_API void tov_host__find_type(KT_context *ctx, const char *declared, tov_host_type *type,
                                 KT_bool *is_known) KT_NOEXCEPT;

/** The n-th of the names under which tov_host__find_type() knows types, counted from 0; static, null past the last. */
TOV_API const char *tov_host__get_nth_type_name(uint32_t n) KT_NOEXCEPT;

KT_END_DECLS

#endif
