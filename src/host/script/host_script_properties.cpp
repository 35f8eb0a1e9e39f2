// Extended properties: those of the name MS_Description are descriptions.
#include "script/host_script_exec.hpp"

static bool my_is(const host_script_argument *argument, std::string_view text)
{
    return argument && argument->is_constant && host_same_text(argument->text, text);
}

// Where the description of a table or of a column is kept; null when the property is something else.
static const char **my_find_description(host_script_reader &reader, const host_script_arguments &arguments,
                                        size_t position)
{
    const host_script_argument *schema = host_find_argument(arguments, position + 1, "level0name");
    const host_script_argument *table_name = host_find_argument(arguments, position + 3, "level1name");
    const host_script_argument *col_type = host_find_argument(arguments, position + 4, "level2type");
    const host_script_argument *col_name = host_find_argument(arguments, position + 5, "level2name");
    if (!my_is(host_find_argument(arguments, 0, "name"), "MS_Description") ||
        !my_is(host_find_argument(arguments, position + 2, "level1type"), "TABLE") || !schema || !table_name)
        return nullptr;
    host_script_table *table = reader.use_table({"", schema->text, table_name->text});
    if (!table)
        return nullptr;
    if (!col_type || col_type->is_null)
        return &table->description;
    host_script_column *col = my_is(col_type, "COLUMN") && col_name ? table->find_col(col_name->text) : nullptr;
    return col ? &col->record.change().description : nullptr;
}

void host_run_add_property(host_script_reader &reader, const host_tsql_token &, const host_script_arguments &arguments)
{
    const host_script_argument *value = host_find_argument(arguments, 1, "value");
    if (const char **description = my_find_description(reader, arguments, 2); description && value)
        *description = value->is_constant && !value->is_null ? reader.state.keep(value->text) : nullptr;
}

void host_run_drop_property(host_script_reader &reader, const host_tsql_token &, const host_script_arguments &arguments)
{
    if (const char **description = my_find_description(reader, arguments, 1))
        *description = nullptr;
}
