// Where in a schema something is, for messages: table "Orders", column "Total", default.
#pragma once

#include "kt_chars.h"
#include "kt_owned.hpp"

struct client_place {
    const char *tbl;                 // the table's name, or its id where it has none
    const char *part = nullptr;      // optional: what kind of thing of the table, e.g. "column"
    const char *part_name = nullptr; // its name, or its id where it has none
    const char *detail = nullptr;    // optional: what of it, e.g. "default"
};

// The place of a detail of the thing at a place.
inline client_place client_at(client_place place, const char *detail) noexcept
{
    place.detail = detail;
    return place;
}

// Raises an error described as "PLACE: TEXT", with file and line as its first frame.
void client_fail_at(KT_context *ctx, const char *file, int32_t line, uint64_t code, const client_place &place,
                    const char *format, ...) noexcept KT_PRINTF(6, 7);

// Raises an error at a place, and returns.
#define CLIENT_FAIL(code, place, ...)                                         \
    do {                                                                      \
        client_fail_at(ctx, KT_HERE, __LINE__, (code), (place), __VA_ARGS__); \
        return;                                                               \
    } while (0)
