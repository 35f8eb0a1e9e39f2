#include "cli_load_report.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace {

// What became of the rows of a table, whose rows may have come in several files.
struct table_line {
    std::string name;
    int64_t read = 0;
    int64_t loaded = 0;
    int64_t rejected = 0;
    int64_t shortened = 0;
    int64_t left_out = 0;
    double seconds = 0;
};

struct load_summary {
    std::vector<table_line> tables;
    table_line total;
    std::vector<std::string> notes;
    std::string unknown; // tables that the schema does not have, whose rows are left out
    int64_t unknown_bytes = 0;
};

constexpr size_t column_count = 7;
constexpr size_t left_out_column = 4;
using load_line = std::array<std::string, column_count>;

} // namespace

static int64_t my_number(KT_context *ctx, const KT_vhash *record, const char *key)
{
    int64_t number = 0;
    KT_vhash__get__int64(ctx, record, key, &number);
    cli_check(ctx, key);
    return number;
}

// The number of shortened values; the columns are told on lines of their own.
static int64_t my_shortened(KT_context *ctx, const KT_vhash *record, std::vector<std::string> &notes)
{
    KT_vhash *counts = nullptr;
    uint32_t count = 0;
    int64_t total = 0;
    KT_vhash__get__vhash(ctx, record, "shortened", &counts);
    KT_vhash__count(ctx, counts, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *col = nullptr;
        KT_vhash__get_nth_pair(ctx, counts, n, &col, nullptr);
        cli_check(ctx, "shortened");
        const int64_t values = my_number(ctx, counts, col);
        total += values;
        notes.push_back("note: " + cli_harmless_of(ctx, record, "table") + ", column " + col + ": " +
                        std::to_string(values) + " values were shortened to three fraction digits");
    }
    return total;
}

static table_line &my_line_of(load_summary &summary, const std::string &name)
{
    for (table_line &line : summary.tables)
        if (line.name == name)
            return line;
    summary.tables.push_back({name});
    return summary.tables.back();
}

static void my_add_unknown(KT_context *ctx, const KT_vhash *record, load_summary &summary)
{
    const std::string tbl = cli_harmless_of(ctx, record, "table");
    summary.unknown_bytes += my_number(ctx, record, "bytes");
    const bool is_new = (", " + summary.unknown + ",").find(" " + tbl + ",") == std::string::npos;
    if (is_new)
        summary.unknown += (summary.unknown.empty() ? "" : ", ") + tbl;
}

static void my_add_record(KT_context *ctx, const KT_vhash *record, load_summary &summary)
{
    if (cli_flag_of(ctx, record, "unknown")) {
        my_add_unknown(ctx, record, summary);
        return;
    }
    const std::string file = cli_harmless_of(ctx, record, "file");
    if (cli_flag_of(ctx, record, "before"))
        summary.notes.push_back("note: " + file + " was loaded before; --again loads it once more");
    else if (!cli_flag_of(ctx, record, "part"))
        summary.notes.push_back("note: " + file + " was read as " + cli_harmless_of(ctx, record, "dialect"));
    if (summary.notes.size() > 1 && summary.notes.back() == summary.notes[summary.notes.size() - 2])
        summary.notes.pop_back(); // a script's tables have one file
    table_line line;
    line.read = my_number(ctx, record, "read");
    line.loaded = my_number(ctx, record, "loaded");
    line.rejected = my_number(ctx, record, "rejected");
    line.shortened = my_shortened(ctx, record, summary.notes);
    KT_vhash__get__double(ctx, record, "seconds", &line.seconds);
    cli_check(ctx, "seconds");
    if (cli_flag_of(ctx, record, "history"))
        line.left_out = line.read;
    for (table_line *sum : {&my_line_of(summary, cli_harmless_of(ctx, record, "table")), &summary.total}) {
        sum->read += line.read;
        sum->loaded += line.loaded;
        sum->rejected += line.rejected;
        sum->shortened += line.shortened;
        sum->left_out += line.left_out;
        sum->seconds += line.seconds;
    }
}

