#include "document_support.hpp"

// Constraints that exist already, to be replaced or dropped.
static constexpr char constrained[] =
    R"({"tbls":{"t":{"cols":{"c":{"notnull":{"name":"old"},"defval":{"expr":"old","name":"old"},"x":1}}}}})";

TEST_F(DocumentTest, ColumnConstraintsAreRecorded)
{
    struct constraint_case {
        const char *name;
        const char *before;
        call set;
        const char *col;
    };
    static constexpr constraint_case cases[] = {
        {"not null without a name", one_col, CALL(tov_schema__set_colcon_notnull(c, s, "T", "C", 1, nullptr)),
         R"({"name":"C","notnull":{}})"},
        {"not null with a name", one_col, CALL(tov_schema__set_colcon_notnull(c, s, "T", "C", 256, "NN")),
         R"({"name":"C","notnull":{"name":"NN"}})"},
        {"not null replaces an earlier one", constrained,
         CALL(tov_schema__set_colcon_notnull(c, s, "T", "C", 1, nullptr)),
         R"({"defval":{"expr":"old","name":"old"},"x":1,"notnull":{}})"},
        {"nullable drops an earlier not null", constrained,
         CALL(tov_schema__set_colcon_notnull(c, s, "T", "C", 0, "NN")),
         R"({"defval":{"expr":"old","name":"old"},"x":1})"},
        {"nullable where nothing was", one_col, CALL(tov_schema__set_colcon_notnull(c, s, "T", "C", 0, nullptr)),
         R"({"name":"C"})"},
        {"a default without a name", one_col, CALL(tov_schema__set_colcon_defval(c, s, "T", "C", 1, nullptr, "'a'")),
         R"({"name":"C","defval":{"expr":"'a'"}})"},
        {"a default with a name", one_col, CALL(tov_schema__set_colcon_defval(c, s, "T", "C", -1, "DF", "'a'")),
         R"({"name":"C","defval":{"expr":"'a'","name":"DF"}})"},
        {"a default replaces an earlier one", constrained,
         CALL(tov_schema__set_colcon_defval(c, s, "T", "C", 1, nullptr, "1")),
         R"({"notnull":{"name":"old"},"x":1,"defval":{"expr":"1"}})"},
        {"no default drops an earlier one", constrained,
         CALL(tov_schema__set_colcon_defval(c, s, "T", "C", 0, "DF", nullptr)), R"({"notnull":{"name":"old"},"x":1})"},
        {"a check without a name", one_col, CALL(tov_schema__add_colcon_check(c, s, "T", "C", nullptr, "C > 0")),
         R"({"name":"C","check":[{"expr":"C > 0"}]})"},
        {"checks keep their order", one_col,
         CALL(tov_schema__add_colcon_check(c, s, "T", "C", nullptr, "C > 0");
              tov_schema__add_colcon_check(c, s, "t", "c", "CK", "C < 9")),
         R"({"name":"C","check":[{"expr":"C > 0"},{"expr":"C < 9","name":"CK"}]})"},
    };
    for (const constraint_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.before);
        outputs o;
        c.set(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(col_record(), c.col);
    }
}

// A column c with this record in table t.
static std::string with_col(const std::string &col)
{
    return R"({"tbls":{"t":{"cols":{"c":)" + col + "}}}}";
}

TEST_F(DocumentTest, NotNullIsReadBack)
{
    struct notnull_case {
        const char *col;
        KT_bool notnull;
        const char *name;
    };
    static constexpr notnull_case cases[] = {
        {"{}", 0, untouched},
        {R"({"notnull":null})", 0, untouched},
        {R"({"notnull":{}})", 1, nullptr},
        {R"({"notnull":{"name":"NN"}})", 1, "NN"},
    };
    for (const notnull_case &c : cases) {
        SCOPED_TRACE(c.col);
        load(with_col(c.col).c_str());
        KT_bool notnull = 77;
        const char *name = untouched;
        tov_schema__get_colcon_notnull(ctx, schema, "T", "C", &notnull, &name);
        EXPECT_OK(ctx);
        EXPECT_EQ(notnull, c.notnull);
        EXPECT_STREQ(name, c.name);
        notnull = 77;
        tov_schema__get_colcon_notnull(ctx, schema, "T", "C", &notnull, nullptr);
        EXPECT_OK(ctx);
        EXPECT_EQ(notnull, c.notnull);
    }
}

