// Names and what they stand for.
#include "script/host_script_state.hpp"

#include "tsql/host_tsql_words.hpp"

#include <algorithm>

host_script_column *host_script_table::find_col(std::string_view col_name) const
{
    for (const auto &col : cols) {
        if (host_same_text(col->record.name, col_name))
            return col.get();
    }
    return nullptr;
}

host_script_key *host_script_table::find_key(std::string_view key_name)
{
    const auto found = std::find_if(keys.begin(), keys.end(), [key_name](const host_script_key &key) {
        return key.name && host_same_text(key.name, key_name);
    });
    return found == keys.end() ? nullptr : &*found;
}

host_script_key *host_script_table::find_pk()
{
    const auto found = std::find_if(
        keys.begin(), keys.end(), [](const host_script_key &key) { return key.kind == host_script_key_kind::primary; });
    return found == keys.end() ? nullptr : &*found;
}

std::vector<const char *> host_script_table::constraint_names() const
{
    std::vector<const char *> names;
    const auto add = [&names](const char *constraint) {
        if (constraint)
            names.push_back(constraint);
    };
    for (const host_script_key &key : keys) {
        if (key.is_constraint())
            add(key.name);
    }
    for (const host_script_fk &fk : fks)
        add(fk.record.name);
    for (const host_script_check &check : checks)
        add(check.record.name);
    for (const auto &col : cols) {
        if (col->has_default_constraint())
            add(col->record.defval.name);
    }
    return names;
}

const std::string &host_script_state::key_of(std::string_view schema, std::string_view name)
{
    key_.clear();
    for (const char byte : schema)
        key_ += host_lower(byte);
    key_ += '\0';
    for (const char byte : name)
        key_ += host_lower(byte);
    return key_;
}

host_script_object *host_script_state::find_object(std::string_view schema, std::string_view name)
{
    const auto found = objects.find(key_of(schema, name));
    return found == objects.end() ? nullptr : &found->second;
}

host_script_table *host_script_state::find_table(std::string_view schema, std::string_view name)
{
    const host_script_object *object = find_object(schema, name);
    return object && std::string_view(object->kind) == "U" ? object->table : nullptr;
}

host_script_object *host_script_state::add_object(const char *kind, const char *schema, const char *name,
                                                  host_script_table *table)
{
    const auto [found, is_new] =
        objects.insert_or_assign(key_of(schema, name), host_script_object{kind, schema, name, table});
    if (is_new)
        names[host_folded(name)]++;
    return &found->second;
}

void host_script_state::forget_object(std::string_view schema, std::string_view name)
{
    if (objects.erase(key_of(schema, name)) > 0)
        names[host_folded(name)]--;
}

void host_script_state::move_object(host_script_object object, const char *schema, const char *name)
{
    forget_object(object.schema, object.name);
    add_object(object.kind, schema, name, object.table);
}

host_script_type *host_script_state::find_type(std::string_view schema, std::string_view name)
{
    const auto found = types.find(key_of(schema, name));
    return found == types.end() ? nullptr : found->second.get();
}

void host_script_state::rename_type(std::string_view schema, std::string_view name, const char *new_name)
{
    auto node = types.extract(key_of(schema, name));
    if (node.empty())
        return;
    node.mapped()->name = new_name;
    node.mapped()->base.user_type = new_name;
    node.key() = key_of(schema, new_name);
    types.insert(std::move(node));
}

host_script_type *host_script_state::add_type(std::string_view schema, std::string_view name)
{
    auto &type = types[key_of(schema, name)];
    type = std::make_unique<host_script_type>();
    type->schema = keep(schema);
    type->name = keep(name);
    return type.get();
}

void host_script_state::retire_type(std::string_view schema, std::string_view name)
{
    auto node = types.extract(key_of(schema, name));
    if (!node.empty())
        retired_types.push_back(std::move(node.mapped()));
}

host_script_bound *host_script_state::add_bound(std::string_view schema, std::string_view name)
{
    auto &bound = bounds[key_of(schema, name)];
    bound = std::make_unique<host_script_bound>();
    bound->name = keep(name);
    bound->id = next_id++;
    return bound.get();
}

void host_script_state::retire_bound(std::string_view schema, std::string_view name)
{
    auto node = bounds.extract(key_of(schema, name));
    if (!node.empty())
        retired_bounds.push_back(std::move(node.mapped()));
}

host_script_bound *host_script_state::find_bound(std::string_view schema, std::string_view name)
{
    const auto found = bounds.find(key_of(schema, name));
    return found == bounds.end() ? nullptr : found->second.get();
}

// The names of a table's constraints go with it, and what refers to it loses its parent.
void host_script_state::drop_table(host_script_table *table)
{
    for (const auto &other : tables) {
        for (host_script_fk &fk : other->fks) {
            if (fk.parent != table || other.get() == table)
                continue;
            fk.parent = nullptr;
            fk.parent_col_names.clear();
            for (const host_script_column *col : fk.parent_cols)
                fk.parent_col_names.emplace_back(col->record.name);
            fk.parent_cols.clear();
        }
    }
    for (const char *name : table->constraint_names())
        forget_object(table->schema, name);
    forget_object(table->schema, table->name);
    std::erase_if(tables, [table](const auto &other) { return other.get() == table; });
}
