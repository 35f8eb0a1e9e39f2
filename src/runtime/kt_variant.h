/* One value inside a map or a list. */
#ifndef KT_VARIANT_H
#define KT_VARIANT_H

#include "kt_context.h"

KT_BEGIN_DECLS

/** What a variant holds. One byte, so that most strings fit into the variant itself. Never renumbered. */
typedef uint8_t KT_variant_type;
enum {
    KT_VARIANT_NULL = 0,
    KT_VARIANT_BOOL = 1,
    KT_VARIANT_INT64 = 2,
    KT_VARIANT_DOUBLE = 3,
    KT_VARIANT_STRING = 4,
    KT_VARIANT_VHASH = 5,
    KT_VARIANT_VARRAY = 6
};

/** The longest string, in bytes without its NUL, that a variant holds inside itself. */
#define KT_VARIANT_INLINE_TEXT 13

/**
 * A value of 16 bytes. Read `type` first, then the member of `as` that goes with it. Strings are read with
 * KT_variant__get__sz(), since a short one lies inside the variant, from its third byte on, and a longer one at
 * `as.text`.
 */
struct KT_variant {
    KT_variant_type type;
    /** Of a string: its length when it lies inside the variant, 0xFF when it lies at as.text. */
    uint8_t inline_length;
    uint8_t inline_text[2];
    /** Of a string that lies outside: its length in bytes. */
    uint32_t text_length;
    union {
        KT_bool boolean;
        int64_t int64;
        double real;
        const char *text;
        KT_vhash *vhash;
        KT_varray *varray;
    } as;
};

/**
 * The variant as a string, borrowed from the map or list it is in. KT_ERR_WRONG_TYPE for any other value.
 */
KT_API void KT_variant__get__sz(KT_context *ctx, const KT_variant *variant, const char **text) KT_NOEXCEPT;

KT_END_DECLS

#endif
