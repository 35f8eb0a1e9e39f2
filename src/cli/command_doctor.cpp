// tov-schema doctor: whether a database is sound, and what programs that open it have to see to.

#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "commands.hpp"
#include "tov_doctor.h"

#include <algorithm>
#include <memory>

namespace {

struct doctor_options {
    std::string database;
    std::string format = "text";
    std::string output = "-";
    bool is_quiet = false;
};

using diagnoses = std::vector<KT_vhash *>;

} // namespace

// What to do is said once for several of a kind.
static std::string my_text(KT_context *ctx, const diagnoses &list, bool is_quiet)
{
    std::string text;
    for (size_t n = 0; n < list.size(); n++) {
        const std::string code = cli_text_of(ctx, list[n], "code");
        const std::string severity = cli_text_of(ctx, list[n], "severity");
        const std::string advice = cli_text_of(ctx, list[n], "advice");
        const bool is_last = n + 1 == list.size() || cli_text_of(ctx, list[n + 1], "code") != code;
        if (is_quiet && severity == "ok")
            continue;
        text += severity + ": " + code + ": " + cli_harmless_of(ctx, list[n], "message") + "\n";
        if (is_last && !advice.empty())
            text += "    " + advice + "\n";
    }
    return text;
}

static std::string my_json(KT_context *ctx, const diagnoses &list)
{
    std::string text;
    for (const KT_vhash *diagnosis : list)
        text += (text.empty() ? "\n" : ",\n") + cli_json_text(ctx, diagnosis);
    return "{\"diagnoses\":[" + text + "\n]}\n";
}

static std::string my_script(KT_context *ctx, const diagnoses &list)
{
    std::string script;
    for (const KT_vhash *diagnosis : list) {
        const std::string sql = cli_text_of(ctx, diagnosis, "sql");
        if (!sql.empty())
            script += sql + ";\n";
    }
    return script.empty() ? "" : "BEGIN IMMEDIATE;\n" + script + "COMMIT;\n";
}

static int my_run_doctor(const doctor_options &options)
{
    cli_keep_inputs(options.output, {options.database});
    const cli_context context;
    KT_context *ctx = context.ctx;
    kt_owned_varray owned{ctx};
    tov_client__examine_database(ctx, options.database.c_str(), owned.out());
    cli_check(ctx, options.database);
    const diagnoses list = cli_maps_of(ctx, owned);
    cli_write_file(options.output, options.format == "json"  ? my_json(ctx, list)
                                   : options.format == "sql" ? my_script(ctx, list)
                                                             : my_text(ctx, list, options.is_quiet));
    const bool is_broken = std::any_of(list.begin(), list.end(), [&](const KT_vhash *diagnosis) {
        return cli_text_of(ctx, diagnosis, "severity") == "error";
    });
    return is_broken ? cli_found : cli_done;
}

void cli_add_doctor(cli_arguments &arguments)
{
    auto options = std::make_shared<doctor_options>();
    const cli_command command = arguments.add("doctor", "Say whether a database is sound, and what to do if not");
    command.details(
        "Looks at SQLite and the settings of its connections, the file, the references, their indexes, and whether "
        "the\ndatabase still has what its recorded schema makes. It is only read. docs/doctor.md describes the codes. "
        "Exit\ncode 1: something is broken.\n\n"
        "Example: tov-schema doctor client.db --format sql | sqlite3 -bail client.db");
    command.argument("DATABASE", options->database, "the SQLite database").required();
    command
        .option("--format", options->format,
                "text (default), json, or sql: a script that mends what SQL can mend without touching rows", "FORM")
        .one_of({"text", "json", "sql"});
    command.option("-o,--output", options->output, "where it is written (default: standard output)");
    command.flag("--quiet", options->is_quiet, "leave out of the text what is as it should be");
    command.runs([options] { return my_run_doctor(*options); });
}
