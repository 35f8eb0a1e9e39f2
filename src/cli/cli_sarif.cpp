#include "cli_sarif.hpp"

#include "cli_json.hpp"
#include "tov_host.h"
#include "tov_version.h"

#include <charconv>
#include <cstring>

namespace {

// "orders.sql:12:5", taken apart.
struct place {
    std::string file;
    int64_t line = 0; // 0: none
    int64_t column = 0;
};

} // namespace

static const char *my_member(KT_context *ctx, const KT_vhash *finding, const char *key)
{
    const char *text = nullptr;
    KT_vhash__check__sz(ctx, finding, key, &text);
    cli_check(ctx, key);
    return text;
}

// Takes ":NUMBER" off the end of a place; 0 when it does not end so.
static int64_t my_take_number(std::string &text)
{
    const size_t colon = text.rfind(':');
    int64_t number = 0;
    if (colon == std::string::npos)
        return 0;
    const char *end = text.data() + text.size();
    if (std::from_chars(text.data() + colon + 1, end, number).ptr != end)
        return 0;
    text.erase(colon);
    return number;
}

static place my_place(const char *text, const std::string &first_source)
{
    place result;
    result.file = text ? text : first_source;
    if (text) {
        result.column = my_take_number(result.file);
        result.line = my_take_number(result.file);
    }
    return result;
}

static KT_vhash *my_add_map(KT_context *ctx, KT_vhash *map, const char *key)
{
    KT_vhash *inner = nullptr;
    KT_vhash__addnew__vhash(ctx, map, key, &inner);
    cli_check(ctx, key);
    return inner;
}

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

static void my_add_rules(KT_context *ctx, KT_vhash *driver)
{
    KT_varray *rules = cli_add_list(ctx, driver, "rules");
    for (uint32_t n = 0; const tov_host_finding_kind *kind = tov_host__get_nth_finding_kind(n); n++) {
        KT_vhash *rule = cli_append_map(ctx, rules);
        cli_add_text(ctx, rule, "id", kind->code);
        cli_add_text(ctx, my_add_map(ctx, rule, "shortDescription"), "text", kind->meaning);
        cli_add_text(ctx, my_add_map(ctx, rule, "defaultConfiguration"), "level", kind->severity);
    }
}

static void my_add_location(KT_context *ctx, KT_vhash *result, const KT_vhash *finding, const std::string &first_source)
{
    const place where = my_place(my_member(ctx, finding, "place"), first_source);
    KT_vhash *location = cli_append_map(ctx, cli_add_list(ctx, result, "locations"));
    KT_vhash *physical = my_add_map(ctx, location, "physicalLocation");
    cli_add_text(ctx, my_add_map(ctx, physical, "artifactLocation"), "uri", my_uri(where.file).c_str());
    if (where.line > 0) {
        KT_vhash *region = my_add_map(ctx, physical, "region");
        cli_add_number(ctx, region, "startLine", where.line);
        cli_add_number(ctx, region, "startColumn", where.column);
    }
    const char *table = my_member(ctx, finding, "table");
    const char *column = my_member(ctx, finding, "column");
    if (!table)
        return;
    KT_vhash *logical = cli_append_map(ctx, cli_add_list(ctx, location, "logicalLocations"));
    const std::string name = std::string(table) + (column ? "." : "") + (column ? column : "");
    cli_add_text(ctx, logical, "fullyQualifiedName", name.c_str());
    cli_add_text(ctx, logical, "kind", column ? "member" : "type");
}

static void my_add_result(KT_context *ctx, KT_varray *results, const KT_vhash *finding, const std::string &first_source)
{
    KT_vhash *result = cli_append_map(ctx, results);
    cli_add_text(ctx, result, "ruleId", my_member(ctx, finding, "code"));
    cli_add_text(ctx, result, "level", my_member(ctx, finding, "severity"));
    const char *host_text = my_member(ctx, finding, "host_text");
    const std::string message =
        std::string(my_member(ctx, finding, "reason")) + (host_text ? std::string(": ") + host_text : "");
    cli_add_text(ctx, my_add_map(ctx, result, "message"), "text", message.c_str());
    my_add_location(ctx, result, finding, first_source);
    const char *expected = my_member(ctx, finding, cli_expected);
    if (!expected)
        return;
    KT_vhash *suppression = cli_append_map(ctx, cli_add_list(ctx, result, "suppressions"));
    cli_add_text(ctx, suppression, "kind", "external");
    cli_add_text(ctx, suppression, "justification", expected);
}

std::string cli_sarif(KT_context *ctx, const KT_varray *findings, uint32_t count, const std::string &first_source)
{
    const cli_map log(ctx);
    cli_add_text(ctx, log, "$schema", "https://json.schemastore.org/sarif-2.1.0.json");
    cli_add_text(ctx, log, "version", "2.1.0");
    KT_vhash *run = cli_append_map(ctx, cli_add_list(ctx, log, "runs"));
    KT_vhash *driver = my_add_map(ctx, my_add_map(ctx, run, "tool"), "driver");
    cli_add_text(ctx, driver, "name", "tov-schema");
    cli_add_text(ctx, driver, "version", TOV_SCHEMA_VERSION);
    my_add_rules(ctx, driver);
    cli_add_text(ctx, run, "columnKind", "unicodeCodePoints");
    KT_varray *results = cli_add_list(ctx, run, "results");
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *finding = nullptr;
        KT_varray__get__vhash(ctx, findings, n, &finding);
        cli_check(ctx, "");
        my_add_result(ctx, results, finding, first_source);
    }
    return cli_json_text(ctx, log) + "\n";
}
