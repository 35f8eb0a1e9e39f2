// Lower-casing of the ids that key tables and columns.
#pragma once

#include "kt_owned.hpp"

// Room for the lower-case form of one id: on the stack for ids of ordinary length, else on the heap.
struct tov_id_room {
    explicit tov_id_room(KT_context *ctx) noexcept : long_id(ctx)
    {
    }
    char short_id[128];
    kt_owned_text long_id;
};

// Whether an id is in lower case already, that is without ASCII capitals.
bool tov_is_lower_id(const char *id) noexcept;

// The id in lower case: the id itself when it is so already, else a copy that lives as long as the room. The bytes of
// characters beyond ASCII stay, whatever the locale of the embedding program makes of them.
void tov_lower_id(KT_context *ctx, const char *id, tov_id_room *room, const char **lowered) noexcept;
