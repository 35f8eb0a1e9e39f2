#include "fk/fk_index.hpp"

#include "fk_plain.hpp"
#include "fk_test.hpp"

#include <vector>

class IndexTest : public FkTest {
  protected:
    // Whether a question about a table is answered without a walk.
    bool is_known(const char *tbl_id, uint32_t tbl_fields = 0)
    {
        bool known = false;
        fk_walk walk = {.schema = schema, .tbl_fields = tbl_fields, .ref_tbl_id = tbl_id};
        fk_find_in_index(ctx, &walk, &known);
        EXPECT_OK(ctx);
        return known;
    }
    std::string referring(const char *tbl_id)
    {
        KT_nullhash *tbls = nullptr;
        tov_schema__find_tbls_with_references_to(ctx, schema, tbl_id, &tbls);
        EXPECT_OK(ctx);
        return take(ctx, tbls);
    }
    void change_at_random(fk_random *random);
    void compare_with_plain(fk_random *random);
    void compare_order_with_plain();

    int kept_orders = 0; // and given again
};

TEST_F(IndexTest, AnswersWithoutAWalk)
{
    tbls("a>b,c b=a c");
    for (const char *tbl_id : {"a", "b", "c", "nowhere"}) {
        EXPECT_FALSE(is_known(tbl_id)) << "b and c have no columns yet, and a walk would make them";
    }
    EXPECT_EQ(referring("b"), "a");
    for (const char *tbl_id : {"a", "b", "c", "nowhere"})
        EXPECT_TRUE(is_known(tbl_id));
    EXPECT_EQ(referring("a"), "b");
    EXPECT_EQ(referring("c"), "a");
    EXPECT_EQ(referring("A"), "(null)");
}

TEST_F(IndexTest, EveryChangeCounts)
{
    tbls("a b>x x");
    const std::vector<std::pair<const char *, std::function<void()>>> changes = {
        {"a b", [&] { col("a", "c"), refer("a", "c", "x", "id"); }},
        {"b", [&] { refer("a", "c", "b", "id"); }},
        {"b n", [&] { tbl("n"), col("n", "c"), refer("n", "c", "x", "id"); }},
        {"b n a", [&] { key("k", "a", "x", {}); }},
        {"b n", [&] { tov_schema__nevermind_foreignkey(ctx, schema, "a", "k"); }},
        {"n",
         [&] {
             tov_schema__set_colcon_fk(ctx, schema, "b", "c0", 0, "fk", nullptr, "x", nullptr, 0, nullptr, nullptr, 0);
         }},
    };
    EXPECT_EQ(referring("x"), "b");
    for (const auto &[expected, change] : changes) {
        SCOPED_TRACE(expected);
        change();
        EXPECT_EQ(referring("x"), expected);
        EXPECT_EQ(referring("x"), expected) << "asked again";
    }
}

TEST_F(IndexTest, ChangesBesideReferencesKeepIt)
{
    tbls("a>b,c b=a c>b");
    ASSERT_EQ(referring("b"), "a c");
    const tov_fk_index *index = schema->fk_index;
    ASSERT_NE(index, nullptr);
    tov_schema__set_filter_id(ctx, schema, 7);
    tov_schema__set_backend_info__name(ctx, schema, "host");
    tov_schema__set_tbl_name(ctx, schema, "a", "Another");
    tov_schema__set_col_name(ctx, schema, "a", "c0", "Another");
    tov_schema__set_col_type_simple(ctx, schema, "a", "c0", "sint64");
    tov_schema__set_mssql_col_type_name(ctx, schema, "a", "c0", "bigint");
    tov_schema__set_colcon_notnull(ctx, schema, "a", "c0", 1, "NN");
    tov_schema__set_pk_name(ctx, schema, "c", "PK");
    tov_schema__add_to_pk(ctx, schema, "c", "c0");
    tov_schema__add_check_constraint(ctx, schema, "a", "CK", "1");
    EXPECT_OK(ctx);
    EXPECT_EQ(referring("b"), "a c");
    EXPECT_EQ(schema->fk_index, index);
}

