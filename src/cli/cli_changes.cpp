#include "cli_changes.hpp"

#include "cli_harmless.hpp"
#include "tov_changes.h"

#include <cstdlib>
#include <unistd.h>

namespace {

// A change as it is shown: in the same words for people and for documents.
struct shown_change {
    char sign;
    std::string what; // "column Total: type"
    std::string old_text;
    std::string new_text;
};

// How much of each kind there is.
struct tally {
    size_t added = 0;
    size_t removed = 0;
    size_t changed = 0;
};

} // namespace

cli_changes::cli_changes(KT_context *ctx, tov_schema *a, tov_schema *b, const cli_compare_options &options) : ctx_(ctx)
{
    std::vector<const char *> renames;
    for (const std::string &rename : options.renames)
        renames.push_back(rename.c_str());
    const tov_client_compare_options compare{options.by_id, renames.data(), static_cast<uint32_t>(renames.size())};
    tov_client__compare(ctx, a, b, &compare, &changes_);
    cli_check(ctx, "");
}

cli_changes::~cli_changes()
{
    KT_vhash__free(ctx_, changes_);
}

static std::vector<KT_vhash *> my_list_of(KT_context *ctx, const KT_vhash *map, const char *key)
{
    KT_varray *list = nullptr;
    KT_vhash__get__varray(ctx, map, key, &list);
    return cli_maps_of(ctx, list);
}

bool cli_changes::is_same() const
{
    return my_list_of(ctx_, changes_, "changes").empty() && my_list_of(ctx_, changes_, "tables").empty();
}

static char my_sign(const std::string &change)
{
    return change == "added" ? '+' : change == "removed" ? '-' : '~';
}

static std::string my_rename_text(KT_context *ctx, const KT_vhash *change)
{
    if (cli_text_of(ctx, change, "change") != "renamed")
        return "";
    const std::string old_name = cli_text_of(ctx, change, "old_name");
    return (old_name.empty() ? std::string(" named") : " renamed from " + old_name) +
           (cli_flag_of(ctx, change, "guess") ? " (a guess)" : "");
}

static shown_change my_shown(KT_context *ctx, const KT_vhash *change)
{
    const std::string name = cli_text_of(ctx, change, "name");
    const std::string member = cli_text_of(ctx, change, "member");
    const std::string kind = cli_text_of(ctx, change, "kind");
    // What is said of a table or schema itself needs no more words for it.
    const bool is_whole = kind == "table" || kind == "schema";
    std::string what = is_whole ? member : kind + (name.empty() ? "" : ' ' + name);
    what += my_rename_text(ctx, change);
    if (!is_whole && !member.empty())
        what += ": " + member;
    return {my_sign(cli_text_of(ctx, change, "change")), what, cli_text_of(ctx, change, "old"),
            cli_text_of(ctx, change, "new")};
}

// The sequences that colour a line on a terminal.
static const char *my_colour(char sign)
{
    return sign == '+' ? "\033[32m" : sign == '-' ? "\033[31m" : "\033[33m";
}

static bool my_is_coloured()
{
    const char *no_colour = std::getenv("NO_COLOR"); // NOLINT(concurrency-mt-unsafe): nothing sets a variable.
    return ::isatty(STDOUT_FILENO) && !(no_colour && *no_colour);
}

static std::string my_line(char sign, const std::string &margin, const std::string &text)
{
    const std::string line = margin + sign + ' ' + cli_harmless(text);
    return my_is_coloured() ? my_colour(sign) + line + "\033[0m\n" : line + "\n";
}

static std::string my_change_line(const shown_change &shown)
{
    const std::string both = shown.sign != '~' || (shown.old_text.empty() && shown.new_text.empty())
                                 ? shown.old_text + shown.new_text
                                 : (shown.old_text.empty() ? "none" : shown.old_text) + " -> " +
                                       (shown.new_text.empty() ? "none" : shown.new_text);
    const std::string separator = both.empty() ? "" : shown.what.find(": ") == std::string::npos ? ": " : " ";
    return my_line(shown.sign, "    ", shown.what + separator + both);
}

static void my_count(const std::string &change, tally &counts)
{
    (change == "added" ? counts.added : change == "removed" ? counts.removed : counts.changed)++;
}

static std::string my_summary(const tally &counts)
{
    return "tables: " + std::to_string(counts.changed) + " changed, " + std::to_string(counts.added) + " added, " +
           std::to_string(counts.removed) + " removed\n";
}

std::string cli_changes::text() const
{
    if (is_same())
        return "same\n";
    std::string text;
    tally counts;
    const std::vector<KT_vhash *> of_whole = my_list_of(ctx_, changes_, "changes");
    text += of_whole.empty() ? "" : my_line('~', "", "the schema as a whole");
    for (const KT_vhash *change : of_whole)
        text += my_change_line(my_shown(ctx_, change));
    for (const KT_vhash *table : my_list_of(ctx_, changes_, "tables")) {
        const std::string change = cli_text_of(ctx_, table, "change");
        my_count(change, counts);
        text += my_line(my_sign(change), "", cli_text_of(ctx_, table, "name") + my_rename_text(ctx_, table));
        for (const KT_vhash *one : my_list_of(ctx_, table, "changes"))
            text += my_change_line(my_shown(ctx_, one));
    }
    return text + my_summary(counts);
}

// Text that Markdown takes for nothing but text, also in a table.
static std::string my_markdown_text(const std::string &text)
{
    std::string escaped;
    for (const char c : cli_harmless(text)) {
        if (c == '<' || c == '&') {
            escaped += c == '<' ? "&lt;" : "&amp;";
            continue;
        }
        if (std::string_view("\\`*_[]|#~").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

static std::string my_markdown_table(KT_context *ctx, const std::vector<KT_vhash *> &changes)
{
    if (changes.empty())
        return "";
    std::string text = "| | What | Old | New |\n|---|---|---|---|\n";
    for (const KT_vhash *change : changes) {
        const shown_change shown = my_shown(ctx, change);
        const std::string sign =
            shown.sign == '-' ? "&minus;" : std::string(shown.sign == '~' ? "\\" : "") + shown.sign;
        text += "| " + sign + " | " + my_markdown_text(shown.what) + " | " + my_markdown_text(shown.old_text) + " | " +
                my_markdown_text(shown.new_text) + " |\n";
    }
    return text + "\n";
}

std::string cli_changes::markdown() const
{
    if (is_same())
        return "The schemas are the same.\n";
    const std::vector<KT_vhash *> of_whole = my_list_of(ctx_, changes_, "changes");
    std::string text = of_whole.empty() ? "" : "## The schema as a whole\n\n" + my_markdown_table(ctx_, of_whole);
    for (const KT_vhash *table : my_list_of(ctx_, changes_, "tables")) {
        const std::string change = cli_text_of(ctx_, table, "change");
        const std::string old_name = cli_text_of(ctx_, table, "old_name");
        const std::string guess = cli_flag_of(ctx_, table, "guess") ? " (a guess)" : "";
        text += "## " + my_markdown_text(cli_text_of(ctx_, table, "name")) + ": " + change +
                (old_name.empty() ? "" : " from " + my_markdown_text(old_name) + guess) + "\n\n" +
                my_markdown_table(ctx_, my_list_of(ctx_, table, "changes"));
    }
    text.pop_back();
    return text;
}

std::string cli_changes::as(const std::string &format) const
{
    if (format == "json")
        return cli_json_text(ctx_, changes_) + "\n";
    return format == "markdown" ? markdown() : text();
}
