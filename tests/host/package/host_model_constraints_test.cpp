// Keys, indexes, foreign keys, checks and defaults of a package's model.
#include "host_model_test.hpp"

class HostModelConstraintsTest : public HostPackageTest {};

struct constraint_case {
    const char *name;
    std::string elements;
    const char *expected; // after the tables' columns
};

static const std::string t =
    a_model_table("[dbo].[T]", a_model_col("[dbo].[T].[A]", "[int]") + a_model_col("[dbo].[T].[B]", "[int]"));
static const std::string p =
    a_model_table("[s].[P]", a_model_col("[s].[P].[C]", "[int]") + a_model_col("[s].[P].[D]", "[int]"));

static std::string an_fk(const std::string &name, const std::string &cols, const std::string &ref_table,
                         const std::string &ref_cols, const std::string &more = "")
{
    return an_element("SqlForeignKeyConstraint", name,
                      more + references("Columns", cols) + references("DefiningTable", "[dbo].[T]") +
                          references("ForeignColumns", ref_cols) + references("ForeignTable", ref_table));
}

static std::string a_check(const std::string &name, const std::string &text, const std::string &more = "")
{
    return an_element("SqlCheckConstraint", name,
                      a_script("CheckExpressionScript", text) + references("DefiningTable", "[dbo].[T]") + more);
}

static std::string a_default(const std::string &name, const std::string &col, const std::string &text)
{
    return an_element("SqlDefaultConstraint", name,
                      a_script("DefaultExpressionScript", text) + references("DefiningTable", "[dbo].[T]") +
                          references("ForColumn", col));
}

static const std::string untrusted = "<Annotation Type=\"IsNotTrustedPropertyAnnotation\"/>";

static const constraint_case from_server[] = {
    {"a primary key in the order of the key, before its table",
     a_model_key("SqlPrimaryKeyConstraint", "[dbo].[PK_dbo.T]", "[dbo].[T]", "[dbo].[T].[B]- [dbo].[T].[A]") + t,
     "  pk PK_dbo.T(B-,A) clustered\n"},
    {"a primary key that is not clustered",
     t + a_model_key("SqlPrimaryKeyConstraint", "[dbo].[PK]", "[dbo].[T]", "[dbo].[T].[A]",
                     a_property("IsClustered", "False")),
     "  pk PK(A)\n"},
    {"keys that the server named",
     t + a_model_key("SqlPrimaryKeyConstraint", "", "[dbo].[T]", "[dbo].[T].[A]") +
         a_model_key("SqlUniqueConstraint", "", "[dbo].[T]", "[dbo].[T].[B]"),
     "  pk nameless(A) clustered\n  unique nameless(B)\n"},
    {"unique keys by name, those without one last",
     t + a_model_key("SqlIndex", "[dbo].[T].[U0]", "[dbo].[T]", "[dbo].[T].[A]", a_property("IsUnique", "True")) +
         a_model_key("SqlUniqueConstraint", "", "[dbo].[T]", "[dbo].[T].[A]") +
         a_model_key("SqlUniqueConstraint", "[dbo].[u2]", "[dbo].[T]", "[dbo].[T].[B]") +
         a_model_key("SqlUniqueConstraint", "[dbo].[U1]", "[dbo].[T]", "[dbo].[T].[A]",
                     a_property("IsClustered", "True")),
     "  unique index U0(A)\n  unique U1(A) clustered\n  unique u2(B)\n  unique nameless(A)\n"},
    {"a unique index with a filter and columns beside the key",
     t + a_model_key("SqlIndex", "[dbo].[T].[U]", "[dbo].[T]", "[dbo].[T].[A]",
                     a_property("IsUnique", "True") + a_script("FilterPredicate", "([A]>(10))") +
                         references("IncludedColumns", "[dbo].[T].[B]")),
     "  unique index U(A)(B) WHERE ([A]>(10))\n"},
    {"an ordinary index",
     t + a_model_key("SqlIndex", "[dbo].[T].[I]", "[dbo].[T]", "[dbo].[T].[B]-",
                     references("IncludedColumns", "[dbo].[T].[A]")),
     "  index I(B-)(A)\n"},
    {"an index of a view", t + a_model_key("SqlIndex", "[dbo].[V].[I]", "[dbo].[V]", "[dbo].[V].[B]"), ""},
    {"a foreign key in pairs",
     an_fk("[dbo].[FK]", "[dbo].[T].[A] [dbo].[T].[B]", "[s].[P]", "[s].[P].[D] [s].[P].[C]",
           a_property("OnDeleteAction", "1")) +
         p + t,
     "  fk FK(A:D,B:C) 0 s.P CASCADE/NO ACTION\n"},
    {"a foreign key that the server named and has not checked",
     p + t + an_fk("", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]", untrusted),
     "  fk nameless(A:C) 0 s.P NO ACTION/NO ACTION untrusted\n"},
    {"foreign keys by name, those without one by their columns",
     p + t + an_fk("", "[dbo].[T].[B]", "[s].[P]", "[s].[P].[C]") +
         an_fk("", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]") +
         an_fk("[dbo].[Z]", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]"),
     "  fk Z(A:C) 0 s.P NO ACTION/NO ACTION\n  fk nameless(A:C) 0 s.P NO ACTION/NO ACTION\n"
     "  fk nameless(B:C) 0 s.P NO ACTION/NO ACTION\n"},
    {"a foreign key to a table of another package", t + an_fk("[dbo].[FK]", "[dbo].[T].[A]", "[x].[Q]", "[x].[Q].[Z]"),
     "  fk FK(A:Z) 0 x.Q NO ACTION/NO ACTION\n"},
    {"a check of a server lacks its outermost parentheses", t + a_check("[dbo].[CK]", "[A]>(0)"),
     "  check CK ([A]>(0))\n"},
    {"a check of a server that begins and ends with parentheses", t + a_check("[dbo].[CK]", "([A]>(0)) or ([B]>(0))"),
     "  check CK (([A]>(0)) or ([B]>(0)))\n"},
    {"a check that the server named and has not checked", t + a_check("", "[A]>(0)", untrusted),
     "  check nameless ([A]>(0)) untrusted\n"},
    {"what is disabled",
     p + t + a_check("[dbo].[CK]", "1=1", a_property("IsDisabled", "True")) +
         an_fk("[dbo].[FK]", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]", a_property("IsDisabled", "True")) +
         a_model_key("SqlUniqueConstraint", "[dbo].[U]", "[dbo].[T]", "[dbo].[T].[A]",
                     a_property("IsDisabled", "True")),
     "  unique U(A) disabled\n  fk FK(A:C) 0 s.P NO ACTION/NO ACTION disabled\n  check CK (1=1) disabled\n"},
};

