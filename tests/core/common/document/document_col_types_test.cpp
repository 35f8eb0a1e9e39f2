#include "document_support.hpp"

// A text setter with everything off but what a case sets.
struct text_flags {
    const char *host_collation = nullptr;
    const char *locale = nullptr;
    KT_bool binary = 0;
    KT_bool noaccent = 0;
    KT_bool nocase = 0;
    KT_bool ks = 0;
    KT_bool ws = 0;
    KT_bool sc = 0;
    KT_bool fixed_width = 0;
    KT_bool unicode = 0;
    uint32_t width = 0;
};

static void my_set_text(KT_context *ctx, tov_schema *schema, const text_flags &f)
{
    tov_schema__set_col_type_text(ctx, schema, "T", "C", f.host_collation, f.locale, f.binary, f.noaccent, f.nocase,
                                  f.ks, f.ws, f.sc, f.fixed_width, f.unicode, f.width);
}

TEST_F(DocumentTest, SettersWriteATypeRecord)
{
    struct type_case {
        const char *name;
        call set;
        const char *type;
    };
    static constexpr type_case cases[] = {
        {"identity", CALL(tov_schema__set_col_type_identity(c, s, "T", "C", nullptr)), R"({"name":"identity"})"},
        {"identity with a constraint name", CALL(tov_schema__set_col_type_identity(c, s, "T", "C", "PK_T")),
         R"({"name":"identity","constraint_name":"PK_T"})"},
        {"a simple type", CALL(tov_schema__set_col_type_simple(c, s, "T", "C", "loose/int")),
         R"({"name":"loose/int"})"},
        {"a simple type that nobody knows", CALL(tov_schema__set_col_type_simple(c, s, "T", "C", "no such type")),
         R"({"name":"no such type"})"},
        {"decimal", CALL(tov_schema__set_col_type_decimal(c, s, "T", "C", 255, 0)),
         R"({"name":"decimal","precision":255,"scale":0})"},
        {"blob", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", 1, 8)),
         R"({"name":"blob","fixed_width":true,"width":8})"},
        {"blob, the widest", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", 0, UINT32_MAX)),
         R"({"name":"blob","fixed_width":false,"width":4294967295})"},
        {"blob, a flag whose low byte is 1", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", 0x7FFFFF01, 8)),
         R"({"name":"blob","fixed_width":true,"width":8})"},
        {"blob, a flag whose low byte is 2", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", 2, 8)),
         R"({"name":"blob","fixed_width":false,"width":8})"},
        {"blob, a flag whose low byte is 0", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", 256, 8)),
         R"({"name":"blob","fixed_width":false,"width":8})"},
        {"blob, a flag of all ones", CALL(tov_schema__set_col_type_blob(c, s, "T", "C", -1, 8)),
         R"({"name":"blob","fixed_width":false,"width":8})"},
        {"time", CALL(tov_schema__set_col_type_time(c, s, "T", "C", 7)), R"({"name":"time","precision":7})"},
        {"datetime", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 3, nullptr)),
         R"({"name":"datetime","precision":3})"},
        {"a type that is not supported", CALL(tov_schema__set_col_type_unsuported(c, s, "T", "C", "sql_variant")),
         R"({"name":"host","host_type":"sql_variant"})"},
        {"text with nothing set", CALL(my_set_text(c, s, {})),
         R"({"name":"text","fixed_width":false,"noaccent":false,"nocase":false,"unicode":false,"width":0})"},
        {"text with everything set but binary",
         CALL(my_set_text(c, s, {"coll", "1033", 0, 1, 1, 1, 1, 1, 1, 1, UINT32_MAX})),
         R"({"name":"text","fixed_width":true,"locale":"1033","noaccent":true,"nocase":true,"_KS":true,"_WS":true,)"
         R"("_SC":true,"unicode":true,"width":4294967295})"},
        {"binary text has no other rules of comparison",
         CALL(my_set_text(c, s, {nullptr, "1033", 1, 1, 1, 1, 1, 1, 1, 1, 10})),
         R"({"name":"text","fixed_width":true,"locale":"1033","binary":true,"unicode":true,"width":10})"},
        {"text, flags by their low byte",
         CALL(my_set_text(c, s, {nullptr, nullptr, 0, 0x101, 2, 0, 0, 0, 256, -255, 10})),
         R"({"name":"text","fixed_width":false,"noaccent":true,"nocase":false,"unicode":true,"width":10})"},
        {"text, flags that need only be set", CALL(my_set_text(c, s, {nullptr, nullptr, 0, 0, 0, 256, 2, -1})),
         R"({"name":"text","fixed_width":false,"noaccent":false,"nocase":false,"_KS":true,"_WS":true,"_SC":true,)"
         R"("unicode":false,"width":0})"},
        {"text, a binary flag that need only be set", CALL(my_set_text(c, s, {nullptr, nullptr, 256})),
         R"({"name":"text","fixed_width":false,"binary":true,"unicode":false,"width":0})"},
    };
    for (const type_case &c : cases) {
        SCOPED_TRACE(c.name);
        // What was there goes whole, and the new record goes to the end.
        load(R"({"tbls":{"t":{"cols":{"c":{"type":{"name":"text","width":3,"old":1},"x":2}}}}})");
        outputs o;
        c.set(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(col_record(), std::string(R"({"x":2,"type":)") + c.type + "}");
    }
}

