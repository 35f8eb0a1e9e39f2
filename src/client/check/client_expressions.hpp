// Whether an expression keeps to the place it is written in, judged by its tokens alone.
#pragma once

enum class client_shape {
    // After DEFAULT: a literal or word, with a sign or without, or one group in parentheses.
    default_value,
    // After CHECK: one group in parentheses.
    group,
    // Inside parentheses: anything that leaves them closed.
    inner,
};

// What would let an expression out of its place, e.g. "a \";\" outside of quotes"; null for one that keeps to it.
// Looks for a ";" outside of quotes, parentheses that do not match, quotes and comments that do not end, and what the
// shape does not allow; besides for characters that have no business in an expression, and for lines that the sqlite3
// shell would take for the end of the statement.
const char *client_find_expression_flaw(const char *expression, client_shape shape) noexcept;
