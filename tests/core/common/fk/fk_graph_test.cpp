#include "fk/fk_graph.hpp"

#include "fk_test.hpp"

namespace {

// The arcs of each position, e.g. "1,2 - 0": "-" for none.
std::string text_of(const fk_arcs &arcs)
{
    std::string text;
    for (uint32_t p = 0; p < arcs.count(); p++) {
        std::string list;
        for (uint32_t n = arcs.first[p]; n < arcs.first[p + 1]; n++)
            list += joined({list.empty() ? "" : ",", std::to_string(arcs.to[n])});
        text += joined({p ? " " : "", list.empty() ? "-" : list});
    }
    return text;
}

std::string text_of(const fk_array<bool> &flags)
{
    std::string text;
    for (uint32_t n = 0; n < flags.count; n++)
        text += flags[n] ? '1' : '0';
    return text;
}

} // namespace

TEST_F(FkTest, GraphOfAnEmptySchema)
{
    fk_graph graph{ctx};
    fk_arcs reversed{ctx};
    fk_read_graph(ctx, schema, fk_match::exactly, &graph);
    fk_reverse_arcs(ctx, graph.arcs, &reversed);
    EXPECT_OK(ctx);
    EXPECT_EQ(graph.arcs.count(), 0u);
    EXPECT_EQ(reversed.count(), 0u);
}

TEST_F(FkTest, GraphHoldsReferencesByPosition)
{
    tbls("a>b,c b c=a,b d>D e>nowhere f>A");
    fk_graph exact{ctx};
    fk_read_graph(ctx, schema, fk_match::exactly, &exact);
    EXPECT_OK(ctx);
    EXPECT_EQ(text_of(exact.arcs), "1,2 - 0,1 - - -");
    EXPECT_EQ(text_of(exact.refers), "101111");
    EXPECT_EQ(text_of(exact.refers_to_itself), "000100");
    fk_graph alike{ctx};
    fk_read_graph(ctx, schema, fk_match::like_a_lookup, &alike);
    EXPECT_OK(ctx);
    EXPECT_EQ(text_of(alike.arcs), "1,2 - 0,1 - - 0");
    EXPECT_EQ(text_of(alike.refers_to_itself), "000100");
}

TEST_F(FkTest, GraphBackwards)
{
    tbls("a>b,c b c=a,b d>a,b,b");
    fk_graph graph{ctx};
    fk_arcs reversed{ctx};
    fk_read_graph(ctx, schema, fk_match::exactly, &graph);
    fk_reverse_arcs(ctx, graph.arcs, &reversed);
    EXPECT_OK(ctx);
    EXPECT_EQ(text_of(reversed), "2,3 0,2,3,3 0 -");
}
