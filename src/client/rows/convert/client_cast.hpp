// CAST in scripts: a literal becomes a value of one type, and that a value of the column's.
#pragma once

#include "rows/convert/client_convert.hpp"

#include <deque>

// The value of a type that a literal is cast to, as a field; the server's when the type does not hold the literal, and
// would cut it. What is not borrowed from the literal is added to made. May throw std::bad_alloc.
client_field client_cast(client_converter &converter, const client_server_type &type, const client_field &literal,
                         std::deque<std::string> &made);

// Whether converting a field to a type gives what the server stores: false for casts of which only the server knows
// what they come to in a column of another type. True of every field that was not cast.
bool client_is_decided(const client_field &field, const client_server_type &type) noexcept;
