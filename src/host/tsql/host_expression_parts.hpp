// The parts of expressions that the server respells one by one.
#pragma once

#include "tsql/host_tsql_cursor.hpp"
#include "tsql/host_tsql_type.hpp"

// 007 becomes 7, .5 becomes 0.5, 1e3 becomes 1.0000000000000000e+003; whole numbers beyond 32 bits end with a point.
std::string host_number_spelling(std::string_view number);
std::string host_binary_spelling(std::string_view binary);
std::string host_text_spelling(const host_tsql_token &text);
std::string host_variable_spelling(std::string_view variable);

// Reads a name of one or more parts: dbo.Answer becomes [dbo].[Answer].
std::string host_read_name_spelling(host_tsql_cursor &cursor);
std::string host_read_method_name(host_tsql_cursor &cursor);

bool host_is_comparison(std::string_view mark);
// != becomes <>, !< becomes >=.
std::string_view host_comparison_spelling(std::string_view mark);

// The function that a word such as CURRENT_TIMESTAMP stands for; empty when it stands for none.
std::string_view host_wordless_function(host_word word);

// Functions whose first argument is a part of a date, and that part in full: yy becomes year.
bool host_takes_date_part(std::string_view function);
std::string host_date_part(std::string_view written);
