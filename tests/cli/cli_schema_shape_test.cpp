// Schema files of the wrong shape: the place that is wrong is named.

#include "run_command.hpp"
#include "sample.hpp"

namespace {

class CliShapeTest : public CommandTest {};

struct shape_case {
    const char *json;
    const char *what;
};

const shape_case shape_cases[] = {
    {R"({})", "compat_level is missing"},
    {R"({"compat_level":"1"})", "compat_level is not an integer"},
    {R"({"compat_level":1,"tbls":[]})", "tbls is not an object"},
    {R"({"compat_level":1,"tbls":{"t":5}})", "tbls.t is not an object"},
    {R"({"compat_level":1,"tbls":{"t":{}}})", "tbls.t.name is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":1}}})", "tbls.t.name is not a string"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","txid":1.5}}})", "tbls.t.txid is not an integer"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C"}}}}})", "tbls.t.cols.c.type is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{}}}}}})",
     "tbls.t.cols.c.type.name is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{"name":"text","nocase":1}}}}}})",
     "tbls.t.cols.c.type.nocase is not true or false"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{"name":"x"},"check":{}}}}}})",
     "tbls.t.cols.c.check is not a list"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{"name":"x"},"check":[1]}}}}})",
     "tbls.t.cols.c.check[0] is not an object"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{"name":"x"},"check":[{}]}}}}})",
     "tbls.t.cols.c.check[0].expr is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C","type":{"name":"x"},"fk":{}}}}}})",
     "tbls.t.cols.c.fk.ref_tbl_id is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","pk":[]}}})", "tbls.t.pk is not an object"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","uniques":{"u":null}}}})", "tbls.t.uniques.u is not an object"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","foreignkeys":{"f":{"ref_tbl_id":"x"}}}}})",
     "tbls.t.foreignkeys.f.cols is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","foreignkeys":{"f":{"ref_tbl_id":"x","cols":{"a":1}}}}}})",
     "tbls.t.foreignkeys.f.cols.a is not a string"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","check":{"k":{"expr":null}}}}})",
     "tbls.t.check.k.expr is not a string"},
    {R"({"compat_level":1,"backend":{"name":1}})", "backend.name is not a string"},
};

TEST_F(CliShapeTest, APlaceCannotWriteOnTheTerminal)
{
    const command_result result =
        run({"tables", write("s.json", R"({"compat_level":1,"tbls":{"a\u001B[2J\nb\u007F\u009B\u202E":5}})")});
    EXPECT_EXIT_CODE(result, 2);
    EXPECT_EQ(result.err,
              "tov-schema: tbls.a<U+001B>[2J b<U+007F><U+009B><U+202E> is not an object: " + path("s.json") + "\n");
}

TEST_F(CliShapeTest, TheFirstWrongPlaceIsNamed)
{
    for (const shape_case &c : shape_cases) {
        const command_result result = run({"tables", write("s.json", c.json)});
        EXPECT_EXIT_CODE(result, 2);
        EXPECT_EQ(result.err, std::string("tov-schema: ") + c.what + ": " + path("s.json") + "\n");
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(CliShapeTest, ASchemaOfTheRightShapePasses)
{
    EXPECT_EXIT_CODE(run({"tables", write("s.json", sample_schema)}), 0);
    EXPECT_EXIT_CODE(run({"tables", write("s.json", R"({"compat_level":1})")}), 0);
    EXPECT_EXIT_CODE(run({"tables", write("s.json", R"({"compat_level":1,"tbls":{"t":{"name":"T","pk":{"name":null,)"
                                                    R"("cols":{}}}}})")}),
                     0);
}

} // namespace
