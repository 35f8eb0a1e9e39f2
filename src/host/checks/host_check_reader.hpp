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
    host_check_reading reading;
};

void host_check_advance(host_check_reader &reader);
// Gives the check up, for the first reason met.
host_value host_check_refuse(host_check_reader &reader, const char *refusal, std::string_view detail = {});
host_value host_check_refuse_token(host_check_reader &reader);
bool host_check_failed(const host_value &value);
// Takes the token when it is of a kind, or a word, which is upper case.
bool host_check_take(host_check_reader &reader, host_token_kind kind);
bool host_check_take(host_check_reader &reader, std::string_view upper);

// An operand of a predicate: + and - bind loosest.
host_value host_read_check_sum(host_check_reader &reader);
// Predicates joined by AND and OR.
host_value host_read_check_condition(host_check_reader &reader);
