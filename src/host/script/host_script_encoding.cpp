// Encodings of scripts: UTF-8, UTF-16, and the code pages that iconv knows.
#include "script/host_script_encoding.hpp"

#include "tsql/host_tsql_scanner.hpp"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iconv.h>
#include <memory>

#define KT_HERE "src/host/script/host_script_encoding"

// The length of the character that begins here; 0 when the bytes are not UTF-8.
static size_t my_character_length(std::string_view rest)
{
    const auto byte = [rest](size_t n) { return n < rest.size() ? static_cast<unsigned char>(rest[n]) : 0U; };
    const auto follows = [&byte](size_t n) { return (byte(n) & 0xC0U) == 0x80U; };
    if (byte(0) < 0x80)
        return 1;
    if (byte(0) >= 0xC2 && byte(0) < 0xE0)
        return follows(1) ? 2 : 0;
    if (byte(0) >= 0xE0 && byte(0) < 0xF0) {
        const bool is_short = byte(0) == 0xE0 && byte(1) < 0xA0;
        const bool is_surrogate = byte(0) == 0xED && byte(1) >= 0xA0;
        return follows(1) && follows(2) && !is_short && !is_surrogate ? 3 : 0;
    }
    if (byte(0) >= 0xF0 && byte(0) < 0xF5) {
        const bool is_short = byte(0) == 0xF0 && byte(1) < 0x90;
        const bool is_beyond = byte(0) == 0xF4 && byte(1) >= 0x90;
        return follows(1) && follows(2) && follows(3) && !is_short && !is_beyond ? 4 : 0;
    }
    return 0;
}

// Where the first byte is that is not ASCII, from a place on, or the end. Eight at a time, since most are.
static size_t my_skip_ascii(std::string_view text, size_t at)
{
    constexpr uint64_t high_bits = 0x8080808080808080;
    for (uint64_t bytes = 0; at + sizeof bytes <= text.size(); at += sizeof bytes) {
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if ((bytes & high_bits) != 0)
            break;
    }
    while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80)
        at++;
    return at;
}

static void my_check_utf8(KT_context *ctx, std::string_view name, std::string_view text)
{
    const size_t nul = text.find('\0');
    if (nul != std::string_view::npos)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s:%s: a NUL byte: the file is not a script", std::string(name).c_str(),
                host_tsql_place(text, nul).c_str());
    for (size_t at = my_skip_ascii(text, 0); at < text.size(); at = my_skip_ascii(text, at)) {
        const size_t length = my_character_length(text.substr(at));
        if (length == 0)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s:%s: the file is not UTF-8: say which encoding it has",
                    std::string(name).c_str(), host_tsql_place(text, at).c_str());
        at += length;
    }
}

static void my_convert(KT_context *ctx, std::string_view name, std::string_view bytes, const char *encoding,
                       std::string &text)
{
    iconv_t converter = iconv_open("UTF-8", encoding);
    if (converter == reinterpret_cast<iconv_t>(-1)) // NOLINT(performance-no-int-to-ptr): what iconv_open returns
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "the encoding '%s' is not known", encoding);
    const auto close = [](iconv_t used) { iconv_close(used); };
    const std::unique_ptr<void, decltype(close)> closing(converter, close);
    std::array<char, 8192> buffer{};
    char *in = const_cast<char *>(bytes.data()); // NOLINT(cppcoreguidelines-pro-type-const-cast): iconv reads only
    size_t left = bytes.size();
    bool is_whole = true, is_cut = false;
    while (left > 0 && is_whole) {
        char *out = buffer.data();
        size_t room = buffer.size();
        is_whole = iconv(converter, &in, &left, &out, &room) != static_cast<size_t>(-1) || errno == E2BIG;
        is_cut = !is_whole && errno == EINVAL;
        text.append(buffer.data(), buffer.size() - room);
    }
    if (is_cut)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s:%s: the file ends in the middle of a character: it was cut off",
                std::string(name).c_str(), host_tsql_place(text, text.size()).c_str());
    if (!is_whole)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s:%s: what follows is not in the encoding %s", std::string(name).c_str(),
                host_tsql_place(text, text.size()).c_str(), encoding);
}

// Scripts are mostly ASCII: in UTF-16 every other byte is NUL then.
static const char *my_guess(std::string_view bytes)
{
    const std::string_view start = bytes.substr(0, 64);
    size_t even = 0, odd = 0;
    for (size_t n = 0; n < start.size(); n++)
        (n % 2 == 0 ? even : odd) += start[n] == '\0' ? 1U : 0U;
    if (odd > start.size() / 4 && even == 0)
        return "UTF-16LE";
    return even > start.size() / 4 && odd == 0 ? "UTF-16BE" : nullptr;
}

void host_decode_script(KT_context *ctx, std::string_view name, std::string_view bytes, const char *encoding,
                        std::string &text)
{
    const char *found = nullptr;
    if (bytes.starts_with("\xFF\xFE"))
        found = "UTF-16LE";
    else if (bytes.starts_with("\xFE\xFF"))
        found = "UTF-16BE";
    const bool is_marked = bytes.starts_with("\xEF\xBB\xBF");
    if (is_marked)
        bytes.remove_prefix(3);
    else if (found)
        bytes.remove_prefix(2);
    else
        found = my_guess(bytes);
    if (!found && !is_marked)
        found = encoding;
    text.clear();
    if (found)
        KT_TRY(my_convert(ctx, name, bytes, found, text));
    else
        text = bytes;
    KT_TRY(my_check_utf8(ctx, name, text));
}
