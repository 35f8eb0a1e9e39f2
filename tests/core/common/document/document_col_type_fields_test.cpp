#include "document_support.hpp"

// Table T with a column C of the given type record.
static std::string with_type(const std::string &type)
{
    return R"({"tbls":{"t":{"cols":{"c":{"type":)" + type + "}}}}}";
}

TEST_F(DocumentTest, TypesAreReadBack)
{
    struct type_case {
        const char *type;
        const char *abstract_type;
        const char *sqlite_typeof;
    };
    static constexpr type_case cases[] = {
        {R"({"name":"identity"})", "identity", "integer"},
        {R"({"name":"decimal"})", "decimal", "integer"},
        {R"({"name":"text"})", "text", "text"},
        {R"({"name":"guid"})", "guid", "blob"},
        {R"({"name":"host"})", "host", ""},
        {R"({"name":"Text"})", "Text", ""},
        {R"({})", nullptr, nullptr},
        {R"({"name":null})", nullptr, nullptr},
    };
    for (const type_case &c : cases) {
        SCOPED_TRACE(c.type);
        load(with_type(c.type).c_str());
        const char *abstract_type = untouched;
        const char *sqlite_typeof = untouched;
        tov_schema__get_col_type(ctx, schema, "T", "C", &abstract_type, &sqlite_typeof);
        EXPECT_OK(ctx);
        EXPECT_STREQ(abstract_type, c.abstract_type);
        EXPECT_STREQ(sqlite_typeof, c.sqlite_typeof);
        tov_schema__get_col_type(ctx, schema, "T", "C", nullptr, nullptr);
        EXPECT_OK(ctx);
    }
}

TEST_F(DocumentTest, FlagsOfTypesAreReadBack)
{
    struct flag_case {
        const char *type;
        KT_bool has;
        KT_bool value;
    };
    static constexpr flag_case cases[] = {
        {R"({"name":"text","unicode":true,"fixed_width":true})", 1, 1},
        {R"({"name":"text","unicode":false,"fixed_width":false})", 1, 0},
        {R"({"name":"decimal"})", 0, 77},
        {R"({})", 0, 77},
    };
    for (const flag_case &c : cases) {
        SCOPED_TRACE(c.type);
        load(with_type(c.type).c_str());
        KT_bool has = 77;
        KT_bool value = 77;
        tov_schema__get_col_type__unicode(ctx, schema, "T", "C", &has, &value);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
        EXPECT_EQ(value, c.value);
        has = value = 77;
        tov_schema__get_col_type__fixed_width(ctx, schema, "T", "C", &has, &value);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
        EXPECT_EQ(value, c.value);
    }
    // Each reads its own field.
    load(with_type(R"({"unicode":true,"fixed_width":false})").c_str());
    KT_bool has = 77;
    KT_bool value = 77;
    tov_schema__get_col_type__unicode(ctx, schema, "t", "c", &has, &value);
    EXPECT_EQ(value, 1);
    tov_schema__get_col_type__fixed_width(ctx, schema, "t", "c", &has, &value);
    EXPECT_EQ(value, 0);
}

TEST_F(DocumentTest, NumbersOfTypesAreReadBack)
{
    struct number_case {
        const char *type;
        int32_t scale;
        int32_t precision;
        int32_t width;
    };
    static constexpr number_case cases[] = {
        {R"({"name":"decimal","precision":9,"scale":2})", 2, 9, -1},
        {R"({"name":"time","precision":7})", -1, 7, -1},
        {R"({"name":"text","width":10})", -1, -1, 10},
        {R"({"width":0,"scale":0,"precision":255})", 0, 255, 0},
        {R"({"width":2147483647,"scale":2147483648,"precision":4294967295})", INT32_MIN, -1, INT32_MAX},
        {R"({"width":-2147483648})", -1, -1, INT32_MIN},
        {R"({})", -1, -1, -1},
    };
    for (const number_case &c : cases) {
        SCOPED_TRACE(c.type);
        load(with_type(c.type).c_str());
        int32_t scale = 77;
        int32_t precision = 77;
        int32_t width = 77;
        tov_schema__get_col_type__scale(ctx, schema, "T", "C", &scale);
        tov_schema__get_col_type__precision(ctx, schema, "T", "C", &precision);
        tov_schema__get_col_type__width(ctx, schema, "T", "C", &width);
        EXPECT_OK(ctx);
        EXPECT_EQ(scale, c.scale);
        EXPECT_EQ(precision, c.precision);
        EXPECT_EQ(width, c.width);
    }
}

