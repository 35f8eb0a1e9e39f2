#include "document_support.hpp"

#include <cmath>

TEST_F(DocumentTest, ANewSchemaHoldsItsCompatLevel)
{
    for (uint32_t level : {0u, 5u, 4294967295u}) {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__new(ctx, level, &schema);
        ASSERT_OK(ctx);
        EXPECT_EQ(document(), R"({"compat_level":)" + std::to_string(level) + "}");
        EXPECT_EQ(host_internals(), "null");
    }
}

TEST_F(DocumentTest, AnyTableOperationLeavesTblsBehind)
{
    uint32_t count = 77;
    tov_schema__count_tbls(ctx, schema, &count);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(document(), R"({"compat_level":1,"tbls":{}})");
}

TEST_F(DocumentTest, JsonGoesThereAndBackUnchanged)
{
    static constexpr const char *documents[] = {
        "{}",
        one_col,
        R"({"tbls":{"t":{"unknown":[1,null,{"x":true}],"name":"T"}},"compat_level":-9223372036854775808})",
    };
    for (const char *json : documents) {
        load(json);
        EXPECT_EQ(document(), json);
    }
}

TEST_F(DocumentTest, AParsedSchemaHasNoHostInternals)
{
    load(one_col);
    EXPECT_EQ(host_internals(), "null");
    int64_t dump_txid = 77;
    tov_schema__get_col_dump_txid(ctx, schema, "t", "c", &dump_txid);
    EXPECT_EQ(dump_txid, 0);
    const char *collation = nullptr;
    tov_schema__get_host_collation(ctx, schema, "t", "c", &collation);
    EXPECT_EQ(collation, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, HostInternalsDoNotTravelAsJson)
{
    load_trees(one_col, R"({"defvals":{"t":{"c":"1"}}})");
    EXPECT_EQ(document(), one_col);
}

TEST_F(DocumentTest, BadJsonGivesNoSchema)
{
    for (const char *json : {"", "[]", "{", "{}x", "null"}) {
        SCOPED_TRACE(json);
        tov_schema *parsed = nullptr;
        tov_schema__from_json(ctx, json, &parsed);
        EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
        expect_module_frame();
        EXPECT_EQ(parsed, nullptr);
        reset();
    }
}

TEST_F(DocumentTest, ASchemaTakesTwoTreesOver)
{
    for (bool with_host : {true, false}) {
        KT_vhash *document_tree = nullptr;
        KT_vhash *host_tree = nullptr;
        KT_vhash__alloc(ctx, &document_tree);
        if (with_host)
            KT_vhash__alloc(ctx, &host_tree);
        tov_schema *made = nullptr;
        tov_schema__alloc__vhash(ctx, &document_tree, &host_tree, &made);
        ASSERT_OK(ctx);
        EXPECT_EQ(document_tree, nullptr);
        EXPECT_EQ(host_tree, nullptr);
        EXPECT_EQ(made->host_internals != nullptr, with_host);
        tov_schema__nullfree(ctx, &made);
    }
}

TEST_F(DocumentTest, CopiesGoIntoADestination)
{
    struct copy_case {
        const char *name;
        const char *host;
        KT_bool include;
        const char *before;
        const char *after;
    };
    static constexpr copy_case cases[] = {
        {"only the document", R"({"h":1})", 0, "{}", R"({"schema":{"d":1}})"},
        {"both", R"({"h":1})", 1, "{}", R"({"schema":{"d":1},"host_internals":{"h":1}})"},
        {"any flag but zero means both", R"({"h":1})", 256, "{}", R"({"schema":{"d":1},"host_internals":{"h":1}})"},
        {"no host internals to copy", nullptr, 1, "{}", R"({"schema":{"d":1}})"},
        {"an old schema is removed first", nullptr, 0, R"({"schema":2,"x":3})", R"({"x":3,"schema":{"d":1}})"},
        {"old host internals stay", R"({"h":1})", 0, R"({"host_internals":2})",
         R"({"host_internals":2,"schema":{"d":1}})"},
        {"old host internals are replaced", R"({"h":1})", 1, R"({"host_internals":2})",
         R"({"schema":{"d":1},"host_internals":{"h":1}})"},
        {"old host internals are removed even when there are none to copy", nullptr, 1, R"({"host_internals":2})",
         R"({"schema":{"d":1}})"},
    };
    for (const copy_case &c : cases) {
        SCOPED_TRACE(c.name);
        load_trees(R"({"d":1})", c.host);
        KT_vhash *destination = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &destination, c.before);
        tov_schema__copy_into_vhash(ctx, schema, destination, c.include);
        EXPECT_OK(ctx);
        EXPECT_EQ(json_of(ctx, destination), c.after);
        KT_vhash__free(ctx, destination);
    }
}

