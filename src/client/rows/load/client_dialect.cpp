// Every dialect that could be is tried on the first rows, and the one in which most values fit their columns is taken.
// Of equals the first counts, so longer terminators are tried before those that they begin with or end in.
#include "rows/load/client_dialect.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_dialect"

static constexpr const char *field_ends[] = {"+|", "||", "|~|", "~|~", "\t", "|", "~", "^", ";", ",", "\x01", "\x1F"};
static constexpr const char *row_ends[] = {"&|\r\n", "&|\n", "|\r\n", "\r\n", "\n", "\r", "\x1E"};
static constexpr int most_rows = 50;

namespace {
struct named_format {
    const char *name;
    client_format format;
};

// How well the first rows fit.
struct sample_score {
    int good = 0;    // rows of which every value fits
    int counted = 0; // rows with the right number of fields

    bool operator<(const sample_score &other) const noexcept
    {
        return good != other.good ? good < other.good : counted < other.counted;
    }
};

struct dialect_search {
    const client_row_tbl &tbl;
    std::string_view sample;
    bool is_all;
    client_converter &converter;
    client_dialect best;
    sample_score best_score;
};
} // namespace

static constexpr named_format formats[] = {
    {"bcp", client_format::bcp},       {"csv", client_format::csv},       {"json", client_format::json},
    {"native", client_format::native}, {"insert", client_format::insert},
};

bool client_find_format(std::string_view name, client_format &format) noexcept
{
    format = client_format::guess;
    if (name.empty() || name == "auto")
        return true;
    for (const named_format &known : formats) {
        if (name == known.name) {
            format = known.format;
            return true;
        }
    }
    return false;
}

std::string client_unescape_terminator(std::string_view typed)
{
    std::string result;
    for (size_t n = 0; n < typed.size(); n++) {
        if (typed[n] != '\\' || n + 1 == typed.size()) {
            result.push_back(typed[n]);
            continue;
        }
        n++;
        static constexpr std::string_view letters = "tnr0\\";
        static constexpr std::string_view meanings("\t\n\r\0\\", 5);
        const size_t place = letters.find(typed[n]);
        if (place == letters.npos)
            result.push_back('\\');
        result.push_back(place == letters.npos ? typed[n] : meanings[place]);
    }
    return result;
}

static std::string my_escaped(std::string_view text)
{
    std::string result;
    for (const char byte : text) {
        static constexpr std::string_view letters = "tnr0";
        static constexpr std::string_view meanings("\t\n\r\0", 4);
        const size_t place = meanings.find(byte);
        if (place != meanings.npos) {
            result += '\\';
            result += letters[place];
        } else if (static_cast<unsigned char>(byte) < 0x20) {
            static constexpr std::string_view digits = "0123456789ABCDEF";
            result += std::string("\\x") + digits[static_cast<unsigned char>(byte) >> 4] + digits[byte & 0x0F];
        } else {
            result += byte;
        }
    }
    return result;
}

std::string client_show_dialect(const client_dialect &dialect)
{
    std::string text;
    for (const named_format &known : formats) {
        if (known.format == dialect.format)
            text = known.name;
    }
    if (dialect.format == client_format::bcp || dialect.format == client_format::csv)
        text += ", fields end with \"" + my_escaped(dialect.field_end) + '"';
    if (dialect.format == client_format::bcp)
        text += ", rows with \"" + my_escaped(dialect.row_end) + '"';
    if (dialect.format == client_format::csv && dialect.has_header)
        text += ", names in the first line";
    if (dialect.format == client_format::csv && !dialect.null_word.empty())
        text += ", NULL is " + my_escaped(dialect.null_word);
    return text;
}

static bool my_may_hold_lines(client_base base) noexcept
{
    return client_is_text(base) || base == client_base::variant;
}

static std::unique_ptr<client_reader> my_make_native_reader(const client_row_tbl &tbl, const client_dialect &dialect)
{
    std::vector<client_server_type> types;
    for (const size_t col : dialect.cols)
        types.push_back(tbl.cols[col].server_type);
    return client_make_native_reader(types);
}

std::unique_ptr<client_reader> client_make_reader(const client_row_tbl &tbl, const client_dialect &dialect)
{
    if (dialect.format == client_format::insert)
        return client_make_insert_reader();
    if (dialect.format == client_format::native)
        return my_make_native_reader(tbl, dialect);
    client_bcp_form form{dialect.field_end, dialect.row_end, dialect.cols.size(), {}};
    for (const size_t col : dialect.cols)
        form.holds_lines.push_back(my_may_hold_lines(tbl.cols[col].type.base));
    return client_make_bcp_reader(std::move(form));
}

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

static sample_score my_score(dialect_search &search, const client_dialect &dialect)
{
    const std::unique_ptr<client_reader> reader = client_make_reader(search.tbl, dialect);
    std::string_view rest = search.sample;
    client_row row;
    sample_score score;
    for (int n = 0; n < most_rows; n++) {
        const client_step step = reader->read(rest, search.is_all, row);
        if (step == client_step::more || step == client_step::end)
            break;
        rest.remove_prefix(row.size);
        if (step == client_step::skip || row.reject != client_reject::none)
            continue;
        score.counted++;
        score.good += my_fits(search.tbl, dialect, search.converter, row) ? 1 : 0;
    }
    return score;
}

static void my_try(dialect_search &search, const client_dialect &dialect)
{
    const sample_score score = my_score(search, dialect);
    if (search.best_score < score) {
        search.best = dialect;
        search.best_score = score;
    }
}

// The columns that a file may have: all of the server's, those that are not computed, those that SQLite has.
static std::vector<std::vector<size_t>> my_column_sets(const client_row_tbl &tbl)
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
static void my_try_native(dialect_search &search)
{
    for (std::vector<size_t> &cols : my_column_sets(search.tbl)) {
        client_dialect dialect;
        dialect.format = client_format::native;
        dialect.cols = cols;
        my_try(search, dialect);
    }
}

static void my_try_bcp(dialect_search &search, const client_dialect_wish &wish)
{
    for (const std::vector<size_t> &cols : my_column_sets(search.tbl)) {
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
                my_try(search, dialect);
            }
        }
    }
}

void client_guess_dialect(KT_context *ctx, const client_row_tbl &tbl, const client_dialect_wish &wish,
                          std::string_view sample, bool is_all, client_converter &converter, client_dialect &dialect)
{
    dialect_search search{tbl, sample, is_all, converter, {}, {}};
    if (wish.format == client_format::guess || wish.format == client_format::bcp)
        my_try_bcp(search, wish);
    if (wish.format == client_format::native || (wish.format == client_format::guess && search.best_score.good == 0))
        my_try_native(search);
    if (search.best.cols.empty() && !wish.field_end.empty() && !wish.row_end.empty()) {
        search.best.field_end = wish.field_end;
        search.best.row_end = wish.row_end;
        search.best.cols = my_column_sets(tbl).front();
    }
    if (search.best.cols.empty())
        KT_FAIL(KT_ERR_BAD_VALUE,
                "no dialect is known in which the first rows have the table's %u columns; say which it is",
                static_cast<unsigned>(tbl.cols.size()));
    dialect = search.best;
}

client_dialect client_native_dialect(const client_row_tbl &tbl)
{
    client_dialect dialect;
    dialect.format = client_format::native;
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        if (!tbl.cols[n].computed)
            dialect.cols.push_back(n);
    }
    return dialect;
}
