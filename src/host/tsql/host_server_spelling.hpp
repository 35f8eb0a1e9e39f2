// Expressions the way the server stores and shows them: ((0)) for 0, (getdate()) for CURRENT_TIMESTAMP,
// ([Kind]='b' OR [Kind]='a') for kind IN ('a', 'b').
//
// What the server has spelled already stays as it is.
#pragma once

#include "tsql/host_tsql_cursor.hpp"

// The definition of a default, check, filter or computed column that was written as this expression. One that is not
// understood is kept as it is written, in parentheses.
std::string host_server_spelling(std::string_view expression, bool quoted_identifier = true);

// Reads an expression without truth value, such as follows DEFAULT or AS, up to the first token that does not belong
// to it.
std::string host_read_expression(host_tsql_cursor &cursor);

// Reads a condition, up to the first token that does not belong to it.
std::string host_read_condition(host_tsql_cursor &cursor);

// The name in brackets: a]b becomes [a]]b].
std::string host_bracketed(std::string_view name);

// What is between the quotes of a string literal of SQL, doubled quotes taken for one.
std::string host_unquoted_literal(std::string_view literal);

// The text as a string literal, quotes doubled.
std::string host_quoted(std::string_view text);
