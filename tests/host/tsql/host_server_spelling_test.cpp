// Expressions as the server stores them.
#include "tsql/host_server_spelling.hpp"

#include <gtest/gtest.h>

namespace {

struct spelling_case {
    const char *name;
    const char *written;
    const char *stored;
};

const spelling_case spelling_cases[] = {
    {"numbers get parentheses of their own", "0", "((0))"},
    {"and lose those of the author", "((0))", "((0))"},
    {"a sign belongs to its number", "-1", "((-1))"},
    {"a plus sign goes", "+ 1", "((1))"},
    {"leading zeros go", "007", "((7))"},
    {"a fraction has a whole part", ".5", "((0.5))"},
    {"whole numbers beyond 32 bits get a point", "2147483648", "((2147483648.))"},
    {"and keep it", "9223372036854775807.", "((9223372036854775807.))"},
    {"floating numbers show all digits", "1e3", "((1.0000000000000000e+003))"},
    {"and go on doing so", "((1.0000000000000000e+003))", "((1.0000000000000000e+003))"},
    {"money keeps its sign", "$1.25", "(($1.25))"},
    {"binaries are in capitals", "0xdeadBEEF", "(0xDEADBEEF)"},
    {"an empty binary", "0x", "(0x)"},
    {"strings stay", "'it''s -- not'", "('it''s -- not')"},
    {"national strings have a capital N", "n'x'", "(N'x')"},
    {"NULL is in capitals", "null", "(NULL)"},
    {"functions of the server are lower case", "GETDATE()", "(getdate())"},
    {"CURRENT_TIMESTAMP is one", "current_timestamp", "(getdate())"},
    {"functions of users are in brackets", "dbo.Answer(42)", "([dbo].[Answer]((42)))"},
    {"global variables are lower case", "@@SERVERNAME", "(@@servername)"},
    {"operators have no blanks round them", "60 * 24", "((60)*(24))"},
    {"chains of one operator are grouped from the left", "a + b + c", "(([a]+[b])+[c])"},
    {"tighter operators need no parentheses", "a + b * c", "([a]+[b]*[c])"},
    {"the author's stay round arithmetic", "(a * (1.0 - b)) * c", "(([a]*((1.0)-[b]))*[c])"},
    {"signs before other things", "-a", "(-[a])"},
    {"two minus signs are no comment", "a - -b - - -c", "(([a]-(-[b]))-(-(-[c])))"},
    {"IN becomes a chain, from its end", "kind in ('a', 'b')", "([kind]='b' OR [kind]='a')"},
    {"IN with one value", "kind in (1)", "([kind]=(1))"},
    {"NOT IN", "kind not in (1, 2)", "(NOT ([kind]=(2) OR [kind]=(1)))"},
    {"BETWEEN becomes two comparisons", "q between 1 and 100", "([q]>=(1) AND [q]<=(100))"},
    {"BETWEEN binds its AND", "q between 1 and 2 and r = 3", "([q]>=(1) AND [q]<=(2) AND [r]=(3))"},
    {"NOT LIKE", "phone NOT LIKE '%x%'", "(NOT [phone] like '%x%')"},
    {"LIKE with ESCAPE", "a LIKE '!%' ESCAPE '!'", "([a] like '!%' escape '!')"},
    {"other signs for comparisons", "a != 1 and b !< 2 and c !> 3", "([a]<>(1) AND [b]>=(2) AND [c]<=(3))"},
    {"parentheses round comparisons go", "((a > 0) AND (b > 0))", "([a]>(0) AND [b]>(0))"},
    {"those that matter stay", "(a = 1 or b = 2) and c = 3", "(([a]=(1) OR [b]=(2)) AND [c]=(3))"},
    {"those that AND implies go", "(a = 1 and b = 2) or c = 3", "([a]=(1) AND [b]=(2) OR [c]=(3))"},
    {"NOT before a comparison", "not (a = 1)", "(NOT [a]=(1))"},
    {"NOT before a group", "not (a = 1 or b = 2)", "(NOT ([a]=(1) OR [b]=(2)))"},
    {"IS NULL", "a is null or b is not null", "([a] IS NULL OR [b] IS NOT NULL)"},
    {"CAST becomes CONVERT", "cast(getdate() as date)", "(CONVERT([date],getdate()))"},
    {"types lose their synonyms", "cast(x as character varying(10))", "(CONVERT([varchar](10),[x]))"},
    {"CONVERT with a style", "convert(varchar(10), getdate(), 112)", "(CONVERT([varchar](10),getdate(),(112)))"},
    {"types with two sizes", "CONVERT(decimal(13, 1), Qty) / 2", "(CONVERT([decimal](13,1),[Qty])/(2))"},
    {"TRY_CAST stays", "try_cast(a as int)", "(TRY_CAST([a] AS [int]))"},
    {"CASE is lower case", "CASE WHEN DATEPART(MONTH, getdate()) > 6 THEN 2 ELSE 1 END",
     "(case when datepart(month,getdate())>(6) then (2) else (1) end)"},
    {"simple CASE", "case a when 1 then 'x' end", "(case [a] when (1) then 'x' end)"},
    {"IIF becomes CASE", "iif(a > 0, 1, 2)", "(case when [a]>(0) then (1) else (2) end)"},
    {"parts of dates are spelled out", "dateadd(yy, -18, getdate())", "(dateadd(year,(-18),getdate()))"},
    {"sequences", "next value for dbo.Numbers", "(NEXT VALUE FOR [dbo].[Numbers])"},
    {"names with brackets", "[a]]b] > 0", "([a]]b]>(0))"},
    {"names in double quotes", "\"a b\" > 0", "([a b]>(0))"},
    {"collations", "a collate Latin1_General_BIN = 'x'", "([a] COLLATE Latin1_General_BIN='x')"},
    {"comments go", "a /* one */ > -- two\n 0", "([a]>(0))"},
    {"methods of values", "geography::Point(a, 2, 4326).Lat > 1", "([geography]::Point([a],(2),(4326)).Lat>(1))"},
    {"time zones", "a at time zone 'UTC' = b", "([a] AT TIME ZONE 'UTC'=[b])"},
    {"functions without parentheses", "system_user = session_user or user <> current_user",
     "(suser_sname()=user_name() OR user_name()<>user_name())"},
    {"a longest type", "cast(x as nvarchar(max))", "(CONVERT([nvarchar](max),[x]))"},
    {"a right side that is wider", "a = 1 and (b = 1 or c = 1)", "([a]=(1) AND ([b]=(1) OR [c]=(1)))"},
    {"a column named next", "next > 1", "([next]>(1))"},
    {"a part of a name that is left out", "Shop..F(1)", "([Shop]..[F]((1)))"},
    {"what is not understood is kept", " exists (select 1) ", "(exists (select 1))"},
};

TEST(ServerSpelling, Expressions)
{
    for (const spelling_case &c : spelling_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(host_server_spelling(c.written), c.stored);
    }
}

TEST(ServerSpelling, WhatIsStoredStays)
{
    for (const spelling_case &c : spelling_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(host_server_spelling(c.stored), c.stored);
    }
}

TEST(ServerSpelling, DoubleQuotesAroundStrings)
{
    EXPECT_EQ(host_server_spelling("\"it's\"", false), "('it''s')");
}

TEST(ServerSpelling, WhatDoesNotEndIsKept)
{
    EXPECT_EQ(host_server_spelling("(a > "), "((a >)");
    EXPECT_EQ(host_server_spelling("'a"), "('a)");
    EXPECT_EQ(host_server_spelling(""), "()");
    for (const char *odd : {"(a not 5)", "(a.5)", "(dbo.(1))", "(a::5)", "(cast(a as dbo.5))", "(1 ? 2)"})
        EXPECT_EQ(host_server_spelling(odd), odd);
}

TEST(ServerSpelling, DeepNestingIsKeptAsItIs)
{
    const std::string deep = std::string(100000, '(') + '1' + std::string(100000, ')');
    EXPECT_EQ(host_server_spelling(deep), deep);
    const std::string signs(100000, '~');
    EXPECT_EQ(host_server_spelling(signs + '1'), '(' + signs + "1)");
    std::string nots;
    for (int n = 0; n < 100000; n++)
        nots += "not ";
    EXPECT_EQ(host_server_spelling(nots + "a = 1"), '(' + nots + "a = 1)");
}

} // namespace
