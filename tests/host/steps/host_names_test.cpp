// Names that cannot be written, and names that mean one thing to SQLite.
#include "host_test.hpp"

class HostNamesTest : public HostTest {};

static const std::string a = a_col(1, "A", "int");

TEST_F(HostNamesTest, WhatCannotBeWrittenIsLeftOutAndTheRestComesOver)
{
    import_tables(
        a_table(7, "O'Brien", a) + ',' +
        a_table(8, "T", a + ',' + a_col(2, "a\\\"b", "int") + ',' + a_col(3, "c\\u0001d", "int"), a_pk("P'K", "A")) +
        ',' + a_table(9, "U", a));
    EXPECT_EQ(codes(), "name-not-writable dbo.O'Brien\nname-not-writable dbo.T.a\"b\nname-not-writable dbo.T.c\x01"
                       "d\nname-not-writable dbo.T");
    EXPECT_EQ(lines().substr(0, lines().find('\n')),
              "name-not-writable: dbo.O'Brien: left out: no statement can be written with a name with a single quote "
              "(give another name with --rename, or --skip the table): O'Brien");
    EXPECT_TRUE(has(R"("8":{"name":"T")") && has(R"("9":{"name":"U")") && !has("Brien")) << document();
    EXPECT_TRUE(has(R"("pk":{"name":null,"cols":{"1":null}})")) << document();
    EXPECT_FALSE(has(R"("2":{)") || has(R"("3":{)") || has("P'K")) << document();
}

TEST_F(HostNamesTest, NamesThatWouldShowOtherwiseThanTheyRead)
{
    const char *const refused[] = {"\u0080", "\u009F", "\u061C", "\u200E", "\u200F",
                                   "\u2028", "\u202E", "\u2066", "\u2069"};
    for (const char *character : refused) {
        import_tables(a_table(7, "T", a + ',' + a_col(2, std::string("a") + character, "int")));
        EXPECT_EQ(codes(), std::string("name-not-writable dbo.T.a") + character);
    }
    import_tables(a_table(7, "T", a_col(1, "a\u00A0\u061B\u061D\u200D\u2010\u2027\u202F\u2065\u206A\u00E9", "int")));
    EXPECT_EQ(codes(), "");
}

TEST_F(HostNamesTest, OfTwoWithOneNameTheFirstIsKept)
{
    const std::string in_sales = R"({"id":9,"schema":"sales","name":"Orders","columns":[)" + a + "]}";
    const struct {
        const char *name;
        std::string tables;
        const char *lines;
    } cases[] = {
        {"tables that differ in case", a_table(7, "Orders", a) + ',' + a_table(8, "ORDERS", a),
         "name-taken: dbo.Orders: left out: for SQLite, which has no schemas, dbo.ORDERS has the same name (give "
         "another name with --rename, or --skip the table): Orders"},
        {"a table whose name looks like schema and name", a_table(7, "sales.orders", a) + ',' + in_sales,
         "name-taken: sales.Orders: left out: for SQLite, which has no schemas, dbo.sales.orders has the same name "
         "(give another name with --rename, or --skip the table): sales.Orders"},
        {"columns that differ in case", a_table(7, "T", a + ',' + a_col(2, "a", "int")),
         "name-taken: dbo.T.a: left out of the table: for SQLite, column A has the same name (give another name with "
         "--rename, or --skip the table): a"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(c.tables);
        EXPECT_EQ(lines(), c.lines);
        EXPECT_TRUE(has(R"("cols":{"1":{"name":"A")")) << document();
        EXPECT_EQ(document().find(R"("cols":{)"), document().rfind(R"("cols":{)")) << document();
    }
}

TEST_F(HostNamesTest, SqliteKeepsSomeNamesForItself)
{
    import_tables(a_table(7, "SQLite_stat", a));
    EXPECT_EQ(lines(), "name-not-writable: dbo.SQLite_stat: left out: SQLite keeps names that begin with sqlite_ for "
                       "itself (give another name with --rename, or --skip the table): SQLite_stat");
}

TEST_F(HostNamesTest, AReferenceToATableThatIsLeftOutIsToo)
{
    import_tables(a_table(7, "P'", a, a_pk("PK", "A")) + ',' +
                  a_table(8, "C", a,
                          R"("fks":[{"name":"FK","id":5,"ref_table_id":7,"ref_schema":"dbo","ref_table":"P'",)"
                          R"("on_delete":"NO_ACTION","on_update":"NO_ACTION",)"
                          R"("columns":[{"column":"A","ref_column":"A"}]}])"));
    EXPECT_EQ(codes(), "name-not-writable dbo.P'\nfk-parent-missing dbo.C");
    EXPECT_FALSE(has(R"("fk":)")) << document();
}
