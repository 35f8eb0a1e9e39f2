// CSV looks like bcp's character form as long as no field is in quotes. Where both fit, commas and semicolons mean CSV,
// and so does a line of names at the beginning; anything else is what bcp writes.
#include "rows/load/client_dialect_search.hpp"

#include "kt_string.h"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_dialect_csv"

static constexpr const char *separators[] = {",", ";", "\t", "|"};

namespace {
// The first line of a file.
struct csv_line {
    std::vector<std::string> fields;
    size_t size = 0;
};

struct csv_search {
    client_dialect best;
    client_sample_score best_score;
    std::string unknown; // a name in a line of names that the table lacks
};
} // namespace

// Blank lines before the first row are passed over with it.
static csv_line my_first_line(const client_dialect_search &search, const std::string &field_end)
{
    const std::unique_ptr<client_reader> reader = client_make_csv_reader({field_end, "", false, false, 0});
    csv_line line;
    client_row row;
    client_step step = client_step::skip;
    while (step == client_step::skip) {
        step = reader->read(search.sample.substr(line.size), search.is_all, row);
        line.size += step == client_step::row || step == client_step::skip ? row.size : 0;
    }
    if (step != client_step::row || row.reject == client_reject::bad_row)
        return {};
    for (const client_field &field : row.fields)
        line.fields.emplace_back(field.bytes);
    return line;
}

// Which columns the names are of; unknown is the first name of none, and how many are known is the result.
static size_t my_match_names(const client_row_tbl &tbl, const csv_line &line, std::vector<size_t> &cols,
                             std::string &unknown)
{
    size_t known = 0;
    for (const std::string &name : line.fields) {
        const size_t col = client_find_row_col(tbl, name);
        const bool is_new = std::find(cols.begin(), cols.end(), col) == cols.end();
        if (col < tbl.cols.size() && is_new)
            known++;
        else if (unknown.empty())
            unknown = name;
        cols.push_back(col);
    }
    return known;
}

static void my_try_null_words(client_dialect_search &search, client_dialect dialect, csv_search &csv)
{
    std::vector<std::string> words = {"", "NULL"};
    dialect.null_is_guessed = !search.wish.null_word;
    if (search.wish.null_word)
        words = {*search.wish.null_word};
    for (const std::string &word : words) {
        dialect.null_word = word;
        const client_sample_score score = client_score_dialect(search, dialect);
        if (csv.best.cols.empty() || csv.best_score < score) {
            csv.best = dialect;
            csv.best_score = score;
        }
    }
}

static void my_try_separator(client_dialect_search &search, const std::string &field_end, csv_search &csv)
{
    const csv_line line = my_first_line(search, field_end);
    client_dialect dialect;
    std::string unknown;
    dialect.format = client_format::csv;
    dialect.field_end = field_end;
    const size_t known = my_match_names(search.tbl, line, dialect.cols, unknown);
    if (known > 0 && known * 2 >= line.fields.size() && search.wish.has_header.value_or(true)) {
        if (csv.best.has_header)
            return;
        csv.best = {}; // whatever fitted without names
        csv.best_score = {};
        dialect.has_header = true;
        dialect.header = search.sample.substr(0, line.size);
        csv.unknown = unknown;
        if (unknown.empty())
            my_try_null_words(search, std::move(dialect), csv);
        return;
    }
    for (std::vector<size_t> &cols : client_list_column_sets(search.tbl)) {
        if (cols.size() != line.fields.size() || search.wish.has_header.value_or(false) || csv.best.has_header)
            continue;
        dialect.cols = std::move(cols);
        my_try_null_words(search, dialect, csv);
    }
}

// Whether a field begins with a quote.
static bool my_has_quotes(std::string_view sample, const std::string &field_end)
{
    return sample.starts_with('"') || sample.find("\n\"") != sample.npos || sample.find(field_end + '"') != sample.npos;
}

// bcp's form wins unless there is a reason: what it would read as data may be CSV's quotes.
static bool my_wins(const client_dialect_search &search, const csv_search &csv)
{
    if (csv.best.cols.empty())
        return false;
    if (search.wish.format == client_format::csv || csv.best.has_header)
        return true;
    const bool has_quotes = my_has_quotes(search.sample, csv.best.field_end);
    const bool is_common = csv.best.field_end == "," || csv.best.field_end == ";";
    if (!is_common)
        return has_quotes && csv.best_score.good > search.best_score.good;
    return has_quotes || csv.best_score.good + csv.best_score.nothings >= search.best_score.good;
}

void client_try_csv(KT_context *ctx, client_dialect_search &search)
{
    csv_search csv;
    for (const char *separator : separators) {
        const bool is_said = !search.wish.field_end.empty();
        my_try_separator(search, is_said ? search.wish.field_end : separator, csv);
        if (is_said)
            break;
    }
    if (!csv.unknown.empty())
        KT_FAIL(KT_ERR_BAD_VALUE, "the first line names a column \"%s\", which the table does not have",
                csv.unknown.c_str());
    if (search.wish.format == client_format::csv && search.wish.has_header.value_or(false) && !csv.best.has_header)
        KT_FAIL(KT_ERR_BAD_VALUE, "the first line does not have names of the table's columns");
    if (!my_wins(search, csv))
        return;
    search.best = csv.best;
    search.best_score = csv.best_score;
}
