// The one place where a field of a file becomes a value of the database, whatever the file's form.
#pragma once

#include "rows/convert/client_code_page.hpp"
#include "rows/convert/client_moments.hpp"
#include "rows/convert/client_server_type.hpp"
#include "rows/convert/client_value.hpp"

// What conversions share: room, what is known of code pages, and how they are to be done.
struct client_converter {
    client_room scratch;
    client_room *room = &scratch; // where the bytes of the next value are made
    client_code_pages pages;
    client_date_order date_order = client_date_order::mdy;
    bool exact = false;      // refuse what would have to be shortened
    bool with_rules = false; // refuse characters that the code page lacks, as the server's rules do
};

// Converts a field that is given (not absent). The value is borrowed from the field or the converter's room until
// the room is used again. May throw std::bad_alloc.
client_reject client_convert(client_converter &converter, const client_server_type &type, const client_field &field,
                             client_value &value);
