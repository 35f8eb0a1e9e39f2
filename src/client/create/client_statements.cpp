// The texts are the schema module's; here they become statements. SQLite keeps the text of a statement in the
// database, so it is laid out for a reader.
#include "create/client_statements.hpp"

#include "create/client_indexes.hpp"
#include "create/client_views.hpp"
#include "rows/table/client_row_tbl.hpp"
#include "rules/client_rules.hpp"

#include <algorithm>
#include <cstring>

#define KT_HERE "src/client/create/client_statements"

// After the tables with their indexes.
static constexpr client_kind kinds_on_tbls[] = {client_kind::insert_trigger,      client_kind::update_trigger,
                                                client_kind::delete_trigger,      client_kind::version_trigger,
                                                client_kind::new_version_trigger, client_kind::view};

namespace {
using id_getter = void (*)(KT_context *, tov_schema *, const char *tbl_id, uint32_t n, const char **id) noexcept;
using defin_getter = void (*)(KT_context *, tov_schema *, const char *tbl_id, const char *id,
                              const char **defin) noexcept;
using counter = void (*)(KT_context *, tov_schema *, const char *tbl_id, uint32_t *count) noexcept;

// A kind of constraint of which a table can have several.
struct constraint_kind {
    counter count;
    id_getter get_nth_id;
    defin_getter get_defin;
};
} // namespace

static constexpr constraint_kind constraint_kinds[] = {
    {tov_schema__count_uniques, tov_schema__get_nth_unique_id, tov_schema__get_unique_defin},
    {tov_schema__count_foreignkeys, tov_schema__get_nth_foreignkey_id, tov_schema__get_foreignkey_defin},
    {tov_schema__count_checks, tov_schema__get_nth_check_id, tov_schema__get_check_defin},
};

static void my_append_cols(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool with_rules,
                           KT_string *sql) noexcept
{
    const char *tbl_id = tbl.id;
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *defin = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, n, &col_id));
        KT_TRY(tov_schema__get_col_defin(ctx, schema, tbl_id, col_id, nullptr, &defin));
        KT_TRY(KT_string__append__sz(ctx, sql, n ? ",\n    " : "\n    "));
        KT_TRY(KT_string__append__sz(ctx, sql, defin));
        // So that a row may come without a version; a definition begins with the column's name in quotes.
        const std::string &version = tbl.versioned.col;
        if (with_rules && !version.empty() && std::strncmp(defin, version.c_str(), version.size()) == 0)
            KT_TRY(KT_string__append__format(ctx, sql, " DEFAULT %s", client_no_version));
    }
}

static void my_append_constraint(KT_context *ctx, KT_string *sql, const char *defin) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, sql, ",\n    "));
    KT_TRY(KT_string__append__sz(ctx, sql, defin));
}

// An integer primary key is declared by its column already.
static void my_append_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_string *sql) noexcept
{
    const char *ipk_col_id = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__has_integer_primary_key(ctx, schema, tbl_id, &ipk_col_id));
    KT_TRY(tov_schema__count_pk_cols(ctx, schema, tbl_id, &count));
    if (ipk_col_id || count == 0)
        return;
    const char *defin = nullptr;
    KT_TRY(tov_schema__get_pk_defin(ctx, schema, tbl_id, &defin));
    KT_TRY(my_append_constraint(ctx, sql, defin));
}

