// tov-schema create and sql: a schema becomes a database, or the script that makes it.

#include "cli_create_options.hpp"
#include "cli_files.hpp"
#include "cli_harmless.hpp"
#include "cli_json.hpp"
#include "cli_paths.hpp"
#include "cli_progress.hpp"
#include "cli_schema.hpp"
#include "commands.hpp"
#include "tov_client.h"

#include <exception>
#include <memory>

namespace {

struct create_options {
    std::string schema;
    std::string database;
    std::string output = "-";
    cli_create_options made;
};

} // namespace

// Says on standard error why tables are not created in the order of their references.
static void my_print_remarks(KT_context *ctx, tov_schema *schema, const std::string &path)
{
    KT_varray *tbl_ids = nullptr, *remarks = nullptr;
    tov_client__creation_order(ctx, schema, &tbl_ids, &remarks);
    cli_check(ctx, path);
    KT_varray__free(ctx, tbl_ids);
    for (const std::string &remark : cli_take_texts(ctx, remarks))
        cli_tell_line("tov-schema: note: " + remark);
}

static int my_run_create(const create_options &options)
{
    if (options.database == "-")
        throw cli_usage_failure("a database cannot be written to standard output; tov-schema sql prints a script that "
                                "creates it");
    cli_keep_inputs(options.database, {options.schema});
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    my_print_remarks(context.ctx, schema, options.schema);
    cli_progress progress("creating");
    tov_client_create_options client_options = options.made.for_client();
    client_options.progress = cli_progress::step;
    client_options.data = &progress;
    tov_client__create_database__with(context.ctx, schema, options.database.c_str(), &client_options);
    progress.finish();
    const bool is_of_database = KT_context__err_code(context.ctx) >= KT_ERR_SQLITE(0);
    cli_check(context.ctx, is_of_database ? options.database : options.schema);
    return cli_done;
}

namespace {

// What takes a script on its way from the library; a failure of it waits here until the library has returned.
struct script_taker {
    const cli_sink &sink;
    std::string pieces = {};
    std::exception_ptr failure = {};
};

} // namespace

static constexpr size_t pieces_at_a_time = 1 << 20;

static void my_take_piece(KT_context *ctx, void *data, const char *text) noexcept
{
    auto *taker = static_cast<script_taker *>(data);
    try {
        const std::string_view piece = text;
        if (taker->pieces.size() + piece.size() > pieces_at_a_time) {
            taker->sink(taker->pieces);
            taker->pieces.clear();
        }
        if (piece.size() > pieces_at_a_time)
            taker->sink(piece);
        else
            taker->pieces += piece;
    } catch (...) {
        taker->failure = std::current_exception();
        KT_context__err__generic(ctx, KT_ERR_UNEXPECTED_VALUE, "src/cli/command_create", __LINE__);
    }
}

static void my_write_script(KT_context *ctx, tov_schema *schema, const create_options &options, const cli_sink &sink)
{
    const tov_client_create_options client_options = options.made.for_client();
    script_taker taker{sink};
    tov_client__stream_script(ctx, schema, &client_options, my_take_piece, &taker);
    if (taker.failure)
        std::rethrow_exception(taker.failure);
    cli_check(ctx, options.schema);
    sink(taker.pieces);
}

static int my_run_sql(const create_options &options)
{
    cli_keep_inputs(options.output, {options.schema});
    const cli_context context;
    cli_schema schema(context.ctx);
    cli_load_schema(context.ctx, options.schema, &schema);
    my_print_remarks(context.ctx, schema, options.schema);
    const cli_waiting waiting("writing");
    cli_write_pieces(options.output,
                     [&](const cli_sink &sink) { my_write_script(context.ctx, schema, options, sink); });
    return cli_done;
}

void cli_add_create(cli_arguments &arguments)
{
    auto options = std::make_shared<create_options>();
    const cli_command command = arguments.add("create", "Create the tables of a schema in a SQLite database");
    command.details("All tables are created, or none. A database that already has one of them is refused.\n\n"
                    "Example: tov-schema create schema.json client.db");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.argument("DATABASE", options->database, "the database file; made when it is absent").required();
    options->made.add(command);
    command.runs([options] { return my_run_create(*options); });
}

void cli_add_sql(cli_arguments &arguments)
{
    auto options = std::make_shared<create_options>();
    const cli_command command = arguments.add("sql", "Print the script that create would run");
    command.details("Example: tov-schema sql schema.json | sqlite3 -bail client.db");
    command.argument("SCHEMA", options->schema, "the schema; - for standard input").required();
    command.option("-o,--output", options->output, "where the script goes (default: standard output)");
    options->made.add(command);
    command.runs([options] { return my_run_sql(*options); });
}
