#include "document_support.hpp"

static constexpr char own_identity[] =
    "Tovrin does not support same-table references in prepared tables with an identity column.";
// Table Items with an identity column id and a column other.
static constexpr char items[] =
    R"({"tbls":{"items":{"cols":{"id":{"type":{"name":"identity"}},"other":{"type":{"name":"sint32"}}}}}})";

TEST_F(DocumentTest, ReferencesOfColumnsAreRecorded)
{
    static constexpr char with_fk[] = R"({"fk":{"name":"old","on_delete":"old"},"x":1})";
    struct fk_case {
        const char *name;
        const char *before; // the column's record
        call set;
        const char *after;
        const char *host;
    };
    static constexpr fk_case cases[] = {
        {"with everything", with_fk,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "C", 1, "FK1", "FK_name", "Other", "Id", 256, "CASCADE", "no action",
                                        -3)),
         R"({"x":1,"fk":{"name":"FK_name","ref_tbl_id":"Other","ref_col_id":"Id","deferred":true,)"
         R"("on_delete":"CASCADE","on_update":"no action"}})",
         R"({"fk-rules":{"T":{"FK1":{"violation-on-insert":-3}}}})"},
        {"with as little as may be", with_fk,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "C", 1, "FK1", nullptr, "Other", nullptr, 0, nullptr, nullptr, 0)),
         R"({"x":1,"fk":{"ref_tbl_id":"Other","deferred":false}})", "null"},
        {"none drops what was there, and records no rule", with_fk,
         CALL(
             tov_schema__set_colcon_fk(c, s, "T", "C", 0, "FK1", "FK_name", "Other", "Id", 1, "CASCADE", "CASCADE", 3)),
         R"({"x":1})", "null"},
        {"none, and no table to refer to", with_fk,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "C", 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr, nullptr, 0)),
         R"({"x":1})", "null"},
        {"to its own table, which has no identity column", R"({"type":{"name":"guid"}})",
         CALL(tov_schema__set_colcon_fk(c, s, "T", "C", 1, "FK1", nullptr, "t", nullptr, 0, nullptr, nullptr, 0)),
         R"({"type":{"name":"guid"},"fk":{"ref_tbl_id":"t","deferred":false}})", "null"},
    };
    for (const fk_case &c : cases) {
        SCOPED_TRACE(c.name);
        load((R"({"tbls":{"t":{"cols":{"c":)" + std::string(c.before) + "}}}}").c_str());
        outputs o;
        c.set(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(col_record(), c.after);
        EXPECT_EQ(host_internals(), c.host);
    }
}

