#include "document_support.hpp"

TEST_F(DocumentTest, ForeignKeysAreCreated)
{
    struct create_case {
        const char *name;
        const char *before; // the table's record
        call create;
        const char *after;
        const char *host;
    };
    static constexpr create_case cases[] = {
        {"with everything", "{}",
         CALL(tov_schema__create_foreignkey(c, s, "Fk1", "FK_name", "T", "Other", 256, "CASCADE", "no action", 3)),
         R"({"foreignkeys":{"Fk1":{"cols":{},"name":"FK_name","ref_tbl_id":"Other","deferred":true,)"
         R"("on_delete":"CASCADE","on_update":"no action"}}})",
         R"({"fk-rules":{"T":{"Fk1":{"violation-on-insert":3}}}})"},
        {"with as little as may be", "{}",
         CALL(tov_schema__create_foreignkey(c, s, "Fk1", nullptr, "T", "Other", 0, nullptr, nullptr, 0)),
         R"({"foreignkeys":{"Fk1":{"cols":{},"ref_tbl_id":"Other","deferred":false}}})", "null"},
        {"again: what is given is replaced, the rest stays",
         R"({"foreignkeys":{"Fk1":{"cols":{"a":"b"},"name":"N","ref_tbl_id":"X","deferred":true,"on_delete":"D"}}})",
         CALL(tov_schema__create_foreignkey(c, s, "Fk1", nullptr, "T", "Other", 0, nullptr, "U", 0)),
         R"({"foreignkeys":{"Fk1":{"cols":{"a":"b"},"name":"N","ref_tbl_id":"Other","deferred":false,"on_delete":"D",)"
         R"("on_update":"U"}}})",
         "null"},
        {"ids match exactly", R"({"foreignkeys":{"Fk1":{"cols":{}}}})",
         CALL(tov_schema__create_foreignkey(c, s, "FK1", nullptr, "T", "Other", 0, nullptr, nullptr, 0)),
         R"({"foreignkeys":{"Fk1":{"cols":{}},"FK1":{"cols":{},"ref_tbl_id":"Other","deferred":false}}})", "null"},
    };
    for (const create_case &c : cases) {
        SCOPED_TRACE(c.name);
        load((R"({"tbls":{"t":)" + std::string(c.before) + "}}").c_str());
        outputs o;
        c.create(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), R"({"tbls":{"t":)" + std::string(c.after) + "}}");
        EXPECT_EQ(host_internals(), c.host);
    }
}

TEST_F(DocumentTest, ColumnsAreAddedToForeignKeys)
{
    load(R"({"tbls":{"t":{"foreignkeys":{"F":{"cols":{}}}}}})");
    tov_schema__add_to_foreignkey(ctx, schema, "T", "F", "B", "Y");
    tov_schema__add_to_foreignkey(ctx, schema, "T", "F", "a", "x");
    tov_schema__add_to_foreignkey(ctx, schema, "T", "F", "B", "Z");
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"tbls":{"t":{"foreignkeys":{"F":{"cols":{"B":"Z","a":"x"}}}}}})");
}

TEST_F(DocumentTest, AddingToAKeyThatWasNeverCreatedLeavesItsEmptyRecord)
{
    load(R"({"tbls":{"t":{"foreignkeys":{}}}})");
    tov_schema__add_to_foreignkey(ctx, schema, "t", "F", "a", "x");
    EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
    expect_module_frame();
    reset();
    EXPECT_EQ(document(), R"({"tbls":{"t":{"foreignkeys":{"F":{}}}}})");
}

TEST_F(DocumentTest, ForeignKeysAreDropped)
{
    struct drop_case {
        const char *name;
        const char *tbl_before;
        const char *tbl_after;
        const char *host_before;
        const char *host_after;
    };
    static constexpr drop_case cases[] = {
        {"the key, and its rules in every table", R"({"foreignkeys":{"F":{},"G":{}}})", R"({"foreignkeys":{"G":{}}})",
         R"({"fk-rules":{"T":{"F":{},"G":{}},"B":{"F":{"violation-on-insert":1}},"x":1,"n":null}})",
         R"({"fk-rules":{"T":{"G":{}},"B":{},"x":1,"n":null}})"},
        {"a key that is not there", R"({"foreignkeys":{"f":{}}})", R"({"foreignkeys":{"f":{}}})",
         R"({"fk-rules":{"B":{"F":{}}}})", R"({"fk-rules":{"B":{}}})"},
        {"a key of a table without keys, no rules", "{}", "{}", "{}", "{}"},
        {"a key of a table without keys, no host internals", "{}", "{}", nullptr, "null"},
    };
    for (const drop_case &c : cases) {
        SCOPED_TRACE(c.name);
        load_trees((R"({"tbls":{"t":)" + std::string(c.tbl_before) + "}}").c_str(), c.host_before);
        tov_schema__nevermind_foreignkey(ctx, schema, "T", "F");
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), R"({"tbls":{"t":)" + std::string(c.tbl_after) + "}}");
        EXPECT_EQ(host_internals(), c.host_after);
    }
}

