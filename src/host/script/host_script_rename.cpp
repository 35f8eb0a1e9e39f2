// sp_rename: of columns, indexes, tables, constraints and types.
#include "script/host_script_exec.hpp"

std::vector<std::string> host_split_name(std::string_view text)
{
    std::vector<std::string> parts(1);
    for (size_t at = 0; at < text.size();) {
        const char byte = text[at];
        if (byte == '.') {
            parts.emplace_back();
            at++;
            continue;
        }
        const bool is_quoted = parts.back().empty() && (byte == '[' || byte == '"');
        if (!is_quoted) {
            parts.back() += byte;
            at++;
            continue;
        }
        const char close = byte == '[' ? ']' : '"';
        for (at++; at < text.size(); at++) {
            if (text[at] == close && (at + 1 == text.size() || text[at + 1] != close))
                break;
            at += text[at] == close ? 1U : 0U;
            parts.back() += text[at];
        }
        at++;
    }
    return parts;
}

// The part so many before the last, or what stands for it when it is left out.
static std::string_view my_part(const std::vector<std::string> &parts, size_t from_last, std::string_view otherwise)
{
    if (from_last >= parts.size() || parts[parts.size() - 1 - from_last].empty())
        return otherwise;
    return parts[parts.size() - 1 - from_last];
}

static host_script_name my_table_name(const host_script_reader &reader, const std::vector<std::string> &parts)
{
    return {my_part(parts, 3, ""), my_part(parts, 2, reader.default_schema), my_part(parts, 1, "")};
}

static bool my_rename_column(host_script_reader &reader, const std::vector<std::string> &parts, const std::string &name)
{
    host_script_table *table = reader.use_table(my_table_name(reader, parts));
    host_script_column *col = table ? table->find_col(parts.back()) : nullptr;
    host_script_column *other = table ? table->find_col(name) : nullptr;
    if (!col || (other && other != col))
        return table && table->is_opaque;
    col->set_name(reader.state.keep(name));
    return true;
}

static bool my_rename_index(host_script_reader &reader, const std::vector<std::string> &parts, const std::string &name)
{
    host_script_table *table = reader.use_table(my_table_name(reader, parts));
    host_script_key *key = table ? table->find_key(parts.back()) : nullptr;
    if (!key)
        return table && table->is_opaque;
    if (key->is_constraint() && reader.state.find_object(table->schema, key->name))
        reader.state.move_object(*reader.state.find_object(table->schema, key->name), table->schema,
                                 reader.state.keep(name));
    key->name = reader.state.keep(name);
    return true;
}

static void my_rename_constraint(host_script_table &table, std::string_view old_name, const char *name)
{
    const auto rename = [old_name, name](const char *&found) {
        if (found && host_same_text(found, old_name))
            found = name;
    };
    for (host_script_key &key : table.keys)
        rename(key.name);
    for (host_script_fk &fk : table.fks)
        rename(fk.record.name);
    for (host_script_check &check : table.checks)
        rename(check.record.name);
    for (const auto &col : table.cols) {
        if (col->defval)
            rename(col->defval->name);
    }
}

static bool my_rename_object(host_script_reader &reader, const std::vector<std::string> &parts, const std::string &name)
{
    const std::string_view schema = my_part(parts, 1, reader.default_schema);
    reader.use_table({"", schema, parts.back()});
    const host_script_object *found = reader.state.find_object(schema, parts.back());
    if (!found || (reader.state.find_object(schema, name) && !host_same_text(name, found->name)))
        return false;
    const host_script_object object = *found;
    const char *kept = reader.state.keep(name);
    if (object.table && std::string_view(object.kind) == "U")
        object.table->name = kept;
    else if (object.table)
        my_rename_constraint(*object.table, object.name, kept);
    reader.state.move_object(object, object.schema, kept);
    return true;
}

static bool my_rename_type(host_script_reader &reader, const std::vector<std::string> &parts, const std::string &name)
{
    const std::string_view schema = my_part(parts, 1, reader.default_schema);
    if (!reader.use_type(schema, parts.back()))
        return false;
    reader.state.rename_type(schema, parts.back(), reader.state.keep(name));
    return true;
}

void host_run_rename(host_script_reader &reader, const host_tsql_token &first, const host_script_arguments &arguments)
{
    const host_script_argument *from = host_find_argument(arguments, 0, "objname");
    const host_script_argument *to = host_find_argument(arguments, 1, "newname");
    const host_script_argument *type = host_find_argument(arguments, 2, "objtype");
    if (!from || !to || !from->is_constant || !to->is_constant || to->text.empty())
        return reader.not_read(first, "it renames something that is known only when the script runs");
    const std::vector<std::string> parts = host_split_name(from->text);
    const std::string_view kind = type && type->is_constant ? std::string_view(type->text) : "OBJECT";
    bool is_done = false;
    if (host_same_text(kind, "COLUMN"))
        is_done = my_rename_column(reader, parts, to->text);
    else if (host_same_text(kind, "INDEX"))
        is_done = my_rename_index(reader, parts, to->text);
    else if (host_same_text(kind, "USERDATATYPE"))
        is_done = my_rename_type(reader, parts, to->text);
    else if (host_same_text(kind, "DATABASE") || host_same_text(kind, "STATISTICS"))
        is_done = true;
    else
        is_done = my_rename_object(reader, parts, to->text);
    if (!is_done)
        reader.not_read(first, "the script does not make what is renamed, or the new name is taken");
}
