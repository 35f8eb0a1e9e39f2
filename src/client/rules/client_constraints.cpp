#include "rules/client_constraint_parts.hpp"
#include "rules/client_rule_parts.hpp"

#include <string_view>

static std::string my_storage_condition(const client_checked_type &type, const std::string &col)
{
    const std::string_view storage = type.abstract->sqlite_typeof;
    if (storage == "real")
        return col + "<''";
    if (storage == "text")
        return col + "<x''";
    if (storage == "blob")
        return col + ">=x''";
    // The least integer equals a real, which is refused for its range where a type has one. One more makes a greater
    // integer, but not a greater real of that size.
    const bool has_range =
        type.abstract->low != INT64_MIN || (type.abstract->kind == TOV_KIND_DECIMAL && type.precision <= 18);
    return client_about(col, has_range ? "@|0=@" : "@|0=@ AND @+1>@");
}

static void my_add_range(const tov_abstract_type &type, const std::string &col,
                         std::vector<client_constraint> &constraints)
{
    if (type.low != INT64_MIN)
        constraints.push_back({col + " BETWEEN " + std::to_string(type.low) + " AND " + std::to_string(type.high),
                               std::string("out of range: ") + type.name});
}

// Integers have 19 digits at most; the least one has no absolute value whose digits could be counted.
static void my_add_precision(int32_t precision, const std::string &col, std::vector<client_constraint> &constraints)
{
    std::string condition = col + ">-9223372036854775807-1";
    if (precision < 1) {
        condition = col + " IS NULL";
    } else if (precision <= 18) {
        const std::string most(static_cast<size_t>(precision), '9');
        condition = col + " BETWEEN -" + most + " AND " + most;
    }
    constraints.push_back({condition, "precision exceeded (" + std::to_string(precision) + ")"});
}

// Characters of strings, bytes of blobs.
static void my_add_width(const client_checked_type &type, const std::string &col,
                         std::vector<client_constraint> &constraints)
{
    if (type.width <= 0)
        return;
    const std::string width = std::to_string(type.width);
    constraints.push_back({client_about(col, "length(@)<=") + width, "width exceeded: " + width});
}

// The server's width in other units than characters is never the wider one.
static bool my_is_width(const client_checked_type &type, const client_rule &rule)
{
    return type.abstract && type.abstract->kind == TOV_KIND_TEXT && type.server->length == type.width &&
           rule.message.starts_with("width exceeded");
}

static void my_add_rules(const client_checked_type &type, const std::string &col, client_code_pages &pages,
                         std::vector<client_constraint> &constraints)
{
    for (const client_rule &rule : client_rules_of(*type.server, col, pages)) {
        if (my_is_width(type, rule))
            std::erase_if(constraints,
                          [](const client_constraint &own) { return own.message.starts_with("width exceeded"); });
        constraints.push_back({client_accepted_by(rule), rule.message});
    }
}

static void my_add_value_conditions(const client_checked_type &type, const std::string &col,
                                    std::vector<client_constraint> &constraints)
{
    switch (type.abstract->kind) {
    case TOV_KIND_TEXT:
    case TOV_KIND_BLOB:
        return my_add_width(type, col, constraints);
    case TOV_KIND_GUID:
        return constraints.push_back({client_about(col, "length(@)=16"), "must be 16 bytes (uniqueidentifier)"});
    case TOV_KIND_DECIMAL:
        return my_add_precision(type.precision, col, constraints);
    default:
        return client_add_moment_constraints(type.abstract->kind, col, constraints);
    }
}

std::vector<client_constraint> client_constraints_of(const client_checked_type &type, const std::string &col,
                                                     client_code_pages &pages)
{
    std::vector<client_constraint> constraints;
    if (type.abstract && type.abstract->is_checked) {
        constraints.push_back({my_storage_condition(type, col), std::string("type mismatch: ") + type.abstract->name +
                                                                    "(" + type.abstract->sqlite_typeof + ")"});
        my_add_range(*type.abstract, col, constraints);
        if (type.server && client_rules_imply_check(type.abstract->kind, *type.server)) {
            client_add_server_moment_constraints(*type.server, col, constraints);
            return constraints;
        }
        my_add_value_conditions(type, col, constraints);
    }
    if (type.server)
        my_add_rules(type, col, pages, constraints);
    return constraints;
}
