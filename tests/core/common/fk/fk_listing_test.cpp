#include "fk_plain.hpp"
#include "fk_test.hpp"

class ListingTest : public FkTest {
  protected:
    // Table p with columns id and no; a with columns x, y, z.
    void SetUp() override
    {
        FkTest::SetUp();
        tbl("p");
        col("p", "id");
        col("p", "no");
        tbl("a");
        for (const char *col_id : {"x", "y", "z"})
            col("a", col_id);
    }
    // The records, each on a line; their count must be the one given.
    std::string take_counted(KT_varray *records, uint32_t count)
    {
        uint32_t listed = 0;
        if (records)
            KT_varray__count(ctx, records, &listed);
        EXPECT_EQ(count, listed);
        return take_records(ctx, records);
    }
    std::string held(const char *tbl_id, const char *ref_tbl_id, uint32_t filter)
    {
        auto *records = reinterpret_cast<KT_varray *>(this);
        uint32_t count = 77;
        tov_schema__list_fk_constraints(ctx, schema, tbl_id, ref_tbl_id, filter, &records, &count);
        EXPECT_OK(ctx);
        return take_counted(records, count);
    }
    std::string referring(const char *tbl_id, KT_bool include_self, uint32_t filter)
    {
        auto *records = reinterpret_cast<KT_varray *>(this);
        uint32_t count = 77;
        tov_schema__find_references_to_tbl(ctx, schema, tbl_id, include_self, filter, &records, &count);
        EXPECT_OK(ctx);
        return take_counted(records, count);
    }
};

TEST_F(ListingTest, NoKeysNoRecords)
{
    EXPECT_EQ(held("a", nullptr, 0), "(null)");
    EXPECT_EQ(referring("p", 1, 0), "(null)");
    EXPECT_EQ(referring("nowhere", 1, 0), "(null)") << "the table is not looked up";
}

TEST_F(ListingTest, ARecordOfAColumnLevelKey)
{
    refer("a", "x", "p", "id");
    EXPECT_EQ(held("a", nullptr, 0), R"({"name":null,"tbl":"p","cols-from":["the x"],"cols-to":["the id"],)"
                                     R"("defvals":[]})");
    EXPECT_EQ(referring("p", 0, 0),
              R"({"name":null,"tbl":"a","on-up":false,"cols-from":["the x"],"cols-to":["the id"]})");
    refer("a", "x", "p", "id", {.on_delete = "Cascade", .on_update = "SET NULL", .name = "FK"});
    EXPECT_EQ(held("a", nullptr, 0), R"({"name":"FK","on-delete":"Cascade","tbl":"p","cols-from":["the x"],)"
                                     R"("cols-to":["the id"],"defvals":[]})");
    EXPECT_EQ(referring("p", 0, 0),
              R"({"name":"FK","tbl":"a","on-up":true,"cols-from":["the x"],"cols-to":["the id"]})");
}

TEST_F(ListingTest, ARecordOfATableLevelKey)
{
    tov_schema__set_colcon_defval(ctx, schema, "a", "y", 1, nullptr, "6 + 1");
    key("k", "a", "p", {{"x", "no"}, {"y", "id"}}, {.on_delete = "Set Default", .on_update = "no action", .name = "K"});
    EXPECT_EQ(held("a", nullptr, 1), R"({"name":"K","on-delete":"Set Default","tbl":"p",)"
                                     R"("cols-from":["the x","the y"],"cols-to":["the no","the id"],)"
                                     R"("defvals":["NULL","6 + 1"]})");
    EXPECT_EQ(referring("p", 0, 1), R"({"name":"K","tbl":"a","on-up":false,)"
                                    R"("cols-from":["the x","the y"],"cols-to":["the no","the id"]})");
    key("k", "a", "p", {}, {.on_delete = "SET DEFAULT", .on_update = "CASCADE", .name = "K"});
    EXPECT_NE(referring("p", 0, 1).find(R"("on-up":true)"), std::string::npos);
}

