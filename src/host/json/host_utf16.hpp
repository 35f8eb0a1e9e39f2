// UTF-16, as Windows tools write it, becomes UTF-8.
#pragma once

#include "kt_owned.hpp"

#include <string>
#include <string_view>

enum class host_byte_order { little, big };

// Fails with KT_ERR_BAD_JSON at half a code unit or half a surrogate pair.
void host_utf16_to_utf8(KT_context *ctx, std::string_view utf16, host_byte_order order, std::string &utf8);
