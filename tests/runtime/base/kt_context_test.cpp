// Errors, their descriptions and frames, and the levels that set them aside.
#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <string>

namespace {

using KtContextTest = ContextTest;

std::string frames_of(const KT_context *ctx)
{
    std::string text;
    for (uint32_t n = 0; n < KT_context__count_err_stackframes(ctx); n++) {
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, n, &file, &line);
        text += std::string(file) + ":" + std::to_string(line) + " ";
    }
    return text;
}

const std::string long_text(1000, 'x');

} // namespace

TEST_F(KtContextTest, AFreshContextHoldsNothing)
{
    EXPECT_EQ(KT_context__has_err(ctx), 0);
    EXPECT_FALSE(kt_has_err(ctx));
    EXPECT_ERROR(ctx, 0, "");
    EXPECT_EQ(frames_of(ctx), "");
}

TEST_F(KtContextTest, AnErrorHasCodeDescriptionAndFirstFrame)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "a.cpp", 7, "no such thing");
    EXPECT_EQ(KT_context__has_err(ctx), 1);
    EXPECT_TRUE(kt_has_err(ctx));
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "no such thing");
    EXPECT_EQ(frames_of(ctx), "a.cpp:7 ");
    reset();
    EXPECT_FALSE(kt_has_err(ctx));
    EXPECT_ERROR(ctx, 0, "");
    EXPECT_EQ(frames_of(ctx), "");
}

struct generic_case {
    uint64_t code;
    uint64_t number;
    const char *description;
};
static const generic_case generic_cases[] = {
    {KT_ERR_NOT_FOUND, 0x100000001, "not found"},
    {KT_ERR_NULL_ARGUMENT, 0x100000002, "a required argument is null"},
    {KT_ERR_OUT_OF_MEMORY, 0x100000005, "out of memory"},
    {KT_ERR_SCHEMA_NOT_SUPPORTED, 0x100000138, "the schema is not supported"},
    {KT_ERR_UNEXPECTED_VALUE, 0x1000001F4, "unexpected value"},
    {KT_ERR_SQLITE(19), 0x800000013, "SQLite error"},
    {KT_ERR_SQLITE(2067), 0x800000813, "SQLite error"},
    {KT_ERR_SQLITE(-1), 0x8FFFFFFFF, "SQLite error"},
    {KT_ERR_KEY_NOT_FOUND, 0x200000001, "no such key"},
    {KT_ERR_DUPLICATE_KEY, 0x200000002, "the key exists already"},
    {KT_ERR_WRONG_TYPE, 0x200000003, "the value is of another type"},
    {KT_ERR_OUT_OF_RANGE, 0x200000004, "position out of range"},
    {KT_ERR_BAD_JSON, 0x200000005, "malformed JSON text"},
    {KT_ERR_BAD_NUMBER, 0x200000006, "not a number"},
    {KT_ERR_BAD_VALUE, 0x200000007, "the value cannot be written"},
    {0x300000001, 0x300000001, "error"},
};

TEST_F(KtContextTest, EveryCodeHasItsNumberAndAGenericText)
{
    for (const generic_case &c : generic_cases) {
        KT_context__err__generic(ctx, c.code, "f", 1);
        EXPECT_EQ(c.code, c.number);
        EXPECT_ERROR(ctx, c.number, c.description);
        EXPECT_EQ(frames_of(ctx), "f:1 ");
        reset();
    }
}

TEST_F(KtContextTest, ANewErrorReplacesTheOldOne)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "a", 1, long_text.c_str());
    KT_context__err_stackframe_add(ctx, "b", 2);
    KT_context__err__generic(ctx, KT_ERR_BAD_JSON, "c", 3);
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "malformed JSON text");
    EXPECT_EQ(frames_of(ctx), "c:3 ");
    reset();
}

