// Findings as SARIF, the form in which code hosts take the results of an analysis.
#pragma once

#include "cli.hpp"

// The member of a finding that says why it is expected; absent for others.
inline constexpr const char *cli_expected = "expected";

// The first source is where findings are that name no file.
std::string cli_sarif(KT_context *ctx, const KT_varray *findings, const std::string &first_source);
