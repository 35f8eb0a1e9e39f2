// The database that a script builds, while it is built.
//
// Tables and columns keep their addresses; keys and references point to them, so that renaming touches one place.
// Names are compared without regard to the case of ASCII letters.
#pragma once

#include "records/host_catalogue.hpp"
#include "script/host_script_objects.hpp"

#include <memory>
#include <optional>

struct host_script_table;

// CREATE DEFAULT and CREATE RULE.
struct host_script_bound {
    const char *name = nullptr;
    const char *definition = nullptr; // the whole batch
    int64_t id = 0;
};

// A type that the script makes.
struct host_script_type {
    const char *schema = nullptr;
    const char *name = nullptr;
    host_column base; // type, sizes and nullability of a column that has it
    bool is_table = false;
    const host_script_bound *defval = nullptr;
    const host_script_bound *rule = nullptr;
};

// What a column is but for its name and default. Most columns are declared like others, and share one record with them
// until they are changed: a large script has many more columns than declarations.
class host_script_record {
  public:
    const host_column *operator->() const
    {
        return shared_;
    }
    const host_column &operator*() const
    {
        return *shared_;
    }
    // The record as one of the column's own.
    host_column &change()
    {
        if (!own_) {
            own_ = std::make_unique<host_column>(*shared_);
            shared_ = own_.get();
        }
        return *own_;
    }
    // Borrows a record, which must outlive the column.
    void share(const host_column &record)
    {
        own_.reset();
        shared_ = &record;
    }

  private:
    static inline const host_column undeclared{};
    const host_column *shared_ = &undeclared;
    std::unique_ptr<host_column> own_;
};

struct host_script_column {
    const char *name = nullptr;
    size_t name_hash = 0; // so that most other names are told apart without a look at them
    host_script_record record;
    host_default *defval = nullptr;   // of the catalogue
    host_script_type *type = nullptr; // null for a type of the server
    const char *collation = nullptr;  // null: the database's

    void set_name(const char *new_name);
    bool has_default_constraint() const
    {
        return defval && std::string_view(defval->kind) == "constraint";
    }
};

enum class host_script_key_kind { primary, unique, unique_index, index };

struct host_script_key {
    host_script_key_kind kind = host_script_key_kind::index;
    const char *name = nullptr;
    const char *index_kind = nullptr; // "XML", "COLUMNSTORE" ...
    const char *filter = nullptr;
    bool is_clustered = false;
    bool is_disabled = false;
    std::vector<const host_script_column *> cols;
    std::vector<bool> descending;
    std::vector<const host_script_column *> included;

    bool is_constraint() const
    {
        return kind == host_script_key_kind::primary || kind == host_script_key_kind::unique;
    }
};

struct host_script_fk {
    host_foreignkey record;
    std::vector<const host_script_column *> cols;
    host_script_table *parent = nullptr; // null while it is not there
    const char *parent_schema = nullptr;
    const char *parent_name = nullptr;
    std::vector<const char *> parent_col_names; // until the columns are found; empty: those of the primary key
    std::vector<const host_script_column *> parent_cols;
};

struct host_script_check {
    host_check record;
    const host_script_column *col = nullptr; // that it was declared on
};

struct host_script_table {
    const char *schema = nullptr;
    const char *name = nullptr;
    size_t made_at = 0; // in its source
    const struct host_script_source *source = nullptr;
    bool is_opaque = false; // made by a SELECT: its columns are not known
    bool is_history = false;
    bool is_memory_optimized = false;
    bool is_external = false;
    bool is_node = false;
    bool is_edge = false;
    bool is_temporal = false;
    const char *description = nullptr;
    std::vector<host_script_column *> cols;
    std::vector<host_script_key> keys;
    std::vector<host_script_fk> fks;
    std::vector<host_script_check> checks;

    host_script_column *find_col(std::string_view col_name) const;
    // Another column of the same name as this one.
    host_script_column *find_same(const host_script_column &other) const;
    host_script_key *find_key(std::string_view key_name);
    host_script_key *find_pk();
    std::vector<const char *> constraint_names() const;
};

struct host_script_state {
    host_script_state(host_texts &kept, host_pool<host_default> &made_defaults) : texts(kept), defaults(made_defaults)
    {
    }
    const char *keep(std::string_view text)
    {
        return texts.keep(text);
    }
    host_script_object *find_object(std::string_view schema, std::string_view name);
    host_script_table *find_table(std::string_view schema, std::string_view name);
    // Those of the name, in whatever schema.
    std::vector<const host_script_object *> find_objects(std::string_view name);
    // Adds a name, made of kept strings; false when it is taken.
    bool add_object(const char *kind, const char *schema, const char *name, host_script_table *table);
    void forget_object(std::string_view schema, std::string_view name);
    void move_object(host_script_object object, const char *schema, const char *name);
    host_script_type *find_type(std::string_view schema, std::string_view name);
    void rename_type(std::string_view schema, std::string_view name, const char *new_name);
    host_script_type *add_type(std::string_view schema, std::string_view name);
    // Takes the name away; columns go on having the type.
    void retire_type(std::string_view schema, std::string_view name);
    host_script_bound *add_bound(std::string_view schema, std::string_view name);
    void retire_bound(std::string_view schema, std::string_view name);
    host_script_bound *find_bound(std::string_view schema, std::string_view name);
    void drop_table(host_script_table *table);

    host_texts &texts;
    host_pool<host_default> &defaults;
    std::string database; // its name; empty while it is not known
    const char *collation = nullptr;
    std::vector<std::unique_ptr<host_script_table>> tables;
    std::vector<std::unique_ptr<host_script_table>> retired_tables;
    host_pool<host_script_column> cols; // of all tables, dropped ones too: keys that went with them may point there
    host_script_objects objects;
    host_name_map<std::unique_ptr<host_script_type>> types;
    std::vector<std::unique_ptr<host_script_type>> retired_types;
    host_name_map<std::unique_ptr<host_script_bound>> bounds;
    host_name_set histories;                                               // tables that hold the history of others
    std::unordered_map<std::string, const char *> schemas{{"dbo", "dbo"}}; // folded, and as they were made
    std::unordered_set<std::string> databases;
    std::vector<std::unique_ptr<host_script_bound>> retired_bounds;
    host_name_map<host_sequence> sequences;
    int64_t next_id = 1; // of default objects

  private:
    using host_names =
        std::unordered_multimap<std::string_view, const host_script_object *, host_name_hash, host_name_equal>;
    std::optional<host_names> names_; // made when it is first asked for: few scripts do
};
