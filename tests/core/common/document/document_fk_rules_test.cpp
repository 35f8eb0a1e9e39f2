#include "document_support.hpp"

TEST_F(DocumentTest, RulesAreKeptUnderTheIdsAsTheyStand)
{
    _tov_schema__set_fk_rule(ctx, schema, "TblA", "Fk1", 5, 1);
    _tov_schema__set_fk_rule(ctx, schema, "TblA", "Fk1", 5, INT32_MIN);
    _tov_schema__set_fk_rule(ctx, schema, "TblA", "fk1", 5, INT32_MAX);
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), R"({"fk-rules":{"TblA":{"Fk1":{"violation-on-insert":-2147483648},)"
                                R"("fk1":{"violation-on-insert":2147483647}}}})");
}

TEST_F(DocumentTest, AnUnknownSituationLeavesAnEmptyRule)
{
    for (int32_t situation : {0, 4, 6, -5}) {
        load("{}");
        _tov_schema__set_fk_rule(ctx, schema, "T", "F", situation, 1);
        const std::string description = "Unknown foreign key conflict situation: " + std::to_string(situation);
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, description.c_str());
        expect_module_frame();
        reset();
        EXPECT_EQ(host_internals(), R"({"fk-rules":{"T":{"F":{}}}})");
    }
}

TEST_F(DocumentTest, RulesAreReadBack)
{
    load_trees(one_col, R"({"fk-rules":{"T":{"F":{"violation-on-insert":3}}}})");
    KT_vhash *rules = nullptr;
    tov_schema__get_fk_rules(ctx, schema, "T", &rules);
    EXPECT_OK(ctx);
    EXPECT_EQ(json_of(ctx, rules), R"({"F":{"violation-on-insert":3}})");
}

TEST_F(DocumentTest, AbsentRulesAreNull)
{
    static constexpr const char *hosts[] = {nullptr, "{}", R"({"fk-rules":{}})", R"({"fk-rules":{"T":{}}})"};
    for (const char *host : hosts) {
        SCOPED_TRACE(host ? host : "no host internals");
        load_trees(one_col, host);
        KT_vhash *rules = schema->document;
        tov_schema__get_fk_rules(ctx, schema, "t", &rules);
        EXPECT_OK(ctx);
        EXPECT_EQ(rules, nullptr);
        EXPECT_EQ(host_internals(), host ? host : "null");
    }
}

TEST_F(DocumentTest, RulesOfAnotherTypeFail)
{
    static constexpr failure_case cases[] = {
        {"reading, no map", "{}", R"({"fk-rules":1})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_fk_rules(c, s, "t", &o.map))},
        {"reading, no entry", "{}", R"({"fk-rules":{"t":1}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_fk_rules(c, s, "t", &o.map))},
        {"setting, no rule", "{}", R"({"fk-rules":{"t":{"F":3}}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(_tov_schema__set_fk_rule(c, s, "t", "F", 5, 1))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, RulesSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"setting", "{}", "{}", CALL(_tov_schema__set_fk_rule(c, s, "t", "A key id of some length", 5, 1))},
    };
    expect_survival(cases);
}
