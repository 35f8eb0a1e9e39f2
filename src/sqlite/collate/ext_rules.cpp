// LANGUAGE[_VERSION]_{CI|CS}_{AI|AS}[_KS][_WS][_VSS][_SC][_UTF8], or _BIN, _BIN2 in the place of the options; and
// SQL_LANGUAGE_CPn_{CI|CS}_{AI|AS}, SQL_LANGUAGE_CPn_BIN[2]. Names are read from their end.
#include "collate/ext_rules.hpp"

#include "kt_folded.hpp"

#include <algorithm>

static bool my_take(std::string_view &name, std::string_view ending) noexcept
{
    if (name.size() < ending.size() || !kt_equal_folded(name.substr(name.size() - ending.size()), ending))
        return false;
    name.remove_suffix(ending.size());
    return true;
}

static bool my_take_binary(std::string_view &name, ext_rules &rules) noexcept
{
    if (my_take(name, "_BIN2"))
        rules.order = ext_order::code_points;
    else if (my_take(name, "_BIN"))
        rules.order = ext_order::first_letter;
    return rules.order != ext_order::linguistic;
}

static bool my_take_sensitivity(std::string_view &name, ext_rules &rules) noexcept
{
    rules.noaccent = my_take(name, "_AI");
    if (!rules.noaccent && !my_take(name, "_AS"))
        return false;
    rules.nocase = my_take(name, "_CI");
    return rules.nocase || my_take(name, "_CS");
}

static void my_take_version(std::string_view &name, ext_rules &rules) noexcept
{
    struct known_version {
        std::string_view ending;
        int version;
    };
    for (const auto &[ending, version] : {known_version{"_90", 90}, {"_100", 100}, {"_140", 140}, {"_160", 160}}) {
        if (my_take(name, ending)) {
            rules.version = version;
            return;
        }
    }
}

static bool my_read_windows(std::string_view name, ext_rules &rules) noexcept
{
    my_take(name, "_UTF8");
    if (!my_take_binary(name, rules)) {
        my_take(name, "_SC");
        rules.variation = my_take(name, "_VSS");
        rules.width = my_take(name, "_WS");
        rules.kana = my_take(name, "_KS");
        if (!my_take_sensitivity(name, rules))
            return false;
    }
    my_take_version(name, rules);
    rules.language = ext_find_language(name);
    return rules.language;
}

static bool my_take_code_page(std::string_view &name, std::string_view &number) noexcept
{
    const size_t at = name.rfind('_');
    if (at == std::string_view::npos)
        return false;
    const std::string_view page = name.substr(at + 1);
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    if (page.size() < 3 || !kt_equal_folded(page.substr(0, 2), "cp") ||
        !std::all_of(page.begin() + 2, page.end(), is_digit))
        return false;
    number = page.substr(2);
    name = name.substr(0, at);
    return true;
}

static bool my_read_sql(std::string_view name, ext_rules &rules) noexcept
{
    const bool is_of_code_page = my_take(name, ext_code_page_suffix);
    if (!my_take_binary(name, rules) && !my_take_sensitivity(name, rules))
        return false;
    std::string_view page;
    if (!my_take_code_page(name, page))
        return false;
    if (is_of_code_page && rules.order == ext_order::linguistic)
        rules.order = ext_order::code_page;
    rules.language = ext_find_sql_language(name);
    if (rules.language && page == "1254") // the one of Turkish, which the name does not say
        rules.language = ext_find_language("Turkish");
    return rules.language;
}

bool ext_read_rules(std::string_view name, ext_rules &rules) noexcept
{
    static constexpr std::string_view sql = "SQL_";
    if (kt_equal_folded(name.substr(0, sql.size()), sql))
        return my_read_sql(name.substr(sql.size()), rules);
    return my_read_windows(name, rules);
}
