#include "document_support.hpp"

namespace {

struct shape_case {
    const char *json;
    uint64_t code;
    const char *description;
};

// A table "t" with a column "c" whose record has these members too.
#define COL(members) R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"c":{"name":"C",)" members R"(}}}}})"
#define TBL(members) R"({"compat_level":1,"tbls":{"t":{"name":"T",)" members R"(}}})"

const shape_case shape_cases[] = {
    {R"({})", KT_ERR_KEY_NOT_FOUND, "compat_level is missing"},
    {R"({"compat_level":"1"})", KT_ERR_WRONG_TYPE, "compat_level is not an integer"},
    {R"({"compat_level":1,"tbls":[]})", KT_ERR_WRONG_TYPE, "tbls is not an object"},
    {R"({"compat_level":1,"tbls":{"t":5}})", KT_ERR_WRONG_TYPE, "tbls.t is not an object"},
    {R"({"compat_level":1,"tbls":{"t":{}}})", KT_ERR_KEY_NOT_FOUND, "tbls.t.name is missing"},
    {R"({"compat_level":1,"tbls":{"t":{"name":null}}})", KT_ERR_WRONG_TYPE, "tbls.t.name is not a string"},
    {TBL(R"("txid":1.5)"), KT_ERR_WRONG_TYPE, "tbls.t.txid is not an integer"},
    {TBL(R"("server":"dbo")"), KT_ERR_WRONG_TYPE, "tbls.t.server is not an object"},
    {TBL(R"("cols":{"c":{"name":"C"}})"), KT_ERR_KEY_NOT_FOUND, "tbls.t.cols.c.type is missing"},
    {COL(R"("type":{})"), KT_ERR_KEY_NOT_FOUND, "tbls.t.cols.c.type.name is missing"},
    {COL(R"("type":{"name":"text","nocase":1})"), KT_ERR_WRONG_TYPE, "tbls.t.cols.c.type.nocase is not true or false"},
    {COL(R"("type":{"name":"text","_KS":1})"), KT_ERR_WRONG_TYPE, "tbls.t.cols.c.type._KS is not true or false"},
    {COL(R"("type":{"name":"x"},"check":{})"), KT_ERR_WRONG_TYPE, "tbls.t.cols.c.check is not a list"},
    {COL(R"("type":{"name":"x"},"check":[{"expr":"1"},1])"), KT_ERR_WRONG_TYPE,
     "tbls.t.cols.c.check[1] is not an object"},
    {COL(R"("type":{"name":"x"},"check":[{}])"), KT_ERR_KEY_NOT_FOUND, "tbls.t.cols.c.check[0].expr is missing"},
    {COL(R"("type":{"name":"x"},"fk":{})"), KT_ERR_KEY_NOT_FOUND, "tbls.t.cols.c.fk.ref_tbl_id is missing"},
    {TBL(R"("pk":[])"), KT_ERR_WRONG_TYPE, "tbls.t.pk is not an object"},
    {TBL(R"("pk":{"cols":["c"]})"), KT_ERR_WRONG_TYPE, "tbls.t.pk.cols is not an object"},
    {TBL(R"("uniques":{"u":null})"), KT_ERR_WRONG_TYPE, "tbls.t.uniques.u is not an object"},
    {TBL(R"("foreignkeys":{"f":{"ref_tbl_id":"x"}})"), KT_ERR_KEY_NOT_FOUND, "tbls.t.foreignkeys.f.cols is missing"},
    {TBL(R"("foreignkeys":{"f":{"ref_tbl_id":"x","cols":{"a":1}}})"), KT_ERR_WRONG_TYPE,
     "tbls.t.foreignkeys.f.cols.a is not a string"},
    {TBL(R"("check":{"k":{"expr":null}})"), KT_ERR_WRONG_TYPE, "tbls.t.check.k.expr is not a string"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","txid":1},"u":{"name":"U","txid":"1"}}})", KT_ERR_WRONG_TYPE,
     "tbls.u.txid is not an integer"},
    {R"({"compat_level":1,"tbls":{"t":{"name":"T","txid":1},"u":{"nam":"U","txid":1}}})", KT_ERR_KEY_NOT_FOUND,
     "tbls.u.name is missing"},
    {TBL(R"("a":0,"b":0,"c":0,"d":0,"e":0,"f":0,"g":0,"h":0,"i":0,"j":0,"k":0,"l":0,"m":0,"n":0,"o":0,"p":0,"pk":1)"),
     KT_ERR_WRONG_TYPE, "tbls.t.pk is not an object"},
    {R"({"compat_level":1,"backend":null})", KT_ERR_WRONG_TYPE, "backend is not an object"},
    {R"({"compat_level":1,"backend":{"name":1}})", KT_ERR_WRONG_TYPE, "backend.name is not a string"},
};

} // namespace

TEST_F(DocumentTest, ShapeCheckNamesTheFirstWrongPlace)
{
    for (const shape_case &c : shape_cases) {
        SCOPED_TRACE(c.json);
        load(c.json);
        tov_schema__check_shape(ctx, schema);
        EXPECT_ERROR(ctx, c.code, c.description);
        expect_module_frame();
        reset();
        EXPECT_EQ(document(), c.json);
    }
}

TEST_F(DocumentTest, ShapeCheckAcceptsWhatHasTheShapeAndWhatIsNotKnown)
{
    static constexpr const char *accepted[] = {
        R"({"compat_level":1})",
        R"({"compat_level":1,"tbls":{},"server":{"any":[1]},"other":null})",
        COL(R"("type":{"name":"no type","more":1},"notnull":{},"defval":{"expr":"1"},"check":[],"other":[])"),
        TBL(R"("pk":{"name":null,"cols":{}})"),
        TBL(R"("pk":{"cols":{"c":7}},"uniques":{"u":{"c":[]}},"server":{"cols":5})"),
    };
    for (const char *json : accepted) {
        SCOPED_TRACE(json);
        load(json);
        tov_schema__check_shape(ctx, schema);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), json);
    }
}

TEST_F(DocumentTest, ShapeCheckLooksAgainAfterAChange)
{
    load(R"({"compat_level":1,"tbls":{"t":{"name":"T","txid":1}}})");
    tov_schema__check_shape(ctx, schema);
    tov_schema__check_shape(ctx, schema);
    EXPECT_OK(ctx);
    tov_schema__add_tbl(ctx, schema, "u", nullptr, 1);
    for (int n = 0; n < 2; n++) {
        tov_schema__check_shape(ctx, schema);
        EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "tbls.u.name is not a string");
        reset();
    }
    tov_schema__set_tbl_name(ctx, schema, "u", "U");
    tov_schema__check_shape(ctx, schema);
    EXPECT_OK(ctx);
}

static void expect_plain_flags(const tov_shape &shape)
{
    for (uint32_t n = 0; n < shape.count; n++) {
        EXPECT_LE(shape.members[n].is_required, 1) << shape.name << "." << shape.members[n].key;
        if (shape.members[n].shape)
            expect_plain_flags(*shape.members[n].shape);
    }
}

TEST_F(DocumentTest, TheFlagsOfTheShapeAreNoughtOrOne)
{
    expect_plain_flags(*tov_get_document_shape());
}

TEST_F(DocumentTest, TheDocumentIsThereToBeRead)
{
    load(one_col);
    const KT_vhash *found = nullptr;
    tov_schema__get_document(ctx, schema, &found);
    EXPECT_OK(ctx);
    EXPECT_EQ(found, schema->document);
}
