#include "document_support.hpp"

#include <cctype>
#include <random>
#include <string>

// An unprepared column u of table T, whose id the host passed as "t".
static constexpr char unprepared_u[] = R"({"unprep-cols":{"t":{"u":{"name":"U"}}}})";

TEST_F(DocumentTest, IdsOfTablesMatchInAnyCase)
{
    tov_schema__add_tbl(ctx, schema, "Orders", "Orders", 1);
    KT_vhash *added = nullptr;
    _tov_schema__get_tbl(ctx, schema, "Orders", &added);
    for (const char *id : {"orders", "ORDERS", "oRDERS"}) {
        SCOPED_TRACE(id);
        KT_vhash *found = nullptr;
        _tov_schema__get_tbl(ctx, schema, id, &found);
        EXPECT_OK(ctx);
        EXPECT_EQ(found, added);
    }
}

TEST_F(DocumentTest, IdsOfColumnsMatchInAnyCase)
{
    load_trees(one_col, unprepared_u);
    for (const char *id : {"c", "C", "u", "U"}) {
        SCOPED_TRACE(id);
        KT_vhash *found = nullptr;
        const char *name = nullptr;
        _tov_schema__get_col(ctx, schema, "T", id, &found);
        // The host internals know the table as "t" only.
        if (*id == 'u' || *id == 'U') {
            EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
            reset();
            _tov_schema__get_col(ctx, schema, "t", id, &found);
        }
        EXPECT_OK(ctx);
        KT_vhash__get__sz(ctx, found, "name", &name);
        EXPECT_EQ(KT_stricmp(name, id), 0);
    }
}

TEST_F(DocumentTest, LongIdsMatchInAnyCase)
{
    const std::string id(300, 'X');
    tov_schema__add_tbl(ctx, schema, id.c_str(), "T", 1);
    tov_schema__add_col(ctx, schema, id.c_str(), id.c_str(), "C", 1, 0, 0);
    KT_vhash *col = nullptr;
    const std::string lower_id(300, 'x');
    _tov_schema__get_col(ctx, schema, lower_id.c_str(), id.c_str(), &col);
    EXPECT_OK(ctx);
    EXPECT_EQ(json_of(ctx, col), R"({"name":"C"})");
}

TEST_F(DocumentTest, APreparedColumnComesBeforeAnUnpreparedOneOfTheSameId)
{
    load_trees(one_col, R"({"unprep-cols":{"t":{"c":{"name":"other"}}}})");
    EXPECT_EQ(col_record(), R"({"name":"C"})");
}

TEST_F(DocumentTest, AColumnThatWasFoundUnpreparedIsFoundPreparedOnceItIs)
{
    load_trees(one_col, R"({"unprep-cols":{"t":{"u":{"name":"other"}}}})");
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, "t", "u", &name);
    EXPECT_STREQ(name, "other");
    tov_schema__add_col(ctx, schema, "t", "u", "prepared", 1, 0, 0);
    tov_schema__get_col_name(ctx, schema, "t", "u", &name);
    EXPECT_STREQ(name, "prepared");
    EXPECT_OK(ctx);
}

// One lookup after another, each by every spelling: what one found does not show in the next.
TEST_F(DocumentTest, LookupsInAnyOrderFindTheSame)
{
    load(R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"Ta"},"b":{"name":"Tb"}}},)"
         R"("s":{"name":"S","cols":{"a":{"name":"Sa"},"b":{"name":"Sb"}}}}})");
    std::mt19937 random(7);
    for (int n = 0; n < 2000; n++) {
        const std::string tbl(1, "tTsS"[random() % 4]), col(1, "aAbB"[random() % 4]);
        SCOPED_TRACE(tbl + col);
        const char *tbl_name = nullptr, *col_name = nullptr;
        if (random() % 2)
            tov_schema__get_tbl_name(ctx, schema, tbl.c_str(), &tbl_name);
        tov_schema__get_col_name(ctx, schema, tbl.c_str(), col.c_str(), &col_name);
        ASSERT_OK(ctx);
        const std::string expected = {static_cast<char>(toupper(tbl[0])), static_cast<char>(tolower(col[0]))};
        EXPECT_EQ(col_name, expected);
        EXPECT_EQ(tbl_name ? tbl_name : expected.substr(0, 1), expected.substr(0, 1));
    }
}

