// Gives a table columns and constraints.
#include "script/host_script_parts.hpp"

#include <algorithm>

namespace {

struct host_application {
    host_script_reader &reader;
    const host_tsql_token &first; // of the statement
    host_script_table &table;
    bool is_trusted;
};

} // namespace

static void my_refuse(host_application &application, const std::string &reason)
{
    application.reader.not_read(application.first, reason);
}

static bool my_find_cols(host_application &application, const std::vector<std::string_view> &names,
                         std::vector<const host_script_column *> &cols)
{
    for (const std::string_view name : names) {
        const host_script_column *col = application.table.find_col(name);
        if (!col) {
            my_refuse(application, "table " + std::string(application.table.schema) + '.' + application.table.name +
                                       " has no column " + std::string(name));
            return false;
        }
        cols.push_back(col);
    }
    return true;
}

// Takes the name of a constraint, which no other object of the schema may have.
static bool my_take_name(host_application &application, const char *kind, const char *name)
{
    if (!name)
        return true;
    if (application.reader.state.add_object(kind, application.table.schema, name, &application.table))
        return true;
    my_refuse(application, std::string("the name ") + name + " is taken");
    return false;
}

static bool my_has_clustered(const host_script_table &table)
{
    return std::any_of(table.keys.begin(), table.keys.end(),
                       [](const host_script_key &key) { return key.is_clustered; });
}

static void my_add_key(host_application &application, const host_script_constraint &constraint)
{
    host_script_table &table = application.table;
    host_script_key key;
    key.name = constraint.name;
    key.descending = constraint.descending;
    key.is_clustered = constraint.is_clustered;
    const bool is_primary = constraint.kind == host_script_constraint_kind::primary;
    if (is_primary && table.find_pk())
        return my_refuse(application, "the table has a primary key already");
    if (!my_find_cols(application, constraint.cols, key.cols) ||
        !my_take_name(application, is_primary ? "PK" : "UQ", constraint.name))
        return;
    key.kind = is_primary ? host_script_key_kind::primary : host_script_key_kind::unique;
    if (is_primary) {
        key.is_clustered |= !constraint.is_nonclustered && !table.is_memory_optimized && !my_has_clustered(table);
        for (const std::string_view name : constraint.cols) {
            host_script_record &record = table.find_col(name)->record;
            if (record->is_nullable)
                record.change().is_nullable = false;
        }
    }
    table.keys.push_back(std::move(key));
}

static void my_add_index(host_application &application, const host_script_constraint &constraint)
{
    host_script_table &table = application.table;
    host_script_key key;
    key.kind = constraint.is_unique ? host_script_key_kind::unique_index : host_script_key_kind::index;
    key.name = constraint.name;
    key.index_kind = constraint.index_kind;
    key.filter = constraint.definition;
    key.is_clustered = constraint.is_clustered;
    key.descending = constraint.descending;
    if (table.find_key(constraint.name))
        return my_refuse(application, std::string("the table has an index ") + constraint.name + " already");
    if (my_find_cols(application, constraint.cols, key.cols) &&
        my_find_cols(application, constraint.included, key.included))
        table.keys.push_back(std::move(key));
}

static void my_add_check(host_application &application, const host_script_constraint &constraint)
{
    if (!my_take_name(application, "C", constraint.name))
        return;
    host_script_check check;
    check.record.name = constraint.name;
    check.record.is_system_named = !constraint.name;
    check.record.definition = constraint.definition;
    check.record.not_for_replication = constraint.not_for_replication;
    check.record.is_not_trusted = !application.is_trusted || constraint.not_for_replication;
    application.table.checks.push_back(std::move(check));
}

// Finds what a reference refers to as far as it is there; the rest is found when all has been read.
static void my_find_parent(host_script_state &state, host_script_fk &fk)
{
    fk.parent = state.find_table(fk.parent_schema, fk.parent_name);
    if (!fk.parent)
        return;
    if (fk.parent_col_names.empty()) {
        if (const host_script_key *pk = fk.parent->find_pk())
            fk.parent_cols = pk->cols;
        return;
    }
    for (const char *name : fk.parent_col_names) {
        if (const host_script_column *col = fk.parent->find_col(name))
            fk.parent_cols.push_back(col);
    }
    if (fk.parent_cols.size() != fk.parent_col_names.size())
        fk.parent_cols.clear();
}

