// What a schema makes of a database: its tables, indexes, triggers and views with their statements.
#pragma once

#include "create/client_statements.hpp"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// A statement that outlives the plan that it comes from.
struct client_object {
    client_kind kind;
    std::string tbl;
    std::string name;
    std::string sql;
};

struct client_object_list {
    client_plan plan;
    std::vector<client_object> objects;              // in the order of their creation
    std::unordered_map<std::string, size_t> by_name; // in lower case

    // The object of a name, ASCII case aside; null when there is none.
    const client_object *find(std::string_view name) const;
};

// Checks a schema's texts and lists what it makes.
void client_list_objects(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                         client_object_list &list);

// A statement in a form that is equal for two that SQLite reads alike: it rewrites quotes and blanks when it alters
// one.
std::string client_statement_meaning(std::string_view sql);

// "TRIGGER", "INDEX" ..., as DROP wants it.
const char *client_object_word(client_kind kind) noexcept;
