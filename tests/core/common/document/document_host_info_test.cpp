#include "document_support.hpp"

TEST_F(DocumentTest, HostTypeNamesAreKeptInTheColumn)
{
    load(one_col);
    tov_schema__set_mssql_col_type_name(ctx, schema, "T", "C", "nvarchar");
    tov_schema__set_col_name(ctx, schema, "t", "c", "N");
    const char *host_type = nullptr;
    tov_schema__get_mssql_col_type_name(ctx, schema, "T", "C", &host_type);
    EXPECT_STREQ(host_type, "nvarchar");
    tov_schema__set_mssql_col_type_name(ctx, schema, "T", "C", "int");
    EXPECT_OK(ctx);
    EXPECT_EQ(col_record(), R"({"name":"N","mssql_col_data_type":"int"})");
}

TEST_F(DocumentTest, ANewHostTypeNameGoesToTheEnd)
{
    load(R"({"tbls":{"t":{"cols":{"c":{"mssql_col_data_type":"old","name":"C"}}}}})");
    tov_schema__set_mssql_col_type_name(ctx, schema, "T", "C", "new");
    EXPECT_OK(ctx);
    EXPECT_EQ(col_record(), R"({"name":"C","mssql_col_data_type":"new"})");
}

TEST_F(DocumentTest, NoHostTypeNameAsksForNothing)
{
    tov_schema__set_mssql_col_type_name(ctx, schema, "no table", "no column", nullptr);
    tov_schema__get_mssql_col_type_name(ctx, schema, "no table", "no column", nullptr);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"compat_level":1})");
}

TEST_F(DocumentTest, HostTypeNamesFail)
{
    static constexpr failure_case cases[] = {
        {"no schema", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psk is null",
         CALL(tov_schema__set_mssql_col_type_name(c, nullptr, nullptr, nullptr, nullptr))},
        {"no table id", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psz_tbl_id is null",
         CALL(tov_schema__set_mssql_col_type_name(c, s, nullptr, nullptr, nullptr))},
        {"no column id", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psz_col_id is null",
         CALL(tov_schema__set_mssql_col_type_name(c, s, "T", nullptr, nullptr))},
        {"reading, no schema", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psk is null",
         CALL(tov_schema__get_mssql_col_type_name(c, nullptr, nullptr, nullptr, &o.text))},
        {"reading, no table id", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psz_tbl_id is null",
         CALL(tov_schema__get_mssql_col_type_name(c, s, nullptr, nullptr, &o.text))},
        {"reading, no column id", "{}", nullptr, KT_ERR_NULL_ARGUMENT, "psz_col_id is null",
         CALL(tov_schema__get_mssql_col_type_name(c, s, "T", nullptr, &o.text))},
        {"unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, "table id 'T' not found in schema",
         CALL(tov_schema__set_mssql_col_type_name(c, s, "T", "C", "int"))},
        {"unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema",
         CALL(tov_schema__set_mssql_col_type_name(c, s, "T", "X", "int"))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ReadingAHostTypeNameThatIsNotThereGivesNullAndFails)
{
    struct absent_case {
        const char *document;
        uint64_t code;
    };
    static constexpr absent_case cases[] = {
        {no_tbls, KT_ERR_NOT_FOUND},
        {R"({"tbls":{"t":{}}})", KT_ERR_NOT_FOUND},
        {one_col, KT_ERR_KEY_NOT_FOUND},
        {R"({"tbls":{"t":{"cols":{"c":{"mssql_col_data_type":1}}}}})", KT_ERR_WRONG_TYPE},
    };
    for (const absent_case &c : cases) {
        SCOPED_TRACE(c.document);
        load(c.document);
        const char *host_type = untouched;
        tov_schema__get_mssql_col_type_name(ctx, schema, "t", "c", &host_type);
        EXPECT_FAILED(ctx, c.code);
        expect_module_frame();
        EXPECT_EQ(host_type, nullptr);
        reset();
    }
}

TEST_F(DocumentTest, CollationsAndDefaultsAreKeptUnderTheIdsAsTheyStand)
{
    tov_schema__set_host_collation(ctx, schema, "NoTbl", "NoCol", "old");
    tov_schema__set_host_collation(ctx, schema, "NoTbl", "NoCol", "Latin1_General_CI_AS");
    tov_schema__set_host_defval(ctx, schema, "NoTbl", "NoCol", "N'x'");
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), R"({"collations":{"NoTbl":{"NoCol":"Latin1_General_CI_AS"}},)"
                                R"("defvals":{"NoTbl":{"NoCol":"N'x'"}}})");
    const char *collation = untouched;
    const char *defval = untouched;
    tov_schema__get_host_collation(ctx, schema, "NoTbl", "NoCol", &collation);
    tov_schema__get_host_defval(ctx, schema, "NoTbl", "NoCol", &defval);
    EXPECT_OK(ctx);
    EXPECT_STREQ(collation, "Latin1_General_CI_AS");
    EXPECT_STREQ(defval, "N'x'");
}

