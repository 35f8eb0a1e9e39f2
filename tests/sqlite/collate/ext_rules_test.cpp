// Names of collations.
#include "collate/ext_rules.hpp"

#include <gtest/gtest.h>

#include <string>

// The rules in a line: order, version, and what is not observed or is, in the order of the options.
static std::string my_shown(std::string_view name)
{
    ext_rules rules;
    if (!ext_read_rules(name, rules))
        return "unknown";
    static constexpr const char *orders[] = {"linguistic", "code page", "BIN2", "BIN"};
    std::string text = orders[static_cast<int>(rules.order)];
    text += " " + std::to_string(rules.version) + " " + std::string(rules.language->name);
    text += std::string(rules.nocase ? " CI" : "") + (rules.noaccent ? " AI" : "") + (rules.kana ? " KS" : "");
    return text + (rules.width ? " WS" : "") + (rules.variation ? " VSS" : "");
}

TEST(RulesTest, Names)
{
    struct name_case {
        const char *name;
        const char *rules;
    };
    const name_case cases[] = {
        {"Latin1_General_CI_AS", "linguistic 80 Latin1_General CI"},
        {"latin1_general_ci_as", "linguistic 80 Latin1_General CI"},
        {"Latin1_General_CS_AI", "linguistic 80 Latin1_General AI"},
        {"Latin1_General_100_CI_AI_KS_WS_SC_UTF8", "linguistic 100 Latin1_General CI AI KS WS"},
        {"Latin1_General_100_CI_AS_SC", "linguistic 100 Latin1_General CI"},
        {"Latin1_General_CS_AS_WS", "linguistic 80 Latin1_General WS"},
        {"Latin1_General_BIN", "BIN 80 Latin1_General"},
        {"Latin1_General_100_BIN2_UTF8", "BIN2 100 Latin1_General"},
        {"Japanese_XJIS_140_CS_AS_KS_WS_VSS_UTF8", "linguistic 140 Japanese_XJIS KS WS VSS"},
        {"Japanese_Bushu_Kakusu_140_BIN2", "BIN2 140 Japanese_Bushu_Kakusu"},
        {"Chinese_PRC_90_CI_AS", "linguistic 90 Chinese_PRC CI"},
        {"Norwegian_100_CI_AS", "linguistic 100 Norwegian CI"},
        {"SQL_Latin1_General_CP1_CI_AS", "linguistic 80 Latin1_General CI"},
        {"SQL_Latin1_General_CP1_CI_AS.varchar", "code page 80 Latin1_General CI"},
        {"SQL_Latin1_General_CP850_BIN", "BIN 80 Latin1_General"},
        {"SQL_Latin1_General_CP850_BIN2.varchar", "BIN2 80 Latin1_General"},
        {"SQL_Latin1_General_Pref_CP1_CI_AS", "linguistic 80 Latin1_General_Pref CI"},
        {"SQL_EBCDIC277_2_CP1_CS_AS", "linguistic 80 EBCDIC277_2"},
        {"SQL_1xCompat_CP850_CI_AS", "linguistic 80 1xCompat CI"},
        {"", "unknown"},
        {"Latin1_General", "unknown"},
        {"Latin1_General_CI", "unknown"},
        {"Latin1_General_AS", "unknown"},
        {"Latin1_General_AS_CI", "unknown"},
        {"Latin1_General_CI_AS_WS_KS", "unknown"},
        {"Latin1_General_BIN_WS", "unknown"},
        {"Latin1_General_110_CI_AS", "unknown"},
        {"Latin1_General_CI_AS.varchar", "unknown"},
        {"Klingon_CI_AS", "unknown"},
        {"_CI_AS", "unknown"},
        {"SQL_Latin1_General_CI_AS", "unknown"},
        {"SQL_Latin1_General_CPx_CI_AS", "unknown"},
        {"SQL_Latin1_General_CP1_CI_AS_KS", "unknown"},
        {"SQL_", "unknown"},
        {"NOCASE", "unknown"},
    };
    for (const name_case &c : cases)
        EXPECT_EQ(my_shown(c.name), c.rules) << c.name;
}
