// Writing JSON texts.

#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

class JsonWriterTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_vhash__alloc(ctx, &map);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_vhash__free(ctx, map);
        ContextTest::TearDown();
    }

    KT_vhash *map = nullptr;
};

TEST_F(JsonWriterTest, AppendsToWhatTheStringHolds)
{
    KT_string *text = nullptr;
    KT_string__alloc__sz(ctx, &text, "before ");
    KT_vhash__add__int64(ctx, map, "a", 1);
    KT_vhash__to_json(ctx, map, text);
    EXPECT_OK(ctx);
    EXPECT_EQ(take(ctx, text), "before {\"a\":1}");
}

TEST_F(JsonWriterTest, EscapesWhatMustBe)
{
    std::string all;
    for (char byte = 1; byte < 0x7F; byte++)
        all += byte;
    KT_vhash *child = nullptr;
    KT_vhash__addnew__vhash(ctx, map, "\"\\\x01", &child);
    KT_vhash__add__string__sz(ctx, child, "\n", all.c_str());
    const std::string json = json_of(ctx, map);
    EXPECT_OK(ctx);
    EXPECT_EQ(json.find(R"({"\"\\\u0001":{"\n":"\u0001\u0002\u0003\u0004\u0005\u0006\u0007\b\t\n\u000b\f\r\u000e)"), 0u)
        << json;
    KT_vhash *back = nullptr;
    const char *text = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &back, json.c_str());
    KT_vhash__get__vhash(ctx, back, "\"\\\x01", &child);
    KT_vhash__get__sz(ctx, child, "\n", &text);
    EXPECT_OK(ctx);
    EXPECT_EQ(text, all);
    KT_vhash__free(ctx, back);
}

TEST_F(JsonWriterTest, RefusesTextsThatAreNotUtf8AndLeavesTheString)
{
    for (const char *text : {"\x80", "\xFF", "long enough to lie outside \xC0\xAF", "\xED\xA0\x80", "\xE2\x82"}) {
        KT_string *json = nullptr;
        KT_string__alloc__sz(ctx, &json, "before");
        KT_vhash__update__string__sz(ctx, map, "a", text);
        KT_vhash__to_json(ctx, map, json);
        EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
        reset();
        EXPECT_EQ(take(ctx, json), "before");
    }
}

TEST_F(JsonWriterTest, RefusesKeysThatAreNotUtf8)
{
    // The second map with this key shares its layout.
    for (const char *name : {"first", "second"}) {
        KT_vhash *child = nullptr;
        KT_vhash__addnew__vhash(ctx, map, name, &child);
        KT_vhash__add__null(ctx, child, "\xC3");
        KT_string *json = nullptr;
        KT_string__alloc__sz(ctx, &json, "before");
        KT_vhash__to_json(ctx, child, json);
        EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
        reset();
        EXPECT_EQ(take(ctx, json), "before");
    }
}

TEST_F(JsonWriterTest, RefusesNumbersThatAreNotFinite)
{
    for (const double number : {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::quiet_NaN()}) {
        KT_string *json = nullptr;
        KT_string__alloc__sz(ctx, &json, "before");
        KT_vhash__update__double(ctx, map, "a", number);
        KT_vhash__to_json(ctx, map, json);
        EXPECT_ERROR(ctx, KT_ERR_BAD_VALUE, "a number that is not finite has no JSON form");
        reset();
        EXPECT_EQ(take(ctx, json), "before");
    }
}

TEST_F(JsonWriterTest, NumbersComeBackExactly)
{
    std::mt19937_64 random(7);
    for (int n = 0; n < 20000; n++) {
        const uint64_t bits = random();
        double number = 0, number_back = 0;
        int64_t integer_back = 0;
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number))
            continue;
        KT_vhash__update__double(ctx, map, "double", number);
        KT_vhash__update__int64(ctx, map, "integer", static_cast<int64_t>(bits));
        KT_vhash *back = nullptr;
        const KT_variant *value = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &back, json_of(ctx, map).c_str());
        ASSERT_OK(ctx);
        KT_vhash__get_nth_pair(ctx, back, 0, nullptr, &value);
        EXPECT_EQ(value->type, KT_VARIANT_DOUBLE);
        KT_vhash__get__double(ctx, back, "double", &number_back);
        KT_vhash__get__int64(ctx, back, "integer", &integer_back);
        EXPECT_EQ(std::memcmp(&number, &number_back, sizeof number), 0);
        EXPECT_EQ(integer_back, static_cast<int64_t>(bits));
        KT_vhash__free(ctx, back);
    }
    EXPECT_OK(ctx);
}

