// Reads an expression and writes it as the server does.
//
// The text grows in one string: an operand that turns out to need parentheses gets them where it begins. Parentheses
// that the author wrote stay round arithmetic, and go where they change nothing round conditions, as on the server.
// Numbers are always in parentheses there.
#pragma once

#include "tsql/host_tsql_cursor.hpp"

// How tightly the last operator of an operand binds.
enum class host_binding { atom, sign, product, sum, comparison, negation, conjunction, disjunction };

struct host_operand {
    size_t start = 0; // in the text
    host_binding binding = host_binding::atom;
    bool grouped = false; // the author put parentheses round it, which the text does not have yet
};

inline constexpr int max_expression_depth = 150;

class host_speller {
  public:
    explicit host_speller(host_tsql_cursor &cursor) : cursor_(cursor)
    {
    }
    host_operand read_condition();
    host_operand read_sum();
    // What was read, in parentheses.
    std::string take_text()
    {
        text_ += ')';
        return std::move(text_);
    }

  private:
    void wrap(const host_operand &operand);
    void wrap_grouped(const host_operand &operand);
    void part_signs(const host_operand &operand);
    host_operand add_atom(size_t start, std::string_view text);
    host_operand read_and();
    host_operand read_not();
    host_operand read_predicate();
    host_operand read_comparison(host_operand left);
    host_operand read_in(const host_operand &left);
    host_operand read_between(const host_operand &left);
    host_operand read_like(const host_operand &left);
    host_operand read_product();
    host_operand read_sign();
    host_operand read_postfix();
    host_operand read_primary();
    host_operand read_one();
    host_operand read_group();
    host_operand read_case();
    host_operand read_cast();
    host_operand read_convert();
    host_operand read_iif();
    host_operand read_next_value();
    host_operand read_name_or_call();
    host_operand read_word();
    void read_value();
    void read_truth();
    void read_arguments(std::string_view function);
    void add_type();

    host_tsql_cursor &cursor_;
    std::string text_ = "(";
    int depth_ = 0;
};
