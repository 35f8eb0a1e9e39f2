// Every exported operation with its memory running out: at its 1st, 2nd, 3rd ... allocation, once or from there on.
// Each time it says so, leaks nothing, writes no output, leaves what it worked on as it was, and then succeeds.
// And every exported operation called while the context holds an error: it does nothing.
#include "document_operations.hpp"
#include "failing_alloc.hpp"
#include "kt_test.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <vector>

namespace {

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
        return tree_of(ctx, json + "}," + members + "}");
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
    void measure_rooms()
    {
        free_stage(ctx, make_stage(ctx, [this](const std::string &members) {
                       room_of(members);
                       return fillable(members);
                   }));
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
        const std::string after = written(ctx, s);
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
        stage s = make_stage(ctx, [&](const std::string &members) { return filled(members, left); });
        const std::string before = written(ctx, s);
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
        *result = written(ctx, s);
        free_outcome(ctx, o);
        free_stage(ctx, s);
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

// The error that was there first: all that a context tells about it.
static std::string error_of(const KT_context *ctx)
{
    std::string text = std::to_string(KT_context__err_code(ctx)) + " " + KT_context__err_description(ctx);
    for (uint32_t n = 0; n < KT_context__count_err_stackframes(ctx); n++) {
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, n, &file, &line);
        text += std::string(" ") + file + ":" + std::to_string(line);
    }
    return text;
}

// Freeing is never refused: what it should have freed would be left over.
static bool is_freeing(const operation &row)
{
    return std::string(row.name).ends_with("free");
}

TEST_F(EveryOperation, DoesNothingWhileTheContextHoldsAnError)
{
    KT_context *failed = nullptr;
    KT_context__alloc(&failed);
    kt_failing_alloc fault{kt_failing_alloc::mode::never};
    for (const operation &row : every_operation()) {
        SCOPED_TRACE(row.name);
        fault.next();
        stage s = make_stage(ctx, [this](const std::string &members) { return tree_of(ctx, "{" + members + "}"); });
        const std::string before = written(ctx, s);
        KT_context__err(failed, KT_ERR_BAD_NUMBER, "earlier", 7, "an earlier failure");
        const std::string error = error_of(failed);
        outcome o;
        row.run(failed, s, o);
        EXPECT_EQ(error_of(failed), error);
        EXPECT_TRUE(o == outcome{}) << "wrote an output";
        EXPECT_TRUE(is_freeing(row) || written(ctx, s) == before) << "left a change";
        free_outcome(ctx, o);
        free_stage(ctx, s);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    KT_context__free(failed);
}
