// The loop over the rows of a file. A batch of rows and the record of how far the file was read go into one
// transaction.
#include "rows/load/client_loader.hpp"

#include <algorithm>
#include <charconv>

#define KT_HERE "src/client/rows/load/client_load_rows"

// So many refused rows are told to a person; files of rejects have all of them.
static constexpr size_t most_remarks = 20;
static constexpr size_t most_of_value = 60;

static std::string my_show_value(std::string_view value)
{
    std::string text;
    for (const char byte : value.substr(0, most_of_value))
        text.push_back(static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F ? ' ' : byte);
    return value.size() > most_of_value ? text + "..." : text;
}

static void my_remark(tov_client_loader &loader, const client_refusal &refusal)
{
    if (loader.remarks.size() > most_remarks)
        return;
    if (loader.remarks.size() == most_remarks) {
        loader.remarks.emplace_back("and more");
        return;
    }
    std::string text(refusal.file);
    text += ":" + std::to_string(refusal.line) + ": row " + std::to_string(refusal.row);
    if (!refusal.col.empty())
        text += ", column " + std::string(refusal.col) + ": " + my_show_value(refusal.value);
    text += std::string(": ") + client_reject_word(refusal.reject) + ": " + std::string(refusal.message);
    loader.remarks.push_back(std::move(text));
}

static std::string my_message(const client_verdict &verdict, const client_input &input)
{
    if (input.looks_like_utf_16() && verdict.message.empty())
        return "every second byte of the file is zero: it may be UTF-16 without a mark; say its encoding";
    return verdict.message.empty() ? client_reject_meaning(verdict.reject) : verdict.message;
}

void client_loader__refuse(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                           client_input &input, const client_row &row, const client_verdict &verdict, int64_t number)
{
    client_refusal refusal;
    const std::string message = my_message(verdict, input);
    refusal.file = job.shown;
    refusal.row = number;
    refusal.line = input.line();
    refusal.position = input.position();
    refusal.reject = verdict.reject;
    refusal.message = message;
    if (part.target)
        refusal.tbl = part.target->tbl.name;
    if (part.target && verdict.col < part.target->tbl.cols.size())
        refusal.col = part.target->tbl.cols[verdict.col].name;
    if (verdict.field < row.fields.size())
        refusal.value = row.fields[verdict.field].bytes;
    my_remark(loader, refusal);
    loader.rejected++;
    part.progress.rejected++;
    if (job.rejects.is_open())
        KT_TRY(job.rejects.add(
            ctx, input.raw(row.before) + input.raw(input.data().substr(0, row.size)) + input.raw(row.after), refusal));
    if (loader.settings.max_rejects > 0 && loader.rejected > loader.settings.max_rejects)
        KT_FAIL(KT_ERR_BAD_VALUE, "more than %lld rows are refused; the last one: %s",
                static_cast<long long>(loader.settings.max_rejects), message.c_str());
}

static void my_end_run(KT_context *ctx, tov_client_loader &loader, client_load_part &part)
{
    if (part.keeps_runs && part.run.count > 0)
        KT_TRY(client_progress__add_run(ctx, loader.database, loader.plan.trigger_prefix, part.progress, part.run));
    part.run = {};
}

static void my_note_loaded(KT_context *ctx, tov_client_loader &loader, client_load_part &part,
                           const client_verdict &verdict)
{
    part.progress.loaded++;
    for (const size_t col : verdict.shortened)
        part.shortened[part.target->tbl.cols[col].name]++;
    if (!part.keeps_runs)
        return;
    client_run &run = part.run;
    const bool follows = run.count > 0 && run.first_row + run.count == part.progress.read &&
                         run.first_rowid + run.count == verdict.rowid;
    if (!follows) {
        KT_TRY(my_end_run(ctx, loader, part));
        run = {part.progress.read, 0, verdict.rowid};
    }
    run.count++;
}

// A verdict about a row that the reader could not take apart.
static client_verdict my_unread(const client_load_job &job, const client_row &row)
{
    client_verdict verdict;
    verdict.reject = row.reject;
    if (row.place < job.dialect.cols.size())
        verdict.col = job.dialect.cols[row.place];
    if (row.place < row.fields.size())
        verdict.field = row.place;
    if (!row.blamed.empty() && row.place == SIZE_MAX)
        verdict.message = std::string(client_reject_meaning(row.reject)) + ": " + std::string(row.blamed);
    return verdict;
}

// A verdict about a row of a file that must be UTF-16: the first field with zeros in it shows it.
static client_verdict my_undecoded(const client_load_job &job, const client_row &row)
{
    client_verdict verdict;
    verdict.reject = client_reject::not_utf_8;
    for (size_t n = 0; n < row.fields.size() && verdict.field == SIZE_MAX; n++) {
        if (row.fields[n].bytes.find('\0') != std::string_view::npos)
            verdict.field = n;
    }
    if (verdict.field < job.dialect.cols.size())
        verdict.col = job.dialect.cols[verdict.field];
    return verdict;
}

