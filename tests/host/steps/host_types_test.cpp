// SQL Server's types become type records.
#include "host_test.hpp"

class HostTypesTest : public HostTest {};

TEST_F(HostTypesTest, TypeRecords)
{
    const std::string ci = R"(,"collation":"Latin1_General_CI_AS","code_page":1252,"comparison_style":196609)";
    const std::string ci_flags = R"("locale":"Latin1_General","noaccent":false,"nocase":true,)";
    const struct {
        const char *type;
        std::string more;
        std::string record;
    } cases[] = {
        {"bigint", R"("max_length":8)", R"({"name":"sint64"})"},
        {"int", "", R"({"name":"sint32"})"},
        {"smallint", "", R"({"name":"sint16"})"},
        {"tinyint", "", R"({"name":"uint8"})"},
        {"bit", "", R"({"name":"uint1"})"},
        {"float", "", R"({"name":"real8"})"},
        {"real", "", R"({"name":"real4"})"},
        {"money", "", R"({"name":"money8"})"},
        {"smallmoney", "", R"({"name":"money4"})"},
        {"date", "", R"({"name":"date"})"},
        {"uniqueidentifier", "", R"({"name":"guid"})"},
        {"decimal", R"("precision":18,"scale":4)", R"({"name":"decimal","precision":18,"scale":4})"},
        {"numeric", R"("precision":5,"scale":0)", R"({"name":"decimal","precision":5,"scale":0})"},
        {"time", R"("precision":16,"scale":7)", R"({"name":"time","precision":7})"},
        {"datetime", R"("precision":23,"scale":3)", R"({"name":"datetime","precision":3})"},
        {"datetime2", R"("precision":27,"scale":7)", R"({"name":"datetime","precision":7})"},
        {"smalldatetime", R"("precision":16,"scale":0)", R"({"name":"datetime","precision":0})"},
        {"varchar", R"("max_length":40)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":false,"width":40})"},
        {"char", R"("max_length":3)" + ci,
         R"({"name":"text","fixed_width":true,)" + ci_flags + R"("unicode":false,"width":3})"},
        {"nvarchar", R"("max_length":40)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":true,"width":20})"},
        {"nchar", R"("max_length":40)" + ci,
         R"({"name":"text","fixed_width":true,)" + ci_flags + R"("unicode":true,"width":20})"},
        {"nvarchar", R"("max_length":-1)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":true,"width":0})"},
        {"varchar", R"("max_length":-1)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":false,"width":0})"},
        {"text", R"("max_length":16)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":false,"width":0})"},
        {"ntext", R"("max_length":16)" + ci,
         R"({"name":"text","fixed_width":false,)" + ci_flags + R"("unicode":true,"width":0})"},
        {"xml", R"("max_length":-1)",
         R"({"name":"text","fixed_width":false,"noaccent":false,"nocase":false,"unicode":true,"width":0})"},
        {"varchar", R"("max_length":9,"collation":"Latin1_General_BIN2","comparison_style":0)",
         R"({"name":"text","fixed_width":false,"locale":"Latin1_General","binary":true,"unicode":false,"width":9})"},
        {"varchar", R"("max_length":9,"collation":"Latin1_General_100_CS_AI_KS_WS_SC","comparison_style":2)",
         R"({"name":"text","fixed_width":false,"locale":"Latin1_General_100","noaccent":true,"nocase":false,)"
         R"("_KS":true,"_WS":true,"_SC":true,"unicode":false,"width":9})"},
        {"varbinary", R"("max_length":50)", R"({"name":"blob","fixed_width":false,"width":50})"},
        {"varbinary", R"("max_length":-1)", R"({"name":"blob","fixed_width":false,"width":0})"},
        {"binary", R"("max_length":16)", R"({"name":"blob","fixed_width":true,"width":16})"},
        {"image", R"("max_length":16)", R"({"name":"blob","fixed_width":false,"width":0})"},
        {"timestamp", R"("max_length":8)", R"({"name":"blob","fixed_width":true,"width":8})"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type + c.more);
        import_tables(a_table(7, "T", a_col(1, "C", c.type, c.more)));
        EXPECT_TRUE(has(R"("cols":{"1":{"name":"C","type":)" + c.record + R"(,"mssql_col_data_type":")" + c.type + '"'))
            << document();
        EXPECT_EQ(codes(), c.type == std::string("timestamp") ? "rowversion-as-bytes dbo.T.C" : "");
    }
}

