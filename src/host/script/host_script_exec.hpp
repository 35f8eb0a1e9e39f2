// The procedures of the server that change tables, and their arguments.
#pragma once

#include "script/host_script_reader.hpp"

struct host_script_argument {
    std::string name; // folded, without @; empty for one by position
    std::string text;
    bool is_constant = false;
    bool is_null = false;
    host_tsql_token at;
};
using host_script_arguments = std::vector<host_script_argument>;

// By name or by position; null when it is left out.
const host_script_argument *host_find_argument(const host_script_arguments &arguments, size_t position,
                                               std::string_view name);

// The parts of a name in a string, such as '[dbo].[Order Details].Id', as many as there are.
std::vector<std::string> host_split_name(std::string_view text);

// host_script_rename.cpp, host_script_bindings.cpp, host_script_properties.cpp
void host_run_rename(host_script_reader &reader, const host_tsql_token &first, const host_script_arguments &arguments);
void host_run_bind_default(host_script_reader &reader, const host_tsql_token &first,
                           const host_script_arguments &arguments);
void host_run_unbind_default(host_script_reader &reader, const host_tsql_token &first,
                             const host_script_arguments &arguments);
void host_run_bind_rule(host_script_reader &reader, const host_tsql_token &first,
                        const host_script_arguments &arguments);
void host_run_unbind_rule(host_script_reader &reader, const host_tsql_token &first,
                          const host_script_arguments &arguments);
void host_run_add_type(host_script_reader &reader, const host_tsql_token &first,
                       const host_script_arguments &arguments);
void host_run_add_property(host_script_reader &reader, const host_tsql_token &first,
                           const host_script_arguments &arguments);
void host_run_drop_property(host_script_reader &reader, const host_tsql_token &first,
                            const host_script_arguments &arguments);
