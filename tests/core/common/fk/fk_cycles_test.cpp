#include "fk_test.hpp"

#include <set>
#include <vector>

namespace {

struct cycles_case {
    const char *name;
    const char *tbls; // see FkTest::tbls()
    const char *expected;
};

const cycles_case cycles_cases[] = {
    {"a schema without tables has no cycle", "", "(null)"},
    {"a chain is not a cycle", "a>b b>c c", "(null)"},
    {"nor are two ways to one table", "a>b,c b>d c>d d", "(null)"},
    {"a table that only refers to itself is not a cycle", "a>a b>a,b", "(null)"},
    {"two tables that refer to each other are one", "a>b b>a", R"({"tbls":["a","b"]})"},
    {"members stand in schema order", "c>a b>c a>b", R"({"tbls":["c","b","a"]})"},
    {"what hangs on a cycle is not part of it", "x>a a>b b>a,y y", R"({"tbls":["a","b"]})"},
    {"cycles that share a table are one", "a>b b>a,c c>b", R"({"tbls":["a","b","c"]})"},
    {"cycles stand in the order of their first members", "a>d b>c c>b,a d>a",
     "{\"tbls\":[\"a\",\"d\"]}\n{\"tbls\":[\"b\",\"c\"]}"},
    {"table-level keys count like column-level ones", "a=b b>a", R"({"tbls":["a","b"]})"},
    {"a reference may be in another letter case", "a>B b>A", R"({"tbls":["a","b"]})"},
    {"a reference that leads nowhere is not an error", "a>b,nowhere b>a", R"({"tbls":["a","b"]})"},
};

// The cycles of a graph by asking of each pair of tables whether each reaches the other.
std::string plain_tbl_cycles(KT_context *ctx, tov_schema *schema)
{
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    std::vector<std::vector<bool>> reaches(count, std::vector<bool>(count));
    std::vector<std::string> ids(count);
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        tov_schema__get_nth_tbl_id(ctx, schema, n, &id);
        ids[n] = id;
    }
    for (uint32_t n = 0; n < count; n++) {
        KT_nullhash *refs = nullptr;
        tov_schema__list_tbls_referenced_by(ctx, schema, ids[n].c_str(), &refs);
        std::istringstream words{take(ctx, refs)};
        for (std::string ref; words >> ref;) {
            for (uint32_t to = 0; to < count; to++) {
                if (KT_stricmp(ref.c_str(), ids[to].c_str()) == 0)
                    reaches[n][to] = true;
            }
        }
    }
    for (uint32_t by = 0; by < count; by++) {
        for (uint32_t a = 0; a < count; a++) {
            for (uint32_t b = 0; b < count; b++)
                reaches[a][b] = reaches[a][b] || (reaches[a][by] && reaches[by][b]);
        }
    }
    std::string result;
    for (uint32_t n = 0; n < count; n++) {
        std::string members;
        uint32_t first = count;
        for (uint32_t other = 0; other < count; other++) {
            if (other != n && !(reaches[n][other] && reaches[other][n]))
                continue;
            first = first == count ? other : first;
            members += joined({members.empty() ? "\"" : ",\"", ids[other], "\""});
        }
        if (first == n && members.find(',') != std::string::npos)
            result += joined({result.empty() ? "" : "\n", "{\"tbls\":[", members, "]}"});
    }
    return result.empty() ? "(null)" : result;
}

} // namespace

TEST_F(FkTest, TblCycles)
{
    for (const cycles_case &c : cycles_cases) {
        SCOPED_TRACE(c.name);
        reset_schema();
        tbls(c.tbls);
        KT_varray *cycles = nullptr;
        tov_schema__find_reference_cycles(ctx, schema, &cycles, nullptr);
        EXPECT_OK(ctx);
        EXPECT_EQ(take_records(ctx, cycles), c.expected);
    }
}

