// The statements that create a schema's tables, indexes and triggers, one after the other.
#pragma once

#include "create/client_plan.hpp"
#include "create/client_record.hpp"

enum class client_kind {
    tbl,
    index,
    insert_trigger,
    update_trigger,
    delete_trigger,
    version_trigger,     // after an insert: gives the row its version
    new_version_trigger, // after an update
    view,
    counter, // the table of the last version
    record,  // the table that records the schema
};

// A statement, without a ";" after it. Texts are borrowed until the sink returns.
struct client_statement {
    client_kind kind;
    const char *tbl;  // the name of the table that is created, or that the index or trigger is on or the view shows
    const char *name; // the name of what is created
    const char *sql;
    const char *bare = nullptr; // of a table, where asked for: the same without the constraints that are generated
};

using client_sink = void (*)(KT_context *ctx, void *data, const client_statement &statement) noexcept;

// The settings of a connection under which the database works as it should; neither is stored in it.
inline constexpr const char *client_settings[] = {"PRAGMA foreign_keys=ON", "PRAGMA recursive_triggers=ON"};

// Takes the lock for writing at once, so that nobody can change what the statements were found to fit.
inline constexpr const char *client_begin = "BEGIN IMMEDIATE";
inline constexpr const char *client_commit = "COMMIT";

// The number of statements.
uint32_t client_count_statements(const client_plan &plan) noexcept;

// Hands the name of each thing that is created to a sink, without its statement.
void client_each_name(KT_context *ctx, const client_plan &plan, client_sink sink, void *data) noexcept;

// The name of the table of the last rowversion.
std::string client_counter_name(const client_plan &plan);

// Hands each statement to a sink: all tables, each with its indexes, since a trigger needs those that it names, then
// all triggers and views.
void client_each_statement(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink,
                           void *data) noexcept;

// The same, but the text of the record, which is as large as the document, goes to take in pieces, with the same data;
// its statement, which follows them, is empty.
void client_each_piece(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink, client_take take,
                       void *data) noexcept;

// The same as client_each_statement(), with the bare statements of tables that have generated constraints.
void client_each_creation(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_sink sink,
                          void *data) noexcept;

// Hands the statements of one table's triggers to a sink, as they are with the server's rules or without; those that
// check values come first, whether the plan has constraints instead or not.
void client_each_trigger(KT_context *ctx, tov_schema *schema, const client_plan &plan, const client_tbl &tbl,
                         bool with_rules, client_sink sink, void *data) noexcept;