// The id goes with the key, and the rules are still to be found by it.
TEST_F(DocumentTest, ForeignKeysAreDroppedByTheIdsThatTheSchemaHandsOut)
{
    static constexpr char keys[] = R"({"tbls":{"t":{"foreignkeys":{"F1":{},"A key id of some length":{}}}}})";
    static constexpr char rules[] =
        R"({"fk-rules":{"T":{"F1":{},"A key id of some length":{}},"U":{"A key id of some length":{},"F1":{}}}})";
    for (uint32_t first : {0U, 1U}) {
        SCOPED_TRACE(first);
        load_trees(keys, rules);
        const char *fk_id = nullptr;
        for (uint32_t n : {first, 0U}) {
            tov_schema__get_nth_foreignkey_id(ctx, schema, "t", n, &fk_id);
            tov_schema__nevermind_foreignkey(ctx, schema, "t", fk_id);
        }
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), R"({"tbls":{"t":{"foreignkeys":{}}}})");
        EXPECT_EQ(host_internals(), R"({"fk-rules":{"T":{},"U":{}}})");

        load_trees(keys, rules);
        KT_vhash *tbl_rules = nullptr;
        tov_schema__get_fk_rules(ctx, schema, "T", &tbl_rules);
        for (uint32_t n : {first, 0U}) {
            KT_vhash__get_nth_pair(ctx, tbl_rules, n, &fk_id, nullptr);
            tov_schema__nevermind_foreignkey(ctx, schema, "t", fk_id);
        }
        EXPECT_OK(ctx);
        EXPECT_EQ(host_internals(), R"({"fk-rules":{"T":{},"U":{}}})");
    }
}

// Two foreign keys, the second with as little as may be.
static constexpr char two_keys[] =
    R"({"tbls":{"none":{},"t":{"foreignkeys":{"F1":{"cols":{"B":"Y","a":"x"},"name":"N","ref_tbl_id":"Other",)"
    R"("deferred":true,"on_delete":"CASCADE"},"F2":{"ref_tbl_id":"T"}}}}})";

TEST_F(DocumentTest, ForeignKeysAreReadBack)
{
    load(two_keys);
    uint32_t count = 77;
    tov_schema__count_foreignkeys(ctx, schema, "T", &count);
    EXPECT_EQ(count, 2u);
    tov_schema__count_foreignkeys(ctx, schema, "none", &count);
    EXPECT_EQ(count, 0u);
    tov_schema__count_foreignkey_cols(ctx, schema, "T", "F1", &count);
    EXPECT_EQ(count, 2u);
    const char *text = nullptr;
    const char *ref_col_id = nullptr;
    tov_schema__get_nth_foreignkey_id(ctx, schema, "T", 1, &text);
    EXPECT_STREQ(text, "F2");
    tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, "T", "F1", &text);
    EXPECT_STREQ(text, "Other");
    tov_schema__get_foreignkey_name(ctx, schema, "T", "F1", &text);
    EXPECT_STREQ(text, "N");
    tov_schema__get_foreignkey_delete_action(ctx, schema, "T", "F1", &text);
    EXPECT_STREQ(text, "CASCADE");
    tov_schema__get_nth_foreignkey_col_ids(ctx, schema, "T", "F1", 0, &text, &ref_col_id);
    EXPECT_STREQ(text, "B");
    EXPECT_STREQ(ref_col_id, "Y");
    tov_schema__get_nth_foreignkey_col_ids(ctx, schema, "T", "F1", 1, &text, &ref_col_id);
    EXPECT_STREQ(text, "a");
    EXPECT_STREQ(ref_col_id, "x");
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), two_keys);
}

