// The rules of each family of types.
#pragma once

#include "rules/client_rules.hpp"

#include <string_view>

// Puts the value in the place of each @ of a condition.
std::string client_about(const std::string &value, std::string_view condition);

// The pattern of GLOB for what follows the seconds of a time, datetime, datetime2 or datetimeoffset.
std::string client_fraction_pattern(const client_server_type &type);

void client_add_moment_rules(const client_server_type &type, const std::string &value, std::vector<client_rule> &rules);
void client_add_text_rules(const client_server_type &type, const std::string &value, client_code_pages &pages,
                           std::vector<client_rule> &rules);
