// Which of the scanner's rules a token's first byte calls for.
#pragma once

#include "defval/defval_tokenizer.hpp"

// What a first byte begins.
enum class tov_start : uint8_t {
    illegal,
    end,
    space,
    minus,
    slash,
    single, // one byte, whatever follows
    equal,
    less,
    greater,
    exclamation,
    bar,
    quote,
    dot,
    digit,
    bracket,
    question,
    hash,
    variable,
    x,
    identifier,
};

struct tov_start_tables {
    tov_start kind[256];
    uint8_t single_code[256];
};

consteval tov_start_tables tov_make_start_tables()
{
    tov_start_tables tables{};
    const auto set = [&](const char *bytes, tov_start kind) {
        for (; *bytes; bytes++)
            tables.kind[static_cast<unsigned char>(*bytes)] = kind;
    };
    const auto set_single = [&](char byte, tov_token code) {
        tables.kind[static_cast<unsigned char>(byte)] = tov_start::single;
        tables.single_code[static_cast<unsigned char>(byte)] = static_cast<uint8_t>(code);
    };
    tables.kind[0] = tov_start::end;
    set("\t\n\f\r ", tov_start::space);
    set("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_", tov_start::identifier);
    for (int byte = 0x80; byte <= 0xFF; byte++)
        tables.kind[byte] = tov_start::identifier;
    set("xX", tov_start::x);
    set("0123456789", tov_start::digit);
    set("-", tov_start::minus);
    set("/", tov_start::slash);
    set("=", tov_start::equal);
    set("<", tov_start::less);
    set(">", tov_start::greater);
    set("!", tov_start::exclamation);
    set("|", tov_start::bar);
    set("'\"`", tov_start::quote);
    set(".", tov_start::dot);
    set("[", tov_start::bracket);
    set("?", tov_start::question);
    set("#", tov_start::hash);
    set("$@:", tov_start::variable);
    set_single('(', TK_LP);
    set_single(')', TK_RP);
    set_single(';', TK_SEMI);
    set_single('+', TK_PLUS);
    set_single('*', TK_STAR);
    set_single('%', TK_REM);
    set_single(',', TK_COMMA);
    set_single('&', TK_BITAND);
    set_single('~', TK_BITNOT);
    return tables;
}

inline constexpr tov_start_tables tov_starts = tov_make_start_tables();
