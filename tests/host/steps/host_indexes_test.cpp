// Indexes that are no keys: what SQLite gets of them, and what is said of the rest.
#include "host_test.hpp"

namespace {

class HostIndexesTest : public HostTest {
  protected:
    // The facts about the indexes of a table of five columns: A is its key and its rowid, B and C are integers, N is a
    // nullable text, X is computed.
    std::string facts(const std::string &indexes, const std::string &uniques = "")
    {
        import_tables(a_table(7, "T",
                              a_col(1, "A", "int", R"("is_identity":true)") + ',' + a_col(2, "B", "int") + ',' +
                                  a_col(3, "C", "int") + ',' +
                                  a_col(4, "N", "nvarchar", R"("max_length":20,"is_nullable":true)") + ',' +
                                  a_col(5, "X", "int", R"("is_computed":true)"),
                              a_pk("PK", "A") + R"(,"uniques":[)" + uniques + R"(],"indexes":[)" + indexes + ']'));
        const std::string all = document();
        const size_t at = all.find(R"("indexes":)");
        return at == all.npos ? "" : all.substr(at + 10, all.find("}]", at) + 2 - at - 10);
    }
    // The findings without the one about the computed column.
    std::string lines_about_indexes()
    {
        const std::string all = lines();
        return all.substr(std::min(all.find('\n'), all.size() - 1) + 1);
    }
};

struct index_case {
    const char *name;
    const char *index;
    const char *facts;
    const char *line;
    const char *key = ""; // the columns of a unique key beside it
};

const index_case index_cases[] = {
    {"an ordinary one", R"({"name":"IX","columns":[{"name":"B"},{"name":"C","descending":true}]})",
     R"x([{"name":"IX","cols":["2","3"],"descending":[false,true]}])x", ""},
    {"a filter that both read alike", R"x({"name":"IX","columns":[{"name":"B"}],"filter":"([C]>(0))"})x",
     R"x([{"name":"IX","cols":["2"],"filter":"([C]>(0))","where":"([C]>(0))"}])x", ""},
    {"a filter that SQLite lacks", R"x({"name":"IX","columns":[{"name":"B"}],"filter":"(f([C])>(0))"})x",
     R"x([{"name":"IX","cols":["2"],"filter":"(f([C])>(0))"}])x",
     "index-filter: dbo.T: kept for all rows: of its filter SQLite lacks this or reads it differently (f): INDEX [IX] "
     "([B]) WHERE (f([C])>(0))"},
    {"a disabled one", R"({"name":"IX","is_disabled":true,"columns":[{"name":"B"}]})",
     R"x([{"name":"IX","disabled":true,"cols":["2"],"left_out":true}])x",
     "index-disabled: dbo.T: left out: it is disabled on the server: INDEX [IX] ([B])"},
    {"one of another kind", R"({"name":"I]X","kind":"XML","columns":[{"name":"N"}]})",
     R"x([{"name":"I]X","kind":"XML","cols":["4"],"left_out":true}])x",
     "index-kind: dbo.T: left out: SQLite has no indexes of the kind XML: INDEX [I]]X] ([N])"},
    {"one of a computed column", R"({"name":"IX","columns":[{"name":"B"},{"name":"X"}]})",
     R"x([{"name":"IX","cols":["2","5"],"left_out":true}])x",
     "index-unprepared-column: dbo.T.X: left out: it uses a column that is left out of the table: INDEX [IX] ([B], "
     "[X])"},
    {"one of a column that is not there", R"({"name":"IX","columns":[{"name":"Gone"}]})",
     R"x([{"name":"IX","left_out":true}])x",
     "index-unprepared-column: dbo.T: left out: it uses a column that is left out of the table: INDEX [IX] ([Gone])"},
    {"one of the rowid", R"({"name":"IX","columns":[{"name":"A"},{"name":"B"}]})",
     R"x([{"name":"IX","cols":["1","2"],"left_out":true}])x",
     "index-redundant: dbo.T: left out: it begins with the column by which SQLite finds rows: INDEX [IX] ([A], [B])"},
    {"one with columns that it only carries along",
     R"({"name":"IX","columns":[{"name":"B","descending":true}],"included":[{"name":"C"},{"name":"N"}]})",
     R"x([{"name":"IX","cols":["2"],"descending":[true],"included":["3","4"]}])x",
     "index-included: dbo.T: kept with the columns that it only carries along as its last ones: INDEX [IX] ([B] DESC) "
     "INCLUDE ([C], [N])"},
    {"one like a key", R"({"name":"IX","columns":[{"name":"B"},{"name":"C"}]})",
     R"x([{"name":"IX","cols":["2","3"],"left_out":true}])x",
     "index-redundant: dbo.T: left out: a key has the same columns: INDEX [IX] ([B], [C])", "B C"},
    {"one like a key in another order", R"({"name":"IX","columns":[{"name":"C"},{"name":"B"}]})",
     R"x([{"name":"IX","cols":["3","2"]}])x", "", "B C"},
    {"a filter that SQLite lacks, and nothing else besides a key",
     R"x({"name":"IX","columns":[{"name":"B"},{"name":"C"}],"filter":"(f([C])>(0))"})x",
     R"x([{"name":"IX","cols":["2","3"],"filter":"(f([C])>(0))","left_out":true}])x",
     "index-redundant: dbo.T: left out: a key has the same columns: INDEX [IX] ([B], [C]) WHERE (f([C])>(0))", "B C"},
    {"one that only carries along what the table lacks",
     R"({"name":"IX","columns":[{"name":"B"}],"included":[{"name":"X"}]})",
     R"x([{"name":"IX","cols":["2"],"included":["5"]}])x",
     "index-included: dbo.T: kept without the columns that it only carries along: INDEX [IX] ([B]) INCLUDE ([X])"},
};

