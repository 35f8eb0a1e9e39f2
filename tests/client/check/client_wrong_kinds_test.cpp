// Documents that hold something of another kind than expected somewhere: what they are refused for, and by whom.
//
// Each value of a full document is replaced by one of each other kind, one at a time. Whatever reads a document answers
// or says what is wrong, and what a database can be created from, everything else can read too.
#include "client_test.hpp"
#include "compare/compared_document.hpp"
#include "tov_migrate.h"
#include "tov_report.h"

#include <cctype>
#include <cstring>

namespace {

size_t end_of_string(const std::string &json, size_t at)
{
    for (at++; json[at] != '"'; at++) {
        if (json[at] == '\\')
            at++;
    }
    return at + 1;
}

size_t end_of_value(const std::string &json, size_t at)
{
    if (json[at] == '"')
        return end_of_string(json, at);
    if (json[at] != '{' && json[at] != '[')
        return json.find_first_of(",]}", at);
    for (int depth = 0; true;) {
        depth += json[at] == '{' || json[at] == '[' ? 1 : json[at] == '}' || json[at] == ']' ? -1 : 0;
        at = json[at] == '"' ? end_of_string(json, at) : at + 1;
        if (depth == 0)
            return at;
    }
}

// Where the values of the members and elements begin, at any depth: after each colon and bracket, and after each comma
// of a list. A key is followed by a colon, so a string that is not is a value.
std::vector<size_t> values_of(const std::string &json)
{
    std::vector<size_t> places;
    for (size_t at = 1; at < json.size();) {
        const char c = json[at];
        const size_t end =
            c == '"' || c == '-' || std::isalnum(static_cast<unsigned char>(c)) ? end_of_value(json, at) : at + 1;
        const bool is_key = c == '"' && json[end] == ':';
        if (!is_key && (end > at + 1 || c == '{' || c == '[' || std::isalnum(static_cast<unsigned char>(c))))
            places.push_back(at);
        at = end;
    }
    return places;
}

class WrongKinds : public ClientTest {
  protected:
    void SetUp() override
    {
        ClientTest::SetUp();
        tov_schema__from_json(ctx, compared_document.c_str(), &sound);
    }
    void TearDown() override
    {
        tov_schema__nullfree(ctx, &sound);
        ClientTest::TearDown();
    }
    // Whether it succeeds. What fails says why and gives nothing.
    template <class Result, class Free, class Call> bool succeeds(Free free, Call call)
    {
        Result *result = nullptr;
        call(&result);
        const bool failed = KT_context__has_err(ctx);
        EXPECT_EQ(result == nullptr, failed);
        EXPECT_TRUE(!failed || *KT_context__err_description(ctx));
        why = failed ? KT_context__err_description(ctx) : "";
        KT_context__err_reset(ctx);
        free(ctx, result);
        return !failed;
    }
    bool can_be_created()
    {
        return succeeds<KT_string>(KT_string__free, [&](auto out) { tov_client__write_script(ctx, schema, out); });
    }
    bool can_be_compared()
    {
        const auto compare = [&](tov_schema *a, tov_schema *b) {
            return succeeds<KT_vhash>(KT_vhash__free, [&](auto out) { tov_client__compare(ctx, a, b, nullptr, out); });
        };
        return compare(schema, sound) && compare(sound, schema);
    }
    bool can_be_described()
    {
        return succeeds<KT_vhash>(KT_vhash__free,
                                  [&](auto out) { tov_client__describe_columns(ctx, schema, nullptr, out); });
    }
    bool can_be_reported()
    {
        return succeeds<KT_string>(KT_string__free,
                                   [&](auto out) { tov_client__write_html_report(ctx, schema, nullptr, out); });
    }

    tov_schema *sound = nullptr;
    std::string why;
};

TEST_F(WrongKinds, WhatCanBeCreatedCanBeReadByAll)
{
    const char *const kinds[] = {"7", R"("x")", "true", "[]", "{}", R"(["x"])", R"({"x":7})"};
    size_t created = 0;
    size_t refused = 0;
    for (const size_t place : values_of(compared_document)) {
        for (const char *kind : kinds) {
            std::string document = compared_document;
            document.replace(place, end_of_value(document, place) - place, kind);
            SCOPED_TRACE(document.substr(place - std::min<size_t>(place, 60), 80));
            tov_schema__nullfree(ctx, &schema);
            tov_schema__from_json(ctx, document.c_str(), &schema);
            if (KT_context__has_err(ctx)) { // it is not an object
                KT_context__err_reset(ctx);
                continue;
            }
            const bool is_created = can_be_created();
            (is_created ? created : refused)++;
            EXPECT_TRUE(can_be_compared() || !is_created) << why;
            EXPECT_TRUE(can_be_described() || !is_created) << why;
            EXPECT_TRUE(can_be_reported() || !is_created) << why;
        }
    }
    EXPECT_GT(created, 100u);
    EXPECT_GT(refused, 100u);
}

struct flaw_case {
    const char *name;
    const char *from;
    const char *to;
    const char *expected;
};
const flaw_case flaw_cases[] = {
    {"of the server", R"("version":1)", R"("version":"1")", "facts about the server: version is not an integer"},
    {"of a sequence", R"("start":"1")", R"("start":1)", "facts about the server, sequences[0]: start is not a string"},
    {"of a table", R"("row_count":7)", R"("row_count":"7")",
     R"(table "Customers", facts about the server: row_count is not an integer)"},
    {"of a column", R"("length":80)", R"("length":"80")",
     R"(table "Customers", facts about the server, cols[1]: length is not an integer)"},
    {"a column without a type", R"({"name":"Id","id":"1","type":"int","identity")",
     R"({"name":"Id","id":"1","identity")", R"(table "Customers", facts about the server, cols[0]: type is missing)"},
    {"an identity without an increment", R"("identity":["1","1"])", R"("identity":["1"])",
     R"(table "Customers", facts about the server, cols[0]: identity is not a list of two strings)"},
    {"an element of a list", R"("descending":[true,false])", R"("descending":[true,"no"])",
     R"(table "Orders", facts about the server, indexes[0]: descending is not a list of truth values)"},
    {"of a list of records", R"("cols":[
{"name":"Id","id":"1","type":"int"},)",
     R"("cols":["Id",)", R"(table "Orders", facts about the server: cols is not a list of objects)"},
    {"of the document itself", R"("txid":5)", R"("txid":"5")", "tbls.1.txid is not an integer"},
};

TEST_F(WrongKinds, SaysWhichFactIsWrong)
{
    for (const flaw_case &c : flaw_cases) {
        SCOPED_TRACE(c.name);
        std::string document = compared_document;
        ASSERT_NE(document.find(c.from), std::string::npos);
        document.replace(document.find(c.from), std::strlen(c.from), c.to);
        tov_schema__nullfree(ctx, &schema);
        tov_schema__from_json(ctx, document.c_str(), &schema);
        EXPECT_FALSE(can_be_created());
        EXPECT_EQ(why, c.expected);
    }
}

// Null in the place of a fact is as good as its absence.
TEST_F(WrongKinds, NullIsAbsent)
{
    std::string document = compared_document;
    document.replace(document.find(R"("description":"who buys")"), std::strlen(R"("description":"who buys")"),
                     R"("description":null)");
    tov_schema__nullfree(ctx, &schema);
    tov_schema__from_json(ctx, document.c_str(), &schema);
    EXPECT_TRUE(can_be_created() && can_be_compared() && can_be_described() && can_be_reported()) << why;
}

} // namespace
