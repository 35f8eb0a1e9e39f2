// What a source says about a database, as plain records: every reader fills them, linking joins them, and the steps
// that decide do not know which reader it was.
//
// Strings are borrowed, from the catalogue's own store or from a document that outlives the catalogue, and null when
// absent. Definitions (defaults, checks, filters, computed columns) have the server's spelling. Keys and references
// point to the columns they name. A reader whose source has no object ids numbers tables, columns, default objects
// and foreign keys itself.
#pragma once

#include "kt_owned.hpp"
#include "records/host_texts.hpp"

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

inline constexpr int64_t host_utf_8_page = 65001; // the code page

struct host_default {
    const char *kind = nullptr; // "constraint" or "bound"
    int64_t id = 0;
    const char *name = nullptr;
    const char *definition = nullptr; // absent from an export made without the right to see it
    bool is_system_named = false;     // then the name, if there is one, is the server's invention
};

struct host_identity {
    const char *seed = nullptr;
    const char *increment = nullptr;
};

struct host_column {
    int64_t id = 0;
    const char *id_text = nullptr;
    const char *name = nullptr;
    const char *system_type = nullptr; // absent for a CLR type
    const char *user_type = nullptr;   // as declared, perhaps an alias
    const char *user_type_schema = nullptr;
    const char *collation = nullptr;
    // The numbers and flags are together and no wider than they must be: a large database has very many of these
    // records.
    int32_t max_length = 0; // bytes; -1: no limit
    int32_t code_page = 0;
    int32_t comparison_style = -1; // -1: absent
    uint8_t precision = 0;
    uint8_t scale = 0;
    uint8_t generated_always_type = 0;
    uint8_t encryption_type = 0;
    uint8_t graph_type = 0; // as the server numbers it; above 0 for the pseudo columns of a graph table
    bool is_assembly_type = false;
    bool is_nullable = false;
    bool is_identity = false;
    bool is_computed = false;
    bool is_rowguidcol = false;
    bool is_sparse = false;
    bool is_column_set = false;
    bool is_filestream = false;
    bool is_hidden = false;
    bool is_persisted = false; // of a computed column
    // Decided by host_names and host_types: what is prepared takes part in the schema's tables.
    bool prepared = true;
    host_identity identity;
    host_default *defval = nullptr; // one of the catalogue's
    const char *computed = nullptr;
    const char *rule = nullptr;
    const char *description = nullptr;

    // Decided by host_select: the name in SQLite, the server's own unless the caller gave another.
    const char *sqlite_name = nullptr;
    // Decided by host_keys: the key that makes the column the table's rowid, null for every other column.
    const struct host_key *rowid_key = nullptr;
};

using host_columns = std::vector<host_column, host_arena_allocator<host_column>>;

// An index.
struct host_index {
    const char *name = nullptr; // absent for a constraint that nobody named
    bool is_disabled = false;
    bool is_clustered = false;
    const char *kind =
        nullptr; // absent for an ordinary one; else the server's word: "COLUMNSTORE", "XML", "SPATIAL" ...
    const char *filter = nullptr;
    std::vector<const char *> col_names;
    std::vector<bool> descending;             // empty, or one for each column
    std::vector<const char *> included_names; // of an index
    std::vector<const host_column *> cols;
    std::vector<const host_column *> included_cols;
};

// A primary key, a unique constraint or a unique index: all of them are kept by an index.
struct host_key : host_index {
    bool is_system_named = false;
    bool is_index = false; // and not a constraint
};

// The actions of foreign keys in SQL's words, each at the server's number for it.
inline constexpr std::array<const char *, 4> host_fk_actions{"NO ACTION", "CASCADE", "SET NULL", "SET DEFAULT"};

