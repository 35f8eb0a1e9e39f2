// Documents that are valid JSON but of the wrong shape: at every place of a full document and of full host internals
// stands, in turn, a value of each kind that does not belong there, or nothing. Operations may fail on them, in order.
#include "read_everything.hpp"
#include "schema_test.hpp"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

// Every key that a schema can hold, at least once.
// clang-format off
constexpr const char *full_document = R"json({"compat_level":5,
"tbls":{
 "p":{"name":"Parent","txid":42,
  "cols":{
   "id":{"name":"Id","type":{"name":"identity","constraint_name":"PK_P"},"mssql_col_data_type":"int","notnull":{"name":"NN"}},
   "code":{"name":"Code","type":{"name":"text","fixed_width":true,"locale":"en","noaccent":false,"nocase":true,"_KS":true,
     "_WS":true,"_SC":true,"unicode":true,"width":10},"mssql_col_data_type":"nchar","defval":{"expr":"'x'","name":"DF"},
     "check":[{"expr":"([Code]<>'')","name":"CK"}]},
   "bin":{"name":"Bin","type":{"name":"text","binary":true,"unicode":false,"width":3}}},
  "uniques":{"u":{"code":null,"id":null}},
  "check":{"c":{"expr":"length(Code)>0"}}},
 "c":{"name":"Child","txid":7,
  "cols":{
   "a":{"name":"A","type":{"name":"sint32"},"fk":{"name":"FK_A","ref_tbl_id":"p","ref_col_id":"id","deferred":true,
     "on_delete":"SET DEFAULT","on_update":"CASCADE"}},
   "b":{"name":"B","type":{"name":"blob","fixed_width":false,"width":0},"mssql_col_data_type":"varbinary"},
   "d":{"name":"D","type":{"name":"decimal","precision":10,"scale":2}},
   "t":{"name":"T","type":{"name":"time","precision":3}}},
  "pk":{"name":"PK_C","cols":{"a":null,"d":null}},
  "foreignkeys":{"f":{"cols":{"a":"id","b":"code"},"name":"FK_F","ref_tbl_id":"p","deferred":false,
    "on_delete":"CASCADE","on_update":"SET NULL"}}}},
"filter_id":7,
"backend":{"name":"host","api":"odbc","indistinct_unique_nulls":true}})json";

constexpr const char *full_host_internals = R"json({
"unprep-cols":{"c":{"g":{"name":"G","type":{"name":"host","host_type":"geography"},"mssql_col_data_type":"geography"}}},
"col-dump-txids":{"c":{"a":9}},"col-dump-gen":{"c":{"a":3}},"collations":{"c":{"a":"Latin1_General_CI_AS"}},
"defvals":{"c":{"a":"((0))"}},"fk-rules":{"c":{"f":{"violation-on-insert":3}}}})json";
// clang-format on

constexpr const char *other_values[] = {
    "-1", "4294967296", "1.5e300", R"("text")", "null", "true", "[]", R"([{"a":[]}])", R"({"a":{"a":{}}})",
};

size_t end_of_text(std::string_view json, size_t at)
{
    for (at++; json[at] != '"'; at++)
        at += json[at] == '\\';
    return at + 1;
}

size_t end_of_value(std::string_view json, size_t at)
{
    if (json[at] == '"')
        return end_of_text(json, at);
    int depth = 0;
    do {
        if (json[at] == '"')
            at = end_of_text(json, at) - 1;
        depth += json[at] == '{' || json[at] == '[';
        depth -= json[at] == '}' || json[at] == ']';
        at++;
    } while (depth > 0 || std::string_view(",}]").find(json[at]) == std::string_view::npos);
    return at;
}

struct place {
    size_t begin, end;
};

// Where values stand: after each ":" and at the first value of each list.
std::vector<place> places_of(std::string_view json)
{
    std::vector<place> places;
    for (size_t at = 0; at < json.size(); at++) {
        if (json[at] == '"')
            at = end_of_text(json, at);
        if (json[at] == ':' || json[at] == '[')
            places.push_back({at + 1, end_of_value(json, at + 1)});
    }
    return places;
}

std::string replaced(std::string_view json, const place &where, std::string_view value)
{
    return std::string(json.substr(0, where.begin)).append(value).append(json.substr(where.end));
}

class ShapesTest : public SchemaTest {
  protected:
    KT_vhash *parsed(const std::string &json)
    {
        KT_vhash *map = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &map, json.c_str());
        EXPECT_OK(ctx);
        return map;
    }
    void load_both(const std::string &document, const std::string &host_internals)
    {
        tov_schema__nullfree(ctx, &schema);
        KT_vhash *trees[] = {parsed(document), parsed(host_internals)};
        tov_schema__alloc__vhash(ctx, &trees[0], &trees[1], &schema);
        ASSERT_OK(ctx);
    }
    reading read_all()
    {
        reading r{ctx, schema};
        read_everything(r);
        EXPECT_EQ(r.complaint, "");
        EXPECT_OK(ctx);
        return r;
    }
    // Every operation that writes, on what the document should hold at those places.
    uint32_t write_all();
};

