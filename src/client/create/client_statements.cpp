// The texts are the schema module's; here they become statements. SQLite keeps the text of a statement in the
// database, so it is laid out for a reader.
#include "create/client_statements.hpp"

#include "create/client_check_triggers.hpp"
#include "create/client_indexes.hpp"
#include "create/client_record.hpp"
#include "create/client_tbl_statement.hpp"
#include "create/client_views.hpp"

#include <algorithm>
#include <unordered_map>

#define KT_HERE "src/client/create/client_statements"

// After the tables with their indexes.
static constexpr client_kind kinds_on_tbls[] = {client_kind::insert_trigger,      client_kind::update_trigger,
                                                client_kind::delete_trigger,      client_kind::version_trigger,
                                                client_kind::new_version_trigger, client_kind::view};

namespace {
// What statements are made from, and whom they are handed to.
struct writing {
    tov_schema *schema; // without one the statements have no text
    const client_plan &plan;
    bool with_rules;
    client_sink sink;
    void *data;
    bool with_bare = false;
    client_take take = nullptr; // for the statement of the record, where it is wanted in pieces
    client_code_pages pages = {};
    std::unordered_map<const client_tbl *, std::string> checks = {}; // the body of both checking triggers of a table
};
} // namespace

static void my_append_checks(KT_context *ctx, writing &w, const client_tbl &tbl, KT_string *sql) noexcept
{
    kt_contain(ctx, [&] {
        std::string &checks = w.checks[&tbl];
        if (checks.empty())
            KT_TRY(client_write_checks(ctx, w.schema, tbl, w.with_rules, w.pages, checks));
        KT_TRY(KT_string__append__sz(ctx, sql, checks.c_str()));
    });
}

static void my_append_doubt(KT_context *ctx, writing &w, client_kind kind, const client_tbl &tbl,
                            client_doubt &doubt) noexcept
{
    kt_contain(ctx, [&] {
        KT_TRY(
            client_find_doubt(ctx, w.schema, tbl, w.with_rules, kind == client_kind::update_trigger, w.pages, doubt));
    });
}

static const char *my_event(client_kind kind) noexcept
{
    switch (kind) {
    case client_kind::insert_trigger:
        return "BEFORE INSERT";
    case client_kind::update_trigger:
        return "BEFORE UPDATE";
    case client_kind::version_trigger:
        return "AFTER INSERT";
    case client_kind::new_version_trigger:
        return "AFTER UPDATE";
    default:
        return "AFTER DELETE";
    }
}

std::string client_counter_name(const client_plan &plan)
{
    return plan.trigger_prefix + "rowversion";
}

static bool my_is_check(client_kind kind) noexcept
{
    return kind == client_kind::insert_trigger || kind == client_kind::update_trigger;
}

static void my_write_trigger(KT_context *ctx, writing &w, client_kind kind, const client_tbl &tbl, const char *name,
                             KT_string *sql) noexcept
{
    client_doubt doubt;
    if (my_is_check(kind))
        KT_TRY(my_append_doubt(ctx, w, kind, tbl, doubt));
    KT_TRY(KT_string__append__format(ctx, sql, "CREATE TRIGGER \"%s\" %s%s ON \"%s\"\n%sBEGIN\n", name, my_event(kind),
                                     doubt.cols.c_str(), tbl.name, doubt.when.c_str()));
    if (kind == client_kind::delete_trigger) {
        KT_TRY(KT_string__append__sz(ctx, sql, tbl.cascades.c_str()));
        KT_TRY(KT_string__append__sz(ctx, sql, tbl.resets.c_str()));
    } else if (kind == client_kind::version_trigger || kind == client_kind::new_version_trigger) {
        KT_TRY(kt_contain(ctx, [&] {
            const std::string body = client_version_body(tbl.versioned, tbl.name, client_counter_name(w.plan),
                                                         kind == client_kind::version_trigger);
            KT_TRY(KT_string__append__sz(ctx, sql, body.c_str()));
        }));
    } else {
        KT_TRY(my_append_checks(ctx, w, tbl, sql));
    }
    KT_TRY(KT_string__append__sz(ctx, sql, "END"));
}

static bool my_is_needed(const client_plan &plan, bool with_rules, client_kind kind, const client_tbl &tbl) noexcept
{
    if (my_is_check(kind))
        return !plan.with_constraints;
    if (kind == client_kind::view)
        return plan.with_views;
    if (kind == client_kind::version_trigger || kind == client_kind::new_version_trigger)
        return with_rules && !tbl.versioned.col_id.empty();
    return !tbl.cascades.empty() || !tbl.resets.empty();
}

static void my_append_name(KT_context *ctx, const client_plan &plan, client_kind kind, const client_tbl &tbl,
                           KT_string *name) noexcept
{
    static constexpr const char *words[] = {"",        "",         "insert_",     "update_",
                                            "delete_", "version_", "newversion_", client_view_prefix};
    const bool trigger = kind != client_kind::tbl && kind != client_kind::view;
    const char *prefix = trigger ? plan.trigger_prefix.c_str() : "";
    KT_TRY(KT_string__append__format(ctx, name, "%s%s%s", prefix, words[static_cast<int>(kind)], tbl.name));
}

static void my_hand_out(KT_context *ctx, writing &w, client_kind kind, const client_tbl &tbl) noexcept
{
    kt_owned_string name{ctx};
    kt_owned_string sql{ctx};
    KT_TRY(KT_string__alloc(ctx, name.out()));
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    KT_TRY(my_append_name(ctx, w.plan, kind, tbl, name));
    if (w.schema && kind == client_kind::tbl)
        KT_TRY(client_write_tbl(ctx, w.schema, tbl, {w.with_rules, w.plan.with_constraints, w.pages}, sql));
    else if (w.schema && kind == client_kind::view)
        KT_TRY(client_write_view(ctx, tbl, sql));
    else if (w.schema)
        KT_TRY(my_write_trigger(ctx, w, kind, tbl, KT_string__sz(name), sql));
    KT_TRY(w.sink(ctx, w.data, {kind, tbl.name, KT_string__sz(name), KT_string__sz(sql)}));
}

