// Bound defaults: the old form, an object of its own that is bound to columns or to an alias type.
#pragma once

#include <string_view>

// The expression of a CREATE DEFAULT statement, which may have comments around it: what follows its last AS outside
// parentheses, texts, quoted names and comments, up to a semicolon. Empty when there is no such word.
std::string_view host_bound_default_expression(std::string_view statement);