TEST_F(DocumentTest, ATableWithAnIdentityColumnMayNotReferToItself)
{
    static constexpr failure_case cases[] = {
        {"in other letters", items, nullptr, KT_ERR_SCHEMA_NOT_SUPPORTED, own_identity,
         CALL(tov_schema__set_colcon_fk(c, s, "Items", "other", 1, "F", nullptr, "ITEMS", nullptr, 0, nullptr, nullptr,
                                        3))},
        {"even when a reference is to be dropped", items, nullptr, KT_ERR_SCHEMA_NOT_SUPPORTED, own_identity,
         CALL(tov_schema__set_colcon_fk(c, s, "items", "other", 0, "F", nullptr, "items", nullptr, 0, nullptr, nullptr,
                                        0))},
        {"even from an unknown column", items, nullptr, KT_ERR_SCHEMA_NOT_SUPPORTED, own_identity,
         CALL(tov_schema__set_colcon_fk(c, s, "items", "none", 1, "F", nullptr, "items", nullptr, 0, nullptr, nullptr,
                                        0))},
    };
    for (const failure_case &c : cases) {
        const failure_case one[] = {c};
        expect_failures(one);
        EXPECT_EQ(document(), items);
        EXPECT_EQ(host_internals(), "null");
    }
    tov_schema__set_colcon_fk(ctx, schema, "Items", "other", 1, "F", nullptr, "Others", nullptr, 0, nullptr, nullptr,
                              0);
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, ReferencesOfColumnsAreReadBack)
{
    struct read_case {
        const char *fk;
        KT_bool has;
        const char *texts[5]; // name, ref_tbl_id, ref_col_id, on_delete, on_update
    };
    static constexpr read_case cases[] = {
        {"{}", 0, {}},
        {R"({"fk":null})", 0, {}},
        {R"({"fk":{}})", 1, {}},
        {R"({"fk":{"ref_tbl_id":"Other","deferred":true}})", 1, {nullptr, "Other"}},
        {R"({"fk":{"name":"N","ref_tbl_id":"T2","ref_col_id":"C2","on_delete":"CASCADE","on_update":"no action"}})",
         1,
         {"N", "T2", "C2", "CASCADE", "no action"}},
    };
    for (const read_case &c : cases) {
        SCOPED_TRACE(c.fk);
        load((R"({"tbls":{"t":{"cols":{"c":)" + std::string(c.fk) + "}}}}").c_str());
        KT_bool has = 77;
        const char *texts[5] = {untouched, untouched, untouched, untouched, untouched};
        tov_schema__get_colcon_fk(ctx, schema, "T", "C", &has, &texts[0], &texts[1], &texts[2], &texts[3], &texts[4]);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
        for (size_t n = 0; n < 5; n++)
            EXPECT_STREQ(texts[n], c.texts[n]) << n;
        has = 77;
        tov_schema__get_colcon_fk(ctx, schema, "T", "C", &has, nullptr, nullptr, nullptr, nullptr, nullptr);
        EXPECT_OK(ctx);
        EXPECT_EQ(has, c.has);
    }
}

TEST_F(DocumentTest, ReferencesOfColumnsFail)
{
    static constexpr char no_t[] = "table id 'T' not found in schema";
    static constexpr char no_x[] = "col id 'X' not found in tbl id 'T' in schema";
    static constexpr failure_case cases[] = {
        {"setting, unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "X", 1, "F", nullptr, "u", nullptr, 0, nullptr, nullptr, 0))},
        {"setting, unknown table that refers to itself", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "X", 1, "F", nullptr, "T", nullptr, 0, nullptr, nullptr, 0))},
        {"setting, unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, no_x,
         CALL(tov_schema__set_colcon_fk(c, s, "T", "X", 1, "F", nullptr, "u", nullptr, 0, nullptr, nullptr, 0))},
        {"setting in a table that refers to itself and has a column without a type", one_col, nullptr,
         KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__set_colcon_fk(c, s, "t", "c", 1, "F", nullptr, "t", nullptr, 0, nullptr, nullptr, 0))},
        {"reading, unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__get_colcon_fk(c, s, "T", "X", &o.flag, &o.text, &o.text2, &o.text3, nullptr, nullptr))},
        {"reading, unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, no_x,
         CALL(tov_schema__get_colcon_fk(c, s, "T", "X", &o.flag, &o.text, &o.text2, &o.text3, nullptr, nullptr))},
        {"reading, no map", R"({"tbls":{"t":{"cols":{"c":{"fk":1}}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_fk(c, s, "t", "c", &o.flag, &o.text, &o.text2, &o.text3, nullptr, nullptr))},
        {"reading, the last text of another type", R"({"tbls":{"t":{"cols":{"c":{"fk":{"name":"N","on_update":1}}}}}})",
         nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_colcon_fk(c, s, "t", "c", &o.flag, &o.text, nullptr, nullptr, nullptr, &o.text2))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ReferencesOfColumnsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"a reference with everything", one_col, nullptr,
         CALL(tov_schema__set_colcon_fk(c, s, "t", "c", 1, "FK1", "A name that needs a block of its own",
                                        "A table id of some length", "A column id of some length", 1,
                                        "An action of some length", "An action of some length", 3))},
    };
    expect_survival(cases);
}