static void my_take_row(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_load_part &part,
                        client_input &input, const client_row &row)
{
    client_verdict verdict;
    part.progress.read++;
    if (part.is_history)
        return;
    if (row.reject != client_reject::none) {
        verdict = my_unread(job, row);
    } else if (input.looks_like_utf_16()) {
        verdict = my_undecoded(job, row);
    } else {
        KT_TRY(client_target__put(ctx, loader.database, loader.converter, *part.target, *part.layout, row, verdict));
    }
    if (verdict.reject == client_reject::none)
        KT_TRY(my_note_loaded(ctx, loader, part, verdict));
    else
        KT_TRY(client_loader__refuse(ctx, loader, job, part, input, row, verdict, part.progress.read));
}

static void my_take_script_row(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input,
                               client_row &row)
{
    client_load_part *part = nullptr;
    KT_TRY(client_loader__find_script_part(ctx, loader, job, row, &part));
    loader.converter.date_order = row.head->date_order;
    KT_TRY(my_take_row(ctx, loader, job, *part, input, row));
}

// Another program may have changed the database while no transaction held it: then no check is left out any more.
static void my_note_changes(KT_context *ctx, tov_client_loader &loader)
{
    int64_t version = 0;
    KT_TRY(client_connection__ask(ctx, loader.database, "PRAGMA schema_version", version));
    if (version == loader.schema_version)
        return;
    loader.schema_version = version;
    for (auto &[id, target] : loader.targets)
        target.with_triggers = target.with_constraints = true;
}

void client_loader__begin(KT_context *ctx, tov_client_loader &loader)
{
    if (loader.in_transaction)
        return;
    KT_TRY(client_connection__run(ctx, loader.database, "BEGIN IMMEDIATE"));
    loader.in_transaction = true;
    KT_TRY(my_note_changes(ctx, loader));
}

std::string client_pack_counts(const std::map<std::string, int64_t> &counts)
{
    std::string packed;
    for (const auto &[name, count] : counts)
        packed += name + "=" + std::to_string(count) + "\n";
    return packed;
}

std::map<std::string, int64_t> client_unpack_counts(std::string_view packed)
{
    std::map<std::string, int64_t> counts;
    while (!packed.empty()) {
        const size_t end = std::min(packed.find('\n'), packed.size());
        const std::string_view line = packed.substr(0, end);
        const size_t mark = std::min(line.rfind('='), line.size());
        int64_t &count = counts[std::string(line.substr(0, mark))];
        std::from_chars(line.data() + std::min(mark + 1, line.size()), line.data() + line.size(), count);
        packed.remove_prefix(std::min(end + 1, packed.size()));
    }
    return counts;
}

void client_loader__commit(KT_context *ctx, tov_client_loader &loader, client_load_job *job)
{
    if (job) {
        client_progress &first = job->parts.front().progress;
        KT_TRY(job->rejects.flush(ctx, &first.rows_size, &first.lines_size));
        for (client_load_part &part : job->parts) {
            KT_TRY(my_end_run(ctx, loader, part));
            part.progress.shortened = client_pack_counts(part.shortened);
            KT_TRY(client_progress__save(ctx, loader.database, loader.plan.trigger_prefix, part.progress));
        }
    }
    KT_TRY(client_versions__tell(ctx, loader.database, loader.versions));
    loader.in_batch = 0;
    if (loader.settings.all_or_nothing)
        return;
    KT_TRY(client_connection__run(ctx, loader.database, "COMMIT"));
    loader.in_transaction = false;
}

// After a row: the end of a batch, and telling how far the file is.
static void my_end_row(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input)
{
    if (++loader.in_batch < loader.settings.batch)
        return;
    client_progress &first = job.parts.front().progress;
    first.position = input.position();
    first.line = input.line();
    KT_TRY(client_loader__commit(ctx, loader, &job));
    if (loader.settings.progress)
        loader.settings.progress(loader.settings.data, job.shown.c_str(), input.position(), input.size());
    KT_TRY(client_loader__begin(ctx, loader));
}

void client_loader__read_rows(KT_context *ctx, tov_client_loader &loader, client_load_job &job, client_input &input)
{
    client_row row;
    KT_TRY(client_loader__begin(ctx, loader));
    while (true) {
        const client_step step = job.reader->read(input.data(), input.is_all(), row);
        if (step == client_step::end || (step == client_step::more && input.is_fed()))
            return;
        if (step == client_step::more) {
            KT_TRY(input.fill(ctx));
            continue;
        }
        if (input.position() < job.skip_to) {
            input.take(row.size);
            continue;
        }
        if (step == client_step::row && row.head)
            KT_TRY(my_take_script_row(ctx, loader, job, input, row));
        else if (step == client_step::row)
            KT_TRY(my_take_row(ctx, loader, job, job.parts.front(), input, row));
        input.take(row.size);
        if (step == client_step::row)
            KT_TRY(my_end_row(ctx, loader, job, input));
    }
}
