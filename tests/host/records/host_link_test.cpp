// Ids and names that stand for two things, or for nothing.
#include "host_test.hpp"

class HostLinkTest : public HostTest {};

static std::string fk_to(int id, const std::string &name, int ref_tbl_id, const std::string &col,
                         const std::string &ref_col)
{
    return R"({"name":")" + name + R"(","id":)" + std::to_string(id) + R"(,"ref_table_id":)" +
           std::to_string(ref_tbl_id) +
           R"(,"ref_schema":"dbo","ref_table":"P","on_delete":"NO_ACTION","on_update":"NO_ACTION","columns":[{"column":")" +
           col + R"(","ref_column":")" + ref_col + R"("}]})";
}

TEST_F(HostLinkTest, Refused)
{
    const std::string a = a_col(1, "A", "int");
    const std::string in_sales = R"({"id":9,"schema":"sales","name":"Orders","columns":[)" + a + "]}";
    const struct {
        const char *name;
        std::string tables;
        uint64_t code;
        const char *message;
    } cases[] = {
        {"two tables with one id", a_table(7, "T", a) + ',' + a_table(7, "U", a), KT_ERR_UNEXPECTED_VALUE,
         "tables dbo.T and dbo.U have the same id 7"},
        {"two tables that differ in case", a_table(7, "Orders", a) + ',' + a_table(8, "ORDERS", a),
         KT_ERR_SCHEMA_NOT_SUPPORTED,
         "tables dbo.Orders and dbo.ORDERS would have the same name in SQLite, which knows no schemas and no case"},
        {"a name that looks like schema and name", a_table(7, "sales.orders", a) + ',' + in_sales,
         KT_ERR_SCHEMA_NOT_SUPPORTED,
         "tables dbo.sales.orders and sales.Orders would have the same name in SQLite, which knows no schemas and no "
         "case"},
        {"a name that SQLite keeps", a_table(7, "SQLite_stat", a), KT_ERR_SCHEMA_NOT_SUPPORTED,
         "table dbo.SQLite_stat would be named \"SQLite_stat\": SQLite keeps names that begin with sqlite_ for itself"},
        {"two columns with one id", a_table(7, "T", a + ',' + a_col(1, "B", "int")), KT_ERR_UNEXPECTED_VALUE,
         "columns A and B of table dbo.T have the same id 1"},
        {"two columns that differ in case", a_table(7, "T", a + ',' + a_col(2, "a", "int")),
         KT_ERR_SCHEMA_NOT_SUPPORTED, "columns A and a of table dbo.T would have the same name in SQLite"},
        {"a key of an unknown column", a_table(7, "T", a, a_pk("PK", "B")), KT_ERR_UNEXPECTED_VALUE,
         "key PK names column B, which table dbo.T lacks"},
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
