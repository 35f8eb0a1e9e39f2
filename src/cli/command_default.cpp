// tov-schema default: what a SQL Server default becomes in SQLite, and why.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_nearest.hpp"
#include "cli_types.hpp"
#include "commands.hpp"
#include "tov_host.h"

#include <charconv>
#include <iostream>
#include <memory>
#include <string_view>

namespace {

struct default_options {
    std::string type;
    std::string text;
    uint32_t scale = 0;
    bool is_json = false;
};

struct outcome {
    const char *what; // kept, dropped, refused
    std::string detail;
};

struct input_line {
    std::string type_name;
    std::optional<cli_type> type;
    uint32_t scale = 0;
    std::string text;
};

} // namespace

static std::string my_unknown_type(const std::string &name)
{
    const std::string nearest = cli_nearest(name.substr(0, name.find('(')), cli_type_names());
    return "there is no type '" + name + "'" + (nearest.empty() ? "" : "; did you mean '" + nearest + "'?");
}

static void my_check_scale(uint32_t scale, const std::string &where)
{
    if (scale > 255)
        throw cli_failure("a scale is a number from 0 to 255", where);
}

// A schema of one column, for the operation that reads a column's type.
static void my_set_type(KT_context *ctx, tov_schema *schema, const tov_abstract_type &type, uint32_t scale)
{
    if (type.kind == TOV_KIND_DECIMAL)
        tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 38, static_cast<uint8_t>(scale));
    else
        tov_schema__set_col_type_simple(ctx, schema, "t", "c", type.name);
    cli_check(ctx, type.name);
}

static outcome my_translate(KT_context *ctx, tov_schema *schema, const cli_type &type, uint32_t scale,
                            const std::string &text)
{
    if (!type.abstract_type)
        return {"dropped", type.carries_over};
    my_set_type(ctx, schema, *type.abstract_type, scale);
    kt_owned_text result{ctx};
    tov_schema__fix_mssql_defval(ctx, schema, "t", "c", text.c_str(), result.out());
    if (tov_host__is_refused_default(KT_context__err_code(ctx))) {
        outcome refused{"refused", KT_context__err_description(ctx)};
        KT_context__err_reset(ctx);
        return refused;
    }
    if (KT_context__has_err(ctx)) // SQLite could not try the default: nothing that the user gave is wrong
        throw cli_failure(KT_context__err_description(ctx), text, cli_internal);
    if (!result.get())
        return {"dropped", type.carries_over};
    return {"kept", result.get()};
}

static void my_print(KT_context *ctx, const default_options &options, const std::string &type, const std::string &text,
                     const outcome &result)
{
    if (!options.is_json) {
        cli_print(std::string(result.what) + "\t" + cli_harmless(result.detail) + "\n");
        return;
    }
    cli_map map(ctx);
    cli_add_text(ctx, map, "type", type.c_str());
    cli_add_text(ctx, map, "text", text.c_str());
    cli_add_text(ctx, map, "outcome", result.what);
    cli_add_text(ctx, map, result.what == std::string_view("kept") ? "default" : "reason", result.detail.c_str());
    cli_print(cli_json_text(ctx, map) + "\n");
}

// TYPE<tab>SCALE<tab>TEXT; an empty scale is 0.
static input_line my_split(const std::string &line, size_t number)
{
    const std::string where = "standard input, line " + std::to_string(number);
    const size_t first = line.find('\t');
    const size_t second = first == std::string::npos ? first : line.find('\t', first + 1);
    if (second == std::string::npos)
        throw cli_failure("a line is TYPE<tab>SCALE<tab>TEXT", where);
    if (line.find('\0') != std::string::npos)
        throw cli_failure("the line holds a NUL", where);
    input_line result;
    result.type_name = line.substr(0, first);
    result.type = cli_find_type(result.type_name, &result.scale);
    if (!result.type)
        throw cli_failure(my_unknown_type(result.type_name), where);
    result.text = line.substr(second + 1);
    const char *begin = line.data() + first + 1, *end = line.data() + second;
    const auto [stop, error] = std::from_chars(begin, end, result.scale);
    if (begin != end && (stop != end || error != std::errc{}))
        result.scale = UINT32_MAX;
    my_check_scale(result.scale, where);
    return result;
}

static int my_run_lines(KT_context *ctx, tov_schema *schema, const default_options &options)
{
    std::string line;
    for (size_t number = 1; std::getline(std::cin, line); number++) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty())
            continue;
        const input_line input = my_split(line, number);
        my_print(ctx, options, input.type_name, input.text,
                 my_translate(ctx, schema, *input.type, input.scale, input.text));
    }
    if (std::cin.bad())
        throw cli_failure("cannot read", "standard input");
    return cli_done;
}

static int my_run(const default_options &options)
{
    uint32_t scale = options.scale;
    const std::optional<cli_type> type = cli_find_type(options.type, &scale);
    if (!type && !options.type.empty())
        throw cli_usage_failure(my_unknown_type(options.type));
    my_check_scale(scale, options.type);
    const cli_context context;
    KT_context *ctx = context.ctx;
    cli_schema schema(ctx);
    tov_schema__new(ctx, 1, &schema.schema);
    cli_check(ctx, "");
    tov_schema__add_tbl(ctx, schema, "t", "t", 0);
    cli_check(ctx, "");
    tov_schema__add_col(ctx, schema, "t", "c", "c", 1, 0, 0);
    cli_check(ctx, "");
    if (!type)
        return my_run_lines(ctx, schema, options);
    my_print(ctx, options, options.type, options.text, my_translate(ctx, schema, *type, scale, options.text));
    return cli_done;
}

void cli_add_default(cli_arguments &arguments)
{
    auto options = std::make_shared<default_options>();
    const cli_command command = arguments.add("default", "Show what a SQL Server default becomes in SQLite");
    command.details(
        "Prints kept and the SQLite default, dropped or refused and the reason, with a tab between.\n"
        "An import keeps some of those that are dropped here: local clocks, computed constants and others.\n"
        "Without TYPE and TEXT, reads lines TYPE<tab>SCALE<tab>TEXT from standard input.\n\n"
        "Example: tov-schema default money \"((2.5))\"");
    const cli_option type =
        command.argument("TYPE", options->type, "an abstract type (sint32) or SQL Server's (int, \"decimal(9,2)\")");
    const cli_option text =
        command.argument("TEXT", options->text, "the default as SQL Server prints it, e.g. \"((0))\"");
    type.needs(text);
    command.option("--scale", options->scale, "digits after the decimal point (default: 0)").between(0, 255);
    command.flag("--json", options->is_json, "print one JSON object for each default");
    command.runs([options] { return my_run(*options); });
}
