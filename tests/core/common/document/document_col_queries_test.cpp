#include "document_support.hpp"

// Table T: prepared columns b, a and n (no name), and unprepared ones u and p of names that prepared ones have too.
static constexpr char five_cols[] = R"({"tbls":{"t":{"cols":{"b":{"name":"Price"},"a":{"name":"Tax"},"n":{}}}}})";
static constexpr char five_cols_host[] =
    R"({"unprep-cols":{"t":{"u":{"name":"Price"},"p":{"name":"Only here"},"q":{"name":"Only here"},"b":{}}}})";

TEST_F(DocumentTest, PreparedColumnsAreCountedAndListedInOrder)
{
    load_trees(five_cols, five_cols_host);
    uint32_t count = 77;
    tov_schema__count_cols(ctx, schema, "T", &count);
    EXPECT_EQ(count, 3u);
    std::string ids;
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        tov_schema__get_nth_col_id(ctx, schema, "T", n, &col_id);
        ids += col_id;
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(ids, "ban");
}

TEST_F(DocumentTest, UnpreparedColumnsAreCountedAndListedApart)
{
    load_trees(five_cols, five_cols_host);
    uint32_t count = 77;
    tov_schema__count_unprepared_cols(ctx, schema, "t", &count);
    EXPECT_EQ(count, 4u);
    const char *col_id = nullptr;
    tov_schema__get_nth_unprepared_col_id(ctx, schema, "t", 1, &col_id);
    EXPECT_STREQ(col_id, "p");
    tov_schema__count_unprepared_cols(ctx, schema, "T", &count);
    EXPECT_EQ(count, 0u);
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), five_cols_host);
}

TEST_F(DocumentTest, AskingForAnUnpreparedColumnCreatesItsMaps)
{
    uint32_t count = 77;
    tov_schema__count_unprepared_cols(ctx, schema, "NoTbl", &count);
    EXPECT_OK(ctx);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(host_internals(), "null");
    const char *col_id = untouched;
    tov_schema__get_nth_unprepared_col_id(ctx, schema, "NoTbl", 0, &col_id);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
    expect_module_frame();
    EXPECT_EQ(col_id, untouched);
    reset();
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"NoTbl":{}}})");
}

TEST_F(DocumentTest, OnlyPreparedColumnIdsAreKnown)
{
    load_trees(five_cols, five_cols_host);
    struct has_case {
        const char *id;
        KT_bool has;
        const char *name;
    };
    static constexpr has_case cases[] = {
        {"b", 1, "Price"}, {"B", 1, "Price"}, {"n", 1, nullptr}, {"u", 0, "Price"}, {"U", 0, "Price"},
    };
    for (const has_case &c : cases) {
        SCOPED_TRACE(c.id);
        KT_bool has = 77;
        const char *name = untouched;
        tov_schema__has_col_id(ctx, schema, "t", c.id, &has);
        tov_schema__get_col_name(ctx, schema, "t", c.id, &name);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
        EXPECT_STREQ(name, c.name);
    }
    KT_bool has = 77;
    tov_schema__has_col_id(ctx, schema, "T", "none", &has);
    EXPECT_OK(ctx);
    EXPECT_EQ(has, 0);
}

TEST_F(DocumentTest, ColumnsAreFoundByTheirExactName)
{
    struct find_case {
        const char *name;
        const char *col_id;
    };
    static constexpr find_case cases[] = {
        {"Price", "b"}, {"Tax", "a"}, {"PRICE", nullptr}, {"Only here", "p"}, {"only here", nullptr}, {"", nullptr},
    };
    for (const find_case &c : cases) {
        SCOPED_TRACE(c.name);
        load_trees(five_cols, five_cols_host);
        const char *col_id = untouched;
        tov_schema__find_col_by_name(ctx, schema, "t", c.name, &col_id);
        EXPECT_OK(ctx);
        EXPECT_STREQ(col_id, c.col_id);
    }
    load(five_cols);
    const char *col_id = untouched;
    tov_schema__find_col_by_name(ctx, schema, "t", "Only here", &col_id);
    EXPECT_OK(ctx);
    EXPECT_EQ(col_id, nullptr);
    EXPECT_EQ(host_internals(), "null");
}

TEST_F(DocumentTest, ReadingColumnsCreatesTheirMap)
{
    static constexpr call reads[] = {
        CALL(tov_schema__count_cols(c, s, "T", &o.count)),
        CALL(tov_schema__has_col_id(c, s, "T", "c", &o.flag)),
        CALL(tov_schema__find_col_by_name(c, s, "T", "c", &o.text)),
    };
    for (const call read : reads) {
        SCOPED_TRACE(&read - reads);
        load(R"({"tbls":{"t":{}}})");
        outputs o;
        read(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), R"({"tbls":{"t":{"cols":{}}}})");
    }
}

TEST_F(DocumentTest, ColumnQueriesFailForUnknownTables)
{
    static constexpr call operations[] = {
        CALL(tov_schema__count_cols(c, s, "X", &o.count)),
        CALL(tov_schema__get_nth_col_id(c, s, "X", 0, &o.text)),
        CALL(tov_schema__has_col_id(c, s, "X", "c", &o.flag)),
        CALL(tov_schema__get_col_name(c, s, "X", "c", &o.text)),
        CALL(tov_schema__find_col_by_name(c, s, "X", "Price", &o.text)),
    };
    for (const call run : operations) {
        SCOPED_TRACE(&run - operations);
        const failure_case cases[] = {{"unknown table", five_cols, R"({"unprep-cols":{"X":{"c":{"name":"Price"}}}})",
                                       KT_ERR_NOT_FOUND, "table id 'X' not found in schema", run}};
        expect_failures(cases);
    }
}

TEST_F(DocumentTest, ColumnQueriesFail)
{
    static constexpr char wrong_names[] = R"({"tbls":{"t":{"cols":{"c":{"name":1}}},"u":{}}})";
    static constexpr char wrong_host[] = R"({"unprep-cols":{"u":{"c":{"name":1}},"v":1}})";
    static constexpr failure_case cases[] = {
        {"an id beyond the last", five_cols, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_col_id(c, s, "t", 3, &o.text))},
        {"the name of an unknown column", five_cols, nullptr, KT_ERR_NOT_FOUND,
         "col id 'X' not found in tbl id 'T' in schema", CALL(tov_schema__get_col_name(c, s, "T", "X", &o.text))},
        {"a name of another type", wrong_names, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_name(c, s, "t", "c", &o.text))},
        {"finding past a name of another type", wrong_names, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__find_col_by_name(c, s, "t", "none", &o.text))},
        {"finding past an unprepared name of another type", wrong_names, wrong_host, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__find_col_by_name(c, s, "u", "none", &o.text))},
        {"counting unprepared columns of another type", wrong_names, wrong_host, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_unprepared_cols(c, s, "v", &o.count))},
        {"an unprepared id beyond the last", five_cols, five_cols_host, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_unprepared_col_id(c, s, "t", 4, &o.text))},
    };
    expect_failures(cases);
}
