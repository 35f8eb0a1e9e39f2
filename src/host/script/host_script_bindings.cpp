// sp_bindefault, sp_bindrule and sp_addtype: what databases of the 1990s are made of.
//
// A default or rule that is bound to a type holds for its columns, those that are there and those to come; with
// "futureonly" for the latter alone.
#include "script/host_script_exec.hpp"
#include "script/host_script_parts.hpp"

namespace {

// What a binding is for: a column, or a type.
struct host_binding_target {
    host_script_column *col = nullptr;
    host_script_type *type = nullptr;
};

} // namespace

static host_binding_target my_find_target(host_script_reader &reader, const host_script_argument *argument)
{
    host_binding_target target;
    if (!argument || !argument->is_constant)
        return target;
    const std::vector<std::string> parts = host_split_name(argument->text);
    const size_t count = parts.size();
    const std::string &name = parts.back();
    const auto part = [&parts, count](size_t from_last) { return parts[count - 1 - from_last]; };
    if (count >= 2) {
        const host_script_table *table =
            reader.use_table({"", count >= 3 && !part(2).empty() ? part(2) : reader.default_schema, part(1)});
        target.col = table ? table->find_col(name) : nullptr;
    }
    if (!target.col)
        target.type = reader.use_type(count >= 2 && !part(1).empty() ? part(1) : reader.default_schema, name);
    return target;
}

static const host_script_bound *my_find_bound(host_script_reader &reader, const host_script_argument *argument)
{
    if (!argument || !argument->is_constant)
        return nullptr;
    const std::vector<std::string> parts = host_split_name(argument->text);
    const size_t count = parts.size();
    return reader.use_bound(count >= 2 && !parts[count - 2].empty() ? parts[count - 2] : reader.default_schema,
                            parts.back());
}

void host_set_bound_default(host_script_state &state, host_script_column &col, const host_script_bound *bound)
{
    if (col.has_default_constraint())
        return;
    col.defval = nullptr;
    if (!bound)
        return;
    host_default &defval = *state.defaults.add();
    col.defval = &defval;
    defval.kind = "bound";
    defval.id = bound->id;
    defval.name = bound->name;
    defval.definition = bound->definition;
}

static void my_set_rule(host_script_state &, host_script_column &col, const host_script_bound *bound)
{
    col.record.change().rule = bound ? bound->definition : nullptr;
}

using host_bind = void (*)(host_script_state &state, host_script_column &col, const host_script_bound *bound);

// Binds to a column, or to a type and its columns; a null one unbinds.
static void my_bind(host_script_reader &reader, const host_binding_target &target, bool future_only,
                    const host_script_bound *bound, const host_script_bound *host_script_type::*of_type, host_bind bind)
{
    if (target.col)
        return bind(reader.state, *target.col, bound);
    target.type->*of_type = bound;
    if (future_only)
        return;
    for (const auto &table : reader.state.tables) {
        for (const auto &col : table->cols) {
            if (col->type == target.type)
                bind(reader.state, *col, bound);
        }
    }
}

static void my_run_bind(host_script_reader &reader, const host_tsql_token &first,
                        const host_script_arguments &arguments, std::string_view bound_argument,
                        const host_script_bound *host_script_type::*of_type, host_bind bind)
{
    const host_script_argument *future = host_find_argument(arguments, 2, "futureonly");
    const host_script_bound *bound = my_find_bound(reader, host_find_argument(arguments, 0, bound_argument));
    const host_binding_target target = my_find_target(reader, host_find_argument(arguments, 1, "objname"));
    if (!bound || (!target.col && !target.type))
        return reader.not_read(first, "the script does not make what is bound, or what it is bound to");
    my_bind(reader, target, future && host_same_text(future->text, "futureonly"), bound, of_type, bind);
}

static void my_run_unbind(host_script_reader &reader, const host_tsql_token &first,
                          const host_script_arguments &arguments, const host_script_bound *host_script_type::*of_type,
                          host_bind bind)
{
    const host_script_argument *future = host_find_argument(arguments, 1, "futureonly");
    const host_binding_target target = my_find_target(reader, host_find_argument(arguments, 0, "objname"));
    if (!target.col && !target.type)
        return reader.not_read(first, "the script does not make what it is bound to");
    my_bind(reader, target, future && host_same_text(future->text, "futureonly"), nullptr, of_type, bind);
}

void host_run_bind_default(host_script_reader &reader, const host_tsql_token &first,
                           const host_script_arguments &arguments)
{
    my_run_bind(reader, first, arguments, "defname", &host_script_type::defval, host_set_bound_default);
}

void host_run_unbind_default(host_script_reader &reader, const host_tsql_token &first,
                             const host_script_arguments &arguments)
{
    my_run_unbind(reader, first, arguments, &host_script_type::defval, host_set_bound_default);
}

void host_run_bind_rule(host_script_reader &reader, const host_tsql_token &first,
                        const host_script_arguments &arguments)
{
    my_run_bind(reader, first, arguments, "rulename", &host_script_type::rule, my_set_rule);
}

void host_run_unbind_rule(host_script_reader &reader, const host_tsql_token &first,
                          const host_script_arguments &arguments)
{
    my_run_unbind(reader, first, arguments, &host_script_type::rule, my_set_rule);
}

// sp_addtype name, 'nvarchar(25)', 'not null'
void host_run_add_type(host_script_reader &reader, const host_tsql_token &first, const host_script_arguments &arguments)
{
    const host_script_argument *name = host_find_argument(arguments, 0, "typename");
    const host_script_argument *base = host_find_argument(arguments, 1, "phystype");
    const host_script_argument *null = host_find_argument(arguments, 2, "nulltype");
    if (!name || !base || !name->is_constant || !base->is_constant)
        return reader.not_read(first, "the type is known only when the script runs");
    host_tsql_cursor cursor(base->text);
    const host_tsql_type type = host_read_type(cursor);
    if (cursor.failed() || !type.is_system())
        return reader.not_read(first, "the type is not one of the server's");
    const bool is_nullable = !null || null->is_null || host_same_text(host_trimmed(null->text), "null");
    host_make_alias_type(reader.state, reader.default_schema, name->text, type, is_nullable);
}