TEST_F(ListingTest, DefaultsAreListedForSetDefaultOnly)
{
    tov_schema__set_colcon_defval(ctx, schema, "a", "x", 1, nullptr, "42");
    struct default_case {
        const char *on_delete;
        const char *col_id;
        uint32_t filter;
        const char *expected;
    };
    const default_case cases[] = {
        {"SET DEFAULT", "x", 1, R"("defvals":["42"])"},   {"set default", "x", 1, R"("defvals":["42"])"},
        {"SET DEFAULT", "y", 1, R"("defvals":["NULL"])"}, {"SET DEFAULT", "x", 0, R"("defvals":[])"},
        {"SET NULL", "x", 1, R"("defvals":[])"},          {"CASCADE", "x", 1, R"("defvals":[])"},
    };
    for (const default_case &c : cases) {
        SCOPED_TRACE(joined({c.on_delete, " of ", c.col_id, " filter ", std::to_string(c.filter)}));
        refer("a", c.col_id, "p", "id", {.on_delete = c.on_delete});
        EXPECT_NE(held("a", nullptr, c.filter).find(c.expected), std::string::npos) << held("a", nullptr, c.filter);
        tov_schema__set_colcon_fk(ctx, schema, "a", c.col_id, 0, "fk", nullptr, "p", nullptr, 0, nullptr, nullptr, 0);
        key("k", "a", "p", {{c.col_id, "id"}}, {.on_delete = c.on_delete, .on_update = "NO ACTION", .name = "K"});
        EXPECT_NE(held("a", nullptr, c.filter).find(c.expected), std::string::npos) << held("a", nullptr, c.filter);
        tov_schema__nevermind_foreignkey(ctx, schema, "a", "k");
    }
}

TEST_F(ListingTest, Filters)
{
    refer("a", "x", "p", "id", {.on_delete = "no action", .name = "none"});
    refer("a", "y", "p", "id", {.on_delete = "CASCADE", .name = "some"});
    refer("a", "z", "p", "id", {.name = "absent"});
    key("k1", "a", "p", {}, {.on_delete = "NO ACTION", .on_update = "NO ACTION", .name = "key none"});
    key("k2", "a", "p", {}, {.on_delete = "SET NULL", .on_update = "NO ACTION", .name = "key some"});
    const auto names = [](const std::string &records) {
        std::string result;
        for (size_t at = records.find(R"("name":")"); at != std::string::npos; at = records.find(R"("name":")", at)) {
            at += 8;
            result += joined({result.empty() ? "" : ",", records.substr(at, records.find('"', at) - at)});
        }
        return result;
    };
    EXPECT_EQ(names(held("a", nullptr, 0)), "none,some,absent,key none,key some");
    EXPECT_EQ(names(referring("p", 0, 0)), "none,some,absent,key none,key some");
    EXPECT_EQ(names(held("a", nullptr, 1)), "some,key some");
    EXPECT_EQ(names(referring("p", 0, 1)), "some,key some");
    EXPECT_EQ(held("a", nullptr, 0).find("no action"), std::string::npos) << "an action that is none is not written";
    for (const uint32_t filter : {2u, 4294967295u}) {
        EXPECT_EQ(held("a", nullptr, filter), "(null)");
        EXPECT_EQ(referring("p", 1, filter), "(null)");
    }
}

TEST_F(ListingTest, TheReferencedTableIsComparedExactly)
{
    refer("a", "x", "P", "ID");
    key("k", "a", "a", {{"X", "Y"}});
    EXPECT_EQ(held("A", "P", 0), R"({"name":null,"tbl":"P","cols-from":["the x"],"cols-to":["the id"],)"
                                 R"("defvals":[]})");
    EXPECT_EQ(held("a", "p", 0), "(null)");
    EXPECT_EQ(held("a", "a", 0), R"({"name":"k","tbl":"a","cols-from":["the x"],"cols-to":["the y"],)"
                                 R"("defvals":[]})")
        << "its own keys are listed";
    EXPECT_EQ(referring("P", 0, 0),
              R"({"name":null,"tbl":"a","on-up":false,"cols-from":["the x"],"cols-to":["the id"]})");
    EXPECT_EQ(referring("p", 0, 0), "(null)");
}

TEST_F(ListingTest, ATablesOwnKeysAreLeftOutUnlessWanted)
{
    refer("a", "x", "a", "y");
    key("k", "a", "a", {{"x", "y"}});
    EXPECT_EQ(referring("a", 0, 0), "(null)");
    const char *const expected = R"({"name":null,"tbl":"a","on-up":false,"cols-from":["the x"],"cols-to":["the y"]}
{"name":"k","tbl":"a","on-up":false,"cols-from":["the x"],"cols-to":["the y"]})";
    for (const KT_bool include : {1, -1, 256})
        EXPECT_EQ(referring("a", include, 0), expected);
}

