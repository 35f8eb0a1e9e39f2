// Defaults that the schema module does not translate, read a second time: constants that the server computes, and
// what its clocks make.
#pragma once

#include "tov_host.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

enum class host_constant_kind {
    null,
    number, // its digits, as they are written, with a sign
    text,
    binary, // 0x0A
    guid,   // a new one
    clock,  // a moment
    days,   // the days from 1900-01-01 to a moment
    part,   // the number that strftime() makes of a moment
    print   // the string that strftime() makes of a moment
};

struct host_constant {
    host_constant_kind kind = host_constant_kind::null;
    std::string text = {};      // of what is written, without quotes; of part and print the format
    std::string modifiers = {}; // of a clock, as SQLite's functions take them after 'now': ",'localtime'"
    bool is_local = false;      // it is the server's local time
    bool is_datetime = false;   // a clock of the old type, to which days can be added
    bool has_offset = false;    // it is a moment with the offset of its zone
    std::string_view type = {}; // that it was converted to; empty when it was not
    int64_t scale = -1;         // of that type, when it says one
    int64_t length = -1;        // of that type, when it says one
};

struct host_constant_options {
    bool is_utc = false;      // the server's local clock is read as UTC
    tov_host_list names = {}; // what functions such as db_name() give, as NAME=VALUE
};

// Nothing when the expression holds something else than constants and clocks.
std::optional<host_constant> host_read_constant(std::string_view expression, const host_constant_options &options);

// A whole number of up to nine digits, with a sign, that was not converted.
std::optional<int64_t> host_whole_number(const host_constant &constant);

// Whether a function is one of those that the caller may say the value of, such as db_name.
bool host_is_session_name(std::string_view name);
