// The members of a JSON object as the fields of a row: numbers keep their digits, strings without escapes are borrowed
// from the data, and nothing is kept of one object when the next is read. A tree of values would be slower and would
// lose both.
#include "rows/read/client_json_object.hpp"

#include "kt_string.h"
#include "rows/convert/client_utf8.hpp"

#include <cstring>

namespace {

class json_parser {
  public:
    json_parser(std::string_view text, const std::vector<client_json_member> &members, client_row &row)
        : text_(text), members_(members), row_(row), given_(members.size())
    {
    }
    void parse();

  private:
    bool fail(client_reject reject);
    bool take(char c);
    bool read_member();
    bool find_member(std::string_view name, size_t &place);
    bool read_value(size_t place);
    bool read_string(std::string_view &value);
    bool read_escape();
    bool read_unit(uint32_t &unit);
    bool read_number(std::string_view &value);
    bool take_digits();
    void fill_missing();

    std::string_view text_;
    const std::vector<client_json_member> &members_;
    client_row &row_;
    std::vector<bool> given_;
    size_t at_ = 0;
    size_t expected_ = 0; // the member that follows the last
};

} // namespace

bool json_parser::fail(client_reject reject)
{
    row_.reject = reject;
    return false;
}

// Passes over blanks, and takes the byte after them.
bool json_parser::take(char c)
{
    while (at_ < text_.size() && std::strchr(" \t\r\n", text_[at_]) && text_[at_] != '\0')
        at_++;
    if (at_ == text_.size() || text_[at_] != c)
        return false;
    at_++;
    return true;
}

// Columns come in the same order row after row; the server's names do not depend on case.
bool json_parser::find_member(std::string_view name, size_t &place)
{
    if (expected_ < members_.size() && members_[expected_].name == name) {
        place = expected_;
        return true;
    }
    for (place = 0; place < members_.size(); place++) {
        const std::string &other = members_[place].name;
        if (other.size() == name.size() &&
            KT_strnicmp(other.data(), name.data(), static_cast<uint32_t>(name.size())) == 0)
            return true;
    }
    return false;
}

bool json_parser::read_unit(uint32_t &unit)
{
    unit = 0;
    if (text_.size() - at_ < 4)
        return false;
    for (int n = 0; n < 4; n++) {
        const char c = text_[at_++];
        const char lower = static_cast<char>(c | 0x20);
        const bool is_digit = c >= '0' && c <= '9';
        if (!is_digit && (lower < 'a' || lower > 'f'))
            return false;
        unit = unit * 16 + static_cast<uint32_t>(is_digit ? c - '0' : lower - 'a' + 10);
    }
    return true;
}

// After the backslash. Half a surrogate pair is kept: the value's conversion refuses it, since it is not UTF-8.
bool json_parser::read_escape()
{
    static constexpr std::string_view letters = "\"\\/bfnrt";
    static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
    if (at_ == text_.size())
        return false;
    const char c = text_[at_++];
    if (c != 'u') {
        const size_t place = letters.find(c);
        if (place != letters.npos)
            row_.unescaped.push_back(meanings[place]);
        return place != letters.npos;
    }
    uint32_t unit = 0;
    if (!read_unit(unit))
        return false;
    const size_t second = at_;
    uint32_t low = 0;
    if (unit >= 0xD800 && unit < 0xDC00 && text_.substr(at_).starts_with("\\u")) {
        at_ += 2;
        if (read_unit(low) && low >= 0xDC00 && low < 0xE000)
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        else
            at_ = second;
    }
    client_append_utf8(row_.unescaped, unit);
    return true;
}

// The opening quote has been taken. Without escapes the value is borrowed from the data.
bool json_parser::read_string(std::string_view &value)
{
    const size_t from = at_;
    const size_t kept = row_.unescaped.size();
    bool is_escaped = false;
    while (at_ < text_.size()) {
        const char c = text_[at_++];
        if (c == '"') {
            value = is_escaped ? std::string_view(row_.unescaped).substr(kept) : text_.substr(from, at_ - 1 - from);
            return true;
        }
        if (static_cast<unsigned char>(c) < 0x20)
            return false;
        if (c == '\\') {
            if (!is_escaped)
                row_.unescaped.append(text_, from, at_ - 1 - from);
            is_escaped = true;
            if (!read_escape())
                return false;
        } else if (is_escaped) {
            row_.unescaped.push_back(c);
        }
    }
    return false;
}

bool json_parser::take_digits()
{
    const size_t from = at_;
    while (at_ < text_.size() && text_[at_] >= '0' && text_[at_] <= '9')
        at_++;
    return at_ > from;
}

bool json_parser::read_number(std::string_view &value)
{
    const auto is_next = [&](std::string_view any) { return at_ < text_.size() && any.find(text_[at_]) != any.npos; };
    const size_t from = at_;
    at_ += is_next("-") ? 1U : 0U;
    const bool is_zero = is_next("0");
    const size_t whole = at_;
    bool good = take_digits() && !(is_zero && at_ > whole + 1);
    if (is_next(".")) {
        at_++;
        good = take_digits() && good;
    }
    if (is_next("eE")) {
        at_++;
        at_ += is_next("+-") ? 1U : 0U;
        good = take_digits() && good;
    }
    value = text_.substr(from, at_ - from);
    return good;
}

bool json_parser::read_value(size_t place)
{
    client_field &field = row_.fields[place];
    const client_form string_form = members_[place].is_binary ? client_form::base64 : client_form::text;
    row_.place = place;
    if (take('"')) {
        field.form = string_form;
        return read_string(field.bytes) || fail(client_reject::bad_row);
    }
    if (at_ < text_.size() && (text_[at_] == '{' || text_[at_] == '['))
        return fail(client_reject::nested_value);
    for (const std::string_view word : {"true", "false", "null"}) {
        if (!text_.substr(at_).starts_with(word))
            continue;
        field = {word == "null" ? client_form::null : client_form::boolean, text_.substr(at_, word.size())};
        at_ += word.size();
        return true;
    }
    field.form = client_form::number;
    return read_number(field.bytes) || fail(client_reject::bad_row);
}

bool json_parser::read_member()
{
    std::string_view name;
    size_t place = 0;
    row_.place = SIZE_MAX;
    if (!take('"') || !read_string(name) || !take(':'))
        return fail(client_reject::bad_row);
    row_.blamed = name;
    if (!find_member(name, place))
        return fail(client_reject::unknown_column);
    if (given_[place])
        return fail(client_reject::bad_row);
    given_[place] = true;
    expected_ = place + 1;
    return read_value(place);
}

void json_parser::fill_missing()
{
    for (size_t n = 0; n < members_.size(); n++) {
        if (given_[n])
            continue;
        row_.fields[n] = {members_[n].may_be_null ? client_form::null : client_form::absent, {}};
        row_.has_absent |= !members_[n].may_be_null;
    }
}

void json_parser::parse()
{
    row_.fields.assign(members_.size(), {});
    row_.has_absent = false;
    row_.unescaped.clear();
    row_.unescaped.reserve(text_.size() + 16); // never grows: fields borrow from it
    take('{');                                 // the text was measured: it is one object
    bool ends = take('}');
    while (!ends) {
        if (!read_member())
            return;
        ends = take('}');
        if (!ends && !take(',')) {
            fail(client_reject::bad_row);
            return;
        }
    }
    row_.place = SIZE_MAX;
    row_.blamed = {};
    fill_missing();
}

void client_read_json_object(std::string_view text, const std::vector<client_json_member> &members, client_row &row)
{
    json_parser(text, members, row).parse();
}
