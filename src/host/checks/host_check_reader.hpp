// Reading a check under way: what its operands (host_check_operands) and its conditions (host_check_grammar) share.
#pragma once

#include "checks/host_check_grammar.hpp"
#include "checks/host_check_tokens.hpp"
#include "checks/host_check_values.hpp"

struct host_check_reader {
    const host_table &table;
    std::string_view rest;
    host_token token;
    int depth = 0;
    host_check_reading reading = {};
    const char *last_end = nullptr; // of the token before the current one
};

// The source from a token, or the value that began with it, up to and without the current token.
std::string_view host_check_since(const host_check_reader &reader, const char *begin);
// Where a token begins, with its bracket.
const char *host_check_begin(const host_token &token);

void host_check_advance(host_check_reader &reader);
// Gives the check up, for the first reason met.
host_value host_check_refuse(host_check_reader &reader, const char *refusal, std::string_view detail = {});
host_value host_check_refuse_token(host_check_reader &reader);
bool host_check_failed(const host_value &value);
// Takes the token when it is of a kind, or a word, which is upper case.
bool host_check_take(host_check_reader &reader, host_token_kind wanted);
bool host_check_take(host_check_reader &reader, std::string_view upper);

// The column of a name token, which is the current one.
host_value host_read_check_column(host_check_reader &reader);
// A call, a word that is one, or CASE.
host_value host_read_check_call(host_check_reader &reader);
host_value host_read_check_case(host_check_reader &reader);
// A value that is a whole number of up to 32 bits, or a decimal where these are good too.
host_value host_check_as_whole_number(host_check_reader &reader, const host_value &value);

// An operand of a predicate: + and - bind loosest.
host_value host_read_check_sum(host_check_reader &reader);
// Predicates joined by AND and OR.
host_value host_read_check_condition(host_check_reader &reader);
