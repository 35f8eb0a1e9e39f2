// The standalone command's iconv beside the C library's.

#include <gtest/gtest.h>

#include <cerrno>
#include <iconv.h>
#include <string>

extern "C" iconv_t standalone_iconv_open(const char *to, const char *from);
extern "C" int standalone_iconv_close(iconv_t used);
extern "C" size_t standalone_iconv(iconv_t used, char **from, size_t *left, char **to, size_t *room);

namespace {

struct functions {
    iconv_t (*open)(const char *, const char *);
    size_t (*convert)(iconv_t, char **, size_t *, char **, size_t *);
    int (*close)(iconv_t);
};
const functions libc{iconv_open, iconv, iconv_close};
const functions standalone{standalone_iconv_open, standalone_iconv, standalone_iconv_close};

struct converted {
    std::string bytes;
    size_t left = 0;
    int error = 0;

    bool operator==(const converted &) const = default;
};

// Converts and flushes what an encoder keeps back.
converted convert(const functions &used, const char *to, const char *from, std::string text, size_t room = 64)
{
    iconv_t opened = used.open(to, from);
    if (opened == reinterpret_cast<iconv_t>(-1))
        return {"not known", 0, errno};
    std::string out(room, '\0');
    char *next = text.data(), *at = out.data();
    converted result{"", text.size(), 0};
    if (used.convert(opened, &next, &result.left, &at, &room) == static_cast<size_t>(-1))
        result.error = errno;
    used.convert(opened, nullptr, nullptr, &at, &room);
    used.close(opened);
    result.bytes = out.substr(0, static_cast<size_t>(at - out.data()));
    return result;
}

TEST(StandaloneIconvTest, EveryByteOfACodePageIsWhatItIsInTheCLibrary)
{
    for (const char *page : {"CP437", "CP850", "CP874", "CP932", "CP936", "CP949", "CP950", "CP1250", "CP1251",
                             "CP1252", "CP1253", "CP1254", "CP1255", "CP1256", "CP1257", "CP1258"}) {
        SCOPED_TRACE(page);
        for (int byte = 0; byte <= 0xFF; byte++) {
            const std::string text(1, static_cast<char>(byte));
            const converted expected = convert(libc, "UTF-8", page, text);
            const converted result = convert(standalone, "UTF-8", page, text);
            EXPECT_EQ(result.bytes, expected.bytes) << "byte " << byte;
            EXPECT_EQ(result.error == 0, expected.error == 0) << "byte " << byte; // a character may begin with the byte
            if (expected.error == 0) {
                EXPECT_EQ(convert(standalone, page, "UTF-8", expected.bytes).bytes, text) << "byte " << byte;
            }
        }
    }
}

TEST(StandaloneIconvTest, ConvertsTextsAsTheCLibraryDoes)
{
    struct text_case {
        const char *name;
        const char *to;
        const char *from;
        std::string text;
    };
    const text_case cases[] = {
        {"two bytes", "UTF-8", "CP932", "a\x93\xFA\x96{z"},
        {"to two bytes", "CP936", "UTF-8", "a\u4E2Dz"},
        {"four bytes", "UTF-8", "GB18030", "\x81\x30\x81\x30\x94\x39\xFC\x36"},
        {"a character of one unit", "UTF-8", "UTF-16LE", std::string("\xE9\0a\0", 4)},
        {"a character of two units", "UTF-8", "UTF-16BE", std::string("\xD8\x3D\xDE\x00", 4)},
        {"windows-1252", "UTF-8", "windows-1252", "caf\xE9 \x80"},
        {"ISO-8859-15", "UTF-8", "ISO-8859-15", "\xA4"},
        {"KOI8-R", "UTF-8", "KOI8-R", "\xF0\xD2\xC9"},
        {"nothing", "UTF-8", "CP1252", ""},
        {"a byte that is no character", "UTF-8", "CP1252", "ab\x81z"},
        {"a character that the page lacks", "CP1252", "UTF-8", "ab\u4E2Dz"},
        {"a character for formatting that it lacks", "CP1252", "UTF-8", "a\u200Bz"},
        {"the text ends inside a character", "UTF-8", "CP932", "a\x93"},
        {"UTF-8 ends inside a character", "CP1252", "UTF-8", "a\xC3"},
        {"not UTF-8", "CP1252", "UTF-8", "a\xC3z"},
        {"no such encoding", "UTF-8", "no-such", "a"},
    };
    for (const text_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(convert(standalone, c.to, c.from, c.text), convert(libc, c.to, c.from, c.text));
    }
}

TEST(StandaloneIconvTest, StopsWhereThereIsNoRoomAndGoesOnFromThere)
{
    const converted some = convert(standalone, "UTF-8", "CP1252", std::string(20, '\xE9'), 16);
    EXPECT_EQ(some.error, E2BIG);
    EXPECT_GT(some.bytes.size(), 0U);
    EXPECT_EQ(some.bytes.size(), 2 * (20 - some.left));
}

} // namespace
