// The kinds of violations: a stable code, how much it matters, and what it means in general.
#pragma once

#include "tov_check.h"

#include <string_view>

inline constexpr const char *client_error = "error";
inline constexpr const char *client_note = "note";

inline constexpr tov_client_violation_kind client_violation_kinds[] = {
    // The database and its tables.
    {"no-tables", client_error, "None of the schema's tables is in the database"},
    {"table-missing", client_note, "A table of the schema is not in the database"},
    {"not-a-table", client_error, "A view or virtual table has the name of a table, and its rows are not looked at"},
    {"table-unreadable", client_error, "The rows of a table could not be read"},
    {"column-required", client_error, "A table lacks a column that the server wants a value for"},
    {"column-missing", client_note, "A table lacks a column, in which the server puts NULL or a value of its own"},
    {"column-unknown", client_note, "A table has a column that the schema does not have"},
    {"not-checked", client_note, "A rule was not looked at, since a table or column that it needs is missing"},
    // Values.
    {"null", client_error, "NULL in a column that does not allow it"},
    {"storage-class", client_error, "A value is stored as something else than values of its type are"},
    {"out-of-range", client_error, "A number or moment lies beyond the limits of its type"},
    {"too-long", client_error, "A string or bytes are longer than the column is wide"},
    {"not-filled", client_error, "A value of fixed width does not fill it"},
    {"wrong-size", client_error, "A value does not have as many bytes as its type"},
    {"wrong-form", client_error, "A date or time is not written in the one form of its type"},
    {"no-such-day", client_error, "A date is not in the calendar"},
    {"not-in-code-page", client_error, "A string has a character that the column's code page lacks"},
    {"refused", client_error, "A value breaks another rule of its type"},
    // Rows.
    {"check", client_error, "A row breaks a check"},
    {"check-fails", client_error, "Evaluating a check fails for a row"},
    {"duplicate-key", client_error, "An earlier row has the same key, as the server compares"},
    {"no-such-row", client_error, "A reference leads to no row"},
};

// One of them, by its code. A code that the table lacks does not compile.
struct client_violation_code {
    consteval client_violation_code(const char *code) : kind(find(code))
    {
    }
    const tov_client_violation_kind *kind;

  private:
    static void a_code_that_is_not_in_the_table(); // not constexpr, so a call does not compile
    static consteval const tov_client_violation_kind *find(std::string_view code)
    {
        for (const tov_client_violation_kind &known : client_violation_kinds) {
            if (known.code == code)
                return &known;
        }
        a_code_that_is_not_in_the_table();
        return nullptr;
    }
};
