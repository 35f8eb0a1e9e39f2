#include "document/tov_parse_defin_private.hpp"

#include "ddl_test.hpp"

namespace {

struct mapping_case {
    const char *abstract_type;
    const char *sqlite_decl;
    const char *sqlite_typeof;
};

const mapping_case mapping_cases[] = {
    {"identity", "integer primary key", "integer"},
    {"sint64", "int", "integer"},
    {"sint32", "int", "integer"},
    {"sint16", "int", "integer"},
    {"uint8", "int", "integer"},
    {"uint1", "int", "integer"},
    {"loose/int", "int", "integer"},
    {"real8", "real", "real"},
    {"real4", "real", "real"},
    {"loose/real", "real", "real"},
    {"decimal", "int", "integer"},
    {"date", "text", "text"},
    {"time", "text", "text"},
    {"datetime", "text", "text"},
    {"money8", "int", "integer"},
    {"money4", "int", "integer"},
    {"text", "text", "text"},
    {"loose/text", "text", "text"},
    {"blob", "blob", "blob"},
    {"loose/blob", "blob", "blob"},
    {"guid", "blob", "blob"},
    // Anything else is not a type: names are compared whole and case matters.
    {"Text", "", ""},
    {"TEXT", "", ""},
    {"text ", "", ""},
    {" text", "", ""},
    {"tex", "", ""},
    {"Identity", "", ""},
    {"sint", "", ""},
    {"loose", "", ""},
    {"int", "", ""},
    {"host", "", ""},
    {"", "", ""},
};

TEST(DdlTypes, AbstractTypesInSqliteWords)
{
    for (const mapping_case &c : mapping_cases) {
        SCOPED_TRACE(c.abstract_type);
        EXPECT_STREQ(tov_abstract_type_to_sqlite_decl(c.abstract_type), c.sqlite_decl);
        EXPECT_STREQ(tov_abstract_type_to_sqlite_typeof(c.abstract_type), c.sqlite_typeof);
    }
}

TEST(DdlTypes, ADeclaredColumnHoldsWhatTypeofSays)
{
    static constexpr struct {
        const char *abstract_type;
        const char *value;
    } cases[] = {{"identity", "7"}, {"sint64", "7"}, {"real8", "7"}, {"text", "'a'"}, {"guid", "x'00'"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.abstract_type);
        sqlite_database db;
        EXPECT_EQ(db.run(std::string("CREATE TABLE T (C ") + tov_abstract_type_to_sqlite_decl(c.abstract_type) + ")"),
                  "");
        EXPECT_EQ(db.run(std::string("INSERT INTO T VALUES (") + c.value + ")"), "");
        EXPECT_EQ(db.ask("SELECT typeof(C) FROM T"), tov_abstract_type_to_sqlite_typeof(c.abstract_type));
    }
}

class DdlTextwidth : public DdlTest {
  protected:
    static constexpr int64_t untouched = -99;

    void read(const char *tbl_id = "t", const char *col_id = "c")
    {
        tov_schema__get_textwidth(ctx, schema, tbl_id, col_id, nullptr, &is_text, &is_fixed_width, &width);
    }

    KT_bool is_text = 7;
    KT_bool is_fixed_width = 7;
    int64_t width = untouched;
};

struct textwidth_case {
    const char *name;
    const char *type;
    KT_bool is_text;
    KT_bool is_fixed_width;
    int64_t width;
};

TEST_F(DdlTextwidth, TextColumns)
{
    const textwidth_case cases[] = {
        {"variable width", R"({"name":"text","fixed_width":false,"width":20})", 1, 0, 20},
        {"fixed width", R"({"name":"text","fixed_width":true,"width":20})", 1, 1, 20},
        {"no flag means variable width", R"({"name":"text","width":20})", 1, 0, 20},
        {"collation flags do not matter", R"({"name":"text","nocase":true,"width":5})", 1, 0, 5},
        {"a width of 64 bits", R"({"name":"text","width":5000000000})", 1, 0, 5000000000},
        {"unbounded text", R"({"name":"text","width":0})", 1, 0, 0},
        {"loose text is not text", R"({"name":"loose/text","fixed_width":true,"width":20})", 0, 0, untouched},
        {"a date is not text", R"({"name":"date"})", 0, 0, untouched},
        {"case matters", R"({"name":"TEXT","width":20})", 0, 0, untouched},
        {"a type without name is not text", R"({"width":20})", 0, 0, untouched},
    };
    for (const textwidth_case &c : cases) {
        SCOPED_TRACE(c.name);
        load_col(std::string(R"("type":)") + c.type);
        is_text = is_fixed_width = 7;
        width = untouched;
        read();
        EXPECT_OK(ctx);
        EXPECT_EQ(is_text, c.is_text);
        EXPECT_EQ(is_fixed_width, c.is_fixed_width);
        EXPECT_EQ(width, c.width);
    }
}

TEST_F(DdlTextwidth, WhatTheSetterRecordedIsRead)
{
    tov_schema__add_tbl(ctx, schema, "t", "T", 1);
    tov_schema__add_col(ctx, schema, "t", "c", "C", 1, 0, 0);
    tov_schema__set_col_type_text(ctx, schema, "t", "c", nullptr, nullptr, 0, 0, 1, 0, 0, 0, 1, 1, 30);
    read("T", "C");
    EXPECT_OK(ctx);
    EXPECT_EQ(is_text, 1);
    EXPECT_EQ(is_fixed_width, 1);
    EXPECT_EQ(width, 30);
}

TEST_F(DdlTextwidth, TheNameIsCopiedForTextOnly)
{
    char *name = nullptr;
    load_col(R"("type":{"name":"text","width":3})");
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, &is_text, &is_fixed_width, &width);
    EXPECT_OK(ctx);
    EXPECT_STREQ(name, "C");
    _kt_free(ctx, name);

