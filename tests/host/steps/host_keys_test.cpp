// Identity columns and keys.
#include "host_test.hpp"

class HostKeysTest : public HostTest {};

static std::string an_identity(int id, const std::string &name, const std::string &type = "int",
                               const std::string &more = "")
{
    return a_col(id, name, type,
                 R"("is_identity":true,"identity":{"seed":"1","increment":"1"})" + (more.empty() ? "" : ',' + more));
}

static std::string uniques(const std::string &list)
{
    return R"("uniques":[)" + list + ']';
}

TEST_F(HostKeysTest, WhichIdentityColumnNumbersTheRows)
{
    const std::string b = ',' + a_col(2, "B", "int");
    const struct {
        const char *name;
        std::string cols;
        std::string keys;
        const char *type;
        const char *codes;
    } cases[] = {
        {"the sole column of the primary key", an_identity(1, "A") + b, a_pk("PK", "A"),
         R"({"name":"identity","constraint_name":"PK"})", ""},
        {"the sole column of a unique constraint", an_identity(1, "A") + b,
         a_pk("PK", "B") + ',' + uniques(a_unique("UQ", "A", R"(,"kind":"constraint")")),
         R"({"name":"identity","constraint_name":"UQ"})", "pk-as-unique dbo.T"},
        {"the sole column of a unique index", an_identity(1, "A") + b,
         uniques(a_unique("IX", "A", R"(,"kind":"index")")), R"({"name":"identity","constraint_name":"IX"})", ""},
        {"a bigint", an_identity(1, "A", "bigint"), a_pk("PK", "A"), R"({"name":"identity","constraint_name":"PK"})",
         ""},
        {"a tinyint", an_identity(1, "A", "tinyint"), a_pk("PK", "A"), R"({"name":"identity","constraint_name":"PK"})",
         ""},
        {"a decimal of 18 digits without a fraction", an_identity(1, "A", "decimal", R"("precision":18,"scale":0)"),
         a_pk("PK", "A"), R"({"name":"identity","constraint_name":"PK"})", ""},
        {"not a decimal of more digits", an_identity(1, "A", "decimal", R"("precision":19,"scale":0)"), a_pk("PK", "A"),
         R"({"name":"decimal","precision":19,"scale":0})", "identity-as-integer dbo.T.A\ndecimal-too-wide dbo.T.A"},
        {"not one of two columns of the primary key", an_identity(1, "A") + b, a_pk("PK", "A B"),
         R"({"name":"sint32"})", "identity-as-integer dbo.T.A"},
        {"not without any key", an_identity(1, "A", "smallint"), "", R"({"name":"sint16"})",
         "identity-as-integer dbo.T.A"},
        {"not by a disabled key", an_identity(1, "A"), a_pk("PK", "A", R"(,"is_disabled":true)"),
         R"({"name":"sint32"})", "identity-as-integer dbo.T.A\nkey-disabled dbo.T"},
        {"not by a filtered index", an_identity(1, "A"), uniques(a_unique("IX", "A", R"x(,"filter":"([A]>(0))")x")),
         R"({"name":"sint32"})", "identity-as-integer dbo.T.A"},
        {"another seed is told of",
         a_col(1, "A", "int", R"("is_identity":true,"identity":{"seed":"1000","increment":"5"})"), a_pk("PK", "A"),
         R"({"name":"identity","constraint_name":"PK"})", "identity-numbering dbo.T.A"},
        {"a table has but one", an_identity(1, "A") + ',' + an_identity(2, "B"),
         a_pk("PK", "A") + ',' + uniques(a_unique("UQ", "B")), R"({"name":"identity","constraint_name":"PK"})",
         "identity-as-integer dbo.T.B"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(a_table(7, "T", c.cols, c.keys));
        EXPECT_TRUE(has(R"("1":{"name":"A","type":)" + std::string(c.type))) << document();
        EXPECT_EQ(codes(), c.codes);
    }
}

TEST_F(HostKeysTest, ThePrimaryKeyKeepsItsOrder)
{
    import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "int"), a_pk("PK_T", "B A")));
    EXPECT_TRUE(has(R"("pk":{"name":"PK_T","cols":{"2":null,"1":null}})")) << document();
    EXPECT_EQ(codes(), "");
}

