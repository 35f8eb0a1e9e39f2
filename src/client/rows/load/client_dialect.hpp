// How the rows of a file are written: said by the caller, or guessed from the first of them.
#pragma once

#include "kt_owned.hpp"
#include "rows/convert/client_convert.hpp"
#include "rows/read/client_reader.hpp"
#include "rows/table/client_row_tbl.hpp"

#include <optional>

enum class client_format : uint8_t { guess, bcp, csv, json, native, insert };

// What the caller says; what is empty says nothing.
struct client_dialect_wish {
    client_format format = client_format::guess;
    std::string field_end;
    std::string row_end;
    std::optional<std::string> null_word;
    std::optional<bool> has_header; // whether CSV begins with a line of names
};

struct client_dialect {
    client_format format = client_format::bcp;
    std::string field_end;
    std::string row_end;
    std::string null_word;
    bool null_is_guessed = false;
    bool has_header = false;
    std::string header;       // the first line of CSV, if it has names
    bool is_short = false;    // of bcp: a fraction of nothing but zeros is left out
    bool is_utf_16 = false;   //
    std::vector<size_t> cols; // by field: the table's column
};

// The format that a name stands for, guess for "" and "auto"; false for a name that is not known.
bool client_find_format(std::string_view name, client_format &format) noexcept;

// Turns \t, \n, \r, \0, \\ and \x1F of a text that a person typed into the characters that they stand for.
std::string client_unescape_terminator(std::string_view typed);

// Finds the dialect that makes the most of the beginning of a file; is_all says that it is the whole file.
void client_guess_dialect(KT_context *ctx, const client_row_tbl &tbl, const client_dialect_wish &wish,
                          std::string_view sample, bool is_all, client_converter &converter, client_dialect &dialect);

// A reader for the rows of a file, or of the rest of one.
std::unique_ptr<client_reader> client_make_reader(const client_row_tbl &tbl, const client_dialect &dialect,
                                                  bool at_start);

// For a person: bcp, fields end with "|", rows with "\n".
std::string client_show_dialect(const client_dialect &dialect);

// For the record of a load: how a bcp file is written that has rows like these. Empty for other files.
std::string client_pack_dialect(const client_dialect &dialect);
bool client_unpack_dialect(std::string_view packed, client_dialect &dialect);

// The one dialect of row parts of packages.
client_dialect client_native_dialect(const client_row_tbl &tbl);