TEST_F(DocumentTest, ForeignKeysFailInUnknownTables)
{
    static constexpr call operations[] = {
        CALL(tov_schema__create_foreignkey(c, s, "F1", nullptr, "X", "u", 0, nullptr, nullptr, 3)),
        CALL(tov_schema__add_to_foreignkey(c, s, "X", "F1", "a", "x")),
        CALL(tov_schema__nevermind_foreignkey(c, s, "X", "F1")),
        CALL(tov_schema__count_foreignkey_cols(c, s, "X", "F1", &o.count)),
        CALL(tov_schema__get_nth_foreignkey_col_ids(c, s, "X", "F1", 0, &o.text, &o.text2)),
        CALL(tov_schema__count_foreignkeys(c, s, "X", &o.count)),
        CALL(tov_schema__get_nth_foreignkey_id(c, s, "X", 0, &o.text)),
        CALL(tov_schema__get_foreignkey_ref_tbl_id(c, s, "X", "F1", &o.text)),
        CALL(tov_schema__get_foreignkey_name(c, s, "X", "F1", &o.text)),
        CALL(tov_schema__get_foreignkey_delete_action(c, s, "X", "F1", &o.text)),
    };
    for (const call run : operations) {
        SCOPED_TRACE(&run - operations);
        const failure_case cases[] = {
            {"unknown table", two_keys, nullptr, KT_ERR_NOT_FOUND, "table id 'X' not found in schema", run}};
        expect_failures(cases);
        EXPECT_EQ(document(), two_keys);
        EXPECT_EQ(host_internals(), "null");
    }
}

TEST_F(DocumentTest, ForeignKeysFailWhereSomethingIsMissing)
{
    static constexpr failure_case cases[] = {
        {"adding in a table without keys", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__add_to_foreignkey(c, s, "none", "F1", "a", "x"))},
        {"adding to a key without columns", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__add_to_foreignkey(c, s, "t", "F2", "a", "x"))},
        {"counting columns in a table without keys", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__count_foreignkey_cols(c, s, "none", "F1", &o.count))},
        {"counting columns of an unknown key", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__count_foreignkey_cols(c, s, "t", "f1", &o.count))},
        {"counting columns of a key without any", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__count_foreignkey_cols(c, s, "t", "F2", &o.count))},
        {"a pair in a table without keys", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_foreignkey_col_ids(c, s, "none", "F1", 0, &o.text, &o.text2))},
        {"a pair of an unknown key", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_foreignkey_col_ids(c, s, "t", "f1", 0, &o.text, &o.text2))},
        {"a pair of a key without any", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_foreignkey_col_ids(c, s, "t", "F2", 0, &o.text, &o.text2))},
        {"a pair beyond the last", two_keys, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_foreignkey_col_ids(c, s, "t", "F1", 2, &o.text, &o.text2))},
        {"an id in a table without keys", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_foreignkey_id(c, s, "none", 0, &o.text))},
        {"an id beyond the last", two_keys, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_foreignkey_id(c, s, "t", 2, &o.text))},
        {"the table that an unknown key refers to", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_foreignkey_ref_tbl_id(c, s, "t", "f1", &o.text))},
        {"the name of an unknown key", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_foreignkey_name(c, s, "t", "f1", &o.text))},
        {"the name of a key without one", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_foreignkey_name(c, s, "t", "F2", &o.text))},
        {"the delete action of a key without one", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_foreignkey_delete_action(c, s, "t", "F2", &o.text))},
        {"the name of a key in a table without keys", two_keys, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_foreignkey_name(c, s, "none", "F1", &o.text))},
        {"the table referred to is a null", R"({"tbls":{"t":{"foreignkeys":{"F":{"ref_tbl_id":null}}}}})", nullptr,
         KT_ERR_WRONG_TYPE, nullptr, CALL(tov_schema__get_foreignkey_ref_tbl_id(c, s, "t", "F", &o.text))},
        {"dropping, rules of another type", two_keys, R"({"fk-rules":1})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__nevermind_foreignkey(c, s, "t", "F1"))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ForeignKeysSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"creating", one_col, nullptr,
         CALL(tov_schema__create_foreignkey(c, s, "A key id of some length", "A name that needs a block of its own",
                                            "t", "A table id of some length", 1, "An action of some length",
                                            "An action of some length", 3))},
        {"adding a pair", R"({"tbls":{"t":{"foreignkeys":{"F":{"cols":{}}}}}})", nullptr,
         CALL(tov_schema__add_to_foreignkey(c, s, "t", "F", "A column id of some length",
                                            "A column id of some length"))},
        {"dropping", two_keys, R"({"fk-rules":{"T":{"F1":{},"G":{}}}})",
         CALL(tov_schema__nevermind_foreignkey(c, s, "t", "F1"))},
    };
    expect_survival(cases);
}
