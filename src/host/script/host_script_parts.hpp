// What is in the parentheses of CREATE TABLE and after ALTER TABLE ... ADD: columns and constraints.
//
// They are read first and take effect together, so that a malformed statement changes nothing.
#pragma once

#include "script/host_script_reader.hpp"

enum class host_script_constraint_kind { primary, unique, index, check, foreign, defval, period };

struct host_script_constraint {
    host_script_constraint_kind kind = host_script_constraint_kind::check;
    const char *name = nullptr; // null when nobody named it
    std::vector<std::string_view> cols;
    std::vector<bool> descending;
    std::vector<std::string_view> included;
    bool is_clustered = false;
    bool is_nonclustered = false;
    bool is_unique = false;           // of an index
    const char *index_kind = nullptr; // of an index
    const char *definition = nullptr; // of a check or default, the filter of an index
    host_script_name parent;          // of a foreign key
    std::vector<std::string_view> parent_cols;
    const char *on_delete = "NO ACTION";
    const char *on_update = "NO ACTION";
    bool not_for_replication = false;
    bool is_on_column = false;
};

struct host_script_parts {
    std::vector<host_script_column *> cols;
    std::vector<host_script_column *> named_defaults; // columns that have a default whose name is yet to be taken
    std::vector<host_script_constraint> constraints;
};

// host_script_columns.cpp
void host_read_column(host_script_reader &reader, host_script_parts &parts);
// A type, with sizes, nullability where it has its own, and what is bound to it.
void host_read_column_type(host_script_reader &reader, host_script_column &col);
void host_set_bound_default(host_script_state &state, host_script_column &col, const host_script_bound *bound);

// host_script_constraints.cpp
bool host_begins_constraint(const host_tsql_token &token);
// On a column, its name is given: what has no list of columns is about it.
void host_read_constraint(host_script_reader &reader, const char *col_name, host_script_parts &parts);
// The columns of a key, with their direction.
void host_read_key_cols(host_script_reader &reader, host_script_constraint &constraint);
std::vector<std::string_view> host_read_names(host_script_reader &reader);
// WITH (...), ON filegroup and their like.
void host_skip_storage(host_script_reader &reader);
// A condition in parentheses, as the server stores it.
const char *host_read_enclosed_condition(host_script_reader &reader);
// An expression after DEFAULT or AS.
const char *host_read_definition(host_script_reader &reader);

// host_script_apply.cpp
// Gives the table its new parts; what it already has, or lacks, is a finding about the statement.
void host_apply_parts(host_script_reader &reader, const host_tsql_token &first, host_script_table &table,
                      host_script_parts &parts, bool is_trusted);
void host_make_alias_type(host_script_state &state, std::string_view schema, std::string_view name,
                          const host_tsql_type &type, bool is_nullable);
void host_set_type(host_script_state &state, const host_tsql_type &type, host_column &record);

// host_script_tables.cpp: what follows SYSTEM_VERSIONING.
void host_read_versioning(host_script_reader &reader, bool &is_on, host_script_name &history);
void host_set_history(host_script_reader &reader, host_script_table &table, const host_script_name &history);