    load_col(R"("type":{"name":"date"})");
    name = nullptr;
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, &is_text, &is_fixed_width, &width);
    EXPECT_OK(ctx);
    EXPECT_EQ(name, nullptr);

    load_tbl(R"("cols":{"c":{"type":{"name":"text","width":3}}})");
    char nothing[] = "";
    name = nothing;
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, &is_text, &is_fixed_width, &width);
    EXPECT_OK(ctx);
    EXPECT_EQ(name, nullptr);
}

TEST_F(DdlTextwidth, NullOutputsAreRefusedInOrderAndBeforeAnythingIsWritten)
{
    load_col(R"("type":{"name":"text","width":3})");
    char *name = nullptr;
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, nullptr, nullptr, nullptr);
    expect_failure(KT_ERR_NULL_ARGUMENT, "pIsText is null");
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, nullptr, &is_fixed_width, nullptr);
    expect_failure(KT_ERR_NULL_ARGUMENT, "pIsText is null");
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, &is_text, nullptr, nullptr);
    expect_failure(KT_ERR_NULL_ARGUMENT, "pIsFixedWidth is null");
    tov_schema__get_textwidth(ctx, schema, "t", "c", &name, &is_text, &is_fixed_width, nullptr);
    expect_failure(KT_ERR_NULL_ARGUMENT, "pWidth is null");
    EXPECT_EQ(is_text, 7);
    EXPECT_EQ(is_fixed_width, 7);
    EXPECT_EQ(name, nullptr);
}

TEST_F(DdlTextwidth, FailuresLeaveFlagsClearAndTheWidthAlone)
{
    const struct {
        const char *name;
        const char *members;
        const char *col_id;
        uint64_t code;
        const char *description;
    } cases[] = {
        {"unknown column", R"("type":{"name":"text","width":3})", "x", KT_ERR_NOT_FOUND,
         "col id 'x' not found in tbl id 't' in schema"},
        {"no type", R"("k":1)", "c", KT_ERR_KEY_NOT_FOUND, "no key 'type'"},
        {"text without width", R"("type":{"name":"text"})", "c", KT_ERR_KEY_NOT_FOUND, "no key 'width'"},
        {"nocase is not a flag", R"("type":{"name":"text","nocase":"yes","width":3})", "c", KT_ERR_WRONG_TYPE,
         "key 'nocase' is not a boolean"},
        {"fixed_width is not a flag", R"("type":{"name":"text","fixed_width":1,"width":3})", "c", KT_ERR_WRONG_TYPE,
         "key 'fixed_width' is not a boolean"},
        {"nocase is looked at first", R"("type":{"name":"text","nocase":1,"fixed_width":1})", "c", KT_ERR_WRONG_TYPE,
         "key 'nocase' is not a boolean"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load_col(c.members);
        char *name = nullptr;
        is_text = is_fixed_width = 7;
        tov_schema__get_textwidth(ctx, schema, "t", c.col_id, &name, &is_text, &is_fixed_width, &width);
        expect_failure(c.code, c.description);
        EXPECT_EQ(is_text, 0);
        EXPECT_EQ(is_fixed_width, 0);
        EXPECT_EQ(width, untouched);
        EXPECT_EQ(name, nullptr);
    }
    read("nope");
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
}

TEST_F(DdlTextwidth, EveryAllocationMayFail)
{
    load_col(R"("type":{"name":"text","width":3})");
    sweep<char>(
        [this](char **name) {
            tov_schema__get_textwidth(ctx, schema, "t", "c", name, &is_text, &is_fixed_width, &width);
        },
        [this](char *name) { _kt_free(ctx, name); });
}

} // namespace