static load_line my_texts(const table_line &line)
{
    char seconds[40];
    static_cast<void>(std::snprintf(seconds, sizeof seconds, "%.2f", line.seconds)); // it fits
    return {cli_harmless(line.name),
            std::to_string(line.read),
            std::to_string(line.loaded),
            std::to_string(line.rejected),
            std::to_string(line.left_out),
            std::to_string(line.shortened),
            seconds};
}

// Names are aligned left, numbers right; rows that are left out have a column where there are any.
static std::string my_layout(const std::vector<load_line> &lines, bool has_left_out)
{
    std::array<size_t, column_count> widths{};
    for (const load_line &line : lines)
        for (size_t n = 0; n < column_count; n++)
            widths[n] = std::max(widths[n], line[n].size());
    std::string text;
    for (const load_line &line : lines) {
        text += line[0] + std::string(widths[0] - line[0].size(), ' ');
        for (size_t n = 1; n < column_count; n++)
            if (n != left_out_column || has_left_out)
                text += "  " + std::string(widths[n] - line[n].size(), ' ') + line[n];
        text += "\n";
    }
    return text;
}

static void my_print(const load_summary &summary)
{
    std::vector<load_line> lines = {{"table", "read", "loaded", "rejected", "left out", "shortened", "seconds"}};
    for (const table_line &line : summary.tables)
        lines.push_back(my_texts(line));
    lines.push_back(my_texts(summary.total));
    for (const std::string &note : summary.notes)
        cli_tell_line("tov-schema: " + note);
    for (const table_line &line : summary.tables)
        if (line.left_out > 0 && line.name != summary.unknown)
            cli_tell_line("tov-schema: note: " + std::to_string(line.left_out) + " rows of " + line.name +
                          " are the history of a temporal table, and are left out");
    cli_print(my_layout(lines, summary.total.left_out > 0));
}

// The source says how many rows it has: those that were not read are of tables that the schema does not have. Says
// whether all rows are accounted for.
static bool my_account(load_summary &summary, int64_t said)
{
    const int64_t missing = said < 0 ? 0 : said - summary.total.read;
    if (summary.unknown.empty()) {
        if (missing != 0)
            summary.notes.push_back("the package says that it has " + std::to_string(said) + " rows; " +
                                    std::to_string(summary.total.read) + " were READ");
        return missing == 0;
    }
    const std::string what = said < 0 ? std::to_string(summary.unknown_bytes) + " bytes of rows" : "rows";
    summary.notes.push_back("note: " + what + " of " + summary.unknown +
                            " are left out: the schema does not have the table");
    table_line line{summary.unknown};
    line.read = line.left_out = std::max<int64_t>(missing, 0);
    summary.total.read += line.read;
    summary.total.left_out += line.left_out;
    summary.tables.push_back(std::move(line));
    return missing >= 0;
}

int cli_finish_load(KT_context *ctx, cli_loader &loader, const std::string &database, const std::string &rejects,
                    bool quiet, int64_t said)
{
    kt_owned_varray report{ctx};
    KT_varray *remarks = nullptr;
    tov_client__finish_load(ctx, loader.loader, report.out(), &remarks);
    cli_check(ctx, database);
    for (const std::string &remark : cli_take_texts(ctx, remarks))
        cli_tell_line("tov-schema: " + remark);

    load_summary summary;
    summary.total.name = "total";
    for (const KT_vhash *record : cli_maps_of(ctx, report))
        my_add_record(ctx, record, summary);
    const bool is_complete = my_account(summary, said);
    if (!quiet)
        my_print(summary);
    if (summary.total.rejected == 0)
        return is_complete ? cli_done : cli_found;
    const std::string where = rejects.empty() ? "; --rejects DIR keeps them" : "; they are in " + rejects;
    cli_tell_line("tov-schema: " + std::to_string(summary.total.rejected) + " rows were REJECTED" + where);
    return cli_found;
}
