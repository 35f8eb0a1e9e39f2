// Maps: reading by key and by position.

#include "failing_alloc.hpp"
#include "kt_chars.h"
#include "kt_test.hpp"

#include <string>
#include <vector>

namespace {

class VhashReadTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_vhash__alloc__from_json__sz(
            ctx, &map,
            R"({"null":null,"true":true,"int":7,"big":4294967295,"too big":4294967296,"negative":-2147483648,)"
            R"("too small":-2147483649,"real":1.5,"text":"t","map":{"x":1},"list":[1],"truth":true})");
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_vhash__free(ctx, map);
        ContextTest::TearDown();
    }

    KT_vhash *map = nullptr;
};

TEST_F(VhashReadTest, GetsValuesOfTheirTypes)
{
    KT_vhash *child = nullptr;
    KT_varray *list = nullptr;
    const char *text = nullptr;
    int64_t big = 0;
    int32_t small = 0;
    double real = 0, whole = 0;
    KT_bool flag = 0;
    KT_vhash__get__vhash(ctx, map, "map", &child);
    KT_vhash__get__varray(ctx, map, "list", &list);
    KT_vhash__get__sz(ctx, map, "text", &text);
    KT_vhash__get__int64(ctx, map, "too big", &big);
    KT_vhash__get__int32(ctx, map, "int", &small);
    KT_vhash__get__double(ctx, map, "real", &real);
    KT_vhash__get__double(ctx, map, "int", &whole);
    KT_vhash__get__bool(ctx, map, "true", &flag);
    EXPECT_OK(ctx);
    EXPECT_EQ(json_of(ctx, child), R"({"x":1})");
    EXPECT_NE(list, nullptr);
    EXPECT_STREQ(text, "t");
    EXPECT_EQ(big, INT64_C(4294967296));
    EXPECT_EQ(small, 7);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(whole, 7.0);
    EXPECT_EQ(flag, 1);
}

TEST_F(VhashReadTest, ReadsUnsigned32BitNumbersAsTheSameBits)
{
    int32_t value = 0;
    KT_vhash__get__int32(ctx, map, "big", &value);
    EXPECT_EQ(value, -1);
    KT_vhash__get__int32(ctx, map, "negative", &value);
    EXPECT_EQ(value, INT32_MIN);
    EXPECT_OK(ctx);
    for (const char *key : {"too big", "too small"}) {
        value = 99;
        KT_vhash__get__int32(ctx, map, key, &value);
        EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
        reset();
        EXPECT_EQ(value, 99);
    }
}

// One row for each reading operation: how it is called, and the key whose value it takes.
struct reading {
    const char *name;
    const char *fitting;
    bool is_check;
    // Presets its output, reads, and says whether the output is still what it was, or null (for a check).
    bool (*leaves_output)(KT_context *, const KT_vhash *, const char *key);
};

template <class T, class Read> bool leaves(KT_context *ctx, const KT_vhash *map, const char *key, T preset, Read read)
{
    T value = preset;
    read(ctx, map, key, &value);
    return value == preset;
}

