#include "cli_findings.hpp"

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_layout.hpp"
#include "cli_nearest.hpp"
#include "cli_place.hpp"
#include "cli_sarif.hpp"
#include "tov_host.h"

#include <algorithm>
#include <map>
#include <set>

// What a finding is about. Reasons may be worded anew and lines of scripts move, so neither is part of it.
static std::string my_identity(KT_context *ctx, const KT_vhash *finding)
{
    const std::string file = cli_place_of(cli_text_of(ctx, finding, "place")).file;
    std::string identity;
    for (const std::string &part : {cli_text_of(ctx, finding, "code"), file, cli_text_of(ctx, finding, "table"),
                                    cli_text_of(ctx, finding, "column"), cli_text_of(ctx, finding, "host_text")})
        identity += part + '\x1F';
    return identity;
}

static std::multiset<std::string> my_read_baseline(KT_context *ctx, const std::string &path)
{
    std::multiset<std::string> known;
    if (path.empty())
        return known;
    const cli_map document(ctx, cli_read_text(path), path);
    KT_varray *list = nullptr;
    KT_vhash__get__varray(ctx, document, "findings", &list);
    cli_check(ctx, path);
    try {
        for (const KT_vhash *finding : cli_maps_of(ctx, list))
            known.insert(my_identity(ctx, finding));
    } catch (const cli_failure &failure) {
        throw cli_failure(std::string("not a file of findings: ") + failure.what(), path);
    }
    return known;
}

static std::vector<std::string> my_codes()
{
    std::vector<std::string> codes;
    for (uint32_t n = 0; const tov_host_finding_kind *kind = tov_host__get_nth_finding_kind(n); n++)
        codes.emplace_back(kind->code);
    return codes;
}

void cli_check_findings_options(const cli_findings_options &options)
{
    const std::vector<std::string> codes = my_codes();
    for (const std::string &code : options.allowed) {
        if (std::find(codes.begin(), codes.end(), code) != codes.end())
            continue;
        const std::string nearest = cli_nearest(code, codes);
        throw cli_usage_failure(
            "no finding has this code" + (nearest.empty() ? "" : " (did you mean " + nearest + "?)"), code);
    }
}

namespace {

struct unexpected_findings {
    uint32_t all = 0;
    uint32_t failing = 0; // with --strict
};

} // namespace

// Marks the findings that are expected, and gives how many are not.
static unexpected_findings my_mark_expected(const cli_findings &findings, const cli_findings_options &options)
{
    KT_context *ctx = findings.ctx;
    std::multiset<std::string> known = my_read_baseline(ctx, options.baseline);
    unexpected_findings unexpected;
    for (KT_vhash *finding : cli_maps_of(ctx, findings.list)) {
        const auto place = known.find(my_identity(ctx, finding));
        const auto &allowed = options.allowed;
        if (place != known.end()) {
            known.erase(place);
            cli_add_text(ctx, finding, cli_expected, "baseline");
        } else if (std::find(allowed.begin(), allowed.end(), cli_text_of(ctx, finding, "code")) != allowed.end()) {
            cli_add_text(ctx, finding, cli_expected, "allowed");
        } else {
            unexpected.all++;
            unexpected.failing += cli_text_of(ctx, finding, "severity") != "info";
        }
    }
    return unexpected;
}

// One line for each finding that is not expected.
static std::string my_lines(const cli_findings &findings, bool with_info)
{
    KT_string *lines = nullptr;
    KT_string__alloc(findings.ctx, &lines);
    cli_check(findings.ctx, "");
    for (const KT_vhash *finding : cli_maps_of(findings.ctx, findings.list)) {
        const bool is_info = cli_text_of(findings.ctx, finding, "severity") == "info";
        if (!cli_text_of(findings.ctx, finding, cli_expected).empty() || (is_info && !with_info))
            continue;
        tov_host__format_finding(findings.ctx, finding, lines);
        KT_string__append__sz(findings.ctx, lines, "\n");
    }
    std::string text = cli_take(findings.ctx, lines);
    cli_check(findings.ctx, "");
    return text;
}

