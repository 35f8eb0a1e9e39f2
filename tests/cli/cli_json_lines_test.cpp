// JSON, a member a line.

#include "cli_json_lines.hpp"

#include <gtest/gtest.h>

namespace {

struct lines_case {
    const char *name;
    const char *json;
    const char *lines;
};
const lines_case lines_cases[] = {
    {"nothing", "{}", "{}"},
    {"members", R"({"a":1,"b":null})", "{\n  \"a\": 1,\n  \"b\": null\n}"},
    {"maps in maps", R"({"a":{"b":{}},"c":2})", "{\n  \"a\": {\n    \"b\": {}\n  },\n  \"c\": 2\n}"},
    {"plain lists stay on a line", R"({"a":[1,"x",true],"b":[]})", "{\n  \"a\": [1,\"x\",true],\n  \"b\": []\n}"},
    {"lists of maps do not", R"({"a":["x",{"b":1}]})",
     "{\n  \"a\": [\n    \"x\",\n    {\n      \"b\": 1\n    }\n  ]\n}"},
    {"strings are left alone", R"({"{,:\"\\":"[],\"{}:"})", "{\n  \"{,:\\\"\\\\\": \"[],\\\"{}:\"\n}"},
    {"brackets in the strings of a list", R"({"a":["]","{","\"]"]})", "{\n  \"a\": [\"]\",\"{\",\"\\\"]\"]\n}"},
};

TEST(CliJsonLines, Lines)
{
    for (const lines_case &c : lines_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(cli_json_lines(c.json), c.lines);
    }
}

} // namespace
