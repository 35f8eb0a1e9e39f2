#include "rows/load/client_dialect.hpp"

#include <charconv>

namespace {
struct named_format {
    const char *name;
    client_format format;
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

static constexpr std::string_view escape_letters = "tnr0\\";
static constexpr std::string_view escape_meanings("\t\n\r\0\\", 5);

std::string client_unescape_terminator(std::string_view typed)
{
    std::string result;
    for (size_t n = 0; n < typed.size(); n++) {
        if (typed[n] != '\\' || n + 1 == typed.size()) {
            result.push_back(typed[n]);
            continue;
        }
        n++;
        unsigned byte = 0;
        const char *digits = typed.data() + n + 1;
        const size_t place = escape_letters.find(typed[n]);
        if (place != escape_letters.npos) {
            result.push_back(escape_meanings[place]);
        } else if (typed[n] == 'x' && typed.size() - n > 2 &&
                   std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            result.push_back(static_cast<char>(byte));
            n += 2;
        } else {
            result.append({'\\', typed[n]});
        }
    }
    return result;
}

static std::string my_escaped(std::string_view text)
{
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char byte : text) {
        const auto bits = static_cast<unsigned char>(byte);
        const size_t place = escape_meanings.find(byte);
        if (place != escape_meanings.npos)
            result.append({'\\', escape_letters[place]});
        else if (bits < 0x20)
            result.append({'\\', 'x', digits[bits >> 4], digits[bits & 0x0F]});
        else
            result.push_back(byte);
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

std::string client_pack_dialect(const client_dialect &dialect)
{
    if (dialect.format != client_format::bcp)
        return "";
    return std::string(dialect.is_utf_16 ? "utf-16le" : "utf-8") + (dialect.is_short ? "\tshort" : "\tfull") + "\t" +
           my_escaped(dialect.field_end) + "\t" + my_escaped(dialect.row_end);
}

bool client_unpack_dialect(std::string_view packed, client_dialect &dialect)
{
    std::string_view parts[4];
    for (std::string_view &part : parts) {
        if (packed.empty())
            return false;
        const size_t end = std::min(packed.find('\t'), packed.size());
        part = packed.substr(0, end);
        packed.remove_prefix(std::min(end + 1, packed.size()));
    }
    dialect.is_utf_16 = parts[0] == "utf-16le";
    dialect.is_short = parts[1] == "short";
    dialect.field_end = client_unescape_terminator(parts[2]);
    dialect.row_end = client_unescape_terminator(parts[3]);
    return !dialect.field_end.empty() && !dialect.row_end.empty();
}

static bool my_may_hold_lines(client_base base) noexcept
{
    return client_is_text(base) || base == client_base::variant;
}

static std::unique_ptr<client_reader> my_make_bcp_reader(const client_row_tbl &tbl, const client_dialect &dialect)
{
    client_bcp_form form{dialect.field_end, dialect.row_end, dialect.cols.size(), {}};
    for (const size_t col : dialect.cols)
        form.holds_lines.push_back(my_may_hold_lines(tbl.cols[col].type.base));
    return client_make_bcp_reader(std::move(form));
}

static std::unique_ptr<client_reader> my_make_native_reader(const client_row_tbl &tbl, const client_dialect &dialect)
{
    std::vector<client_server_type> types;
    for (const size_t col : dialect.cols)
        types.push_back(tbl.cols[col].server_type);
    return client_make_native_reader(types);
}

static std::unique_ptr<client_reader> my_make_json_reader(const client_row_tbl &tbl, bool at_start)
{
    std::vector<client_json_member> members;
    for (const client_row_col &col : tbl.cols)
        members.push_back({col.name, client_is_binary(col.type.base), !col.stored || col.type.nullable});
    return client_make_json_reader(std::move(members), at_start);
}

std::unique_ptr<client_reader> client_make_reader(const client_row_tbl &tbl, const client_dialect &dialect,
                                                  bool at_start)
{
    switch (dialect.format) {
    case client_format::insert:
        return client_make_insert_reader();
    case client_format::native:
        return my_make_native_reader(tbl, dialect);
    case client_format::json:
        return my_make_json_reader(tbl, at_start);
    case client_format::csv:
        return client_make_csv_reader({dialect.field_end, dialect.null_word, dialect.null_is_guessed,
                                       dialect.has_header && at_start, dialect.cols.size()});
    default:
        return my_make_bcp_reader(tbl, dialect);
    }
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