TEST_F(FkTest, CyclesAreWrittenWhereTheyAreWanted)
{
    tbls("a>b b>a");
    tov_schema__find_reference_cycles(ctx, schema, nullptr, nullptr);
    EXPECT_OK(ctx);
    KT_varray *tbl_cycles = nullptr;
    auto *col_cycles = reinterpret_cast<KT_varray *>(this);
    tov_schema__find_reference_cycles(ctx, schema, &tbl_cycles, &col_cycles);
    EXPECT_OK(ctx);
    EXPECT_EQ(take_records(ctx, tbl_cycles), R"({"tbls":["a","b"]})");
    EXPECT_EQ(col_cycles, nullptr) << "null where there is none, whatever stood there";
}

TEST_F(FkTest, CyclesFailWithWhatTheyMeet)
{
    load(R"({"tbls":{"a":{"cols":{"c":{"fk":{}}}}}})");
    auto *untouched = reinterpret_cast<KT_varray *>(this);
    KT_varray *tbl_cycles = untouched;
    KT_varray *col_cycles = untouched;
    tov_schema__find_reference_cycles(ctx, schema, &tbl_cycles, &col_cycles);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "the reference of col id 'c' in tbl id 'a' names no table");
    EXPECT_EQ(tbl_cycles, untouched);
    EXPECT_EQ(col_cycles, untouched);
    reset();
}

TEST_F(FkTest, CyclesReportMemoryThatRunsOut)
{
    tbls("a=b b>a x d>e e=d");
    col("x", "id");
    refer("x", "id", "X", "ID");
    key("kx", "x", "x", {{"Id", "id"}, {"id", "Id"}});
    KT_varray *tbl_cycles = nullptr;
    KT_varray *col_cycles = nullptr;
    sweep_allocations(ctx, &tbl_cycles, [&] { tov_schema__find_reference_cycles(ctx, schema, &tbl_cycles, nullptr); });
    sweep_allocations(ctx, &col_cycles, [&] { tov_schema__find_reference_cycles(ctx, schema, nullptr, &col_cycles); });
    EXPECT_EQ(take_records(ctx, tbl_cycles), "{\"tbls\":[\"a\",\"b\"]}\n{\"tbls\":[\"d\",\"e\"]}");
    EXPECT_EQ(take_records(ctx, col_cycles), R"({"cols":[{"tbl":"x","col":"id"}]})");
}

TEST_F(FkTest, TblCyclesAreThoseOfPlainReachability)
{
    int with_cycles = 0;
    for (uint32_t seed = 0; seed < 2000; seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(
            random.document({.tbls = 2 + seed % 12, .cols = 3, .fk_percent = seed % 90, .keys = 1 + seed % 2}).c_str());
        KT_varray *cycles = nullptr;
        tov_schema__find_reference_cycles(ctx, schema, &cycles, nullptr);
        ASSERT_OK(ctx);
        with_cycles += cycles != nullptr;
        ASSERT_EQ(take_records(ctx, cycles), plain_tbl_cycles(ctx, schema)) << document();
    }
    EXPECT_GT(with_cycles, 500);
    EXPECT_LT(with_cycles, 1500);
}

TEST_F(FkTest, CyclesOfOneLongCircle)
{
    const unsigned count = 100000;
    std::string text = R"({"tbls":{)";
    for (unsigned n = 0; n < count; n++)
        text += joined({n ? ",\"" : "\"", std::to_string(n),
                        R"(":{"cols":{"id":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":")",
                        std::to_string((n + 1) % count), R"(","ref_col_id":"id"}}}})"});
    load((text + "}}").c_str());
    KT_varray *tbl_cycles = nullptr;
    KT_varray *col_cycles = nullptr;
    tov_schema__find_reference_cycles(ctx, schema, &tbl_cycles, &col_cycles);
    ASSERT_OK(ctx);
    for (const auto &[records, key] : {std::pair{tbl_cycles, "tbls"}, std::pair{col_cycles, "cols"}}) {
        uint32_t record_count = 0;
        uint32_t member_count = 0;
        KT_vhash *record = nullptr;
        KT_varray *members = nullptr;
        KT_varray__count(ctx, records, &record_count);
        EXPECT_EQ(record_count, 1u);
        KT_varray__get__vhash(ctx, records, 0, &record);
        KT_vhash__get__varray(ctx, record, key, &members);
        KT_varray__count(ctx, members, &member_count);
        EXPECT_EQ(member_count, count);
        KT_varray__free(ctx, records);
    }
}