static const constraint_case from_project[] = {
    {"a check gets the server's spelling", t + a_check("[dbo].[CK]", "a > 0 and\n\t\"B\" <> 5 -- why"),
     "  check CK ([a]>(0) AND [B]<>(5))\n"},
    {"a check in parentheses", t + a_check("[dbo].[CK]", "(A > 0)"), "  check CK ([A]>(0))\n"},
    {"a check that has the server's spelling", t + a_check("[dbo].[CK]", "([A]>(0) OR [B]>(0))"),
     "  check CK ([A]>(0) OR [B]>(0))\n"},
    {"a filter",
     t + a_model_key("SqlIndex", "[dbo].[T].[U]", "[dbo].[T]", "[dbo].[T].[A]",
                     a_property("IsUnique", "True") + a_script("FilterPredicate", "A > 10")),
     "  unique index U(A) WHERE ([A]>(10))\n"},
};

static const std::string cols_of_t = "  1 A int int 4 10 0 null\n  2 B int int 4 10 0 null\n";

static std::string without_cols(std::string text)
{
    text.erase(0, std::string("1 dbo.T\n").size() + cols_of_t.size());
    return text.substr(0, text.find("2 s.P\n  1 C"));
}

TEST_F(HostModelConstraintsTest, FromAServer)
{
    for (const constraint_case &c : from_server) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements));
        EXPECT_OK(ctx);
        EXPECT_EQ(without_cols(described()), c.expected);
        EXPECT_EQ(codes(), "");
        reset();
    }
}

TEST_F(HostModelConstraintsTest, FromAProject)
{
    for (const constraint_case &c : from_project) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements, false));
        EXPECT_OK(ctx);
        EXPECT_EQ(without_cols(described()), c.expected);
        reset();
    }
}

TEST_F(HostModelConstraintsTest, Defaults)
{
    read(a_package(a_default("[dbo].[DF_A]", "[dbo].[T].[A]", "((0))") + t +
                   a_default("", "[dbo].[T].[B]", "(N']]&gt;')")));
    EXPECT_OK(ctx);
    EXPECT_EQ(described(), "1 dbo.T\n  1 A int int 4 10 0 null default DF_A ((0))\n"
                           "  2 B int int 4 10 0 null default nameless (N']]&gt;')\n");
    EXPECT_EQ(catalogue.tables[0].cols[0].defval->id, 1);
    EXPECT_STREQ(catalogue.tables[0].cols[0].defval->kind, "constraint");
}

