// Findings as SARIF, the form in which code hosts take the results of an analysis.
#pragma once

#include "cli.hpp"

#include <vector>

// The member of a finding that says why it is expected; absent for others.
inline constexpr const char *cli_expected = "expected";

// A kind of finding.
struct cli_sarif_rule {
    const char *code;
    const char *severity;
    const char *meaning;
};

// The first source is where findings are that name no file.
std::string cli_sarif(KT_context *ctx, const std::vector<cli_sarif_rule> &rules, const KT_varray *findings,
                      const std::string &first_source);
