#include "fk_test.hpp"

#include <algorithm>
#include <cstring>
#include <map>
#include <vector>

namespace {

using state = std::pair<std::string, std::string>; // a table and a column, as a reference writes them

std::string lower(std::string text)
{
    for (char &byte : text)
        byte = static_cast<char>(tolower(static_cast<unsigned char>(byte)));
    return text;
}

// Follows a column's references as the search for its root does, but without failing where one leads nowhere, and
// notes the circle that it runs into.
struct plain_search {
    enum verdict { no_root, root, endless };

    KT_context *ctx;
    tov_schema *schema;
    std::vector<state> path = {};
    std::vector<state> circle = {};

    verdict look_at(const char *tbl_id, const char *col_id)
    {
        const state here = {lower(tbl_id), col_id};
        const auto met = std::find(path.begin(), path.end(), here);
        if (met != path.end()) {
            circle.assign(met, path.end());
            return endless;
        }
        const char *type = nullptr;
        tov_schema__get_col_type(ctx, schema, tbl_id, col_id, &type, nullptr);
        if (KT_context__has_err(ctx)) {
            KT_context__err_reset(ctx);
            return no_root;
        }
        if (strcmp(type, "identity") == 0)
            return root;
        if (strcmp(type, "text") == 0)
            return no_root;
        path.push_back(here);
        const verdict result = follow(tbl_id, col_id);
        path.pop_back();
        return result;
    }

  private:
    verdict follow(const char *tbl_id, const char *col_id)
    {
        KT_bool has = 0;
        const char *ref_tbl_id = nullptr;
        const char *ref_col_id = nullptr;
        tov_schema__get_colcon_fk(ctx, schema, tbl_id, col_id, &has, nullptr, &ref_tbl_id, &ref_col_id, nullptr,
                                  nullptr);
        verdict result = ref_tbl_id && ref_col_id ? look_at(ref_tbl_id, ref_col_id) : no_root;
        uint32_t key_count = 0;
        tov_schema__count_foreignkeys(ctx, schema, tbl_id, &key_count);
        for (uint32_t k = 0; k < key_count && result == no_root; k++) {
            const char *fk_id = nullptr;
            uint32_t pair_count = 0;
            tov_schema__get_nth_foreignkey_id(ctx, schema, tbl_id, k, &fk_id);
            tov_schema__get_foreignkey_ref_tbl_id(ctx, schema, tbl_id, fk_id, &ref_tbl_id);
            tov_schema__count_foreignkey_cols(ctx, schema, tbl_id, fk_id, &pair_count);
            for (uint32_t n = 0; n < pair_count && result == no_root; n++) {
                const char *from = nullptr;
                tov_schema__get_nth_foreignkey_col_ids(ctx, schema, tbl_id, fk_id, n, &from, &ref_col_id);
                if (strcmp(from, col_id) == 0)
                    result = look_at(ref_tbl_id, ref_col_id);
            }
        }
        return result;
    }
};

// The circles that searches from all columns of t0 ... t9, under ids in either letter case, run into: each begins at
// its first column, and they stand in the order of these. Ids end in a digit, so schema order is that of the texts.
std::string plain_col_cycles(KT_context *ctx, tov_schema *schema)
{
    std::map<std::vector<state>, std::string> circles;
    for (char t = '0'; t <= '9'; t++) {
        for (const char letter : {'c', 'C'}) {
            for (char c = '0'; c <= '9'; c++) {
                const char tbl_id[] = {'t', t, 0};
                const char col_id[] = {letter, c, 0};
                plain_search search{ctx, schema};
                if (search.look_at(tbl_id, col_id) != plain_search::endless)
                    continue;
                std::vector<state> &circle = search.circle;
                const auto by_place = [](const state &a, const state &b) {
                    return state{a.first, lower(a.second)} < state{b.first, lower(b.second)};
                };
                std::rotate(circle.begin(), std::min_element(circle.begin(), circle.end(), by_place), circle.end());
                std::string text;
                for (state &member : circle) {
                    text += joined({text.empty() ? "" : ",", R"({"tbl":")", member.first, R"(","col":")",
                                    lower(member.second), R"("})"});
                }
                circles[circle] = text;
            }
        }
    }
    std::vector<std::pair<std::string, std::string>> lines;
    for (const auto &[circle, text] : circles)
        lines.emplace_back(joined({circle[0].first, ".", lower(circle[0].second)}),
                           joined({"{\"cols\":[", text, "]}"}));
    std::stable_sort(lines.begin(), lines.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    std::string result;
    for (const auto &line : lines)
        result += joined({result.empty() ? "" : "\n", line.second});
    return result.empty() ? "(null)" : result;
}

} // namespace

class ColCyclesTest : public FkTest {
  protected:
    // Tables a, b, c with columns id and ref.
    void SetUp() override
    {
        FkTest::SetUp();
        for (const char *tbl_id : {"a", "b", "c"}) {
            tbl(tbl_id);
            col(tbl_id, "id");
            col(tbl_id, "ref");
        }
    }
    std::string cycles()
    {
        KT_varray *records = nullptr;
        tov_schema__find_reference_cycles(ctx, schema, nullptr, &records);
        EXPECT_OK(ctx);
        return take_records(ctx, records);
    }
};

TEST_F(ColCyclesTest, ChainsAreNone)
{
    refer("a", "id", "b", "id");
    refer("b", "id", "c", "id");
    refer("c", "id", "c", "ref");
    EXPECT_EQ(cycles(), "(null)");
}

