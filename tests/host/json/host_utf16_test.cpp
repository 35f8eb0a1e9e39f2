// UTF-16 to UTF-8, at the edges of each length.
#include "host_test.hpp"

#include "json/host_utf16.hpp"

class HostUtf16Test : public ContextTest {
  protected:
    std::string convert(std::u16string_view units, host_byte_order order = host_byte_order::little)
    {
        std::string bytes;
        for (const char16_t unit : units) {
            const std::string two{static_cast<char>(unit & 0xFF), static_cast<char>(unit >> 8)};
            bytes += order == host_byte_order::little ? two : std::string(two.rbegin(), two.rend());
        }
        std::string utf8;
        host_utf16_to_utf8(ctx, bytes, order, utf8);
        return utf8;
    }
};

TEST_F(HostUtf16Test, LengthsOfOneToFourBytes)
{
    const struct {
        std::u16string_view utf16;
        const char *utf8;
    } cases[] = {
        {u"\x7F", "\x7F"},
        {u"\x80", "\xC2\x80"},
        {u"\x7FF", "\xDF\xBF"},
        {u"\x800", "\xE0\xA0\x80"},
        {u"\xD7FF\xE000\xFFFF", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
        {u"\xD800\xDC00", "\xF0\x90\x80\x80"},
        {u"\xDBFF\xDFFF", "\xF4\x8F\xBF\xBF"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(convert(c.utf16), c.utf8);
        EXPECT_EQ(convert(c.utf16, host_byte_order::big), c.utf8);
        EXPECT_OK(ctx);
    }
}

TEST_F(HostUtf16Test, HalfASurrogatePairIsRefused)
{
    const std::u16string_view cases[] = {u"\xD800", u"\xDC00", u"\xD800x", u"\xD800\xD800", u"x\xDFFF"};
    for (const std::u16string_view utf16 : cases) {
        convert(utf16);
        EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "the file is UTF-16 and holds half a surrogate pair: it is damaged");
        reset();
    }
}
