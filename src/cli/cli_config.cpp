#include "cli_config.hpp"

#include "cli.hpp"
#include "cli_files.hpp"
#include "cli_import.hpp"
#include "cli_nearest.hpp"
#include "kt_folded.hpp"
#include "tov_host_types.h"

#include <algorithm>
#include <filesystem>

#include <toml++/toml.h>

namespace fs = std::filesystem;

namespace {

using strings = std::vector<std::string>;

// The options that a file may set.
struct settings {
    std::string path; // of the file
    cli_import_options &import;
    cli_findings_options &findings;
};

struct known_key {
    const char *name;
    void (*take)(const toml::node &value, const known_key &key, settings &to);
};

} // namespace

[[noreturn]] static void my_fail(const settings &to, const toml::source_position &place, const std::string &what)
{
    throw cli_failure(to.path + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " + what);
}

[[noreturn]] static void my_fail(const settings &to, const toml::node &value, const known_key &key, const char *what)
{
    my_fail(to, value.source().begin, std::string("'") + key.name + "' is not " + what);
}

static std::string my_string(const toml::node &value, const known_key &key, const settings &to, const char *what)
{
    const auto *string = value.as_string();
    if (!string)
        my_fail(to, value, key, what);
    if (string->get().find('\0') != std::string::npos)
        my_fail(to, value.source().begin, "a string holds the character NUL");
    return string->get();
}

// What the command line says stands in the place of all of it.
template <auto Member> static void my_take_list(const toml::node &value, const known_key &key, settings &to)
{
    static constexpr const char *what = "a list of strings";
    strings items;
    if (!value.is_array())
        my_fail(to, value, key, what);
    for (const toml::node &item : *value.as_array())
        items.push_back(my_string(item, key, to, what));
    strings &list = Member(to);
    if (list.empty())
        list = items;
}

// NAME=VALUE of each; those of the command line that have the same name stay.
template <auto Member> static void my_take_map(const toml::node &value, const known_key &key, settings &to)
{
    static constexpr const char *what = "a table of strings";
    if (!value.is_table())
        my_fail(to, value, key, what);
    strings &list = Member(to);
    const strings given = list;
    for (const auto &[name, item] : *value.as_table()) {
        const std::string begin = kt_folded(std::string(name.str()) + "=");
        if (name.str().find('=') != std::string_view::npos || name.str().find('\0') != std::string_view::npos)
            my_fail(to, name.source().begin, "a name holds '=' or the character NUL");
        const std::string text = my_string(item, key, to, what);
        if (std::none_of(given.begin(), given.end(),
                         [&](const std::string &one) { return kt_folded(one).starts_with(begin); }))
            list.push_back(std::string(name.str()) + "=" + text);
    }
}

// The types are the server's; the place of another one is known here only.
static void my_take_types(const toml::node &value, const known_key &key, settings &to)
{
    my_take_map<[](settings &from) -> strings & { return from.import.types; }>(value, key, to);
    for (const auto &[name, item] : *value.as_table()) {
        const cli_context context;
        tov_host_type type{};
        KT_bool is_known = 0;
        tov_host__find_type(context.ctx, item.as_string()->get().c_str(), &type, &is_known);
        cli_check(context.ctx, to.path);
        if (!is_known)
            my_fail(to, item.source().begin, "'" + item.as_string()->get() + "' is not a type of the server");
    }
}

static void my_take_encoding(const toml::node &value, const known_key &key, settings &to)
{
    const std::string encoding = my_string(value, key, to, "a string");
    if (to.import.encoding.empty())
        to.import.encoding = encoding;
}

static void my_take_clock(const toml::node &value, const known_key &key, settings &to)
{
    static constexpr const char *what = R"("local" or "utc")";
    const std::string clock = my_string(value, key, to, what);
    if (clock != "local" && clock != "utc")
        my_fail(to, value, key, what);
    if (to.import.clock.empty())
        to.import.clock = clock;
}

// A path in the file is one from its own folder.
static void my_take_baseline(const toml::node &value, const known_key &key, settings &to)
{
    const std::string baseline = my_string(value, key, to, "a string");
    if (to.findings.baseline.empty())
        to.findings.baseline = fs::path(to.path).parent_path() / baseline;
}

static void my_take_strict(const toml::node &value, const known_key &key, settings &to)
{
    if (!value.is_boolean())
        my_fail(to, value, key, "true or false");
    to.findings.is_strict = to.findings.is_strict || value.as_boolean()->get();
}

static constexpr known_key known_keys[] = {
    {"only", my_take_list<[](settings &to) -> strings & { return to.import.only; }>},
    {"skip", my_take_list<[](settings &to) -> strings & { return to.import.skip; }>},
    {"rename", my_take_map<[](settings &to) -> strings & { return to.import.renames; }>},
    {"type", my_take_types},
    {"define", my_take_map<[](settings &to) -> strings & { return to.import.defines; }>},
    {"constant", my_take_map<[](settings &to) -> strings & { return to.import.constants; }>},
    {"encoding", my_take_encoding},
    {"clock", my_take_clock},
    {"allow", my_take_list<[](settings &to) -> strings & { return to.findings.allowed; }>},
    {"baseline", my_take_baseline},
    {"strict", my_take_strict},
};

static const known_key &my_find_key(const toml::key &name, const settings &to)
{
    strings names;
    for (const known_key &key : known_keys) {
        if (name.str() == key.name)
            return key;
        names.emplace_back(key.name);
    }
    const std::string nearest = cli_nearest(std::string(name.str()), names);
    my_fail(to, name.source().begin,
            "there is no setting '" + std::string(name.str()) + "'" +
                (nearest.empty() ? "" : "; did you mean '" + nearest + "'?"));
}

static toml::table my_parse(const settings &to)
{
    try {
        return toml::parse(cli_read_file(to.path), to.path);
    } catch (const toml::parse_error &error) {
        my_fail(to, error.source().begin, std::string(error.description()));
    }
}

// The one beside the first source; "" when there is none.
static std::string my_find_file(const cli_import_options &import)
{
    std::error_code ignored; // reading the source says what is wrong
    const fs::path source = import.sources.empty() ? "-" : import.sources.front();
    const fs::path folder = fs::is_directory(source, ignored) ? source : source.parent_path();
    const fs::path file = folder / "tov-schema.toml";
    return source != "-" && fs::is_regular_file(file, ignored) ? file.string() : "";
}

static bool my_is_one_file(const fs::path &a, const fs::path &b)
{
    std::error_code error;
    return !a.empty() && !b.empty() && fs::weakly_canonical(a, error) == fs::weakly_canonical(b, error) && !error;
}

void cli_config_choice::add(const cli_command &command)
{
    const cli_option off = command.flag("--no-config", is_off, "do not read tov-schema.toml");
    command.option("--config", file, "read settings from this file, not from tov-schema.toml beside the source")
        .excludes(off);
}

void cli_apply_config(cli_config_choice &choice, cli_import_options &import, cli_findings_options &findings)
{
    if (choice.file.empty() && !choice.is_off)
        choice.file = my_find_file(import);
    if (choice.file.empty())
        return;
    settings to{choice.file, import, findings};
    const cli_findings_options given = findings;
    const toml::table file = my_parse(to);
    for (const auto &[name, value] : file) {
        const known_key &key = my_find_key(name, to);
        key.take(value, key, to);
    }
    if (given.baseline.empty() && my_is_one_file(findings.baseline, findings.output)) {
        findings.baseline = "";
        findings.is_strict = given.is_strict;
    }
}
