// What the server knows travels with the document, and changes nothing.
#include "host_test.hpp"

#include "tov_compare.h"

class HostFactsTest : public HostTest {
  protected:
    // The facts of the one table of a catalogue, as JSON.
    std::string facts(const std::string &cols, const std::string &more = "")
    {
        import_tables(a_table(7, "T", cols, more));
        KT_vhash *server = nullptr;
        tov_schema__check_tbl_server(ctx, schema, "7", &server);
        return server ? json_of(ctx, server) : "none";
    }
    // The facts of a column, in a table with another one that is kept.
    std::string cols(const std::string &col)
    {
        const std::string all = facts(col + ',' + a_col(9, "K", "int"));
        const std::string before = R"({"schema":"dbo","name":"T","cols":[)";
        const std::string after = R"(,{"name":"K","id":"9","type":"int"}]})";
        const size_t at = all.rfind(after);
        EXPECT_TRUE(all.starts_with(before) && at != all.npos) << all;
        return at == all.npos ? all : all.substr(before.size(), at - before.size());
    }
};

TEST_F(HostFactsTest, OfTheDatabase)
{
    import_file(R"({"database":{"name":"Shop","collation":"Latin1_General_CI_AS","code_page":1252,)"
                R"("can_view_definitions":true},"tables":[)" +
                a_table(7, "T", a_col(1, "A", "int")) +
                R"(],"sequences":[{"schema":"dbo","name":"S","type":"bigint","start":"1000","increment":"-5"}]})");
    ASSERT_OK(ctx);
    EXPECT_TRUE(has(R"("server":{"version":1,"database":"Shop","collation":"Latin1_General_CI_AS","code_page":1252,)"
                    R"("sequences":[{"schema":"dbo","name":"S","type":"bigint","start":"1000","increment":"-5"}]})"))
        << document();
    import_tables(a_table(7, "T", a_col(1, "A", "int")));
    EXPECT_TRUE(has(R"("server":{"version":1})")) << document();
}

TEST_F(HostFactsTest, OfAColumn)
{
    const std::pair<std::string, const char *> cases[] = {
        {a_col(1, "A", "int"), R"({"name":"A","id":"1","type":"int"})"},
        {a_col(1, "A", "int", R"("is_nullable":true)"), R"({"name":"A","id":"1","type":"int","nullable":true})"},
        {a_col(1, "A", "decimal", R"("precision":9,"scale":0)"),
         R"({"name":"A","id":"1","type":"decimal","precision":9,"scale":0})"},
        {a_col(1, "A", "datetime2", R"("precision":27,"scale":7)"),
         R"({"name":"A","id":"1","type":"datetime2","scale":7})"},
        {a_col(1, "A", "nvarchar", R"("max_length":-1,"collation":"Latin1_General_CI_AS","code_page":1252)"),
         R"({"name":"A","id":"1","type":"nvarchar","length":-1,"collation":"Latin1_General_CI_AS","code_page":1252})"},
        {a_col(1, "A", "rowversion", R"("max_length":8)"), R"({"name":"A","id":"1","type":"timestamp"})"},
        {a_col(1, "A", "sql_variant"), R"({"name":"A","type":"sql_variant"})"},
        {a_col(1, "A", "int", R"("is_identity":true)"), R"({"name":"A","id":"1","type":"int","identity":["1","1"]})"},
        {a_col(1, "A", "int", R"("is_identity":true,"identity":{"seed":"10","increment":"-2"})"),
         R"({"name":"A","id":"1","type":"int","identity":["10","-2"]})"},
        {a_col(1, "A", "int", R"x("is_computed":true,"computed":{"definition":"([B])"})x"),
         R"x({"name":"A","type":"int","computed":"([B])"})x"},
        {a_col(1, "A", "datetime2", R"("scale":7,"generated_always_type":1,"is_hidden":true)"),
         R"({"name":"A","type":"datetime2","scale":7,"generated":1,"hidden":true})"},
        {a_col(1, "A", "int", R"x("default":{"definition":"((5))"})x"),
         R"x({"name":"A","id":"1","type":"int","default":"((5))"})x"},
        {a_col(1, "A", "int", R"x("default":{"kind":"bound","definition":"/* five */ CREATE DEFAULT d AS 5"})x"),
         R"x({"name":"A","id":"1","type":"int","default":"5"})x"},
        {a_col(1, "A", "uniqueidentifier", R"("is_rowguidcol":true,"is_sparse":true,"description":"d")"),
         R"({"name":"A","id":"1","type":"uniqueidentifier","rowguidcol":true,"sparse":true,"description":"d"})"},
    };
    for (const auto &[col, expected] : cases)
        EXPECT_EQ(cols(col), expected);
}

