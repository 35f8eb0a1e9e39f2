// Foreign keys: where they are recorded, and which are left out.
#include "host_test.hpp"

class HostForeignkeysTest : public HostTest {};

// A foreign key; cols has pairs of names, e.g. "A:Id B:Ver".
static std::string a_fk(int id, const std::string &name, int ref_tbl_id, std::string_view cols,
                        const std::string &more = "", const std::string &actions = "NO_ACTION NO_ACTION")
{
    std::string list;
    while (!cols.empty()) {
        const size_t colon = cols.find(':');
        const size_t end = std::min(cols.find(' '), cols.size());
        list += (list.empty() ? "" : ",") + (R"({"column":")" + std::string(cols.substr(0, colon))) +
                R"(","ref_column":")" + std::string(cols.substr(colon + 1, end - colon - 1)) + R"("})";
        cols.remove_prefix(std::min(end + 1, cols.size()));
    }
    const size_t blank = actions.find(' ');
    return R"({"name":")" + name + R"(","id":)" + std::to_string(id) + R"(,"ref_table_id":)" +
           std::to_string(ref_tbl_id) + R"(,"ref_schema":"dbo","ref_table":"P","on_delete":")" +
           actions.substr(0, blank) + R"(","on_update":")" + actions.substr(blank + 1) + '"' + more +
           R"(,"columns":[)" + list + "]}";
}

static std::string fks(const std::string &list)
{
    return R"("fks":[)" + list + ']';
}

// The parent: Id is the key, Id and Ver together too, Other is none, Sum is left out.
static const std::string parent =
    a_table(1, "P",
            a_col(1, "Id", "int") + ',' + a_col(2, "Ver", "int") + ',' + a_col(3, "Other", "int") + ',' +
                a_col(4, "Sum", "int", R"("is_computed":true)"),
            a_pk("PK", "Id") + R"(,"uniques":[)" + a_unique("UQ", "Ver Id") + ']') +
    ',';
static const std::string child_cols =
    a_col(1, "A", "int") + ',' + a_col(2, "B", "int") + ',' + a_col(3, "X", "int", R"("is_computed":true)");
// What parent and child_cols always give.
static const std::string always = "column-computed dbo.C.X\ncolumn-computed dbo.P.Sum";

TEST_F(HostForeignkeysTest, ASingleColumnCarriesItsKey)
{
    import_tables(parent + a_table(2, "C", child_cols, fks(a_fk(99, "FK", 1, "A:Id", "", "SET_NULL CASCADE"))));
    EXPECT_TRUE(has(R"("fk":{"name":"FK","ref_tbl_id":"1","ref_col_id":"1","deferred":false,"on_delete":"SET NULL",)"
                    R"("on_update":"CASCADE"})"))
        << document();
    EXPECT_FALSE(has(R"("foreignkeys")"));
    EXPECT_EQ(codes(), always);
}

TEST_F(HostForeignkeysTest, SeveralColumnsGoToTheTable)
{
    import_tables(parent +
                  a_table(2, "C", child_cols, fks(a_fk(99, "FK", 1, "B:Id A:Ver", "", "SET_DEFAULT NO_ACTION"))));
    EXPECT_TRUE(has(R"("foreignkeys":{"99":{"cols":{"2":"1","1":"2"},"name":"FK","ref_tbl_id":"1","deferred":false,)"
                    R"("on_delete":"SET DEFAULT","on_update":"NO ACTION"}})"))
        << document();
    EXPECT_EQ(codes(), always);
}

TEST_F(HostForeignkeysTest, AKeyOfATableThatNobodyNamedGetsAName)
{
    std::string fk = a_fk(99, "FK", 1, "B:Id A:Ver");
    fk.replace(0, std::string_view(R"({"name":"FK")").size(), R"({"is_system_named":true)");
    import_tables(parent + a_table(2, "C", child_cols, fks(fk)));
    EXPECT_TRUE(has(R"("foreignkeys":{"99":{"cols":{"2":"1","1":"2"},"name":"FK_C_B_A",)")) << document();
    EXPECT_EQ(codes(), always);
}

TEST_F(HostForeignkeysTest, ASecondKeyOfAColumnGoesToTheTable)
{
    import_tables(parent + a_table(3, "Q", a_col(1, "Id", "int"), a_pk("PK_Q", "Id")) + ',' +
                  a_table(2, "C", child_cols, fks(a_fk(99, "FK1", 1, "A:Id") + ',' + a_fk(98, "FK2", 3, "A:Id"))));
    EXPECT_TRUE(has(R"("fk":{"name":"FK1","ref_tbl_id":"1")")) << document();
    EXPECT_TRUE(has(R"("foreignkeys":{"98":{"cols":{"1":"1"},"name":"FK2","ref_tbl_id":"3")")) << document();
    EXPECT_EQ(codes(), always);
}

TEST_F(HostForeignkeysTest, AReferenceToTheOwnTableGoesToTheTableWhereAnIdentityNumbersTheRows)
{
    const std::string b = ',' + a_col(2, "B", "int", R"("is_nullable":true)");
    const std::string keys = a_pk("PK", "A") + ',' + fks(a_fk(99, "FK", 7, "B:A"));
    import_tables(a_table(7, "T", a_col(1, "A", "int", R"("is_identity":true)") + b, keys));
    EXPECT_TRUE(has(R"("foreignkeys":{"99":{"cols":{"2":"1"},"name":"FK","ref_tbl_id":"7")")) << document();
    import_tables(a_table(7, "T", a_col(1, "A", "int") + b, keys));
    EXPECT_TRUE(has(R"("fk":{"name":"FK","ref_tbl_id":"7","ref_col_id":"1")")) << document();
}

