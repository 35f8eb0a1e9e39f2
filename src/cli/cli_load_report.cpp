#include "cli_load_report.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace {

struct load_totals {
    int64_t read = 0;
    int64_t loaded = 0;
    int64_t rejected = 0;
};

constexpr size_t column_count = 6;
using load_line = std::array<std::string, column_count>;

} // namespace

static int64_t my_number(KT_context *ctx, const KT_vhash *record, const char *key)
{
    int64_t number = 0;
    KT_vhash__get__int64(ctx, record, key, &number);
    cli_check(ctx, key);
    return number;
}

static std::string my_text(KT_context *ctx, const KT_vhash *record, const char *key)
{
    const char *text = nullptr;
    KT_vhash__get__sz(ctx, record, key, &text);
    cli_check(ctx, key);
    return cli_harmless(text);
}

static std::string my_seconds(KT_context *ctx, const KT_vhash *record)
{
    double seconds = 0;
    KT_vhash__get__double(ctx, record, "seconds", &seconds);
    cli_check(ctx, "seconds");
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.2f", seconds);
    return digits;
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
        notes.push_back("note: " + my_text(ctx, record, "table") + ", column " + cli_harmless(col) + ": " +
                        std::to_string(values) + " values were shortened to three fraction digits");
    }
    return total;
}

static load_line my_line(KT_context *ctx, const KT_vhash *record, load_totals &totals, std::vector<std::string> &notes)
{
    const int64_t read = my_number(ctx, record, "read");
    const int64_t loaded = my_number(ctx, record, "loaded");
    const int64_t rejected = my_number(ctx, record, "rejected");
    KT_bool before = 0;
    KT_vhash__get__bool(ctx, record, "before", &before);
    if (before)
        notes.push_back("note: " + my_text(ctx, record, "file") + " was loaded before; --again loads it once more");
    else
        notes.push_back("note: " + my_text(ctx, record, "file") + " was read as " + my_text(ctx, record, "dialect"));
    totals.read += read;
    totals.loaded += loaded;
    totals.rejected += rejected;
    return {my_text(ctx, record, "table"),
            std::to_string(read),
            std::to_string(loaded),
            std::to_string(rejected),
            std::to_string(my_shortened(ctx, record, notes)),
            my_seconds(ctx, record)};
}

// Names stand at the left, numbers at the right.
static std::string my_layout(const std::vector<load_line> &lines)
{
    std::array<size_t, column_count> widths{};
    for (const load_line &line : lines)
        for (size_t n = 0; n < column_count; n++)
            widths[n] = std::max(widths[n], line[n].size());
    std::string text;
    for (const load_line &line : lines) {
        text += line[0] + std::string(widths[0] - line[0].size(), ' ');
        for (size_t n = 1; n < column_count; n++)
            text += "  " + std::string(widths[n] - line[n].size(), ' ') + line[n];
        text += "\n";
    }
    return text;
}

int cli_finish_load(KT_context *ctx, cli_loader &loader, const std::string &database, const std::string &rejects,
                    bool quiet)
{
    kt_owned_varray report{ctx};
    KT_varray *remarks = nullptr;
    tov_client__finish_load(ctx, loader.loader, report.out(), &remarks);
    cli_check(ctx, database);
    for (const std::string &remark : cli_take_texts(ctx, remarks))
        cli_tell_line("tov-schema: " + remark);

    std::vector<load_line> lines = {{"table", "read", "loaded", "rejected", "shortened", "seconds"}};
    std::vector<std::string> notes;
    load_totals totals;
    uint32_t count = 0;
    KT_varray__count(ctx, report, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        KT_varray__get__vhash(ctx, report, n, &record);
        lines.push_back(my_line(ctx, record, totals, notes));
    }
    lines.push_back(
        {"total", std::to_string(totals.read), std::to_string(totals.loaded), std::to_string(totals.rejected), "", ""});
    if (!quiet) {
        for (const std::string &note : notes)
            cli_tell_line("tov-schema: " + note);
        cli_print(my_layout(lines));
    }
    if (totals.rejected == 0)
        return cli_done;
    const std::string where = rejects.empty() ? "; --rejects DIR keeps them" : "; they are in " + rejects;
    cli_tell_line("tov-schema: " + std::to_string(totals.rejected) + " rows were REJECTED" + where);
    return cli_found;
}