TEST_F(KtContextTest, DescriptionsComeBackWholeWhateverTheirLength)
{
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 1);
    for (size_t length = 0; length <= long_text.size(); length++) {
        const std::string text = long_text.substr(length);
        KT_context__err_set_description(ctx, "%s", text.c_str());
        ASSERT_STREQ(KT_context__err_description(ctx), text.c_str());
        KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, text.c_str());
        ASSERT_STREQ(KT_context__err_description(ctx), text.c_str());
    }
    reset();
}

TEST_F(KtContextTest, ADescriptionMayBeMadeFromThePresentOne)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, "column");
    KT_context__err_set_description(ctx, "in table: %s", KT_context__err_description(ctx));
    EXPECT_STREQ(KT_context__err_description(ctx), "in table: column");
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, KT_context__err_description(ctx) + 10);
    EXPECT_STREQ(KT_context__err_description(ctx), "column");
    KT_context__err_set_description(ctx, "%s", long_text.c_str());
    KT_context__err_set_description(ctx, "%s%s", KT_context__err_description(ctx), KT_context__err_description(ctx));
    EXPECT_EQ(KT_context__err_description(ctx), long_text + long_text);
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, KT_context__err_description(ctx) + 1990);
    EXPECT_STREQ(KT_context__err_description(ctx), "xxxxxxxxxx");
    reset();
}

TEST_F(KtContextTest, ADescriptionThatCannotBeMadeLeavesThePresentOne)
{
    static const wchar_t no_character[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, "the present one");
    KT_context__err_set_description(ctx, "before %ls", no_character);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "the present one");
    reset();
}

TEST_F(KtContextTest, DescribingOrTracingNoErrorDoesNothing)
{
    KT_context__err_set_description(ctx, "nothing");
    KT_context__err_stackframe_add(ctx, "f", 1);
    EXPECT_ERROR(ctx, 0, "");
    EXPECT_EQ(frames_of(ctx), "");
}

TEST_F(KtContextTest, FramesKeepTheirOrderWhateverTheirNumber)
{
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 0);
    std::string expected = "f:0 ";
    for (int line = 1; line < 300; line++) {
        KT_context__err_stackframe_add(ctx, "f", line);
        expected += "f:" + std::to_string(line) + " ";
    }
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 300u);
    EXPECT_EQ(frames_of(ctx), expected);
    reset();
}

TEST_F(KtContextTest, AFrameThatIsNotThereIsEmpty)
{
    const char *file = "untouched";
    int32_t line = -1;
    KT_context__get_nth_err_stackframe(ctx, 0, &file, &line);
    EXPECT_STREQ(file, "");
    EXPECT_EQ(line, 0);
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 9);
    line = -1;
    KT_context__get_nth_err_stackframe(ctx, 1, &file, &line);
    EXPECT_STREQ(file, "");
    EXPECT_EQ(line, 0);
    reset();
}

TEST_F(KtContextTest, ALevelStartsEmptyAndLeavesTheErrorBelowUntouched)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "a", 1, "outer");
    KT_context__push_level(ctx);
    EXPECT_ERROR(ctx, 0, "");
    EXPECT_EQ(frames_of(ctx), "");
    KT_context__err(ctx, KT_ERR_BAD_JSON, "b", 2, "inner");
    KT_context__err_stackframe_add(ctx, "c", 3);
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "inner");
    EXPECT_EQ(frames_of(ctx), "b:2 c:3 ");
    KT_context__pop_level(ctx);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "outer");
    EXPECT_EQ(frames_of(ctx), "a:1 ");
    reset();
}

TEST_F(KtContextTest, AnErrorInsideALevelIsDroppedAtItsEnd)
{
    KT_context__push_level(ctx);
    KT_context__push_level(ctx);
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "a", 1, long_text.c_str());
    KT_context__pop_level(ctx);
    EXPECT_ERROR(ctx, 0, "");
    KT_context__pop_level(ctx);
    EXPECT_ERROR(ctx, 0, "");
}

