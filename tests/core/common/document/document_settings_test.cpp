#include "document_support.hpp"

TEST_F(DocumentTest, TheFilterIdIsKept)
{
    int64_t filter_id = 77;
    tov_schema__get_filter_id(ctx, schema, &filter_id);
    EXPECT_EQ(filter_id, 0);
    EXPECT_EQ(document(), R"({"compat_level":1})");
    for (int64_t id : {INT64_MIN, int64_t{5}, INT64_MAX}) {
        tov_schema__set_filter_id(ctx, schema, id);
        tov_schema__get_filter_id(ctx, schema, &filter_id);
        EXPECT_EQ(filter_id, id);
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"compat_level":1,"filter_id":9223372036854775807})");
}

TEST_F(DocumentTest, FactsAboutTheBackendAreKept)
{
    tov_schema__set_backend_info__name(ctx, schema, "old");
    tov_schema__set_backend_info__api(ctx, schema, "api");
    tov_schema__set_backend_info__name(ctx, schema, "new");
    tov_schema__set_backend_info__indistinct_unique_nulls(ctx, schema, 256);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"compat_level":1,"backend":{"name":"new","api":"api","indistinct_unique_nulls":true}})");
}

TEST_F(DocumentTest, IndistinctUniqueNullsAreReadBack)
{
    KT_bool flag = 77;
    tov_schema__get_backend_info__indistinct_unique_nulls(ctx, schema, &flag);
    EXPECT_OK(ctx);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(document(), R"({"compat_level":1,"backend":{}})");
    for (KT_bool value : {1, 0}) {
        tov_schema__set_backend_info__indistinct_unique_nulls(ctx, schema, value);
        tov_schema__get_backend_info__indistinct_unique_nulls(ctx, schema, &flag);
        EXPECT_OK(ctx);
        EXPECT_EQ(flag, value);
    }
}

TEST_F(DocumentTest, SettingsOfAnotherTypeFail)
{
    static constexpr failure_case cases[] = {
        {"reading the filter id", R"({"filter_id":"5"})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_filter_id(c, s, &o.int64))},
        {"setting the name", R"({"backend":1})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_backend_info__name(c, s, "n"))},
        {"setting the api", R"({"backend":1})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_backend_info__api(c, s, "a"))},
        {"setting the flag", R"({"backend":null})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_backend_info__indistinct_unique_nulls(c, s, 1))},
        {"reading the flag, no map", R"({"backend":[]})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_backend_info__indistinct_unique_nulls(c, s, &o.flag))},
        {"reading the flag, a number", R"({"backend":{"indistinct_unique_nulls":1}})", nullptr, KT_ERR_WRONG_TYPE,
         nullptr, CALL(tov_schema__get_backend_info__indistinct_unique_nulls(c, s, &o.flag))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, SettingsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"filter id", R"({"a":1,"b":2,"c":3})", nullptr, CALL(tov_schema__set_filter_id(c, s, 1))},
        {"name", "{}", nullptr, CALL(tov_schema__set_backend_info__name(c, s, "A name that needs a block of its own"))},
        {"api", "{}", nullptr, CALL(tov_schema__set_backend_info__api(c, s, "A name that needs a block of its own"))},
        {"flag", "{}", nullptr, CALL(tov_schema__set_backend_info__indistinct_unique_nulls(c, s, 1))},
        {"reading the flag", "{}", nullptr, CALL(tov_schema__get_backend_info__indistinct_unique_nulls(c, s, &o.flag))},
    };
    expect_survival(cases);
}
