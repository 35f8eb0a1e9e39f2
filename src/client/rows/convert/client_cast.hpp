// CAST in scripts: a literal becomes a value of one type, and that a value of the column's.
#pragma once

#include "rows/convert/client_convert.hpp"

#include <deque>

// The value of a type that a literal is cast to, as a field; the server's when the type does not hold the literal, and
// would cut it. What is not borrowed from the literal is added to made. May throw std::bad_alloc.
client_field client_cast(client_converter &converter, const client_server_type &type, const client_field &literal,
                         std::deque<std::string> &made);