TEST_F(DocumentTest, AnAbsentNumberHasTheValueAskedFor)
{
    load(with_type(R"({"width":5})").c_str());
    int32_t value = 77;
    _tov_schema__get_col_type_field_int32(ctx, schema, "t", "c", "nothing", 8, &value);
    EXPECT_EQ(value, 8);
    _tov_schema__get_col_type_field_int32(ctx, schema, "t", "c", "width", 8, &value);
    EXPECT_EQ(value, 5);
}

TEST_F(DocumentTest, HostTypesAreReadBack)
{
    load(with_type(R"({"name":"host","host_type":"xml"})").c_str());
    const char *host_type = nullptr;
    tov_schema__get_col_type__host_type(ctx, schema, "T", "C", &host_type);
    EXPECT_STREQ(host_type, "xml");
    load(with_type(R"({"name":"guid"})").c_str());
    tov_schema__get_col_type__host_type(ctx, schema, "T", "C", &host_type);
    EXPECT_EQ(host_type, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, TypeReadersFail)
{
    static constexpr struct {
        const char *name;
        call read;
    } readers[] = {
        {"type", CALL(tov_schema__get_col_type(c, s, "T", "C", &o.text, &o.text2))},
        {"unicode", CALL(tov_schema__get_col_type__unicode(c, s, "T", "C", &o.flag, &o.flag2))},
        {"fixed_width", CALL(tov_schema__get_col_type__fixed_width(c, s, "T", "C", &o.flag, &o.flag2))},
        {"scale", CALL(tov_schema__get_col_type__scale(c, s, "T", "C", &o.int32))},
        {"precision", CALL(tov_schema__get_col_type__precision(c, s, "T", "C", &o.int32))},
        {"width", CALL(tov_schema__get_col_type__width(c, s, "T", "C", &o.int32))},
        {"host_type", CALL(tov_schema__get_col_type__host_type(c, s, "T", "C", &o.text))},
    };
    static constexpr char every_field_wrong[] =
        R"({"tbls":{"t":{"cols":{"c":{"type":{"name":1,"unicode":1,"fixed_width":"x","scale":4294967296,)"
        R"("precision":-2147483649,"width":"5","host_type":[]}}}}}})";
    for (const auto &r : readers) {
        SCOPED_TRACE(r.name);
        const failure_case cases[] = {
            {"unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, "table id 'T' not found in schema", r.read},
            {"unknown column", R"({"tbls":{"t":{}}})", nullptr, KT_ERR_NOT_FOUND,
             "col id 'C' not found in tbl id 'T' in schema", r.read},
            {"no type", one_col, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr, r.read},
            {"a type of another type", R"({"tbls":{"t":{"cols":{"c":{"type":"text"}}}}})", nullptr, KT_ERR_WRONG_TYPE,
             nullptr, r.read},
            {"a null type", R"({"tbls":{"t":{"cols":{"c":{"type":null}}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
             r.read},
            {"a field of another type", every_field_wrong, nullptr, KT_ERR_WRONG_TYPE, nullptr, r.read},
        };
        expect_failures(cases);
    }
}

TEST_F(DocumentTest, ANullFieldOfATypeFails)
{
    static constexpr char nulls[] = R"({"tbls":{"t":{"cols":{"c":{"type":{"unicode":null,"width":null}}}}}})";
    static constexpr failure_case cases[] = {
        {"a flag", nulls, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_type__unicode(c, s, "t", "c", &o.flag, &o.flag2))},
        {"a number", nulls, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_type__width(c, s, "t", "c", &o.int32))},
    };
    expect_failures(cases);
}
