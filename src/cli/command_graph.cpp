// tov-schema graph: tables and references as a picture, for Graphviz or Mermaid.

#include "cli_files.hpp"
#include "cli_graph.hpp"
#include "cli_harmless.hpp"
#include "cli_paths.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"

#include <map>
#include <memory>

namespace {

struct graph_options {
    std::string schema;
    std::string output = "-";
    std::string format = "dot";
    std::string around;
    int64_t depth = 1;
    int64_t limit = 60;
};

} // namespace

// Names are inside HTML-like labels in both formats.
static std::string my_label_text(const std::string &text)
{
    std::string result;
    for (const char byte : cli_harmless(text)) {
        switch (byte) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\\': // would escape what follows in a quoted id
            result += "&#92;";
            break;
        default:
            result += byte;
        }
    }
    return result;
}

// One column to a line, because the columns of a long key side by side would push the tables far apart.
static std::string my_edge_label(const cli_reference &reference)
{
    std::string label;
    for (const std::string &column : reference.from_columns)
        label += (label.empty() ? "" : "<br/>") + my_label_text(column);
    if (!reference.on_delete.empty())
        label += " (" + my_label_text(reference.on_delete) + ")";
    return label;
}

// All tables of a cycle lead to each other, so a reference between two of them is part of it.
static bool my_is_cycle_edge(const cli_graph_node &from, const cli_graph_node &to)
{
    return from.cycle && from.cycle == to.cycle && &from != &to;
}

// The tables by their schemas, in the order of the tables; one group without a name where all are in one schema.
static std::vector<std::pair<std::string, std::vector<const cli_graph_node *>>> my_groups(const cli_graph &g)
{
    std::vector<std::pair<std::string, std::vector<const cli_graph_node *>>> groups;
    std::map<std::string, size_t> index;
    for (const cli_graph_node &table : g.nodes) {
        const auto [place, is_new] = index.emplace(table.schema, groups.size());
        if (is_new)
            groups.emplace_back(table.schema, std::vector<const cli_graph_node *>());
        groups[place->second].second.push_back(&table);
    }
    if (groups.size() == 1)
        groups.front().first.clear();
    return groups;
}

static std::string my_dot_box(const cli_graph_node &table, const char *indent)
{
    std::string text = indent + ("\"" + my_label_text(table.id)) +
                       R"(" [label=<<table border="0" cellborder="1" cellspacing="0" cellpadding="4")" +
                       (table.cycle ? " color=\"red\"" : "") + "><tr><td bgcolor=\"" +
                       (table.cycle ? "mistyrose" : "lightgrey") + "\"><b>" + my_label_text(table.name) +
                       "</b></td></tr>";
    for (const std::string &column : table.key)
        text += "<tr><td align=\"left\"><u>" + my_label_text(column) + "</u></td></tr>";
    return text + "</table>>];\n";
}

static std::string my_as_dot(const cli_graph &g)
{
    std::string text =
        "digraph schema {\n    rankdir=LR;\n    node [shape=plain, fontname=\"sans-serif\", fontsize=12];\n"
        "    edge [fontname=\"sans-serif\", fontsize=10];\n";
    size_t number = 0;
    for (const auto &[schema, tables] : my_groups(g)) {
        const bool is_cluster = !schema.empty();
        if (is_cluster)
            text += "    subgraph cluster_" + std::to_string(number++) + " {\n        label=<" + my_label_text(schema) +
                    ">; fontname=\"sans-serif\"; color=\"grey\";\n";
        for (const cli_graph_node *table : tables)
            text += my_dot_box(*table, is_cluster ? "        " : "    ");
        text += is_cluster ? "    }\n" : "";
    }
    for (const cli_graph_node &table : g.nodes)
        for (const cli_reference &reference : table.references)
            if (const cli_graph_node *to = cli_graph_target(g, reference))
                text += "    \"" + my_label_text(table.id) + "\" -> \"" + my_label_text(to->id) + "\" [label=<" +
                        my_edge_label(reference) + ">" + (my_is_cycle_edge(table, *to) ? ", color=\"red\"" : "") +
                        "];\n";
    return text + "}\n";
}

static std::string my_mermaid_name(const cli_graph &g, const cli_graph_node &table)
{
    return "t" + std::to_string(g.index.at(table.id));
}