TEST_F(HostIndexesTest, WhatBecomesOfThem)
{
    for (const index_case &c : index_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(facts(c.index, *c.key ? a_unique("UQ", c.key) : ""), c.facts);
        EXPECT_EQ(lines_about_indexes(), c.line);
    }
}

TEST_F(HostIndexesTest, OneOfTwoWithTheSameColumnsIsEnough)
{
    facts(R"({"name":"IX","columns":[{"name":"B"}]},{"name":"IY","columns":[{"name":"B"}]},)"
          R"({"name":"IZ","columns":[{"name":"B"}],"included":[{"name":"C"}]})");
    EXPECT_EQ(codes(), "column-computed dbo.T.X\nindex-redundant dbo.T\nindex-included dbo.T");
    EXPECT_NE(lines().find("another has the same columns: INDEX [IY] ([B])"), std::string::npos) << lines();
}

TEST_F(HostIndexesTest, UniqueOnes)
{
    const std::string all =
        facts("", R"x({"name":"U1","kind":"index","filter":"([N] IS NOT NULL)","columns":[{"name":"N"}]},)x"
                  R"x({"name":"U2","kind":"index","columns":[{"name":"B"},{"name":"C","descending":true}],)x"
                  R"x("included":[{"name":"N"}]},{"name":"U3","kind":"index","filter":"(f([B])=(1))",)x"
                  R"x("columns":[{"name":"B"}]},{"name":"U4","filter":"([B]=(1))","columns":[{"name":"X"}]})x");
    const std::string kept = R"x("cols":["4"],"filter":"([N] IS NOT NULL)","where":"([N] IS NOT NULL)"})x";
    EXPECT_NE(all.find(kept), all.npos) << all;
    EXPECT_NE(all.find(R"x("filter":"(f([B])=(1))","left_out":true})x"), all.npos) << all;
    EXPECT_NE(all.find(R"x("filter":"([B]=(1))","left_out":true})x"), all.npos) << all;
    EXPECT_EQ(codes(), "column-computed dbo.T.X\nkey-unprepared-column dbo.T.X\nindex-included dbo.T\n"
                       "index-order dbo.T\nunique-filtered dbo.T\ncomparison-approximate dbo.T.N");
    EXPECT_TRUE(has(R"("uniques":{"U2":{"2":null,"3":null}})")) << document();
}

} // namespace