TEST_F(HostForeignkeysTest, LeftOut)
{
    const std::string text = "CONSTRAINT [FK] FOREIGN KEY ([A]) REFERENCES [dbo].[P] ";
    const std::string actions = " ON DELETE NO ACTION ON UPDATE NO ACTION";
    const struct {
        const char *name;
        std::string list;
        std::string line;
    } cases[] = {
        {"a disabled one", a_fk(99, "FK", 1, "A:Id", R"(,"is_disabled":true)"),
         "fk-disabled: dbo.C: left out: it is disabled on the server: " + text + "([Id])" + actions},
        {"one to a table that is not there", a_fk(99, "FK", 55, "A:Id B:Ver", "", "SET_NULL SET_DEFAULT"),
         "fk-parent-missing: dbo.C: left out: the table it refers to is not in the source: CONSTRAINT [FK] FOREIGN KEY "
         "([A], [B]) REFERENCES [dbo].[P] ([Id], [Ver]) ON DELETE SET NULL ON UPDATE SET DEFAULT"},
        {"one of a column that is left out", a_fk(99, "FK", 1, "X:Id"),
         "fk-unprepared-column: dbo.C.X: left out: it uses a column that is left out of the table: CONSTRAINT [FK] "
         "FOREIGN KEY ([X]) REFERENCES [dbo].[P] ([Id])" +
             actions},
        {"one to a column that is left out", a_fk(99, "FK", 1, "A:Sum"),
         "fk-unprepared-column: dbo.C: left out: it refers to column dbo.P.Sum, which is left out: " + text +
             "([Sum])" + actions},
        {"one to a column that is not a key", a_fk(99, "FK", 1, "A:Other"),
         "fk-parent-key-missing: dbo.C: left out: the columns it refers to are not a primary or unique key in "
         "SQLite: " +
             text + "([Other])" + actions},
        {"one to a part of a key", a_fk(99, "FK", 1, "A:Ver"),
         "fk-parent-key-missing: dbo.C: left out: the columns it refers to are not a primary or unique key in "
         "SQLite: " +
             text + "([Ver])" + actions},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(parent + a_table(2, "C", child_cols, fks(c.list)));
        EXPECT_EQ(lines().substr(lines().rfind('\n') + 1), c.line);
        EXPECT_EQ(codes().substr(0, always.size()), always);
        EXPECT_FALSE(has(R"("fk":)") || has(R"("foreignkeys")")) << document();
    }
}

TEST_F(HostForeignkeysTest, OnlyAnExactDuplicateIsLeftOut)
{
    import_tables(parent + a_table(2, "C", child_cols,
                                   fks(a_fk(91, "FK1", 1, "A:Id B:Ver") + ',' + a_fk(92, "FK2", 1, "B:Ver A:Id") + ',' +
                                       a_fk(93, "FK3", 1, "A:Id B:Ver", "", "CASCADE NO_ACTION") + ',' +
                                       a_fk(94, "FK4", 1, "A:Ver B:Id"))));
    EXPECT_EQ(lines().substr(lines().rfind('\n') + 1),
              "fk-duplicate: dbo.C: left out: it says the same as FK1: CONSTRAINT [FK2] FOREIGN KEY ([B], [A]) "
              "REFERENCES [dbo].[P] ([Ver], [Id]) ON DELETE NO ACTION ON UPDATE NO ACTION");
    EXPECT_EQ(codes(), always + "\nfk-duplicate dbo.C");
    EXPECT_TRUE(has(R"("91":{)") && has(R"("93":{)") && has(R"("94":{)") && !has(R"("92":{)")) << document();
}

TEST_F(HostForeignkeysTest, AnUntrustedOneIsKept)
{
    import_tables(parent + a_table(2, "C", child_cols, fks(a_fk(99, "FK", 1, "A:Id", R"(,"is_not_trusted":true)"))));
    EXPECT_EQ(codes(), always + "\nfk-untrusted dbo.C");
    EXPECT_TRUE(has(R"("fk":{"name":"FK")"));
}

TEST_F(HostForeignkeysTest, APrimaryKeyBesideTheIdentityIsAParentKey)
{
    import_tables(a_table(1, "P", a_col(1, "Id", "int", R"("is_identity":true)") + ',' + a_col(2, "Code", "int"),
                          a_pk("PK", "Code") + R"(,"uniques":[)" + a_unique("UQ", "Id") + ']') +
                  ',' +
                  a_table(2, "C", a_col(1, "A", "int") + ',' + a_col(2, "B", "int"),
                          fks(a_fk(91, "FK1", 1, "A:Code") + ',' + a_fk(92, "FK2", 1, "B:Id"))));
    EXPECT_EQ(codes(), "pk-as-unique dbo.P");
    EXPECT_TRUE(has(R"("fk":{"name":"FK1")") && has(R"("fk":{"name":"FK2")")) << document();
}
