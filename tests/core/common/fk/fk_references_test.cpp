#include "fk_plain.hpp"
#include "fk_test.hpp"

class ReferencesTest : public FkTest {
  protected:
    // Tables p and q with column id; a and b with columns x, y, z.
    void SetUp() override
    {
        FkTest::SetUp();
        for (const char *tbl_id : {"p", "q"}) {
            tbl(tbl_id);
            col(tbl_id, "id");
        }
        for (const char *tbl_id : {"a", "b"}) {
            tbl(tbl_id);
            for (const char *col_id : {"x", "y", "z"})
                col(tbl_id, col_id);
        }
    }
    std::string single(const char *tbl_id, const char *col_id)
    {
        KT_vhash *found = nullptr;
        tov_schema__find_singlecol_references_to(ctx, schema, tbl_id, col_id, &found);
        EXPECT_OK(ctx);
        return take(ctx, found);
    }
    std::string multi(const char *tbl_id)
    {
        KT_vhash *found = nullptr;
        tov_schema__find_multicol_references_to(ctx, schema, tbl_id, &found);
        EXPECT_OK(ctx);
        return take(ctx, found);
    }
    std::string to_col(const char *tbl_id, const char *col_id)
    {
        KT_vhash *found = nullptr;
        tov_schema__find_references_to_col(ctx, schema, tbl_id, col_id, &found);
        EXPECT_OK(ctx);
        return take(ctx, found);
    }
    bool has_delete_action(const char *tbl_id)
    {
        KT_bool has = -1;
        tov_schema__does_tbl_have_fk_constraint_with_delete_action(ctx, schema, tbl_id, &has);
        EXPECT_OK(ctx);
        EXPECT_TRUE(has == 0 || has == 1);
        return has != 0;
    }
    std::string referring(const char *tbl_id)
    {
        KT_nullhash *found = nullptr;
        tov_schema__find_tbls_with_references_to(ctx, schema, tbl_id, &found);
        EXPECT_OK(ctx);
        return take(ctx, found);
    }
    std::string referenced_by(const char *tbl_id)
    {
        KT_nullhash *found = nullptr;
        tov_schema__list_tbls_referenced_by(ctx, schema, tbl_id, &found);
        EXPECT_OK(ctx);
        return take(ctx, found);
    }
};

TEST_F(ReferencesTest, NobodyRefers)
{
    for (const char *tbl_id : {"p", "nowhere"}) {
        SCOPED_TRACE(tbl_id);
        // Written also where something else stood before.
        auto *map = reinterpret_cast<KT_vhash *>(this);
        auto *set = reinterpret_cast<KT_nullhash *>(this);
        tov_schema__find_singlecol_references_to(ctx, schema, tbl_id, nullptr, &map);
        EXPECT_EQ(map, nullptr);
        tov_schema__find_tbls_with_references_to(ctx, schema, tbl_id, &set);
        EXPECT_EQ(set, nullptr);
        EXPECT_EQ(single(tbl_id, "id"), "null");
        EXPECT_EQ(multi(tbl_id), "null");
        EXPECT_EQ(to_col(tbl_id, "id"), "null");
    }
    EXPECT_EQ(referenced_by("a"), "(null)");
    EXPECT_FALSE(has_delete_action("a"));
}

TEST_F(ReferencesTest, SinglecolReferences)
{
    refer("b", "y", "p", "id");
    refer("b", "x", "p", "other");
    refer("b", "z", "q", "id");
    refer("a", "x", "p", nullptr);
    refer("p", "id", "p", "id");
    EXPECT_EQ(single("p", nullptr), R"({"p":{"id":"id"},"a":{"x":null},"b":{"x":"other","y":"id"}})");
    EXPECT_EQ(single("p", "id"), R"({"p":{"id":"id"},"b":{"y":"id"}})");
    EXPECT_EQ(single("p", "nothing"), "null");
    EXPECT_EQ(single("P", nullptr), "null") << "compared exactly";
    EXPECT_EQ(single("p", "ID"), "null") << "compared exactly";
}