TEST_F(IndexTest, QuestionsWalkWhereAKeyIsMalformed)
{
    struct malformed_case {
        const char *name;
        const char *tbl_b;
        bool known;
        bool known_with_actions;
    };
    const malformed_case cases[] = {
        {"nothing", R"({"cols":{}})", true, true},
        {"a table-level key without a table", R"({"cols":{},"foreignkeys":{"k":{}}})", false, false},
        {"a table-level key that is not a map", R"({"cols":{},"foreignkeys":{"k":7}})", false, false},
        {"table-level keys that are no map", R"({"cols":{},"foreignkeys":7})", false, false},
        {"a table-level key without actions", R"({"cols":{},"foreignkeys":{"k":{"ref_tbl_id":"x"}}})", true, false},
        {"a column-level key that names a table by number", R"({"cols":{"c":{"fk":{"ref_tbl_id":7}}}})", false, false},
        {"an action that is not a string", R"({"cols":{"c":{"fk":{"ref_tbl_id":"x","on_update":7}}}})", false, false},
        {"a column-level key that names no table", R"({"cols":{"c":{"fk":{}}}})", true, true},
        {"a column that is not a map", R"({"cols":{"c":null}})", false, false},
        {"a column id that no lookup reaches", R"({"cols":{"C":{}}})", false, false},
        {"a table that is not a map", "7", false, false},
        {"columns that are no map", R"({"cols":7})", false, false},
        {"no columns", "{}", false, false},
    };
    for (const malformed_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(joined({R"({"tbls":{"a":{"cols":{}},"b":)", c.tbl_b, "}}"}).c_str());
        for (int asked = 0; asked < 2; asked++) {
            EXPECT_EQ(is_known("x"), c.known);
            EXPECT_EQ(is_known("x", FK_ON_DELETE | FK_ON_UPDATE), c.known_with_actions);
        }
        EXPECT_EQ(document(), joined({R"({"tbls":{"a":{"cols":{}},"b":)", c.tbl_b, "}}"})) << "nothing is created";
    }
}

TEST_F(IndexTest, MemoryThatRunsOutLeavesTheQuestionToBeAskedAgain)
{
    tbls("a>b,c b=a c>b");
    referring("b");
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        bool known = false;
        fk_walk walk = {.schema = schema, .ref_tbl_id = "b"};
        schema->reference_change_count++;
        fk_find_in_index(ctx, &walk, &known);
        if (!fault.fired())
            break;
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(schema->fk_index, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_OK(ctx);
    EXPECT_EQ(referring("b"), "a c");
}

void IndexTest::change_at_random(fk_random *random)
{
    const std::string tbl = random->tbl_id();
    const std::string col = random->col_id();
    const std::string ref_tbl = random->tbl_id();
    const std::string ref_col = random->col_id();
    const std::string fk_id = joined({"k", std::to_string(random->below(8))});
    const std::string on_delete = random->action();
    const std::string on_update = random->action();
    const char *t = tbl.c_str();
    const char *c = col.c_str();
    const char *action = random->chance(80) ? on_delete.c_str() : nullptr;
    switch (random->below(12)) {
    case 9:
        tov_schema__set_col_type_simple(ctx, schema, t, c, "sint32");
        tov_schema__set_mssql_col_type_name(ctx, schema, t, c, "int");
        break;
    case 10:
        tov_schema__set_colcon_notnull(ctx, schema, t, c, random->chance(50), nullptr);
        tov_schema__set_col_name(ctx, schema, t, c, "renamed");
        break;
    case 11:
        tov_schema__set_filter_id(ctx, schema, 7);
        tov_schema__add_to_pk(ctx, schema, t, c);
        break;
    case 0:
    case 1:
        tov_schema__set_colcon_fk(ctx, schema, t, c, random->chance(70), "fk", nullptr, ref_tbl.c_str(),
                                  random->chance(90) ? ref_col.c_str() : nullptr, 0, action, on_update.c_str(), 0);
        break;
    case 2:
    case 3:
        tov_schema__create_foreignkey(ctx, schema, fk_id.c_str(), "key", t, ref_tbl.c_str(), 0, action,
                                      random->chance(90) ? on_update.c_str() : nullptr, 0);
        break;
    case 4:
        tov_schema__add_to_foreignkey(ctx, schema, t, fk_id.c_str(), c, ref_col.c_str());
        break;
    case 5:
    case 6:
        tov_schema__nevermind_foreignkey(ctx, schema, t, fk_id.c_str());
        break;
    case 7:
        tov_schema__add_col(ctx, schema, t, c, "new", random->chance(80), 0, 0);
        break;
    default:
        tov_schema__add_tbl(ctx, schema, t, "new", 0);
        break;
    }
    reset(); // a change that fails may leave half of itself behind, which counts too
}

void IndexTest::compare_with_plain(fk_random *random)
{
    const auto map_text = [](KT_context *c, KT_vhash *map) { return take(c, map); };
    const auto set_text = [](KT_context *c, KT_nullhash *set) { return take(c, set); };
    const auto records_text = [](KT_context *c, KT_varray *records) { return take_records(c, records); };
    const std::string tbl = random->tbl_id();
    const std::string col = random->col_id();
    const char *t = tbl.c_str();
    const char *c = col.c_str();
    const uint32_t filter = random->below(2);
    const KT_bool self = random->chance(50);
    uint32_t count = 77;
    uint32_t expected_count = 77;
    switch (random->below(5)) {
    case 0:
        expect_same<KT_vhash>(
            ctx, [&](auto **r) { tov_schema__find_singlecol_references_to(ctx, schema, t, nullptr, r); },
            [&](auto **r) { plain_find_singlecol_references_to(ctx, schema, t, nullptr, r); }, map_text);
        break;
    case 1:
        expect_same<KT_vhash>(
            ctx, [&](auto **r) { tov_schema__find_multicol_references_to(ctx, schema, t, r); },
            [&](auto **r) { plain_find_multicol_references_to(ctx, schema, t, r); }, map_text);
        break;
    case 2:
        expect_same<KT_vhash>(
            ctx, [&](auto **r) { tov_schema__find_references_to_col(ctx, schema, t, c, r); },
            [&](auto **r) { plain_find_references_to_col(ctx, schema, t, c, r); }, map_text);
        break;
    case 3:
        expect_same<KT_nullhash>(
            ctx, [&](auto **r) { tov_schema__find_tbls_with_references_to(ctx, schema, t, r); },
            [&](auto **r) { plain_find_tbls_with_references_to(ctx, schema, t, r); }, set_text);
        break;
    default:
        expect_same<KT_varray>(
            ctx, [&](auto **r) { tov_schema__find_references_to_tbl(ctx, schema, t, self, filter, r, &count); },
            [&](auto **r) { plain_find_references_to_tbl(ctx, schema, t, self, filter, r, &expected_count); },
            records_text);
        EXPECT_EQ(count, expected_count);
        break;
    }
}

// Where plain passes end at all.
void IndexTest::compare_order_with_plain()
{
    bool ended = false;
    KT_varray *probe = nullptr;
    plain_sort_by_references(ctx, schema, 100, &ended, &probe);
    const bool has_answer = ended || KT_context__has_err(ctx);
    reset();
    KT_varray__free(ctx, probe);
    if (!has_answer)
        return;
    const auto *before = schema->fk_order;
    expect_same<KT_varray>(
        ctx, [&](auto **r) { tov_schema__sort_by_references(ctx, schema, r); },
        [&](auto **r) { plain_sort_by_references(ctx, schema, 100, &ended, r); },
        [](KT_context *c, KT_varray *list) { return take(c, list); });
    kept_orders += before && before == schema->fk_order;
}

TEST_F(IndexTest, AnswersAreThePlainOnesThroughChanges)
{
    int known = 0;
    int walked = 0;
    for (uint32_t seed = 0; seed < 600 && !HasFailure(); seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random
                 .document({.tbls = 5,
                            .cols = 3,
                            .fk_percent = 20 + seed % 50,
                            .keys = seed % 4,
                            .odd_percent = seed % 4 ? 0u : 1u,
                            .actions = seed % 3 != 0})
                 .c_str());
        for (int step = 0; step < 20 && !HasFailure(); step++) {
            SCOPED_TRACE(document());
            for (uint32_t asked = random.below(5); asked > 0; asked--)
                compare_with_plain(&random);
            compare_order_with_plain();
            (schema->fk_index && is_known("t0") ? known : walked)++;
            change_at_random(&random);
        }
    }
    EXPECT_GT(kept_orders, 100);
    EXPECT_GT(known, 2000);
    EXPECT_GT(walked, 2000);
}

