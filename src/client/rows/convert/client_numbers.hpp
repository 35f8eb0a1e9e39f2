// Numbers: from digits, and from the bytes of row parts.
#pragma once

#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

// A whole number, scaled decimal or amount of money from its digits, exactly.
client_reject client_read_exact(const client_server_type &type, std::string_view text, int64_t &value) noexcept;

// A real or float from digits, rounded once to what the type holds.
client_reject client_read_float(const client_server_type &type, std::string_view text, double &value) noexcept;

// The same from native bytes.
client_reject client_read_native_number(const client_server_type &type, std::string_view bytes,
                                        client_value &value) noexcept;

// Whole numbers of native bytes, low byte first.
uint64_t client_read_little(std::string_view bytes) noexcept;
