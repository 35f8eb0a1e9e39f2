// Formatted text gives what the C library's vsnprintf gives, whichever of the two ways it takes.
#include "failing_alloc.hpp"
#include "kt_test.hpp"
#include "text/kt_string_private.hpp"

#include <cinttypes>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <random>
#include <string>

namespace {

class FormatTest : public ContextTest {
  protected:
    // Formats with the runtime, into a string that holds something already, and with the C library, and compares.
    KT_PRINTF(2, 3) void check(const char *format, ...)
    {
        char expected[5000];
        va_list args;
        va_start(args, format);
        ASSERT_LT(std::vsnprintf(expected, sizeof expected, format, args), static_cast<int>(sizeof expected));
        va_end(args);
        KT_string string;
        kt_string_init(&string);
        ASSERT_TRUE(kt_string_append_bytes(&string, "before ", 7));
        va_start(args, format);
        ASSERT_TRUE(kt_string_append_va(&string, format, args));
        va_end(args);
        EXPECT_EQ(std::string("before ") + expected, KT_string__sz(&string)) << format;
        kt_string_clear(&string);
    }
};

} // namespace

TEST_F(FormatTest, ConversionsThatGeneratedTextUses)
{
    const std::string long_text(1000, 'x');
    check("%s", "");
    check("plain text");
    check("%%");
    check("%s\"%s\"", ",", "Name");
    check("%s%%%s%%", "a", "b");
    check("%s", long_text.c_str());
    check("%s%s%s", long_text.c_str(), "y", long_text.c_str());
    for (int number : {0, 1, -1, 9, 10, 99, 100, INT_MAX, INT_MIN})
        check("(%d,%i)", number, number);
    for (unsigned number : {0u, 1u, UINT_MAX})
        check("(%u)", number);
    for (int64_t number : {int64_t{0}, int64_t{-1}, INT64_MAX, INT64_MIN}) {
        check("%" PRId64 "|%" PRIu64, number, static_cast<uint64_t>(number));
        check("%ld|%lu", static_cast<long>(number), static_cast<unsigned long>(number));
        check("%lld|%llu|%lli", static_cast<long long>(number), static_cast<unsigned long long>(number),
              static_cast<long long>(number));
        check("%zu|%zd", static_cast<size_t>(number), static_cast<ssize_t>(number));
    }
    check("%s %d %s %lld %s %u", "one", 2, "three", 4LL, "five", 6u);
}

TEST_F(FormatTest, ConversionsThatGoToTheCLibrary)
{
    const char *text = "text";
    check("%5d|%-5d|%05d|%+d|% d", 42, 42, 42, 42, 42);
    check("%.3s|%10s|%-10s|%.*s", text, text, text, 2, text);
    check("%x %X %#x %o %c", 255u, 255u, 255u, 8u, 'c');
    check("%g %f %.17g %e", 1.5, 2.25, 0.1, 1e300);
    check("%hd %hhd %ju %td", short{7}, static_cast<signed char>(-7), uintmax_t{7}, ptrdiff_t{-7});
    check("%s %d %5d %s %%", text, 1, 2, text);
    check("%d%s%p", 1, text, static_cast<const void *>(text));
    check("%1000d", 5);
    check("%ls and %lc", L"wide", static_cast<wint_t>('w'));
}

TEST_F(FormatTest, ANullTextIsShownAsOne)
{
    const char *volatile no_text = nullptr;
    char *text = KT_mprintf("<%s>", no_text);
    EXPECT_STREQ(text, "<(null)>");
    _kt_free(ctx, text);
}

TEST_F(FormatTest, ANulCharacterEndsTheText)
{
    KT_string *string = nullptr;
    KT_string__alloc(ctx, &string);
    KT_string__append__format(ctx, string, "ab%ccd", 0);
    KT_string__append__sz(ctx, string, "ef");
    EXPECT_EQ(take(ctx, string), "abef");
}

// Every call has the same arguments in the same order, so any format made of these pieces in this order is right.
TEST_F(FormatTest, RandomFormatsAgreeWithTheCLibrary)
{
    static const char *const texts[] = {"%s", "\"%s\"", "%s%%", "%4s", "%-7s|", "%.2s", " text %s ", "%%%s"};
    static const char *const ints[] = {"%d", "%i", ",%d,", "%5d", "%-3d", "%05d", "%+d", "%x", "%%%d%%", "%u", "%c"};
    static const char *const longs[] = {"%lld", "%lli", "<%llu>", "%20lld", "%llx"};
    static const char *const sizes[] = {"%zu", "%zx", "[%zu]", "%4zu", "%zd"};
    static const char *const values[] = {"",   "a",   "Name", "a rather longer name, of more than a few bytes",
                                         "%s", "100%"};
    std::mt19937 random{42};
    const auto pick = [&](const auto &list) { return list[random() % std::size(list)]; };
    for (int n = 0; n < 20000; n++) {
        const std::string format = std::string(pick(texts)) + pick(ints) + pick(longs) + pick(texts) + pick(sizes);
        const char *first = pick(values);
        const char *second = pick(values);
        const int number = 1 + static_cast<int>(random() % 100000);
        const long long big = static_cast<long long>((uint64_t{random()} << 32) | random());
        const size_t size = random();
        char expected[1000];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::snprintf(expected, sizeof expected, format.c_str(), first, number, big, second, size);
        char *text = KT_mprintf(format.c_str(), first, number, big, second, size);
#pragma GCC diagnostic pop
        ASSERT_STREQ(text, expected) << format;
        _kt_free(ctx, text);
    }
}

TEST_F(FormatTest, MprintfGivesATextOfItsOwnOrNull)
{
    const std::string long_text(500, 'x');
    kt_failing_alloc fault;
    int failures = 0;
    for (fault.next();; fault.next(), failures++) {
        char *text = KT_mprintf("%s, %d, %s", "short", 7, long_text.c_str());
        if (!fault.fired()) {
            EXPECT_EQ("short, 7, " + long_text, text);
            EXPECT_EQ(fault.leaked(), 1u);
            _kt_free(ctx, text);
            break;
        }
        EXPECT_EQ(text, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_EQ(failures, 2);
    EXPECT_EQ(fault.leaked(), 0u);
}

TEST_F(FormatTest, MemoryThatRunsOutAtAnyPieceGivesNull)
{
    for (size_t length = 0; length < 120; length++) {
        SCOPED_TRACE(length);
        const std::string text(length, 'x');
        for (kt_failing_alloc fault; fault.next();) {
            char *made = KT_mprintf("%s%lld%% and %5d", text.c_str(), LLONG_MIN, 7);
            if (!fault.fired()) {
                EXPECT_EQ(made, text + "-9223372036854775808% and     7");
                _kt_free(ctx, made);
                break;
            }
            EXPECT_EQ(made, nullptr);
            EXPECT_EQ(fault.leaked(), 0u);
        }
        for (kt_failing_alloc fault; fault.next();) {
            char *made = KT_mprintf("%s%u%%%zu", text.c_str(), UINT_MAX, SIZE_MAX);
            if (!fault.fired()) {
                EXPECT_EQ(made, text + "4294967295%" + std::to_string(SIZE_MAX));
                _kt_free(ctx, made);
                break;
            }
            EXPECT_EQ(made, nullptr);
            EXPECT_EQ(fault.leaked(), 0u);
        }
    }
}

TEST_F(FormatTest, ATextThatCannotBeMadeGivesNull)
{
    static const wchar_t no_character[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    EXPECT_EQ(KT_mprintf("before %ls", no_character), nullptr);
}
