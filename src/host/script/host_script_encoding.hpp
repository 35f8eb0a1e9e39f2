// The bytes of a script become UTF-8.
#pragma once

#include "kt_owned.hpp"

#include <string>
#include <string_view>

// A byte-order mark says what a file is; one without is UTF-16 when every other byte is NUL, else in the given
// encoding (a name that iconv knows), or UTF-8 where none is given. Fails with KT_ERR_UNEXPECTED_VALUE and says where
// it is not.
void host_decode_script(KT_context *ctx, std::string_view name, std::string_view bytes, const char *encoding,
                        std::string &text);
