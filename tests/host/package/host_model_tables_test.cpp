// Tables, columns and types of a package's model.
#include "host_model_test.hpp"

class HostModelTablesTest : public HostPackageTest {};

struct model_case {
    const char *name;
    std::string elements;
    const char *expected;
};

static std::string options(const std::string &collation)
{
    return an_element("SqlDatabaseOptions", "", a_property("Collation", collation));
}

static std::string one_col(const std::string &type, const std::string &sizes = "", const std::string &properties = "")
{
    return a_model_table("[dbo].[T]", a_model_col("[dbo].[T].[A]", type, sizes, properties));
}

static const model_case cases[] = {
    {"a plain column is nullable unless the model says otherwise", one_col("[int]"),
     "1 dbo.T\n  1 A int int 4 10 0 null\n"},
    {"booleans may be written in lower case", one_col("[int]", "", a_property("IsNullable", "false")),
     "1 dbo.T\n  1 A int int 4 10 0\n"},
    {"lengths are characters", one_col("[nvarchar]", a_property("Length", "50")),
     "1 dbo.T\n  1 A nvarchar nvarchar 100 0 0 null\n"},
    {"a length without limit", one_col("[varbinary]", a_property("IsMax", "True")),
     "1 dbo.T\n  1 A varbinary varbinary -1 0 0 null\n"},
    {"a decimal without scale", one_col("[decimal]", a_property("Precision", "9")),
     "1 dbo.T\n  1 A decimal decimal 5 9 0 null\n"},
    {"a short float", one_col("[float]", a_property("Precision", "24")), "1 dbo.T\n  1 A real real 4 24 0 null\n"},
    {"a time without scale has none", one_col("[time]"), "1 dbo.T\n  1 A time time 3 8 0 null\n"},
    {"a time with fractions", one_col("[time]", a_property("Scale", "7")), "1 dbo.T\n  1 A time time 5 16 7 null\n"},
    {"a row version", one_col("[rowversion]"), "1 dbo.T\n  1 A timestamp timestamp 8 0 0 null\n"},
    {"sysname", one_col("[sys].[sysname]"), "1 dbo.T\n  1 A nvarchar sysname 256 0 0 null\n"},
    {"a type of the server's own library", one_col("[sys].[hierarchyid]"),
     "1 dbo.T\n  1 A - hierarchyid 892 0 0 null clr\n"},
    {"a type that is not known", one_col("[vector]", a_property("Length", "3")),
     "1 dbo.T\n  1 A vector vector 0 0 0 null\n"},
    {"identity", one_col("[int]", "", a_property("IsIdentity", "True")),
     "1 dbo.T\n  1 A int int 4 10 0 null identity 1,1\n"},
    {"identity with numbers",
     one_col("[int]", "",
             a_property("IsIdentity", "True") + a_property("IdentitySeed", "-5") +
                 a_property("IdentityIncrement", "10")),
     "1 dbo.T\n  1 A int int 4 10 0 null identity -5,10\n"},
    {"what a column may be",
     one_col("[int]", "",
             a_property("IsRowGuidColumn", "True") + a_property("IsSparse", "True") +
                 a_property("IsColumnSet", "True") + a_property("IsFileStream", "True") +
                 a_property("IsHidden", "True") + a_property("GeneratedAlwaysType", "2") +
                 references("ColumnEncryptionKey", "[K]")),
     "1 dbo.T\n  1 A int int 4 10 0 null rowguid sparse columnset filestream hidden encrypted generated 2\n"},
    {"the database's collation, which may come last",
     one_col("[varchar]", a_property("Length", "5")) + options("Japanese_CS_AS_KS_WS"),
     "1 dbo.T\n  1 A varchar varchar 5 0 0 Japanese_CS_AS_KS_WS 932 0 null\n"},
    {"a column's own collation",
     options("Latin1_General_CI_AS") +
         one_col("[varchar]", a_property("Length", "5"), a_property("Collation", "Greek_BIN")),
     "1 dbo.T\n  1 A varchar varchar 5 0 0 Greek_BIN 1253 0 null\n"},
    {"only texts have a collation", options("Latin1_General_CI_AS") + one_col("[int]"),
     "1 dbo.T\n  1 A int int 4 10 0 null\n"},
    {"an alias type, which may come last",
     one_col("[dbo].[Code]") + an_element("SqlUserDefinedDataType", "[dbo].[Code]",
                                          a_property("Length", "12") + a_property("IsNullable", "False") +
                                              references("Type", "[nchar]", "BuiltIns")),
     "1 dbo.T\n  1 A nchar Code 24 0 0 null\n"},
    {"an alias type of a decimal",
     an_element("SqlUserDefinedDataType", "[dbo].[Money]",
                a_property("Precision", "19") + a_property("Scale", "4") +
                    references("Type", "[decimal]", "BuiltIns")) +
         one_col("[dbo].[Money]", "", a_property("IsNullable", "False")),
     "1 dbo.T\n  1 A decimal Money 9 19 4\n"},
    {"a type of a library", an_element("SqlUserDefinedType", "[dbo].[Point]", "") + one_col("[dbo].[Point]"),
     "1 dbo.T\n  1 A - Point -1 0 0 null clr\n"},
    {"a type that is defined elsewhere", one_col("[other].[Thing]"), "1 dbo.T\n  1 A - Thing 0 0 0 null\n"},
    {"a computed column",
     a_model_table("[dbo].[T]",
                   "<Entry>" +
                       an_element("SqlComputedColumn", "[dbo].[T].[Sum]",
                                  a_script("ExpressionScript", "([a]+[b])") + a_property("IsPersisted", "True") +
                                      a_property("IsPersistedNullable", "False")) +
                       "</Entry>"),
     "1 dbo.T\n  1 Sum AS ([a]+[b]) persisted\n"},
    {"names with dots, blanks and brackets",
     a_model_table("[my.schema].[Order []] Details]]]",
                   a_model_col("[my.schema].[Order []] Details]]].[a.].[b]", "[int]")),
     "1 my.schema.Order [] Details]\n  1 b int int 4 10 0 null\n"},
    {"tables in order of their names, whatever that of the model",
     a_model_table("[dbo].[b]", "") + a_model_table("[abc].[Z]", "") + a_model_table("[dbo].[A]", ""),
     "1 abc.Z\n2 dbo.A\n3 dbo.b\n"},
    {"a table with its history",
     a_model_table("[dbo].[H]", "") +
         a_model_table("[dbo].[T]", "", references("TemporalSystemVersioningHistoryTable", "[dbo].[H]")),
     "1 dbo.H temporal 1\n2 dbo.T temporal 2\n"},
    {"a table with its history, as another writer has it",
     a_model_table("[dbo].[T]", "",
                   a_property("IsSystemVersioningOn", "True") + references("HistoryTable", "[dbo].[H]")) +
         a_model_table("[dbo].[H]", "", a_property("IsAutoGeneratedHistoryTable", "True")),
     "1 dbo.H temporal 1\n2 dbo.T temporal 2\n"},
    {"what a table may be",
     a_model_table("[dbo].[T]", "", a_property("IsMemoryOptimized", "True") + a_property("IsNode", "True")),
     "1 dbo.T memory node\n"},
    {"descriptions",
     one_col("[int]") +
         an_element("SqlExtendedProperty", "[SqlTableBase].[dbo].[T].[MS_Description]",
                    a_script("Value", "N'It''s a table'") + references("Host", "[dbo].[T]")) +
         an_element("SqlExtendedProperty", "[SqlColumn].[dbo].[T].[A].[MS_Description]",
                    a_script("Value", "'a'") + references("Host", "[dbo].[T].[A]")) +
         an_element("SqlExtendedProperty", "[SqlColumn].[dbo].[T].[A].[Other]",
                    a_script("Value", "'b'") + references("Host", "[dbo].[T].[A]")) +
         an_element("SqlExtendedProperty", "[SqlIndexBase].[dbo].[T].[A].[MS_Description]",
                    a_script("Value", "'c'") + references("Host", "[dbo].[T].[A]")),
     "1 dbo.T \"It's a table\"\n  1 A int int 4 10 0 null \"a\"\n"},
    {"a description that is not one literal",
     one_col("[int]") + an_element("SqlExtendedProperty", "[SqlColumn].[dbo].[T].[A].[MS_Description]",
                                   a_script("Value", "'a' + 'b'") + references("Host", "[dbo].[T].[A]")),
     "1 dbo.T\n  1 A int int 4 10 0 null \"'a' + 'b'\"\n"},
    {"elements that concern nobody, and what a later version may add",
     "<Element Type=\"SqlFuture\"><Whatever><Element Type=\"SqlTable\"/></Whatever></Element><Extra/>" +
         a_model_table("[dbo].[T]", "", "<Extra><Property Name=\"x\"/></Extra>"),
     "1 dbo.T\n"},
    {"columns of views",
     an_element(
         "SqlView", "[dbo].[V]",
         a_relationship("Columns", "<Entry>" + an_element("SqlComputedColumn", "[dbo].[V].[A]", "") + "</Entry>")),
     ""},
};

