#include "document_support.hpp"

TEST_F(DocumentTest, HostInternalsComeWithTheFirstWrite)
{
    EXPECT_EQ(host_internals(), "null");
    KT_vhash *first = nullptr;
    KT_vhash *second = nullptr;
    _tov_schema__ensure_host_internals(ctx, schema, &first);
    _tov_schema__ensure_host_internals(ctx, schema, &second);
    EXPECT_OK(ctx);
    EXPECT_EQ(first, second);
    EXPECT_EQ(host_internals(), "{}");
}

TEST_F(DocumentTest, EntriesAreKeyedByTheIdAsItStands)
{
    KT_vhash *entry = nullptr;
    _tov_schema__ensure_host_entry(ctx, schema, "collations", "TblX", &entry);
    EXPECT_EQ(host_internals(), R"({"collations":{"TblX":{}}})");
    for (const char *id : {"TblX", "tblx"}) {
        KT_vhash *found = schema->document;
        _tov_schema__check_host_entry(ctx, schema, "collations", id, &found);
        EXPECT_OK(ctx);
        EXPECT_EQ(found, *id == 'T' ? entry : nullptr);
    }
}

TEST_F(DocumentTest, UnpreparedColumnsNeedNoTable)
{
    KT_vhash *created = nullptr;
    _tov_schema__get_tbl_unprepared_cols(ctx, schema, "NoTbl", &created);
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"NoTbl":{}}})");
    KT_vhash *found = nullptr;
    _tov_schema__check_tbl_unprepared_cols(ctx, schema, "NoTbl", &found);
    EXPECT_EQ(found, created);
}

TEST_F(DocumentTest, CheckingCreatesNothing)
{
    static constexpr const char *hosts[] = {nullptr, "{}", R"({"unprep-cols":{}})", R"({"unprep-cols":null})",
                                            R"({"unprep-cols":{"t":null}})"};
    for (const char *host : hosts) {
        SCOPED_TRACE(host ? host : "no host internals");
        load_trees("{}", host);
        KT_vhash *found = schema->document;
        _tov_schema__check_tbl_unprepared_cols(ctx, schema, "t", &found);
        EXPECT_OK(ctx);
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(host_internals(), host ? host : "null");
    }
}

TEST_F(DocumentTest, HostEntriesOfAnotherTypeFail)
{
    static constexpr failure_case cases[] = {
        {"a map, on checking", "{}", R"({"unprep-cols":1})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__check_tbl_unprepared_cols(c, s, "t", &o.map))},
        {"an entry, on checking", "{}", R"({"unprep-cols":{"t":"x"}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__check_tbl_unprepared_cols(c, s, "t", &o.map))},
        {"a map, on creating", "{}", R"({"unprep-cols":null})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__get_tbl_unprepared_cols(c, s, "t", &o.map))},
        {"an entry, on creating", "{}", R"({"unprep-cols":{"t":[]}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__get_tbl_unprepared_cols(c, s, "t", &o.map))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, HostEntriesSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"unprepared columns", "{}", nullptr, CALL(_tov_schema__get_tbl_unprepared_cols(c, s, "t", &o.map))},
    };
    expect_survival(cases);
}
