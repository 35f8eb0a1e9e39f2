// One JSON object, wherever it is in a file.
#pragma once

#include "rows/read/client_reader.hpp"

// How far an object reaches. The server hands out JSON in lines of 2,033 characters, which tools save as they come: a
// line end after so many is not part of it, wherever it falls.
struct client_json_extent {
    bool is_whole = false;         // it ends in the data
    size_t size = 0;               //
    std::vector<size_t> line_ends; // that are not part of it: their places, CR and LF each
};

// Measures the object whose "{" data begins with; before says how many characters of its first
// line come before it.
client_json_extent client_measure_json_object(std::string_view data, size_t before);

// Reads an object's members into the row's fields, whose order is that of members. Sets the row's reject where it is
// not one, or not a row of the table.
void client_read_json_object(std::string_view text, const std::vector<client_json_member> &members, client_row &row);
