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

// source is the file or folder where findings are that have no place.
std::string cli_sarif(KT_context *ctx, const std::vector<cli_sarif_rule> &rules, const KT_varray *findings,
                      const std::string &source);
