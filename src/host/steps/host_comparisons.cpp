// Strings that the server takes as equal and SQLite, by its own means, tells apart: one finding for each column where
// that decides which rows are accepted. It says what the column's collation and type let the two differ in.
#include "steps/host_import.hpp"

#include "checks/host_check_values.hpp"
#include "steps/host_collation.hpp"

#include <string_view>

#define KT_HERE "src/host/steps/host_comparisons"

namespace {

struct compared_column {
    host_collation_rules rules;
    bool is_fixed;      // filled with blanks, so that these do not differ
    bool may_have_wide; // may hold letters of full width, and kana
    bool is_linguistic; // compared by Unicode's rules, not character by character
};

struct difference {
    const char *text;
    bool in_checks; // where a column is compared with literals of ASCII, and blanks at the end are taken off
    bool (*applies)(const compared_column &col);
};

} // namespace

static constexpr difference differences[] = {
    {"letter case beyond ASCII", false, [](const compared_column &col) { return col.rules.nocase; }},
    {"accents", false, [](const compared_column &col) { return col.rules.noaccent; }},
    {"kana", false, [](const compared_column &col) { return col.is_linguistic && col.may_have_wide && !col.rules.ks; }},
    {"width", true, [](const compared_column &col) { return col.is_linguistic && col.may_have_wide && !col.rules.ws; }},
    {"² and 2", true, [](const compared_column &col) { return col.is_linguistic && col.rules.nocase; }},
    {"ß and ss", true, [](const compared_column &col) { return col.is_linguistic; }},
    {"blanks at the end", false, [](const compared_column &col) { return !col.is_fixed; }},
};

static bool my_is_string(const host_column &col)
{
    const char *type = host_abstract_type(col);
    const std::string_view name = host_type_name(col);
    return type && std::string_view(type) == "text" && name != "datetimeoffset" && name != "xml";
}

static compared_column my_compared_column(const host_column &col)
{
    const host_collation_rules rules = host_read_collation(col.collation, col.comparison_style);
    const bool is_unicode = host_is_unicode(col);
    return {rules, host_is_fixed_width(col), is_unicode || host_is_multibyte(col.code_page),
            !rules.binary && (is_unicode || !rules.locale.starts_with("SQL_"))};
}

static std::string my_differences(const compared_column &col, bool in_checks)
{
    std::string text;
    for (const difference &one : differences) {
        if (one.applies(col) && (one.in_checks || !in_checks))
            text += (text.empty() ? "" : ", ") + std::string(one.text);
    }
    return text;
}

// Whether i and I are two letters, each with a partner of its own.
static bool my_has_dotless_i(std::string_view locale)
{
    return locale.starts_with("Turkish") || locale.starts_with("Azeri_Latin") || locale.ends_with("1254");
}

static std::string my_reason(const host_import &import, const host_column &col)
{
    const compared_column compared = my_compared_column(col);
    const bool in_key = import.compared_in_keys.contains(&col);
    if (!col.collation && col.comparison_style < 0)
        return in_key ? "kept: the source does not name its collation, so SQLite compares it byte by byte" : "";
    const std::string found = my_differences(compared, !in_key);
    std::string reason;
    if (!found.empty())
        reason = std::string("kept: ") + (in_key ? "" : "in checks ") +
                 "SQLite tells apart what the server takes as equal (" + found + ")";
    if (in_key && compared.rules.nocase && my_has_dotless_i(compared.rules.locale))
        reason += ", and takes I and i as equal, which the server tells apart";
    if (in_key && !reason.empty())
        reason += ", unless the database is created with --collations server";
    return reason;
}

void host_report_comparisons(KT_context *ctx, host_import &import, const host_table &table)
{
    for (const host_column &col : table.cols) {
        if (!my_is_string(col) ||
            (!import.compared_in_keys.contains(&col) && !import.compared_in_checks.contains(&col)))
            continue;
        const std::string reason = my_reason(import, col);
        if (!reason.empty())
            KT_TRY(import.findings.add(ctx, "comparison-approximate", &table, &col, col.collation, reason));
    }
}
