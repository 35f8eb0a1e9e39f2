// Types that the caller gives columns: the schema is the one of a source that has these types.
#include "host_test.hpp"

class HostOverrideTypesTest : public HostTest {
  protected:
    void import_with(const std::string &script, const std::vector<const char *> &types)
    {
        tov_host_options options{};
        options.types = {types.data(), types.size()};
        import_file(script, &options);
    }
    std::string json()
    {
        kt_owned_string text{ctx};
        tov_schema__to_json(ctx, schema, text.out());
        return KT_context__has_err(ctx) ? "" : KT_string__sz(text);
    }
};

static std::string column(const std::string &declaration)
{
    return "CREATE TYPE dbo.Amount FROM decimal(9,2) NOT NULL\nGO\nCREATE TABLE dbo.T (Id int NOT NULL PRIMARY KEY, "
           "C " +
           declaration + ")";
}

TEST_F(HostOverrideTypesTest, TheColumnIsAsIfItWereDeclaredSo)
{
    const struct {
        const char *name;
        const char *declared;
        std::vector<const char *> types;
        const char *expected;
    } cases[] = {
        {"sizes", "decimal(9,2) NULL", {"dbo.T.C=decimal(18,4)"}, "decimal(18,4) NULL"},
        {"another kind, in another case", "int NOT NULL", {"DBO.t.c=NVARCHAR(20)"}, "nvarchar(20) NOT NULL"},
        {"max", "int NULL", {"dbo.T.C=varbinary(max)"}, "varbinary(max) NULL"},
        {"a scale alone", "datetime NULL", {"dbo.T.C=datetime2(3)"}, "datetime2(3) NULL"},
        {"the type's other name", "float NULL", {"dbo.T.C=double precision"}, "float NULL"},
        {"texts keep their collation",
         "varchar(9) COLLATE Latin1_General_BIN NULL",
         {"dbo.T.C=nvarchar(9)"},
         "nvarchar(9) COLLATE Latin1_General_BIN NULL"},
        {"others lose it", "varchar(9) COLLATE Latin1_General_BIN NULL", {"dbo.T.C=int"}, "int NULL"},
        {"a type of an assembly", "geography NULL", {"dbo.T.C=varbinary(max)"}, "varbinary(max) NULL"},
        {"an alias", "dbo.Amount NULL", {"dbo.Amount=money"}, "money NULL"},
        {"the column counts more than its alias", "dbo.Amount NULL", {"dbo.Amount=money", "dbo.T.C=int"}, "int NULL"},
        {"with its default", "int NULL DEFAULT (1)", {"dbo.T.C=bit"}, "bit NULL DEFAULT (1)"},
        {"an identity", "int NOT NULL IDENTITY(1,1)", {"dbo.T.C=decimal(9)"}, "decimal(9,0) NOT NULL IDENTITY(1,1)"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_with(column(c.expected), {});
        ASSERT_OK(ctx);
        const std::string expected = json();
        import_with(column(c.declared), {});
        EXPECT_NE(json(), "");
        import_with(column(c.declared), c.types);
        ASSERT_OK(ctx);
        EXPECT_EQ(json(), expected);
    }
}

TEST_F(HostOverrideTypesTest, ANameThatIsGoodForNothingIsAFinding)
{
    import_with(column("int NULL"), {"dbo.T.X=int", "dbo.Amount=int"});
    ASSERT_OK(ctx);
    EXPECT_EQ(lines(), "pattern-unused: type: no column or alias type has such a name: dbo.T.X=int\n"
                       "pattern-unused: type: no column or alias type has such a name: dbo.Amount=int");
}

TEST_F(HostOverrideTypesTest, MistakesAreErrors)
{
    const struct {
        const char *declared;
        const char *type;
        const char *error;
    } cases[] = {
        {"int", "dbo.T.C", "'dbo.T.C' is not of the form NAME=TYPE"},
        {"int", "=int", "'=int' is not of the form NAME=TYPE"},
        {"int", "dbo.T.C=", "'dbo.T.C=': expected a type, found the end"},
        {"int", "dbo.T.C=decimal(39)", "'dbo.T.C=decimal(39)': decimal takes a size from 1 to 38, not 39"},
        {"int", "dbo.T.C=dbo.Amount", "'dbo.T.C=dbo.Amount': 'dbo.Amount' is not a type of the server"},
        {"int", "dbo.T.C=int NULL", "'dbo.T.C=int NULL': 'int NULL' is not a type of the server"},
        {"int IDENTITY", "dbo.T.C=decimal(9,2)",
         "'dbo.T.C=decimal(9,2)': the column is an identity, which only whole numbers can be"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.type);
        import_with(column(c.declared), {c.type});
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, c.error);
        EXPECT_EQ(schema, nullptr);
        reset();
    }
}
