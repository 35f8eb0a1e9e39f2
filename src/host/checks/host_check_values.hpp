// The values that meet in a check, and whether SQLite treats them as the server does.
//
// Everything here that answers with a string says why not, and null when the two agree. What has to be written
// differently for that is changed.
#pragma once

#include "checks/host_check_changes.hpp"
#include "records/host_catalogue.hpp"

#include <string_view>

enum class host_value_kind {
    failed, // the check has been given up
    truth,
    integer, // smallint, int, and what is computed from whole numbers
    tinyint,
    bigint,
    bit,
    real8,
    real4,
    scaled, // decimal and money: a scaled integer in SQLite
    text,
    units, // the length of a text in UTF-16 units, which SQLite can only compare
    date,
    moment, // date and time, or time: a text in the form of its type
    guid,
    binary,
    opaque,         // only good for IS NULL
    whole_literal,  // of up to nine digits
    number_literal, // with a fraction, or of ten digits and more
    text_literal
};

// UPPER() and LOWER(), which stay part of the value until it is compared.
enum class host_case { as_is, upper, lower };

struct host_value {
    host_value_kind kind = host_value_kind::failed;
    const host_column *col = nullptr; // that says how it compares; set for columns, and texts and moments made of them
    std::string_view literal = {};    // set for literals; of a text with its quotes
    std::string_view place = {};      // in the definition, of a literal without sign; what is changed
    std::string_view extent = {};     // the same with the parentheses around it, and the sign
    int64_t scale = 0;                // of scaled
    int64_t digits = 0;               // that a whole or scaled number may have, at most
    host_case letters = host_case::as_is;
    std::string expr = {};    // of a text: in SQLite, without UPPER() and LOWER()
    bool is_signed = false;   // of a number literal: a sign is before it
    bool is_bytes = false;    // of units: two for each
    bool is_compared = false; // it has been changed already, for an earlier comparison
};

host_value host_column_value(const host_column &col);
host_value host_number_value(std::string_view number);
// What is computed from whole numbers.
host_value host_integer_value();

// A decimal number of so many digits is a double that no other such number is.
inline constexpr size_t host_double_digits = 15;

bool host_is_whole(host_value_kind kind);
bool host_is_number_literal(host_value_kind kind);
// The significant digits of a decimal number.
size_t host_count_digits(std::string_view number);
bool host_is_fixed_width(const host_column &col);
bool host_is_unicode(const host_column &col);
bool host_is_plain_ascii(std::string_view text);
// What a string literal says, with or without N in front.
std::string host_literal_text(std::string_view literal);
// A literal that is a whole number without sign: its value; -1 for every other.
int64_t host_small_number(const host_value &value);

// Two values that are compared. The left one may be compared more than once, in BETWEEN and IN.
const char *host_compare(host_check_changes &changes, host_value &left, host_value &right, std::string_view sign);
const char *host_compare_scaled(host_check_changes &changes, host_value &left, host_value &right);
const char *host_compare_texts(host_check_changes &changes, host_value &left, host_value &right, bool is_equality);
const char *host_compare_units(host_check_changes &changes, const host_value &left, const host_value &right,
                               std::string_view sign);
const char *host_compare_moments(host_check_changes &changes, host_value &left, host_value &right);

// The result of + - * / %; failed when it is refused.
host_value host_compute(host_check_changes &changes, host_value &left, host_value &right, char operation,
                        const char *&refusal);
host_value host_compute_scaled(host_check_changes &changes, host_value &left, host_value &right, char operation,
                               const char *&refusal);

// LIKE; the word is its place.
const char *host_match(host_check_changes &changes, const host_value &left, const host_value &pattern,
                       const host_value *escape, std::string_view word);
