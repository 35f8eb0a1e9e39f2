// Reading JSON texts.

#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <clocale>
#include <vector>

namespace {

class JsonReaderTest : public ContextTest {
  protected:
    // The JSON text of what was read, or "(refused)".
    std::string read(const std::string &text)
    {
        KT_vhash *map = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &map, text.c_str());
        if (KT_context__has_err(ctx)) {
            EXPECT_EQ(map, nullptr);
            return "(refused)";
        }
        const std::string result = json_of(ctx, map);
        KT_vhash__free(ctx, map);
        return result;
    }
};

struct accepted_case {
    const char *name;
    const char *text;
    const char *expected; // null: the text itself
};

const accepted_case accepted_cases[] = {
    {"an empty object", "{}", nullptr},
    {"blanks everywhere", " \t\r\n{ \"a\" : [ 1 , { } , [ ] ] , \"b\" : null } \n", R"({"a":[1,{},[]],"b":null})"},
    {"a byte-order mark", "\xEF\xBB\xBF{\"a\":1}", R"({"a":1})"},
    {"members in the order of the text", R"({"z":1,"a":2,"m":3})", nullptr},
    {"words", R"({"a":true,"b":false,"c":null})", nullptr},
    {"keys that differ in case", R"({"a":1,"A":2})", nullptr},
    {"an empty key", R"({"":1})", nullptr},
    {"the same keys in sibling objects", R"({"x":{"a":1,"b":2},"y":{"a":3,"b":4},"z":{"b":5,"a":6}})", nullptr},
    {"more than sixteen members",
     R"({"m":{"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":1,"k":2,"l":3,"m":4,)"
     R"("n":5,"o":6,"p":7,"q":8,"r":9}})",
     nullptr},
    {"every short escape", R"({"a":"\"\\\/\b\f\n\r\t"})", R"({"a":"\"\\/\b\f\n\r\t"})"},
    {"escapes of two, three and four bytes of UTF-8", R"({"a":"\u00e9\u20ac\ud83d\ude00"})",
     "{\"a\":\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\"}"},
    {"the first and last of each length of UTF-8 as escapes",
     R"({"a":"\u0001\u007f\u0080\u07ff\u0800\ud7ff\ue000\uffff\ud800\udc00\udbff\udfff"})",
     "{\"a\":\"\\u0001\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
     "\xF4\x8F\xBF\xBF\"}"},
    {"an escape that could have been plain", R"({"\u0061":"\u0041"})", R"({"a":"A"})"},
    {"the first and last of each length of UTF-8",
     "{\"a\":\"\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\"}",
     nullptr},
    {"a delete character", "{\"a\":\"\x7F\"}", nullptr},
    {"the largest integers", R"({"a":9223372036854775807,"b":-9223372036854775808})", nullptr},
    {"a negative zero is the integer zero", R"({"a":-0})", R"({"a":0})"},
    {"a double stays one", R"({"a":1.0,"b":1e2,"c":-0.0,"d":1E+2,"e":5e-324,"f":1.7976931348623157e308})",
     R"({"a":1.0,"b":100.0,"c":-0.0,"d":100.0,"e":5e-324,"f":1.7976931348623157e+308})"},
    {"a double is rounded correctly", R"({"a":0.1,"b":9007199254740993.0,"c":2.2250738585072011e-308})",
     R"({"a":0.1,"b":9007199254740992.0,"c":2.225073858507201e-308})"},
    {"a double too small to hold is zero", R"({"a":1e-400,"b":-1e-400})", R"({"a":0.0,"b":-0.0})"},
};

TEST_F(JsonReaderTest, Accepts)
{
    for (const accepted_case &c : accepted_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(read(c.text), c.expected ? c.expected : c.text);
        EXPECT_OK(ctx);
    }
}