TEST_F(KtContextTest, ResettingALevelLeavesTheErrorBelow)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "a", 1, "outer");
    KT_context__push_level(ctx);
    KT_context__err_reset(ctx);
    KT_context__err(ctx, KT_ERR_BAD_JSON, "b", 2, "inner");
    KT_context__err_reset(ctx);
    EXPECT_ERROR(ctx, 0, "");
    KT_context__pop_level(ctx);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "outer");
    reset();
}

// An error in each of many levels, far more than lie inside the context.
TEST_F(KtContextTest, ManyLevelsKeepTheirErrorsApart)
{
    constexpr uint64_t depth = 50;
    for (uint64_t level = 1; level <= depth; level++) {
        if (level % 7 == 0)
            KT_context__push_level(ctx); // a level without an error in between
        KT_context__err(ctx, level, "f", static_cast<int32_t>(level), std::to_string(level).c_str());
        KT_context__push_level(ctx);
    }
    EXPECT_ERROR(ctx, 0, "");
    for (uint64_t level = depth; level >= 1; level--) {
        KT_context__pop_level(ctx);
        EXPECT_ERROR(ctx, level, std::to_string(level).c_str());
        EXPECT_EQ(frames_of(ctx), "f:" + std::to_string(level) + " ");
        if (level % 7 == 0) {
            KT_context__pop_level(ctx);
            EXPECT_ERROR(ctx, 0, "");
        }
    }
    EXPECT_ERROR(ctx, 1, "1");
    reset();
}

TEST_F(KtContextTest, FreeingGivesBackEverythingWithErrorsStillInIt)
{
    kt_failing_alloc watch{kt_failing_alloc::mode::never};
    watch.next();
    KT_context *other = nullptr;
    KT_context__alloc(&other);
    for (int level = 0; level < 20; level++) {
        KT_context__err(other, KT_ERR_NOT_FOUND, "f", 1, long_text.c_str());
        KT_context__push_level(other);
    }
    EXPECT_GT(watch.leaked(), 20u);
    KT_context__free(other);
    EXPECT_EQ(watch.leaked(), 0u);
    KT_context__free(nullptr);
}

TEST_F(KtContextTest, NoMemoryForAContextGivesNull)
{
    kt_failing_alloc fault;
    fault.next();
    KT_context *other = ctx;
    KT_context__alloc(&other);
    EXPECT_TRUE(fault.fired());
    EXPECT_EQ(other, nullptr);
}

TEST_F(KtContextTest, OrdinaryErrorsAndLevelsTakeNoMemory)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    for (int level = 0; level < 8; level++) {
        KT_context__err__generic(ctx, KT_ERR_OUT_OF_MEMORY, "f", 0);
        KT_context__err_set_description(ctx, "%s", long_text.substr(0, 255).c_str());
        for (int line = 1; line < 32; line++)
            KT_context__err_stackframe_add(ctx, "f", line);
        EXPECT_ERROR(ctx, KT_ERR_OUT_OF_MEMORY, long_text.substr(0, 255).c_str());
        EXPECT_EQ(KT_context__count_err_stackframes(ctx), 32u);
        KT_context__push_level(ctx);
        KT_context__push_level(ctx);
    }
    for (int level = 0; level < 16; level++)
        KT_context__pop_level(ctx);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    reset();
    EXPECT_FALSE(fault.fired());
}

TEST_F(KtContextTest, WithoutMemoryALongDescriptionIsCutBetweenCharacters)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 1);
    for (size_t before = 0; before < 4; before++) {
        std::string text = long_text.substr(0, before);
        while (text.size() < 400)
            text += "\xE2\x82\xAC";
        for (int way = 0; way < 2; way++) {
            if (way == 0)
                KT_context__err_set_description(ctx, "%s", text.c_str());
            else
                KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, text.c_str());
            const std::string cut = KT_context__err_description(ctx);
            EXPECT_GE(cut.size(), 250u);
            EXPECT_EQ(cut, text.substr(0, cut.size()));
            EXPECT_EQ((cut.size() - before) % 3, 0u) << cut;
        }
    }
    EXPECT_TRUE(fault.fired());
    reset();
}

