// What tools do to a catalogue file.
#include "host_test.hpp"

#include "json/host_file.hpp"

using namespace std::string_literals;

class HostFileTest : public ContextTest {
  protected:
    std::string decode(const std::string &file)
    {
        std::string json;
        split_texts = false;
        host_decode_file(ctx, file.data(), file.size(), json, split_texts);
        return json;
    }
    bool split_texts = false;
};

static std::string as_utf16(const std::string &ascii)
{
    std::string utf16 = "\xFF\xFE";
    for (const char byte : ascii)
        utf16 += std::string{byte, '\0'};
    return utf16;
}

TEST_F(HostFileTest, Accepted)
{
    const struct {
        const char *name;
        std::string file;
        std::string json;
        bool split_texts = false;
    } cases[] = {
        {"a plain document stays", R"({"a":1})", R"({"a":1})"},
        {"a byte-order mark is skipped", "\xEF\xBB\xBF{}", "{}"},
        {"UTF-16LE becomes UTF-8", as_utf16("{\"a\":1}"), "{\"a\":1}"},
        {"UTF-16LE needs no mark", "{\0\"\0a\0\"\0:\0001\0}\0"s, "{\"a\":1}"},
        {"UTF-16BE becomes UTF-8", "\xFE\xFF\0{\0}"s, "{}"},
        {"UTF-16BE needs no mark", "\0{\0}"s, "{}"},
        {"a bare list of tables becomes an object", "[1,2]", R"({"tables":[1,2]})"},
        {"blanks around the document go", " \r\n {} \r\n ", "\n{}"},
        {"a header, its dashes and the row count go", "document\r\n--------\r\n{}\r\n\r\n(1 rows affected)\r\n",
         "\n\n{}"},
        {"the header may be in capitals and indented", "  DOCUMENT \n -- \n[]", "\n\n{\"tables\":[]}"},
        {"a row count in the singular goes", "{}\n(1 row affected)", "{}"},
        {"a row count with parentheses goes", "{}\n(1 row(s) affected)\n", "{}"},
        {"a row count in German goes", "{}\n(1 Zeile betroffen)\n", "{}"},
        {"the time at the end goes", "{}\n\n(1 row affected)\n\nCompletion time: 2026-01-31T12:00:00\n", "{}"},
        {"other text at the end stays, to be refused", "{}\nMsg 102", "{}\nMsg 102"},
        {"a line end in a text goes and is told of", "{\"a\":\"x\r\ny\"}", R"({"a":"xy"})", true},
        {"a line end in an escape goes", "{\"a\":\"x\\\ny\"}", R"({"a":"x\y"})", true},
        {"an escaped quote does not end a text", "{\"a\":\"\\\"\n\"}", R"({"a":"\""})", true},
        {"an escaped backslash does not hide a quote", "{\"a\":\"\\\\\",\n\"b\":1}", "{\"a\":\"\\\\\",\n\"b\":1}"},
        {"a line end in a word goes", "{\"a\":tr\nue,\"b\":1\r\n2}", R"({"a":true,"b":12})"},
        {"line ends between values stay", "{\n\"a\": 1,\n\n\"b\": 2\n}", "{\n\"a\": 1,\n\n\"b\": 2\n}"},
        {"a line end in a character goes", "{\"a\":\"\xC3\n\xA4\"}", "{\"a\":\"\xC3\xA4\"}", true},
        {"a cut document stays cut", "{\"a\":\n", "{\"a\":"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(decode(c.file), c.json);
        EXPECT_EQ(split_texts, c.split_texts);
        EXPECT_OK(ctx);
    }
}

TEST_F(HostFileTest, Refused)
{
    const struct {
        const char *name;
        std::string file;
        const char *message;
    } cases[] = {
        {"an empty file", "", "the file is empty"},
        {"a file of blanks", " \r\n\t", "the file is empty"},
        {"a byte-order mark alone", "\xEF\xBB\xBF", "the file is empty"},
        {"a header alone", "document\n--------\n", "the file holds a header and no document"},
        {"something else", "Msg 102, Level 15\n{}",
         "the file is not a catalogue export: expected '{' or '[' where it says 'Msg 102, Level 15'"},
        {"a NUL", "{\"a\":\0}"s, "the file holds a NUL byte (the 6. byte of its text): it is damaged"},
        {"a NUL in UTF-16", as_utf16("{\0}"s), "the file holds a NUL byte (the 2. byte of its text): it is damaged"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(decode(c.file), "");
        EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, c.message);
        reset();
    }
    EXPECT_EQ(decode("\xFF\xFE{"s), "");
    const std::string cut = "the file is UTF-16 and ends in the middle of a character: it was cut off; ";
    EXPECT_ERROR(ctx, KT_ERR_BAD_JSON, (cut + host_cut_hint).c_str());
    reset();
}

TEST_F(HostFileTest, Cut)
{
    for (const char *whole : {"{}", "[{}]", R"({"a":"}","b":[1,2]})", R"({"a":"\\"})", "{} and more", "{{}", "{]"}) {
        SCOPED_TRACE(whole);
        EXPECT_EQ(host_is_cut(whole), std::string_view(whole) == "{{}");
    }
    for (const char *cut : {"{", "", R"({"a":"x}})", R"({"a":"\"}})", "{\"a\":[{}]", "{\"a\":\"x\\"}) {
        SCOPED_TRACE(cut);
        EXPECT_TRUE(host_is_cut(cut));
    }
}