TEST_F(JsonWriterTest, WritesEveryLengthOfTextAndKey)
{
    std::string expected = "{";
    for (size_t length = 0; length < 100; length++) {
        const std::string key = std::string(length, 'k'), text = std::string(length, 't');
        KT_vhash *child = nullptr;
        KT_vhash__addnew__vhash(ctx, map, key.c_str(), &child);
        KT_vhash__add__string__sz(ctx, child, "same key", text.c_str());
        expected += (length ? ",\"" : "\"") + key + "\":{\"same key\":\"" + text + "\"}";
    }
    EXPECT_EQ(json_of(ctx, map), expected + "}");
    EXPECT_OK(ctx);
}

// The second map has the first one's shape, the third one differs in the last byte of a key: too little for a guess.
TEST_F(JsonWriterTest, SharedKeysOfEveryLengthComeBack)
{
    for (size_t length = 1; length < 60; length++) {
        const std::string key = std::string(length - 1, 'k');
        std::string json = "{\"l\":[";
        for (const char last : {'b', 'b', 'b', 'a', 'b', 'c', 'b'})
            json += "{\"first\":1,\"" + key + last + "\":2},";
        json.back() = ']';
        json += "}";
        KT_vhash *read = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &read, json.c_str());
        EXPECT_EQ(json_of(ctx, read), json);
        KT_vhash__free(ctx, read);
    }
    EXPECT_OK(ctx);
}

// Writes the map with every allocation failing in turn: the text is as it was, or whole.
void expect_all_or_nothing(KT_context *ctx, const KT_vhash *map)
{
    const std::string expected = json_of(ctx, map);
    bool is_done = false;
    for (kt_failing_alloc fault; !is_done;) {
        fault.pause();
        KT_string *json = nullptr;
        KT_string__alloc__sz(ctx, &json, "before");
        fault.next();
        KT_vhash__to_json(ctx, map, json);
        fault.pause();
        is_done = !fault.fired();
        EXPECT_FAILED(ctx, is_done ? 0 : KT_ERR_OUT_OF_MEMORY);
        KT_context__err_reset(ctx);
        EXPECT_EQ(take(ctx, json), is_done ? "before" + expected : "before");
    }
}

TEST_F(JsonWriterTest, SurvivesFailingAllocations)
{
    KT_vhash *deep = map;
    for (int n = 0; n < 100; n++) {
        KT_varray *list = nullptr;
        KT_vhash__add__string__sz(ctx, deep, "text", std::string(200, 'x').c_str());
        KT_vhash__add__string__sz(ctx, deep, "special text", std::string(200, '\n').c_str());
        KT_vhash__add__null(ctx, deep, std::string(200, '\n').c_str());
        KT_vhash__addnew__varray(ctx, deep, "list", &list);
        for (int i = 0; i < 100; i++)
            KT_varray__append__string__sz(ctx, list, "short");
        KT_vhash__addnew__vhash(ctx, deep, "deeper", &deep);
    }
    expect_all_or_nothing(ctx, map);
}

// The room that a text with many escapes takes is asked for by itself.
TEST_F(JsonWriterTest, SurvivesFailingAllocationsForOneText)
{
    KT_vhash__add__string__sz(ctx, map, "special text", std::string(10000, '\n').c_str());
    expect_all_or_nothing(ctx, map);
}

// What a document as a whole took in JSON says nothing of a map in it.
TEST_F(JsonWriterTest, TakesRoomForWhatItWritesOnly)
{
    KT_vhash *read = nullptr;
    KT_vhash *child = nullptr;
    KT_string *json = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &read,
                                   (R"({"child":{"a":1},"text":")" + std::string(200000, 'x') + "\"}").c_str());
    KT_vhash__get__vhash(ctx, read, "child", &child);
    KT_string__alloc(ctx, &json);
    {
        kt_failing_alloc fault(kt_failing_alloc::mode::from_there_on, 100000);
        fault.next();
        KT_vhash__to_json(ctx, child, json);
        EXPECT_FALSE(fault.fired());
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(take(ctx, json), R"({"a":1})");
    KT_vhash__free(ctx, read);
}

} // namespace
