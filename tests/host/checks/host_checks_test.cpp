// Checks: where they are recorded, and that SQLite has the last word. Which mean the same is asked in
// host_check_grammar_test.cpp.
#include "host_test.hpp"

class HostChecksTest : public HostTest {
  protected:
    void import_check(const std::string &check, const std::string &cols)
    {
        import_tables(a_table(7, "T", cols, R"("checks":[)" + check + ']'));
    }
};

static const std::string two_cols = a_col(1, "A", "int") + ',' + a_col(2, "B", "int");

static std::string a_check(const std::string &definition, const std::string &more = "")
{
    return R"({"name":"CK","definition":")" + definition + '"' + more + '}';
}

TEST_F(HostChecksTest, WhereTheyAreRecorded)
{
    const struct {
        const char *name;
        std::string check;
        const char *record;
    } cases[] = {
        {"a check of one column goes to it", a_check("([A]>(0))", R"(,"column":"A")"),
         R"x("check":[{"expr":"([A]>(0))","name":"CK"}])x"},
        {"also when it was declared on the table", a_check("([A]>(0))"),
         R"x("check":[{"expr":"([A]>(0))","name":"CK"}])x"},
        {"with parentheses where it has none", a_check("[A]>(0)"), R"x("check":[{"expr":"([A]>(0))","name":"CK"}])x"},
        {"and where the outer ones are two pairs", a_check("([A])>(0)"),
         R"x("check":[{"expr":"(([A])>(0))","name":"CK"}])x"},
        {"a check of two columns goes to the table", a_check("([A]>[B])"), R"x("check":{"CK":{"expr":"([A]>[B])"}})x"},
        {"a check of none goes to the table", a_check("((1)=(1))"), R"x("check":{"CK":{"expr":"((1)=(1))"}})x"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_check(c.check, two_cols);
        EXPECT_TRUE(has(c.record)) << document();
        EXPECT_EQ(codes(), "");
    }
}

TEST_F(HostChecksTest, LeftOutOrDoubtful)
{
    const std::string cols = two_cols + ',' + a_col(3, "X", "int", R"("is_computed":true)");
    const struct {
        const char *name;
        std::string check;
        const char *line;
        bool kept = false;
    } cases[] = {
        {"disabled", a_check("([A]>(0))", R"(,"is_disabled":true)"),
         "check-disabled: dbo.T: left out: it is disabled on the server: CONSTRAINT [CK] CHECK ([A]>(0))"},
        {"hidden", R"({"name":"CK"})",
         "check-hidden: dbo.T: left out: its text is hidden from this login: CONSTRAINT [CK]"},
        {"of a column that is left out", a_check("([A]>[X])"),
         "check-unprepared-column: dbo.T: left out: it uses a column that is left out of the table (X): CONSTRAINT "
         "[CK] CHECK ([A]>[X])"},
        {"of another meaning", a_check("([A]>getdate())"),
         "check-left-out: dbo.T: left out: it asks for the time, which SQLite does not tell a check (getdate): "
         "CONSTRAINT [CK] CHECK "
         "([A]>getdate())"},
        {"declared on a column", a_check("([A]>getdate())", R"(,"column":"A")"),
         "check-left-out: dbo.T.A: left out: it asks for the time, which SQLite does not tell a check (getdate): "
         "CONSTRAINT [CK] "
         "CHECK "
         "([A]>getdate())"},
        {"untrusted", a_check("([A]>(0))", R"(,"is_not_trusted":true)"),
         "check-untrusted: dbo.T: kept: the server has not checked the rows that are there, so some may break it: "
         "CONSTRAINT [CK] CHECK ([A]>(0))",
         true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_check(c.check, cols);
        EXPECT_EQ(lines().substr(lines().find('\n') + 1), c.line);
        EXPECT_EQ(has(R"("check":)"), c.kept) << document();
    }
}

TEST_F(HostChecksTest, SqliteHasTheLastWord)
{
    std::string deep = "([A]=(1)";
    for (int n = 0; n < 2000; n++)
        deep += " OR [A]=(1)";
    import_check(a_check(deep + ")"), two_cols);
    EXPECT_TRUE(lines().starts_with("check-left-out: dbo.T: left out: SQLite does not compile the table with it: "
                                    "Expression tree is too large"))
        << lines();
    EXPECT_FALSE(has(R"("check":)"));
}
