#include "fk/fk_names.hpp"

#include "failing_alloc.hpp"
#include "fk_random.hpp"
#include "kt_test.hpp"

#include <string>
#include <vector>

class NamesTest : public ContextTest {};

TEST_F(NamesTest, NumbersFollowTheOrderOfAdding)
{
    fk_names names{ctx};
    EXPECT_EQ(fk_find_name(names, 0, "a"), FK_NO_NUMBER) << "before anything was added";
    uint32_t number = 77;
    fk_add_name(ctx, &names, 0, "b", &number);
    EXPECT_EQ(number, 0u);
    fk_add_name(ctx, &names, 0, "a", &number);
    EXPECT_EQ(number, 1u);
    fk_add_name(ctx, &names, 0, "b", &number);
    EXPECT_EQ(number, 0u) << "a text keeps its number";
    EXPECT_EQ(fk_find_name(names, 0, "a"), 1u);
    EXPECT_EQ(fk_find_name(names, 0, "A"), FK_NO_NUMBER);
    EXPECT_EQ(fk_find_name(names, 0, ""), FK_NO_NUMBER);
}

TEST_F(NamesTest, ATextHasANumberInEachScope)
{
    fk_names names{ctx};
    uint32_t number = 0;
    fk_add_name(ctx, &names, 1, "a", &number);
    fk_add_name(ctx, &names, UINT64_C(1) << 40, "a", &number);
    EXPECT_EQ(number, 1u);
    EXPECT_EQ(fk_find_name(names, 1, "a"), 0u);
    EXPECT_EQ(fk_find_name(names, 2, "a"), FK_NO_NUMBER);
}

TEST_F(NamesTest, ManyTextsAreFoundAgain)
{
    std::vector<std::string> texts;
    for (int n = 0; n < 20000; n++)
        texts.push_back(joined({"id ", std::to_string(n * 7919)}));
    fk_names names{ctx};
    for (uint32_t n = 0; n < texts.size(); n++) {
        uint32_t number = 0;
        fk_add_name(ctx, &names, n % 3, texts[n].c_str(), &number);
        ASSERT_EQ(number, n);
    }
    for (uint32_t n = 0; n < texts.size(); n++) {
        ASSERT_EQ(fk_find_name(names, n % 3, texts[n].c_str()), n);
        ASSERT_EQ(fk_find_name(names, n % 3 + 1, texts[n].c_str()), FK_NO_NUMBER);
    }
}

TEST_F(NamesTest, MemoryThatRunsOutIsReported)
{
    const char *const texts[] = {"a", "b", "c"};
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        {
            fk_names names{ctx};
            uint32_t number = 77;
            for (const char *text : texts) {
                if (!KT_context__has_err(ctx))
                    fk_add_name(ctx, &names, 0, text, &number);
            }
            EXPECT_EQ(KT_context__has_err(ctx) != 0, fault.fired());
        }
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired())
            break;
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    }
}
