#include "cli_graph.hpp"

#include "cli_json.hpp"
#include "cli_schema.hpp"
#include "kt_folded.hpp"

#include <algorithm>
#include <numeric>
#include <set>

static std::vector<std::string> my_key_of(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    std::vector<std::string> names;
    uint32_t count = 0;
    tov_schema__count_pk_cols(ctx, schema, tbl_id.c_str(), &count);
    cli_check(ctx, tbl_id);
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        tov_schema__get_nth_pk_col(ctx, schema, tbl_id.c_str(), n, nullptr, &name);
        cli_check(ctx, tbl_id);
        names.emplace_back(name ? name : "");
    }
    return names;
}

static std::string my_schema_of(KT_context *ctx, tov_schema *schema, const std::string &tbl_id)
{
    KT_vhash *server = nullptr;
    tov_schema__check_tbl_server(ctx, schema, tbl_id.c_str(), &server);
    cli_check(ctx, tbl_id);
    return server ? cli_text_of(ctx, server, "schema") : "";
}

static void my_index(cli_graph *g)
{
    g->index.clear();
    for (size_t n = 0; n < g->nodes.size(); n++)
        g->index[g->nodes[n].id] = n;
}

cli_graph cli_read_graph(KT_context *ctx, tov_schema *schema)
{
    cli_graph g;
    for (const std::string &id : cli_table_ids(ctx, schema)) {
        cli_graph_node table;
        table.id = id;
        table.name = cli_table_name(ctx, schema, id);
        table.schema = my_schema_of(ctx, schema, id);
        table.key = my_key_of(ctx, schema, id);
        table.references = cli_references_of(ctx, schema, id);
        g.nodes.push_back(std::move(table));
    }
    my_index(&g);
    size_t number = 0;
    for (const std::vector<std::string> &cycle : cli_table_cycles(ctx, schema)) {
        number++;
        for (const std::string &id : cycle)
            g.nodes[g.index.at(id)].cycle = number;
    }
    return g;
}

const cli_graph_node *cli_graph_target(const cli_graph &g, const cli_reference &reference)
{
    const auto found = g.index.find(kt_folded(reference.to_table));
    return found == g.index.end() ? nullptr : &g.nodes[found->second];
}

// Of each table those next to it, whichever way the reference goes; no table is next to itself.
static std::vector<std::set<size_t>> my_neighbours(const cli_graph &g)
{
    std::vector<std::set<size_t>> neighbours(g.nodes.size());
    for (size_t n = 0; n < g.nodes.size(); n++) {
        for (const cli_reference &reference : g.nodes[n].references) {
            const cli_graph_node *target = cli_graph_target(g, reference);
            const size_t other = target ? g.index.at(target->id) : n;
            if (other == n)
                continue;
            neighbours[n].insert(other);
            neighbours[other].insert(n);
        }
    }
    return neighbours;
}

// The table and those around it, the nearest first.
static std::vector<size_t> my_nearest(const std::vector<std::set<size_t>> &neighbours, size_t start, size_t depth)
{
    std::vector<size_t> found = {start};
    std::set<size_t> seen = {start};
    size_t next = 0;
    for (size_t step = 0; step < depth && next < found.size(); step++) {
        for (const size_t end = found.size(); next < end; next++) {
            for (const size_t other : neighbours[found[next]]) {
                if (seen.insert(other).second)
                    found.push_back(other);
            }
        }
    }
    return found;
}

static std::vector<size_t> my_most_connected(const std::vector<std::set<size_t>> &neighbours)
{
    std::vector<size_t> order(neighbours.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return neighbours[a].size() > neighbours[b].size(); });
    return order;
}

size_t cli_narrow_graph(cli_graph *g, const cli_graph_part &part)
{
    const std::vector<std::set<size_t>> neighbours = my_neighbours(*g);
    std::vector<size_t> kept = part.around.empty()
                                   ? my_most_connected(neighbours)
                                   : my_nearest(neighbours, g->index.at(kt_folded(part.around)), part.depth);
    const size_t count = kept.size();
    if (part.limit > 0 && count > part.limit)
        kept.resize(part.limit);
    std::sort(kept.begin(), kept.end());
    std::vector<cli_graph_node> nodes;
    nodes.reserve(kept.size());
    for (const size_t n : kept)
        nodes.push_back(std::move(g->nodes[n]));
    g->nodes = std::move(nodes);
    my_index(g);
    return count;
}
