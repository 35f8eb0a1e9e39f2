// Characters of JSON strings.
#pragma once

#include <string>

// Appends a byte of a string as JSON has it between quotes: what has to be escaped is.
void client_append_json_byte(std::string &json, char byte);
