// Files one after the other, each from where an earlier load left it.
#include "rows/load/client_loader.hpp"

#include <cstdlib>
#include <memory>

#define KT_HERE "src/client/rows/load/client_load_file"

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
    client_loader__find_tbl(loader, name, tbl_id);
    const size_t last = name.find_last_not_of("0123456789");
    if (tbl_id.empty() && loader.settings.tbl.empty() && last != name.npos && name[last] == '-')
        client_loader__find_tbl(loader, name.substr(0, last), tbl_id); // Orders-2.dat
    if (tbl_id.empty())
        KT_FAIL(KT_ERR_NOT_FOUND, "no table is called \"%s\"; say which one the rows are for", name.c_str());
}

std::string client_loader_encoding(const tov_client_loader &loader)
{
    return loader.settings.wish.format == client_format::native ? "bytes" : loader.settings.encoding;
}

static std::string my_absolute(const char *path)
{
    const auto free_path = [](char *resolved) { std::free(resolved); };
    const std::unique_ptr<char, decltype(free_path)> resolved(realpath(path, nullptr), free_path);
    return resolved ? resolved.get() : path;
}

void client_loader__begin_part(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_target *target,
                               const std::string &fingerprint, client_load_part **result)
{
    client_load_part &part = job.parts.emplace_back();
    part.target = target;
    part.progress.file = my_absolute(job.path.c_str());
    part.progress.tbl = target ? target->tbl.name : "";
    part.progress.fingerprint = fingerprint;
    part.progress.dialect = client_pack_dialect(job.dialect);
    if (target) {
        kt_owned_varray records{ctx};
        uint32_t count = 0;
        KT_TRY(tov_schema__list_fk_constraints(ctx, loader.schema, target->tbl.id.c_str(), nullptr, 0, records.out(),
                                               &count));
        part.keeps_runs = count > 0;
    }
    if (!loader.settings.again)
        KT_TRY(client_progress__find(ctx, loader.database, loader.plan.trigger_prefix, part.progress));
    if (part.progress.id == 0)
        KT_TRY(client_progress__begin(ctx, loader.database, loader.plan.trigger_prefix, part.progress));
    part.was_loaded = part.progress.state != client_load_state::loading;
    part.shortened = client_unpack_counts(part.progress.shortened);
    *result = &part;
}

// Rejects go into files of names that are free: what is there may be of another file, or be corrected by now. The name
// is recorded before there is such a file, so that a load that is interrupted finds its own again.
void client_loader__open_rejects(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    client_progress &first = job.parts.front().progress;
    if (loader.settings.rejects.empty() || job.rejects.is_open())
        return;
    if (first.rejects.empty()) {
        std::vector<std::string> taken;
        for (const client_load_job &other : loader.jobs) {
            if (!other.parts.empty())
                taken.push_back(other.parts.front().progress.rejects);
        }
        first.rejects = client_find_reject_name(loader.settings.rejects, job.shown, taken);
        KT_TRY(client_loader__begin(ctx, loader));
        KT_TRY(client_loader__commit(ctx, loader, &job));
    }
    KT_TRY(job.rejects.open(ctx, loader.settings.rejects, first.rejects, first.rows_size, first.lines_size));
}

static void my_open_rejects(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input)
{
    const std::string mark = input.encoding() == client_encoding::utf_8 ? "" : input.mark();
    job.rejects.set_form(mark + input.raw(job.dialect.header), input.raw(job.dialect.row_end));
    KT_TRY(client_loader__open_rejects(ctx, loader, job));
}

// Whether rows can be read from the middle of a file. What a statement of a script says holds on after it, and where
// the server broke the lines of JSON is counted from the beginning.
static bool my_can_go_on(client_format format) noexcept
{
    return format != client_format::insert && format != client_format::json;
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
    job.dialect.is_utf_16 =
        input.encoding() == client_encoding::utf_16le || input.encoding() == client_encoding::utf_16be;
    const std::string dialect = loader.settings.encoding + client_show_dialect(job.dialect);
    KT_TRY(client_fingerprint(ctx, job.path.c_str(), dialect, fingerprint));
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_loader__begin_part(ctx, loader, job, target, fingerprint, &part));
    KT_TRY(client_target__lay_out(ctx, loader.database, *target, job.dialect.cols, &part->layout));
    job.reader =
        client_make_reader(target->tbl, job.dialect, !my_can_go_on(job.dialect.format) || part->progress.position == 0);
}

// Whether a file holds statements: it is called so, or begins with one.
static bool my_is_script(const tov_client_loader &loader, const client_load_job &job, client_input &input)
{
    if (loader.settings.wish.format != client_format::guess)
        return loader.settings.wish.format == client_format::insert;
    const std::string_view name = my_base(job.path);
    const bool is_named = name.size() > 4 && KT_stricmp(job.path.c_str() + job.path.size() - 4, ".sql") == 0;
    const std::string_view data = input.data();
    return is_named || (data.size() > 7 && KT_strnicmp(data.data(), "insert ", 7) == 0);
}

// Statements and JSON have no zero bytes; in bcp files one is an empty string, so those are never taken for UTF-16.
static bool my_has_zeros_of_utf_16_only(const tov_client_loader &loader, const client_load_job &job,
                                        client_input &input)
{
    const client_format wish = loader.settings.wish.format;
    if (!input.looks_like_utf_16())
        return false;
    if (wish != client_format::guess)
        return wish == client_format::insert || wish == client_format::json;
    const size_t first = input.data().find_first_not_of('\0');
    return my_is_script(loader, job, input) ||
           (first < input.data().size() && (input.data()[first] == '[' || input.data()[first] == '{'));
}

static void my_load_file(KT_context *ctx, tov_client_loader &loader, client_load_job &job)
{
    client_input input;
    KT_TRY(input.open(ctx, job.path.c_str(), client_loader_encoding(loader)));
    if (my_has_zeros_of_utf_16_only(loader, job, input))
        KT_TRY(input.read_as_utf_16(ctx));
    if (my_is_script(loader, job, input))
        KT_TRY(client_loader__begin_script(ctx, loader, job));
    else
        KT_TRY(my_prepare_table_file(ctx, loader, job, input));
    client_progress &first = job.parts.front().progress;
    if (first.state != client_load_state::loading)
        return;
    if (!my_can_go_on(job.dialect.format))
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

void client_loader__roll_back(KT_context *ctx, tov_client_loader &loader)
{
    KT_context__push_level(ctx);
    if (loader.in_transaction)
        client_connection__run(ctx, loader.database, "ROLLBACK");
    loader.in_transaction = false;
    KT_context__pop_level(ctx);
}

void tov_client__load_file(KT_context *ctx, tov_client_loader *loader, const char *path) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_contain(ctx, [&] {
        const auto start = std::chrono::steady_clock::now();
        client_load_job &job = loader->jobs.emplace_back();
        job.path = path;
        job.shown = my_base(path);
        my_load_file(ctx, *loader, job);
        job.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        client_loader__roll_back(ctx, *loader);
}

void tov_client__load_parts(KT_context *ctx, tov_client_loader *loader, const char *name, tov_client_read_parts read,
                            void *data) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_contain(ctx, [&] {
        client_part_source &source = loader->sources.emplace_back();
        source.name = name;
        source.read = read;
        source.data = data;
        KT_TRY(client_loader__load_parts(ctx, *loader, source));
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        client_loader__roll_back(ctx, *loader);
}