// Which of the two it is depends on digits and exponent together.
TEST_F(JsonReaderTest, TellsNumbersTooSmallFromNumbersTooLarge)
{
    const std::string zeros(400, '0'), small = R"({"a":0.0})", negative = R"({"a":-0.0})", refused = "(refused)";
    const struct {
        std::string number;
        std::string expected;
    } cases[] = {
        {"0." + zeros + "1", small},
        {"-0." + zeros + "1", negative},
        {"0." + zeros + "1e1", small},
        {"0." + zeros + "1E+50", small},
        {"0." + zeros + "1e-9999999999", small},
        {"0." + zeros + "1e+400", R"({"a":0.1})"},
        {"0." + zeros + "1e+800", refused},
        {"0." + zeros + "1e9999999999", refused},
        {"1" + zeros + ".0", refused},
        {"-1" + zeros + "e-1", refused},
        {"1" + zeros + "e-50", refused},
        {"1" + zeros + "e-400", R"({"a":1.0})"},
        {"1" + zeros + "e-800", small},
        {"1e-9999999999", small},
        {"1e9999999999", refused},
        {"0e9999999999", small},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(read("{\"a\":" + c.number + "}"), c.expected) << c.number;
        EXPECT_FAILED(ctx, c.expected == refused ? KT_ERR_BAD_JSON : 0);
        reset();
    }
}

struct refused_case {
    const char *name;
    const char *text;
    const char *description; // behind "JSON text, "
};

