// What a script casts is a value of one type; the column's may be another.
#pragma once

#include "rows/convert/client_value.hpp"

// Whether converting a field that was cast gives what the server stores in a column of a type: false where only the
// server knows.
bool client_is_decided(const client_field &field, const client_server_type &type) noexcept;