TEST_F(ColCyclesTest, AColumnThatLeadsToItselfIsOne)
{
    refer("b", "id", "b", "id");
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"b","col":"id"}]})");
}

TEST_F(ColCyclesTest, MembersStandInTheOrderInWhichTheyRefer)
{
    refer("a", "id", "c", "id");
    refer("c", "id", "b", "id");
    refer("b", "id", "a", "id");
    refer("a", "ref", "c", "id"); // only leads there
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"},{"tbl":"c","col":"id"},{"tbl":"b","col":"id"}]})");
}

TEST_F(ColCyclesTest, CyclesStandInTheOrderOfTheirFirstColumns)
{
    refer("a", "id", "c", "ref"); // the cycle at the end is met first
    refer("c", "ref", "c", "ref");
    refer("b", "id", "b", "ref");
    refer("b", "ref", "b", "id");
    EXPECT_EQ(cycles(), "{\"cols\":[{\"tbl\":\"b\",\"col\":\"id\"},{\"tbl\":\"b\",\"col\":\"ref\"}]}\n"
                        "{\"cols\":[{\"tbl\":\"c\",\"col\":\"ref\"}]}");
}

TEST_F(ColCyclesTest, PairsOfTableLevelKeysAreFollowed)
{
    key("k1", "a", "b", {{"ref", "ref"}, {"id", "id"}});
    key("k2", "b", "a", {{"id", "id"}, {"ref", "nowhere"}});
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"},{"tbl":"b","col":"id"}]})");
}

TEST_F(ColCyclesTest, ColumnsOfOtherTypesEndAWay)
{
    for (const char *type : {"uint1", "decimal", "text", "identity", "SINT32"}) {
        SCOPED_TRACE(type);
        refer("a", "id", "b", "id");
        refer("b", "id", "a", "id");
        tov_schema__set_col_type_simple(ctx, schema, "b", "id", type);
        EXPECT_EQ(cycles(), "(null)");
    }
    for (const char *type : {"sint64", "sint32", "sint16", "uint8"}) {
        SCOPED_TRACE(type);
        tov_schema__set_col_type_simple(ctx, schema, "b", "id", type);
        EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"},{"tbl":"b","col":"id"}]})");
    }
}

TEST_F(ColCyclesTest, ARootFoundFirstEndsTheSearchBeforeTheCycle)
{
    tov_schema__set_col_type_identity(ctx, schema, "c", "id", nullptr);
    refer("a", "id", "c", "id");
    key("k", "a", "a", {{"id", "id"}});
    EXPECT_EQ(cycles(), "(null)");
    refer("a", "id", "c", "ref"); // no root
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"}]})");
}

TEST_F(ColCyclesTest, ReferencesAreFollowedInAnyLetterCase)
{
    refer("a", "id", "B", "ID");
    refer("b", "id", "A", "Id");
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"},{"tbl":"b","col":"id"}]})");
}

TEST_F(ColCyclesTest, APairIsFollowedOnlyByTheIdThatItIsWrittenWith)
{
    key("k", "a", "a", {{"ID", "id"}});
    EXPECT_EQ(cycles(), "(null)");
    key("k", "a", "a", {{"ID", "ID"}});
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"}]})");
}

TEST_F(ColCyclesTest, EveryIdThatAKeyWritesBeginsASearch)
{
    key("j", "a", "b", {{"id", "id"}});
    key("k", "a", "a", {{"ID", "ID"}});
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"}]})");
}

TEST_F(ColCyclesTest, WaysThatLeadNowhereEnd)
{
    load(R"({"tbls":{"a":{"cols":{"x":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"nowhere","ref_col_id":"x"}},)"
         R"("y":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a","ref_col_id":"nothing"}},)"
         R"("z":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a"}},)"
         R"("u":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a","ref_col_id":"v"}},)"
         R"("v":{"fk":{"ref_tbl_id":"a","ref_col_id":"u"}},"w":{"type":{},"fk":{"ref_tbl_id":"a","ref_col_id":"w"}}},)"
         R"("foreignkeys":{"k":{"cols":{"gone":"x","x":"gone"},"ref_tbl_id":"a"}}}}})");
    EXPECT_EQ(cycles(), "(null)");
}

TEST_F(ColCyclesTest, UnpreparedColumnsCount)
{
    for (const char *col_id : {"u", "v"}) {
        tov_schema__add_col(ctx, schema, "b", col_id, col_id, 0, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, "b", col_id, "sint32");
    }
    refer("b", "u", "b", "v");
    refer("b", "v", "b", "u");
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"b","col":"u"},{"tbl":"b","col":"v"}]})");
    refer("b", "v", "a", "id");
    refer("a", "id", "b", "u");
    EXPECT_EQ(cycles(), R"({"cols":[{"tbl":"a","col":"id"},{"tbl":"b","col":"u"},{"tbl":"b","col":"v"}]})");
}

TEST_F(ColCyclesTest, AreThoseThatPlainSearchesRunInto)
{
    int with_cycles = 0;
    for (uint32_t seed = 0; seed < 3000; seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random.document({.tbls = 1 + seed % 6, .cols = 4, .fk_percent = seed % 100, .keys = seed % 3}).c_str());
        const std::string found = cycles();
        with_cycles += found != "(null)";
        ASSERT_EQ(found, plain_col_cycles(ctx, schema)) << document();
    }
    EXPECT_GT(with_cycles, 500);
    EXPECT_LT(with_cycles, 2500);
}