TEST_F(DocumentTest, ANullRecordCountsAsAbsent)
{
    load_trees(R"({"tbls":{"t":{"cols":{"c":null}},"n":null}})", R"({"unprep-cols":{"t":{"c":{"name":"U"}}}})");
    EXPECT_EQ(col_record(), R"({"name":"U"})");
    KT_vhash *tbl = nullptr;
    _tov_schema__get_tbl(ctx, schema, "n", &tbl);
    EXPECT_FAILED(ctx, KT_ERR_NOT_FOUND);
    reset();
}

TEST_F(DocumentTest, LookupsCreateWhatTheyMay)
{
    struct lookup_case {
        const char *name;
        const char *before;
        call run;
        const char *after;
    };
    static constexpr lookup_case cases[] = {
        {"the tables", "{}", CALL(_tov_schema__get_tbls(c, s, &o.map)), R"({"tbls":{}})"},
        {"a table's columns", R"({"tbls":{"t":{}}})", CALL(_tov_schema__get_tbl_cols(c, s, "T", &o.map)),
         R"({"tbls":{"t":{"cols":{}}}})"},
        {"a table's checks", R"({"tbls":{"t":{}}})", CALL(_tov_schema__get_checks(c, s, "T", &o.map)),
         R"({"tbls":{"t":{"check":{}}}})"},
        {"the primary key, when asked whether there is one", R"({"tbls":{"t":{}}})",
         CALL(o.map = s->document; _tov_schema__check_pk(c, s, "t", &o.map); EXPECT_EQ(o.map, nullptr)),
         R"({"tbls":{"t":{}}})"},
        {"the foreign keys, when asked whether there are any", R"({"tbls":{"t":{}}})",
         CALL(o.map = s->document; _tov_schema__check_foreignkeys(c, s, "t", &o.map); EXPECT_EQ(o.map, nullptr)),
         R"({"tbls":{"t":{}}})"},
    };
    for (const lookup_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.before);
        outputs o;
        c.run(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), c.after);
    }
}

TEST_F(DocumentTest, LookupsGiveTheRecordThatIsThere)
{
    static constexpr struct {
        const char *name;
        call run;
    } cases[] = {
        {"primary key, get", CALL(_tov_schema__get_pk(c, s, "T", &o.map))},
        {"primary key, check", CALL(_tov_schema__check_pk(c, s, "T", &o.map))},
        {"unique constraints, get", CALL(_tov_schema__get_uniques(c, s, "T", &o.map))},
        {"foreign keys, get", CALL(_tov_schema__get_foreignkeys(c, s, "T", &o.map))},
        {"foreign keys, check", CALL(_tov_schema__check_foreignkeys(c, s, "T", &o.map))},
        {"checks, get", CALL(_tov_schema__get_checks(c, s, "T", &o.map))},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load(R"({"tbls":{"t":{"pk":{"id":"p"},"uniques":{"id":"u"},"foreignkeys":{"id":"f"},"check":{"id":"c"}}}})");
        outputs o;
        c.run(ctx, schema, o);
        ASSERT_OK(ctx);
        const char *id = nullptr;
        KT_vhash__get__sz(ctx, o.map, "id", &id);
        EXPECT_EQ(*id, *c.name);
    }
}

