// Opening a load, and the tables that its rows may go into.
#include "rows/load/client_loader.hpp"

#include <algorithm>
#include <sys/stat.h>

#define KT_HERE "src/client/rows/load/client_loader"

static std::string my_text(const char *text)
{
    return text ? text : "";
}

static void my_read_settings(KT_context *ctx, const tov_client_load_options &options, client_load_settings &settings)
{
    settings.tbl = my_text(options.tbl);
    settings.encoding = my_text(options.encoding);
    settings.rejects = my_text(options.rejects);
    settings.wish.field_end = client_unescape_terminator(my_text(options.field_end));
    settings.wish.row_end = client_unescape_terminator(my_text(options.row_end));
    if (options.null_word)
        settings.wish.null_word = options.null_word;
    if (options.header != 0)
        settings.wish.has_header = options.header > 0;
    settings.max_rejects = options.max_rejects;
    settings.batch = options.batch > 0 ? options.batch : settings.batch;
    settings.all_or_nothing = options.all_or_nothing;
    settings.again = options.again;
    settings.skip_references = options.skip_references;
    settings.with_triggers = options.with_triggers;
    settings.is_scratch = options.is_scratch;
    settings.progress = options.progress;
    settings.data = options.data;
    if (!client_find_format(my_text(options.format), settings.wish.format))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "no format is called \"%s\"", options.format);
}

static void my_list_names(KT_context *ctx, tov_client_loader &loader)
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_tbls(ctx, loader.schema, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        client_row_tbl tbl;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, loader.schema, n, &id));
        KT_TRY(client_read_row_tbl(ctx, loader.schema, id, tbl));
        loader.names.push_back({id, tbl.name, tbl.server_schema.empty() ? "dbo" : tbl.server_schema, tbl.server_name});
    }
}

static void my_open(KT_context *ctx, tov_schema *schema, const char *database, const tov_client_load_options &options,
                    tov_client_loader &loader)
{
    KT_TRY(my_read_settings(ctx, options, loader.settings));
    KT_TRY(client_make_plan(ctx, schema, loader.plan));
    loader.schema = schema;
    loader.converter.exact = options.exact;
    KT_TRY(my_list_names(ctx, loader));
    KT_TRY(client_connection__open(ctx, loader.database, database, false));
    if (loader.settings.is_scratch)
        KT_TRY(client_connection__run(ctx, loader.database, "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF"));
    if (!loader.settings.rejects.empty() && mkdir(loader.settings.rejects.c_str(), 0777) != 0) {
        struct stat directory {};
        if (stat(loader.settings.rejects.c_str(), &directory) != 0 || !S_ISDIR(directory.st_mode))
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: not a directory, and cannot be made", loader.settings.rejects.c_str());
    }
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_progress__prepare(ctx, loader.database, loader.plan.trigger_prefix));
    KT_TRY(client_connection__ask(ctx, loader.database, "PRAGMA schema_version", loader.schema_version));
    KT_TRY(client_loader__commit(ctx, loader, nullptr));
}

void tov_client__open_loader(KT_context *ctx, tov_schema *schema, const char *database,
                             const tov_client_load_options *options, tov_client_loader **result) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_contain(ctx, [&] {
        auto loader = std::make_unique<tov_client_loader>();
        KT_TRY(my_open(ctx, schema, database, options ? *options : tov_client_load_options{}, *loader));
        *result = loader.release();
    });
}

void tov_client__free_loader(KT_context *ctx, tov_client_loader *loader) noexcept
{
    static_cast<void>(ctx);
    delete loader;
}

void client_loader__get_target(KT_context *ctx, tov_client_loader &loader, const char *tbl_id, client_target **target)
{
    const auto [place, is_new] = loader.targets.try_emplace(tbl_id);
    *target = &place->second;
    if (!is_new)
        return;
    const auto tbl = std::find_if(loader.plan.tbls.begin(), loader.plan.tbls.end(),
                                  [&](const client_tbl &planned) { return KT_stricmp(planned.id, tbl_id) == 0; });
    place->second.tbl = tbl->rows;
    place->second.versions = &loader.versions;
    KT_TRY(client_target__look_at_checks(ctx, loader.database, loader.schema, loader.plan, *tbl, place->second));
    place->second.with_triggers |= loader.settings.with_triggers;
}

// How well a name means a table: 2 as it is written, 1 case aside, 0 not at all.
static int my_compare_names(std::string_view name, std::string_view other) noexcept
{
    if (name == other)
        return 2;
    return name.size() == other.size() &&
                   KT_strnicmp(name.data(), other.data(), static_cast<uint32_t>(name.size())) == 0
               ? 1
               : 0;
}

static int my_match(std::string_view name, const client_tbl_names &tbl)
{
    return std::max({my_compare_names(name, tbl.name),
                     my_compare_names(name, tbl.server_schema + "." + tbl.server_name),
                     my_compare_names(name, tbl.server_name) - (tbl.server_name == tbl.name ? 0 : 1)});
}

// The first table that a name means best.
template <class Match> static void my_find(const tov_client_loader &loader, std::string &tbl_id, const Match &match)
{
    int best = 0;
    tbl_id.clear();
    for (const client_tbl_names &tbl : loader.names) {
        const int how_well = match(tbl);
        if (how_well > best) {
            best = how_well;
            tbl_id = tbl.id;
        }
    }
}

void client_loader__find_tbl(const tov_client_loader &loader, std::string_view name, std::string &tbl_id)
{
    my_find(loader, tbl_id, [&](const client_tbl_names &tbl) { return my_match(name, tbl); });
}

void client_loader__find_server_tbl(const tov_client_loader &loader, std::string_view schema_name,
                                    std::string_view tbl_name, std::string &tbl_id)
{
    my_find(loader, tbl_id, [&](const client_tbl_names &tbl) {
        return std::min(my_compare_names(schema_name, tbl.server_schema), my_compare_names(tbl_name, tbl.server_name));
    });
}
