// Numbers for texts: each text, within a scope of the caller's choice, gets the next number when it is first added.
//
// The texts are borrowed and must outlive the numbering. Open addressing: a slot holds a number plus one, 0 is empty.
#pragma once

#include "fk/fk_array.hpp"

static constexpr uint32_t FK_NO_NUMBER = UINT32_MAX;

struct fk_name {
    uint64_t scope;
    const char *text;
    uint64_t hash;
};

struct fk_names {
    explicit fk_names(KT_context *ctx) noexcept : names(ctx), slots(ctx)
    {
    }
    fk_array<fk_name> names; // by number
    fk_array<uint32_t> slots;
};

// A numbering to search in, wherever its memory is.
struct fk_name_table {
    const fk_name *names;
    const uint32_t *slots;
    uint32_t slot_count;
};

// The number of a text, FK_NO_NUMBER when it has none.
uint32_t fk_find_name(const fk_name_table &table, uint64_t scope, const char *text) noexcept;
uint32_t fk_find_name(const fk_names &numbering, uint64_t scope, const char *text) noexcept;
// The number of a text, the next one when it has none yet.
void fk_add_name(KT_context *ctx, fk_names *numbering, uint64_t scope, const char *text, uint32_t *number) noexcept;
