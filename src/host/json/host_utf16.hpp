// Little-endian UTF-16, as Windows tools write it, becomes UTF-8.
#pragma once

#include "kt_owned.hpp"

#include <string>
#include <string_view>

// Fails with KT_ERR_BAD_JSON at half a code unit or half a surrogate pair.
void host_utf16le_to_utf8(KT_context *ctx, std::string_view utf16, std::string &utf8);
