#include "cli_any_schema.hpp"

#include "cli_import.hpp"
#include "cli_schema.hpp"
#include "tov_client.h"
#include "tov_host.h"

#include <filesystem>
#include <fstream>
#include <string_view>

bool cli_is_database(const std::string &path)
{
    using namespace std::string_view_literals;
    constexpr auto magic = "SQLite format 3\0"sv;
    char begin[magic.size()] = {};
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    std::ifstream(path, std::ios::binary).read(begin, sizeof begin);
    return std::string_view(begin, sizeof begin) == magic;
}

void cli_load_any_schema(KT_context *ctx, const std::string &path, cli_schema *schema, cli_findings *findings,
                         const cli_config_choice &config)
{
    if (cli_is_database(path)) {
        tov_client__read_record(ctx, path.c_str(), &schema->schema, nullptr);
        return cli_check(ctx, path);
    }
    const std::vector<cli_source> sources = cli_read_sources({path});
    const cli_source &first = sources.front();
    const bool is_json =
        sources.size() == 1 && tov_host__recognise(first.bytes.data(), first.bytes.size()) == TOV_HOST_SOURCE_JSON;
    if (is_json && cli_take_schema(ctx, first.bytes, first.name, schema))
        return;
    cli_findings unwanted(ctx);
    cli_import_options options;
    cli_findings_options ignored;
    options.sources = {path};
    options.config = config;
    cli_apply_config(options.config, options, ignored);
    cli_import(ctx, options, sources, schema, findings ? findings : &unwanted);
}
