// Opening a load, files one after the other, and the end, at which references are checked.
#include "rows/load/client_loader.hpp"

#include "create/client_plan.hpp"

#include <algorithm>
#include <cstdlib>
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
    settings.wish.null_word = my_text(options.null_word);
    settings.wish.header = options.header == 0 ? -1 : (options.header > 0 ? 1 : 0);
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

static void my_open(KT_context *ctx, tov_schema *schema, const char *database, const tov_client_load_options &options,
                    tov_client_loader &loader)
{
    client_plan plan{ctx};
    KT_TRY(my_read_settings(ctx, options, loader.settings));
    KT_TRY(client_make_plan(ctx, schema, plan));
    loader.schema = schema;
    loader.prefix = plan.trigger_prefix;
    loader.converter.exact = options.exact;
    KT_TRY(client_connection__open(ctx, loader.database, database, false));
    if (loader.settings.is_scratch)
        KT_TRY(client_connection__run(ctx, loader.database, "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF"));
    if (!loader.settings.rejects.empty() && mkdir(loader.settings.rejects.c_str(), 0777) != 0) {
        struct stat directory {};
        if (stat(loader.settings.rejects.c_str(), &directory) != 0 || !S_ISDIR(directory.st_mode))
            KT_FAIL(KT_ERR_NOT_FOUND, "%s: not a directory, and cannot be made", loader.settings.rejects.c_str());
    }
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_progress__prepare(ctx, loader.database, loader.prefix));
    KT_TRY(client_loader__commit(ctx, loader, nullptr));
}

void tov_client__open_loader(KT_context *ctx, tov_schema *schema, const char *database,
                             const tov_client_load_options *options, tov_client_loader **result) noexcept
{
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
    KT_TRY(client_read_row_tbl(ctx, loader.schema, tbl_id, place->second.tbl));
    if (!loader.settings.with_triggers)
        KT_TRY(client_target__look_at_triggers(ctx, loader.database, loader.schema, place->second));
}

// How well a name means a table: 2 as it is written, 1 case aside, 0 not at all.
static int my_compare_names(std::string_view name, const std::string &other) noexcept
{
    if (name == other)
        return 2;
    return name.size() == other.size() &&
                   KT_strnicmp(name.data(), other.data(), static_cast<uint32_t>(name.size())) == 0
               ? 1
               : 0;
}

static int my_match(std::string_view name, const client_row_tbl &tbl)
{
    const std::string with_schema = (tbl.server_schema.empty() ? "dbo" : tbl.server_schema) + "." + tbl.server_name;
    return std::max({my_compare_names(name, tbl.name), my_compare_names(name, with_schema),
                     my_compare_names(name, tbl.server_name) - (tbl.server_name == tbl.name ? 0 : 1)});
}

void client_loader__find_tbl(KT_context *ctx, tov_client_loader &loader, std::string_view name, std::string &tbl_id)
{
    uint32_t count = 0;
    int best = 0;
    tbl_id.clear();
    KT_TRY(tov_schema__count_tbls(ctx, loader.schema, &count));
    for (uint32_t n = 0; n < count && best < 2; n++) {
        const char *id = nullptr;
        client_row_tbl tbl;
        KT_TRY(tov_schema__get_nth_tbl_id(ctx, loader.schema, n, &id));
        KT_TRY(client_read_row_tbl(ctx, loader.schema, id, tbl));
        const int match = my_match(name, tbl);
        if (match > best) {
            best = match;
            tbl_id = id;
        }
    }
}

// A file's name without its directories; without its ending too, the name of a table.
static std::string_view my_base(std::string_view path)
{
    const size_t slash = path.rfind('/');
    return slash == path.npos ? path : path.substr(slash + 1);
}

static void my_find_file_tbl(KT_context *ctx, tov_client_loader &loader, const char *path, std::string &tbl_id)
{
    std::string name = loader.settings.tbl;
    if (name.empty()) {
        const std::string_view base = my_base(path);
        name = base.substr(0, base.rfind('.'));
    }
    KT_TRY(client_loader__find_tbl(ctx, loader, name, tbl_id));
    if (tbl_id.empty())
        KT_FAIL(KT_ERR_NOT_FOUND, "no table is called \"%s\"; say which one the rows are for", name.c_str());
}

std::string client_loader_encoding(const tov_client_loader &loader)
{
    return loader.settings.wish.format == client_format::native ? "bytes" : loader.settings.encoding;
}

static std::string my_absolute(const char *path)
{
    char *resolved = realpath(path, nullptr);
    std::string result = resolved ? resolved : path;
    std::free(resolved);
    return result;
}

