// What a collation's name and comparison style say about comparing texts.
#include "steps/host_collation.hpp"

#include <algorithm>
#include <iterator>
#include <string_view>

// Bits of the comparison style.
static constexpr int64_t ignore_case = 1;
static constexpr int64_t ignore_accent = 2;
static constexpr int64_t ignore_kana = 65536;
static constexpr int64_t ignore_width = 131072;

bool host_is_multibyte(int64_t code_page)
{
    constexpr int64_t multibyte[] = {932, 936, 949, 950, 1361, 54936, 65001};
    return std::find(std::begin(multibyte), std::end(multibyte), code_page) != std::end(multibyte);
}

// Takes one option off the end of a name, such as "_CI"; empty when the end is none.
static std::string_view my_take_option(std::string_view &name)
{
    constexpr std::string_view options[] = {"_CI", "_CS",  "_AI",   "_AS",   "_KS", "_WS",
                                            "_SC", "_BIN", "_BIN2", "_UTF8", "_VSS"};
    for (const std::string_view option : options) {
        if (name.ends_with(option)) {
            name.remove_suffix(option.size());
            return option;
        }
    }
    return {};
}

static host_collation_rules my_read_name(std::string_view name)
{
    host_collation_rules rules;
    for (std::string_view option = my_take_option(name); !option.empty(); option = my_take_option(name)) {
        rules.binary |= option.starts_with("_BIN");
        rules.noaccent |= option == "_AI";
        rules.nocase |= option == "_CI";
        rules.ks |= option == "_KS";
        rules.ws |= option == "_WS";
        rules.sc |= option == "_SC";
    }
    rules.locale = name;
    return rules;
}

host_collation_rules host_read_collation(const char *name, int64_t comparison_style)
{
    host_collation_rules rules = my_read_name(name ? name : "");
    if (comparison_style >= 0 && !rules.binary) {
        rules.nocase = comparison_style & ignore_case;
        rules.noaccent = comparison_style & ignore_accent;
        rules.ks = !(comparison_style & ignore_kana);
        rules.ws = !(comparison_style & ignore_width);
    }
    return rules;
}