static void my_add_fk(host_application &application, const host_script_constraint &constraint)
{
    host_script_fk fk;
    if (!my_find_cols(application, constraint.cols, fk.cols) || !my_take_name(application, "F", constraint.name))
        return;
    fk.record.name = constraint.name;
    fk.record.is_system_named = !constraint.name;
    fk.record.on_delete = constraint.on_delete;
    fk.record.on_update = constraint.on_update;
    fk.record.not_for_replication = constraint.not_for_replication;
    fk.record.is_not_trusted = !application.is_trusted || constraint.not_for_replication;
    host_script_state &state = application.reader.state;
    fk.parent_schema = state.keep(constraint.parent.schema);
    fk.parent_name = state.keep(constraint.parent.name);
    for (const std::string_view name : constraint.parent_cols)
        fk.parent_col_names.push_back(state.keep(name));
    my_find_parent(state, fk);
    application.table.fks.push_back(std::move(fk));
}

static void my_add_default(host_application &application, const host_script_constraint &constraint)
{
    host_script_column *col = application.table.find_col(constraint.cols.front());
    if (!col)
        return my_refuse(application, "the table has no column " + std::string(constraint.cols.front()));
    if (col->has_default_constraint())
        return my_refuse(application, "column " + std::string(constraint.cols.front()) + " has a default already");
    if (!my_take_name(application, "D", constraint.name))
        return;
    host_default &defval = *application.reader.state.defaults.add();
    col->defval = &defval;
    defval.kind = "constraint";
    defval.name = constraint.name;
    defval.is_system_named = !constraint.name;
    defval.definition = constraint.definition;
}

static void my_add_period(host_application &application, const host_script_constraint &constraint)
{
    for (size_t n = 0; n < constraint.cols.size() && n < 2; n++) {
        if (host_script_column *col = application.table.find_col(constraint.cols[n]))
            col->record.change().generated_always_type = static_cast<uint8_t>(n + 1);
    }
}

static void my_add_constraint(host_application &application, const host_script_constraint &constraint)
{
    switch (constraint.kind) {
    case host_script_constraint_kind::primary:
    case host_script_constraint_kind::unique:
        return my_add_key(application, constraint);
    case host_script_constraint_kind::index:
        return my_add_index(application, constraint);
    case host_script_constraint_kind::check:
        return my_add_check(application, constraint);
    case host_script_constraint_kind::foreign:
        return my_add_fk(application, constraint);
    case host_script_constraint_kind::defval:
        return my_add_default(application, constraint);
    case host_script_constraint_kind::period:
        return my_add_period(application, constraint);
    }
}

// A bit for each hash that was met keeps most columns from being compared with all others.
static void my_add_cols(host_application &application, host_script_parts &parts)
{
    host_script_table &table = application.table;
    const auto bit_of = [](const host_script_column &col) { return uint64_t{1} << (col.name_hash & 63); };
    uint64_t met = 0;
    for (const host_script_column *col : table.cols)
        met |= bit_of(*col);
    table.cols.reserve(table.cols.size() + parts.cols.size());
    for (host_script_column *col : parts.cols) {
        if ((met & bit_of(*col)) && table.find_same(*col)) {
            my_refuse(application, std::string("the table has a column ") + col->name + " already");
            std::erase(parts.named_defaults, col);
            continue;
        }
        met |= bit_of(*col);
        table.cols.push_back(col);
    }
}

void host_apply_parts(host_script_reader &reader, const host_tsql_token &first, host_script_table &table,
                      host_script_parts &parts, bool is_trusted)
{
    host_application application{reader, first, table, is_trusted};
    my_add_cols(application, parts);
    for (host_script_column *col : parts.named_defaults) {
        if (!my_take_name(application, "D", col->defval->name))
            col->defval = nullptr;
    }
    // A key that says CLUSTERED leaves none for the primary key, wherever it is written.
    const auto comes_first = [](const host_script_constraint &constraint) { return constraint.is_clustered; };
    for (const host_script_constraint &constraint : parts.constraints) {
        if (comes_first(constraint))
            my_add_constraint(application, constraint);
    }
    for (const host_script_constraint &constraint : parts.constraints) {
        if (!comes_first(constraint))
            my_add_constraint(application, constraint);
    }
}

void host_make_alias_type(host_script_state &state, std::string_view schema, std::string_view name,
                          const host_tsql_type &type, bool is_nullable)
{
    if (state.find_type(schema, name))
        return;
    host_script_type *alias = state.add_type(schema, name);
    host_set_type(state, type, alias->base);
    alias->base.user_type = alias->name;
    alias->base.user_type_schema = alias->schema;
    alias->base.is_nullable = is_nullable;
}
