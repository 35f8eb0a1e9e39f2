// Bytes: from hexadecimal digits and Base64, and uniqueidentifiers.
#pragma once

#include "rows/convert/client_value.hpp"

// Pairs of digits in either case, with or without 0x, appended as bytes; false for anything else.
bool client_append_from_hex(std::string &bytes, std::string_view hex);
bool client_append_from_base64(std::string &bytes, std::string_view base64);

// 6F9619FF-8B86-D011-B42D-00C04FC964FF in either case, braces allowed, as the server's 16 bytes; false for other texts.
bool client_read_guid(std::string_view text, char bytes[16]) noexcept;

// The other ways.
void client_append_hex(std::string &text, std::string_view bytes);
void client_append_base64(std::string &text, std::string_view bytes);
void client_append_guid(std::string &text, std::string_view bytes);
