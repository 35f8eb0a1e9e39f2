// Every value of an export that is not what it should be is refused with its place.
#include "host_test.hpp"

class HostFieldsTest : public HostTest {};

// Valid, with one of everything.
static const char *const whole = R"x({"format":"sqlserver-catalogue","format_version":1,"exported_at":"x",
"server":{"product_version":"16.0"},"database":{"name":"Shop","can_view_definitions":true},
"tables":[{"id":7,"schema":"dbo","name":"T","temporal_type":0,"description":"d","columns":[
{"id":1,"name":"A","system_type_id":56,"system_type":"int","user_type":"int","max_length":4,"precision":10,"scale":0,
"is_nullable":false,"is_identity":true,"encryption_type":null,"graph_type":null,"is_sparse":false,"generated_always_type":0,"is_computed":false,
"identity":{"seed":"1","increment":"1","last":"9"}},
{"id":2,"name":"B","system_type":"int","max_length":4,"is_nullable":true,
"default":{"kind":"constraint","id":5,"name":"DF","definition":"((1))"
}
},
{"id":3,"name":"C","system_type":"int","max_length":4,"is_nullable":true,"is_computed":true,
"computed":{"definition":"([A])","is_persisted":true},"rule":null}],
"pk":{"name":"PK","is_disabled":false,"columns":[{"name":"A","descending":false}]},
"uniques":[{"name":"UQ","kind":"index","index_id":2,"columns":[{"name":"A"},{"name":"B"}]}],
"indexes":[{"name":"IX","is_clustered":false,"is_disabled":false,"filter":"([A]>(0))","columns":[{"name":"B",
"descending":true}],"included":[{"name":"A"}]}],"row_count":12,
"fks":[{"name":"FK","id":9,"ref_table_id":7,"ref_schema":"dbo","ref_table":"T","ref_key":"PK","on_delete":"SET_NULL",
"on_update":"NO_ACTION","columns":[{"column":"B","ref_column":"A"}]}],
"checks":[{"name":"CK","definition":"([A]>(0))","column":"A"}]
}],"sequences":[{"schema":"dbo","name":"S","type":"int","start":"1","increment":"1"}],
"objects":[{"kind":"views","name":"dbo.V"}]
})x";

// The export with one part replaced by another; the part must be there.
static std::string with(std::string_view part, std::string_view other)
{
    std::string text = whole;
    const size_t at = text.find(part);
    EXPECT_NE(at, text.npos) << part;
    return at == text.npos ? text : text.replace(at, part.size(), other);
}

TEST_F(HostFieldsTest, TheWholeIsAccepted)
{
    import_file(whole);
    EXPECT_OK(ctx);
    EXPECT_EQ(
        codes(),
        "objects-left-out\nobjects-left-out\ncolumn-computed dbo.T.C\nunique-nullable dbo.T.B\nindex-included dbo.T");
}

TEST_F(HostFieldsTest, NullCountsAsAbsent)
{
    import_file(with(R"("seed":"1")", R"("seed":null)"));
    EXPECT_OK(ctx);
    import_file(with(R"("on_delete":"SET_NULL")", R"("on_delete":null)"));
    EXPECT_ERROR(ctx, KT_ERR_KEY_NOT_FOUND, "tables[0].fks[0].on_delete is missing");
    reset();
}

