// Strings that SQLite tells apart and the server does not.
#include "host_test.hpp"

class HostComparisonsTest : public HostTest {
  protected:
    static std::string a_string(const std::string &type, const std::string &collation, int64_t code_page = 1252)
    {
        return a_col(1, "A", type,
                     R"("max_length":20,"code_page":)" + std::to_string(code_page) +
                         (collation.empty() ? "" : R"(,"collation":")" + collation + '"'));
    }
};

TEST_F(HostComparisonsTest, WhatAKeyTellsApart)
{
    const struct {
        const char *name;
        const char *type;
        const char *collation;
        int64_t code_page;
        const char *reason;
    } cases[] = {
        {"a Windows collation of Unicode", "nvarchar", "Latin1_General_CI_AS", 1252,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII, kana, width, ² and 2, ß and ss, "
         "blanks at the end)"},
        {"no accents", "nvarchar", "Latin1_General_CI_AI", 1252,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII, accents, kana, width, ² and 2, "
         "ß and ss, blanks at the end)"},
        {"case, accents, kana and width count", "nvarchar", "Latin1_General_CS_AS_KS_WS", 1252,
         "SQLite tells apart what the server takes as equal (ß and ss, blanks at the end)"},
        {"a code page has no kana", "varchar", "Latin1_General_CI_AS", 1252,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII, ² and 2, ß and ss, blanks at "
         "the end)"},
        {"the Japanese one has", "varchar", "Japanese_CS_AS", 932,
         "SQLite tells apart what the server takes as equal (kana, width, ß and ss, blanks at the end)"},
        {"rules of a code page", "varchar", "SQL_Latin1_General_CP1_CI_AS", 1252,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII, blanks at the end)"},
        {"of which Unicode knows nothing", "nvarchar", "SQL_Latin1_General_CP1_CS_AS", 1252,
         "SQLite tells apart what the server takes as equal (kana, width, ß and ss, blanks at the end)"},
        {"a fixed width has all its blanks", "char", "SQL_Latin1_General_CP1_CI_AS", 1252,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII)"},
        {"binary", "nvarchar", "Latin1_General_BIN2", 1252,
         "SQLite tells apart what the server takes as equal (blanks at the end)"},
        {"the Turkish i", "char", "SQL_Latin1_General_CP1254_CI_AS", 1254,
         "SQLite tells apart what the server takes as equal (letter case beyond ASCII), and takes I and i as equal, "
         "which the server tells apart"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(a_table(7, "T", a_string(c.type, c.collation, c.code_page), a_pk("PK", "A")));
        const std::string all = lines();
        EXPECT_EQ(all.substr(all.rfind('\n') + 1),
                  "comparison-approximate: dbo.T.A: kept: " + std::string(c.reason) +
                      ", unless the database is created with --collations server: " + c.collation);
    }
}

TEST_F(HostComparisonsTest, NothingIsTold)
{
    const std::string a = a_string("nvarchar", "Latin1_General_CI_AS");
    const std::string b = ',' + a_col(2, "B", "int");
    const struct {
        const char *name;
        std::string cols;
        std::string more;
        const char *codes;
    } cases[] = {
        {"of binary strings of fixed width", a_string("char", "Latin1_General_BIN"), a_pk("PK", "A"), ""},
        {"of a column that nothing compares", a + b, a_pk("PK", "B"), ""},
        {"of an index that is not unique", a + b,
         a_pk("PK", "B") + R"x(,"indexes":[{"name":"IX","columns":[{"name":"A"}]}])x", ""},
        {"of a key that is left out", a, R"("uniques":[)" + a_unique("UQ", "A", R"(,"is_disabled":true)") + ']',
         "key-disabled dbo.T"},
        {"of an index whose filter is not kept", a,
         R"("uniques":[)" + a_unique("UQ", "A", R"x(,"filter":"(f([A])>(0))")x") + ']', "unique-filtered dbo.T"},
        {"of a check that is not kept", a, R"x("checks":[{"name":"CK","definition":"([A]<f([A]))"}])x",
         "check-left-out dbo.T"},
        {"of a check that does not compare", a, R"x("checks":[{"name":"CK","definition":"(len([A])>(2))"}])x", ""},
        {"of a check of a binary string", a_string("nvarchar", "Latin1_General_BIN2"),
         R"x("checks":[{"name":"CK","definition":"([A]='x')"}])x", ""},
        {"of numbers", a_col(1, "A", "int"), a_pk("PK", "A"), ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(a_table(7, "T", c.cols, c.more));
        EXPECT_EQ(codes(), c.codes);
    }
}

TEST_F(HostComparisonsTest, OneFindingForAColumn)
{
    const std::string a = a_string("nvarchar", "Latin1_General_CI_AS");
    const std::string check = R"x("checks":[{"name":"CK","definition":"([A]='x' OR [A] like 'y%')"}])x";
    const std::string uniques = R"("uniques":[)" + a_unique("UQ", "A") + ']';
    const std::string filtered = R"("uniques":[)" + a_unique("UQ", "B", R"x(,"filter":"([A]='x')")x") + ']';
    const struct {
        const char *name;
        std::string more;
        const char *part;
    } cases[] = {
        {"in several keys and a check", a_pk("PK", "A") + ',' + uniques + ',' + check, "tells apart"},
        {"in a unique index with a filter", R"("uniques":[)" + a_unique("UQ", "A", R"x(,"filter":"([B]>(0))")x") + ']',
         "tells apart"},
        {"in a check", check,
         "kept: in checks SQLite tells apart what the server takes as equal (width, ² and 2, ß and ss): "
         "Latin1_General_CI_AS"},
        {"in a filter", filtered, "kept: in checks SQLite"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(a_table(7, "T", a + ',' + a_col(2, "B", "int"), c.more));
        EXPECT_EQ(codes(), "comparison-approximate dbo.T.A");
        EXPECT_NE(lines().find(c.part), std::string::npos) << lines();
    }
}

TEST_F(HostComparisonsTest, ACollationThatTheSourceDoesNotName)
{
    import_tables(a_table(7, "T", a_string("nvarchar", ""), a_pk("PK", "A")));
    EXPECT_EQ(lines(), "comparison-approximate: dbo.T.A: kept: the source does not name its collation, so SQLite "
                       "compares it byte by byte");
}
