// What makes a name safe to stand in SQL text and in messages, and how any text is shown in a message.
#pragma once

#include "kt_scope.hpp"

// Reads one character of UTF-8 at *at and moves on: its code point, or -1 (moved by one byte) where it is malformed.
int32_t client_next_char(const char **at) noexcept;

// Whether a character changes the direction of writing, so that a text shows otherwise than it reads: marks,
// embeddings, overrides and isolates.
bool client_is_direction_char(int32_t code_point) noexcept;

// Whether a character is a control character: C0, DEL, C1, or one of Unicode's line and paragraph separators.
bool client_is_control_char(int32_t code_point) noexcept;

// What is wrong with a name that must not stand in SQL text, e.g. "a name with a double quote"; null for a safe one.
const char *client_find_name_flaw(const char *name) noexcept;

// Appends a text in double quotes for a message: characters that would disturb a terminal as <U+202E>, a long text
// cut.
void client_append_shown(KT_context *ctx, KT_string *message, const char *text) noexcept;

// A copy with ASCII letters in lower case, since SQLite compares names so; owned.
void client_fold_name(KT_context *ctx, const char *name, char **folded) noexcept;