TEST_F(DocumentTest, CollationsAndDefaultsOfAnotherColumnAreNull)
{
    load_trees("{}", R"({"collations":{"T":{"C":"x"}},"defvals":{"T":{"C":"y"}}})");
    const char *collation = untouched;
    const char *defval = untouched;
    tov_schema__get_host_collation(ctx, schema, "T", "c", &collation);
    tov_schema__get_host_defval(ctx, schema, "T", "c", &defval);
    EXPECT_OK(ctx);
    EXPECT_EQ(collation, nullptr);
    EXPECT_EQ(defval, nullptr);
}

TEST_F(DocumentTest, NullCollationsAndDefaultsDoNothing)
{
    tov_schema__set_host_collation(ctx, schema, "t", "c", nullptr);
    tov_schema__set_host_defval(ctx, schema, "t", "c", nullptr);
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), "null");
}

TEST_F(DocumentTest, AbsentCollationsAndDefaultsLeaveTheOutput)
{
    static constexpr const char *hosts[] = {nullptr, "{}", R"({"collations":{},"defvals":{}})",
                                            R"({"collations":{"T":{"c":"x"}},"defvals":{"T":{"c":"y"}}})"};
    for (const char *host : hosts) {
        SCOPED_TRACE(host ? host : "no host internals");
        load_trees(one_col, host);
        const char *collation = untouched;
        const char *defval = untouched;
        tov_schema__get_host_collation(ctx, schema, "t", "c", &collation);
        tov_schema__get_host_defval(ctx, schema, "t", "c", &defval);
        EXPECT_OK(ctx);
        EXPECT_EQ(collation, untouched);
        EXPECT_EQ(defval, untouched);
        EXPECT_EQ(host_internals(), host ? host : "null");
    }
}

TEST_F(DocumentTest, CollationsAndDefaultsOfAnotherTypeFail)
{
    static constexpr failure_case cases[] = {
        {"setting a collation", "{}", R"({"collations":1})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_host_collation(c, s, "t", "c", "x"))},
        {"reading a collation", "{}", R"({"collations":{"t":{"c":1}}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_host_collation(c, s, "t", "c", &o.text))},
        {"setting a default", "{}", R"({"defvals":{"t":1}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_host_defval(c, s, "t", "c", "x"))},
        {"reading a default", "{}", R"({"defvals":{"t":[]}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_host_defval(c, s, "t", "c", &o.text))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, SpatialTypesOfTheHost)
{
    struct spatial_case {
        const char *host_type;
        KT_bool expected;
    };
    static constexpr spatial_case cases[] = {
        {"geography", 1}, {"geometry", 1},  {"hierarchyid", 1}, {"GEOMETRY", 1}, {"HierarchyId", 1},
        {nullptr, 0},     {"geometry2", 0}, {"geometr", 0},     {"", 0},         {"xml", 0},
    };
    for (const spatial_case &c : cases)
        EXPECT_EQ(tov_schema__is_mssql_spatial_col_type(c.host_type), c.expected) << (c.host_type ? c.host_type : "");
}

TEST_F(DocumentTest, HostInfoSurvivesShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"type name", one_col, nullptr,
         CALL(tov_schema__set_mssql_col_type_name(c, s, "t", "c", "A name that needs a block of its own"))},
        {"collation", "{}", nullptr,
         CALL(tov_schema__set_host_collation(c, s, "t", "c", "A name that needs a block of its own"))},
        {"default", "{}", nullptr,
         CALL(tov_schema__set_host_defval(c, s, "t", "c", "A text that needs a block of its own"))},
    };
    expect_survival(cases);
}
