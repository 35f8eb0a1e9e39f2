// How the rows of a file are written: said by the caller, or guessed from the first of them.
#pragma once

#include "kt_owned.hpp"
#include "rows/convert/client_convert.hpp"
#include "rows/read/client_reader.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <functional>

enum class client_format : uint8_t { guess, bcp, csv, json, native, insert };

// What the caller says; an empty text says nothing.
struct client_dialect_wish {
    client_format format = client_format::guess;
    std::string field_end;
    std::string row_end;
    std::string null_word;
    int header = -1; // whether CSV begins with a line of names; -1 to find out
};

struct client_dialect {
    client_format format = client_format::bcp;
    std::string field_end;
    std::string row_end;
    std::string null_word;
    bool has_header = false;
    std::vector<size_t> cols; // by field: the table's column
};

// The format that a name stands for, guess for "" and "auto"; false for a name that is not known.
bool client_find_format(std::string_view name, client_format &format) noexcept;

// Turns \t, \n, \r, \0 and \\ of a text that a person typed into the characters that they stand for.
std::string client_unescape_terminator(std::string_view typed);

// Finds the dialect that makes the most of the beginning of a file; is_all says that it is the whole file.
void client_guess_dialect(KT_context *ctx, const client_row_tbl &tbl, const client_dialect_wish &wish,
                          std::string_view sample, bool is_all, client_converter &converter, client_dialect &dialect);

std::unique_ptr<client_reader> client_make_reader(const client_row_tbl &tbl, const client_dialect &dialect);

// For a person: bcp, fields end with "|", rows with "\n".
std::string client_show_dialect(const client_dialect &dialect);

// The one dialect of row parts of packages.
client_dialect client_native_dialect(const client_row_tbl &tbl);