struct host_foreignkey {
    int64_t id = 0;
    std::string id_text;
    const char *name = nullptr; // absent when nobody named it
    bool is_system_named = false;
    int64_t ref_tbl_id = 0; // 0 in a source without ids; ref_schema and ref_table say which table then
    const char *ref_schema = nullptr;
    const char *ref_table = nullptr;
    const char *on_delete = nullptr; // one of host_fk_actions
    const char *on_update = nullptr;
    bool is_disabled = false;
    bool is_not_trusted = false;
    bool not_for_replication = false;
    std::vector<std::pair<const char *, const char *>> col_names; // referencing, referenced
    std::vector<const host_column *> cols;
    std::vector<const host_column *> ref_cols; // empty when the referenced table is not in the export
    const struct host_table *ref_tbl = nullptr;
};

struct host_check {
    const char *name = nullptr; // absent when nobody named it
    bool is_system_named = false;
    const char *definition = nullptr;
    const char *col_name = nullptr; // absent for a check that was declared on the table
    const host_column *col = nullptr;
    bool is_disabled = false;
    bool is_not_trusted = false;
    bool not_for_replication = false;
};

struct host_table {
    int64_t id = 0;
    std::string id_text;
    const char *schema_name = nullptr;
    const char *name = nullptr;
    std::string label;       // schema.table, as messages and findings have it
    std::string sqlite_name; // the same, without the schema dbo
    host_columns cols;
    bool has_pk = false;
    host_key pk;
    std::vector<host_key> uniques;
    std::vector<host_index> indexes;
    std::vector<host_foreignkey> fks;
    std::vector<host_check> checks;
    const char *description = nullptr;
    int64_t temporal_type = 0; // as the server numbers it: 1 a history table, 2 a table with one
    bool is_memory_optimized = false;
    bool is_filetable = false;
    bool is_external = false;
    bool is_node = false; // of a graph
    bool is_edge = false;
    int64_t row_count = -1; // -1: not known

    // Decided by host_names and host_keys: the ids that its unique keys and checks have in the schema.
    std::unordered_set<std::string> constraint_ids;
    // Decided by host_keys: the sets of columns that SQLite takes as parent keys.
    std::vector<std::vector<const host_column *>> parent_keys;
    // Decided by host_keys: whether one of the columns is the rowid.
    bool has_rowid = false;
    // Decided by host_names and host_import: SQLite cannot have a table of this name, or none of the columns is
    // prepared.
    bool is_left_out = false;
};

struct host_sequence {
    const char *schema_name = nullptr;
    const char *name = nullptr;
    const char *system_type = nullptr;
    const char *start = nullptr;
    const char *increment = nullptr;
};

// Something that the source has and a schema has no place for: a view, a procedure, a function, a trigger ...
struct host_left_object {
    const char *kind = nullptr; // in lower case and plural: "views", "procedures", "functions", "triggers", "synonyms"
    const char *name = nullptr; // schema.name
};

// How much of the database the source could see.
enum class host_visibility { full, partial, unknown };

struct host_catalogue {
    const char *name = nullptr; // of the database
    const char *collation = nullptr;
    int64_t code_page = 0;
    host_visibility visibility = host_visibility::full;
    host_pool<host_default> defaults; // of columns
    host_arena col_records;           // where a reader may put the columns of the tables
    std::vector<host_table> tables;
    std::vector<host_sequence> sequences;
    std::vector<host_left_object> left_objects;
    std::unordered_map<int64_t, const host_table *> tables_by_id;
    // The labels, in lower case, of the tables that the caller does not want.
    std::unordered_set<std::string> skipped_labels;
    host_texts texts;
};

// Puts tables, keys, references and checks into the one order that does not depend on the source, and takes the names
// from constraints that the server named: another copy of the same database has others.
void host_order_catalogue(host_catalogue &catalogue);

// Links keys and references to the columns they name, and refuses names and ids that stand for two things, or for
// nothing.
void host_link_catalogue(KT_context *ctx, host_catalogue &catalogue);

// A name with its ASCII letters in lower case, as SQLite compares names.
std::string host_folded(std::string_view name);
// How a constraint that may have no name is called in a message: its name, or "without a name".
const char *host_shown_name(const char *name);