const refused_case refused_cases[] = {
    {"nothing", "", "line 1, column 1: expected '{', found the end"},
    {"blanks only", " \n ", "line 2, column 2: expected '{', found the end"},
    {"a list", "[1]", "line 1, column 1: expected '{', found '['"},
    {"a number", "7", "line 1, column 1: expected '{', found '7'"},
    {"an open object", "{", "line 1, column 2: expected a key in quotes, found the end"},
    {"a key without quotes", "{a:1}", "line 1, column 2: expected a key in quotes, found 'a'"},
    {"a key without a colon", "{\"a\" 1}", "line 1, column 6: expected ':', found '1'"},
    {"a key without a value", "{\"a\":}", "line 1, column 6: expected a value, found '}'"},
    {"a comma at the end of an object", "{\"a\":1,}", "line 1, column 8: expected a key in quotes, found '}'"},
    {"a comma at the end of a list", "{\"a\":[1,]}", "line 1, column 9: expected a value, found ']'"},
    {"no comma in an object", "{\"a\":1\n \"b\":2}", "line 2, column 2: expected ',' or '}', found '\"'"},
    {"no comma in a list", "{\"a\":[1 2]}", "line 1, column 9: expected ',' or ']', found '2'"},
    {"the wrong closing bracket", "{\"a\":[1}", "line 1, column 8: expected ',' or ']', found '}'"},
    {"a list that is open at the end", "{\"a\":[1", "line 1, column 8: expected ',' or ']', found the end"},
    {"text behind the object", "{} x", "line 1, column 4: expected nothing after the object, found 'x'"},
    {"a second object", "{\"a\":1}{}", "line 1, column 8: expected nothing after the object, found '{'"},
    {"a blank in the place of a digit", "{\"a\":1. }", "line 1, column 8: expected a digit, found byte 0x20"},
    {"another word that is none", "{\"a\":abc}", "line 1, column 6: expected a value, found 'a'"},
    {"a word that is none", "{\"a\":nul}", "line 1, column 6: expected a value, found 'n'"},
    {"a text that is open at the end", "{\"a\":\"x", "line 1, column 8: expected a closing quote, found the end"},
    {"a long text that is open at the end", "{\"a\":\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
     "line 1, column 37: expected a closing quote, found the end"},
    {"a line feed in a text", "{\"a\":\"x\ny\"}",
     "line 1, column 8: expected an escape instead of a control character, found byte 0x0A"},
    {"an unknown escape", "{\"a\":\"\\x\"}",
     "line 1, column 8: expected one of \"\\/bfnrtu after a backslash, found 'x'"},
    {"a backslash at the end", "{\"a\":\"\\",
     "line 1, column 8: expected one of \"\\/bfnrtu after a backslash, found the end"},
    {"a short unicode escape", "{\"a\":\"\\u12\"}", "line 1, column 11: expected four hexadecimal digits, found '\"'"},
    {"a NUL", "{\"a\":\"\\u0000\"}", "line 1, column 7: expected a text without a NUL, found '\\'"},
    {"a NUL in a key", "{\"a\\u0000\":1}", "line 1, column 4: expected a text without a NUL, found '\\'"},
    {"a lone high surrogate", "{\"a\":\"\\ud800\"}",
     "line 1, column 13: expected a low surrogate after a high one, found '\"'"},
    {"a high surrogate and no low one", "{\"a\":\"\\ud800\\u0041\"}",
     "line 1, column 13: expected a low surrogate after a high one, found '\\'"},
    {"a high surrogate and another escape", R"({"a":"\ud800\n\udc00"})",
     "line 1, column 13: expected a low surrogate after a high one, found '\\'"},
    {"a high surrogate and a code beyond the low ones", R"({"a":"\ud800\ue000"})",
     "line 1, column 13: expected a low surrogate after a high one, found '\\'"},
    {"a high surrogate and a short escape", R"({"a":"\ud800\udc0"})",
     "line 1, column 18: expected four hexadecimal digits, found '\"'"},
    {"a lone low surrogate", "{\"a\":\"\\udc00\"}",
     "line 1, column 7: expected a high surrogate before a low one, found '\\'"},
    {"a byte that begins no UTF-8", "{\"a\":\"\xFF\"}", "line 1, column 7: expected UTF-8, found byte 0xFF"},
    {"an overlong sequence", "{\"a\":\"\xC0\xAF\"}", "line 1, column 7: expected UTF-8, found byte 0xC0"},
    {"an overlong sequence of three", "{\"a\":\"\xE0\x9F\xBF\"}", "line 1, column 7: expected UTF-8, found byte 0xE0"},
    {"an overlong sequence of four", "{\"a\":\"\xF0\x8F\xBF\xBF\"}",
     "line 1, column 7: expected UTF-8, found byte 0xF0"},
    {"a surrogate in UTF-8", "{\"a\":\"\xED\xA0\x80\"}", "line 1, column 7: expected UTF-8, found byte 0xED"},
    {"a code point beyond Unicode", "{\"a\":\"\xF4\x90\x80\x80\"}",
     "line 1, column 7: expected UTF-8, found byte 0xF4"},
    {"a byte that follows none", "{\"a\":\"\x80\"}", "line 1, column 7: expected UTF-8, found byte 0x80"},
    {"a sequence of three without its second byte", "{\"a\":\"\xE2x\x82\"}",
     "line 1, column 7: expected UTF-8, found byte 0xE2"},
    {"a sequence of four without its second byte", "{\"a\":\"\xF0xxx\"}",
     "line 1, column 7: expected UTF-8, found byte 0xF0"},
    {"a sequence of four without its third byte", "{\"a\":\"\xF0\x90xx\"}",
     "line 1, column 7: expected UTF-8, found byte 0xF0"},
    {"a sequence of four without its fourth byte", "{\"a\":\"\xF0\x90\x80x\"}",
     "line 1, column 7: expected UTF-8, found byte 0xF0"},
    {"a sequence cut off", "{\"a\":\"\xE2\x82\"}", "line 1, column 7: expected UTF-8, found byte 0xE2"},
    {"columns are characters", "{\"\xC3\xA9\":x}", "line 1, column 6: expected a value, found 'x'"},
    {"a leading zero", "{\"a\":01}", "line 1, column 7: expected no digit after a leading zero, found '1'"},
    {"a plus sign", "{\"a\":+1}", "line 1, column 6: expected a value, found '+'"},
    {"a minus sign alone", "{\"a\":-}", "line 1, column 7: expected a digit, found '}'"},
    {"a fraction without digits", "{\"a\":1.}", "line 1, column 8: expected a digit, found '}'"},
    {"an exponent without digits", "{\"a\":1e+}", "line 1, column 9: expected a digit, found '}'"},
    {"a fraction without an integer part", "{\"a\":.5}", "line 1, column 6: expected a value, found '.'"},
    {"an integer beyond 64 bits", "{\"a\":9223372036854775808}",
     "line 1, column 6: expected an integer that 64 bits hold, found '9'"},
    {"a negative integer beyond 64 bits", "{\"a\":-9223372036854775809}",
     "line 1, column 6: expected an integer that 64 bits hold, found '-'"},
    {"an integer of thirty digits", "{\"a\":100000000000000000000000000000}",
     "line 1, column 6: expected an integer that 64 bits hold, found '1'"},
    {"a double too large to hold", "{\"a\":1e400}",
     "line 1, column 6: expected a number within the range of a double, found '1'"},
    {"a comment", "{/**/}", "line 1, column 2: expected a key in quotes, found '/'"},
    {"a repeated key in the outermost object", "{\"a\":1,\n\"a\":2}",
     "line 2, column 1: expected a key that the object does not have yet, found '\"'"},
    {"a repeated key in a small object", R"({"x":{"a":1,"b":2,"a":3}})",
     "line 1, column 19: expected a key that the object does not have yet, found '\"'"},
    {"a repeated key in an object whose keys were met before", R"({"x":{"a":1},"y":{"a":1,"b":2},"z":{"a":1,"a":2}})",
     "line 1, column 43: expected a key that the object does not have yet, found '\"'"},
    {"a repeated key in a large object",
     R"({"x":{"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10,"b":0}})",
     "line 1, column 68: expected a key that the object does not have yet, found '\"'"},
    {"a long key repeated", R"({"a key of more than fourteen":1,"a key of more than fourteen":2})",
     "line 1, column 34: expected a key that the object does not have yet, found '\"'"},
    {"a key repeated in another spelling", R"({"a":1,"\u0061":2})",
     "line 1, column 8: expected a key that the object does not have yet, found '\"'"},
};