TEST_F(HostFactsTest, AnAliasKeepsItsName)
{
    EXPECT_EQ(cols(R"({"id":1,"name":"A","system_type":"nvarchar","user_type":"Code","user_type_schema":"dbo",)"
                   R"("max_length":40,"is_nullable":false})"),
              R"({"name":"A","id":"1","type":"nvarchar","user_type":"dbo.Code","length":40})");
    EXPECT_EQ(cols(R"({"id":1,"name":"A","user_type":"geography","user_type_schema":"sys","is_assembly_type":true,)"
                   R"("max_length":-1,"is_nullable":false})"),
              R"({"name":"A","id":"1","type":"geography"})");
}

TEST_F(HostFactsTest, OfATable)
{
    EXPECT_EQ(facts(a_col(1, "A", "int"), R"("description":"d","temporal_type":2,"row_count":0)"),
              R"({"schema":"dbo","name":"T","description":"d","temporal_type":2,"row_count":0,)"
              R"("cols":[{"name":"A","id":"1","type":"int"}]})");
}

TEST_F(HostFactsTest, Indexes)
{
    const std::string all = facts(
        a_col(1, "A", "int") + ',' + a_col(2, "B", "int") + ',' + a_col(3, "X", "int", R"("is_computed":true)"),
        R"x("uniques":[{"name":"UQ","columns":[{"name":"A"}]},{"name":"UX","kind":"index","filter":"([A]>(0))",)x"
        R"x("is_clustered":true,"columns":[{"name":"B","descending":true}]}],"indexes":[{"name":"IX","columns":[)x"
        R"x({"name":"b"},{"name":"A","descending":true}],"included":[{"name":"X"}],"is_disabled":true},)x"
        R"x({"name":"CS","kind":"COLUMNSTORE"}])x");
    EXPECT_EQ(all.substr(all.find(R"("indexes")")),
              R"x("indexes":[{"name":"UX","unique":true,"clustered":true,"cols":["2"],"descending":[true],)x"
              R"x("filter":"([A]>(0))","where":"([A]>(0))"},{"name":"CS","kind":"COLUMNSTORE","left_out":true},)x"
              R"x({"name":"IX","disabled":true,"cols":["2","1"],"descending":[false,true],"included":["3"],)x"
              R"x("left_out":true}]})x");
}

// The module answers as if the facts were not there.
TEST_F(HostFactsTest, NoOperationSeesThem)
{
    import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "nvarchar", R"("max_length":20)"),
                          a_pk("PK", "A") + R"(,"description":"one","row_count":1)"));
    tov_schema *with = std::exchange(schema, nullptr);
    import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "nvarchar", R"("max_length":20)"),
                          a_pk("PK", "A") + R"(,"description":"two","row_count":2)"));
    KT_varray *only_a = nullptr, *only_b = nullptr, *same = nullptr, *changed = nullptr;
    tov_schema__diff_tbls(ctx, with, schema, &only_a, &only_b, &same, &changed);
    ASSERT_OK(ctx);
    uint32_t count = 0;
    ASSERT_NE(same, nullptr);
    KT_varray__count(ctx, same, &count);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(changed, nullptr);
    for (KT_varray *list : {only_a, only_b, same, changed})
        KT_varray__free(ctx, list);

    kt_owned_nullhash tbls{ctx};
    KT_nullhash__alloc(ctx, tbls.out());
    KT_nullhash__update(ctx, tbls, "7");
    KT_string *lite = nullptr;
    tov_schema__lite(ctx, with, tbls, &lite);
    ASSERT_OK(ctx);
    EXPECT_EQ(take(ctx, lite).find("server"), std::string::npos);
    tov_schema__nullfree(ctx, &with);
}
