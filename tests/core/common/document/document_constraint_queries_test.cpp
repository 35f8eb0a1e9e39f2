#include "document_support.hpp"

static constexpr char constraints[] = R"({"tbls":{"none":{},"t":{"uniques":{"U2":{"B":null,"a":null},"U1":{"c":null}},)"
                                      R"("check":{"K2":{"expr":"x"},"K1":{"expr":"y"}}}}})";

TEST_F(DocumentTest, UniqueConstraintsAreCountedAndListedInOrder)
{
    load(constraints);
    uint32_t count = 77;
    const char *id = nullptr;
    tov_schema__count_uniques(ctx, schema, "T", &count);
    EXPECT_EQ(count, 2u);
    tov_schema__get_nth_unique_id(ctx, schema, "T", 0, &id);
    EXPECT_STREQ(id, "U2");
    tov_schema__get_nth_unique_id(ctx, schema, "T", 1, &id);
    EXPECT_STREQ(id, "U1");
    tov_schema__count_unique_cols(ctx, schema, "T", "U2", &count);
    EXPECT_EQ(count, 2u);
    tov_schema__get_nth_unique_col_id(ctx, schema, "T", "U2", 0, &id);
    EXPECT_STREQ(id, "B");
    tov_schema__get_nth_unique_col_id(ctx, schema, "T", "U2", 1, &id);
    EXPECT_STREQ(id, "a");
    tov_schema__count_uniques(ctx, schema, "none", &count);
    EXPECT_EQ(count, 0u);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), constraints);
}

TEST_F(DocumentTest, ColumnsOfUniqueConstraintsMatchExactly)
{
    struct in_unique_case {
        const char *tbl_id;
        const char *col_id;
        KT_bool is_in_unique;
    };
    static constexpr in_unique_case cases[] = {
        {"t", "B", 1}, {"T", "a", 1}, {"t", "c", 1}, {"t", "b", 0}, {"t", "A", 0}, {"t", "U1", 0}, {"none", "a", 0},
    };
    load(constraints);
    for (const in_unique_case &c : cases) {
        SCOPED_TRACE(c.col_id);
        KT_bool is_in_unique = 77;
        tov_schema__is_col_id_in_unique(ctx, schema, c.tbl_id, c.col_id, &is_in_unique);
        EXPECT_OK(ctx);
        EXPECT_EQ(is_in_unique, c.is_in_unique);
    }
    EXPECT_EQ(document(), constraints);
}

TEST_F(DocumentTest, ChecksAreCountedAndListedInOrder)
{
    load(constraints);
    uint32_t count = 77;
    const char *id = nullptr;
    tov_schema__count_checks(ctx, schema, "T", &count);
    EXPECT_EQ(count, 2u);
    tov_schema__get_nth_check_id(ctx, schema, "T", 0, &id);
    EXPECT_STREQ(id, "K2");
    tov_schema__get_nth_check_id(ctx, schema, "T", 1, &id);
    EXPECT_STREQ(id, "K1");
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), constraints);
}

TEST_F(DocumentTest, ReadingChecksCreatesTheirMap)
{
    load(R"({"tbls":{"t":{}}})");
    uint32_t count = 77;
    tov_schema__count_checks(ctx, schema, "T", &count);
    EXPECT_OK(ctx);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(document(), R"({"tbls":{"t":{"check":{}}}})");
}

TEST_F(DocumentTest, ConstraintQueriesFailForUnknownTables)
{
    static constexpr call operations[] = {
        CALL(tov_schema__count_uniques(c, s, "X", &o.count)),
        CALL(tov_schema__get_nth_unique_id(c, s, "X", 0, &o.text)),
        CALL(tov_schema__count_unique_cols(c, s, "X", "U1", &o.count)),
        CALL(tov_schema__get_nth_unique_col_id(c, s, "X", "U1", 0, &o.text)),
        CALL(tov_schema__is_col_id_in_unique(c, s, "X", "a", &o.flag)),
        CALL(tov_schema__count_checks(c, s, "X", &o.count)),
        CALL(tov_schema__get_nth_check_id(c, s, "X", 0, &o.text)),
    };
    for (const call run : operations) {
        SCOPED_TRACE(&run - operations);
        const failure_case cases[] = {
            {"unknown table", constraints, nullptr, KT_ERR_NOT_FOUND, "table id 'X' not found in schema", run}};
        expect_failures(cases);
    }
}

TEST_F(DocumentTest, ConstraintQueriesFail)
{
    static constexpr char wrong[] = R"({"tbls":{"t":{"uniques":{"U":1},"check":1},"u":{"uniques":1}}})";
    static constexpr failure_case cases[] = {
        {"a unique constraint where none is", constraints, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_unique_id(c, s, "none", 0, &o.text))},
        {"a unique constraint beyond the last", constraints, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_unique_id(c, s, "t", 2, &o.text))},
        {"the columns of an unknown unique constraint", constraints, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__count_unique_cols(c, s, "t", "u1", &o.count))},
        {"a column of an unknown unique constraint", constraints, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_unique_col_id(c, s, "t", "u1", 0, &o.text))},
        {"a column beyond the last of a unique constraint", constraints, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_unique_col_id(c, s, "t", "U1", 1, &o.text))},
        {"a check beyond the last", constraints, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_check_id(c, s, "t", 2, &o.text))},
        {"a unique constraint of another type", wrong, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__is_col_id_in_unique(c, s, "t", "a", &o.flag))},
        {"unique constraints of another type", wrong, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_uniques(c, s, "u", &o.count))},
        {"checks of another type", wrong, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_checks(c, s, "t", &o.count))},
    };
    expect_failures(cases);
}
