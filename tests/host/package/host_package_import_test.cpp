// A package and an export of one database give one document. The export's ids are those that the package reader gives.
#include "host_test.hpp"
#include "package_builder.hpp"

class HostPackageImportTest : public HostTest {};

static const std::string text_type =
    R"("collation":"SQL_Latin1_General_CP1_CI_AS","code_page":1252,"comparison_style":196609)";

static std::string the_export()
{
    const std::string orders =
        a_table(2, "Orders",
                a_col(1, "Id", "int", R"("precision":10,"is_identity":true,"identity":{"seed":"1","increment":"1"})") +
                    ',' + a_col(2, "Customer", "nvarchar", R"("max_length":10,)" + text_type) + ',' +
                    a_col(3, "Total", "decimal",
                          R"x("max_length":9,"precision":18,"scale":2,"default":{"kind":"constraint","id":1,)x"
                          R"x("name":"DF_Total","definition":"((0))"})x"),
                a_pk("PK_Orders", "Id") +
                    R"x(,"fks":[{"name":"FK_Orders","id":1,"ref_table_id":1,"ref_schema":"dbo","ref_table":)x"
                    R"x("Customers","on_delete":"CASCADE","on_update":"NO_ACTION","columns":[{"column":"Customer",)x"
                    R"x("ref_column":"Code"}]}],"checks":[{"name":"CK_Total","definition":"([Total]>=(0))"}])x");
    const std::string customers =
        a_table(1, "Customers",
                a_col(1, "Code", "nvarchar", R"("max_length":10,)" + text_type) + ',' +
                    R"({"id":2,"name":"Vip","system_type":"bit","user_type":"Flag","user_type_schema":"dbo",)" +
                    R"("max_length":1,"precision":1,"is_nullable":true})",
                a_pk("PK_Customers", "Code", R"(,"is_clustered":true)"));
    return R"({"format":"sqlserver-catalogue","format_version":1,"database":{"name":"Shop","can_view_definitions":true,)"
           R"("code_page":1252,"collation":"SQL_Latin1_General_CP1_CI_AS"},"tables":[)" +
           customers + ',' + orders + "]}";
}

static std::string the_package(bool is_from_server)
{
    const std::string not_null = a_property("IsNullable", "False");
    const std::string five = a_property("Length", "5");
    const std::string sized = a_property("Precision", "18") + a_property("Scale", "2");
    const std::string elements =
        a_model_key("SqlPrimaryKeyConstraint", "[dbo].[PK_Orders]", "[dbo].[Orders]", "[dbo].[Orders].[Id]") +
        an_element("SqlForeignKeyConstraint", "[dbo].[FK_Orders]",
                   a_property("OnDeleteAction", "1") + references("Columns", "[dbo].[Orders].[Customer]") +
                       references("DefiningTable", "[dbo].[Orders]") +
                       references("ForeignColumns", "[dbo].[Customers].[Code]") +
                       references("ForeignTable", "[dbo].[Customers]")) +
        an_element("SqlCheckConstraint", "[dbo].[CK_Total]",
                   a_script("CheckExpressionScript", is_from_server ? "[Total]>=(0)" : "Total >= 0") +
                       references("DefiningTable", "[dbo].[Orders]")) +
        an_element("SqlDefaultConstraint", "[dbo].[DF_Total]",
                   a_script("DefaultExpressionScript", is_from_server ? "((0))" : "0") +
                       references("ForColumn", "[dbo].[Orders].[Total]")) +
        a_model_table("[dbo].[Orders]",
                      a_model_col("[dbo].[Orders].[Id]", "[int]", "", not_null + a_property("IsIdentity", "True")) +
                          a_model_col("[dbo].[Orders].[Customer]", "[nvarchar]", five, not_null) +
                          a_model_col("[dbo].[Orders].[Total]", "[decimal]", sized, not_null)) +
        a_model_table("[dbo].[Customers]", a_model_col("[dbo].[Customers].[Code]", "[nvarchar]", five, not_null) +
                                               a_model_col("[dbo].[Customers].[Vip]", "[dbo].[Flag]")) +
        an_element("SqlUserDefinedDataType", "[dbo].[Flag]", references("Type", "[bit]", "BuiltIns")) +
        a_model_key("SqlPrimaryKeyConstraint", "[dbo].[PK_Customers]", "[dbo].[Customers]",
                    "[dbo].[Customers].[Code]") +
        an_element("SqlDatabaseOptions", "", a_property("Collation", "SQL_Latin1_General_CP1_CI_AS"));
    return a_package_of(a_model(elements), is_from_server,
                        {{"DacMetadata.xml", "<DacType><Name>Shop</Name></DacType>"}});
}

TEST_F(HostPackageImportTest, GivesTheDocumentOfTheExport)
{
    import_file(the_export());
    ASSERT_OK(ctx);
    EXPECT_EQ(codes(), "comparison-approximate dbo.Customers.Code");
    const std::string expected = everything();
    for (const bool is_from_server : {true, false}) {
        SCOPED_TRACE(is_from_server ? "from a server" : "from a project");
        import_file(the_package(is_from_server));
        ASSERT_OK(ctx);
        EXPECT_EQ(codes(), "comparison-approximate dbo.Customers.Code");
        EXPECT_EQ(everything(), expected);
    }
}

TEST_F(HostPackageImportTest, AKeyWithoutAName)
{
    import_file(a_package(a_model_table("[dbo].[T]", a_model_col("[dbo].[T].[A]", "[int]")) +
                          a_model_key("SqlUniqueConstraint", "", "[dbo].[T]", "[dbo].[T].[A]")));
    ASSERT_OK(ctx);
    EXPECT_EQ(codes(), "unique-nullable dbo.T.A");
}