TEST_F(KtContextTest, WithoutMemoryAsMuchIsKeptOfALongDescriptionAsThereIsRoomFor)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    const std::string text(400, 'x');
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, text.c_str());
    EXPECT_EQ(KT_context__err_description(ctx), text.substr(0, 255));
    KT_context__err_set_description(ctx, "%s", text.c_str());
    EXPECT_EQ(KT_context__err_description(ctx), text.substr(0, 254));
    EXPECT_TRUE(fault.fired());
    reset();
}

TEST_F(KtContextTest, WithoutMemoryNothingIsLeftOfALongDescriptionWithoutCharacters)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, std::string(400, '\x80').c_str());
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "");
    EXPECT_TRUE(fault.fired());
    reset();
}

TEST_F(KtContextTest, WithoutMemoryFramesPastTheFirstAreLeftOut)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 0);
    for (int line = 1; line < 100; line++)
        KT_context__err_stackframe_add(ctx, "f", line);
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 32u);
    const char *file = nullptr;
    int32_t line = 0;
    KT_context__get_nth_err_stackframe(ctx, 31, &file, &line);
    EXPECT_EQ(line, 31);
    reset();
}

// Eight levels with errors lie inside; the ninth finds no memory, and no error may be forgotten all the same.
TEST_F(KtContextTest, WithoutMemoryAFurtherLevelKeepsItsCode)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    for (uint64_t level = 1; level <= 8; level++) {
        KT_context__err(ctx, level, "f", 1, "held inside");
        KT_context__push_level(ctx);
    }
    EXPECT_FALSE(fault.fired());
    KT_context__err(ctx, KT_ERR_BAD_JSON, "f", 1, "a text that finds no place");
    EXPECT_TRUE(fault.fired());
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "malformed JSON text");
    KT_context__err_set_description(ctx, "nor this");
    KT_context__err_stackframe_add(ctx, "f", 2);
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "malformed JSON text");
    EXPECT_EQ(frames_of(ctx), "");

    // It cannot be set aside, so what is opened on top of it shares it, and cannot change it.
    KT_context__push_level(ctx);
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 3);
    KT_context__err_reset(ctx);
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    KT_context__push_level(ctx);
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    KT_context__err__generic(ctx, KT_ERR_NOT_FOUND, "f", 3);
    KT_context__err_set_description(ctx, "nor here");
    KT_context__err_stackframe_add(ctx, "f", 4);
    KT_context__err_reset(ctx);
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, "malformed JSON text");
    EXPECT_EQ(frames_of(ctx), "");
    KT_context__pop_level(ctx);
    KT_context__pop_level(ctx);
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    reset();
    EXPECT_ERROR(ctx, 0, "");
    for (uint64_t level = 8; level >= 1; level--) {
        KT_context__pop_level(ctx);
        EXPECT_ERROR(ctx, level, "held inside");
    }
    reset();
}

TEST_F(KtContextTest, ErrorsGiveTheirMemoryBack)
{
    kt_failing_alloc watch{kt_failing_alloc::mode::never};
    watch.next();
    const auto fail = [&] {
        KT_context__err(ctx, KT_ERR_NOT_FOUND, "f", 1, long_text.c_str());
        for (int line = 1; line < 100; line++)
            KT_context__err_stackframe_add(ctx, "f", line);
    };
    for (int level = 0; level < 20; level++) {
        fail();
        KT_context__push_level(ctx);
    }
    EXPECT_GT(watch.leaked(), 40u);
    for (int level = 0; level < 20; level++)
        KT_context__pop_level(ctx);
    fail();
    reset();
    EXPECT_EQ(watch.leaked(), 0u);
    EXPECT_FALSE(watch.fired());
}
