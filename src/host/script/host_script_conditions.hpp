// Conditions of IF and WHILE, decided from what the script itself has made so far.
#pragma once

#include "script/host_script_reader.hpp"

enum class host_fact_kind {
    unknown,
    null,
    something, // not null, and no more is known
    text,
    number,
    count,  // above 0, and no more is known
    object, // an id: the folded name, schema and name with a NUL between
    schema, // an id: the folded name
};

struct host_fact {
    host_fact_kind kind = host_fact_kind::unknown;
    std::string text;
};

// host_script_facts.cpp: a literal, a function of the server, or something that is not known.
host_fact host_read_fact(host_script_reader &reader);
// Nothing when it cannot be told.
std::optional<bool> host_compare_facts(const host_fact &left, std::string_view comparison, const host_fact &right);

// host_script_functions.cpp: the function of this name, whose parenthesis is the current token; not known for any
// other.
host_fact host_ask_function(host_script_reader &reader, std::string_view name);
// The object kinds that a property such as IsUserTable asks about; empty when it asks about something else.
std::string_view host_property_kinds(std::string_view property);
bool host_is_kind(const host_script_object &object, std::string_view kind);

// host_script_queries.cpp: EXISTS, whose parenthesis is the current token.
std::optional<bool> host_read_exists(host_script_reader &reader);
