// Decimal constants as whole numbers of units.

#include "kt_test.hpp"
#include "tov_parse_defin.h"

#include "failing_alloc.hpp"

class ScaledInteger : public ContextTest {};

struct scaled_case {
    const char *name;
    std::string text;
    uint32_t scale;
    int64_t expected;
};

static const scaled_case scaled_cases[] = {
    {"fewer decimals than the scale", "12.5", 2, 1250},
    {"a negative fraction", "-0.25", 4, -2500},
    {"no decimals", "7", 3, 7000},
    {"as many decimals as the scale", "1.23", 2, 123},
    {"a point without decimals", "5.", 2, 500},
    {"a point without digits before it", ".5", 1, 5},
    {"a plus", "+1.5", 1, 15},
    {"scale 0", "7", 0, 7},
    {"scale 0 joins the digits of a fraction", "1.5", 0, 15},
    {"scale 0 takes any number of points", "1.2.3", 0, 123},
    {"only the low 8 bits of the scale count", "1.5", 0x101, 15},
    {"a scale with low bits 0 is scale 0", "1.5", 0x100, 15},
    {"zero at the largest scale", "0", 255, 0},
    {"a product that does not fit wraps around", "1", 20, 7766279631452241920},
    {"at the largest scale all bits are shifted out", "1", 255, 0},
    {"the smallest number", "-9223372036854775808", 0, INT64_MIN},
    {"the largest number with a point in it", "922337203685477.5807", 4, INT64_MAX},
    {"39 characters", "000000000000000000000000000000000000012", 1, 120},
    {"40 characters of which one is the point", "0000000000000000000000000000000000000.12", 2, 12},
    {"any number of points", "1" + std::string(100, '.') + "2", 0, 12},
};

TEST_F(ScaledInteger, CountsUnits)
{
    for (const scaled_case &c : scaled_cases) {
        SCOPED_TRACE(c.name);
        int64_t value = -1;
        tov_convert_decimal_constant_to_scaled_integer(ctx, c.text.c_str(), c.scale, &value);
        EXPECT_OK(ctx);
        EXPECT_EQ(value, c.expected);
        reset();
    }
}

struct refused_case {
    const char *name;
    std::string text;
    uint32_t scale;
    uint64_t code;
    const char *description; // null for any
};

static const refused_case refused_cases[] = {
    {"one decimal too many", "1.234", 2, KT_ERR_NOT_FOUND, "problem with decimal string for scale=2: 1.234"},
    {"a second point", "1.2.3", 4, KT_ERR_NOT_FOUND, "problem with decimal string for scale=4: 1.2.3"},
    {"a second point right after the first", "1..", 4, KT_ERR_NOT_FOUND,
     "problem with decimal string for scale=4: 1.."},
    {"the scale in the message is the one that counts", "1.23", 0x101, KT_ERR_NOT_FOUND,
     "problem with decimal string for scale=1: 1.23"},
    {"a string", "'1'", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"an exponent", "1e3", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"a space after the minus", "- 1", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"a point alone", ".", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"nothing", "", 0, KT_ERR_BAD_NUMBER, nullptr},
    {"a number that 64 bits do not hold", "9223372036854775808", 0, KT_ERR_BAD_NUMBER, nullptr},
    {"39 nines", std::string(39, '9'), 0, KT_ERR_BAD_NUMBER, nullptr},
    {"40 characters, zeros too", std::string(39, '0') + "1", 0, KT_ERR_BAD_NUMBER,
     "'0000000000000000000000000000000000000001' is too long for a number"},
    {"41 characters of which one is the point", "-" + std::string(39, '0') + ".1", 2, KT_ERR_BAD_NUMBER, nullptr},
    {"a long text", std::string(100000, '9'), 4, KT_ERR_BAD_NUMBER, nullptr},
    {"a long text with many points", std::string(100, '.') + std::string(100, '9'), 0, KT_ERR_BAD_NUMBER, nullptr},
};

TEST_F(ScaledInteger, RefusesOtherTexts)
{
    for (const refused_case &c : refused_cases) {
        SCOPED_TRACE(c.name);
        int64_t value = -1;
        tov_convert_decimal_constant_to_scaled_integer(ctx, c.text.c_str(), c.scale, &value);
        EXPECT_FAILED(ctx, c.code);
        if (c.description) {
            EXPECT_STREQ(KT_context__err_description(ctx), c.description);
        }
        EXPECT_EQ(value, -1);
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, KT_context__count_err_stackframes(ctx) - 1, &file, &line);
        EXPECT_STREQ(file, "src/core/common/tov_parse_defin");
        reset();
    }
}

TEST_F(ScaledInteger, TakesNoMemory)
{
    kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
    fault.next();
    int64_t value = -1;
    tov_convert_decimal_constant_to_scaled_integer(ctx, "12.5", 2, &value);
    EXPECT_FALSE(fault.fired());
    EXPECT_EQ(value, 1250);
}