static std::string clr_col(const std::string &type, const std::string &schema)
{
    return R"({"id":1,"name":"C","user_type":")" + type + R"(","user_type_schema":")" + schema +
           R"(","is_assembly_type":true,"max_length":892,"is_nullable":true})";
}

TEST_F(HostTypesTest, TypesOfAssembliesAreUnboundedBlobs)
{
    for (const char *type : {"geography", "geometry", "hierarchyid"}) {
        import_tables(a_table(7, "T", clr_col(type, "sys")));
        EXPECT_TRUE(has(R"("type":{"name":"blob","fixed_width":false,"width":0},"mssql_col_data_type":")" +
                        std::string(type) + '"'))
            << document();
        EXPECT_EQ(codes(), "");
    }
    import_tables(a_table(7, "T", clr_col("Point3", "dbo")));
    EXPECT_TRUE(has(R"("type":{"name":"blob","fixed_width":false,"width":0},"mssql_col_data_type":"Point3")"));
    EXPECT_EQ(codes(), "type-as-bytes dbo.T.C");
}

TEST_F(HostTypesTest, AnAliasIsMappedByItsBaseAndKeepsItsName)
{
    import_tables(a_table(7, "T",
                          R"({"id":1,"name":"C","system_type":"int","user_type":"ProductCode",)"
                          R"("is_user_type":true,"max_length":4,"is_nullable":true})"));
    EXPECT_TRUE(has(R"("type":{"name":"sint32"},"mssql_col_data_type":"ProductCode")")) << document();
    EXPECT_EQ(codes(), "");
}

TEST_F(HostTypesTest, TheHostsDatetimeTypeAndCollationAreKept)
{
    import_tables(a_table(7, "T",
                          a_col(1, "A", "smalldatetime") + ',' + a_col(2, "B", "datetime2") + ',' +
                              a_col(3, "C", "varchar", R"("collation":"Latin1_General_CI_AS")")));
    EXPECT_NE(everything().find(R"("collations":{"7":{"1":"smalldatetime","3":"Latin1_General_CI_AS"}})"),
              std::string::npos)
        << everything();
}

TEST_F(HostTypesTest, AMomentWithAnOffsetIsAText)
{
    const std::pair<const char *, const char *> widths[] = {{"0", "26"}, {"1", "30"}, {"3", "30"}, {"7", "34"}};
    for (const auto &[scale, width] : widths) {
        import_tables(a_table(7, "T", a_col(1, "A", "datetimeoffset", R"("scale":)" + std::string(scale))));
        EXPECT_EQ(codes(), "type-as-text dbo.T.A");
        EXPECT_TRUE(has(R"("type":{"name":"text","fixed_width":false,"binary":true,"unicode":false,"width":)" +
                        std::string(width) + R"(},"mssql_col_data_type":"datetimeoffset")"))
            << document();
        EXPECT_EQ(defin("7", "1"), "\"A\" text COLLATE BINARY NOT NULL");
    }
}

