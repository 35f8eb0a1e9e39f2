// A value of a row: as a file has it (a field), and as the database keeps it (a value).
#pragma once

#include "rows/convert/client_server_type.hpp"

#include <cstdint>
#include <string>
#include <string_view>

// How the bytes of a field are to be read.
enum class client_form : uint8_t {
    absent,  // not given: the column's default
    null,    //
    text,    // characters, UTF-8
    literal, // characters in quotes of a script: dates may be written as SET DATEFORMAT says
    number,  // a number without quotes: a sign, digits, a point, an exponent
    boolean, // true or false, as JSON writes bits
    hex,     // pairs of hexadecimal digits, with or without 0x
    base64,  // bytes as JSON writes them
    native,  // the bytes of a native row part, without their length
    server,  // an expression that only the server could compute
};

inline bool client_is_digit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

struct client_field {
    client_form form = client_form::null;
    std::string_view bytes;
    client_base cast = client_base::variant; // the type whose value it is, when a script says so; else variant
};

enum class client_storage : uint8_t { null, integer, real, text, blob };

struct client_value {
    client_storage storage = client_storage::null;
    bool shortened = false; // fraction digits were cut, which the type's check could not read
    int64_t integer = 0;    //
    double real = 0;        //
    std::string_view bytes; // of a text or blob: of the field, or of the scratch
};

// Why a field or a row is refused. The words are stable (client_reject_word), the numbers are not.
enum class client_reject : uint8_t {
    none,
    null_not_allowed,
    not_a_number,
    not_a_bit,
    not_a_date,
    not_a_time,
    not_a_datetime,
    not_a_guid,
    not_binary,
    not_utf_8,
    half_surrogate,
    out_of_range,
    too_precise,
    too_long,
    not_in_page,
    time_of_day,
    needs_shortening,
    wrong_form,
    server_value,
    no_value,
    too_few_fields,
    too_many_fields,
    cut_row,
    bad_row,
    nested_value,
    null_or_text,
    unknown_column,
    unknown_table,
    duplicate_key,
    check_violated,
    no_parent,
    not_accepted,
};

// The code of a reject, e.g. "out-of-range", and what it means, for a person.
const char *client_reject_word(client_reject reject) noexcept;
const char *client_reject_meaning(client_reject reject) noexcept;

// Room for a value whose text is made on the way; reused from value to value.
struct client_room {
    char small[64];
    std::string large;
    std::string decoded;
};