static void my_append_constraints(KT_context *ctx, tov_schema *schema, const char *tbl_id, const constraint_kind &kind,
                                  KT_string *sql) noexcept
{
    uint32_t count = 0;
    KT_TRY(kind.count(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        const char *defin = nullptr;
        KT_TRY(kind.get_nth_id(ctx, schema, tbl_id, n, &id));
        KT_TRY(kind.get_defin(ctx, schema, tbl_id, id, &defin));
        KT_TRY(my_append_constraint(ctx, sql, defin));
    }
}

// SQLite numbers rows after the triggers ran, so the limits of these numbers are the table's own check.
static void my_append_rowid_rules(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_string *sql) noexcept
{
    client_row_tbl tbl;
    KT_TRY(client_read_row_tbl(ctx, schema, tbl_id, tbl));
    if (!tbl.has_facts)
        return;
    kt_contain(ctx, [&] {
        for (const client_row_col &col : tbl.cols) {
            const client_rowid_limits limits = client_rowid_limits_of(col.type);
            if (!col.stored || !col.rowid || limits.range.empty())
                continue;
            const std::string check = "CONSTRAINT \"[" + col.name + "] constraint violation: " + limits.message +
                                      "\" CHECK (" + client_quoted(col.name) + " BETWEEN " + limits.range + ")";
            KT_TRY(my_append_constraint(ctx, sql, check.c_str()));
        }
    });
}

static void my_write_tbl(KT_context *ctx, tov_schema *schema, const client_plan &plan, const client_tbl &tbl,
                         KT_string *sql) noexcept
{
    KT_TRY(KT_string__append__format(ctx, sql, "CREATE TABLE \"%s\" (", tbl.name));
    KT_TRY(my_append_cols(ctx, schema, tbl, plan.with_rules, sql));
    KT_TRY(my_append_pk(ctx, schema, tbl.id, sql));
    for (const constraint_kind &kind : constraint_kinds)
        KT_TRY(my_append_constraints(ctx, schema, tbl.id, kind, sql));
    if (plan.with_rules)
        KT_TRY(my_append_rowid_rules(ctx, schema, tbl.id, sql));
    KT_TRY(KT_string__append__sz(ctx, sql, "\n)"));
}

// What the server's rules for a column add to its own statement.
static std::string my_rules_text(const client_row_col &col)
{
    std::string text;
    for (const client_rule &rule : client_rules_of(col.type, "NEW." + client_quoted(col.name)))
        text += "WHEN (" + rule.refused + ") THEN RAISE(ABORT, '[" + col.name +
                "] constraint violation: " + rule.message + "')\n";
    return text.empty() ? text : "SELECT CASE\n" + text + "ELSE 1\nEND;\n";
}

static const client_row_col *my_find_col(const client_row_tbl &tbl, const char *col_id) noexcept
{
    for (const client_row_col &col : tbl.cols) {
        if (col.stored && KT_stricmp(col.col_id.c_str(), col_id) == 0)
            return &col;
    }
    return nullptr;
}

static void my_append_rules(KT_context *ctx, const client_row_tbl &tbl, const char *col_id, KT_string *sql) noexcept
{
    const client_row_col *col = tbl.has_facts ? my_find_col(tbl, col_id) : nullptr;
    if (col && !col->rowid)
        KT_TRY(kt_contain(ctx, [&] { KT_TRY(KT_string__append__sz(ctx, sql, my_rules_text(*col).c_str())); }));
}

// The body of both checking triggers: each column's statements, which raise an error or do nothing.
static void my_append_validation(KT_context *ctx, tov_schema *schema, const char *tbl_id, bool with_rules,
                                 KT_string *sql) noexcept
{
    client_row_tbl tbl;
    if (with_rules)
        KT_TRY(client_read_row_tbl(ctx, schema, tbl_id, tbl));
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl_id, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        kt_owned_string expression{ctx};
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl_id, n, &col_id));
        KT_TRY(tov_schema__get_col_validation_expression(ctx, schema, tbl_id, col_id, expression.out()));
        KT_TRY(KT_string__append__string(ctx, sql, expression));
        KT_TRY(KT_string__append__sz(ctx, sql, ";\n"));
        KT_TRY(my_append_rules(ctx, tbl, col_id, sql));
    }
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

static std::string my_counter_name(const client_plan &plan)
{
    return plan.trigger_prefix + "rowversion";
}

static void my_write_trigger(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_kind kind,
                             const client_tbl &tbl, const char *name, KT_string *sql) noexcept
{
    const char *event = my_event(kind);
    KT_TRY(KT_string__append__format(ctx, sql, "CREATE TRIGGER \"%s\" %s ON \"%s\"\nBEGIN\n", name, event, tbl.name));
    if (kind == client_kind::delete_trigger) {
        KT_TRY(KT_string__append__sz(ctx, sql, tbl.cascades.c_str()));
        KT_TRY(KT_string__append__sz(ctx, sql, tbl.resets.c_str()));
    } else if (kind == client_kind::version_trigger || kind == client_kind::new_version_trigger) {
        KT_TRY(kt_contain(ctx, [&] {
            const std::string body = client_version_body(tbl.versioned, tbl.name, my_counter_name(plan),
                                                         kind == client_kind::version_trigger);
            KT_TRY(KT_string__append__sz(ctx, sql, body.c_str()));
        }));
    } else {
        KT_TRY(my_append_validation(ctx, schema, tbl.id, plan.with_rules, sql));
    }
    KT_TRY(KT_string__append__sz(ctx, sql, "END"));
}

