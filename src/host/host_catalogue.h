// A catalogue export as plain records, read and linked, before anything is decided about it.
//
// Texts are borrowed from the JSON tree, null when absent. Keys and references point to the columns they name.
#pragma once

#include "host_fields.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

struct host_default {
    const char *kind = nullptr; // "constraint" or "bound"
    int64_t id = 0;
    const char *name = nullptr;
    const char *definition = nullptr; // absent from an export made without the right to see it
    bool present = false;
};

struct host_identity {
    const char *seed = nullptr;
    const char *increment = nullptr;
};

struct host_column {
    int64_t id = 0;
    std::string id_text;
    const char *name = nullptr;
    const char *system_type = nullptr; // absent for a CLR type
    const char *user_type = nullptr;   // as declared, perhaps an alias
    bool is_assembly_type = false;
    int64_t max_length = 0; // bytes; -1: no limit
    int64_t precision = 0;
    int64_t scale = 0;
    const char *collation = nullptr;
    int64_t code_page = 0;
    int64_t comparison_style = -1; // -1: absent
    bool is_nullable = false;
    bool is_identity = false;
    bool is_computed = false;
    bool is_column_set = false;
    bool is_filestream = false;
    bool is_hidden = false;
    int64_t generated_always_type = 0;
    int64_t encryption_type = 0;
    host_identity identity;
    host_default defval;
    const char *computed = nullptr;
    const char *rule = nullptr;

    // Decided by host_types: what is prepared takes part in the schema's tables.
    bool prepared = true;
    // Decided by host_keys: the key that makes the column the table's rowid, null for every other column.
    const struct host_key *rowid_key = nullptr;
};

struct host_key {
    const char *name = nullptr;
    bool is_index = false;
    bool is_disabled = false;
    const char *filter = nullptr;
    std::vector<const char *> col_names;
    std::vector<const host_column *> cols;
};

struct host_foreignkey {
    int64_t id = 0;
    std::string id_text;
    const char *name = nullptr;
    int64_t ref_tbl_id = 0;
    const char *ref_schema = nullptr;
    const char *ref_table = nullptr;
    const char *on_delete = nullptr; // SQL words, e.g. "SET NULL"
    const char *on_update = nullptr;
    bool is_disabled = false;
    bool is_not_trusted = false;
    std::vector<std::pair<const char *, const char *>> col_names; // referencing, referenced
    std::vector<const host_column *> cols;
    std::vector<const host_column *> ref_cols; // empty when the referenced table is not in the export
    const struct host_table *ref_tbl = nullptr;
};

struct host_check {
    const char *name = nullptr;
    const char *definition = nullptr;
    const char *col_name = nullptr; // absent for a check that was declared on the table
    const host_column *col = nullptr;
    bool is_disabled = false;
    bool is_not_trusted = false;
};

struct host_table {
    int64_t id = 0;
    std::string id_text;
    const char *schema_name = nullptr;
    const char *name = nullptr;
    std::string label;       // schema.table, as messages and findings have it
    std::string sqlite_name; // the same, without the schema dbo
    std::vector<host_column> cols;
    bool has_pk = false;
    host_key pk;
    std::vector<host_key> uniques;
    std::vector<host_foreignkey> fks;
    std::vector<host_check> checks;

    // Decided by host_keys: the sets of columns that SQLite takes as parent keys.
    std::vector<std::vector<const host_column *>> parent_keys;
    // Decided by host_keys: whether one of the columns is the rowid.
    bool has_rowid = false;
    // Decided by host_import: none of the columns is prepared.
    bool is_left_out = false;
};

struct host_catalogue {
    const char *format = nullptr;
    int64_t format_version = 0;
    bool has_tables = false;
    bool can_view_definitions = true;
    std::vector<host_table> tables;
    std::unordered_map<int64_t, const host_table *> tables_by_id;
};

// Reads the records of the document and links keys and references to the columns they name. The document must outlive
// the catalogue.
void host_read_catalogue(KT_context *ctx, host_reader &reader, const KT_vhash *document, host_catalogue &catalogue);

// The second half of it: refuses names and ids that stand for two things, or for nothing.
void host_link_catalogue(KT_context *ctx, host_catalogue &catalogue);
