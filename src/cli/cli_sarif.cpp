#include "cli_sarif.hpp"

#include "cli_json.hpp"
#include "cli_place.hpp"
#include "tov_version.h"

#include <cstring>

// A path as the URI that SARIF asks for, relative as it was given.
static std::string my_uri(const std::string &path)
{
    static constexpr const char *plain = "-._~/";
    static constexpr const char *digits = "0123456789ABCDEF";
    std::string uri;
    for (const char byte : path) {
        const auto code = static_cast<unsigned char>(byte);
        if (std::isalnum(code) || (byte && std::strchr(plain, byte)))
            uri += byte;
        else
            uri += {'%', digits[code >> 4], digits[code & 15]};
    }
    return uri;
}

// SARIF has no level below a note.
static const char *my_level(std::string_view severity)
{
    return severity == "error" ? "error" : severity == "warning" ? "warning" : "note";
}

static void my_add_rules(KT_context *ctx, const std::vector<cli_sarif_rule> &kinds, KT_vhash *driver)
{
    KT_varray *rules = cli_add_list(ctx, driver, "rules");
    for (const cli_sarif_rule &kind : kinds) {
        KT_vhash *rule = cli_append_map(ctx, rules);
        cli_add_text(ctx, rule, "id", kind.code);
        cli_add_text(ctx, cli_add_map(ctx, rule, "shortDescription"), "text", kind.meaning);
        cli_add_text(ctx, cli_add_map(ctx, rule, "defaultConfiguration"), "level", my_level(kind.severity));
    }
}

static void my_add_location(KT_context *ctx, KT_vhash *result, const KT_vhash *finding, const std::string &source)
{
    const std::string text = cli_text_of(ctx, finding, "place");
    const cli_place where = text.empty() ? cli_place{source} : cli_place_of(text);
    KT_vhash *location = cli_append_map(ctx, cli_add_list(ctx, result, "locations"));
    KT_vhash *physical = cli_add_map(ctx, location, "physicalLocation");
    cli_add_text(ctx, cli_add_map(ctx, physical, "artifactLocation"), "uri", my_uri(where.file).c_str());
    if (where.line > 0) {
        KT_vhash *region = cli_add_map(ctx, physical, "region");
        cli_add_number(ctx, region, "startLine", where.line);
        cli_add_number(ctx, region, "startColumn", where.column);
    }
    const std::string table = cli_text_of(ctx, finding, "table");
    const std::string column = cli_text_of(ctx, finding, "column");
    if (table.empty())
        return;
    KT_vhash *logical = cli_append_map(ctx, cli_add_list(ctx, location, "logicalLocations"));
    cli_add_text(ctx, logical, "fullyQualifiedName", (table + (column.empty() ? "" : "." + column)).c_str());
    cli_add_text(ctx, logical, "kind", column.empty() ? "type" : "member");
}

static void my_add_result(KT_context *ctx, KT_varray *results, const KT_vhash *finding, const std::string &source)
{
    KT_vhash *result = cli_append_map(ctx, results);
    cli_add_text(ctx, result, "ruleId", cli_text_of(ctx, finding, "code").c_str());
    cli_add_text(ctx, result, "level", my_level(cli_text_of(ctx, finding, "severity")));
    const std::string host_text = cli_text_of(ctx, finding, "host_text");
    const std::string message = cli_text_of(ctx, finding, "reason") + (host_text.empty() ? "" : ": " + host_text);
    cli_add_text(ctx, cli_add_map(ctx, result, "message"), "text", message.c_str());
    my_add_location(ctx, result, finding, source);
    const std::string expected = cli_text_of(ctx, finding, cli_expected);
    if (expected.empty())
        return;
    KT_vhash *suppression = cli_append_map(ctx, cli_add_list(ctx, result, "suppressions"));
    cli_add_text(ctx, suppression, "kind", "external");
    cli_add_text(ctx, suppression, "justification", expected.c_str());
}

std::string cli_sarif(KT_context *ctx, const std::vector<cli_sarif_rule> &rules, const KT_varray *findings,
                      const std::string &source)
{
    const cli_map log(ctx);
    cli_add_text(ctx, log, "$schema", "https://json.schemastore.org/sarif-2.1.0.json");
    cli_add_text(ctx, log, "version", "2.1.0");
    KT_vhash *run = cli_append_map(ctx, cli_add_list(ctx, log, "runs"));
    KT_vhash *driver = cli_add_map(ctx, cli_add_map(ctx, run, "tool"), "driver");
    cli_add_text(ctx, driver, "name", "tov-schema");
    cli_add_text(ctx, driver, "version", TOV_SCHEMA_VERSION);
    my_add_rules(ctx, rules, driver);
    cli_add_text(ctx, run, "columnKind", "unicodeCodePoints");
    KT_varray *results = cli_add_list(ctx, run, "results");
    for (const KT_vhash *finding : cli_maps_of(ctx, findings))
        my_add_result(ctx, results, finding, source);
    return cli_json_text(ctx, log) + "\n";
}
