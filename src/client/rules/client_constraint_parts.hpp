// The conditions of dates and times.
#pragma once

#include "rules/client_constraints.hpp"

// Adds what the schema's own check asks of a date, time or datetime.
void client_add_moment_constraints(tov_type_kind kind, const std::string &col,
                                   std::vector<client_constraint> &constraints);

// Whether the server's rules for a moment refuse nearly all that the schema's own check of its kind does.
bool client_rules_imply_check(tov_type_kind kind, const client_server_type &type) noexcept;

// Adds what both ask of one for which that is so.
void client_add_server_moment_constraints(const client_server_type &type, const std::string &col,
                                          std::vector<client_constraint> &constraints);
