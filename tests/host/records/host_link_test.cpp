// Ids and names that stand for two things, or for nothing.
#include "host_test.hpp"

class HostLinkTest : public HostTest {};

static std::string fk_to(int id, const std::string &name, int ref_tbl_id, const std::string &col,
                         const std::string &ref_col, const std::string &ref_table = "P")
{
    return R"({"name":")" + name + R"(","id":)" + std::to_string(id) + R"(,"ref_table_id":)" +
           std::to_string(ref_tbl_id) + R"(,"ref_schema":"dbo","ref_table":")" + ref_table +
           R"(","on_delete":"NO_ACTION","on_update":"NO_ACTION","columns":[{"column":")" + col + R"(","ref_column":")" +
           ref_col + R"("}]})";
}

TEST_F(HostLinkTest, Refused)
{
    const std::string a = a_col(1, "A", "int");
    const struct {
        const char *name;
        std::string tables;
        uint64_t code;
        const char *message;
    } cases[] = {
        {"two tables with one id", a_table(7, "T", a) + ',' + a_table(7, "U", a), KT_ERR_UNEXPECTED_VALUE,
         "tables dbo.T and dbo.U have the same id 7"},
        {"two columns with one id", a_table(7, "T", a + ',' + a_col(1, "B", "int")), KT_ERR_UNEXPECTED_VALUE,
         "columns A and B of table dbo.T have the same id 1"},
        {"a key of an unknown column", a_table(7, "T", a, a_pk("PK", "B")), KT_ERR_UNEXPECTED_VALUE,
         "key PK names column B, which table dbo.T lacks"},
        {"a key without a name of an unknown column", a_table(7, "T", a, R"("pk":{"columns":[{"name":"B"}]})"),
         KT_ERR_UNEXPECTED_VALUE, "key without a name names column B, which table dbo.T lacks"},
        {"a key of a column in the case of neither of two",
         a_table(7, "T", a_col(1, "ab", "int") + ',' + a_col(2, "AB", "int"), a_pk("PK", "Ab")),
         KT_ERR_UNEXPECTED_VALUE, "key PK names column Ab, which table dbo.T lacks"},
        {"a key that names a column twice", a_table(7, "T", a, a_pk("PK", "A A")), KT_ERR_UNEXPECTED_VALUE,
         "key PK of table dbo.T names column A twice"},
        {"a key without columns", a_table(7, "T", a, a_pk("PK", "")), KT_ERR_UNEXPECTED_VALUE,
         "key PK of table dbo.T has no columns"},
        {"two keys of one name",
         a_table(7, "T", a, R"("uniques":[)" + a_unique("U", "A") + ',' + a_unique("U", "A") + ']'),
         KT_ERR_UNEXPECTED_VALUE, "table dbo.T has two constraints of the name U"},
        {"a unique key with the primary key's name",
         a_table(7, "T", a, a_pk("U", "A") + R"(,"uniques":[)" + a_unique("U", "A") + ']'), KT_ERR_UNEXPECTED_VALUE,
         "table dbo.T has two constraints of the name U"},
        {"two checks of one name",
         a_table(7, "T", a, R"x("checks":[{"name":"C","definition":"(1=1)"},{"name":"C","definition":"(1=2)"}])x"),
         KT_ERR_UNEXPECTED_VALUE, "table dbo.T has two constraints of the name C"},
        {"a check of an unknown column",
         a_table(7, "T", a, R"("checks":[{"name":"C","definition":"1=1","column":"B"}])"), KT_ERR_UNEXPECTED_VALUE,
         "check C names column B, which table dbo.T lacks"},
        {"a foreign key of an unknown column", a_table(7, "T", a, R"("fks":[)" + fk_to(1, "FK", 7, "B", "A") + ']'),
         KT_ERR_UNEXPECTED_VALUE, "key FK names column B, which table dbo.T lacks"},
        {"a foreign key to an unknown column", a_table(7, "T", a, R"("fks":[)" + fk_to(1, "FK", 7, "A", "B") + ']'),
         KT_ERR_UNEXPECTED_VALUE, "key FK names column B, which table dbo.T lacks"},
        {"two foreign keys with one id",
         a_table(7, "T", a, R"("fks":[)" + fk_to(1, "FK", 7, "A", "A") + ']') + ',' +
             a_table(8, "U", a, R"("fks":[)" + fk_to(1, "FK2", 7, "A", "A") + ']'),
         KT_ERR_UNEXPECTED_VALUE, "foreign keys FK and FK2 have the same id 1"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_file(an_export(c.tables));
        EXPECT_ERROR(ctx, c.code, c.message);
        EXPECT_EQ(schema, nullptr);
        reset();
    }
}

TEST_F(HostLinkTest, NamesOutsideDboCarryTheirSchema)
{
    const std::string a = a_col(1, "A", "int");
    import_tables(a_table(7, "T", a) + R"(,{"id":8,"schema":"sales","name":"T","columns":[)" + a + "]}");
    EXPECT_TRUE(has(R"("tbls":{"7":{"name":"T","txid":0,)")) << document();
    EXPECT_TRUE(has(R"("8":{"name":"sales.T","txid":0,)")) << document();
}

TEST_F(HostLinkTest, ReferencesWithoutAnIdAreLinkedByName)
{
    const std::string parents = a_table(7, "P", a_col(1, "Id", "int"), a_pk("PK", "Id")) + ',';
    const struct {
        const char *name;
        std::string ref_table;
        std::string col;
        std::string ref_col;
        const char *codes;
    } cases[] = {
        {"as they are spelled", "P", "A", "Id", ""},
        {"in another case", "p", "a", "ID", ""},
        {"of a table that is not there", "Q", "A", "Id", "fk-parent-missing dbo.C"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(parents + a_table(8, "C", a_col(1, "A", "int"),
                                        R"("fks":[)" + fk_to(1, "FK", 0, c.col, c.ref_col, c.ref_table) + ']'));
        EXPECT_EQ(codes(), c.codes);
        EXPECT_EQ(has(R"("fk":{"name":"FK","ref_tbl_id":"7","ref_col_id":"1")"), *c.codes == 0) << document();
    }
}
