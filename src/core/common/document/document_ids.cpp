// Lower-casing of the ids that key tables and columns.
//
// Every lookup passes through here, and nearly every id that reaches it is in lower case already, because ids that
// the schema hands out are: such an id is used as it is, without a copy.

#include "document/document_ids.hpp"

#include "document/tov_parse_defin_private.hpp"

#include "kt_chars.h"

#include <cstring>

static const char *my_find_upper(const char *id) noexcept
{
    while (*id && KT_char__folded(*id) == *id)
        id++;
    return id;
}

bool tov_is_lower_id(const char *id) noexcept
{
    return !*my_find_upper(id);
}

void tov_lower_id(KT_context *ctx, const char *id, tov_id_room *room, const char **lowered) noexcept
{
    const char *first_upper = my_find_upper(id);
    if (!*first_upper) {
        *lowered = id;
        return;
    }
    const size_t unchanged = static_cast<size_t>(first_upper - id);
    const size_t size = unchanged + strlen(first_upper) + 1;
    char *copy = room->short_id;
    if (size <= sizeof room->short_id) {
        memcpy(copy, id, size);
    } else {
        room->long_id.reset();
        KT_TRY(KT_strdup(ctx, id, room->long_id.out()));
        copy = room->long_id;
    }
    for (char *byte = copy + unchanged; *byte; byte++)
        *byte = static_cast<char>(KT_char__folded(*byte));
    *lowered = copy;
}
