#include "rules/client_rules.hpp"

#include "guide/client_guide.hpp"
#include "rules/client_rule_parts.hpp"

std::string client_about(const std::string &value, std::string_view condition)
{
    std::string text;
    for (const char c : condition) {
        if (c == '@')
            text += value;
        else
            text.push_back(c);
    }
    return text;
}

static std::string my_out_of_range(const client_server_type &type)
{
    return "out of range: " + client_declared_type_text({type, ""});
}

std::string client_accepted_by(const client_rule &rule)
{
    return rule.accepted.empty() ? "NOT (" + rule.refused + ")" : rule.accepted;
}

static client_rule my_rule(const std::string &value, std::string_view refused, std::string_view accepted,
                           const std::string &message)
{
    return {client_about(value, refused), message, client_about(value, accepted)};
}

std::vector<client_rule> client_rules_of(const client_server_type &type, const std::string &value,
                                         client_code_pages &pages)
{
    std::vector<client_rule> rules;
    switch (type.base) {
    case client_base::real: // what lies beyond half a step after the greatest number of 32 bits
        rules.push_back(
            my_rule(value, "abs(@) >= 3.4028235677973366e38", "abs(@)<3.4028235677973366e38", my_out_of_range(type)));
        break;
    case client_base::floating: // infinite
        rules.push_back(
            my_rule(value, "@ IS NOT NULL AND @ - @ IS NULL", "@ IS NULL OR @-@ IS NOT NULL", my_out_of_range(type)));
        break;
    case client_base::binary:
        if (type.length > 0) {
            const std::string width = std::to_string(type.length);
            rules.push_back(
                my_rule(value, "length(@) < " + width, "length(@)>=" + width, "width not filled with zeros: " + width));
        }
        break;
    case client_base::rowversion:
        rules.push_back(my_rule(value, "length(@) != 8", "length(@)=8", "must be 8 bytes (rowversion)"));
        break;
    default:
        if (client_is_text(type.base))
            client_add_text_rules(type, value, pages, rules);
        else if (client_is_moment(type.base))
            client_add_moment_rules(type, value, rules);
    }
    return rules;
}

static std::string my_integer_limits(const client_server_type &type)
{
    switch (type.base) {
    case client_base::tinyint:
        return "0 AND 255";
    case client_base::smallint:
        return "-32768 AND 32767";
    case client_base::integer:
        return "-2147483648 AND 2147483647";
    case client_base::decimal:
        break;
    default:
        return "";
    }
    if (type.precision == 0 || type.precision > 18)
        return "";
    const std::string most(type.precision, '9');
    return "-" + most + " AND " + most;
}

client_rowid_limits client_rowid_limits_of(const client_server_type &type)
{
    return {my_integer_limits(type), my_out_of_range(type)};
}
