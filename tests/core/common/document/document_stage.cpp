// The stage that every operation is called on: two small schemas with something of everything, and values of all kinds.
#include "document_operations.hpp"
#include "kt_test.hpp"

namespace {

// clang-format off
constexpr char document[] = R"json("tbls":{
 "p":{"name":"Parent","txid":42,
  "cols":{
   "id":{"name":"Id","type":{"name":"identity","constraint_name":"PK_P"},"mssql_col_data_type":"int"},
   "code":{"name":"Code","type":{"name":"text","fixed_width":true,"locale":"en","nocase":true,"unicode":true,"width":10},
     "mssql_col_data_type":"nchar","defval":{"expr":"'x'","name":"DF"},"check":[{"expr":"([Code]<>'')","name":"CK"}]},
   "bin":{"name":"Bin","type":{"name":"text","binary":true,"unicode":false,"width":3}},
   "new":{"name":"New"}},
  "uniques":{"u":{"code":null,"id":null}},
  "check":{"c":{"expr":"length(Code)>0"}}},
 "c":{"name":"Child","txid":7,
  "cols":{
   "a":{"name":"A","type":{"name":"sint32"},"mssql_col_data_type":"int","fk":{"name":"FK_A","ref_tbl_id":"p","ref_col_id":"id","deferred":true,
     "on_delete":"SET DEFAULT","on_update":"CASCADE"}},
   "b":{"name":"B","type":{"name":"blob","fixed_width":false,"width":0},"mssql_col_data_type":"varbinary"},
   "d":{"name":"D","type":{"name":"decimal","precision":10,"scale":2},"mssql_col_data_type":"decimal"},
   "t":{"name":"T","type":{"name":"time","precision":3},"mssql_col_data_type":"time"}},
  "pk":{"name":"PK_C","cols":{"a":null,"d":null}},
  "foreignkeys":{"f":{"cols":{"b":"id","t":"code"},"name":"FK_F","ref_tbl_id":"p","deferred":false,
    "on_delete":"CASCADE","on_update":"SET NULL"}}}})json";
constexpr char settings[] = R"json(,"filter_id":7,"backend":{"name":"host","api":"odbc","indistinct_unique_nulls":true})json";
constexpr char other_document[] = R"json("tbls":{
 "p":{"name":"Parent","txid":42,"cols":{"id":{"name":"Id","type":{"name":"sint32"}},"z":{"name":"Z"}}},
 "q":{"name":"Other","txid":1,"cols":{"id":{"name":"Id","type":{"name":"sint32"}}}}})json";
constexpr char host_internals[] = R"json("unprep-cols":{"c":{"g":{"name":"G","type":{"name":"host","host_type":"geography"},
"mssql_col_data_type":"geography"}}},"col-dump-txids":{"c":{"a":9}},"col-dump-gen":{"c":{"a":3}},
"collations":{"c":{"a":"Latin1_General_CI_AS"}},"defvals":{"c":{"a":"((0))"}},"fk-rules":{"c":{"f":{"violation-on-insert":3}}})json";
constexpr char values[] = R"json("sz":"text","int64":1,"vhash":{},"varray":["text",{}],"bool":true,"double":1.5)json";
constexpr char lite_document[] = R"json({"tbls":{"p":{"txid":42,"cols":{"id":{"name":"Id"}}}}})json";
// clang-format on

tov_schema *schema_of(KT_context *ctx, const tree_maker &make_tree, const std::string &members)
{
    KT_vhash *trees[] = {make_tree(members), make_tree(host_internals)};
    tov_schema *schema = nullptr;
    tov_schema__alloc__vhash(ctx, &trees[0], &trees[1], &schema);
    EXPECT_OK(ctx);
    return schema;
}

std::string written(KT_context *ctx, tov_schema *schema)
{
    if (!schema)
        return "null";
    KT_vhash *both = nullptr;
    KT_vhash__alloc(ctx, &both);
    tov_schema__copy_into_vhash(ctx, schema, both, 1);
    std::string json = json_of(ctx, both);
    KT_vhash__free(ctx, both);
    return json;
}

} // namespace

KT_vhash *tree_of(KT_context *ctx, const std::string &json)
{
    KT_vhash *tree = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &tree, json.c_str());
    EXPECT_OK(ctx);
    return tree;
}

stage make_stage(KT_context *ctx, const tree_maker &make_tree)
{
    stage s{};
    s.schema = schema_of(ctx, make_tree, std::string(document) + settings);
    s.other = schema_of(ctx, make_tree, other_document);
    s.map = make_tree(values);
    KT_vhash__get__varray(ctx, s.map, "varray", &s.list);
    s.trees[0] = tree_of(ctx, std::string("{") + document + "}");
    s.trees[1] = tree_of(ctx, std::string("{") + host_internals + "}");
    s.lite = tree_of(ctx, lite_document);
    tov_schema__get_converted_col_names_as_vhash(ctx, s.schema, "c", 1, &s.cols);
    KT_varray__alloc(ctx, &s.loose_list);
    KT_nullhash__alloc(ctx, &s.set);
    KT_nullhash__update(ctx, s.set, "p");
    KT_string__alloc__sz(ctx, &s.string, "text");
    KT_string__alloc__sz(ctx, &s.longer_string, std::string(5000, 'x').c_str());
    KT_strpool__alloc(ctx, &s.pool, 8);
    _kt_malloc(ctx, 8, &s.block);
    EXPECT_OK(ctx);
    return s;
}

void free_stage(KT_context *ctx, stage s)
{
    tov_schema__nullfree(ctx, &s.schema);
    tov_schema__nullfree(ctx, &s.other);
    for (KT_vhash *map : {s.map, s.trees[0], s.trees[1], s.lite, s.cols})
        KT_vhash__free(ctx, map);
    KT_varray__free(ctx, s.loose_list);
    KT_nullhash__free(ctx, s.set);
    KT_string__free(ctx, s.string);
    KT_string__free(ctx, s.longer_string);
    KT_strpool__free(ctx, s.pool);
    _kt_free(ctx, s.block);
}

void free_outcome(KT_context *ctx, outcome &o)
{
    _kt_free(ctx, o.block);
    _kt_free(ctx, o.text);
    KT_string__free(ctx, o.string);
    KT_strpool__free(ctx, o.pool);
    KT_vhash__free(ctx, o.map);
    KT_nullhash__free(ctx, o.set);
    for (KT_varray *list : o.lists)
        KT_varray__free(ctx, list);
    tov_schema__nullfree(ctx, &o.schema);
}

std::string written(KT_context *ctx, const stage &s)
{
    std::string text = s.string ? KT_string__sz(s.string) : "null";
    uint32_t count = 0;
    if (s.set)
        KT_nullhash__count(ctx, s.set, &count);
    text += " " + std::to_string(count) + "\n" + written(ctx, s.schema) + "\n" + written(ctx, s.other);
    for (const KT_vhash *map : {s.map, s.trees[0], s.trees[1], s.lite, s.cols})
        text += "\n" + json_of(ctx, map);
    EXPECT_OK(ctx);
    return text;
}