TEST_F(DocumentTest, ACopyStandsOnItsOwn)
{
    load_trees(one_col, R"({"collations":{"t":{"c":"x"}}})");
    KT_vhash *destination = nullptr;
    KT_vhash__alloc(ctx, &destination);
    tov_schema__copy_into_vhash(ctx, schema, destination, 1);
    tov_schema__set_tbl_name(ctx, schema, "t", "changed");
    tov_schema__set_host_collation(ctx, schema, "t", "c", "changed");
    EXPECT_EQ(json_of(ctx, destination),
              std::string(R"({"schema":)") + one_col + R"(,"host_internals":{"collations":{"t":{"c":"x"}}}})");
    KT_vhash__free(ctx, destination);
}

TEST_F(DocumentTest, ACopyBecomesASchemaAgain)
{
    load_trees(one_col, R"({"collations":{"t":{"c":"x"}}})");
    KT_vhash *both = nullptr;
    KT_vhash__alloc(ctx, &both);
    tov_schema__copy_into_vhash(ctx, schema, both, 1);
    KT_vhash *children[2] = {};
    KT_vhash__get__vhash(ctx, both, "schema", &children[0]);
    KT_vhash__get__vhash(ctx, both, "host_internals", &children[1]);
    KT_vhash *trees[2] = {};
    KT_vhash__alloc__copy(ctx, &trees[0], children[0]);
    KT_vhash__alloc__copy(ctx, &trees[1], children[1]);
    KT_vhash__free(ctx, both);
    tov_schema *again = nullptr;
    tov_schema__alloc__vhash(ctx, &trees[0], &trees[1], &again);
    ASSERT_OK(ctx);
    EXPECT_EQ(json_of(ctx, again->document), one_col);
    EXPECT_EQ(json_of(ctx, again->host_internals), R"({"collations":{"t":{"c":"x"}}})");
    tov_schema__nullfree(ctx, &again);
}

TEST_F(DocumentTest, ATreeThatBelongsToAnotherOneIsRefused)
{
    KT_vhash *both = nullptr;
    KT_vhash *child = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &both, R"({"schema":{"d":1}})");
    KT_vhash__get__vhash(ctx, both, "schema", &child);
    ASSERT_OK(ctx);
    struct refused_case {
        const char *name;
        KT_vhash *trees[2];
        uint64_t code;
        const char *description;
    };
    const refused_case cases[] = {
        {"a child as document",
         {child, nullptr},
         KT_ERR_BORROWED,
         "the map given as document belongs to another map; give a copy of it (KT_vhash__alloc__copy)"},
        {"a child as host internals",
         {both, child},
         KT_ERR_BORROWED,
         "the map given as host_internals belongs to another map; give a copy of it (KT_vhash__alloc__copy)"},
        {"one map as both", {both, both}, KT_ERR_BORROWED, "one map is given as document and as host_internals"},
        {"no document", {nullptr, both}, KT_ERR_NULL_ARGUMENT, "document is null"},
    };
    for (const refused_case &c : cases) {
        SCOPED_TRACE(c.name);
        KT_vhash *trees[] = {c.trees[0], c.trees[1]};
        tov_schema *made = nullptr;
        tov_schema__alloc__vhash(ctx, &trees[0], &trees[1], &made);
        EXPECT_ERROR(ctx, c.code, c.description);
        expect_module_frame();
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(trees[0], c.trees[0]) << "still the caller's";
        EXPECT_EQ(trees[1], c.trees[1]) << "still the caller's";
        reset();
    }
    EXPECT_EQ(json_of(ctx, both), R"({"schema":{"d":1}})");
    KT_vhash__free(ctx, both);
}

TEST_F(DocumentTest, FreeingSetsThePointerToNull)
{
    tov_schema__nullfree(ctx, &schema);
    EXPECT_EQ(schema, nullptr);
    tov_schema__nullfree(ctx, &schema);
    EXPECT_EQ(schema, nullptr);
    tov_schema__nullfree(ctx, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, FreeingLeavesAnErrorAsItIs)
{
    KT_context__err(ctx, KT_ERR_NOT_FOUND, "file", 1, "first error");
    tov_schema__nullfree(ctx, &schema);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "first error");
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 1u);
    reset();
}

// Calls with each allocation failing in turn, as DocumentTest::expect_survival() does, but makes a schema.
template <class Make> static void expect_making_survives(KT_context *ctx, Make make)
{
    int turns = 0;
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx), turns++) {
        tov_schema *made = nullptr;
        make(&made);
        // A block that could not be made smaller is not a failure.
        if (KT_context__has_err(ctx)) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(made, nullptr);
        } else {
            EXPECT_NE(made, nullptr);
            tov_schema__nullfree(ctx, &made);
        }
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired())
            break;
    }
    EXPECT_GT(turns, 1);
}

TEST_F(DocumentTest, MakingASchemaSurvivesShortMemory)
{
    expect_making_survives(ctx, [&](tov_schema **made) { tov_schema__new(ctx, 5, made); });
    expect_making_survives(ctx, [&](tov_schema **made) { tov_schema__from_json(ctx, one_col, made); });
}

