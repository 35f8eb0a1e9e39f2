// Tables of special kinds, and what a schema has no place for at all.
#include "steps/host_import.hpp"

#include <algorithm>
#include <map>

#define KT_HERE "src/host/steps/host_left_out"

static constexpr int64_t history_table = 1; // of the temporal types

void host_check_special_tables(KT_context *ctx, host_import &import)
{
    for (host_table &table : import.catalogue.tables) {
        if (table.temporal_type == history_table) {
            table.is_left_out = true;
            KT_TRY(import.findings.add(ctx, "table-history", &table, nullptr, nullptr,
                                       "left out: it keeps the former rows of another table"));
        }
        if (table.is_external)
            KT_TRY(import.findings.add(ctx, "table-external", &table, nullptr, nullptr,
                                       "kept as an ordinary table: on the server its rows lie outside the database"));
        if (table.is_filetable)
            KT_TRY(import.findings.add(ctx, "table-filetable", &table, nullptr, nullptr,
                                       "kept as an ordinary table: on the server its rows are files"));
        if (table.is_node || table.is_edge)
            KT_TRY(import.findings.add(ctx, "table-graph", &table, nullptr, nullptr,
                                       std::string("kept as an ordinary table: what makes it ") +
                                           (table.is_node ? "a node" : "an edge") + " of a graph is not"));
    }
}

static std::map<std::string, std::vector<std::string>> my_group(const host_catalogue &catalogue)
{
    std::map<std::string, std::vector<std::string>> kinds;
    for (const host_left_object &object : catalogue.left_objects)
        kinds[object.kind].emplace_back(object.name);
    for (const host_sequence &sequence : catalogue.sequences)
        kinds["sequences"].push_back(std::string(sequence.schema_name ? sequence.schema_name : "dbo") + '.' +
                                     sequence.name);
    return kinds;
}

void host_report_left_objects(KT_context *ctx, host_import &import)
{
    auto kinds = my_group(import.catalogue);
    for (auto &[kind, names] : kinds) {
        std::string list;
        std::sort(names.begin(), names.end());
        for (const std::string &name : names)
            list += (list.empty() ? "" : ", ") + name;
        KT_TRY(
            import.findings.add(ctx, "objects-left-out", nullptr, nullptr, list.c_str(),
                                "left out: " + kind + " are not carried over (" + std::to_string(names.size()) + ')'));
    }
}