TEST_F(HostModelTablesTest, Read)
{
    for (const model_case &c : cases) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements));
        EXPECT_OK(ctx);
        EXPECT_EQ(described(), c.expected);
        EXPECT_EQ(codes(), "");
        reset();
    }
}

TEST_F(HostModelTablesTest, NamespacePrefixes)
{
    read(a_package_of(R"(<d:DataSchemaModel xmlns:d="u"><d:Model><d:Element d:Type="SqlTable" d:Name="[dbo].[T]"/>)"
                      "</d:Model></d:DataSchemaModel>"));
    EXPECT_OK(ctx);
    EXPECT_EQ(described(), "1 dbo.T\n");
}

TEST_F(HostModelTablesTest, DatabaseAndSequences)
{
    const std::string model =
        a_model(options("SQL_Latin1_General_CP1_CI_AS") +
                an_element("SqlSequence", "[s].[Numbers]",
                           a_property("StartValue", "7") + a_property("Increment", "-2") +
                               a_relationship("TypeSpecifier", "<Entry>" +
                                                                   an_element("SqlTypeSpecifier", "",
                                                                              references("Type", "[int]", "BuiltIns")) +
                                                                   "</Entry>")));
    read(a_package_of(model, true, {{"DacMetadata.xml", "<DacType><Name>Shop</Name><Version>1</Version></DacType>"}}));
    EXPECT_OK(ctx);
    EXPECT_STREQ(catalogue.name, "Shop");
    EXPECT_STREQ(catalogue.collation, "SQL_Latin1_General_CP1_CI_AS");
    EXPECT_EQ(catalogue.code_page, 1252);
    ASSERT_EQ(catalogue.sequences.size(), 1u);
    const host_sequence &sequence = catalogue.sequences.front();
    EXPECT_EQ(std::string(sequence.schema_name) + ' ' + sequence.name + ' ' + sequence.system_type + ' ' +
                  sequence.start + ' ' + sequence.increment,
              "s Numbers int 7 -2");
}

