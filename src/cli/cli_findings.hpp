// The findings of an import: printed, written to a file, and counted for --strict.
#pragma once

#include "cli.hpp"
#include "cli_arguments.hpp"

#include <vector>

struct cli_findings {
    explicit cli_findings(KT_context *context) : ctx(context)
    {
    }
    ~cli_findings()
    {
        KT_varray__free(ctx, list);
    }
    cli_findings(const cli_findings &) = delete;
    cli_findings &operator=(const cli_findings &) = delete;

    KT_context *ctx;
    KT_varray *list = nullptr;
    uint32_t count = 0;
};

// What the options say of findings.
struct cli_findings_options {
    std::string output; // a file, "" for none
    std::string format; // text, json or sarif; "" for text on the terminal and json in a file
    std::vector<std::string> allowed;
    std::string baseline; // a file, "" for none
    bool is_strict = false;
    bool is_quiet = false;
};

void cli_add_findings_options(const cli_command &command, cli_findings_options &options);
// Throws when a code that is allowed is not one.
void cli_check_findings_options(const cli_findings_options &options);

// Prints the findings that are neither allowed nor in the baseline, with their number by code at the end, and writes
// all to the file; as JSON or SARIF all are printed, as text those of severity info when is_verbose. Throws where
// --strict asks for it. source is the file or folder where findings are that have no place.
void cli_report_findings(const cli_findings &findings, const cli_findings_options &options, bool is_verbose,
                         const std::string &source);