TEST_F(JsonReaderTest, RefusesAndSaysWhere)
{
    for (const refused_case &c : refused_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(read(c.text), "(refused)");
        EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, (std::string("JSON text, ") + c.description).c_str());
        reset();
    }
}

std::string nested(size_t depth)
{
    std::string text;
    for (size_t n = 0; n < depth; n++)
        text += n % 2 ? "[" : "{\"a\":";
    if (depth % 2)
        text += "1";
    for (size_t n = depth; n-- > 0;)
        text += n % 2 ? "]" : "}";
    return text;
}

TEST_F(JsonReaderTest, ReadsDownToTheDeepestLevelAndNoFurther)
{
    EXPECT_EQ(read(nested(KT_JSON_MAX_DEPTH)), nested(KT_JSON_MAX_DEPTH));
    EXPECT_OK(ctx);
    EXPECT_EQ(read(nested(KT_JSON_MAX_DEPTH + 1)), "(refused)");
    EXPECT_EQ(std::string(KT_context__err_description(ctx)).find("JSON text, line 1, column 3"), 0u)
        << KT_context__err_description(ctx);
    reset();
    EXPECT_EQ(read(std::string(200000, '{')), "(refused)");
    reset();
    EXPECT_EQ(read("{\"a\":" + std::string(200000, '[')), "(refused)");
    reset();
}

// Texts and keys of every length, at every distance from the end of the document.
TEST_F(JsonReaderTest, ReadsTextsOfEveryLength)
{
    for (size_t length = 0; length < 70; length++) {
        const std::string plain(length, 'x');
        for (const std::string &text : {plain, plain + "\xC3\xA9", "\\n" + plain, plain + "\\\"" + plain}) {
            const std::string in_value = "{\"k\":\"" + text + "\"}", in_key = "{\"" + text + "\":{\"" + text + "\":0}}";
            EXPECT_EQ(read(in_value), in_value);
            EXPECT_EQ(read(in_key), in_key);
            EXPECT_OK(ctx);
        }
    }
}

// "k0":0,"k1":1 ...
std::string members(int count)
{
    std::string text;
    for (int n = 0; n < count; n++)
        text += (n ? ",\"k" : "\"k") + std::to_string(n) + "\":" + std::to_string(n);
    return text;
}

// The second object that begins with a key shares its layout with others, up to a number of keys.
TEST_F(JsonReaderTest, ReadsObjectsTooLargeToShareTheirKeys)
{
    const std::string before =
        R"({"x":{"k0":0},"a key of more than fourteen":{"k0":0,"a key of more than fourteen":1},"y":{)";
    for (const int count : {63, 64, 65, 66, 200}) {
        SCOPED_TRACE(count);
        const std::string text = before + members(count) + "}}";
        EXPECT_EQ(read(text), text);
        EXPECT_OK(ctx);
        for (const char *repeated : {"k0", "k62", "k63", "k64"}) {
            const bool is_there = members(count).find(std::string("\"") + repeated + "\"") != std::string::npos;
            const std::string twice = before + members(count) + ",\"" + repeated + "\":0}}";
            EXPECT_EQ(read(twice), is_there ? "(refused)" : twice) << repeated;
            EXPECT_FAILED(ctx, is_there ? KT_ERR_BAD_JSON : 0);
            if (is_there) {
                const std::string column = std::to_string(before.size() + members(count).size() + 2);
                EXPECT_STREQ(KT_context__err_description(ctx),
                             ("JSON text, line 1, column " + column +
                              ": expected a key that the object does not have yet, found '\"'")
                                 .c_str());
            }
            reset();
        }
    }
}

