// Names and what they stand for.
#include "script/host_script_state.hpp"

#include "tsql/host_tsql_words.hpp"

#include <algorithm>

void host_script_column::set_name(const char *new_name)
{
    name = new_name;
    name_hash = host_name_hash{}(std::string_view(new_name));
}

static host_script_column *my_find_col(const host_script_table &table, std::string_view name, size_t hash)
{
    for (host_script_column *col : table.cols) {
        if (col->name_hash == hash && host_same_text(col->name, name))
            return col;
    }
    return nullptr;
}

host_script_column *host_script_table::find_col(std::string_view col_name) const
{
    return my_find_col(*this, col_name, host_name_hash{}(col_name));
}

host_script_column *host_script_table::find_same(const host_script_column &other) const
{
    return my_find_col(*this, other.name, other.name_hash);
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
    for (const host_script_column *col : cols) {
        if (col->has_default_constraint())
            add(col->defval->name);
    }
    return names;
}

host_script_object *host_script_state::find_object(std::string_view schema, std::string_view name)
{
    return objects.find(schema, name);
}

std::vector<const host_script_object *> host_script_state::find_objects(std::string_view name)
{
    if (!names_) {
        names_.emplace();
        objects.each([this](const host_script_object &object) { names_->emplace(object.name, &object); });
    }
    std::vector<const host_script_object *> found;
    const auto [begin, end] = names_->equal_range(name);
    for (auto at = begin; at != end; ++at)
        found.push_back(at->second);
    return found;
}

host_script_table *host_script_state::find_table(std::string_view schema, std::string_view name)
{
    const host_script_object *object = find_object(schema, name);
    return object && std::string_view(object->kind) == "U" ? object->table : nullptr;
}

bool host_script_state::add_object(const char *kind, const char *schema, const char *name, host_script_table *table)
{
    const host_script_object *object = objects.add({kind, schema, name, table});
    if (object && names_)
        names_->emplace(object->name, object);
    return object != nullptr;
}

void host_script_state::forget_object(std::string_view schema, std::string_view name)
{
    host_script_object *found = objects.find(schema, name);
    if (!found)
        return;
    if (names_) {
        const auto [begin, end] = names_->equal_range(name);
        names_->erase(std::find_if(begin, end, [found](const auto &entry) { return entry.second == found; }));
    }
    objects.forget(*found);
}

void host_script_state::move_object(host_script_object object, const char *schema, const char *name)
{
    forget_object(object.schema, object.name);
    add_object(object.kind, schema, name, object.table);
}

host_script_type *host_script_state::find_type(std::string_view schema, std::string_view name)
{
    const auto found = types.find({schema, name});
    return found == types.end() ? nullptr : found->second.get();
}

void host_script_state::rename_type(std::string_view schema, std::string_view name, const char *new_name)
{
    auto node = types.extract({schema, name});
    node.mapped()->name = new_name;
    node.mapped()->base.user_type = new_name;
    node.key() = {node.mapped()->schema, new_name};
    types.insert(std::move(node));
}

host_script_type *host_script_state::add_type(std::string_view schema, std::string_view name)
{
    auto type = std::make_unique<host_script_type>();
    type->schema = keep(schema);
    type->name = keep(name);
    const host_qualified_name key{type->schema, type->name};
    return types.insert_or_assign(key, std::move(type)).first->second.get();
}

void host_script_state::retire_type(std::string_view schema, std::string_view name)
{
    auto node = types.extract({schema, name});
    if (!node.empty())
        retired_types.push_back(std::move(node.mapped()));
}

host_script_bound *host_script_state::add_bound(std::string_view schema, std::string_view name)
{
    auto bound = std::make_unique<host_script_bound>();
    bound->name = keep(name);
    bound->id = next_id++;
    const host_qualified_name key{keep(schema), bound->name};
    return bounds.insert_or_assign(key, std::move(bound)).first->second.get();
}

void host_script_state::retire_bound(std::string_view schema, std::string_view name)
{
    auto node = bounds.extract({schema, name});
    if (!node.empty())
        retired_bounds.push_back(std::move(node.mapped()));
}

host_script_bound *host_script_state::find_bound(std::string_view schema, std::string_view name)
{
    const auto found = bounds.find({schema, name});
    return found == bounds.end() ? nullptr : found->second.get();
}

// The names of a table's constraints go with it, and what refers to it loses its parent. The record stays: the
// statement that is being read may hold it, when another file that this one needs drops the table.
void host_script_state::drop_table(host_script_table *table)
{
    for (const auto &other : tables) {
        for (host_script_fk &fk : other->fks) {
            if (fk.parent != table || other.get() == table)
                continue;
            fk.parent = nullptr;
            fk.parent_col_names.clear();
            for (const host_script_column *col : fk.parent_cols)
                fk.parent_col_names.push_back(col->name);
            fk.parent_cols.clear();
        }
    }
    for (const char *name : table->constraint_names())
        forget_object(table->schema, name);
    forget_object(table->schema, table->name);
    const auto found =
        std::find_if(tables.begin(), tables.end(), [table](const auto &other) { return other.get() == table; });
    retired_tables.push_back(std::move(*found));
    tables.erase(found);
}