void client_loader__begin_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_target *target,
                               const std::string &fingerprint, client_load_part **result)
{
    client_load_part &part = job.parts.emplace_back();
    part.target = target;
    part.progress.file = my_absolute(job.path.c_str());
    part.progress.tbl = target ? target->tbl.name : "";
    part.progress.fingerprint = fingerprint;
    if (target) {
        KT_varray *records = nullptr;
        uint32_t count = 0;
        KT_TRY(
            tov_schema__list_fk_constraints(ctx, loader.schema, target->tbl.id.c_str(), nullptr, 0, &records, &count));
        KT_varray__free(ctx, records);
        part.keeps_runs = count > 0;
    }
    if (!loader.settings.again)
        KT_TRY(client_progress__find(ctx, loader.database, loader.prefix, part.progress));
    if (part.progress.id == 0)
        KT_TRY(client_progress__begin(ctx, loader.database, loader.prefix, part.progress));
    part.was_loaded = part.progress.state != client_load_state::loading;
    *result = &part;
}

static void my_open_rejects(KT_context *ctx, tov_client_loader &loader, client_load_job &job, const client_input &input)
{
    if (loader.settings.rejects.empty())
        return;
    const client_progress &first = job.parts.front().progress;
    KT_TRY(job.rejects.open(ctx, loader.settings.rejects, std::string(my_base(job.path)), first.rows_size,
                            first.lines_size));
    job.rejects.set_head(input.encoding() == client_encoding::utf_8 ? "" : input.mark());
}

// A row of the table alone, in the dialect that fits best.
static void my_prepare_table_file(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input)
{
    std::string tbl_id;
    client_target *target = nullptr;
    client_load_part *part = nullptr;
    std::string fingerprint;
    KT_TRY(my_find_file_tbl(ctx, loader, job.path.c_str(), tbl_id));
    KT_TRY(client_loader__get_target(ctx, loader, tbl_id.c_str(), &target));
    KT_TRY(client_guess_dialect(ctx, target->tbl, loader.settings.wish, input.data(), input.is_all(), loader.converter,
                                job.dialect));
    job.reader = client_make_reader(target->tbl, job.dialect);
    const std::string dialect = loader.settings.encoding + client_show_dialect(job.dialect);
    KT_TRY(client_fingerprint(ctx, job.path.c_str(), dialect, fingerprint));
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_loader__begin_part(ctx, loader, job, target, fingerprint, &part));
    KT_TRY(client_target__lay_out(ctx, loader.database, *target, job.dialect.cols, &part->layout));
}

// Whether a file holds statements: it is called so, or begins with one.
static bool my_is_script(const tov_client_loader &loader, const client_load_job &job, const client_input &input)
{
    if (loader.settings.wish.format != client_format::guess)
        return loader.settings.wish.format == client_format::insert;
    const std::string_view name = my_base(job.path);
    const bool is_named = name.size() > 4 && KT_stricmp(job.path.c_str() + job.path.size() - 4, ".sql") == 0;
    const std::string_view data = input.data();
    return is_named || (data.size() > 7 && KT_strnicmp(data.data(), "insert ", 7) == 0);
}

static void my_load_file(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    client_input input;
    KT_TRY(input.open(ctx, job.path.c_str(), client_loader_encoding(loader)));
    if (my_is_script(loader, job, input))
        KT_TRY(client_loader__begin_script(ctx, loader, job));
    else
        KT_TRY(my_prepare_table_file(ctx, loader, job, input));
    client_progress &first = job.parts.front().progress;
    if (first.state != client_load_state::loading)
        return;
    if (job.dialect.format == client_format::insert) // what a statement says holds on after it
        job.skip_to = first.position;
    else if (first.position > 0)
        KT_TRY(input.seek(ctx, first.position, first.line));
    KT_TRY(my_open_rejects(ctx, loader, job, input));
    KT_TRY(client_loader__read_rows(ctx, loader, job, input));
    for (client_load_part &part : job.parts)
        part.progress.state = client_load_state::loaded;
    KT_TRY(client_loader__commit(ctx, loader, &job));
    if (loader.settings.progress)
        loader.settings.progress(loader.settings.data, job.shown.c_str(), input.size(), input.size());
}

// What was read before a failure stays, where it is not all or nothing: the rows that were put in are good.
static void my_keep_rest(KT_context *ctx, tov_client_loader &loader)
{
    KT_context__push_level(ctx);
    if (loader.in_transaction)
        client_connection__run(ctx, loader.database, "ROLLBACK");
    loader.in_transaction = false;
    KT_context__pop_level(ctx);
}

