// One import under way: what its steps share, and the steps in the order in which they run.
#pragma once

#include "kt_sqlite_owned.hpp"
#include "records/host_catalogue.hpp"
#include "steps/host_findings.hpp"
#include "tov_host.h"

#include <optional>

// What the schema module makes of a default: an expression, nothing, or why the type's own check refuses it.
struct host_translation {
    std::optional<std::string> expr;
    bool refused = false;
    std::string message;
    bool is_local = false; // it is the server's local time
};

// Where conditions are tried: a connection to an empty database, on which statements are compiled and never run, and
// the beginning of that of the table that conditions were tried of last.
struct host_condition_trial {
    const KT_sqlite_functions *functions = tov__get_sqlite_functions();
    kt_owned_connection connection{functions}; // opened for the first condition
    const host_table *table = nullptr;
    std::string columns = {};
};

struct host_import {
    tov_schema *schema;
    host_catalogue &catalogue;
    host_findings &findings;
    const tov_host_options &options;
    // By type and text: a database repeats a few defaults many thousand times, and each is tried in SQLite.
    std::unordered_map<std::string, host_translation> translations = {};
    host_condition_trial trial = {};
    // The columns whose comparisons decide which rows are accepted.
    std::unordered_set<const host_column *> compared_in_keys = {};
    std::unordered_set<const host_column *> compared_in_checks = {};
};

// host_select.cpp: which tables are imported, and what they are called in SQLite.
void host_select_tables(KT_context *ctx, const tov_host_options &options, host_findings &findings,
                        host_catalogue &catalogue);

// host_override_types.cpp: types that the caller gives columns.
void host_override_types(KT_context *ctx, const tov_host_list &types, host_findings &findings,
                         host_catalogue &catalogue);

// host_names.cpp: what cannot have its name in SQLite is left out.
void host_check_names(KT_context *ctx, host_import &import);

// host_types.cpp: which columns are prepared; then the type of one column.
void host_classify_columns(KT_context *ctx, host_import &import, host_table &table);
void host_add_type(KT_context *ctx, host_import &import, const host_table &table, const host_column &col);
// The type's name without aliases, e.g. "nvarchar"; a CLR type has only the name it was declared with. Never null.
const char *host_type_name(const host_column &col);
// Whether the column's values are whole numbers that SQLite's rowid can hold.
bool host_is_rowid_type(const host_column &col);
// The abstract type of a column of a type by itself, null when no column of the schema can hold it.
const char *host_abstract_type(const host_column &col);
bool host_is_row_version(const host_column &col);

// host_keys.cpp: which column becomes the rowid; then the table's keys.
void host_choose_rowid(KT_context *ctx, host_import &import, host_table &table);
void host_add_keys(KT_context *ctx, host_import &import, host_table &table);
// The id of a table's constraint that the schema keeps under one: its name, or one made of the names given here.
// Always the same for the same table, and never that of another constraint of the table.
std::string host_constraint_id(host_table &table, const char *name, const char *prefix,
                               const std::vector<const host_column *> &cols);
// Null, or a column of a key that is not prepared.
const host_column *host_find_unprepared(const std::vector<const host_column *> &cols);

// host_facts.cpp: what the server knows and the schema only carries.
void host_add_database_facts(KT_context *ctx, host_import &import);
void host_add_table_facts(KT_context *ctx, host_import &import, const host_table &table);

// host_indexes.cpp: which indexes SQLite has too; all of them are facts about the server.
void host_add_indexes(KT_context *ctx, host_import &import, const host_table &table);

// host_left_out.cpp: tables of special kinds, and what a schema has no place for at all.
void host_check_special_tables(KT_context *ctx, host_import &import);
void host_report_left_objects(KT_context *ctx, host_import &import);

// host_defaults.cpp; the expression of a default that has a definition: a bound one has a whole statement.
std::string host_default_expression(const host_default &defval);
void host_add_default(KT_context *ctx, host_import &import, const host_table &table, const host_column &col);

// host_foreignkeys.cpp
void host_add_foreignkeys(KT_context *ctx, host_import &import, host_table &table);

// host_checks.cpp
void host_add_checks(KT_context *ctx, host_import &import, host_table &table);

// host_comparisons.cpp, after keys, indexes and checks: which strings SQLite does not compare as the server does.
void host_report_comparisons(KT_context *ctx, host_import &import, const host_table &table);

// host_cycles.cpp
void host_report_cycles(KT_context *ctx, host_import &import);