TEST_F(DocumentTest, TreesStayTheCallersWhenNoSchemaIsMade)
{
    KT_vhash *document_tree = nullptr;
    KT_vhash *host_tree = nullptr;
    KT_vhash__alloc(ctx, &document_tree);
    KT_vhash__alloc(ctx, &host_tree);
    const KT_vhash *const given[] = {document_tree, host_tree};
    expect_making_survives(ctx, [&](tov_schema **made) {
        EXPECT_EQ(document_tree, given[0]);
        EXPECT_EQ(host_tree, given[1]);
        tov_schema__alloc__vhash(ctx, &document_tree, &host_tree, made);
    });
    EXPECT_EQ(document_tree, nullptr);
    EXPECT_EQ(host_tree, nullptr);
}

static void my_copy_and_drop(KT_context *ctx, tov_schema *schema)
{
    kt_owned_vhash destination{ctx};
    KT_TRY(KT_vhash__alloc(ctx, destination.out()));
    tov_schema__copy_into_vhash(ctx, schema, destination, 1);
}

TEST_F(DocumentTest, WritingSurvivesShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"as JSON", one_col, nullptr, CALL(tov_schema__to_json(c, s, &o.string))},
        {"into a map", one_col, R"({"collations":{"t":{"c":"x"}}})", CALL(my_copy_and_drop(c, s))},
    };
    expect_survival(cases);
}

TEST_F(DocumentTest, ADocumentThatCannotBeWrittenFails)
{
    KT_vhash__add__double(ctx, schema->document, "infinite", HUGE_VAL);
    KT_string *json = nullptr;
    tov_schema__to_json(ctx, schema, &json);
    EXPECT_FAILED(ctx, KT_ERR_BAD_VALUE);
    expect_module_frame();
    EXPECT_EQ(json, nullptr);
    reset();
}

TEST_F(DocumentTest, ChangesAreCountedAndReadsAreNot)
{
    static constexpr struct {
        const char *name;
        call run;
    } changes[] = {
        {"add_tbl", CALL(tov_schema__add_tbl(c, s, "t2", "T2", 1))},
        {"set_tbl_name", CALL(tov_schema__set_tbl_name(c, s, "t", "N"))},
        {"add_col", CALL(tov_schema__add_col(c, s, "t", "d", "D", 1, 1, 1))},
        {"set_col_name", CALL(tov_schema__set_col_name(c, s, "t", "c", "N"))},
        {"set_filter_id", CALL(tov_schema__set_filter_id(c, s, 1))},
        {"backend name", CALL(tov_schema__set_backend_info__name(c, s, "n"))},
        {"backend api", CALL(tov_schema__set_backend_info__api(c, s, "a"))},
        {"backend nulls", CALL(tov_schema__set_backend_info__indistinct_unique_nulls(c, s, 1))},
        {"a type", CALL(tov_schema__set_col_type_simple(c, s, "t", "c", "guid"))},
        {"host type name", CALL(tov_schema__set_mssql_col_type_name(c, s, "t", "c", "int"))},
        {"collation", CALL(tov_schema__set_host_collation(c, s, "t", "c", "x"))},
        {"host default", CALL(tov_schema__set_host_defval(c, s, "t", "c", "x"))},
        {"notnull", CALL(tov_schema__set_colcon_notnull(c, s, "t", "c", 0, nullptr))},
        {"defval", CALL(tov_schema__set_colcon_defval(c, s, "t", "c", 0, nullptr, nullptr))},
        {"column check", CALL(tov_schema__add_colcon_check(c, s, "t", "c", nullptr, "(1)"))},
        {"pk name", CALL(tov_schema__set_pk_name(c, s, "t", "PK"))},
        {"pk column", CALL(tov_schema__set_pk_name(c, s, "t", "PK"); tov_schema__add_to_pk(c, s, "t", "c"))},
        {"unique", CALL(tov_schema__add_to_unique_constraint(c, s, "t", "c", "U"))},
        {"check", CALL(tov_schema__add_check_constraint(c, s, "t", "CK", "1"))},
        {"create_foreignkey",
         CALL(tov_schema__create_foreignkey(c, s, "F", nullptr, "t", "t", 0, nullptr, nullptr, 0))},
        {"add_to_foreignkey", CALL(tov_schema__create_foreignkey(c, s, "F", nullptr, "t", "t", 0, nullptr, nullptr, 0);
                                   tov_schema__add_to_foreignkey(c, s, "t", "F", "c", "c"))},
        {"nevermind_foreignkey", CALL(tov_schema__nevermind_foreignkey(c, s, "t", "F"))},
        {"column reference",
         CALL(tov_schema__set_colcon_fk(c, s, "t", "c", 1, "F", nullptr, "x", nullptr, 0, nullptr, nullptr, 0))},
        {"rule", CALL(_tov_schema__set_fk_rule(c, s, "t", "F", 5, 1))},
    };
    for (const auto &c : changes) {
        SCOPED_TRACE(c.name);
        load_trees(one_col, nullptr);
        outputs o;
        const uint64_t before = schema->change_count;
        c.run(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_GT(schema->change_count, before);
    }
    const uint64_t before = schema->change_count;
    uint32_t count = 0;
    tov_schema__count_cols(ctx, schema, "t", &count);
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, "t", "c", &name);
    EXPECT_EQ(document(), one_col);
    EXPECT_EQ(schema->change_count, before);
}