void tov_client__load_file(KT_context *ctx, tov_client_loader *loader, const char *path) noexcept
{
    kt_contain(ctx, [&] {
        const auto start = std::chrono::steady_clock::now();
        client_load_job &job = loader->jobs.emplace_back();
        job.path = path;
        job.shown = my_base(path);
        my_load_file(ctx, *loader, job);
        job.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        my_keep_rest(ctx, *loader);
}

void tov_client__load_parts(KT_context *ctx, tov_client_loader *loader, const char *name, tov_client_read_parts read,
                            void *data) noexcept
{
    kt_contain(ctx, [&] {
        client_part_source &source = loader->sources.emplace_back();
        source.name = name;
        source.read = read;
        source.data = data;
        KT_TRY(client_loader__load_parts(ctx, *loader, source));
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        my_keep_rest(ctx, *loader);
}

static void my_end(KT_context *ctx, tov_client_loader &loader)
{
    KT_TRY(client_loader__begin(ctx, loader));
    if (!loader.settings.skip_references)
        KT_TRY(client_loader__check_references(ctx, loader));
    if (loader.settings.all_or_nothing && loader.rejected > 0) {
        KT_TRY(client_connection__run(ctx, loader.database, "ROLLBACK"));
        loader.in_transaction = false;
        return;
    }
    for (client_load_job &job : loader.jobs) {
        for (client_load_part &part : job.parts) {
            if (!loader.settings.skip_references)
                part.progress.state = client_load_state::done;
            KT_TRY(client_progress__save(ctx, loader.database, loader.prefix, part.progress));
        }
    }
    if (loader.settings.is_scratch) // nothing can go on in it, so nothing has to be known of how it was made
        KT_TRY(client_connection__run(ctx, loader.database,
                                      "DROP TABLE \"" + loader.prefix + "load_progress\"; DROP TABLE \"" +
                                          loader.prefix + "load_runs\""));
    KT_TRY(client_connection__run(ctx, loader.database, "COMMIT"));
    loader.in_transaction = false;
}

static void my_report_shortened(KT_context *ctx, const std::string &shortened, KT_vhash *record)
{
    KT_vhash *counts = nullptr;
    KT_TRY(KT_vhash__addnew__vhash(ctx, record, "shortened", &counts));
    size_t at = 0;
    while (at < shortened.size()) {
        const size_t end = shortened.find('\n', at);
        const std::string line = shortened.substr(at, end - at);
        const size_t mark = line.rfind('=');
        KT_TRY(KT_vhash__update__int64(ctx, counts, line.substr(0, mark).c_str(), std::stoll(line.substr(mark + 1))));
        at = end + 1;
    }
}

static void my_report_part(KT_context *ctx, const tov_client_loader &loader, const client_load_job &job,
                           const client_load_part &part, KT_varray *report)
{
    const bool taken_back = loader.settings.all_or_nothing && loader.rejected > 0;
    const std::string dialect = client_show_dialect(job.dialect);
    KT_vhash *record = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, report, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "file", job.shown.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", part.progress.tbl.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "dialect", dialect.c_str()));
    KT_TRY(KT_vhash__add__int64(ctx, record, "read", part.progress.read));
    KT_TRY(KT_vhash__add__int64(ctx, record, "loaded", taken_back ? 0 : part.progress.loaded));
    KT_TRY(KT_vhash__add__int64(ctx, record, "rejected", part.progress.rejected));
    KT_TRY(my_report_shortened(ctx, part.progress.shortened, record));
    const bool is_first = &part == &job.parts.front() || &part == &job.parts[1]; // a script's first table
    KT_TRY(KT_vhash__add__double(ctx, record, "seconds", is_first ? job.seconds : 0));
    KT_TRY(KT_vhash__add__bool(ctx, record, "before", part.was_loaded));
    KT_TRY(KT_vhash__add__bool(ctx, record, "history", part.is_history));
    KT_TRY(KT_vhash__add__bool(ctx, record, "part", job.source != nullptr));
}

void tov_client__finish_load(KT_context *ctx, tov_client_loader *loader, KT_varray **report,
                             KT_varray **remarks) noexcept
{
    kt_contain(ctx, [&] {
        kt_owned_varray files{ctx};
        kt_owned_varray texts{ctx};
        KT_TRY(my_end(ctx, *loader));
        KT_TRY(KT_varray__alloc(ctx, files.out()));
        KT_TRY(KT_varray__alloc(ctx, texts.out()));
        for (const client_load_job &job : loader->jobs) {
            for (const client_load_part &part : job.parts) {
                if (part.target || part.progress.read > 0)
                    KT_TRY(my_report_part(ctx, *loader, job, part, files));
            }
        }
        for (const std::string &remark : loader->remarks)
            KT_TRY(KT_varray__append__string__sz(ctx, texts, remark.c_str()));
        files.move_to(report);
        texts.move_to(remarks);
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        my_keep_rest(ctx, *loader);
}