// What a question creates on its way is part of the document, whether it walks or not.
TEST_F(IndexTest, QuestionsCreateWhatThePlainOnesCreate)
{
    for (uint32_t seed = 0; seed < 600 && !HasFailure(); seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        const std::string json =
            random.document({.tbls = 5, .cols = 2, .keys = seed % 3, .odd_percent = 5 + seed % 20});
        tov_schema *plain = nullptr;
        load(json.c_str());
        tov_schema__from_json(ctx, json.c_str(), &plain);
        for (int asked = 0; asked < 4; asked++) {
            const std::string tbl = random.tbl_id();
            const bool multi = random.chance(70);
            KT_vhash *found = nullptr;
            for (tov_schema *s : {schema, plain}) {
                if (multi && s == plain)
                    plain_find_multicol_references_to(ctx, s, tbl.c_str(), &found);
                else if (multi)
                    tov_schema__find_multicol_references_to(ctx, s, tbl.c_str(), &found);
                else if (s == plain)
                    plain_find_singlecol_references_to(ctx, s, tbl.c_str(), nullptr, &found);
                else
                    tov_schema__find_singlecol_references_to(ctx, s, tbl.c_str(), nullptr, &found);
                KT_vhash__free(ctx, std::exchange(found, nullptr));
                reset();
            }
            KT_string *text = nullptr;
            tov_schema__to_json(ctx, plain, &text);
            EXPECT_EQ(document(), take(ctx, text));
        }
        tov_schema__nullfree(ctx, &plain);
    }
}