TEST_F(HostModelConstraintsTest, DefaultsAndComputedColumnsOfAProject)
{
    const std::string computed =
        "<Entry>" + an_element("SqlComputedColumn", "[dbo].[T].[S]", a_script("ExpressionScript", "A+B")) + "</Entry>";
    read(a_package(a_model_table("[dbo].[T]", a_model_col("[dbo].[T].[A]", "[int]") +
                                                  a_model_col("[dbo].[T].[B]", "[datetime]") + computed) +
                       a_default("", "[dbo].[T].[A]", "0") + a_default("", "[dbo].[T].[B]", "GETDATE()"),
                   false));
    EXPECT_OK(ctx);
    EXPECT_EQ(described(), "1 dbo.T\n  1 A int int 4 10 0 null default nameless ((0))\n"
                           "  2 B datetime datetime 8 23 3 null default nameless (getdate())\n"
                           "  3 S AS ([A]+[B]) null\n");
}

TEST_F(HostModelConstraintsTest, Findings)
{
    read(a_package(p + t +
                   an_fk("[dbo].[FK]", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]",
                         a_property("OnDeleteAction", "2") + a_property("OnUpdateAction", "3")) +
                   a_model_key("SqlPrimaryKeyConstraint", "[dbo].[PK]", "[x].[Gone]", "[x].[Gone].[A]") +
                   an_element("SqlCheckConstraint", "", references("DefiningTable", "[x].[Gone]")) +
                   a_default("[dbo].[DF]", "[x].[Gone].[A]", "1")));
    EXPECT_OK(ctx);
    EXPECT_EQ(lines(),
              "constraint-without-table: left out: the model has no table that this key belongs to: PK of [x].[Gone]\n"
              "fk-action-assumed: dbo.T: packages number the actions; that these numbers mean SET NULL and SET DEFAULT "
              "is taken from documentation, not from a package: FK ON DELETE SET NULL ON UPDATE SET DEFAULT\n"
              "constraint-without-table: left out: the model has no table that this check belongs to: without a name "
              "of [x].[Gone]\n"
              "constraint-without-table: left out: the model has no table that this default belongs to: DF of "
              "[x].[Gone].[A]");
}

TEST_F(HostModelConstraintsTest, Refused)
{
    const std::string pk = a_model_key("SqlPrimaryKeyConstraint", "", "[dbo].[T]", "[dbo].[T].[A]");
    const struct {
        const char *name;
        std::string elements;
        const char *message;
    } refusals[] = {
        {"two primary keys", t + pk + pk, "model.xml: table dbo.T has two primary keys"},
        {"a key of an unknown column", t + a_model_key("SqlUniqueConstraint", "", "[dbo].[T]", "[dbo].[T].[X]"),
         "model.xml: a key or index of table dbo.T names column [dbo].[T].[X], which it lacks"},
        {"a key of another table's column", t + p + a_model_key("SqlUniqueConstraint", "", "[dbo].[T]", "[s].[P].[C]"),
         "model.xml: a key or index of table dbo.T names column [s].[P].[C], which it lacks"},
        {"a foreign key of uneven lists",
         t + p + an_fk("[dbo].[FK]", "[dbo].[T].[A] [dbo].[T].[B]", "[s].[P]", "[s].[P].[C]"),
         "model.xml: foreign key FK of table dbo.T has 2 columns and refers to 1"},
        {"two defaults of a column",
         t + a_default("[dbo].[D]", "[dbo].[T].[A]", "1") + a_default("[dbo].[E]", "[dbo].[T].[A]", "2"),
         "model.xml: column [dbo].[T].[A] has two defaults"},
    };
    for (const auto &c : refusals) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements));
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, c.message);
        reset();
    }
}

TEST_F(HostModelConstraintsTest, RefusedWithItsPlace)
{
    const struct {
        const char *name;
        std::string elements;
        const char *message;
    } refusals[] = {
        {"an action that is none",
         an_fk("[dbo].[FK]", "[dbo].[T].[A]", "[s].[P]", "[s].[P].[C]", a_property("OnUpdateAction", "4")),
         "OnUpdateAction is 4, not a number from 0 to 3"},
        {"a foreign key to nothing", an_fk("[dbo].[FK]", "[dbo].[T].[A]", "", "[s].[P].[C]"),
         "foreign key FK refers to no table"},
    };
    for (const auto &c : refusals) {
        SCOPED_TRACE(c.name);
        read(a_package(c.elements));
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        const std::string description = KT_context__err_description(ctx);
        EXPECT_TRUE(description.starts_with("model.xml:1:")) << description;
        EXPECT_TRUE(description.ends_with(std::string(": ") + c.message)) << description;
        reset();
    }
}