TEST_F(HostFieldsTest, Refused)
{
    const struct {
        const char *part;
        const char *other;
        uint64_t code;
        const char *message;
    } cases[] = {
        {R"("sqlserver-catalogue")", "1", KT_ERR_WRONG_TYPE, "format is not a text"},
        {R"("sqlserver-catalogue")", R"("other")", KT_ERR_UNEXPECTED_VALUE,
         "format is 'other', not 'sqlserver-catalogue'"},
        {R"("format_version":1)", R"("format_version":2)", KT_ERR_UNEXPECTED_VALUE,
         "format_version is 2; this program reads version 1"},
        {R"("format_version":1)", R"("format_version":"1")", KT_ERR_WRONG_TYPE, "format_version is not a whole number"},
        {R"({"name":"Shop","can_view_definitions":true})", "[]", KT_ERR_WRONG_TYPE, "database is not an object"},
        {R"("can_view_definitions":true)", R"("can_view_definitions":1)", KT_ERR_WRONG_TYPE,
         "database.can_view_definitions is not true or false"},
        {R"("id":7)", R"("id":7.0)", KT_ERR_WRONG_TYPE, "tables[0].id is not a whole number"},
        {R"("id":7,)", "", KT_ERR_KEY_NOT_FOUND, "tables[0].id is missing"},
        {R"("schema":"dbo",)", "", KT_ERR_KEY_NOT_FOUND, "tables[0].schema is missing"},
        {R"("name":"T")", R"("name":["T"])", KT_ERR_WRONG_TYPE, "tables[0].name is not a text"},
        {R"("name":"A","system_type_id")", R"("name":3,"system_type_id")", KT_ERR_WRONG_TYPE,
         "tables[0].columns[0].name is not a text"},
        {R"({"id":2,"name":"B")", R"({"name":"B")", KT_ERR_KEY_NOT_FOUND, "tables[0].columns[1].id is missing"},
        {R"("max_length":4,"precision":10)", R"("max_length":-2,"precision":10)", KT_ERR_UNEXPECTED_VALUE,
         "tables[0].columns[0].max_length is -2, not a number from -1 to 2147483647"},
        {R"("precision":10)", R"("precision":256)", KT_ERR_UNEXPECTED_VALUE,
         "tables[0].columns[0].precision is 256, not a number from 0 to 255"},
        {R"("is_identity":true)", R"("is_identity":"true")", KT_ERR_WRONG_TYPE,
         "tables[0].columns[0].is_identity is not true or false"},
        {R"("seed":"1")", R"("seed":1)", KT_ERR_WRONG_TYPE, "tables[0].columns[0].identity.seed is not a text"},
        {R"({"seed":"1","increment":"1","last":"9"})", R"("x")", KT_ERR_WRONG_TYPE,
         "tables[0].columns[0].identity is not an object"},
        {R"x("definition":"((1))")x", R"("definition":1)", KT_ERR_WRONG_TYPE,
         "tables[0].columns[1].default.definition is not a text"},
        {R"x({"definition":"([A])","is_persisted":true})x", "true", KT_ERR_WRONG_TYPE,
         "tables[0].columns[2].computed is not an object"},
        {R"([{"name":"A","descending":false}])", R"({"name":"A"})", KT_ERR_WRONG_TYPE,
         "tables[0].pk.columns is not a list"},
        {R"([{"name":"A","descending":false}])", R"(["A"])", KT_ERR_WRONG_TYPE,
         "tables[0].pk.columns[0] is not an object"},
        {R"([{"name":"A"},{"name":"B"}])", R"([{"name":"A"},{"name":0}])", KT_ERR_WRONG_TYPE,
         "tables[0].uniques[0].columns[1].name is not a text"},
        {R"("kind":"index")", R"("kind":false)", KT_ERR_WRONG_TYPE, "tables[0].uniques[0].kind is not a text"},
        {R"("on_update":"NO_ACTION")", R"("on_update":"RESTRICT")", KT_ERR_UNEXPECTED_VALUE,
         "tables[0].fks[0].on_update is 'RESTRICT', none of NO_ACTION, CASCADE, SET_NULL, SET_DEFAULT"},
        {R"("ref_column":"A")", R"("ref_column":1)", KT_ERR_WRONG_TYPE,
         "tables[0].fks[0].columns[0].ref_column is not a text"},
        {R"("descending":true)", R"("descending":1)", KT_ERR_WRONG_TYPE,
         "tables[0].indexes[0].columns[0].descending is not true or false"},
        {R"("name":"IX",)", "", KT_ERR_KEY_NOT_FOUND, "tables[0].indexes[0].name is missing"},
        {R"("included":[{"name":"A"}])", R"("included":[1])", KT_ERR_WRONG_TYPE,
         "tables[0].indexes[0].included[0] is not an object"},
        {R"("row_count":12)", R"("row_count":-1)", KT_ERR_UNEXPECTED_VALUE,
         "tables[0].row_count is -1, not a number from 0 to 9223372036854775807"},
        {R"("start":"1")", R"("start":1)", KT_ERR_WRONG_TYPE, "sequences[0].start is not a text"},
        {R"({"kind":"views")", R"({"kind":{})", KT_ERR_WRONG_TYPE, "objects[0].kind is not a text"},
        {R"x("definition":"([A]>(0))","column")x", R"("definition":{},"column")", KT_ERR_WRONG_TYPE,
         "tables[0].checks[0].definition is not a text"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        import_file(with(c.part, c.other));
        EXPECT_ERROR(ctx, c.code, c.message);
        EXPECT_EQ(schema, nullptr);
        EXPECT_EQ(findings, nullptr);
        reset();
    }
}

TEST_F(HostFieldsTest, TablesMustBeAListOfObjects)
{
    import_file(R"({"tables":{}})");
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "tables is not a list");
    reset();
    import_file("[{}, 3]");
    EXPECT_ERROR(ctx, KT_ERR_KEY_NOT_FOUND, "tables[0].id is missing");
    reset();
    import_file("[\"3\"]");
    EXPECT_ERROR(ctx, KT_ERR_WRONG_TYPE, "tables[0] is not an object");
    reset();
}

TEST_F(HostFieldsTest, UnknownFieldsAreReportedOnceWhenAskedFor)
{
    const std::string file = with(R"("temporal_type":0)", R"("temporal_type":0,"new":1,"columns2":[])");
    const std::string twice = std::string(file).replace(file.find(R"("exported_at":"x")"), 17, R"("new":{"a":1})");
    import_file(twice);
    EXPECT_EQ(
        codes(),
        "objects-left-out\nobjects-left-out\ncolumn-computed dbo.T.C\nunique-nullable dbo.T.B\nindex-included dbo.T");
    tov_host_options options{};
    options.verbose = true;
    import_file(twice, &options);
    EXPECT_OK(ctx);
    EXPECT_EQ(lines().substr(0, lines().find("\nobjects-left-out")),
              "unknown-field: ignored: no field of this name is known: new\n"
              "unknown-field: ignored: no field of this name is known: columns2");
}
