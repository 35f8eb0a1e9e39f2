// Every exported operation with its memory running out: at its 1st, 2nd, 3rd ... allocation, once or from there on.
// Each time it says so, leaks nothing, writes no output, leaves what it worked on as it was, and then succeeds.
#include "document_operations.h"
#include "failing_alloc.h"
#include "kt_test.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <vector>

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

constexpr uint32_t filler_count = 600;
// How many of the smallest blocks a tree has left, so that its next chunk is needed at different steps of a call.
constexpr uint32_t rooms_left[] = {0, 1, 2, 4, 8, 16};

class EveryOperation : public ContextTest {
  protected:
    // A tree whose first member is there to have its values replaced by larger ones.
    KT_vhash *fillable(const std::string &members)
    {
        std::string json = R"({"fillers":{)";
        for (uint32_t n = 0; n < filler_count; n++)
            json += (n ? ",\"" : "\"") + std::to_string(n) + "\":null";
        return parsed(json + "}," + members + "}");
    }
    KT_vhash *parsed(const std::string &json)
    {
        KT_vhash *tree = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &tree, json.c_str());
        EXPECT_OK(ctx);
        return tree;
    }
    // Takes so many of the smallest blocks that a tree gives, or those that there is room for, which it tells.
    uint32_t fill(KT_vhash *tree, uint32_t count)
    {
        KT_vhash *fillers = nullptr;
        KT_vhash__get__vhash(ctx, tree, "fillers", &fillers);
        for (uint32_t n = 0; n < count; n++) {
            KT_vhash__update__string__sz(ctx, fillers, std::to_string(n).c_str(), "14 characters.");
            if (KT_context__has_err(ctx)) {
                reset();
                return n;
            }
        }
        return count;
    }
    // The number of smallest blocks that a tree of these members has room for without taking memory.
    uint32_t room_of(const std::string &members)
    {
        const auto known = rooms.find(members);
        if (known != rooms.end())
            return known->second;
        KT_vhash *tree = fillable(members);
        uint32_t room = 0;
        {
            kt_failing_alloc fault{kt_failing_alloc::mode::from_there_on};
            fault.next();
            room = fill(tree, filler_count);
            EXPECT_TRUE(fault.fired()) << "more fillers are needed";
        }
        KT_vhash__free(ctx, tree);
        return rooms[members] = room;
    }
    KT_vhash *filled(const std::string &members, uint32_t left)
    {
        KT_vhash *tree = fillable(members);
        const uint32_t room = room_of(members);
        fill(tree, room - std::min(room, left));
        return tree;
    }
    tov_schema *filled_schema(const std::string &members, uint32_t left)
    {
        KT_vhash *trees[] = {filled(members, left), filled(host_internals, left)};
        tov_schema *schema = nullptr;
        tov_schema__alloc__vhash(ctx, &trees[0], &trees[1], &schema);
        EXPECT_OK(ctx);
        return schema;
    }
    void measure_rooms()
    {
        for (const std::string &members : {std::string(document) + settings, std::string(other_document),
                                           std::string(host_internals), std::string(values)})
            room_of(members);
    }
    stage set_up(uint32_t left)
    {
        stage s{};
        s.schema = filled_schema(std::string(document) + settings, left);
        s.other = filled_schema(other_document, left);
        s.map = filled(values, left);
        KT_vhash__get__varray(ctx, s.map, "varray", &s.list);
        s.trees[0] = parsed(std::string("{") + document + "}");
        s.trees[1] = parsed(std::string("{") + host_internals + "}");
        s.lite = parsed(lite_document);
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
    void tear_down(stage &s)
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
    void free_outcome(outcome &o)
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
    std::string written(tov_schema *schema)
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
    // All that a call may have changed.
    std::string written(const stage &s)
    {
        std::string text = s.string ? KT_string__sz(s.string) : "null";
        uint32_t count = 0;
        if (s.set)
            KT_nullhash__count(ctx, s.set, &count);
        text += " " + std::to_string(count) + "\n" + written(s.schema) + "\n" + written(s.other);
        for (const KT_vhash *map : {s.map, s.trees[0], s.trees[1], s.lite, s.cols})
            text += "\n" + json_of(ctx, map);
        EXPECT_OK(ctx);
        return text;
    }
    // Looks at a call that failed, and makes it again with all the memory it wants.
    void expect_recovery(const operation &row, stage &s, outcome &o, const std::string &before)
    {
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_GT(KT_context__count_err_stackframes(ctx), 0u);
        reset();
        if (row.memory != need::outputs) {
            EXPECT_TRUE(o == outcome{}) << "wrote an output";
        }
        const std::string after = written(s);
        if (row.memory != need::part && row.memory != need::record) {
            EXPECT_TRUE(after == before) << "left a change";
        }
        row.run(ctx, s, o);
        if (row.memory == need::record && after != before) {
            EXPECT_FAILED(ctx, KT_ERR_DUPLICATE_KEY);
        } else {
            EXPECT_OK(ctx);
        }
        reset();
    }
    // Makes the allocation whose turn it is fail, and tells what the call left once it has succeeded, at the second
    // attempt if not at the first. False when the call makes fewer allocations.
    bool run_once(const operation &row, kt_failing_alloc &fault, uint32_t left, std::string *result)
    {
        fault.pause();
        stage s = set_up(left);
        const std::string before = written(s);
        outcome o;
        fault.next();
        row.run(ctx, s, o);
        const bool fired = fault.fired();
        fault.pause();
        EXPECT_EQ(KT_context__has_err(ctx) != 0, fired);
        if (KT_context__has_err(ctx)) {
            failures++;
            expect_recovery(row, s, o, before);
        }
        if (row.memory == need::nothing) {
            EXPECT_FALSE(fired);
        }
        *result = written(s);
        free_outcome(o);
        tear_down(s);
        EXPECT_EQ(fault.leaked(), 0u);
        return fired;
    }
    void sweep(const operation &row, kt_failing_alloc::mode how)
    {
        const size_t failures_before = failures;
        for (const uint32_t left : rooms_left) {
            kt_failing_alloc fault{how};
            std::vector<std::string> results(1);
            while (run_once(row, fault, left, &results.back()))
                results.emplace_back();
            const auto is_last = [&](const std::string &result) { return result == results.back(); };
            EXPECT_TRUE(row.memory == need::record || std::all_of(results.begin(), results.end(), is_last))
                << "the second attempt left something else";
        }
        EXPECT_EQ(failures > failures_before, row.memory != need::nothing);
    }

    std::map<std::string, uint32_t> rooms;
    size_t failures = 0; // calls that failed
};

std::vector<std::string> exported_names()
{
    std::vector<std::string> names;
    std::ifstream file{TOV_EXPORTS};
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line[0] != '#')
            names.push_back(line);
    }
    return names;
}

} // namespace

TEST_F(EveryOperation, IsInTheTable)
{
    std::vector<std::string> names;
    for (const operation &row : every_operation())
        names.push_back(row.name);
    for (const exempted &e : operations_without_a_row())
        names.push_back(e.name);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, exported_names());
}

TEST_F(EveryOperation, SurvivesOneFailedAllocation)
{
    measure_rooms();
    for (const operation &row : every_operation()) {
        SCOPED_TRACE(row.name);
        sweep(row, kt_failing_alloc::mode::once);
    }
    RecordProperty("failures", std::to_string(failures));
}

TEST_F(EveryOperation, SurvivesTheEndOfMemory)
{
    measure_rooms();
    for (const operation &row : every_operation()) {
        SCOPED_TRACE(row.name);
        sweep(row, kt_failing_alloc::mode::from_there_on);
    }
    RecordProperty("failures", std::to_string(failures));
}
