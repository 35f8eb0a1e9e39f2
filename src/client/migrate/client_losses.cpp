// Whether what a migration loses may be lost.
#include "migrate/client_steps.hpp"

#include "kt_folded.hpp"

#define KT_HERE "src/client/migrate/client_losses"

static bool my_is_named(const tov_client_migrate_options &options, const std::string &name)
{
    for (uint32_t n = 0; n < options.allowed_loss_count; n++) {
        if (kt_equal_folded(options.allowed_losses[n], name))
            return true;
    }
    return false;
}

static bool my_is_allowed(const client_migration &migration, const client_loss &loss,
                          const tov_client_migrate_options &options)
{
    const client_tbl_content &tbl = migration.comparison.old_content.tbls[loss.old_tbl];
    for (const std::string &name : {tbl.name, tbl.sqlite_name}) {
        if (my_is_named(options, name))
            return true;
        if (!loss.col.empty() &&
            (my_is_named(options, name + '.' + loss.col) || my_is_named(options, name + '.' + loss.sqlite_col)))
            return true;
    }
    return false;
}

void client_check_losses(KT_context *ctx, const client_migration &migration, const tov_client_migrate_options &options)
{
    std::string losses;
    for (const client_migration_step &step : migration.steps) {
        if (step.loss.old_tbl != client_nothing && !my_is_allowed(migration, step.loss, options))
            losses += (losses.empty() ? "" : "; ") + step.description;
    }
    if (!losses.empty())
        KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "this would lose data: %s", losses.c_str());
}