TEST_F(HostModelTablesTest, LeftObjects)
{
    read(a_package(an_element("SqlView", "[dbo].[V]", "") + an_element("SqlProcedure", "[s].[P.1]", "") +
                   an_element("SqlScalarFunction", "[dbo].[F]", "") + an_element("SqlDmlTrigger", "[dbo].[Tr]", "") +
                   an_element("SqlSynonym", "[dbo].[S]", "")));
    EXPECT_OK(ctx);
    std::string text;
    for (const host_left_object &object : catalogue.left_objects)
        text += std::string(object.kind) + ' ' + object.name + '\n';
    EXPECT_EQ(text, "views dbo.V\nprocedures s.P.1\nfunctions dbo.F\ntriggers dbo.Tr\nsynonyms dbo.S\n");
}

TEST_F(HostModelTablesTest, UnknownTableProperties)
{
    read(a_package(a_model_table("[dbo].[T]", "",
                                 a_property("IsLedger", "True") + a_property("IsOther", "False") +
                                     a_property("IsAnsiNullsOn", "True") + a_property("RetentionUnit", "-1"))));
    EXPECT_OK(ctx);
    EXPECT_EQ(lines(), "table-property-unknown: dbo.T: the model says this of the table, and it is not known here: it "
                       "may be more than an ordinary table: IsLedger");
}

TEST_F(HostModelTablesTest, Refused)
{
    const struct {
        const char *name;
        std::string elements;
        const char *message;
    } refusals[] = {
        {"a name without brackets", a_model_table("dbo.T", ""), "'dbo.T' is not a name in brackets"},
        {"a name that is cut off", a_model_table("[dbo].[T", ""), "'[dbo].[T' is not a name in brackets"},
        {"a name with something between its parts", a_model_table("[dbo]x[T]", ""),
         "'[dbo]x[T]' is not a name in brackets"},
        {"a name that ends in a dot", a_model_table("[dbo].[T].", ""), "'[dbo].[T].' is not a name in brackets"},
        {"an empty part", a_model_table("[dbo].[]", ""), "'[dbo].[]' is not a name in brackets"},
        {"no name", a_model_table("", ""), "'' is not a name in brackets"},
        {"a table without schema", a_model_table("[T]", ""), "table [T] is not named by schema and name"},
        {"a table that is there twice", a_model_table("[dbo].[T]", "") + a_model_table("[dbo].[T]", ""),
         "table [dbo].[T] is there twice"},
        {"a column without a name", a_model_table("[dbo].[T]", a_model_col("", "[int]")),
         "table dbo.T has a column without a name"},
        {"a column without a type",
         a_model_table("[dbo].[T]", "<Entry>" + an_element("SqlSimpleColumn", "[dbo].[T].[A]", "") + "</Entry>"),
         "column [dbo].[T].[A] has no type"},
        {"a column whose type has no name", one_col(""), "column [dbo].[T].[A] has no type"},
        {"a length that is not a number", one_col("[nvarchar]", a_property("Length", "4x")),
         "Length is '4x', not a number from 0 to 1000000000"},
        {"a negative length", one_col("[nvarchar]", a_property("Length", "-4")),
         "Length is '-4', not a number from 0 to 1000000000"},
        {"a precision beyond all types", one_col("[decimal]", a_property("Precision", "256")),
         "a type has precision 256 and scale 0"},
    };
    for (const auto &c : refusals) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements));
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        const std::string description = KT_context__err_description(ctx);
        EXPECT_TRUE(description.starts_with("model.xml:")) << description;
        EXPECT_TRUE(description.ends_with(std::string(": ") + c.message)) << description;
        reset();
    }
}
