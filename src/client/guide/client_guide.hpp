// How values of a server's type are kept, shown and stored: what docs/values.md says of each type.
#pragma once

#include "rows/convert/client_server_type.hpp"

#include <string>
#include <string_view>

// A type as it is declared on the server: of the types of program libraries (clr) only the name tells which it is.
struct client_declared_type {
    client_server_type type;
    std::string_view name;
};

// decimal(9,2), nvarchar(max), datetime2(7), geography.
std::string client_declared_type_text(const client_declared_type &declared);

struct client_value_form {
    const char *storage; // SQLite's storage class; null for a type whose columns are left out
    std::string form;    // what is stored, e.g. "the value times 100"
    const char *bind;    // what the parameter of the storing expression takes
    std::string example; // a value as the server shows it
    std::string stored;  // the same as it is stored, an SQL expression
};
client_value_form client_form_of(const client_declared_type &declared);

// The expression that shows a stored value as the server does; value is an expression without side effects, such as a
// column's name in double quotes. NULL is shown as NULL.
std::string client_showing_expression(const client_server_type &type, const std::string &value);

// The expression that makes the stored form of a value; parameter is "?1" and the like. What is not a value of the type
// comes out as something that the checks of its column refuse.
std::string client_storing_expression(const client_server_type &type, const std::string &parameter);

// The same of a text that the showing expression gave, for types that client_storing_expression() wants bytes of; empty
// for others. SQLite has unhex() from version 3.41 on.
std::string client_storing_expression_of_text(const client_server_type &type, const std::string &parameter);
