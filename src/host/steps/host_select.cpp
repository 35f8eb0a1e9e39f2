// Which tables are imported, and under which names: what the caller said about them.
//
// This comes before linking, so that a table that is not wanted cannot be the reason why nothing is imported.
#include "steps/host_import.hpp"

#include "kt_folded.hpp"

#include <algorithm>

#define KT_HERE "src/host/steps/host_select"

// The end of the character that begins at `at`, which may take several bytes.
static size_t my_character_end(std::string_view text, size_t at)
{
    do
        at++;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80);
    return at;
}

// Whether a pattern with * and ? is good for a text. After a mismatch only the last * is tried for more of the text,
// so the time is the product of the lengths at most.
static bool my_matches(std::string_view pattern, std::string_view text)
{
    size_t at = 0;
    size_t in_text = 0;
    size_t star = std::string_view::npos;
    size_t star_text = 0;
    while (in_text < text.size()) {
        if (at < pattern.size() && pattern[at] == '*') {
            star = at++;
            star_text = in_text;
        } else if (at < pattern.size() && pattern[at] == '?') {
            at++;
            in_text = my_character_end(text, in_text);
        } else if (at < pattern.size() && kt_equal_bytes_folded(pattern[at], text[in_text])) {
            at++;
            in_text++;
        } else if (star != std::string_view::npos) {
            at = star + 1;
            in_text = ++star_text;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', at) == std::string_view::npos;
}

// The patterns of one option, and whether each was good for a table.
class host_patterns {
  public:
    explicit host_patterns(const tov_host_list &list) : list_(list), used_(list.count)
    {
    }
    bool empty() const
    {
        return list_.count == 0;
    }
    bool match(const host_table &table)
    {
        bool found = false;
        for (size_t n = 0; n < list_.count; n++) {
            const std::string_view pattern = list_.items[n];
            const bool with_schema = pattern.find('.') != std::string_view::npos;
            if (!my_matches(pattern, with_schema ? std::string_view(table.label) : table.name))
                continue;
            used_[n] = true;
            found = true;
        }
        return found;
    }
    void report_unused(KT_context *ctx, host_findings &findings, const char *option)
    {
        for (size_t n = 0; n < list_.count; n++) {
            if (!used_[n])
                KT_TRY(findings.add(ctx, "pattern-unused", nullptr, nullptr, list_.items[n],
                                    std::string(option) + ": no table has such a name"));
        }
    }

  private:
    const tov_host_list &list_;
    std::vector<bool> used_;
};

static void my_choose_tables(KT_context *ctx, const tov_host_options &options, host_findings &findings,
                             host_catalogue &catalogue)
{
    host_patterns only(options.only);
    host_patterns skip(options.skip);
    std::vector<host_table> chosen;
    chosen.reserve(catalogue.tables.size());
    for (host_table &table : catalogue.tables) {
        const bool is_wanted = only.empty() || only.match(table);
        if (is_wanted && !skip.match(table))
            chosen.push_back(std::move(table));
        else
            catalogue.skipped_labels.insert(host_folded(table.label));
    }
    catalogue.tables = std::move(chosen);
    KT_TRY(only.report_unused(ctx, findings, "only"));
    KT_TRY(skip.report_unused(ctx, findings, "skip"));
}

// Where a new name goes: to a table, or to the column of a table. False when neither is there.
static bool my_rename(host_catalogue &catalogue, const std::string &old_name, std::string_view new_name)
{
    for (host_table &table : catalogue.tables) {
        const std::string label = host_folded(table.label);
        if (label == old_name) {
            table.sqlite_name = new_name;
            return true;
        }
        if (!old_name.starts_with(label + '.'))
            continue;
        for (host_column &col : table.cols) {
            if (label + '.' + host_folded(col.name) != old_name)
                continue;
            col.sqlite_name = catalogue.texts.keep(new_name);
            return true;
        }
    }
    return false;
}

static void my_rename_all(KT_context *ctx, const tov_host_options &options, host_findings &findings,
                          host_catalogue &catalogue)
{
    for (size_t n = 0; n < options.renames.count; n++) {
        const std::string_view rename = options.renames.items[n];
        const size_t sign = rename.rfind('=');
        if (sign == std::string_view::npos || sign == 0 || sign + 1 == rename.size())
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s' is not of the form OLD=NEW", options.renames.items[n]);
        if (!my_rename(catalogue, host_folded(rename.substr(0, sign)), rename.substr(sign + 1)))
            KT_TRY(findings.add(ctx, "pattern-unused", nullptr, nullptr, options.renames.items[n],
                                "rename: no table or column has such a name"));
    }
}

void host_select_tables(KT_context *ctx, const tov_host_options &options, host_findings &findings,
                        host_catalogue &catalogue)
{
    if (options.only.count || options.skip.count)
        KT_TRY(my_choose_tables(ctx, options, findings, catalogue));
    KT_TRY(my_rename_all(ctx, options, findings, catalogue));
}