uint32_t ShapesTest::write_all()
{
    uint32_t failures = 0;
    auto ended = [&] {
        failures += KT_context__has_err(ctx) ? 1u : 0u;
        reset();
    };
    tov_schema__add_tbl(ctx, schema, "new", "New", 1), ended();
    tov_schema__set_tbl_name(ctx, schema, "c", "Other"), ended();
    tov_schema__add_col(ctx, schema, "c", "n", "N", 1, 5, 6), ended();
    tov_schema__add_col(ctx, schema, "c", "u", "U", 0, 5, 6), ended();
    tov_schema__set_col_name(ctx, schema, "c", "a", "AA"), ended();
    tov_schema__set_filter_id(ctx, schema, 3), ended();
    tov_schema__set_backend_info__name(ctx, schema, "x"), ended();
    tov_schema__set_backend_info__api(ctx, schema, "x"), ended();
    tov_schema__set_backend_info__indistinct_unique_nulls(ctx, schema, 0), ended();
    tov_schema__set_col_type_text(ctx, schema, "c", "a", "coll", "loc", 0, 1, 1, 1, 1, 1, 1, 1, 9), ended();
    tov_schema__set_col_type_datetime(ctx, schema, "c", "g", 3, "smalldatetime"), ended();
    tov_schema__set_mssql_col_type_name(ctx, schema, "c", "a", "int"), ended();
    tov_schema__set_host_collation(ctx, schema, "c", "a", "x"), ended();
    tov_schema__set_host_defval(ctx, schema, "c", "a", "x"), ended();
    tov_schema__set_colcon_notnull(ctx, schema, "p", "id", 1, "NN"), ended();
    tov_schema__set_colcon_defval(ctx, schema, "p", "code", 1, "DF", "1"), ended();
    tov_schema__add_colcon_check(ctx, schema, "p", "code", "CK", "(1)"), ended();
    tov_schema__set_pk_name(ctx, schema, "c", "PK"), ended();
    tov_schema__add_to_pk(ctx, schema, "c", "b"), ended();
    tov_schema__add_to_unique_constraint(ctx, schema, "p", "bin", "u"), ended();
    tov_schema__add_check_constraint(ctx, schema, "p", "c", "1"), ended();
    tov_schema__create_foreignkey(ctx, schema, "f", "n", "c", "p", 1, "CASCADE", "CASCADE", 4), ended();
    tov_schema__add_to_foreignkey(ctx, schema, "c", "f", "d", "bin"), ended();
    tov_schema__set_colcon_fk(ctx, schema, "c", "a", 1, "g", "n", "p", "id", 1, "CASCADE", "CASCADE", 2), ended();
    tov_schema__nevermind_foreignkey(ctx, schema, "c", "f"), ended();
    return failures;
}

} // namespace

TEST_F(ShapesTest, FullTreesAnswerAndTakeEverything)
{
    load_both(full_document, full_host_internals);
    const reading r = read_all();
    EXPECT_GT(r.answers, r.failures); // failures: ids that are not there, questions that do not fit the column
    EXPECT_FALSE(r.has_tbl_cycle || r.has_col_cycle);
    EXPECT_EQ(write_all(), 0u);
    EXPECT_EQ(places_of(full_document).size(), 102u);
    EXPECT_EQ(places_of(full_host_internals).size(), 24u);
}

TEST_F(ShapesTest, WrongValuesInTheDocument)
{
    uint64_t failures = 0;
    for (const place &where : places_of(full_document)) {
        for (const char *value : other_values) {
            const std::string document = replaced(full_document, where, value);
            SCOPED_TRACE(document.substr(where.begin - std::min<size_t>(where.begin, 30), 60));
            load_both(document, full_host_internals);
            failures += read_all().failures;
            write_all();
            read_all();
        }
    }
    EXPECT_GT(failures, 0u);
}

TEST_F(ShapesTest, WrongValuesInTheHostInternals)
{
    for (const place &where : places_of(full_host_internals)) {
        for (const char *value : other_values) {
            const std::string host_internals = replaced(full_host_internals, where, value);
            SCOPED_TRACE(host_internals.substr(where.begin - std::min<size_t>(where.begin, 30), 60));
            load_both(full_document, host_internals);
            read_all();
            write_all();
            read_all();
        }
    }
}
