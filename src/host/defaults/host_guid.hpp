// Guids written as strings.
#pragma once

#include <string>
#include <string_view>

// The server's own bytes of a guid, x'00112233...': the first three groups byte-reversed. Empty when the text is not
// one, with or without braces.
std::string host_guid_literal(std::string_view text);