TEST_F(HostTypesTest, WhatCannotBeHeldIsUnprepared)
{
    const struct {
        const char *type;
        std::string more;
        const char *code;
        const char *record;
    } cases[] = {
        {"sql_variant", "", "type-unsupported", R"({"name":"host","host_type":"sql_variant"})"},
        {"quaternion", "", "type-unsupported", R"({"name":"host","host_type":"quaternion"})"},
        {"int", R"x("is_computed":true,"computed":{"definition":"([A]+(1))"})x", "column-computed",
         R"({"name":"sint32"})"},
        {"sql_variant", R"("is_computed":true)", "column-computed", R"({"name":"host","host_type":"sql_variant"})"},
        {"xml", R"("is_column_set":true)", "column-set",
         R"({"name":"text","fixed_width":false,"noaccent":false,"nocase":false,"unicode":true,"width":0})"},
        {"varbinary", R"("max_length":-1,"is_filestream":true)", "column-filestream",
         R"({"name":"blob","fixed_width":false,"width":0})"},
        {"int", R"("encryption_type":1)", "column-encrypted", R"({"name":"sint32"})"},
        {"datetime2", R"("scale":7,"generated_always_type":1,"is_hidden":true)", "column-generated",
         R"({"name":"datetime","precision":7})"},
        {"bigint", R"("is_hidden":true)", "column-hidden", R"({"name":"sint64"})"},
        {"decimal", R"("precision":38,"is_computed":true)", "column-computed",
         R"({"name":"decimal","precision":38,"scale":0})"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type + c.more);
        import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "C", c.type, c.more)));
        EXPECT_EQ(codes(), std::string(c.code) + " dbo.T.C");
        EXPECT_FALSE(has(R"("2":{)")) << document();
        EXPECT_NE(everything().find(R"("unprep-cols":{"7":{"2":{"name":"C","type":)" + std::string(c.record) +
                                    R"(,"mssql_col_data_type":")" + c.type + '"'),
                  std::string::npos)
            << everything();
    }
}

TEST_F(HostTypesTest, HostTextsOfExclusions)
{
    import_tables(a_table(7, "T",
                          a_col(1, "A", "int") + ',' + a_col(2, "B", "sql_variant") + ',' +
                              a_col(3, "C", "int", R"x("is_computed":true,"computed":{"definition":"([A]+(1))"})x")));
    EXPECT_EQ(lines(), "type-unsupported: dbo.T.B: left out of the table: no column of the schema can hold this type: "
                       "sql_variant\n"
                       "column-computed: dbo.T.C: left out of the table: the server computes its values: ([A]+(1))");
}

TEST_F(HostTypesTest, WidthsThatAreNotExactAreReported)
{
    const struct {
        const char *type;
        const char *more;
        const char *line;
    } cases[] = {
        {"decimal", R"("precision":19,"scale":4)",
         "decimal-too-wide: dbo.T.C: kept as a scaled 64-bit integer: values beyond 922337203685477.5807 are refused: "
         "decimal(19,4)"},
        {"decimal", R"("precision":38,"scale":0)",
         "decimal-too-wide: dbo.T.C: kept as a scaled 64-bit integer: values beyond 9223372036854775807 are refused: "
         "decimal(38,0)"},
        {"numeric", R"("precision":38,"scale":19)",
         "decimal-too-wide: dbo.T.C: kept as a scaled 64-bit integer: values beyond 0.9223372036854775807 are refused: "
         "numeric(38,19)"},
        {"decimal", R"("precision":38,"scale":21)",
         "decimal-too-wide: dbo.T.C: kept as a scaled 64-bit integer: values beyond 0.009223372036854775807 are "
         "refused: decimal(38,21)"},
        {"timestamp", R"("max_length":8)",
         "rowversion-as-bytes: dbo.T.C: kept as 8 bytes, which a database with the server's rules numbers itself: "
         "timestamp"},
        {"timestamp", R"("max_length":8,"is_nullable":true)",
         "rowversion-as-bytes: dbo.T.C: kept as 8 bytes, which a database with the server's rules numbers itself: "
         "timestamp"},
        {"varchar", R"("max_length":20,"collation":"Latin1_General_100_CI_AS_SC_UTF8","code_page":65001)",
         "width-in-bytes: dbo.T.C: kept with its width in characters: the server counts bytes of code page 65001, so "
         "fewer characters may fit there: varchar(20)"},
        {"char", R"("max_length":2,"collation":"Japanese_CI_AS","code_page":932)",
         "width-in-bytes: dbo.T.C: kept with its width in characters: the server counts bytes of code page 932, so "
         "fewer characters may fit there: char(2)"},
        {"varchar", R"("max_length":-1,"code_page":65001)", ""},
        {"nvarchar", R"("max_length":20,"code_page":932)", ""},
        {"decimal", R"("precision":18,"scale":18)", ""},
    };
    for (const auto &c : cases) {
        import_tables(a_table(7, "T", a_col(1, "C", c.type, c.more)));
        EXPECT_EQ(lines(), c.line);
    }
}