static void my_hand_out_both_forms(KT_context *ctx, writing &w, const client_tbl &tbl) noexcept
{
    kt_owned_string sql{ctx};
    kt_owned_string bare{ctx};
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    KT_TRY(KT_string__alloc(ctx, bare.out()));
    KT_TRY(client_write_tbl(ctx, w.schema, tbl, {w.with_rules, true, w.pages}, sql));
    KT_TRY(client_write_tbl(ctx, w.schema, tbl, {w.with_rules, false, w.pages}, bare));
    KT_TRY(w.sink(ctx, w.data, {client_kind::tbl, tbl.name, tbl.name, KT_string__sz(sql), KT_string__sz(bare)}));
}

// A table and its indexes, which SQLite makes more quickly while it does not know many other tables.
static void my_hand_out_tbl(KT_context *ctx, writing &w, const client_tbl &tbl) noexcept
{
    if (w.with_bare)
        KT_TRY(my_hand_out_both_forms(ctx, w, tbl));
    else
        KT_TRY(my_hand_out(ctx, w, client_kind::tbl, tbl));
    kt_contain(ctx, [&] {
        for (const client_index &index : tbl.indexes) {
            const std::string sql = client_index_statement(tbl, index);
            KT_TRY(w.sink(ctx, w.data, {client_kind::index, tbl.name, index.name.c_str(), sql.c_str()}));
        }
    });
}

static bool my_needs_counter(const client_plan &plan) noexcept
{
    return std::any_of(plan.tbls.begin(), plan.tbls.end(),
                       [&](const client_tbl &tbl) { return plan.with_rules && !tbl.versioned.col_id.empty(); });
}

static void my_hand_out_counter(KT_context *ctx, const writing &w) noexcept
{
    kt_contain(ctx, [&] {
        const std::string name = client_counter_name(w.plan);
        const std::string sql = client_version_counter(name);
        KT_TRY(w.sink(ctx, w.data, {client_kind::counter, name.c_str(), name.c_str(), sql.c_str()}));
    });
}

static void my_hand_out_record(KT_context *ctx, const writing &w) noexcept
{
    kt_contain(ctx, [&] {
        const std::string name = client_record_name(w.plan);
        std::string sql;
        if (w.take)
            KT_TRY(client_stream_record(ctx, w.schema, w.plan, w.take, w.data));
        else if (w.schema)
            KT_TRY(client_write_record(ctx, w.schema, w.plan, sql));
        KT_TRY(w.sink(ctx, w.data, {client_kind::record, name.c_str(), name.c_str(), sql.c_str()}));
    });
}

static void my_each(KT_context *ctx, writing &w) noexcept
{
    for (const client_tbl &tbl : w.plan.tbls)
        KT_TRY(my_hand_out_tbl(ctx, w, tbl));
    if (my_needs_counter(w.plan))
        KT_TRY(my_hand_out_counter(ctx, w));
    if (w.plan.with_record)
        KT_TRY(my_hand_out_record(ctx, w));
    for (client_kind kind : kinds_on_tbls) {
        for (const client_tbl &tbl : w.plan.tbls) {
            if (my_is_needed(w.plan, w.with_rules, kind, tbl))
                KT_TRY(my_hand_out(ctx, w, kind, tbl));
        }
    }
}

uint32_t client_count_statements(const client_plan &plan) noexcept
{
    auto count =
        static_cast<uint32_t>(plan.tbls.size()) + (my_needs_counter(plan) ? 1 : 0) + (plan.with_record ? 1 : 0);
    for (const client_tbl &tbl : plan.tbls) {
        count += static_cast<uint32_t>(tbl.indexes.size());
        for (client_kind kind : kinds_on_tbls)
            count += my_is_needed(plan, plan.with_rules, kind, tbl);
    }
    return count;
}

void client_each_name(KT_context *ctx, const client_plan &plan, client_sink sink, void *data) noexcept
{
    kt_contain(ctx, [&] {
        writing w{nullptr, plan, plan.with_rules, sink, data};
        KT_TRY(my_each(ctx, w));
    });
}

void client_each_statement(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink,
                           void *data) noexcept
{
    kt_contain(ctx, [&] {
        writing w{schema, plan, plan.with_rules, sink, data};
        KT_TRY(my_each(ctx, w));
    });
}

void client_each_piece(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink, client_take take,
                       void *data) noexcept
{
    kt_contain(ctx, [&] {
        writing w{schema, plan, plan.with_rules, sink, data, false, take};
        KT_TRY(my_each(ctx, w));
    });
}

void client_each_creation(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink,
                          void *data) noexcept
{
    kt_contain(ctx, [&] {
        writing w{schema, plan, plan.with_rules, sink, data, plan.with_constraints};
        KT_TRY(my_each(ctx, w));
    });
}

void client_each_trigger(KT_context *ctx, tov_schema *schema, const client_plan &plan, const client_tbl &tbl,
                         bool with_rules, client_sink sink, void *data) noexcept
{
    kt_contain(ctx, [&] {
        writing w{schema, plan, with_rules, sink, data};
        for (client_kind kind : kinds_on_tbls) {
            if (my_is_check(kind) || (kind != client_kind::view && my_is_needed(plan, with_rules, kind, tbl)))
                KT_TRY(my_hand_out(ctx, w, kind, tbl));
        }
    });
}