#define READING(kind, type, T, preset, fitting)                                                                \
    {                                                                                                          \
#kind " " #type, fitting,                                                                              \
            #kind[0] == 'c',                                                                                   \
                  [](KT_context * ctx, const KT_vhash *map,                                                    \
                     const char *key) { return leaves<T>(ctx, map, key, preset, KT_vhash__##kind##__##type); } \
    }

KT_vhash *const some_map = reinterpret_cast<KT_vhash *>(16);
KT_varray *const some_list = reinterpret_cast<KT_varray *>(16);

const reading readings[] = {
    READING(get, vhash, KT_vhash *, some_map, "map"), READING(get, varray, KT_varray *, some_list, "list"),
    READING(get, sz, const char *, "preset", "text"), READING(get, int64, int64_t, 99, "int"),
    READING(get, int32, int32_t, 99, "int"),          READING(get, bool, KT_bool, 99, "true"),
    READING(get, double, double, 99, "real"),         READING(check, int64, int64_t, 99, "int"),
    READING(check, bool, KT_bool, 99, "true"),
};

TEST_F(VhashReadTest, GetFailsWithoutTheKeyAndLeavesTheOutput)
{
    for (const reading &r : readings) {
        SCOPED_TRACE(r.name);
        EXPECT_TRUE(r.leaves_output(ctx, map, "absent"));
        if (r.is_check) {
            EXPECT_OK(ctx);
        } else {
            EXPECT_ERROR(ctx, KT_ERR_KEY_NOT_FOUND, "no key 'absent'");
        }
        reset();
    }
}

TEST_F(VhashReadTest, RefusesValuesOfOtherTypes)
{
    for (const reading &r : readings) {
        for (const char *key : {"true", "int", "real", "text", "map", "list"}) {
            if (std::string(key) == r.fitting || (std::string(r.name) == "get double" && std::string(key) == "int"))
                continue;
            SCOPED_TRACE(std::string(r.name) + " of " + key);
            EXPECT_TRUE(r.leaves_output(ctx, map, key));
            EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
            EXPECT_EQ(std::string(KT_context__err_description(ctx)).find(std::string("key '") + key + "' is not a"),
                      0u);
            reset();
        }
    }
}

TEST_F(VhashReadTest, ANullIsAWrongTypeForGetAndAbsentForCheck)
{
    for (const reading &r : readings) {
        SCOPED_TRACE(r.name);
        EXPECT_TRUE(r.leaves_output(ctx, map, "null"));
        EXPECT_FAILED(ctx, r.is_check ? 0 : KT_ERR_WRONG_TYPE);
        reset();
    }
}

TEST_F(VhashReadTest, CheckSetsAPointerToNullWhenThereIsNothing)
{
    for (const char *key : {"absent", "null"}) {
        KT_vhash *child = some_map;
        KT_varray *list = some_list;
        const char *text = "preset";
        KT_vhash__check__vhash(ctx, map, key, &child);
        KT_vhash__check__varray(ctx, map, key, &list);
        KT_vhash__check__sz(ctx, map, key, &text);
        EXPECT_OK(ctx);
        EXPECT_EQ(child, nullptr);
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(text, nullptr);
    }
}

// A map of one map for each key.
KT_vhash *map_of_maps(KT_context *ctx, const std::vector<std::string> &keys)
{
    KT_vhash *maps = nullptr;
    KT_vhash *child = nullptr;
    KT_vhash__alloc(ctx, &maps);
    for (const std::string &key : keys)
        KT_vhash__addnew__vhash(ctx, maps, key.c_str(), &child);
    return maps;
}

TEST_F(VhashReadTest, CheckFoldedFindsSmallLettersUnderAnyByteAtAnyPlace)
{
    for (size_t length = 1; length <= 40; length++) {
        for (size_t at = 0; at < length; at++) {
            for (int byte = 1; byte < 256; byte++) {
                std::string key(length, 'Q');
                std::string folded(length, 'q');
                key[at] = static_cast<char>(byte);
                folded[at] = static_cast<char>(KT_char__folded(byte));
                KT_vhash *maps = map_of_maps(ctx, {folded});
                KT_vhash *expected = nullptr, *found = nullptr;
                const char *found_key = nullptr;
                KT_vhash__get__vhash(ctx, maps, folded.c_str(), &expected);
                KT_vhash__check_folded__vhash(ctx, maps, key.c_str(), &found_key, &found);
                ASSERT_OK(ctx);
                ASSERT_EQ(found, expected) << key;
                ASSERT_EQ(found_key, folded);
                KT_vhash__free(ctx, maps);
            }
        }
    }
}

TEST_F(VhashReadTest, CheckFoldedDoesNotFindCapitals)
{
    for (const char *key : {"A", "MixedCase", "ALongKeyWithCapitals", "\xC3\x84 with a capital A"}) {
        KT_vhash *maps = map_of_maps(ctx, {key});
        KT_vhash *found = some_map;
        const char *found_key = "preset";
        KT_vhash__check_folded__vhash(ctx, maps, key, &found_key, &found);
        EXPECT_OK(ctx);
        EXPECT_EQ(found, nullptr);
        EXPECT_STREQ(found_key, "preset");
        KT_vhash__free(ctx, maps);
    }
}

TEST_F(VhashReadTest, CheckFoldedSaysWhatIsNotAMap)
{
    KT_vhash *found = some_map;
    const char *found_key = "preset";
    KT_vhash__check_folded__vhash(ctx, map, "TOO BIG", &found_key, &found);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'too big' is not a map");
    EXPECT_EQ(found, some_map);
    EXPECT_STREQ(found_key, "preset");
    KT_vhash__check_folded__vhash(ctx, map, "map", &found_key, &found); // does nothing any more
    EXPECT_EQ(found, some_map);
    reset();
    for (const char *key : {"Absent", "NULL"}) {
        found = some_map;
        KT_vhash__check_folded__vhash(ctx, map, key, &found_key, &found);
        EXPECT_OK(ctx);
        EXPECT_EQ(found, nullptr);
    }
}

TEST_F(VhashReadTest, CheckFoldedTakesMemoryForALongKeyWithCapitalsOnly)
{
    KT_vhash *maps = map_of_maps(ctx, {"a key that is long", "short"});
    for (const char *key : {"a key that is long", "SHORT", "A key that is long"}) {
        kt_failing_alloc fault(kt_failing_alloc::mode::from_there_on);
        fault.next();
        KT_vhash *found = some_map;
        const char *found_key = nullptr;
        KT_vhash__check_folded__vhash(ctx, maps, key, &found_key, &found);
        EXPECT_FAILED(ctx, *key == 'A' ? KT_ERR_OUT_OF_MEMORY : 0);
        EXPECT_EQ(found == some_map, *key == 'A');
        reset();
    }
    KT_vhash__free(ctx, maps);
}

TEST_F(VhashReadTest, CheckReadsWhatIsThereAndRefusesOtherTypes)
{
    KT_vhash *child = nullptr;
    KT_varray *list = nullptr;
    const char *text = nullptr;
    KT_vhash__check__vhash(ctx, map, "map", &child);
    KT_vhash__check__varray(ctx, map, "list", &list);
    KT_vhash__check__sz(ctx, map, "text", &text);
    EXPECT_OK(ctx);
    EXPECT_NE(child, nullptr);
    EXPECT_NE(list, nullptr);
    EXPECT_STREQ(text, "t");
    KT_vhash__check__vhash(ctx, map, "text", &child);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'text' is not a map");
    reset();
    KT_vhash__check__varray(ctx, map, "map", &list);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'map' is not a list");
    reset();
    KT_vhash__check__sz(ctx, map, "int", &text);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'int' is not a string");
    reset();
}

TEST_F(VhashReadTest, HasLooksAtTheKeyOnly)
{
    KT_bool has = 7;
    KT_vhash__has(ctx, map, "null", &has);
    EXPECT_EQ(has, 1);
    KT_vhash__has(ctx, map, "Null", &has);
    EXPECT_EQ(has, 0);
    EXPECT_OK(ctx);
}

TEST_F(VhashReadTest, ReadsByPosition)
{
    const char *key = nullptr, *text = nullptr;
    const KT_variant *value = nullptr;
    KT_vhash *child = nullptr;
    uint64_t number = 0;
    KT_vhash__get_nth_pair(ctx, map, 1, &key, &value);
    EXPECT_STREQ(key, "true");
    EXPECT_EQ(value->type, KT_VARIANT_BOOL);
    KT_vhash__get_nth_pair__uint64(ctx, map, 2, &key, &number);
    EXPECT_STREQ(key, "int");
    EXPECT_EQ(number, 7u);
    KT_vhash__get_nth_pair__sz(ctx, map, 8, &key, &text);
    EXPECT_STREQ(key, "text");
    EXPECT_STREQ(text, "t");
    KT_vhash__get_nth_pair__vhash(ctx, map, 9, &key, &child);
    EXPECT_STREQ(key, "map");
    EXPECT_EQ(json_of(ctx, child), R"({"x":1})");
    KT_vhash__get_nth_pair(ctx, map, 0, nullptr, nullptr);
    KT_vhash__get_nth_pair__sz(ctx, map, 8, nullptr, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(VhashReadTest, RefusesPositionsPastTheEndAndOtherTypes)
{
    const char *key = "preset", *text = "preset";
    const KT_variant *value = nullptr;
    uint64_t number = 99;
    KT_vhash__get_nth_pair(ctx, map, 12, &key, &value);
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_RANGE, "no pair 12 in a map of 12");
    reset();
    KT_vhash__get_nth_pair__uint64(ctx, map, 5, &key, &number);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'negative' is not an unsigned 64-bit integer");
    reset();
    KT_vhash__get_nth_pair__uint64(ctx, map, 7, &key, &number);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'real' is not an unsigned 64-bit integer");
    reset();
    KT_vhash__get_nth_pair__sz(ctx, map, 0, &key, &text);
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "key 'null' is not a string");
    reset();
    EXPECT_STREQ(key, "preset");
    EXPECT_STREQ(text, "preset");
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(number, 99u);
}

TEST_F(VhashReadTest, ForeachVisitsPairsInOrderAndMayChangeChildren)
{
    std::string keys;
    KT_vhash__foreach(
        ctx, map,
        [](KT_context *context, void *data, const char *key, KT_variant *value) {
            *static_cast<std::string *>(data) += key + std::string(",");
            if (value->type == KT_VARIANT_VHASH)
                KT_vhash__remove(context, value->as.vhash, "x");
        },
        &keys);
    EXPECT_OK(ctx);
    EXPECT_EQ(keys, "null,true,int,big,too big,negative,too small,real,text,map,list,truth,");
    KT_vhash *child = nullptr;
    KT_vhash__get__vhash(ctx, map, "map", &child);
    EXPECT_EQ(json_of(ctx, child), "{}");
}

TEST_F(VhashReadTest, ForeachStopsAtAFailure)
{
    int visits = 0;
    KT_vhash__foreach(
        ctx, map,
        [](KT_context *context, void *data, const char *, KT_variant *) {
            if (++*static_cast<int *>(data) == 3)
                KT_context__err(context, KT_ERR_UNEXPECTED_VALUE, "here", 1, "enough");
        },
        &visits);
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "enough");
    reset();
    EXPECT_EQ(visits, 3);
}

} // namespace
