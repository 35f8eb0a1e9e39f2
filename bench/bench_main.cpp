// Runs every case, ours and its peers interleaved, and prints the table.
//
//     tov_bench [--cold] [--output FILE] [Google Benchmark's options, e.g. --benchmark_filter=^json_parse]
//
// --cold measures what takes a process each too; --output does that and writes the table to a file.

#include "bench_report.hpp"
#include "cold_bench.hpp"

#include <cstdio>
#include <cstring>
#include <fstream>

void register_json_benches();
void register_module_benches();
void register_references_benches();
void register_defaults_benches();
void register_checks_benches();
void register_creation_benches();
void register_database_benches();
void add_database_cases(std::vector<bench_case> &cases);
void register_check_benches();
void register_package_benches();
void register_rows_benches();
void register_script_benches();
void register_small_benches();
void register_whole_way_benches();
void measure_whole_way_peaks();

// Ratios against the best peer; of "release" against the parse, of the module's calls against what the comment in
// their source says.
const std::vector<bench_case> &bench_cases()
{
    static std::vector<bench_case> cases = {
        {"json_parse", "read JSON", {{"1000", 0.50}, {"10000", 0.50}}},
        {"cold_parse", "read JSON, in a fresh process", {{"", 0.50}}},
        {"json_parse_more", "read JSON, beside other libraries", {}},
        {"json_write", "write JSON", {{"1000", 0.50}, {"10000", 0.50}}},
        {"cold_write", "write JSON, in a fresh process", {{"", 0.50}}},
        {"json_walk", "walk root, tbls, id, cols, id, type, name, a million times", {{"1000", 0.55}, {"10000", 0.55}}},
        {"cold_walk", "the same walk, in a fresh process", {{"", 0.55}}},
        {"memory_live", "live bytes for each byte of JSON", {{"1000", 0.70}, {"10000", 0.70}}},
        {"json_release", "free, against the parse", {{"1000", 0.05}, {"10000", 0.05}}},
        {"small_table", "one table of ten columns: JSON in, all texts, free", {{"", 1.0}}},
        {"get_map", "KT_vhash__get__sz() of a small map", {{"", 1.0}}},
        {"get_tbl", "tov_schema__get_tbl_name(), 100 tables", {{"", 1.0}}},
        {"get_col", "tov_schema__get_col_name(), 100 tables", {{"", 1.0}}},
        {"get_cols", "the same of another column of another table each time", {}},
        {"start", "start of the command, against that of the shell", {{"", 1.3}}},
        {"col_read", "read a column's type, against two lookups", {}},
        {"shape", "check the shape of a document, against reading it", {}},
        {"texts", "all texts of tables and triggers, against SQLite executing them", {{"", 0.10}}},
        {"refs_to_tbl", "find_references_to_tbl for every table, against one walk", {{"10000", 5.0}}},
        {"refs_to_col", "find_references_to_col for every table, against one walk", {{"10000", 5.0}}},
        {"tbls_to", "find_tbls_with_references_to for every table, against one walk", {{"10000", 5.0}}},
        {"order_random", "order 3 references a table, against one walk", {{"10000", 2.0}}},
        {"order_chain", "order a reversed chain, against one walk", {{"10000", 2.0}}},
        {"trial", "trial of a default, against the statements issued directly", {{"", 1.10}}},
        {"format", "format 1,000 pieces of a statement, against vsnprintf()", {{"", 0.80}}},
        {"tokens", "scan text into tokens, against sqlite3_complete()", {{"", 1.0 / 0.6}}},
        {"checks", "check so many expressions of one table, against SQLite compiling them", {{"", 2.0}}},
        {"package_read", "read a package, against expat walking its model", {{"400", 2.0}}},
        {"package_import", "import a package", {}},
        {"script", "read a script into tables, against sqlite3_complete()", {{"", 1.0 / 0.2}}},
        {"rows_load", "load a bcp file with all checks", {{"200000", 2.5}}},
        {"rows_unload", "unload a table as bcp", {{"200000", 1.5}}},
        {"rows_unload_csv", "unload a table as CSV", {{"200000", 1.5}}},
        {"rows_package", "load a package's rows of 8 columns", {{"200000", 1.8}}},
        {"check_rows", "check rows of 8 columns, against count(*) with the conditions by hand", {{"1000000", 3.0}}},
        {"create", "create a database, checks as constraints, server's rules", {{"", 3.0}}},
        {"create_triggers", "create a database, checks as triggers, server's rules", {}},
        {"open_created", "open the created database", {{"26653", 1.0}}},
        {"bytes_created", "memory of a connection to it", {{"26653", 1.0}}},
        {"peak", "the whole way, one step after the other: most memory held", {}},
        {"way_import", "import a catalogue", {}},
        {"way_import_script", "import a script", {}},
        {"way_write", "write the schema", {}},
        {"way_read", "read the schema", {}},
        {"way_order", "order the tables", {}},
        {"way_texts", "all texts of tables", {}},
        {"way_triggers", "all inputs of triggers", {}},
    };
    static const bool is_complete = (add_database_cases(cases), true);
    (void)is_complete;
    return cases;
}

int main(int argc, char **argv)
{
    if (argc == 4 && std::strcmp(argv[1], "--once") == 0)
        return bench_once(argv[2], argv[3]);
    std::string output;
    bool is_cold = false;
    std::vector<char *> arguments;
    for (int n = 0; n < argc; n++) {
        if (std::strcmp(argv[n], "--output") == 0 && n + 1 < argc)
            output = argv[++n];
        else if (std::strcmp(argv[n], "--cold") == 0)
            is_cold = true;
        else
            arguments.push_back(argv[n]);
    }
    if (!output.empty())
        measure_whole_way_peaks(); // first, while this process itself is small
    if (is_cold || !output.empty())
        measure_cold(argv[0]);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;
    register_json_benches();
    register_module_benches();
    register_references_benches();
    register_defaults_benches();
    register_checks_benches();
    register_creation_benches();
    register_database_benches();
    register_check_benches();
    register_package_benches();
    register_rows_benches();
    register_script_benches();
    register_small_benches();
    register_whole_way_benches();

    bench_collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    bool is_met = true;
    const std::string table = collector.table(&is_met);
    std::fputs(table.c_str(), stdout);
    if (!output.empty())
        std::ofstream(output) << table;
    return is_met ? 0 : 1;
}
