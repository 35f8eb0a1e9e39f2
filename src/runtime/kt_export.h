/* Linkage of the support runtime's public names, and the few types that every header shares. */
#ifndef KT_EXPORT_H
#define KT_EXPORT_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && defined(TOV_SCHEMA_SHARED)
#ifdef TOV_SCHEMA_BUILDING
#define KT_API __declspec(dllexport)
#else
#define KT_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define KT_API __attribute__((visibility("default")))
#else
#define KT_API
#endif

/* KT_INLINE marks a function that a header defines; in C++ it works in constant expressions too. */
#ifdef __cplusplus
#define KT_INLINE constexpr
#define KT_NOEXCEPT noexcept
#define KT_BEGIN_DECLS extern "C" {
#define KT_END_DECLS }
#else
#define KT_INLINE static inline
#define KT_NOEXCEPT
#define KT_BEGIN_DECLS
#define KT_END_DECLS
#endif

/* Lets the compiler check a format text against its arguments (1-based positions; 0 for a va_list). */
#if defined(__GNUC__)
#define KT_PRINTF(format_at, first_at) __attribute__((format(printf, format_at, first_at)))
#else
#define KT_PRINTF(format_at, first_at)
#endif

/** Truth value: as an argument zero is false and anything else true; as a result 0 or 1. */
typedef int32_t KT_bool;

typedef struct KT_context KT_context;
typedef struct KT_string KT_string;
typedef struct KT_strpool KT_strpool;
typedef struct KT_nullhash KT_nullhash;
typedef struct KT_vhash KT_vhash;
typedef struct KT_varray KT_varray;
typedef struct KT_variant KT_variant;

#endif
