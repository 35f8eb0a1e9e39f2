// The values that meet in a check, and whether SQLite treats them as the server does.
//
// Everything here answers with the reason why not, or null when the two agree.
#pragma once

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
    date,
    moment, // date and time, or time: one moment has several texts
    guid,
    opaque,         // only good for IS NULL
    whole_literal,  // of up to nine digits
    number_literal, // with a fraction, or of ten digits and more
    text_literal
};

struct host_value {
    host_value_kind kind = host_value_kind::failed;
    const host_column *col = nullptr; // set when the value is a column and nothing else
    std::string_view literal;         // set for literals; of a text with its quotes
};

host_value host_column_value(const host_column &col);
host_value host_number_value(std::string_view number);

const char *host_refuse_comparison(const host_value &left, const host_value &right, bool is_equality);
const char *host_refuse_arithmetic(const host_value &left, const host_value &right, char operation);
const char *host_refuse_like(const host_value &left, const host_value &pattern);
