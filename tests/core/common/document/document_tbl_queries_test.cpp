#include "document_support.hpp"

// Three tables, two of them with the same name, and one without any.
static constexpr char four_tbls[] =
    R"({"tbls":{"b":{"name":"Same"},"a":{"name":"Other"},"c":{"name":"Same"},"n":{"txid":1}}})";

TEST_F(DocumentTest, TablesAreCountedAndListedInOrder)
{
    load(four_tbls);
    uint32_t count = 77;
    tov_schema__count_tbls(ctx, schema, &count);
    EXPECT_EQ(count, 4u);
    std::string ids;
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &tbl_id);
        ids += tbl_id;
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(ids, "bacn");
}

TEST_F(DocumentTest, TableIdsAreKnownInAnyCase)
{
    load(four_tbls);
    for (const char *id : {"a", "A", "x", "X"}) {
        KT_bool has = 77;
        tov_schema__has_tbl_id(ctx, schema, id, &has);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, *id == 'a' || *id == 'A') << id;
    }
}

TEST_F(DocumentTest, TableNamesAreReadBack)
{
    load(four_tbls);
    const char *name = nullptr;
    tov_schema__get_tbl_name(ctx, schema, "A", &name);
    EXPECT_STREQ(name, "Other");
    tov_schema__get_tbl_name(ctx, schema, "n", &name);
    EXPECT_EQ(name, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, TablesAreFoundByTheirExactName)
{
    struct find_case {
        const char *name;
        const char *tbl_id;
    };
    static constexpr find_case cases[] = {
        {"Other", "a"}, {"Same", "b"}, {"other", nullptr}, {"Othe", nullptr}, {"Other ", nullptr}, {"", nullptr},
    };
    for (const find_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(four_tbls);
        const char *tbl_id = untouched;
        tov_schema__find_tbl_by_name(ctx, schema, c.name, &tbl_id);
        EXPECT_OK(ctx);
        EXPECT_STREQ(tbl_id, c.tbl_id);
    }
}

TEST_F(DocumentTest, TableNamesAreListedOnceEach)
{
    struct list_case {
        const char *document;
        const char *names;
    };
    static constexpr list_case cases[] = {
        {"{}", "{}"},
        {four_tbls, R"({"Same":null,"Other":null})"},
    };
    for (const list_case &c : cases) {
        load(c.document);
        KT_vhash *names = nullptr;
        tov_schema__get_tbl_names_vhash(ctx, schema, &names);
        EXPECT_OK(ctx);
        EXPECT_EQ(json_of(ctx, names), c.names);
        KT_vhash__free(ctx, names);
    }
}

TEST_F(DocumentTest, ReadingTablesCreatesTheirMap)
{
    static constexpr call reads[] = {
        CALL(tov_schema__count_tbls(c, s, &o.count)),
        CALL(tov_schema__has_tbl_id(c, s, "t", &o.flag)),
        CALL(tov_schema__find_tbl_by_name(c, s, "t", &o.text)),
    };
    for (const call read : reads) {
        SCOPED_TRACE(&read - reads);
        load("{}");
        outputs o;
        read(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), no_tbls);
    }
}

TEST_F(DocumentTest, TableQueriesFail)
{
    static constexpr char wrong_name[] = R"({"tbls":{"a":{"name":"A"},"t":{"name":1}}})";
    static constexpr failure_case cases[] = {
        {"an id beyond the last", four_tbls, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_tbl_id(c, s, 4, &o.text))},
        {"an id of no tables", "{}", nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_tbl_id(c, s, 0, &o.text))},
        {"the name of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, "table id 'T' not found in schema",
         CALL(tov_schema__get_tbl_name(c, s, "T", &o.text))},
        {"a name of another type", wrong_name, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_tbl_name(c, s, "t", &o.text))},
        {"finding past a name of another type", wrong_name, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__find_tbl_by_name(c, s, "none", &o.text))},
        {"listing a name of another type", wrong_name, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_tbl_names_vhash(c, s, &o.map))},
        {"counting tables of another type", R"({"tbls":1})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_tbls(c, s, &o.count))},
        {"asking tables of another type for an id", R"({"tbls":1})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__has_tbl_id(c, s, "t", &o.flag))},
    };
    expect_failures(cases);
}

static void my_list_and_drop(KT_context *ctx, tov_schema *schema)
{
    kt_owned_vhash names{ctx};
    tov_schema__get_tbl_names_vhash(ctx, schema, names.out());
}

TEST_F(DocumentTest, TableQueriesSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"listing names", four_tbls, nullptr, CALL(my_list_and_drop(c, s))},
    };
    expect_survival(cases);
}
