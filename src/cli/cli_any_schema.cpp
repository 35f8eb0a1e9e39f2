#include "cli_any_schema.hpp"

#include "cli_import.hpp"
#include "cli_schema.hpp"
#include "tov_host.h"

#include <string_view>

static bool my_is_database(const std::string &bytes)
{
    using namespace std::string_view_literals;
    return bytes.starts_with("SQLite format 3\0"sv);
}

void cli_load_any_schema(KT_context *ctx, const std::string &path, cli_schema *schema, cli_findings *findings)
{
    const std::vector<cli_source> sources = cli_read_sources({path});
    const cli_source &first = sources.front();
    if (my_is_database(first.bytes))
        throw cli_failure("this is a database; give the schema that it was made from", path);
    const bool is_json =
        sources.size() == 1 && tov_host__recognise(first.bytes.data(), first.bytes.size()) == TOV_HOST_SOURCE_JSON;
    if (is_json && cli_take_schema(ctx, first.bytes, first.name, schema))
        return;
    cli_findings unwanted(ctx);
    cli_import(ctx, {}, sources, schema, findings ? findings : &unwanted);
}
