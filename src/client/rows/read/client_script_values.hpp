// The values of an INSERT statement.
#pragma once

#include "rows/convert/client_convert.hpp"
#include "rows/read/client_reader.hpp"
#include "rows/read/client_script_tokens.hpp"

// Reads a value, up to the comma or parenthesis after it: a literal, or the CAST of one to a type that holds it as it
// is. Anything else is the server's. False when the data ends before. Text that has to be changed goes to the row's
// room, which must be large enough for all of the data.
bool client_read_script_value(client_token_stream &tokens, client_converter &converter, client_row &row,
                              client_field &field);
