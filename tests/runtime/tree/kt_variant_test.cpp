// One value: its size and numbers are part of the interface.

#include "kt_test.hpp"

namespace {

static_assert(sizeof(KT_variant) == 16 && offsetof(KT_variant, type) == 0);
static_assert(KT_VARIANT_NULL == 0 && KT_VARIANT_BOOL == 1 && KT_VARIANT_INT64 == 2 && KT_VARIANT_DOUBLE == 3 &&
              KT_VARIANT_STRING == 4 && KT_VARIANT_VHASH == 5 && KT_VARIANT_VARRAY == 6);

class VariantTest : public ContextTest {};

TEST_F(VariantTest, ReadsTextsOfEveryLength)
{
    KT_vhash *map = nullptr;
    KT_vhash__alloc(ctx, &map);
    for (size_t length = 0; length < 40; length++) {
        const std::string key = "k" + std::to_string(length), written(length, 'x');
        KT_vhash__add__string__sz(ctx, map, key.c_str(), written.c_str());
        const KT_variant *value = nullptr;
        const char *read = nullptr;
        KT_vhash__get_nth_pair(ctx, map, static_cast<uint32_t>(length), nullptr, &value);
        KT_variant__get__sz(ctx, value, &read);
        EXPECT_OK(ctx);
        EXPECT_EQ(read, written);
    }
    KT_vhash__free(ctx, map);
}

TEST_F(VariantTest, RefusesWhatIsNoText)
{
    KT_vhash *map = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &map, R"({"a":null,"b":true,"c":1,"d":1.5,"e":{},"f":[]})");
    ASSERT_OK(ctx);
    for (uint32_t n = 0; n < 6; n++) {
        const KT_variant *value = nullptr;
        const char *text = "preset";
        KT_vhash__get_nth_pair(ctx, map, n, nullptr, &value);
        KT_variant__get__sz(ctx, value, &text);
        EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "the value is not a string");
        EXPECT_STREQ(text, "preset");
        reset();
    }
    KT_vhash__free(ctx, map);
}

} // namespace
