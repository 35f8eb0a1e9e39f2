// Row parts of packages: bcp's native form, in pieces that a function of the caller's hands over.
#include "rows/load/client_loader.hpp"

#define KT_HERE "src/client/rows/load/client_load_parts"

namespace {
struct part_load {
    tov_client_loader &loader;
    client_part_source &source;
    client_load_job *job = nullptr; // the part that is being read
    uint32_t next_number = 0;
    std::chrono::steady_clock::time_point start;
};

struct part_search {
    tov_client_loader &loader;
    const client_load_job &job;
    client_row_search &search;
    uint32_t number = 0; // of the part that comes next
    client_input input;
};
} // namespace

static std::string my_part_name(const char *schema_name, const char *tbl_name, uint32_t number)
{
    return std::string(schema_name) + "." + tbl_name + "-" + std::to_string(number) + ".bcp";
}

static void my_begin_part(KT_context *ctx, part_load &load, const char *schema_name, const char *tbl_name,
                          uint32_t number)
{
    tov_client_loader &loader = load.loader;
    client_load_job &job = loader.jobs.emplace_back();
    client_target *target = nullptr;
    client_load_part *part = nullptr;
    std::string tbl_id;
    load.job = &job;
    load.start = std::chrono::steady_clock::now();
    job.source = &load.source;
    job.shown = my_part_name(schema_name, tbl_name, number);
    job.input = std::make_unique<client_input>();
    job.input->open_fed();
    job.number = load.next_number++;
    job.path = load.source.name + "#" + std::to_string(job.number) + "-" + job.shown;
    client_loader__find_server_tbl(loader, schema_name, tbl_name, tbl_id);
    if (tbl_id.empty()) {
        job.unknown_tbl = std::string(schema_name) + "." + tbl_name;
        return;
    }
    KT_TRY(client_loader__get_target(ctx, loader, tbl_id.c_str(), &target));
    job.dialect = client_native_dialect(target->tbl);
    job.reader = client_make_reader(target->tbl, job.dialect, true);
    KT_TRY(client_loader__begin(ctx, loader));
    KT_TRY(client_loader__begin_part(ctx, loader, job, target, "part", &part));
    KT_TRY(client_target__lay_out(ctx, loader.database, *target, job.dialect.cols, &part->layout));
    part->is_history = target->tbl.is_history;
    job.skip_to = part->progress.position; // of a load that was interrupted
    if (!part->was_loaded)
        KT_TRY(client_loader__open_rejects(ctx, loader, job));
}

static void my_end_part(KT_context *ctx, part_load &load)
{
    client_load_job &job = *load.job;
    for (client_load_part &part : job.parts)
        part.progress.state = client_load_state::loaded;
    KT_TRY(client_loader__commit(ctx, load.loader, &job));
    job.input.reset();
    job.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - load.start).count();
    load.job = nullptr;
}

static void my_take_bytes(KT_context *ctx, part_load &load, std::string_view bytes)
{
    client_load_job &job = *load.job;
    if (!job.unknown_tbl.empty()) { // of rows that cannot be told apart only the size is known
        job.unknown_bytes += static_cast<int64_t>(bytes.size());
        if (bytes.empty())
            load.job = nullptr;
        return;
    }
    const bool is_new = !job.parts.front().was_loaded;
    job.input->feed(bytes, bytes.empty());
    if (is_new)
        KT_TRY(client_loader__read_rows(ctx, load.loader, job, *job.input));
    else
        job.input->take(job.input->data().size());
    if (bytes.empty())
        KT_TRY(my_end_part(ctx, load));
}

extern "C" {
static void my_take_to_load(KT_context *ctx, void *data, const char *schema_name, const char *tbl_name, uint32_t number,
                            const char *bytes, size_t size) noexcept
{
    kt_contain(ctx, [&] {
        auto &load = *static_cast<part_load *>(data);
        if (!load.job)
            KT_TRY(my_begin_part(ctx, load, schema_name, tbl_name, number));
        KT_TRY(my_take_bytes(ctx, load, {bytes, size}));
    });
}

static void my_take_to_search(KT_context *ctx, void *data, const char *, const char *, uint32_t, const char *bytes,
                              size_t size) noexcept
{
    kt_contain(ctx, [&] {
        auto &search = *static_cast<part_search *>(data);
        const bool is_it = search.number == search.job.number;
        search.number += size == 0 ? 1 : 0;
        if (!is_it)
            return;
        search.input.feed({bytes, size}, size == 0);
        KT_TRY(search.search.look(ctx, search.loader, search.input));
    });
}
}

void client_loader__load_parts(KT_context *ctx, tov_client_loader &loader, client_part_source &source)
{
    part_load load{loader, source, nullptr, 0, {}};
    KT_TRY(source.read(ctx, source.data, my_take_to_load, &load));
}

void client_loader__search_parts(KT_context *ctx, tov_client_loader &loader, client_part_source &source,
                                 client_load_job &job, client_load_part &part, int64_t &found)
{
    client_row_search search(job, part);
    part_search state{loader, job, search, 0, {}};
    state.input.open_fed();
    KT_TRY(search.prepare(ctx, loader));
    KT_TRY(source.read(ctx, source.data, my_take_to_search, &state));
    found += search.found();
}
