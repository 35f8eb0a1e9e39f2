#include "cli_migration.hpp"

#include "cli_any_schema.hpp"
#include "cli_json.hpp"

static std::vector<const char *> my_borrowed(const std::vector<std::string> &strings)
{
    std::vector<const char *> borrowed;
    for (const std::string &string : strings)
        borrowed.push_back(string.c_str());
    return borrowed;
}

cli_migration::cli_migration(const cli_migration_options &options)
    : renames_(my_borrowed(options.renames)), allowed_losses_(my_borrowed(options.allowed_losses))
{
    chosen_.compare = {options.by == "id", renames_.data(), static_cast<uint32_t>(renames_.size())};
    chosen_.allowed_losses = allowed_losses_.data();
    chosen_.allowed_loss_count = static_cast<uint32_t>(allowed_losses_.size());
}

void cli_migration::create_as(const tov_client_create_options &create)
{
    create_ = create;
    chosen_.create = &create_;
}

void cli_load_old_schema(KT_context *ctx, const std::string &path, cli_schema *schema, cli_migration &migration,
                         const cli_config_choice &config)
{
    if (!cli_is_database(path))
        return cli_load_any_schema(ctx, path, schema, nullptr, config);
    tov_client_create_options create = {};
    tov_client__read_record(ctx, path.c_str(), &schema->schema, &create);
    cli_check(ctx, path);
    migration.create_as(create);
}

std::string cli_migration_script(KT_context *ctx, const std::string &old_path, const std::string &new_path,
                                 const cli_migration_options &options)
{
    cli_migration migration(options);
    cli_schema a(ctx), b(ctx);
    cli_load_old_schema(ctx, old_path, &a, migration, options.config);
    cli_load_any_schema(ctx, new_path, &b, nullptr, options.config);
    KT_string *script = nullptr;
    tov_client__write_migration(ctx, a, b, migration, &script);
    std::string text = cli_take(ctx, script);
    cli_check(ctx, "");
    return text;
}