// How many there are of each code: those that weigh most first, then in the order of the codes' table.
static std::string my_summary(const cli_findings &findings, uint32_t unexpected)
{
    std::map<std::string, uint32_t> counts;
    for (const KT_vhash *finding : cli_maps_of(findings.ctx, findings.list)) {
        if (cli_text_of(findings.ctx, finding, cli_expected).empty())
            counts[cli_text_of(findings.ctx, finding, "code")]++;
    }
    std::vector<std::vector<std::string>> lines;
    for (const char *severity : {"error", "warning", "note", "info"}) {
        for (uint32_t n = 0; const tov_host_finding_kind *kind = tov_host__get_nth_finding_kind(n); n++) {
            if (std::string(kind->severity) == severity && counts.contains(kind->code))
                lines.push_back({std::to_string(counts[kind->code]), severity, kind->code, kind->meaning});
        }
    }
    const uint32_t expected = findings.count - unexpected;
    std::string text = std::to_string(unexpected) + (unexpected == 1 ? " finding" : " findings");
    text += expected ? ", and " + std::to_string(expected) + " expected" : "";
    return text + (lines.empty() ? "\n" : ":\n") + cli_lay_out(lines, "  ");
}

// {"findings":[{...},...]}, a line for each.
static std::string my_json(const cli_findings &findings)
{
    std::string json = "{\"findings\":[";
    for (const KT_vhash *finding : cli_maps_of(findings.ctx, findings.list))
        json += (json.back() == '[' ? "\n" : ",\n") + cli_json_text(findings.ctx, finding);
    return json + (findings.count ? "\n]}\n" : "]}\n");
}

static std::vector<cli_sarif_rule> my_finding_rules()
{
    std::vector<cli_sarif_rule> rules;
    for (uint32_t n = 0; const tov_host_finding_kind *kind = tov_host__get_nth_finding_kind(n); n++)
        rules.push_back({kind->code, kind->severity, kind->meaning});
    return rules;
}

static std::string my_text(const cli_findings &findings, const std::string &format, const std::string &source)
{
    if (format == "text")
        return my_lines(findings, true);
    return format == "sarif" ? cli_sarif(findings.ctx, my_finding_rules(), findings.list, source) : my_json(findings);
}

void cli_report_findings(const cli_findings &findings, const cli_findings_options &options, bool is_verbose,
                         const std::string &source)
{
    const unexpected_findings unexpected = my_mark_expected(findings, options);
    const bool has_file = !options.output.empty();
    const std::string shown = has_file || options.format.empty() ? "text" : options.format;
    if (!options.is_quiet) {
        cli_tell("%s", (shown == "text" ? my_lines(findings, is_verbose) : my_text(findings, shown, source)).c_str());
        if (shown == "text" && findings.count)
            cli_tell("%s", my_summary(findings, unexpected.all).c_str());
    }
    if (has_file)
        cli_write_file(options.output, my_text(findings, options.format.empty() ? "json" : options.format, source));
    if (options.is_strict && unexpected.failing)
        throw cli_failure(std::to_string(unexpected.failing) + " findings, and --strict allows none", "", cli_found);
}

void cli_add_findings_options(const cli_command &command, cli_findings_options &options)
{
    command.option("--findings", options.output, "write the findings to this file, as JSON or in the --format");
    command.option("--format", options.format, "the form of the findings: text, json or sarif", "FORM")
        .one_of({"text", "json", "sarif"});
    command.option("--allow", options.allowed,
                   "expect findings of this code, and print no lines for them; may be repeated", "CODE");
    command.option("--baseline", options.baseline, "expect the findings in this file, which --findings wrote as JSON");
    command.flag("--strict", options.is_strict, "fail, and write nothing else, when a finding is not expected");
}
