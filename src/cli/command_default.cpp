// tov-schema default: what a SQL Server default becomes in SQLite, and why.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "commands.hpp"
#include "tov_host.h"

#include <charconv>
#include <iostream>
#include <memory>
#include <optional>
#include <string_view>

namespace {

struct default_options {
    std::string type;
    std::string text;
    uint32_t scale = 0;
    bool is_json = false;
};

// The types that a column may have, under the system's own names and SQL Server's.
struct known_type {
    const char *name;
    const char *abstract_type;
    const char *carries_over; // what a default of this type may be
};

constexpr const char *a_literal = "a single literal carries over, an expression does not";
constexpr const char *an_integer = "an integer within the type's range carries over, an expression does not";
constexpr const char *a_number = "a single number carries over, an expression does not";
constexpr const char *a_date = "a literal, getutcdate() and sysutcdatetime() carry over, nothing else";
constexpr const char *a_guid = "newid() and newsequentialid() carry over, nothing else";
constexpr const char *a_blob = "a constant 0x... of whole bytes carries over, nothing else";
constexpr const char *nothing = "an identity column has no default";

constexpr known_type known_types[] = {
    {"identity", "identity", nothing},
    {"sint64", "sint64", an_integer},
    {"sint32", "sint32", an_integer},
    {"sint16", "sint16", an_integer},
    {"uint8", "uint8", an_integer},
    {"uint1", "uint1", an_integer},
    {"loose/int", "loose/int", a_literal},
    {"real8", "real8", a_number},
    {"real4", "real4", a_number},
    {"loose/real", "loose/real", a_literal},
    {"decimal", "decimal", a_number},
    {"money8", "money8", a_number},
    {"money4", "money4", a_number},
    {"date", "date", a_date},
    {"time", "time", a_date},
    {"datetime", "datetime", a_date},
    {"text", "text", a_literal},
    {"loose/text", "loose/text", a_literal},
    {"blob", "blob", a_blob},
    {"loose/blob", "loose/blob", a_blob},
    {"guid", "guid", a_guid},
    {"bigint", "sint64", an_integer},
    {"int", "sint32", an_integer},
    {"smallint", "sint16", an_integer},
    {"tinyint", "uint8", an_integer},
    {"bit", "uint1", an_integer},
    {"float", "real8", a_number},
    {"real", "real4", a_number},
    {"numeric", "decimal", a_number},
    {"money", "money8", a_number},
    {"smallmoney", "money4", a_number},
    {"datetime2", "datetime", a_date},
    {"smalldatetime", "datetime", a_date},
    {"char", "text", a_literal},
    {"varchar", "text", a_literal},
    {"nchar", "text", a_literal},
    {"nvarchar", "text", a_literal},
    {"xml", "text", a_literal},
    {"ntext", "text", a_literal},
    {"binary", "blob", a_blob},
    {"varbinary", "blob", a_blob},
    {"image", "blob", a_blob},
    {"uniqueidentifier", "guid", a_guid},
};

struct outcome {
    const char *what; // kept, dropped, refused
    std::string detail;
};

struct input_line {
    std::string type_name;
    const known_type *type = nullptr;
    uint32_t scale = 0;
    std::string text;
};

} // namespace

// Null for an unknown name.
static const known_type *my_find_type(const std::string &name)
{
    for (const known_type &type : known_types)
        if (KT_stricmp(type.name, name.c_str()) == 0)
            return &type;
    return nullptr;
}

// A schema of one column, for the operation that reads a column's type.
static void my_set_type(KT_context *ctx, tov_schema *schema, const known_type &type, uint32_t scale)
{
    if (std::string_view(type.abstract_type) == "decimal")
        tov_schema__set_col_type_decimal(ctx, schema, "t", "c", 38, static_cast<uint8_t>(scale));
    else
        tov_schema__set_col_type_simple(ctx, schema, "t", "c", type.abstract_type);
    cli_check(ctx, type.name);
}

static outcome my_translate(KT_context *ctx, tov_schema *schema, const known_type &type, uint32_t scale,
                            const std::string &text)
{
    my_set_type(ctx, schema, type, scale);
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
    result.type = my_find_type(result.type_name);
    if (!result.type)
        throw cli_failure("no type of the name '" + result.type_name + "'", where);
    result.text = line.substr(second + 1);
    const char *begin = line.data() + first + 1, *end = line.data() + second;
    const auto [stop, error] = std::from_chars(begin, end, result.scale);
    if (begin != end && (stop != end || error != std::errc{} || result.scale > 255))
        throw cli_failure("a scale is a number from 0 to 255", where);
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
    const known_type *type = my_find_type(options.type);
    if (!type && !options.type.empty())
        throw cli_usage_failure("no type of this name", options.type);
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
    my_print(ctx, options, options.type, options.text, my_translate(ctx, schema, *type, options.scale, options.text));
    return cli_done;
}

void cli_add_default(cli_arguments &arguments)
{
    auto options = std::make_shared<default_options>();
    const cli_command command = arguments.add("default", "Show what a SQL Server default becomes in SQLite");
    command.details("Prints kept and the SQLite default, dropped or refused and the reason, with a tab between.\n"
                    "Without TYPE and TEXT, reads lines TYPE<tab>SCALE<tab>TEXT from standard input.\n\n"
                    "Example: tov-schema default money \"((2.5))\"");
    const cli_option type =
        command.argument("TYPE", options->type, "an abstract type (sint32) or SQL Server's name (int)");
    const cli_option text =
        command.argument("TEXT", options->text, "the default as SQL Server prints it, e.g. \"((0))\"");
    type.needs(text);
    command.option("--scale", options->scale, "digits after the decimal point (default: 0)").between(0, 255);
    command.flag("--json", options->is_json, "print one JSON object for each default");
    command.runs([options] { return my_run(*options); });
}
