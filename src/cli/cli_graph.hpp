// Tables and references as a graph, and the parts of it that a picture has room for.
#pragma once

#include "cli_references.hpp"

#include <map>

struct cli_graph_node {
    std::string id;
    std::string name;
    std::string schema; // on the server, "" where the document does not say
    std::vector<std::string> key;
    std::vector<cli_reference> references;
    size_t cycle = 0; // the number of the cycle that the table is in, from 1; a table is in one at most
};

struct cli_graph {
    std::vector<cli_graph_node> nodes;
    std::map<std::string, size_t> index; // by id
};

cli_graph cli_read_graph(KT_context *ctx, tov_schema *schema);

// The table that a reference points to; null for one that is not in the graph.
const cli_graph_node *cli_graph_target(const cli_graph &g, const cli_reference &reference);

// What a picture shows of a graph.
struct cli_graph_part {
    std::string around; // the id of the table that it begins with, "" for all tables
    size_t depth = 1;   // how many references away from it tables may be, whichever way these go
    size_t limit = 0;   // how many tables there may be, 0 for any number
};

// Keeps a part: the tables that are nearest, or of all tables those with the most neighbours, in the order that they
// had. Gives how many there would be without the limit.
size_t cli_narrow_graph(cli_graph *g, const cli_graph_part &part);