TEST_F(DocumentTest, LookupsFail)
{
    static constexpr char no_t[] = "table id 'T' not found in schema";
    static constexpr failure_case cases[] = {
        {"a table", "{}", nullptr, KT_ERR_NOT_FOUND, no_t, CALL(_tov_schema__get_tbl(c, s, "T", &o.map))},
        {"its columns", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t, CALL(_tov_schema__get_tbl_cols(c, s, "T", &o.map))},
        {"a column of an unknown table, even an unprepared one", no_tbls, R"({"unprep-cols":{"T":{"u":{}}}})",
         KT_ERR_NOT_FOUND, no_t, CALL(_tov_schema__get_col(c, s, "T", "u", &o.map))},
        {"its primary key", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t, CALL(_tov_schema__get_pk(c, s, "T", &o.map))},
        {"its primary key, if any", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(_tov_schema__check_pk(c, s, "T", &o.map))},
        {"its unique constraints", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(_tov_schema__get_uniques(c, s, "T", &o.map))},
        {"its foreign keys", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(_tov_schema__get_foreignkeys(c, s, "T", &o.map))},
        {"its foreign keys, if any", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(_tov_schema__check_foreignkeys(c, s, "T", &o.map))},
        {"its checks", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t, CALL(_tov_schema__get_checks(c, s, "T", &o.map))},
        {"a column, both ids as passed", one_col, nullptr, KT_ERR_NOT_FOUND,
         "col id 'ColX' not found in tbl id 'T' in schema", CALL(_tov_schema__get_col(c, s, "T", "ColX", &o.map))},
        {"a column, with unprepared ones in the table", one_col, unprepared_u, KT_ERR_NOT_FOUND,
         "col id 'ColX' not found in tbl id 't' in schema", CALL(_tov_schema__get_col(c, s, "t", "ColX", &o.map))},
        {"a primary key that is not there", one_col, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(_tov_schema__get_pk(c, s, "t", &o.map))},
        {"unique constraints that are not there", one_col, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(_tov_schema__get_uniques(c, s, "t", &o.map))},
        {"foreign keys that are not there", one_col, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(_tov_schema__get_foreignkeys(c, s, "t", &o.map))},
        {"tables of another type", R"({"tbls":[]})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__get_tbls(c, s, &o.map))},
        {"a table of another type", R"({"tbls":{"t":1}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__get_tbl(c, s, "t", &o.map))},
        {"a column of another type", R"({"tbls":{"t":{"cols":{"c":"x"}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__get_col(c, s, "t", "c", &o.map))},
        {"an unprepared column of another type", one_col, R"({"unprep-cols":{"t":{"u":1}}})", KT_ERR_WRONG_TYPE,
         nullptr, CALL(_tov_schema__get_col(c, s, "t", "u", &o.map))},
        {"the n-th table", one_col, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(_tov_schema__get_nth_tbl(c, s, 1, &o.text, &o.map))},
        {"the n-th table, which no lookup reaches", R"({"tbls":{"T":{}}})", nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(_tov_schema__get_nth_tbl(c, s, 0, &o.text, &o.map))},
        {"the n-th table, a null", R"({"tbls":{"t":null}})", nullptr, KT_ERR_NOT_FOUND,
         "table id 't' not found in schema", CALL(_tov_schema__get_nth_tbl(c, s, 0, &o.text, &o.map))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, WalksFindWhatLookupsFind)
{
    load_trees(R"({"tbls":{"T":{"name":"upper"},"t":{"name":"lower","cols":{"C":{"name":"upper"},"c":{"name":"lower"},
                   "u":null}}}})",
               R"({"unprep-cols":{"t":{"u":{"name":"unprepared"}}}})");
    const char *id = nullptr;
    KT_vhash *tbl = nullptr;
    for (uint32_t n : {0u, 1u}) {
        _tov_schema__get_nth_tbl(ctx, schema, n, &id, &tbl);
        ASSERT_OK(ctx);
        EXPECT_STREQ(id, n == 0 ? "T" : "t");
        const char *name = nullptr;
        KT_vhash__get__sz(ctx, tbl, "name", &name);
        EXPECT_STREQ(name, "lower");
    }
    KT_vhash *cols = nullptr;
    _tov_tbl__get_cols(ctx, tbl, &cols);
    static constexpr const char *expected[][2] = {{"C", "lower"}, {"c", "lower"}, {"u", "unprepared"}};
    for (uint32_t n = 0; n < 3; n++) {
        KT_vhash *col = nullptr;
        const char *name = nullptr;
        _tov_schema__get_nth_col_in_tbl(ctx, schema, tbl, "t", cols, n, &id, &col);
        ASSERT_OK(ctx);
        KT_vhash__get__sz(ctx, col, "name", &name);
        EXPECT_STREQ(id, expected[n][0]);
        EXPECT_STREQ(name, expected[n][1]);
    }
    KT_vhash *col = nullptr;
    _tov_schema__get_nth_col_in_tbl(ctx, schema, tbl, "t", cols, 3, nullptr, &col);
    EXPECT_FAILED(ctx, KT_ERR_OUT_OF_RANGE);
    EXPECT_EQ(col, nullptr);
    reset();
}

TEST_F(DocumentTest, LookupsTakeNoMemoryForWhatIsThere)
{
    load_trees(one_col, nullptr);
    kt_failing_alloc fault;
    fault.next();
    EXPECT_EQ(KT_context__has_err(ctx), 0);
    KT_vhash *col = nullptr;
    _tov_schema__get_col(ctx, schema, "T", "C", &col);
    EXPECT_OK(ctx);
    EXPECT_FALSE(fault.fired());
}

TEST_F(DocumentTest, LookupsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"tables", "{}", nullptr, CALL(_tov_schema__get_tbls(c, s, &o.map))},
        {"columns", R"({"tbls":{"t":{}}})", nullptr, CALL(_tov_schema__get_tbl_cols(c, s, "t", &o.map))},
        {"checks", R"({"tbls":{"t":{}}})", nullptr, CALL(_tov_schema__get_checks(c, s, "t", &o.map))},
    };
    expect_survival(cases);
}