TEST_F(ReferencesTest, MulticolReferences)
{
    key("k2", "b", "p", {{"y", "u"}, {"x", "v"}});
    key("k1", "b", "q", {{"z", "id"}});
    key("k3", "a", "p", {});
    key("k0", "p", "p", {{"id", "id"}});
    EXPECT_EQ(multi("p"), R"({"k0":{"tbl":"p","cols":{"id":"id"}},"k3":{"tbl":"a","cols":{}},)"
                          R"("k2":{"tbl":"b","cols":{"y":"u","x":"v"}}})");
    EXPECT_EQ(multi("P"), "null") << "compared exactly";
}

TEST_F(ReferencesTest, ReferencesToAColumnAreOfBothKinds)
{
    refer("b", "x", "p", "id");
    EXPECT_EQ(to_col("p", "id"), R"({"b":{"x":"id"}})");
    key("k1", "a", "p", {{"x", "other"}, {"y", "id"}, {"z", "id"}});
    key("k2", "b", "p", {{"z", "id"}});
    EXPECT_EQ(to_col("p", "id"), R"({"b":{"x":"id","z":"id"},"a":{"y":"id"}})")
        << "column-level keys first, and of a key only the first column";
    EXPECT_EQ(to_col("p", "unused"), "{}") << "a table-level key refers to the table";
    EXPECT_EQ(to_col("q", "unused"), "null");
}

TEST_F(ReferencesTest, ReferencesToAColumnFailWhereOneRefersTwice)
{
    refer("b", "x", "p", "id");
    key("k1", "b", "p", {{"x", "id"}});
    auto *untouched = reinterpret_cast<KT_vhash *>(this);
    KT_vhash *found = untouched;
    tov_schema__find_references_to_col(ctx, schema, "p", "id", &found);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'x' is already there");
    EXPECT_EQ(found, untouched);
    EXPECT_EQ(referring("p"), "b") << "which is nothing to this question";
}

TEST_F(ReferencesTest, KeysOfOneIdInTwoTablesFail)
{
    key("k", "a", "p", {});
    key("k", "b", "q", {});
    EXPECT_EQ(multi("p"), R"({"k":{"tbl":"a","cols":{}}})") << "keys that refer to another table don't count";
    key("k", "b", "p", {});
    auto *untouched = reinterpret_cast<KT_vhash *>(this);
    auto *untouched_set = reinterpret_cast<KT_nullhash *>(this);
    KT_vhash *found = untouched;
    KT_nullhash *set = untouched_set;
    tov_schema__find_multicol_references_to(ctx, schema, "p", &found);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'k' is already there");
    tov_schema__find_references_to_col(ctx, schema, "p", "id", &found);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'k' is already there");
    tov_schema__find_tbls_with_references_to(ctx, schema, "p", &set);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'k' is already there");
    EXPECT_EQ(found, untouched);
    EXPECT_EQ(set, untouched_set);
}

TEST_F(ReferencesTest, DeleteActions)
{
    refer("a", "x", "p", "id", {.on_delete = "No Action"});
    refer("a", "y", "p", "id", {.on_update = "CASCADE"});
    EXPECT_FALSE(has_delete_action("a"));
    key("k", "a", "p", {}, {.on_delete = "no action", .on_update = "CASCADE"});
    EXPECT_FALSE(has_delete_action("a"));
    refer("a", "z", "p", "id", {.on_delete = "CASCADE"});
    EXPECT_TRUE(has_delete_action("a"));
    EXPECT_TRUE(has_delete_action("A"));
    key("k", "b", "p", {}, {.on_delete = "SET NULL"});
    EXPECT_TRUE(has_delete_action("b"));
    EXPECT_FALSE(has_delete_action("p")) << "the keys that it holds, not those that refer to it";
}

