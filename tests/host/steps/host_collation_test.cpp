// Collation names and comparison styles.
#include "steps/host_collation.hpp"

#include <gtest/gtest.h>

static std::string flags_of(const host_collation_rules &rules)
{
    return rules.locale + (rules.binary ? " binary" : "") + (rules.noaccent ? " noaccent" : "") +
           (rules.nocase ? " nocase" : "") + (rules.ks ? " ks" : "") + (rules.ws ? " ws" : "") +
           (rules.sc ? " sc" : "");
}

TEST(HostCollationTest, NameAndStyle)
{
    const struct {
        const char *name;
        int64_t style;
        const char *flags;
    } cases[] = {
        {"Latin1_General_CI_AS", 196609, "Latin1_General nocase"},
        {"Latin1_General_CS_AS", 196608, "Latin1_General"},
        {"Latin1_General_CI_AI", 196611, "Latin1_General noaccent nocase"},
        {"Latin1_General_CS_AS_KS_WS", 0, "Latin1_General ks ws"},
        {"Latin1_General_100_CI_AI_KS_WS_SC", 3, "Latin1_General_100 noaccent nocase ks ws sc"},
        {"Latin1_General_100_CI_AS_SC_UTF8", 196609, "Latin1_General_100 nocase sc"},
        {"Japanese_XJIS_140_CS_AS_KS_VSS", 131072, "Japanese_XJIS_140 ks"},
        {"SQL_Latin1_General_CP1_CI_AS", 196609, "SQL_Latin1_General_CP1 nocase"},
        {"Latin1_General_BIN", 0, "Latin1_General binary"},
        {"Latin1_General_100_BIN2_UTF8", 0, "Latin1_General_100 binary"},
        {"Latin1_General_CI_AI_WS", -1, "Latin1_General noaccent nocase ws"},
        {"Latin1_General_CS_AS", -1, "Latin1_General"},
        {"Latin1_General_CS_AS", 196609, "Latin1_General nocase"},
        {nullptr, -1, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name ? c.name : "no name");
        EXPECT_EQ(flags_of(host_read_collation(c.name, c.style)), c.flags);
    }
}
