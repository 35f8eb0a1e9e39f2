// What the caller wants of a source, and under which names.
#include "host_test.hpp"

class HostSelectTest : public HostTest {
  protected:
    void import_with(const std::string &tables, const std::vector<const char *> &only,
                     const std::vector<const char *> &skip, const std::vector<const char *> &renames = {})
    {
        tov_host_options options{};
        options.only = {only.data(), only.size()};
        options.skip = {skip.data(), skip.size()};
        options.renames = {renames.data(), renames.size()};
        import_file(an_export(tables), &options);
    }
    // The names of the schema's tables.
    std::string tables()
    {
        std::string names;
        uint32_t count = 0;
        tov_schema__count_tbls(ctx, schema, &count);
        for (uint32_t n = 0; n < count; n++) {
            const char *id = nullptr, *name = nullptr;
            tov_schema__get_nth_tbl_id(ctx, schema, n, &id);
            tov_schema__get_tbl_name(ctx, schema, id, &name);
            names += (n ? " " : "") + std::string(name);
        }
        return names;
    }
};

static std::string in_schema(int id, const std::string &schema, const std::string &name, const std::string &more = "")
{
    return R"({"id":)" + std::to_string(id) + R"(,"schema":")" + schema + R"(","name":")" + name + R"(","columns":[)" +
           a_col(1, "A", "int") + ']' + more + '}';
}

static const std::string four = in_schema(1, "dbo", "Orders") + ',' + in_schema(2, "sales", "Orders") + ',' +
                                in_schema(3, "sales", "OrderLines") + ',' + in_schema(4, "dbo", "\u00C4pfel");

TEST_F(HostSelectTest, Patterns)
{
    const struct {
        const char *name;
        std::vector<const char *> only;
        std::vector<const char *> skip;
        const char *tables;
        const char *lines;
    } cases[] = {
        {"nothing said", {}, {}, "Orders \u00C4pfel sales.OrderLines sales.Orders", ""},
        {"a schema", {"sales.*"}, {}, "sales.OrderLines sales.Orders", ""},
        {"another case", {"SALES.order?"}, {}, "sales.Orders", ""},
        {"a name in every schema", {"orders"}, {}, "Orders sales.Orders", ""},
        {"several", {"dbo.Orders", "*lines"}, {}, "Orders sales.OrderLines", ""},
        {"one left out", {}, {"sales.orders"}, "Orders \u00C4pfel sales.OrderLines", ""},
        {"one left out of those wanted", {"sales.*"}, {"*.*Lines"}, "sales.Orders", ""},
        {"any character once", {"?pfel"}, {}, "\u00C4pfel", ""},
        {"several stars", {"*a*e*.*e*s"}, {}, "sales.OrderLines sales.Orders", ""},
        {"one that is good for nothing",
         {"dbo.O*"},
         {"x.*"},
         "Orders",
         "pattern-unused: skip: no table has such a name: x.*"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_with(four, c.only, c.skip);
        ASSERT_OK(ctx);
        EXPECT_EQ(tables(), c.tables);
        EXPECT_EQ(lines(), c.lines);
    }
}

TEST_F(HostSelectTest, AReferenceToASkippedTableIsAFinding)
{
    const std::string fk = R"(,"fks":[{"name":"FK","id":5,"ref_table_id":1,"ref_schema":"dbo","ref_table":"P",)"
                           R"("on_delete":"NO_ACTION","on_update":"NO_ACTION",)"
                           R"("columns":[{"column":"A","ref_column":"A"}]}])";
    import_with(in_schema(1, "dbo", "P", ',' + a_pk("PK", "A")) + ',' + in_schema(2, "dbo", "C", fk), {}, {"dbo.P"});
    ASSERT_OK(ctx);
    EXPECT_EQ(lines(), "fk-parent-skipped: dbo.C: left out: the table it refers to was not to be imported: CONSTRAINT "
                       "[FK] FOREIGN KEY ([A]) REFERENCES [dbo].[P] ([A]) ON DELETE NO ACTION ON UPDATE NO ACTION");
}

TEST_F(HostSelectTest, WhatIsWrongWithASkippedTableDoesNotMatter)
{
    const std::string bad = in_schema(1, "dbo", "Bad", R"(,"pk":{"columns":[]})");
    import_with(bad + ',' + in_schema(2, "dbo", "Good"), {}, {});
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    reset();
    import_with(bad + ',' + in_schema(2, "dbo", "Good"), {}, {"bad"});
    ASSERT_OK(ctx);
    EXPECT_EQ(tables(), "Good");
}

TEST_F(HostSelectTest, Renaming)
{
    const std::string quoted = a_table(7, "O'Brien", a_col(1, "a'b", "int") + ',' + a_col(2, "a=b", "int"));
    import_with(quoted, {}, {}, {"DBO.o'brien=OBrien", "dbo.O'Brien.a'b=ab", "dbo.O'Brien.a=b=c"});
    ASSERT_OK(ctx);
    EXPECT_EQ(lines(), "");
    EXPECT_EQ(tables(), "OBrien");
    EXPECT_EQ(defin("7", "1"), R"("ab" int NOT NULL)");
    EXPECT_EQ(defin("7", "2"), R"("c" int NOT NULL)");

    import_with(quoted, {}, {"*"}, {"dbo.O'Brien=OBrien"});
    EXPECT_EQ(lines(), "pattern-unused: rename: no table or column has such a name: dbo.O'Brien=OBrien");
    for (const char *malformed : {"dbo.T", "=T", "dbo.T="}) {
        import_with(quoted, {}, {}, {malformed});
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE,
                     ("'" + std::string(malformed) + "' is not of the form OLD=NEW").c_str());
        reset();
    }
}

TEST_F(HostSelectTest, ANewNameIsHeldToTheSameRules)
{
    import_with(in_schema(1, "dbo", "A") + ',' + in_schema(2, "dbo", "B"), {}, {}, {"dbo.A=b"});
    ASSERT_OK(ctx);
    EXPECT_EQ(codes(), "name-taken dbo.B");
    import_with(in_schema(1, "dbo", "A"), {}, {}, {"dbo.A=x'y"});
    EXPECT_EQ(codes(), "name-not-writable dbo.A");
}
