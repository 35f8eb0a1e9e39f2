// Any text, split into tokens: they cover it without a gap, mean what they look like, and are the same when they
// stand alone. Every word is a keyword exactly when the plain list has it.
#include "defval/defval_keywords.hpp"
#include "defval/defval_peel.hpp"
#include "defval/defval_tokenizer.hpp"

#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

int32_t listed_code(std::string_view word)
{
    for (const tov_keyword &keyword : tov_keywords) {
        bool same = keyword.word.size() == word.size();
        for (size_t i = 0; same && i < word.size(); i++)
            same = keyword.word[i] == (word[i] >= 'a' && word[i] <= 'z' ? word[i] - 32 : word[i]);
        if (same)
            return keyword.code;
    }
    return TK_ID;
}

bool is_name_byte(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' || byte < 0;
}

void check_look(std::string_view token, int32_t code)
{
    const char first = token.front();
    const char last = token.back();
    switch (code) {
    case TK_STRING:
        check(token.size() >= 2 && first == '\'' && last == '\'');
        break;
    case TK_BLOB:
        check(token.size() % 2 == 1 && (first == 'x' || first == 'X') && token[1] == '\'' && last == '\'');
        break;
    case TK_INTEGER:
        check(token.find_first_not_of("0123456789") == std::string_view::npos);
        break;
    case TK_FLOAT:
        check(token.find_first_of(".eE") != std::string_view::npos);
        check(token.find_first_not_of("0123456789.eE+-") == std::string_view::npos);
        break;
    case TK_SPACE:
        check(std::strchr("\t\n\f\r -/", first) != nullptr);
        break;
    default:
        if (is_name_byte(first) && code != TK_ILLEGAL)
            check(code == listed_code(token));
    }
}

void check_token(const char *at, const char *end)
{
    int32_t code = 0;
    const int32_t length = _tov_get_token(at, &code);
    check(length > 0 && length <= end - at);
    check(code != TK_END_OF_FILE);
    const std::string alone(at, static_cast<size_t>(length));
    check_look(alone, code);
    int32_t code_alone = 0;
    check(_tov_get_token(alone.c_str(), &code_alone) == length && code_alone == code);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // In a block of its own size, so that the sanitizer sees any look past the end.
    char *text = static_cast<char *>(std::malloc(size + 1));
    if (size > 0)
        std::memcpy(text, data, size);
    text[size] = '\0';

    const char *end = text + std::strlen(text);
    int32_t code = 0;
    for (const char *at = text; at < end; at += _tov_get_token(at, &code)) {
        if (at[0] == '!' && at + 1 == end)
            break; // the one token that counts the terminating NUL
        check_token(at, end);
    }
    check(_tov_get_token(end, &code) == 0 && code == TK_END_OF_FILE);

    const std::string_view whole{text, static_cast<size_t>(end - text)};
    std::string_view name = whole;
    for (std::string_view found : {_tov_peel_literal(text), _tov_peel_hex_digits(text)})
        check(!found.data() || (found.data() >= text && found.data() + found.size() <= end && !found.empty()));
    if (!_tov_peel_call(text, &name))
        check(name.data() == whole.data());
    std::free(text);
    return 0;
}