TEST_F(DocumentTest, DefaultsAreReadBack)
{
    struct defval_case {
        const char *col;
        KT_bool has;
        const char *name;
        const char *expr;
    };
    static constexpr defval_case cases[] = {
        {"{}", 0, nullptr, nullptr},
        {R"({"defval":null})", 0, nullptr, nullptr},
        {R"({"defval":{"expr":"1"}})", 1, nullptr, "1"},
        {R"({"defval":{"expr":"","name":"DF"}})", 1, "DF", ""},
    };
    for (const defval_case &c : cases) {
        SCOPED_TRACE(c.col);
        load(with_col(c.col).c_str());
        KT_bool has = 77;
        const char *name = untouched;
        const char *expr = untouched;
        tov_schema__get_colcon_defval(ctx, schema, "T", "C", &has, &name, &expr);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
        EXPECT_STREQ(name, c.name);
        EXPECT_STREQ(expr, c.expr);
        expr = untouched;
        tov_schema__get_colcon_defval(ctx, schema, "T", "C", &has, nullptr, &expr);
        EXPECT_OK(ctx);
        EXPECT_STREQ(expr, c.expr);
    }
}

TEST_F(DocumentTest, ColumnChecksAreCounted)
{
    struct count_case {
        const char *col;
        uint32_t count;
    };
    static constexpr count_case cases[] = {
        {"{}", 0}, {R"({"check":null})", 0}, {R"({"check":[]})", 0}, {R"({"check":[{},{}]})", 2}};
    for (const count_case &c : cases) {
        SCOPED_TRACE(c.col);
        load(with_col(c.col).c_str());
        uint32_t count = 77;
        tov_schema__count_colcon_checks(ctx, schema, "T", "C", &count);
        EXPECT_OK(ctx);
        EXPECT_EQ(count, c.count);
        EXPECT_EQ(document(), with_col(c.col));
    }
}

TEST_F(DocumentTest, ColumnConstraintsFailForUnknownColumns)
{
    static constexpr call operations[] = {
        CALL(tov_schema__set_colcon_notnull(c, s, "T", "X", 1, nullptr)),
        CALL(tov_schema__get_colcon_notnull(c, s, "T", "X", &o.flag, &o.text)),
        CALL(tov_schema__set_colcon_defval(c, s, "T", "X", 1, nullptr, "1")),
        CALL(tov_schema__get_colcon_defval(c, s, "T", "X", &o.flag, &o.text, &o.text2)),
        CALL(tov_schema__add_colcon_check(c, s, "T", "X", nullptr, "1")),
        CALL(tov_schema__count_colcon_checks(c, s, "T", "X", &o.count)),
    };
    for (const call run : operations) {
        SCOPED_TRACE(&run - operations);
        const failure_case cases[] = {
            {"unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, "table id 'T' not found in schema", run},
            {"unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema", run},
        };
        expect_failures(cases);
    }
}

TEST_F(DocumentTest, ColumnConstraintsOfAnotherShapeFail)
{
    static constexpr char shapes[] =
        R"({"tbls":{"t":{"cols":{"a":{"notnull":true,"defval":"1","check":{}},)"
        R"("b":{"notnull":{"name":1},"defval":{"expr":"1","name":1}},"c":{"defval":{"name":"DF"}}}}}})";
    static constexpr failure_case cases[] = {
        {"not null, no map", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_notnull(c, s, "t", "a", &o.flag, &o.text))},
        {"not null, its name", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_notnull(c, s, "t", "b", &o.flag, &o.text))},
        {"default, no map", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_defval(c, s, "t", "a", &o.flag, &o.text, &o.text2))},
        {"default, its name", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_defval(c, s, "t", "b", &o.flag, &o.text, &o.text2))},
        {"default without an expression", shapes, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_colcon_defval(c, s, "t", "c", &o.flag, &o.text, &o.text2))},
        {"adding a check", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_colcon_check(c, s, "t", "a", nullptr, "1"))},
        {"counting checks", shapes, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_colcon_checks(c, s, "t", "a", &o.count))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ColumnConstraintsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"not null", one_col, nullptr,
         CALL(tov_schema__set_colcon_notnull(c, s, "t", "c", 1, "A name that needs a block of its own"))},
        {"default", one_col, nullptr,
         CALL(tov_schema__set_colcon_defval(c, s, "t", "c", 1, "A name that needs a block of its own",
                                            "An expression that needs a block of its own"))},
        {"check", one_col, nullptr,
         CALL(tov_schema__add_colcon_check(c, s, "t", "c", "A name that needs a block of its own",
                                           "An expression that needs a block of its own"))},
    };
    expect_survival(cases);
}
