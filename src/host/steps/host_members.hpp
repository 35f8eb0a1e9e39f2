// Members of records that are left out where they have nothing to say.
#pragma once

#include "kt_vhash.h"

// Adds a string that is not null, and a flag that is set.
void host_add_text(KT_context *ctx, KT_vhash *map, const char *key, const char *text) noexcept;
void host_add_flag(KT_context *ctx, KT_vhash *map, const char *key, bool flag) noexcept;