// Thousands of objects begin alike and go on with keys of their own, more than are worth sharing.
TEST_F(JsonReaderTest, ReadsManyObjectsOfDistinctKeys)
{
    std::string text = R"({"list":[{"a":0})";
    for (int n = 0; n < 6000; n++) {
        const std::string number = std::to_string(n);
        text += ",{\"a\":0,\"b" + number + "\":1,\"c" + number + "\":2}";
    }
    text += "]}";
    EXPECT_EQ(read(text), text);
    EXPECT_OK(ctx);
}

TEST_F(JsonReaderTest, ReadsWhateverPrefixWithoutReadingPastIt)
{
    const std::string text = R"({"tbls":{"1":{"name":"Ord\u00e9rs","txid":-12,"rate":1.5e3,"ok":true,"l":[null,{}]}}})";
    for (size_t length = 0; length < text.size(); length++) {
        // A block of its own, so that a sanitizer sees the first byte too many.
        const std::string prefix = text.substr(0, length);
        EXPECT_EQ(read(prefix), "(refused)") << prefix;
        reset();
    }
}

TEST_F(JsonReaderTest, DoesNotDependOnTheLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char *locale : {"de_DE.UTF-8", "C.UTF-8", "C"}) {
        if (std::setlocale(LC_ALL, locale)) {
            EXPECT_EQ(read(R"({"a":1234.5})"), R"({"a":1234.5})");
        }
    }
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_OK(ctx);
}

std::string repeated(const std::string &piece, int count)
{
    std::string text;
    while (count-- > 0)
        text += piece;
    return text;
}

std::string many_tables()
{
    std::string text = "{";
    for (int table = 0; table < 40; table++) {
        text +=
            (table ? ",\"" : "\"") + std::to_string(table) + "\":{\"name\":\"a name that is rather long\",\"cols\":{";
        for (int column = 0; column < 12; column++)
            text += (column ? ",\"" : "\"") + std::to_string(column + table % 3) +
                    "\":{\"name\":\"\\u00e9\",\"list\":[[]]}";
        text += "}}";
    }
    return text + "}";
}

TEST_F(JsonReaderTest, SurvivesFailingAllocations)
{
    std::vector<std::string> texts = {
        many_tables(),
        "{\"list\":[" + repeated("1,", 300) + "1]}",
        "{\"list\":[" + repeated("{},", 300) + "[]]}",
        nested(100),
        "{\"" + std::string(5000, 'k') + "\":{\"" + std::string(5000, 'k') + "\":1}}",
        "{\"x\":{\"k0\":0},\"y\":{" + members(100) + "}}",
    };
    // Texts with escapes grow byte by byte, so they may end in the middle of a character.
    for (const char *piece : {"x", "\\n", "\\u0041", "\\u00e9", "\\u20ac", "\\ud83d\\ude00", "\xC3\xA9", "\xE2\x82\xAC",
                              "\xF0\x9F\x98\x80"})
        for (const char *before : {"\\n", "\\nx", "\\nxx", "\\nxxx"})
            texts.push_back("{\"text\":\"" + (before + repeated(piece, 300)) + "\"}");
    for (const std::string &text : texts) {
        SCOPED_TRACE(text.substr(0, 40));
        for (kt_failing_alloc fault; fault.next(); reset()) {
            KT_vhash *map = nullptr;
            KT_vhash__alloc__from_json__sz(ctx, &map, text.c_str());
            if (!fault.fired()) {
                EXPECT_OK(ctx);
                KT_vhash__free(ctx, map);
                break;
            }
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(map, nullptr);
            EXPECT_EQ(fault.leaked(), 0u);
        }
    }
}

} // namespace
