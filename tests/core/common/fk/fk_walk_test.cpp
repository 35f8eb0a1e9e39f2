#include "fk/fk_walk.hpp"

#include "fk_test.hpp"

class WalkTest : public FkTest {
  protected:
    // The keys that a walk meets: "table.column" or "table/key", one blank between.
    std::string keys(fk_walk *walk)
    {
        std::string text;
        for (fk_key key;;) {
            fk_next(ctx, walk, &key);
            if (KT_context__has_err(ctx) || !key.tbl_id)
                return text;
            EXPECT_NE(key.col_id == nullptr, key.fk_id == nullptr);
            text += joined(
                {text.empty() ? "" : " ", key.tbl_id, key.col_id ? "." : "/", key.col_id ? key.col_id : key.fk_id});
        }
    }
    std::string all_keys(fk_walk walk)
    {
        fk_walk_schema(ctx, &walk);
        return keys(&walk);
    }
};

TEST_F(WalkTest, MeetsKeysInSchemaOrder)
{
    tbls("b>a,x a c=a,b");
    key("k", "b", "a", {});
    EXPECT_EQ(all_keys({.schema = schema}), "b.c0 b.c1 b/k c/k2 c/k3");
    EXPECT_EQ(all_keys({.schema = schema, .col_level = false}), "b/k c/k2 c/k3");
    EXPECT_EQ(all_keys({.schema = schema, .tbl_level = false}), "b.c0 b.c1");
    EXPECT_EQ(all_keys({.schema = schema, .col_fields = FK_REF_TBL_ID, .ref_tbl_id = "a"}), "b.c0 b/k c/k2");
    EXPECT_EQ(all_keys({.schema = schema, .skipped_tbl_id = "b"}), "c/k2 c/k3");
}

TEST_F(WalkTest, StaysWithOneTable)
{
    tbls("b>a a=b c=a,b");
    fk_walk walk = {.schema = schema};
    fk_walk_tbl(ctx, &walk, "C");
    EXPECT_EQ(keys(&walk), "C/k2 C/k3") << "under the id given";
    fk_walk unknown = {.schema = schema};
    fk_walk_tbl(ctx, &unknown, "D");
    expect_failure(KT_ERR_NOT_FOUND, "table id 'D' not found in schema");
}

TEST_F(WalkTest, ReadsWhatItIsAskedForAndNothingElse)
{
    load(R"({"tbls":{"a":{"cols":{"c":{"fk":{"name":"n","ref_tbl_id":"t","ref_col_id":"r","on_delete":"d",)"
         R"("on_update":"u"}}}}}})");
    struct field_case {
        uint32_t field;
        const char *fk_key::*member;
        const char *expected;
    };
    const field_case cases[] = {{FK_NAME, &fk_key::name, "n"},
                                {FK_REF_TBL_ID, &fk_key::ref_tbl_id, "t"},
                                {FK_REF_COL_ID, &fk_key::ref_col_id, "r"},
                                {FK_ON_DELETE, &fk_key::on_delete, "d"},
                                {FK_ON_UPDATE, &fk_key::on_update, "u"}};
    for (const field_case &read : cases) {
        fk_walk walk = {.schema = schema, .col_fields = read.field};
        fk_key key;
        fk_walk_schema(ctx, &walk);
        fk_next(ctx, &walk, &key);
        EXPECT_OK(ctx);
        for (const field_case &c : cases)
            EXPECT_STREQ(key.*c.member, c.field == read.field ? c.expected : nullptr);
    }
}

TEST_F(WalkTest, ColumnsAreReadBeforeTableLevelKeys)
{
    load(R"({"tbls":{"a":{"cols":{"c":{"fk":7}},"foreignkeys":7}}})");
    all_keys({.schema = schema});
    expect_failure(KT_ERR_WRONG_TYPE, "key 'fk' is not a map");
    all_keys({.schema = schema, .col_level = false});
    expect_failure(KT_ERR_WRONG_TYPE, "key 'foreignkeys' is not a map");
}

TEST_F(WalkTest, TableLevelKeysMustHaveWhatIsRead)
{
    struct missing_case {
        const char *key;
        uint32_t fields;
        const char *description;
    };
    const missing_case cases[] = {
        {R"({"on_delete":"d","on_update":"u"})", 0, "no key 'ref_tbl_id'"},
        {R"({"ref_tbl_id":"t"})", FK_ON_DELETE, "no key 'on_delete'"},
        {R"({"ref_tbl_id":"t"})", FK_ON_UPDATE, "no key 'on_update'"},
        {R"({"ref_tbl_id":"t"})", FK_ON_UPDATE | FK_ON_DELETE, "no key 'on_update'"},
    };
    for (const missing_case &c : cases) {
        load(joined({R"({"tbls":{"a":{"foreignkeys":{"k":)", c.key, "}}}}"}).c_str());
        all_keys({.schema = schema, .tbl_fields = c.fields, .ref_tbl_id = "another"});
        expect_failure(KT_ERR_KEY_NOT_FOUND, c.description);
    }
}

TEST_F(WalkTest, ActionsThatAreNone)
{
    for (const char *none : {"NO ACTION", "no action", "No Action"})
        EXPECT_FALSE(tov_is_fk_action(none)) << none;
    EXPECT_FALSE(tov_is_fk_action(nullptr));
    for (const char *action : {"CASCADE", "", "NO ACTION ", "NO  ACTION", "RESTRICT"})
        EXPECT_TRUE(tov_is_fk_action(action)) << action;
}
