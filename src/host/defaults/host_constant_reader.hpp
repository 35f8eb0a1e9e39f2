// Reading a constant under way: what its values (host_constant) and its calls (host_constant_calls) share.
#pragma once

#include "defaults/host_constant.hpp"
#include "tsql/host_tsql_cursor.hpp"

using host_maybe_constant = std::optional<host_constant>;

struct host_constant_reader {
    host_tsql_cursor cursor;
    const host_constant_options &options;
    int depth = 0;
};

// Constants that + joins.
host_maybe_constant host_read_constant_sum(host_constant_reader &reader);
// A call, or a word that stands for one, such as CURRENT_TIMESTAMP.
host_maybe_constant host_read_constant_call(host_constant_reader &reader);
// CONVERT(type, value) and CAST(value AS type).
host_maybe_constant host_read_constant_conversion(host_constant_reader &reader);

// The clock so many units later: ",'+1 days'". Nothing when SQLite and the server may not agree.
host_maybe_constant host_shift_clock(const host_constant &clock, std::string_view unit, int64_t count);
