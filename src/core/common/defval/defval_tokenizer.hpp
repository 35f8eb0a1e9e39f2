// The scanner for SQL text: splits it into tokens by SQLite's lexical rules, with SQLite's token numbers.
//
// SQLite offers no public call that tokenizes, so these are rules of its own, kept to the byte where they look odd:
// a vertical tab continues white space but does not start it, "/*" at the very end is a slash, and "!" takes the byte
// after it whatever that is. A "!" that ends the text thus counts the NUL, so callers that walk on past
// TK_ILLEGAL check where they are.
#pragma once

#include <cstdint>

enum tov_token : int32_t {
    TK_SEMI = 1,
    TK_LP = 22,
    TK_RP = 23,
    TK_COMMA = 25,
    TK_ID = 26,
    TK_NE = 75,
    TK_EQ = 76,
    TK_GT = 77,
    TK_LE = 78,
    TK_LT = 79,
    TK_GE = 80,
    TK_BITAND = 82,
    TK_BITOR = 83,
    TK_LSHIFT = 84,
    TK_RSHIFT = 85,
    TK_PLUS = 86,
    TK_MINUS = 87,
    TK_STAR = 88,
    TK_SLASH = 89,
    TK_REM = 90,
    TK_CONCAT = 91,
    TK_BITNOT = 93,
    TK_STRING = 94,
    TK_NULL = 98,
    TK_DOT = 118,
    TK_INTEGER = 129,
    TK_FLOAT = 130,
    TK_BLOB = 131,
    TK_REGISTER = 132,
    TK_VARIABLE = 133,
    TK_END_OF_FILE = 147,
    TK_ILLEGAL = 148,
    TK_SPACE = 149,
};

extern "C" {

// Classifies the token at the start of a text and returns its length in bytes: 0 at the terminating NUL only, where
// the code is TK_END_OF_FILE. A token of more bytes than the result can say is cut there. Never fails.
int32_t _tov_get_token(const char *text, int32_t *code) noexcept;

// The code of the keyword that the first n bytes of text spell, in any letter case; TK_ID when they are none.
int32_t _tov_find_keyword(const char *text, int32_t n) noexcept;

} // extern "C"
