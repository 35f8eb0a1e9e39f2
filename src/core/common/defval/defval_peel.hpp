// What lies inside the parentheses of a host default: a literal, a call without arguments, or a hexadecimal constant.
//
// Results are views of the text that was read; a view without data is none. Text that is anything else is not a
// failure.
#pragma once

#include <string_view>

// The one literal of a text like ((0)), (N'abc') or (-1.5): without the parentheses and without the N of a national
// string, with its quotes, and with the spaces between a minus sign and its number. None when the parentheses do not
// balance or anything else is there.
std::string_view _tov_peel_literal(const char *host_text) noexcept;

// The function of a text like (getdate()) in `name`, which is none when the text holds nothing but parentheses.
// False, with `name` as it was, when the text is anything else.
bool _tov_peel_call(const char *host_text, std::string_view *name) noexcept;

// The digits of a text like (0x0A1B): an even number of them, at least two. None for anything else.
std::string_view _tov_peel_hex_digits(const char *host_text) noexcept;