static std::string my_mermaid_boxes(const cli_graph &g)
{
    std::string text;
    size_t number = 0;
    for (const auto &[schema, tables] : my_groups(g)) {
        const bool is_cluster = !schema.empty();
        if (is_cluster)
            text += "    subgraph s" + std::to_string(number++) + "[\"" + my_label_text(schema) + "\"]\n";
        for (const cli_graph_node *table : tables) {
            text += (is_cluster ? "        " : "    ") + my_mermaid_name(g, *table) + "[\"<b>" +
                    my_label_text(table->name) + "</b>";
            for (const std::string &column : table->key)
                text += "<br/><u>" + my_label_text(column) + "</u>";
            text += "\"]\n";
        }
        text += is_cluster ? "    end\n" : "";
    }
    return text;
}

// A flow chart: an entity diagram of Mermaid takes no names with blanks or dots.
static std::string my_as_mermaid(const cli_graph &g)
{
    std::string text = "flowchart LR\n" + my_mermaid_boxes(g);
    const auto name_of = [&](const cli_graph_node &table) { return my_mermaid_name(g, table); };
    std::string styles, red_edges;
    size_t edge = 0;
    for (const cli_graph_node &table : g.nodes) {
        for (const cli_reference &reference : table.references) {
            const cli_graph_node *to = cli_graph_target(g, reference);
            if (!to)
                continue;
            text += "    " + name_of(table) + " -->|\"" + my_edge_label(reference) + "\"| " + name_of(*to) + "\n";
            if (my_is_cycle_edge(table, *to))
                red_edges += (red_edges.empty() ? "" : ",") + std::to_string(edge);
            edge++;
        }
        if (table.cycle)
            styles += "    style " + name_of(table) + " fill:#ffe4e1,stroke:#ff0000\n";
    }
    if (!red_edges.empty())
        styles += "    linkStyle " + red_edges + " stroke:#ff0000\n";
    return text + styles;
}

// What is left out is said, since a picture does not show it.
static void my_narrow(KT_context *ctx, tov_schema *schema, const graph_options &options, cli_graph *g)
{
    cli_graph_part part;
    part.around = options.around.empty() ? "" : cli_find_table(ctx, schema, options.around);
    part.depth = static_cast<size_t>(options.depth);
    part.limit = static_cast<size_t>(options.limit);
    const size_t count = cli_narrow_graph(g, part);
    if (g->nodes.size() < count)
        cli_tell("tov-schema: note: %zu of %zu tables are drawn, %s; --around TABLE draws those near a table, "
                 "--limit 0 all\n",
                 g->nodes.size(), count, part.around.empty() ? "those with the most neighbours" : "the nearest");
}

static int my_run(const graph_options &options)
{
    cli_keep_inputs(options.output, {options.schema});
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    cli_graph g = cli_read_graph(context.ctx, schema);
    my_narrow(context.ctx, schema, options, &g);
    cli_write_file(options.output, options.format == "dot" ? my_as_dot(g) : my_as_mermaid(g));
    return cli_done;
}

void cli_add_graph(cli_arguments &arguments)
{
    auto options = std::make_shared<graph_options>();
    const cli_command command = arguments.add("graph", "Draw tables and references as Graphviz or Mermaid text");
    command.details(
        "Each box shows a table and its key columns; tables that form a cycle are red. Where there are several\n"
        "schemas, the tables of each are drawn together.\n\n"
        "Examples: tov-schema graph schema.json | dot -Tsvg -o schema.svg\n"
        "          tov-schema graph schema.json --around Orders --depth 2 --format mermaid");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.option("-o,--output", options->output, "where the text goes (default: standard output)");
    command.option("--format", options->format, "dot (default) or mermaid", "NAME").one_of({"dot", "mermaid"});
    const cli_option around =
        command.option("--around", options->around, "draw this table, by id or name, and its neighbours only", "TABLE");
    command.option("--depth", options->depth, "how many references away from it tables may be (default: 1)")
        .between(0, 1000)
        .needs(around);
    command.option("--limit", options->limit, "draw at most so many tables (default: 60, which can be read; 0: all)")
        .between(0, 1000000);
    command.runs([options] { return my_run(*options); });
}
