// tov-schema graph: tables and references as a picture, for Graphviz or Mermaid.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_paths.hpp"
#include "cli_references.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "kt_folded.hpp"

#include <map>
#include <memory>

namespace {

struct graph_options {
    std::string schema;
    std::string output = "-";
    std::string format = "dot";
};

struct node {
    std::string id;
    std::string name;
    std::vector<std::string> key;
    std::vector<cli_reference> references;
    size_t cycle = 0; // the number of the cycle that the table is in, from 1; a table is in one at most
};

struct graph {
    std::vector<node> nodes;
    std::map<std::string, size_t> index; // by id
};

} // namespace

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

static graph my_read_graph(KT_context *ctx, tov_schema *schema)
{
    graph result;
    for (const std::string &id : cli_table_ids(ctx, schema)) {
        node table;
        table.id = id;
        table.name = cli_table_name(ctx, schema, id);
        table.key = my_key_of(ctx, schema, id);
        table.references = cli_references_of(ctx, schema, id);
        result.index[id] = result.nodes.size();
        result.nodes.push_back(std::move(table));
    }
    size_t number = 0;
    for (const std::vector<std::string> &cycle : cli_table_cycles(ctx, schema)) {
        number++;
        for (const std::string &id : cycle)
            result.nodes[result.index.at(id)].cycle = number;
    }
    return result;
}

// The table that a reference points to; null for one that is not in the schema.
static const node *my_target(const graph &g, const cli_reference &reference)
{
    const auto found = g.index.find(kt_folded(reference.to_table));
    return found == g.index.end() ? nullptr : &g.nodes[found->second];
}

// Names are inside HTML-like labels in both formats.
static std::string my_escaped(const std::string &text)
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
        label += (label.empty() ? "" : "<br/>") + my_escaped(column);
    if (!reference.on_delete.empty())
        label += " (" + my_escaped(reference.on_delete) + ")";
    return label;
}

// All tables of a cycle lead to each other, so a reference between two of them is part of it.
static bool my_is_cycle_edge(const node &from, const node &to)
{
    return from.cycle && from.cycle == to.cycle && &from != &to;
}

static std::string my_as_dot(const graph &g)
{
    std::string text =
        "digraph schema {\n    rankdir=LR;\n    node [shape=plain, fontname=\"sans-serif\", fontsize=12];\n"
        "    edge [fontname=\"sans-serif\", fontsize=10];\n";
    for (const node &table : g.nodes) {
        text += "    \"" + my_escaped(table.id) +
                R"(" [label=<<table border="0" cellborder="1" cellspacing="0" cellpadding="4")" +
                (table.cycle ? " color=\"red\"" : "") + "><tr><td bgcolor=\"" +
                (table.cycle ? "mistyrose" : "lightgrey") + "\"><b>" + my_escaped(table.name) + "</b></td></tr>";
        for (const std::string &column : table.key)
            text += "<tr><td align=\"left\"><u>" + my_escaped(column) + "</u></td></tr>";
        text += "</table>>];\n";
    }
    for (const node &table : g.nodes)
        for (const cli_reference &reference : table.references)
            if (const node *to = my_target(g, reference))
                text += "    \"" + my_escaped(table.id) + "\" -> \"" + my_escaped(to->id) + "\" [label=<" +
                        my_edge_label(reference) + ">" + (my_is_cycle_edge(table, *to) ? ", color=\"red\"" : "") +
                        "];\n";
    return text + "}\n";
}

// A flow chart: an entity diagram of Mermaid takes no names with blanks or dots.
static std::string my_as_mermaid(const graph &g)
{
    std::string text = "flowchart LR\n";
    const auto name_of = [&](const node &table) { return "t" + std::to_string(g.index.at(table.id)); };
    for (const node &table : g.nodes) {
        text += "    " + name_of(table) + "[\"<b>" + my_escaped(table.name) + "</b>";
        for (const std::string &column : table.key)
            text += "<br/><u>" + my_escaped(column) + "</u>";
        text += "\"]\n";
    }
    std::string styles, red_edges;
    size_t edge = 0;
    for (const node &table : g.nodes) {
        for (const cli_reference &reference : table.references) {
            const node *to = my_target(g, reference);
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

static int my_run(const graph_options &options)
{
    cli_keep_inputs(options.output, {options.schema});
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    const graph g = my_read_graph(context.ctx, schema);
    cli_write_file(options.output, options.format == "dot" ? my_as_dot(g) : my_as_mermaid(g));
    return cli_done;
}

void cli_add_graph(cli_arguments &arguments)
{
    auto options = std::make_shared<graph_options>();
    const cli_command command = arguments.add("graph", "Draw tables and references as Graphviz or Mermaid text");
    command.details("Each box shows a table and its key columns; tables that form a cycle are red.\n\n"
                    "Example: tov-schema graph schema.json | dot -Tsvg -o schema.svg");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.option("-o,--output", options->output, "where the text goes (default: standard output)");
    command.option("--format", options->format, "dot (default) or mermaid", "NAME").one_of({"dot", "mermaid"});
    command.runs([options] { return my_run(*options); });
}