TEST_F(ReferencesTest, DeleteActionsOfKeysThatLackThem)
{
    KT_bool has = 7;
    key("k", "a", "p", {}, {.on_update = "CASCADE"});
    tov_schema__does_tbl_have_fk_constraint_with_delete_action(ctx, schema, "a", &has);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'on_delete'");
    load(R"({"tbls":{"a":{"foreignkeys":{"k":{"on_delete":"CASCADE"}}}}})");
    tov_schema__does_tbl_have_fk_constraint_with_delete_action(ctx, schema, "a", &has);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'");
    EXPECT_EQ(has, 7);
    load(R"({"tbls":{"a":{"cols":{"c":{"fk":{"on_delete":"CASCADE"}}},"foreignkeys":{"k":{}}}}})");
    EXPECT_TRUE(has_delete_action("a")) << "a column-level key answers before that";
}

TEST_F(ReferencesTest, TblsWithReferences)
{
    key("k1", "a", "p", {{"x", "id"}});
    refer("b", "x", "p", "id");
    refer("b", "y", "p", "id");
    refer("p", "id", "p", "id");
    key("k2", "b", "p", {});
    EXPECT_EQ(referring("p"), "p b a") << "column-level keys first, each table once, itself included";
    key("k3", "a", "q", {});
    EXPECT_EQ(referring("q"), "a");
}

TEST_F(ReferencesTest, TblsReferencedBy)
{
    key("k1", "a", "q", {});
    key("k2", "a", "a", {});
    key("k3", "a", "P", {});
    refer("a", "y", "p", "id");
    refer("a", "x", "p", "id");
    refer("a", "z", "a", "x");
    EXPECT_EQ(referenced_by("a"), "p q P") << "itself left out, ids as the keys hold them";
    EXPECT_EQ(referenced_by("A"), "p a q P") << "the id given is the one compared";
}

TEST_F(ReferencesTest, UnknownTblsFailWhereTheirKeysAreRead)
{
    KT_bool has = 7;
    auto *untouched = reinterpret_cast<KT_nullhash *>(this);
    KT_nullhash *tbls = untouched;
    tov_schema__does_tbl_have_fk_constraint_with_delete_action(ctx, schema, "Nowhere", &has);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'Nowhere' not found in schema");
    tov_schema__list_tbls_referenced_by(ctx, schema, "Nowhere", &tbls);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'Nowhere' not found in schema");
    EXPECT_EQ(has, 7);
    EXPECT_EQ(tbls, untouched);
}

TEST_F(ReferencesTest, KeysThatNameNoTbl)
{
    load(R"({"tbls":{"a":{"cols":{"c":{"fk":{}}}}}})");
    EXPECT_EQ(single("p", nullptr), "null") << "it refers to no table that is asked for";
    KT_nullhash *tbls = nullptr;
    tov_schema__list_tbls_referenced_by(ctx, schema, "a", &tbls);
    expect_failure(KT_ERR_NOT_FOUND, "the reference of col id 'c' in tbl id 'a' names no table");
    load(R"({"tbls":{"a":{"foreignkeys":{"k":{"cols":{}}}}}})");
    EXPECT_EQ(single("p", nullptr), "null") << "which does not look at table-level keys";
    KT_vhash *found = nullptr;
    tov_schema__find_multicol_references_to(ctx, schema, "p", &found);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'");
    tov_schema__find_tbls_with_references_to(ctx, schema, "p", &tbls);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'");
}

TEST_F(ReferencesTest, WhatAQuestionCreates)
{
    load(R"({"tbls":{"a":{}}})");
    multi("p");
    EXPECT_EQ(document(), R"({"tbls":{"a":{}}})") << "columns are not looked at";
    single("p", nullptr);
    EXPECT_EQ(document(), R"({"tbls":{"a":{"cols":{}}}})");
    load("{}");
    EXPECT_EQ(referring("p"), "(null)");
    EXPECT_EQ(document(), R"({"tbls":{}})");
}

