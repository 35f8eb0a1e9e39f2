// Growable text: content, growth, parts of itself, failing memory, and the room that writers fill themselves.
#include "failing_alloc.hpp"
#include "kt_string.h"
#include "kt_test.hpp"
#include "text/kt_string_private.hpp"

#include <cstring>
#include <string>

namespace {

class StringTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_string__alloc(ctx, &string);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_string__free(ctx, string);
        ContextTest::TearDown();
    }
    void set(const std::string &text)
    {
        KT_string__free(ctx, string);
        string = nullptr;
        KT_string__alloc__sz(ctx, &string, text.c_str());
        ASSERT_OK(ctx);
    }
    KT_PRINTF(2, 3) void print(const char *format, ...)
    {
        va_list args;
        va_start(args, format);
        KT_string__vsprintf(ctx, string, format, args);
        va_end(args);
    }
    std::string text() const
    {
        return KT_string__sz(string);
    }

    KT_string *string = nullptr;
};

// As long as the room inside, one less and one more, and lengths at which blocks grow.
const size_t lengths[] = {0, 1, 50, 102, 103, 104, 105, 206, 207, 208, 209, 1000, 100000};

} // namespace

TEST_F(StringTest, ANewStringIsEmptyOrACopy)
{
    EXPECT_EQ(text(), "");
    for (size_t length : lengths) {
        set(std::string(length, 'x'));
        EXPECT_EQ(text(), std::string(length, 'x'));
    }
    KT_string__free(ctx, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(StringTest, TextsAndStringsAreAppended)
{
    KT_string *other = nullptr;
    KT_string__alloc__sz(ctx, &other, "other");
    std::string expected;
    for (size_t length : lengths) {
        const std::string piece(length, static_cast<char>('a' + length % 26));
        KT_string__append__sz(ctx, string, piece.c_str());
        KT_string__append__string(ctx, string, other);
        KT_string__append__format(ctx, string, "<%d>", static_cast<int>(length));
        expected += piece + "other<" + std::to_string(length) + ">";
        const KT_piece pieces[] = {"(", piece.c_str(), "", ")"};
        KT_string__append__pieces(ctx, string, pieces, 4);
        KT_string__append__pieces(ctx, string, pieces, 0);
        expected += "(" + piece + ")";
        EXPECT_EQ(text(), expected);
    }
    EXPECT_STREQ(KT_string__sz(other), "other");
    KT_string__free(ctx, other);
    EXPECT_OK(ctx);
}

TEST_F(StringTest, PiecesThatNoMemoryHoldsAreRefused)
{
    KT_piece pieces[] = {"a", "b", "c"};
    pieces[1].length = SIZE_MAX - 1;
    KT_string__append__pieces(ctx, string, pieces, 3);
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
    EXPECT_EQ(text(), "");
    reset();
}

TEST_F(StringTest, PartsOfItselfAreAppendedWhetherItGrowsOrNot)
{
    for (size_t length : lengths) {
        std::string expected(length, 'x');
        expected += "tail";
        set(expected);
        KT_string__append__sz(ctx, string, KT_string__sz(string));
        expected += expected;
        EXPECT_EQ(text(), expected);
        KT_string__append__sz(ctx, string, KT_string__sz(string) + expected.size() - 2);
        expected += "il";
        EXPECT_EQ(text(), expected);
        KT_string__append__sz(ctx, string, KT_string__sz(string) + expected.size());
        EXPECT_EQ(text(), expected);
        KT_string__append__string(ctx, string, string);
        expected += expected;
        EXPECT_EQ(text(), expected);
    }
}

TEST_F(StringTest, VsprintfReplacesTheContent)
{
    set("what was there");
    print("%s and %d", "text", 12);
    EXPECT_EQ(text(), "text and 12");
    print("%s", std::string(1000, 'y').c_str());
    EXPECT_EQ(text(), std::string(1000, 'y'));
    print("%s", "");
    EXPECT_EQ(text(), "");
    print("100%%");
    EXPECT_EQ(text(), "100%");
}

TEST_F(StringTest, AppendingTakesAmortisedConstantTime)
{
    kt_failing_alloc never{kt_failing_alloc::mode::never};
    never.next();
    int moves = 0;
    const char *place = KT_string__sz(string);
    for (int n = 0; n < 1000000; n++) {
        KT_string__append__sz(ctx, string, "x");
        if (KT_string__sz(string) != place)
            moves++;
        place = KT_string__sz(string);
    }
    EXPECT_EQ(text().size(), 1000000u);
    EXPECT_LE(moves, 15) << "twice the room each time";
    EXPECT_EQ(never.leaked(), 1u);
    // The room stays for the next content.
    print("%s", "short");
    print("%s", std::string(400000, 'z').c_str());
    EXPECT_EQ(KT_string__sz(string), place);
    KT_string__free(ctx, string);
    string = nullptr;
    EXPECT_EQ(never.leaked(), 0u);
}

TEST_F(StringTest, AllocatingReportsFailingMemory)
{
    const std::string long_text(500, 'x');
    for (kt_failing_alloc fault; fault.next(); reset()) {
        KT_string *made = nullptr;
        KT_string__alloc__sz(ctx, &made, long_text.c_str());
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            EXPECT_EQ(take(ctx, made), long_text);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

TEST_F(StringTest, AFailedChangeLeavesTheStringAsItWas)
{
    const std::string long_text(500, 'x');
    KT_string *other = nullptr;
    KT_string__alloc__sz(ctx, &other, long_text.c_str());
    const KT_piece pieces[] = {"fits", long_text.c_str()};
    for (const std::string &start : {std::string("short"), std::string(150, 's')}) {
        for (int operation = 0; operation < 6; operation++) {
            set(start);
            kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
            fault.next();
            if (operation == 0)
                KT_string__append__sz(ctx, string, long_text.c_str());
            else if (operation == 1)
                KT_string__append__string(ctx, string, other);
            else if (operation == 5)
                KT_string__append__pieces(ctx, string, pieces, 2);
            else if (operation == 2)
                KT_string__append__format(ctx, string, "%s%d%s", "fits", 1, long_text.c_str());
            else if (operation == 3)
                KT_string__append__format(ctx, string, "%s%500d", "fits", 1);
            else
                print("%s%d%s", "fits", 1, long_text.c_str());
            EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, "out of memory");
            const char *file = nullptr;
            int32_t line = 0;
            KT_context__get_nth_err_stackframe(ctx, 0, &file, &line);
            EXPECT_STREQ(file, "src/runtime/kt_string");
            EXPECT_EQ(text(), start) << operation;
            reset();
        }
    }
    KT_string__free(ctx, other);
}

TEST_F(StringTest, RoomIsReservedAndFilledByHand)
{
    set("head ");
    ASSERT_TRUE(kt_string_reserve(string, 1000));
    char *end = kt_string_end(string);
    std::memset(end, 'x', 1000);
    kt_string_set_end(string, end + 1000);
    EXPECT_EQ(text(), "head " + std::string(1000, 'x'));
    EXPECT_EQ(kt_string_length(string), 1005u);
    const char *place = KT_string__sz(string);
    kt_string_set_end(string, string->begin + 4);
    EXPECT_EQ(text(), "head");
    ASSERT_TRUE(kt_string_reserve(string, 1001));
    EXPECT_EQ(KT_string__sz(string), place) << "there was room for that";
    KT_string__append__sz(ctx, string, ".");
    EXPECT_EQ(text(), "head.");
    EXPECT_FALSE(kt_string_reserve(string, SIZE_MAX));
    EXPECT_FALSE(kt_string_reserve(string, SIZE_MAX / 2));
    EXPECT_EQ(text(), "head.");
}
