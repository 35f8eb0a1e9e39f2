// Values of the database as the server's tools write them: the other way of client_convert.hpp.
#pragma once

#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

// Who reads the text.
enum class client_text_form : uint8_t {
    bcp,    // no zero before the point of a fraction, hexadecimal digits alone
    csv,    // a zero before the point, 0x before hexadecimal digits
    literal // the same, for strings that a script puts in quotes
};

// Appends a value that is not NULL. What does not have the form of its column's type is appended as it is.
void client_append_form(std::string &text, const client_server_type &type, const client_value &value,
                        client_text_form form);
