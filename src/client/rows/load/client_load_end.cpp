// The end of a load, at which references are checked, and what is told of it.
#include "rows/load/client_loader.hpp"

#define KT_HERE "src/client/rows/load/client_load_end"

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
            KT_TRY(client_progress__save(ctx, loader.database, loader.plan.trigger_prefix, part.progress));
        }
    }
    if (loader.settings.is_scratch) // nothing can go on in it, so nothing has to be known of how it was made
        KT_TRY(client_connection__run(ctx, loader.database,
                                      "DROP TABLE \"" + loader.plan.trigger_prefix + "load_progress\"; DROP TABLE \"" +
                                          loader.plan.trigger_prefix + "load_runs\""));
    KT_TRY(client_connection__run(ctx, loader.database, "COMMIT"));
    loader.in_transaction = false;
}

static void my_report_shortened(KT_context *ctx, const std::string &shortened, KT_vhash *record)
{
    KT_vhash *counts = nullptr;
    KT_TRY(KT_vhash__addnew__vhash(ctx, record, "shortened", &counts));
    for (const auto &[col, count] : client_unpack_counts(shortened))
        KT_TRY(KT_vhash__update__int64(ctx, counts, col.c_str(), count));
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
    KT_TRY(KT_vhash__add__bool(ctx, record, "unknown", 0));
}

// Rows of a package for a table that the schema does not have.
static void my_report_unknown(KT_context *ctx, const client_load_job &job, KT_varray *report)
{
    KT_vhash *record = nullptr;
    KT_vhash *counts = nullptr;
    KT_TRY(KT_varray__appendnew__vhash(ctx, report, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "file", job.shown.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", job.unknown_tbl.c_str()));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "dialect", "native"));
    for (const char *key : {"read", "loaded", "rejected"})
        KT_TRY(KT_vhash__add__int64(ctx, record, key, 0));
    KT_TRY(KT_vhash__addnew__vhash(ctx, record, "shortened", &counts));
    KT_TRY(KT_vhash__add__double(ctx, record, "seconds", 0));
    KT_TRY(KT_vhash__add__bool(ctx, record, "before", 0));
    KT_TRY(KT_vhash__add__bool(ctx, record, "history", 0));
    KT_TRY(KT_vhash__add__bool(ctx, record, "part", 1));
    KT_TRY(KT_vhash__add__bool(ctx, record, "unknown", 1));
    KT_TRY(KT_vhash__add__int64(ctx, record, "bytes", job.unknown_bytes));
}

static void my_report_job(KT_context *ctx, const tov_client_loader &loader, const client_load_job &job,
                          KT_varray *report)
{
    if (!job.unknown_tbl.empty())
        KT_TRY(my_report_unknown(ctx, job, report));
    for (const client_load_part &part : job.parts) {
        if (part.target || part.progress.read > 0)
            KT_TRY(my_report_part(ctx, loader, job, part, report));
    }
}

void tov_client__finish_load(KT_context *ctx, tov_client_loader *loader, KT_varray **report,
                             KT_varray **remarks) noexcept
{
    KT_RETURN_IF_FAILED;
    kt_contain(ctx, [&] {
        kt_owned_varray files{ctx};
        kt_owned_varray texts{ctx};
        KT_TRY(my_end(ctx, *loader));
        KT_TRY(KT_varray__alloc(ctx, files.out()));
        KT_TRY(KT_varray__alloc(ctx, texts.out()));
        for (const client_load_job &job : loader->jobs)
            KT_TRY(my_report_job(ctx, *loader, job, files));
        for (const std::string &remark : loader->remarks)
            KT_TRY(KT_varray__append__string__sz(ctx, texts, remark.c_str()));
        files.move_to(report);
        texts.move_to(remarks);
    });
    if (kt_failed_at(ctx, KT_HERE, __LINE__))
        client_loader__roll_back(ctx, *loader);
}