TEST_F(ReferencesTest, MemoryThatRunsOutIsReported)
{
    refer("b", "x", "p", "id");
    key("k1", "a", "p", {{"x", "other"}, {"y", "id"}});
    KT_vhash *map = nullptr;
    KT_nullhash *set = nullptr;
    sweep_question(
        &map, [&](tov_schema *asked) { tov_schema__find_singlecol_references_to(ctx, asked, "p", nullptr, &map); });
    EXPECT_EQ(take(ctx, std::exchange(map, nullptr)), R"({"b":{"x":"id"}})");
    sweep_question(&map, [&](tov_schema *asked) { tov_schema__find_multicol_references_to(ctx, asked, "p", &map); });
    EXPECT_EQ(take(ctx, std::exchange(map, nullptr)), R"({"k1":{"tbl":"a","cols":{"x":"other","y":"id"}}})");
    sweep_question(&map, [&](tov_schema *asked) { tov_schema__find_references_to_col(ctx, asked, "p", "id", &map); });
    EXPECT_EQ(take(ctx, map), R"({"b":{"x":"id"},"a":{"y":"id"}})");
    sweep_question(&set, [&](tov_schema *asked) { tov_schema__find_tbls_with_references_to(ctx, asked, "p", &set); });
    EXPECT_EQ(take(ctx, std::exchange(set, nullptr)), "b a");
    sweep_allocations(ctx, &set, [&] { tov_schema__list_tbls_referenced_by(ctx, schema, "b", &set); });
    EXPECT_EQ(take(ctx, set), "p");
}

TEST_F(ReferencesTest, AnswersAreThoseOfThePlainLookups)
{
    const auto map_text = [](KT_context *c, KT_vhash *map) { return take(c, map); };
    const auto set_text = [](KT_context *c, KT_nullhash *set) { return take(c, set); };
    for (uint32_t seed = 0; seed < 1500 && !HasFailure(); seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random
                 .document({.tbls = 5,
                            .cols = 3,
                            .fk_percent = seed % 100,
                            .keys = seed % 4,
                            .odd_percent = seed % 2 ? 0u : 1 + seed % 5,
                            .actions = seed % 3 != 0})
                 .c_str());
        for (int asked = 0; asked < 6 && !HasFailure(); asked++) {
            const std::string tbl = random.tbl_id();
            const std::string col = random.col_id();
            const char *t = tbl.c_str();
            const char *c = random.chance(30) ? nullptr : col.c_str();
            SCOPED_TRACE(joined({tbl, ".", col, "\n", document()}));
            expect_same<KT_vhash>(
                ctx, [&](auto **r) { tov_schema__find_singlecol_references_to(ctx, schema, t, c, r); },
                [&](auto **r) { plain_find_singlecol_references_to(ctx, schema, t, c, r); }, map_text);
            expect_same<KT_vhash>(
                ctx, [&](auto **r) { tov_schema__find_multicol_references_to(ctx, schema, t, r); },
                [&](auto **r) { plain_find_multicol_references_to(ctx, schema, t, r); }, map_text);
            expect_same<KT_vhash>(
                ctx, [&](auto **r) { tov_schema__find_references_to_col(ctx, schema, t, col.c_str(), r); },
                [&](auto **r) { plain_find_references_to_col(ctx, schema, t, col.c_str(), r); }, map_text);
            expect_same<KT_nullhash>(
                ctx, [&](auto **r) { tov_schema__find_tbls_with_references_to(ctx, schema, t, r); },
                [&](auto **r) { plain_find_tbls_with_references_to(ctx, schema, t, r); }, set_text);
            expect_same<KT_nullhash>(
                ctx, [&](auto **r) { tov_schema__list_tbls_referenced_by(ctx, schema, t, r); },
                [&](auto **r) { plain_list_tbls_referenced_by(ctx, schema, t, r); }, set_text);
            KT_bool expected = 7;
            KT_bool has = 7;
            plain_does_tbl_have_fk_constraint_with_delete_action(ctx, schema, t, &expected);
            const uint64_t code = KT_context__err_code(ctx);
            reset();
            tov_schema__does_tbl_have_fk_constraint_with_delete_action(ctx, schema, t, &has);
            EXPECT_EQ(KT_context__err_code(ctx), code);
            EXPECT_EQ(has, expected);
            reset();
        }
    }
}