static bool my_is_needed(const client_plan &plan, client_kind kind, const client_tbl &tbl) noexcept
{
    if (kind == client_kind::view)
        return plan.with_views;
    if (kind == client_kind::version_trigger || kind == client_kind::new_version_trigger)
        return plan.with_rules && !tbl.versioned.col.empty();
    return kind != client_kind::delete_trigger || !tbl.cascades.empty() || !tbl.resets.empty();
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

// Without a schema the statements have no text.
static void my_hand_out(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_kind kind,
                        const client_tbl &tbl, client_sink sink, void *data) noexcept
{
    kt_owned_string name{ctx};
    kt_owned_string sql{ctx};
    KT_TRY(KT_string__alloc(ctx, name.out()));
    KT_TRY(KT_string__alloc(ctx, sql.out()));
    KT_TRY(my_append_name(ctx, plan, kind, tbl, name));
    if (schema && kind == client_kind::tbl)
        KT_TRY(my_write_tbl(ctx, schema, plan, tbl, sql));
    else if (schema && kind == client_kind::view)
        KT_TRY(client_write_view(ctx, schema, tbl, sql));
    else if (schema)
        KT_TRY(my_write_trigger(ctx, schema, plan, kind, tbl, KT_string__sz(name), sql));
    KT_TRY(sink(ctx, data, {kind, tbl.name, KT_string__sz(name), KT_string__sz(sql)}));
}

// A table and its indexes, which SQLite makes more quickly while it does not know many other tables.
static void my_hand_out_tbl(KT_context *ctx, tov_schema *schema, const client_plan &plan, const client_tbl &tbl,
                            client_sink sink, void *data) noexcept
{
    KT_TRY(my_hand_out(ctx, schema, plan, client_kind::tbl, tbl, sink, data));
    kt_contain(ctx, [&] {
        for (const client_index &index : tbl.indexes) {
            const std::string sql = client_index_statement(tbl, index);
            KT_TRY(sink(ctx, data, {client_kind::index, tbl.name, index.name.c_str(), sql.c_str()}));
        }
    });
}

static bool my_needs_counter(const client_plan &plan) noexcept
{
    return std::any_of(plan.tbls.begin(), plan.tbls.end(),
                       [&](const client_tbl &tbl) { return my_is_needed(plan, client_kind::version_trigger, tbl); });
}

static void my_hand_out_counter(KT_context *ctx, const client_plan &plan, client_sink sink, void *data) noexcept
{
    kt_contain(ctx, [&] {
        const std::string name = my_counter_name(plan);
        const std::string sql = client_version_counter(name);
        KT_TRY(sink(ctx, data, {client_kind::counter, name.c_str(), name.c_str(), sql.c_str()}));
    });
}

static void my_each(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink, void *data) noexcept
{
    for (const client_tbl &tbl : plan.tbls)
        KT_TRY(my_hand_out_tbl(ctx, schema, plan, tbl, sink, data));
    if (my_needs_counter(plan))
        KT_TRY(my_hand_out_counter(ctx, plan, sink, data));
    for (client_kind kind : kinds_on_tbls) {
        for (const client_tbl &tbl : plan.tbls) {
            if (my_is_needed(plan, kind, tbl))
                KT_TRY(my_hand_out(ctx, schema, plan, kind, tbl, sink, data));
        }
    }
}

uint32_t client_count_statements(const client_plan &plan) noexcept
{
    auto count = static_cast<uint32_t>(plan.tbls.size()) + (my_needs_counter(plan) ? 1 : 0);
    for (const client_tbl &tbl : plan.tbls) {
        count += static_cast<uint32_t>(tbl.indexes.size());
        for (client_kind kind : kinds_on_tbls)
            count += my_is_needed(plan, kind, tbl);
    }
    return count;
}

void client_each_name(KT_context *ctx, const client_plan &plan, client_sink sink, void *data) noexcept
{
    KT_TRY(my_each(ctx, nullptr, plan, sink, data));
}

void client_each_statement(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink,
                           void *data) noexcept
{
    KT_TRY(my_each(ctx, schema, plan, sink, data));
}