TEST_F(ListingTest, RecordsStandTableByTable)
{
    tbl("b");
    col("b", "x");
    refer("b", "x", "p", "id", {.name = "b col"});
    key("k1", "b", "p", {}, {.on_delete = "CASCADE", .on_update = "CASCADE", .name = "b key"});
    key("k2", "a", "p", {}, {.on_delete = "CASCADE", .on_update = "CASCADE", .name = "a key"});
    refer("a", "x", "p", "id", {.name = "a col"});
    const char *const expected = R"({"name":"a col","tbl":"a","on-up":false,"cols-from":["the x"],"cols-to":["the id"]}
{"name":"a key","tbl":"a","on-up":true,"cols-from":[],"cols-to":[]}
{"name":"b col","tbl":"b","on-up":false,"cols-from":["the x"],"cols-to":["the id"]}
{"name":"b key","tbl":"b","on-up":true,"cols-from":[],"cols-to":[]})";
    EXPECT_EQ(referring("p", 1, 0), expected);
}

TEST_F(ListingTest, Failures)
{
    struct failure_case {
        const char *name;
        const char *tbl_a; // what table a holds; table p has column id
        uint64_t code;
        const char *description;
        bool held;
        bool referring;
    };
    const failure_case cases[] = {
        {"a reference to an unknown column", R"("cols":{"c":{"name":"c","fk":{"ref_tbl_id":"p","ref_col_id":"Gone"}}})",
         KT_ERR_NOT_FOUND, "col id 'Gone' not found in tbl id 'p' in schema", true, true},
        {"a reference without a column", R"("cols":{"c":{"name":"c","fk":{"ref_tbl_id":"p"}}})", KT_ERR_NOT_FOUND,
         "the reference of col id 'c' in tbl id 'a' names no column", true, true},
        {"a reference without a table", R"("cols":{"c":{"name":"c","fk":{"ref_col_id":"id"}}})", KT_ERR_NOT_FOUND,
         "the reference of col id 'c' in tbl id 'a' names no table", true, false},
        {"a key without a table", R"("foreignkeys":{"k":{"name":"k","on_delete":"X","on_update":"X","cols":{}}})",
         KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'", true, true},
        {"a key without a delete action",
         R"("foreignkeys":{"k":{"name":"k","ref_tbl_id":"other","on_update":"X","cols":{}}})", KT_ERR_KEY_NOT_FOUND,
         "no key 'on_delete'", true, true},
        {"a key without an update action, wherever it refers to",
         R"("foreignkeys":{"k":{"name":"k","ref_tbl_id":"other","on_delete":"X","cols":{}}})", KT_ERR_KEY_NOT_FOUND,
         "no key 'on_update'", false, true},
        {"a key without a name", R"("foreignkeys":{"k":{"ref_tbl_id":"p","on_delete":"X","on_update":"X","cols":{}}})",
         KT_ERR_KEY_NOT_FOUND, "no key 'name'", true, true},
        {"a key without columns",
         R"("foreignkeys":{"k":{"name":"k","ref_tbl_id":"p","on_delete":"X","on_update":"X"}})", KT_ERR_KEY_NOT_FOUND,
         "no key 'cols'", true, true},
        {"a key of an unknown column",
         R"("foreignkeys":{"k":{"name":"k","ref_tbl_id":"p","on_delete":"X","on_update":"X","cols":{"Q":"id"}}})",
         KT_ERR_NOT_FOUND, "col id 'Q' not found in tbl id 'a' in schema", true, true},
        {"a key to an unknown column",
         R"("cols":{"c":{}},"foreignkeys":{"k":{"name":"k","ref_tbl_id":"p","on_delete":"X","on_update":"X",)"
         R"("cols":{"c":"Q"}}})",
         KT_ERR_NOT_FOUND, "col id 'Q' not found in tbl id 'p' in schema", true, true},
        {"a failure after a record was made",
         R"("cols":{"c":{"name":"c","fk":{"ref_tbl_id":"p","ref_col_id":"id"}}},"foreignkeys":{"k":7})",
         KT_ERR_WRONG_TYPE, "key 'k' is not a map", true, true},
    };
    auto *untouched = reinterpret_cast<KT_varray *>(this);
    for (const failure_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(joined({R"({"tbls":{"p":{"cols":{"id":{"name":"id"}}},"a":{)", c.tbl_a, "}}}"}).c_str());
        KT_varray *records = untouched;
        uint32_t count = 77;
        tov_schema__list_fk_constraints(ctx, schema, "a", nullptr, 0, &records, &count);
        if (c.held) {
            expect_failure(c.code, c.description);
            EXPECT_EQ(records, untouched);
            EXPECT_EQ(count, 77u);
        } else {
            EXPECT_OK(ctx);
            KT_varray__free(ctx, records);
        }
        records = untouched;
        count = 77;
        tov_schema__find_references_to_tbl(ctx, schema, "p", 0, 0, &records, &count);
        if (c.referring) {
            expect_failure(c.code, c.description);
            EXPECT_EQ(records, untouched);
            EXPECT_EQ(count, 77u);
        } else {
            EXPECT_OK(ctx);
            EXPECT_EQ(records, nullptr);
        }
    }
}

TEST_F(ListingTest, UnknownTableFails)
{
    KT_varray *records = nullptr;
    uint32_t count = 77;
    tov_schema__list_fk_constraints(ctx, schema, "Nowhere", nullptr, 0, &records, &count);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'Nowhere' not found in schema");
    EXPECT_EQ(count, 77u);
}

TEST_F(ListingTest, ASkippedTableMayLackActions)
{
    key("k", "a", "p", {}, {.name = "K"});
    EXPECT_EQ(referring("a", 0, 0), "(null)");
    KT_varray *records = nullptr;
    uint32_t count = 77;
    tov_schema__find_references_to_tbl(ctx, schema, "a", 1, 0, &records, &count);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'on_update'");
}

TEST_F(ListingTest, ASkippedTableIsNotGivenColumns)
{
    load(R"({"tbls":{"a":{},"b":{}}})");
    for (int asked = 0; asked < 2; asked++) {
        EXPECT_EQ(referring("a", 0, 0), "(null)");
        EXPECT_EQ(document(), R"({"tbls":{"a":{},"b":{"cols":{}}}})");
    }
    EXPECT_EQ(referring("a", 1, 0), "(null)");
    EXPECT_EQ(document(), R"({"tbls":{"a":{"cols":{}},"b":{"cols":{}}}})");
}

TEST_F(ListingTest, MemoryThatRunsOutIsReported)
{
    tov_schema__set_colcon_defval(ctx, schema, "a", "x", 1, nullptr, "42");
    refer("a", "x", "p", "id", {.on_delete = "SET DEFAULT", .on_update = "CASCADE", .name = "a rather long name"});
    key("k", "a", "p", {{"x", "no"}, {"y", "id"}}, {.on_delete = "CASCADE", .on_update = "CASCADE", .name = "K"});
    KT_varray *records = nullptr;
    uint32_t count = 0;
    const std::string expected_held = held("a", nullptr, 1);
    const std::string expected_referring = referring("p", 0, 1);
    sweep_allocations(ctx, &records,
                      [&] { tov_schema__list_fk_constraints(ctx, schema, "a", nullptr, 1, &records, &count); });
    EXPECT_EQ(take_counted(std::exchange(records, nullptr), count), expected_held);
    sweep_question(&records, [&](tov_schema *asked) {
        tov_schema__find_references_to_tbl(ctx, asked, "p", 0, 1, &records, &count);
    });
    EXPECT_EQ(take_counted(records, count), expected_referring);
}

TEST_F(ListingTest, RecordsAreThoseOfThePlainListings)
{
    int records_seen = 0;
    const auto text = [&](KT_context *c, KT_varray *records) {
        records_seen += records != nullptr;
        return take_records(c, records);
    };
    for (uint32_t seed = 0; seed < 2000 && !HasFailure(); seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random
                 .document({.tbls = 4,
                            .cols = 3,
                            .fk_percent = seed % 50,
                            .keys = seed % 3,
                            .odd_percent = seed % 2 ? 0u : 1 + seed % 4,
                            .actions = seed % 5 != 0})
                 .c_str());
        for (int asked = 0; asked < 8 && !HasFailure(); asked++) {
            const std::string tbl = random.tbl_id();
            const std::string ref = random.tbl_id();
            const char *t = tbl.c_str();
            const char *r = random.chance(50) ? nullptr : ref.c_str();
            const uint32_t filter = random.below(3);
            const KT_bool self = random.chance(50);
            uint32_t count = 77;
            uint32_t expected_count = 77;
            SCOPED_TRACE(joined({tbl, " ", ref, " ", std::to_string(filter), "\n", document()}));
            expect_same<KT_varray>(
                ctx, [&](auto **v) { tov_schema__list_fk_constraints(ctx, schema, t, r, filter, v, &count); },
                [&](auto **v) { plain_list_fk_constraints(ctx, schema, t, r, filter, v, &expected_count); }, text);
            EXPECT_EQ(count, expected_count);
            count = expected_count = 77;
            expect_same<KT_varray>(
                ctx, [&](auto **v) { tov_schema__find_references_to_tbl(ctx, schema, t, self, filter, v, &count); },
                [&](auto **v) { plain_find_references_to_tbl(ctx, schema, t, self, filter, v, &expected_count); },
                text);
            EXPECT_EQ(count, expected_count);
        }
    }
    EXPECT_GT(records_seen, 2000);
}