TEST_F(DocumentTest, AColumnHasOnlyTheFieldsOfItsLastType)
{
    load(one_col);
    my_set_text(ctx, schema, {"coll", "1033", 0, 1, 1, 1, 1, 1, 1, 1, 10});
    tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 9, 2);
    EXPECT_OK(ctx);
    EXPECT_EQ(col_record(), R"({"name":"C","type":{"name":"decimal","precision":9,"scale":2}})");
}

TEST_F(DocumentTest, SettersThatTellTheHostsCollation)
{
    struct collation_case {
        const char *name;
        call set;
        const char *host;
    };
    static constexpr collation_case cases[] = {
        {"text with a collation", CALL(my_set_text(c, s, {"Latin1_General_CI_AS"})),
         R"({"collations":{"T":{"C":"Latin1_General_CI_AS"}}})"},
        {"binary text with a collation", CALL(my_set_text(c, s, {"Latin1_General_BIN2", nullptr, 1})),
         R"({"collations":{"T":{"C":"Latin1_General_BIN2"}}})"},
        {"text without one", CALL(my_set_text(c, s, {})), "null"},
        {"smalldatetime", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 0, "smalldatetime")),
         R"({"collations":{"T":{"C":"smalldatetime"}}})"},
        {"datetime2", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 7, "datetime2")), "null"},
        {"datetime2 in other letters", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 7, "DateTime2")),
         R"({"collations":{"T":{"C":"DateTime2"}}})"},
        {"datetime2 with more behind it", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 7, "datetime2 x")),
         R"({"collations":{"T":{"C":"datetime2 x"}}})"},
        {"less than datetime2", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 3, "datetime")),
         R"({"collations":{"T":{"C":"datetime"}}})"},
        {"no host type", CALL(tov_schema__set_col_type_datetime(c, s, "T", "C", 3, nullptr)), "null"},
    };
    for (const collation_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(one_col);
        outputs o;
        c.set(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(host_internals(), c.host);
    }
}

TEST_F(DocumentTest, ATextThatFailsOnItsCollationHasANameOnly)
{
    load_trees(one_col, R"({"collations":1})");
    my_set_text(ctx, schema, {"coll", "1033"});
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    reset();
    EXPECT_EQ(col_record(), R"({"name":"C","type":{"name":"text"}})");
}

TEST_F(DocumentTest, TypeSettersFailForUnknownColumns)
{
    static constexpr call setters[] = {
        CALL(tov_schema__set_col_type_identity(c, s, "T", "X", "PK")),
        CALL(tov_schema__set_col_type_simple(c, s, "T", "X", "guid")),
        CALL(tov_schema__set_col_type_decimal(c, s, "T", "X", 9, 2)),
        CALL(tov_schema__set_col_type_blob(c, s, "T", "X", 1, 8)),
        CALL(tov_schema__set_col_type_time(c, s, "T", "X", 7)),
        CALL(tov_schema__set_col_type_datetime(c, s, "T", "X", 7, "datetime")),
        CALL(tov_schema__set_col_type_text(c, s, "T", "X", "coll", nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0)),
        CALL(tov_schema__set_col_type_unsuported(c, s, "T", "X", "xml")),
    };
    for (const call set : setters) {
        SCOPED_TRACE(&set - setters);
        const failure_case cases[] = {
            {"unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, "table id 'T' not found in schema", set},
            {"unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema", set},
        };
        expect_failures(cases);
        EXPECT_EQ(document(), one_col);
        EXPECT_EQ(host_internals(), "null");
    }
}

TEST_F(DocumentTest, TypeSettersSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"identity", one_col, nullptr,
         CALL(tov_schema__set_col_type_identity(c, s, "t", "c", "A name that needs a block of its own"))},
        {"simple", one_col, nullptr,
         CALL(tov_schema__set_col_type_simple(c, s, "t", "c", "A name that needs a block of its own"))},
        {"decimal", one_col, nullptr, CALL(tov_schema__set_col_type_decimal(c, s, "t", "c", 9, 2))},
        {"blob", one_col, nullptr, CALL(tov_schema__set_col_type_blob(c, s, "t", "c", 1, 8))},
        {"time", one_col, nullptr, CALL(tov_schema__set_col_type_time(c, s, "t", "c", 7))},
        {"datetime", one_col, nullptr, CALL(tov_schema__set_col_type_datetime(c, s, "t", "c", 7, "smalldatetime"))},
        {"text", one_col, nullptr,
         CALL(my_set_text(c, s, {"Latin1_General_CI_AS_KS_WS_SC", "1033", 0, 1, 1, 1, 1, 1, 1, 1, 10}))},
        {"unsupported", one_col, nullptr,
         CALL(tov_schema__set_col_type_unsuported(c, s, "t", "c", "A name that needs a block of its own"))},
    };
    expect_survival(cases);
}
