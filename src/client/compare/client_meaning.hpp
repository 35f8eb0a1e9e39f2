// Expressions of the server and of SQLite in a form that is equal for those that mean the same.
//
//     client_meaning("(( 0 ))") == client_meaning("(0)") == "0"
//     client_meaning("[A]>(0) and a<>b") == client_meaning("((A>0 AND a != [b]))")
//
// What is undone is spelling: blanks, comments, letter case outside of strings, quotes around names that need none, and
// parentheses around what is one operand anyway. Operands stay where they are.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// What a name, in lower case, is called in the form.
using client_name_meaning = std::function<std::string(const std::string &)>;

std::string client_meaning(std::string_view expression, const client_name_meaning &rename = {});

// The names in an expression, in lower case, each where it first appears. Words that may be functions are not names.
std::vector<std::string> client_names_in(std::string_view expression);
