// Trying dialects on the first rows of a file.
#pragma once

#include "rows/load/client_dialect.hpp"

// How well the first rows fit.
struct client_sample_score {
    int good = 0;     // rows of which every value fits
    int counted = 0;  // rows with the right number of fields
    int fulls = 0;    // fractions that are nothing but zeros
    int shorts = 0;   // numbers and times that could have a fraction and do not
    int nothings = 0; // rows that are refused because of a word that may mean NULL

    bool operator<(const client_sample_score &other) const noexcept
    {
        return good != other.good ? good < other.good : counted < other.counted;
    }
};

struct client_dialect_search {
    const client_row_tbl &tbl;
    const client_dialect_wish &wish;
    std::string_view sample;
    bool is_all;
    client_converter &converter;
    client_dialect best;
    client_sample_score best_score;
};

client_sample_score client_score_dialect(client_dialect_search &search, const client_dialect &dialect);

// Takes a dialect in the place of the best so far, if it fits better.
void client_try_dialect(client_dialect_search &search, const client_dialect &dialect);

// The columns that a file may have: all of the server's, those that are not computed, those that SQLite has.
std::vector<std::vector<size_t>> client_list_column_sets(const client_row_tbl &tbl);

// Finds the separator, the names and the word for NULL of CSV. Fails where the first line has names of which the table
// lacks some.
void client_try_csv(KT_context *ctx, client_dialect_search &search);
