// UTF-16 becomes UTF-8.
#include "json/host_utf16.hpp"

#include "json/host_file.hpp"

#define KT_HERE "src/host/json/host_utf16"

static uint32_t my_unit_at(std::string_view utf16, host_byte_order order, size_t at)
{
    const auto first = static_cast<uint8_t>(utf16[at]);
    const auto second = static_cast<uint8_t>(utf16[at + 1]);
    return order == host_byte_order::little ? first | uint32_t{second} << 8 : uint32_t{first} << 8 | second;
}

static void my_append_code_point(std::string &utf8, uint32_t code)
{
    const auto add = [&utf8](uint32_t byte) { utf8 += static_cast<char>(byte); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0 | code >> 6);
        add(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        add(0xE0 | code >> 12);
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    } else {
        add(0xF0 | code >> 18);
        add(0x80 | (code >> 12 & 0x3F));
        add(0x80 | (code >> 6 & 0x3F));
        add(0x80 | (code & 0x3F));
    }
}

void host_utf16_to_utf8(KT_context *ctx, std::string_view utf16, host_byte_order order, std::string &utf8)
{
    if (utf16.size() % 2 != 0)
        KT_FAIL(KT_ERR_BAD_JSON, "the file is UTF-16 and ends in the middle of a character: it was cut off; %s",
                host_cut_hint);
    utf8.reserve(utf16.size() / 2);
    for (size_t at = 0; at < utf16.size(); at += 2) {
        uint32_t code = my_unit_at(utf16, order, at);
        if (code >= 0xD800 && code < 0xE000) {
            const uint32_t low = code < 0xDC00 && at + 2 < utf16.size() ? my_unit_at(utf16, order, at + 2) : 0;
            if (low < 0xDC00 || low >= 0xE000)
                KT_FAIL(KT_ERR_BAD_JSON, "the file is UTF-16 and holds half a surrogate pair: it is damaged");
            code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
            at += 2;
        }
        my_append_code_point(utf8, code);
    }
}
