#include "document/tov_parse_defin_private.hpp"

#include "ddl_test.hpp"

namespace {

struct text_case {
    const char *name;
    const char *abstract_type;
    int32_t width;
    int32_t precision;
    const char *col_name;
    const char *expected;
};

const text_case text_cases[] = {
    {"identity is not checked", "identity", 0, 0, "C", R"(-- identity
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
ELSE 1
END)"},
    {"sint64", "sint64", 0, 0, "C", R"(-- sint64
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: sint64(integer)')
ELSE 1
END)"},
    {"sint32", "sint32", 0, 0, "C", R"(-- sint32
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: sint32(integer)')
WHEN ( (NEW."C" < -2147483648) OR (NEW."C" > 2147483647) ) THEN RAISE(ABORT, '[C] constraint violation: out of range: sint32')
ELSE 1
END)"},
    {"sint16", "sint16", 0, 0, "Qty", R"(-- sint16
SELECT CASE
WHEN (NEW."Qty" IS NULL) THEN 1
WHEN (typeof(NEW."Qty")!='integer') THEN RAISE(ABORT, '[Qty] constraint violation: type mismatch: sint16(integer)')
WHEN ( (NEW."Qty" < -32768) OR (NEW."Qty" > 32767) ) THEN RAISE(ABORT, '[Qty] constraint violation: out of range: sint16')
ELSE 1
END)"},
    {"uint8", "uint8", 0, 0, "C", R"(-- uint8
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: uint8(integer)')
WHEN ( (NEW."C" < 0) OR (NEW."C" > 255) ) THEN RAISE(ABORT, '[C] constraint violation: out of range: uint8')
ELSE 1
END)"},
    {"uint1", "uint1", 0, 0, "C", R"(-- uint1
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: uint1(integer)')
WHEN ( (NEW."C" < 0) OR (NEW."C" > 1) ) THEN RAISE(ABORT, '[C] constraint violation: out of range: uint1')
ELSE 1
END)"},
    {"loose integers are not checked", "loose/int", 0, 0, "C", R"(-- loose/int
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
ELSE 1
END)"},
    {"a real may be an integer of the same value", "real8", 0, 0, "C", R"(-- real8
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN ( (typeof(NEW."C")!='real') AND ( (typeof(NEW."C")!='integer') OR (NEW."C"!=CAST(NEW."C" AS real)) ) ) THEN RAISE(ABORT, '[C] constraint violation: type mismatch: real8(real)')
ELSE 1
END)"},
    {"a short real has no range line", "real4", 0, 0, "C", R"(-- real4
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN ( (typeof(NEW."C")!='real') AND ( (typeof(NEW."C")!='integer') OR (NEW."C"!=CAST(NEW."C" AS real)) ) ) THEN RAISE(ABORT, '[C] constraint violation: type mismatch: real4(real)')
ELSE 1
END)"},
    {"loose reals are not checked", "loose/real", 0, 0, "C", R"(-- loose/real
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
ELSE 1
END)"},
    {"decimal", "decimal", 0, 5, "C", R"(-- decimal
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: decimal(integer)')
WHEN ( (length(CAST (abs(NEW."C") AS TEXT)) > 5) ) THEN RAISE(ABORT, '[C] constraint violation: precision exceeded (5)')
ELSE 1
END)"},
    {"date", "date", 0, 0, "C", R"(-- date
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: date(text)')
WHEN ( (length(NEW."C")!=10) OR (date(NEW."C") != NEW."C") OR (date(NEW."C") < date('0001-01-01') ) ) THEN RAISE(ABORT, '[C] constraint violation: invalid date (YYYY-MM-DD)')
ELSE 1
END)"},
    {"a time has eight lines, one line feed among them", "time", 0, 0, "C", R"(-- time
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: time(text)')
WHEN (length(NEW."C")<8) THEN RAISE(ABORT, '[C] constraint violation: invalid time')
WHEN (length(NEW."C")>16) THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (substr(NEW."C",3,1)!=':') THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (substr(NEW."C",6,1)!=':') THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (cast(substr(NEW."C",1,2) as integer)>23) THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (cast(substr(NEW."C",4,2) as integer)>59) THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (cast(substr(NEW."C",7,2) as integer)>59) THEN RAISE(ABORT, '[C] constraint violation: invalid time')WHEN (substr(strftime('%H:%M:%f', NEW."C"),1,length(NEW."C")) != substr(NEW."C",1,12)) THEN RAISE(ABORT, '[C] constraint violation: invalid time')ELSE 1
END)"},
    {"a datetime has nine forms, no line feed among them", "datetime", 0, 0, "C", R"(-- datetime
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: datetime(text)')
WHEN (CAST( (((length(rtrim(NEW."C")) = 10) AND (coalesce(strftime('%Y-%m-%d', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 16) AND (coalesce(strftime('%Y-%m-%d %H:%M', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 16) AND (coalesce(strftime('%Y-%m-%dT%H:%M', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 19) AND (coalesce(strftime('%Y-%m-%d %H:%M:%S', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 19) AND (coalesce(strftime('%Y-%m-%dT%H:%M:%S', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 23) AND (coalesce(strftime('%Y-%m-%d %H:%M:%f', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) = 23) AND (coalesce(strftime('%Y-%m-%dT%H:%M:%f', NEW."C"), '') = rtrim(NEW."C")))OR ((length(rtrim(NEW."C")) > 23) AND (length(rtrim(NEW."C")) <= 27) AND (coalesce(strftime('%Y-%m-%d %H:%M:%S', NEW."C"), '') = substr(rtrim(NEW."C"),1,19)))OR ((length(rtrim(NEW."C")) > 23) AND (length(rtrim(NEW."C")) <= 27) AND (coalesce(strftime('%Y-%m-%dT%H:%M:%S', NEW."C"), '') = substr(rtrim(NEW."C"),1,19)))) AS integer) = 0) THEN RAISE(ABORT, '[C] constraint violation: invalid datetime')ELSE 1
END)"},
    {"money has its type line only", "money8", 0, 0, "C", R"(-- money8
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: money8(integer)')
ELSE 1
END)"},
    {"small money has the range of 32 bits", "money4", 0, 0, "C", R"(-- money4
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='integer') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: money4(integer)')
WHEN ( (NEW."C" < -2147483648) OR (NEW."C" > 2147483647) ) THEN RAISE(ABORT, '[C] constraint violation: out of range: money4')
ELSE 1
END)"},
    {"text of 10", "text", 10, 0, "C", R"(-- text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: text(text)')
WHEN ( length(NEW."C") > 10 ) THEN RAISE(ABORT, '[C] constraint violation: width exceeded: 10')
ELSE 1
END)"},
    {"text of one character", "text", 1, 0, "C", R"(-- text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: text(text)')
WHEN ( length(NEW."C") > 1 ) THEN RAISE(ABORT, '[C] constraint violation: width exceeded: 1')
ELSE 1
END)"},
    {"text of width 0 is unbounded", "text", 0, 0, "C", R"(-- text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: text(text)')
ELSE 1
END)"},
    {"text of width -1 is unbounded", "text", -1, 0, "C", R"(-- text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='text') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: text(text)')
ELSE 1
END)"},
    {"loose text is not checked", "loose/text", 10, 0, "C", R"(-- loose/text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
ELSE 1
END)"},
    {"blob of 10", "blob", 10, 0, "C", R"(-- blob
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='blob') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: blob(blob)')
WHEN ( length(NEW."C") > 10 ) THEN RAISE(ABORT, '[C] constraint violation: width exceeded: 10')
ELSE 1
END)"},
    {"blob of width -1 is unbounded", "blob", -1, 0, "C", R"(-- blob
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='blob') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: blob(blob)')
ELSE 1
END)"},
    {"loose blobs are not checked", "loose/blob", 10, 0, "C", R"(-- loose/blob
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
ELSE 1
END)"},
    {"guid", "guid", 0, 0, "C", R"(-- guid
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='blob') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: guid(blob)')
WHEN ( length(NEW."C") != 16 ) THEN RAISE(ABORT, '[C] constraint violation: must be 16 bytes (uniqueidentifier)')
ELSE 1
END)"},
    {"an unknown type rejects all values", "host", 10, 5, "C", R"(-- host
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: host()')
ELSE 1
END)"},
    {"another case is another type", "Text", 10, 5, "C", R"(-- Text
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: Text()')
ELSE 1
END)"},
    {"no type", "", 0, 0, "C", R"(-- 
SELECT CASE
WHEN (NEW."C" IS NULL) THEN 1
WHEN (typeof(NEW."C")!='') THEN RAISE(ABORT, '[C] constraint violation: type mismatch: ()')
ELSE 1
END)"},
    {"the widest text, and a name that looks like a format", "text", 2147483647, 0, "100% [x]", R"(-- text
SELECT CASE
WHEN (NEW."100% [x]" IS NULL) THEN 1
WHEN (typeof(NEW."100% [x]")!='text') THEN RAISE(ABORT, '[100% [x]] constraint violation: type mismatch: text(text)')
WHEN ( length(NEW."100% [x]") > 2147483647 ) THEN RAISE(ABORT, '[100% [x]] constraint violation: width exceeded: 2147483647')
ELSE 1
END)"},
};

TEST_F(DdlTest, ValidationTexts)
{
    for (const text_case &c : text_cases) {
        SCOPED_TRACE(c.name);
        KT_string *text = nullptr;
        tov_schema__get_validation_expression(ctx, c.abstract_type, c.width, c.precision, 2, 0, c.col_name, &text);
        EXPECT_OK(ctx);
        EXPECT_EQ(take(ctx, text), c.expected);
    }
}

TEST_F(DdlTest, ScaleAndNotNullDoNotChangeAValidationText)
{
    for (const text_case &c : text_cases) {
        SCOPED_TRACE(c.name);
        KT_string *text = nullptr;
        tov_schema__get_validation_expression(ctx, c.abstract_type, c.width, c.precision, -1, 1, c.col_name, &text);
        EXPECT_OK(ctx);
        EXPECT_EQ(take(ctx, text), c.expected);
    }
}

TEST_F(DdlTest, EveryAllocationOfAValidationTextMayFail)
{
    for (const char *abstract_type : {"loose/int", "decimal", "time", "datetime"}) {
        SCOPED_TRACE(abstract_type);
        sweep_string([&](KT_string **text) {
            tov_schema__get_validation_expression(ctx, abstract_type, -1, 5, 2, 0, "A rather long column name", text);
        });
    }
}

struct col_case {
    const char *name;
    const char *members;
    const char *abstract_type;
    int32_t width;
    int32_t precision;
};

// The text of a column is that of its type with the column's own numbers.
TEST_F(DdlTest, ColValidationTexts)
{
    const col_case cases[] = {
        {"text has its width", R"("type":{"name":"text","width":7})", "text", 7, -1},
        {"a blob has its width", R"("type":{"name":"blob","width":8})", "blob", 8, -1},
        {"the widest number that a setter records is unbounded", R"("type":{"name":"blob","width":4294967295})", "blob",
         -1, -1},
        {"a decimal has its precision", R"("type":{"name":"decimal","precision":9,"scale":2})", "decimal", -1, 9},
        {"a width of another type is not read", R"("type":{"name":"loose/text","width":"x"})", "loose/text", -1, -1},
        {"a time's precision is not read", R"("type":{"name":"time","precision":"x"})", "time", -1, -1},
        {"not null changes nothing", R"("type":{"name":"sint16"},"notnull":{"name":"NN"})", "sint16", -1, -1},
        {"a name of not null is not looked at", R"("type":{"name":"sint16"},"notnull":{"name":5})", "sint16", -1, -1},
        {"an unknown type", R"("type":{"name":"host","host_type":"xml"})", "host", -1, -1},
    };
    for (const col_case &c : cases) {
        SCOPED_TRACE(c.name);
        load_col(c.members);
        KT_string *expected = nullptr;
        KT_string *text = nullptr;
        tov_schema__get_validation_expression(ctx, c.abstract_type, c.width, c.precision, -1, 0, "C", &expected);
        tov_schema__get_col_validation_expression(ctx, schema, "T", "C", &text);
        EXPECT_OK(ctx);
        EXPECT_EQ(take(ctx, text), take(ctx, expected));
    }
}

TEST_F(DdlTest, AnUnpreparedColumnHasAValidationTextToo)
{
    tov_schema__add_tbl(ctx, schema, "t", "T", 1);
    tov_schema__add_col(ctx, schema, "t", "c", "Later", 0, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "c", "loose/int");
    KT_string *text = nullptr;
    tov_schema__get_col_validation_expression(ctx, schema, "t", "c", &text);
    EXPECT_OK(ctx);
    EXPECT_EQ(take(ctx, text), "-- loose/int\nSELECT CASE\nWHEN (NEW.\"Later\" IS NULL) THEN 1\nELSE 1\nEND");
}

TEST_F(DdlTest, ColValidationFailures)
{
    const struct {
        const char *name;
        const char *members;
        const char *col_id;
        uint64_t code;
        const char *description;
    } cases[] = {
        {"unknown column", R"("type":{"name":"sint16"})", "x", KT_ERR_NOT_FOUND,
         "col id 'x' not found in tbl id 't' in schema"},
        {"no type", R"("k":1)", "c", KT_ERR_KEY_NOT_FOUND, "no key 'type'"},
        {"a type that is not a record", R"("type":"text")", "c", KT_ERR_WRONG_TYPE, "key 'type' is not a map"},
        {"a type without name", R"("type":{})", "c", KT_ERR_KEY_NOT_FOUND, "no key 'name'"},
        {"not null is not a record", R"("type":{"name":"text"},"notnull":true)", "c", KT_ERR_WRONG_TYPE,
         "key 'notnull' is not a map"},
        {"text without width", R"("type":{"name":"text"})", "c", KT_ERR_KEY_NOT_FOUND, "no key 'width'"},
        {"a blob without width", R"("type":{"name":"blob"})", "c", KT_ERR_KEY_NOT_FOUND, "no key 'width'"},
        {"a width that is too wide", R"("type":{"name":"text","width":4294967296})", "c", KT_ERR_WRONG_TYPE,
         "key 'width' is not a 32-bit integer"},
        {"a decimal without precision", R"("type":{"name":"decimal","scale":2})", "c", KT_ERR_KEY_NOT_FOUND,
         "no key 'precision'"},
        {"a decimal without scale", R"("type":{"name":"decimal","precision":2})", "c", KT_ERR_KEY_NOT_FOUND,
         "no key 'scale'"},
        {"precision comes before scale", R"("type":{"name":"decimal"})", "c", KT_ERR_KEY_NOT_FOUND,
         "no key 'precision'"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load_col(c.members);
        KT_string *text = nullptr;
        tov_schema__get_col_validation_expression(ctx, schema, "t", c.col_id, &text);
        expect_failure(c.code, c.description);
        EXPECT_EQ(text, nullptr);
    }
    load_tbl(R"("cols":{"c":{"type":{"name":"sint16"}}})");
    KT_string *text = nullptr;
    tov_schema__get_col_validation_expression(ctx, schema, "t", "c", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'name'");
    tov_schema__get_col_validation_expression(ctx, schema, "nope", "c", &text);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
    EXPECT_EQ(text, nullptr);
}

TEST_F(DdlTest, EveryAllocationOfAColValidationTextMayFail)
{
    load_col(R"("type":{"name":"decimal","precision":9,"scale":2})");
    sweep_string([&](KT_string **text) { tov_schema__get_col_validation_expression(ctx, schema, "t", "c", text); });
}

} // namespace
