// How keys are compared: as the server does it, as far as SQLite can without its rules for every alphabet.
#pragma once

#include "verify/client_verify.hpp"

// A value as the key of a column compares it: by the server's collation where SQLite knows that (libtov_sqlite); else
// without trailing blanks, which never count on the server, and in the letter case of ASCII where case does not count.
std::string client_key_value(const client_verify &run, const client_verify_col &col, const std::string &value);

// The columns of a list of ids. False when the database lacks one, which is reported: what names the key.
bool client_find_key_cols(const client_verify_tbl &tbl, const std::vector<std::string> &ids,
                          std::vector<const client_verify_col *> &cols);

// Names joined with ", "; literals of results likewise, from a column on.
std::string client_joined_names(const std::vector<const client_verify_col *> &cols);
std::string client_joined_results(const client_verify &run, sqlite3_stmt *statement, int first, size_t count);

void client_read_ids(KT_context *ctx, const KT_vhash *key, const char *member, std::vector<std::string> &ids);