TEST_F(HostKeysTest, APrimaryKeyBesideTheIdentityIsAUniqueConstraintToo)
{
    import_tables(a_table(7, "T", an_identity(1, "A") + ',' + a_col(2, "B", "int") + ',' + a_col(3, "C", "int"),
                          a_pk("PK_T", "C B") + ',' + uniques(a_unique("UQ_A", "A"))));
    EXPECT_TRUE(has(R"("pk":{"name":"PK_T","cols":{"3":null,"2":null}},"uniques":{"PK_T":{"3":null,"2":null},)"
                    R"("UQ_A":{"1":null}})"))
        << document();
    EXPECT_EQ(lines(), "pk-as-unique: dbo.T: kept as a unique constraint: in SQLite the table's primary key is its "
                       "identity column: PRIMARY KEY [PK_T] ([C], [B])");
}

TEST_F(HostKeysTest, KeysThatAreLeftOut)
{
    const std::string cols =
        a_col(1, "A", "int") + ',' + a_col(2, "B", "int", R"("is_computed":true)") + ',' + a_col(3, "C", "int");
    const struct {
        const char *name;
        std::string keys;
        const char *line;
    } cases[] = {
        {"a primary key with a computed column", a_pk("PK", "A B"),
         "key-unprepared-column: dbo.T.B: left out: it uses a column that is left out of the table: PRIMARY KEY [PK] "
         "([A], [B])"},
        {"a unique key with a computed column", uniques(a_unique("U]Q", "B")),
         "key-unprepared-column: dbo.T.B: left out: it uses a column that is left out of the table: UNIQUE [U]]Q] "
         "([B])"},
        {"a disabled unique key", uniques(a_unique("UQ", "A", R"(,"is_disabled":true)")),
         "key-disabled: dbo.T: left out: it is disabled on the server: UNIQUE [UQ] ([A])"},
        {"a filtered index whose filter SQLite lacks", uniques(a_unique("IX", "A C", R"x(,"filter":"(f([A])>(0))")x")),
         "unique-filtered: dbo.T: left out: it holds for some of the rows only, and of its filter SQLite lacks this or "
         "reads it differently (f): UNIQUE INDEX [IX] ([A], [C]) WHERE (f([A])>(0))"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(a_table(7, "T", cols, c.keys));
        EXPECT_EQ(lines().substr(lines().find('\n') + 1), c.line);
        EXPECT_FALSE(has(R"("pk":)") || has(R"("uniques":)")) << document();
    }
}

TEST_F(HostKeysTest, NullableColumnsOfUniqueKeysAreReported)
{
    const std::string null = R"("is_nullable":true)";
    import_tables(a_table(7, "T",
                          a_col(1, "A", "int") + ',' + a_col(2, "B", "int", null) + ',' + a_col(3, "C", "int", null),
                          uniques(a_unique("UQ", "A B") + ',' + a_unique("IX", "C", R"(,"kind":"index")"))));
    EXPECT_EQ(
        lines(),
        "unique-nullable: dbo.T.C: kept: SQLite treats NULLs as distinct and allows any number of them, "
        "unless the database is created with the server's rules, which treat them as equal: UNIQUE INDEX [IX] ([C])\n"
        "unique-nullable: dbo.T.B: kept: SQLite treats NULLs as distinct and allows any number of them, "
        "unless the database is created with the server's rules, which treat them as equal: UNIQUE [UQ] ([A], [B])");
    EXPECT_TRUE(has(R"("uniques":{"IX":{"3":null},"UQ":{"1":null,"2":null}})")) << document();
}

TEST_F(HostKeysTest, AUniqueKeyOfSeveralNullableColumnsIsOneFinding)
{
    const std::string null = R"("is_nullable":true)";
    import_tables(
        a_table(7, "T", a_col(1, "A", "int", null) + ',' + a_col(2, "B", "int", null), uniques(a_unique("UQ", "A B"))));
    EXPECT_EQ(codes(), "unique-nullable dbo.T");
}
