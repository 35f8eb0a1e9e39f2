#include "rows/convert/client_value.hpp"

namespace {
struct reject_text {
    const char *word;
    const char *meaning;
};
} // namespace

// In the order of client_reject.
static constexpr reject_text reject_texts[] = {
    {"none", ""},
    {"null-not-allowed", "the column does not take NULL"},
    {"not-a-number", "the value is not a number that the column's type can be read from"},
    {"not-a-bit", "a bit is 0 or 1"},
    {"not-a-date", "the value is not a date"},
    {"not-a-time", "the value is not a time of day"},
    {"not-a-datetime", "the value is not a date and time"},
    {"not-a-guid", "the value is not a uniqueidentifier"},
    {"not-binary", "the value is not binary data"},
    {"not-utf-8", "the text is not UTF-8; the encoding of the file may be another one"},
    {"half-surrogate", "the text holds half a surrogate pair"},
    {"out-of-range", "the value is beyond the limits of the column's type"},
    {"too-precise", "the value has more fraction digits than the column"},
    {"too-long", "the value is longer than the column"},
    {"not-in-code-page", "the text has a character that the column's code page lacks"},
    {"time-of-day", "the value has a time of day, which a date does not hold"},
    {"needs-shortening", "the value would have to be cut to three fraction digits"},
    {"wrong-form", "a value written in this form does not go into the column's type"},
    {"server-value", "only the server can compute this value"},
    {"no-value", "the value is missing, and the column has no default here"},
    {"too-few-fields", "the row has too few fields"},
    {"too-many-fields", "the row has too many fields, or a field holds the field terminator"},
    {"cut-row", "the file ends inside the row"},
    {"bad-row", "the row cannot be read"},
    {"nested-value", "an object or array is not a value of a column"},
    {"null-or-text", "the word NULL may be a text or mean NULL here; say which"},
    {"unknown-column", "the table has no column of this name"},
    {"unknown-table", "the schema has no table of this name"},
    {"duplicate-key", "another row has the same key"},
    {"check-violated", "a check of the table refuses the row"},
    {"no-parent", "the row refers to a row that is not there"},
    {"not-accepted", "the database does not accept the row"},
};
static_assert(sizeof reject_texts / sizeof *reject_texts == static_cast<size_t>(client_reject::not_accepted) + 1);

const char *client_reject_word(client_reject reject) noexcept
{
    return reject_texts[static_cast<size_t>(reject)].word;
}

const char *client_reject_meaning(client_reject reject) noexcept
{
    return reject_texts[static_cast<size_t>(reject)].meaning;
}
