// What would make the server refuse a column's value, as conditions in SQL, each with its kind.
#pragma once

#include "verify/client_verify.hpp"

struct client_condition {
    std::string refused; // holds for values that are refused; may be NULL for others
    const tov_client_violation_kind *kind;
    std::string message;
    bool is_last; // nothing else is asked of a value for which it holds, nor of one in a later condition's place
};

// The conditions of a column, in the order in which they are asked: those after which nothing is asked come first. None
// holds for NULL.
std::vector<client_condition> client_value_conditions(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                                                      const client_verify_col &col);

// The kind of a violation that a rule's message tells.
const tov_client_violation_kind *client_kind_of_message(std::string_view message) noexcept;
