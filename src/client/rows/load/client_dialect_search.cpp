// Every dialect that could be is tried on the first rows, and the one in which most values fit their columns is taken.
// Of equals the first counts, so longer terminators are tried before those that they begin with or end in.
#include "rows/load/client_dialect_search.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_dialect_search"

static constexpr const char *field_ends[] = {"+|", "||", "|~|", "~|~", "\t", "|", "~", "^", ";", ",", "\x01", "\x1F"};
static constexpr const char *row_ends[] = {"&|\r\n", "&|\n", "|\r\n", "\r\n", "\n", "\r", "\x1E"};
static constexpr int most_rows = 50;

static bool my_fits(const client_row_tbl &tbl, const client_dialect &dialect, client_converter &converter,
                    const client_row &row)
{
    for (size_t n = 0; n < row.fields.size(); n++) {
        const client_row_col &col = tbl.cols[dialect.cols[n]];
        client_value value;
        if (!col.stored || row.fields[n].form == client_form::absent)
            continue;
        if (client_convert(converter, col.type, row.fields[n], value) != client_reject::none)
            return false;
    }
    return true;
}

static bool my_has_short_form(client_base base) noexcept
{
    return base == client_base::money || base == client_base::smallmoney || base == client_base::real ||
           base == client_base::floating || base == client_base::datetime || base == client_base::datetime2;
}

static void my_look_at_fractions(const client_row_tbl &tbl, const client_dialect &dialect, const client_row &row,
                                 client_sample_score &score)
{
    for (size_t n = 0; n < row.fields.size(); n++) {
        const std::string_view text = row.fields[n].bytes;
        if (text.empty() || !my_has_short_form(tbl.cols[dialect.cols[n]].type.base))
            continue;
        const size_t point = text.find('.');
        if (point == text.npos)
            score.shorts++;
        else if (text.find_first_not_of('0', point + 1) == text.npos)
            score.fulls++;
    }
}

client_sample_score client_score_dialect(client_dialect_search &search, const client_dialect &dialect)
{
    const std::unique_ptr<client_reader> reader = client_make_reader(search.tbl, dialect, true);
    std::string_view rest = search.sample;
    client_row row;
    client_sample_score score;
    for (int n = 0; n < most_rows; n++) {
        const client_step step = reader->read(rest, search.is_all, row);
        if (step == client_step::more || step == client_step::end)
            break;
        rest.remove_prefix(row.size);
        if (step == client_step::row)
            score.nothings += row.reject == client_reject::null_or_text ? 1 : 0;
        if (step == client_step::skip || row.reject != client_reject::none)
            continue;
        score.counted++;
        score.good += my_fits(search.tbl, dialect, search.converter, row) ? 1 : 0;
        if (dialect.format == client_format::bcp)
            my_look_at_fractions(search.tbl, dialect, row, score);
    }
    return score;
}

void client_try_dialect(client_dialect_search &search, const client_dialect &dialect)
{
    const client_sample_score score = client_score_dialect(search, dialect);
    if (search.best_score < score) {
        search.best = dialect;
        search.best_score = score;
    }
}

std::vector<std::vector<size_t>> client_list_column_sets(const client_row_tbl &tbl)
{
    std::vector<std::vector<size_t>> sets(3);
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        sets[0].push_back(n);
        if (!tbl.cols[n].computed)
            sets[1].push_back(n);
        if (tbl.cols[n].stored)
            sets[2].push_back(n);
    }
    sets.erase(std::unique(sets.begin(), sets.end()), sets.end());
    return sets;
}

// Rows of the native form have what bcp writes of a table: no computed columns in packages, all of them by bcp itself.
static void my_try_native(client_dialect_search &search)
{
    for (std::vector<size_t> &cols : client_list_column_sets(search.tbl)) {
        client_dialect dialect;
        dialect.format = client_format::native;
        dialect.cols = cols;
        client_try_dialect(search, dialect);
    }
}

static void my_try_bcp(client_dialect_search &search)
{
    const client_dialect_wish &wish = search.wish;
    for (const std::vector<size_t> &cols : client_list_column_sets(search.tbl)) {
        for (const char *field_end : field_ends) {
            if (!wish.field_end.empty() && field_end != field_ends[0])
                break;
            for (const char *row_end : row_ends) {
                if (!wish.row_end.empty() && row_end != row_ends[0])
                    break;
                client_dialect dialect;
                dialect.field_end = wish.field_end.empty() ? field_end : wish.field_end;
                dialect.row_end = wish.row_end.empty() ? row_end : wish.row_end;
                dialect.cols = cols;
                client_try_dialect(search, dialect);
            }
        }
    }
    search.best.is_short = search.best_score.shorts > 0 && search.best_score.fulls == 0;
}

static client_dialect my_json_dialect(const client_row_tbl &tbl)
{
    client_dialect dialect;
    dialect.format = client_format::json;
    dialect.cols = client_list_column_sets(tbl).front();
    return dialect;
}

static bool my_may_be_json(std::string_view sample)
{
    const size_t first = sample.find_first_not_of(" \t\r\n");
    return first != sample.npos && (sample[first] == '{' || sample[first] == '[');
}

static void my_search(KT_context *ctx, client_dialect_search &search)
{
    const client_format wanted = search.wish.format;
    const bool any = wanted == client_format::guess;
    if (wanted == client_format::json || (any && my_may_be_json(search.sample)))
        client_try_dialect(search, my_json_dialect(search.tbl));
    if (wanted == client_format::bcp || (any && search.best_score.good == 0))
        my_try_bcp(search);
    const bool is_text = search.best.format == client_format::bcp;
    if (wanted == client_format::csv || (any && is_text && search.wish.row_end.empty()))
        KT_TRY(client_try_csv(ctx, search));
    if (wanted == client_format::native || (any && search.best_score.good == 0))
        my_try_native(search);
}

// What is taken where no row fits: the format that was asked for, or bcp with the terminators that were, so that all
// rows are refused one by one.
static void my_take_wish(client_dialect_search &search)
{
    const client_dialect_wish &wish = search.wish;
    const bool is_json = wish.format == client_format::json;
    const bool has_ends = !wish.field_end.empty() && !wish.row_end.empty();
    if (!search.best.cols.empty() || (!is_json && !has_ends && !search.sample.empty()))
        return;
    search.best = is_json ? my_json_dialect(search.tbl) : client_dialect();
    search.best.cols = client_list_column_sets(search.tbl).front();
    search.best.field_end = wish.field_end.empty() ? "\t" : wish.field_end;
    search.best.row_end = wish.row_end.empty() ? "\n" : wish.row_end;
}

void client_guess_dialect(KT_context *ctx, const client_row_tbl &tbl, const client_dialect_wish &wish,
                          std::string_view sample, bool is_all, client_converter &converter, client_dialect &dialect)
{
    client_dialect_search search{tbl, wish, sample, is_all, converter, {}, {}};
    KT_TRY(my_search(ctx, search));
    my_take_wish(search);
    if (search.best.cols.empty())
        KT_FAIL(KT_ERR_BAD_VALUE,
                "no dialect is known in which the first rows have the table's %u columns; say which it is",
                static_cast<unsigned>(tbl.cols.size()));
    dialect = search.best;
}
