// tov-schema default.

#include "cli_run.hpp"
#include "counting_sqlite.hpp"
#include "run_command.hpp"

#include <sqlite3.h>

namespace {

class CommandDefaultTest : public CommandTest {};

struct default_case {
    std::vector<std::string> arguments;
    const char *out;
};

const default_case default_cases[] = {
    {{"int", "((0))"}, "kept\t0\n"},
    {{"sint32", "((-1))"}, "kept\t-1\n"},
    {{"INT", "((0))"}, "kept\t0\n"},
    {{"nvarchar", "(N'a''b')"}, "kept\t'a''b'\n"},
    {{"money", "((2.5))"}, "kept\t25000\n"},
    {{"decimal", "((12.5))", "--scale", "2"}, "kept\t1250\n"},
    {{"decimal", "((1.005))", "--scale", "2"}, "refused\tproblem with decimal string for scale=2: 1.005\n"},
    {{"bit", "('True')"}, "kept\t1\n"},
    {{"uniqueidentifier", "(newid())"}, "kept\t(randomblob(16))\n"},
    {{"uniqueidentifier", "('x')"}, "dropped\tnewid() and newsequentialid() carry over, nothing else\n"},
    {{"datetime", "(getdate())"}, "dropped\ta literal, getutcdate() and sysutcdatetime() carry over, nothing else\n"},
    {{"varbinary", "(0x0A1B)"}, "kept\tx'0A1B'\n"},
    {{"int", "((1)+(2))"}, "dropped\tan integer within the type's range carries over, an expression does not\n"},
    {{"loose/int", "('abc')"}, "kept\t'abc'\n"},
    {{"loose/int", "(f())"}, "dropped\ta single literal carries over, an expression does not\n"},
    {{"loose/real", "(rand())"}, "dropped\ta single literal carries over, an expression does not\n"},
    {{"sysname", "(N'dbo')"}, "kept\t'dbo'\n"},
    {{"integer", "((3))"}, "kept\t3\n"},
    {{"double precision", "((1.5))"}, "kept\t1.5\n"},
    {{"hierarchyid", "(0x58)"}, "kept\tx'58'\n"},
    {{"geography", "(0x0C)"}, "kept\tx'0C'\n"},
    {{"geometry", "('POINT (1 2)')"}, "dropped\ta constant 0x... of whole bytes carries over, nothing else\n"},
    {{"xml", "('<a/>')"}, "kept\t'<a/>'\n"},
    {{"timestamp", "(0x00)"}, "dropped\tthe server writes the values of the column itself\n"},
    {{"rowversion", "((0))"}, "dropped\tthe server writes the values of the column itself\n"},
    {{"sql_variant", "((1))"}, "dropped\ta column of this type is left out of its table\n"},
    {{"datetimeoffset", "(getdate())"}, "dropped\ta single literal carries over, an expression does not\n"},
    {{"decimal(9,2)", "((12.5))"}, "kept\t1250\n"},
    {{"numeric(9, 3)", "((12.5))"}, "kept\t12500\n"},
    {{"decimal(9)", "((12))"}, "kept\t12\n"},
    {{"nvarchar(max)", "('x')"}, "kept\t'x'\n"},
    {{"[int]", "((1))"}, "kept\t1\n"},
    {{"[sys].[decimal](9, 2)", "((12.5))"}, "kept\t1250\n"},
    {{"national character varying (20)", "(N'x')"}, "kept\t'x'\n"},
    {{"identity", "((1))"}, "dropped\tan identity column has no default\n"},
    {{"identity", "(NULL)"}, "kept\tNULL\n"},
};

TEST_F(CommandDefaultTest, ShowsWhatADefaultBecomes)
{
    for (const default_case &c : default_cases) {
        std::vector<std::string> arguments{"default"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const command_result result = run(arguments);
        EXPECT_EXIT_CODE(result, 0);
        EXPECT_EQ(result.out, c.out) << c.arguments[0] << " " << c.arguments[1];
    }
}

TEST_F(CommandDefaultTest, NamesTheTypeThatWasProbablyMeant)
{
    const command_result near = run({"default", "nvarhcar(20)", "('x')"});
    EXPECT_EXIT_CODE(near, 2);
    EXPECT_EQ(near.err.find("tov-schema: there is no type 'nvarhcar(20)'; did you mean 'nvarchar'?\n"), 0u) << near.err;
    const command_result far = run({"default", "dbo.Flag", "((1))"});
    EXPECT_EXIT_CODE(far, 2);
    EXPECT_EQ(far.err.find("tov-schema: there is no type 'dbo.Flag'\n"), 0u) << far.err;
}

TEST_F(CommandDefaultTest, ReadsManyFromStandardInput)
{
    const command_result result = run({"default"}, "int\t0\t((7))\r\n\ndecimal\t2\t((1.5))\nint\t\t((300)\n");
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out,
              "kept\t7\nkept\t150\ndropped\tan integer within the type's range carries over, an expression does not\n");
}

TEST_F(CommandDefaultTest, PrintsJson)
{
    const command_result result = run({"default", "--json"}, "int\t0\t((7))\nguid\t0\t('x')\nint\t0\t('abc')\n");
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out.find(R"json({"type":"int","text":"((7))","outcome":"kept","default":"7"})json"
                              "\n"
                              R"json({"type":"guid","text":"('x')","outcome":"dropped","reason":")json"),
              0u)
        << result.out;
    EXPECT_NE(result.out.find(R"("outcome":"refused","reason":)"), std::string::npos) << result.out;
}

TEST_F(CommandDefaultTest, SaysWhichLineIsWrong)
{
    for (const char *line : {"int ((0))", "int\t0", "int\tx\t((0))", "int\t256\t((0))", "sql\t0\t((0))"}) {
        const command_result result = run({"default"}, std::string("int\t0\t((7))\n") + line + "\n");
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_NE(result.err.find("standard input, line 2"), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "kept\t7\n");
    }
}

TEST_F(CommandDefaultTest, ThatSqliteCannotWorkIsNoRefusal)
{
    char program[] = "tov-schema", command[] = "default", type[] = "float", text[] = "((1.5))";
    char *arguments[] = {program, command, type, text, nullptr};
    kt_counting_sqlite sqlite;
    for (const int code : kt_sqlite_failures) {
        sqlite.fail(kt_sqlite_entry::step, 1, code);
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        const int exit_code = cli_run(4, arguments);
        const std::string said = sqlite3_errstr(code);
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "tov-schema: " + said + ": " + said + ": ((1.5))\n");
        EXPECT_EQ(exit_code, 3);
    }
}

} // namespace
