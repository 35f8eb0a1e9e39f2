// Values of the database as the server's tools write them: the other way of client_convert.hpp.
#pragma once

#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

// Who reads the text.
enum class client_text_form : uint8_t {
    bcp,       // no zero before the point of a fraction, hexadecimal digits alone, floats with 17 digits
    bcp_short, // the same, but a fraction of nothing but zeros is left out
    plain,     // a zero before the point, 0x before hexadecimal digits, floats with the fewest digits that mean them
};

// Appends a value that is not NULL. What does not have the form of its column's type is appended as it is.
void client_append_form(std::string &text, const client_server_type &type, const client_value &value,
                        client_text_form form);

// The fewest digits that mean a float or real, as JSON and C have numbers: 0.1, 1e+20.
void client_append_shortest(std::string &text, double value, bool is_real);
