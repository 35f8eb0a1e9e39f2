// What of a table's checks is left out when rows are put into it, since converting their fields decides the same.
#include "create/client_statements.hpp"
#include "create/client_tbl_statement.hpp"
#include "rows/load/client_decided.hpp"
#include "rows/load/client_target.hpp"

#include <algorithm>

#define KT_HERE "src/client/rows/load/client_target_checks"

namespace {
// What the triggers of one table should be.
struct trigger_texts {
    bool with_rules = false; // which of them are being listed
    std::string insert;      // with the server's rules
    std::string basic;       // and without
    std::vector<std::string> others;
};
} // namespace

static void my_note_text(KT_context *ctx, void *data, const client_statement &statement) noexcept
{
    auto &texts = *static_cast<trigger_texts *>(data);
    kt_contain(ctx, [&] {
        if (statement.kind == client_kind::insert_trigger)
            (texts.with_rules ? texts.insert : texts.basic) = statement.sql;
        else
            texts.others.emplace_back(statement.sql);
    });
}

static void my_list_texts(KT_context *ctx, tov_schema *schema, const client_plan &plan, const client_tbl &tbl,
                          trigger_texts &texts)
{
    for (const bool with_rules : {true, false}) {
        texts.with_rules = with_rules;
        KT_TRY(client_each_trigger(ctx, schema, plan, tbl, with_rules, my_note_text, &texts));
    }
}

static void my_look_at_triggers(KT_context *ctx, client_connection &database, const trigger_texts &texts,
                                client_target &target)
{
    static constexpr const char *sql =
        "SELECT sql FROM sqlite_master WHERE type = 'trigger' AND tbl_name = ?1 COLLATE NOCASE";
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, sql, handle));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 1, target.tbl.name));
    target.with_triggers = false;
    KT_TRY(client_connection__step(ctx, database, handle, has));
    while (has) {
        const std::string text(client_column_text(database, handle, 0));
        const bool is_other = std::find(texts.others.begin(), texts.others.end(), text) != texts.others.end();
        target.with_triggers |= text != texts.insert && text != texts.basic && !is_other;
        target.with_rules |= text == texts.insert;
        KT_TRY(client_connection__step(ctx, database, handle, has));
    }
}

static void my_read_text(KT_context *ctx, client_connection &database, const std::string &name, std::string &text)
{
    static constexpr const char *sql =
        "SELECT sql FROM sqlite_master WHERE type = 'table' AND name = ?1 COLLATE NOCASE";
    kt_owned_statement handle{tov__get_sqlite_functions()};
    bool has = false;
    KT_TRY(client_connection__prepare(ctx, database, sql, handle));
    KT_TRY(client_connection__bind_text(ctx, database, handle, 1, name));
    KT_TRY(client_connection__step(ctx, database, handle, has));
    text = has ? client_column_text(database, handle, 0) : "";
}

// Whether a table's text has the constraints of the server's rules for each column.
static void my_holds_rules(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const std::string &text,
                           bool &holds)
{
    client_code_pages pages;
    holds = !text.empty();
    for (const client_row_col &col : tbl.rows.cols) {
        std::string constraints;
        if (!col.stored || !holds)
            continue;
        KT_TRY(client_append_col_constraints(ctx, schema, tbl, col.col_id.c_str(), true, pages, constraints));
        holds = text.find(constraints) != std::string::npos;
    }
}

// Whether a table's text is what would be created, so that its columns have no other constraint than it says.
static void my_is_created_text(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, const std::string &text,
                               bool &is_it)
{
    client_code_pages pages;
    is_it = false;
    for (const bool with_rules : {true, false}) {
        kt_owned_string created{ctx};
        KT_TRY(KT_string__alloc(ctx, created.out()));
        KT_TRY(client_write_tbl(ctx, schema, tbl, {with_rules, true, pages}, created));
        is_it = is_it || text == KT_string__sz(created);
    }
}

// Whether the document has a check of the user's for the table.
static void my_has_checks(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool &has)
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_checks(ctx, schema, tbl.id, &count));
    has = count > 0;
    for (const client_row_col &col : tbl.rows.cols) {
        if (!col.stored)
            continue;
        KT_TRY(tov_schema__count_colcon_checks(ctx, schema, tbl.id, col.col_id.c_str(), &count));
        has |= count > 0;
    }
}

static void my_are_types_decided(KT_context *ctx, tov_schema *schema, const client_tbl &tbl, bool &are_decided)
{
    are_decided = true;
    for (const client_row_col &col : tbl.rows.cols) {
        client_checked_type type{};
        if (!col.stored)
            continue;
        KT_TRY(client_read_checked_type(ctx, schema, tbl.id, col.col_id.c_str(), type));
        are_decided = are_decided && client_conversion_decides(type, col);
    }
}

static void my_look_at_constraints(KT_context *ctx, client_connection &database, tov_schema *schema,
                                   const client_tbl &tbl, client_target &target)
{
    std::string text;
    bool is_created = false;
    bool has_checks = false;
    bool holds_rules = false;
    KT_TRY(my_read_text(ctx, database, target.tbl.name, text));
    KT_TRY(my_holds_rules(ctx, schema, tbl, text, holds_rules));
    target.with_rules |= holds_rules;
    KT_TRY(my_has_checks(ctx, schema, tbl, has_checks));
    KT_TRY(my_is_created_text(ctx, schema, tbl, text, is_created));
    target.with_constraints = has_checks || !is_created;
}

void client_target__look_at_checks(KT_context *ctx, client_connection &database, tov_schema *schema,
                                   const client_plan &plan, const client_tbl &tbl, client_target &target) noexcept
{
    kt_contain(ctx, [&] {
        trigger_texts texts;
        bool are_decided = false;
        target.with_rules = false;
        KT_TRY(my_list_texts(ctx, schema, plan, tbl, texts));
        KT_TRY(my_look_at_triggers(ctx, database, texts, target));
        KT_TRY(my_look_at_constraints(ctx, database, schema, tbl, target));
        KT_TRY(my_are_types_decided(ctx, schema, tbl, are_decided));
        target.with_triggers |= !are_decided;
        if (target.with_rules && !tbl.versioned.col_id.empty())
            target.versions->counter = client_counter_name(plan);
    });
}
