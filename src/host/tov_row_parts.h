/*
 * The rows that a package (.bacpac, .dacpac) carries beside its model: raw, as the server's bulk export writes them.
 */
#ifndef TOV_ROW_PARTS_H
#define TOV_ROW_PARTS_H

#include "kt_context.h"

#include <stddef.h>
#include <stdint.h>

KT_BEGIN_DECLS

/** One of the files that hold a table's rows. A table has any number of them; none means that it has no rows. */
typedef struct tov_host_row_part {
    const char *schema_name;
    const char *tbl_name;
    /** Counts the parts of the table from 0. */
    uint32_t number;
    /** Of the whole part, in bytes. */
    uint64_t size;
} tov_host_row_part;

/**
 * Takes the next bytes of a part; a row may begin in one call and end in a later one. After the last bytes it is called
 * once more with a size of 0. An error that it leaves in the context ends the reading.
 *
 * @param part   borrowed until the call returns.
 * @param bytes  borrowed until the call returns.
 */
typedef void (*tov_host_take_rows)(KT_context *ctx, void *data, const tov_host_row_part *part, const char *bytes,
                                   size_t size);

/**
 * Unpacks the rows of a package, table by table in the order of their names, part by part, never a whole part at once.
 *
 *
 * @code{.c}
 * static void count(KT_context *ctx, void *data, const tov_host_row_part *part, const char *bytes, size_t size)
 * {
 *     (void)ctx;
 *     (void)bytes;
 *     if (size == 0)
 *         printf("%s.%s, part %u\n", part->schema_name, part->tbl_name, (unsigned)part->number);
 *     *(size_t *)data += size;
 * }
 *
 * size_t measure_rows(KT_context *ctx, const char *package, size_t size)
 * {
 *     size_t total = 0;
 *     tov_host__read_row_parts(ctx, package, size, count, &total);
 *     return total;
 * }
 * @endcode
 * @param bytes  the package's content.
 * @param take   called for each piece.
 * @param data   handed to it.
 *
 * Fails with KT_ERR_UNEXPECTED_VALUE when the file is not a package, is damaged, or has rows of a table that its model
 * lacks; rows taken until then are of no use.
 */
KT_API void tov_host__read_row_parts(KT_context *ctx, const char *bytes, size_t size, tov_host_take_rows take,
                                     void *data) KT_NOEXCEPT;

/**
 * How many rows a package says that it has, all tables together: what was read can be held against it.
 *
 * @param[out] row_count  -1 when the package does not say.
 *
 * Fails as reading the rows does.
 */
KT_API void tov_host__count_packed_rows(KT_context *ctx, const char *bytes, size_t size,
                                        int64_t *row_count) KT_NOEXCEPT;

KT_END_DECLS

#endif
