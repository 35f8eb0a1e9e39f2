// The conditions come from what a created database checks: the statements of the schema module, which are taken apart
// here, and the server's rules. They differ from a trigger's in two things. A moment is held to the server's rules
// alone where they are known, since the module's check of it asks SQLite's time functions, which round. And the rules
// of a string are asked one by one, so that all that is wrong with it is found.
#include "verify/client_value_conditions.hpp"

#include "rules/client_rules.hpp"
#include "tov_abstract_types.h"

#define KT_HERE "src/client/verify/client_value_conditions"

namespace {

struct message_kind {
    std::string_view beginning;
    client_violation_code code;
};

} // namespace

static constexpr message_kind message_kinds[] = {
    {"type mismatch", "storage-class"}, {"out of range", "out-of-range"},   {"precision exceeded", "out-of-range"},
    {"width exceeded", "too-long"},     {"width not filled", "not-filled"}, {"must be ", "wrong-size"},
    {"invalid ", "wrong-form"},         {"not a day", "no-such-day"},       {"a character that", "not-in-code-page"},
};

const tov_client_violation_kind *client_kind_of_message(std::string_view message) noexcept
{
    for (const message_kind &known : message_kinds) {
        if (message.starts_with(known.beginning))
            return known.code.kind;
    }
    return client_violation_code("refused").kind;
}

static std::string my_replaced(std::string text, std::string_view from, std::string_view to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

// Takes a statement of the module's apart, made for a column named v: WHEN (condition) THEN RAISE(ABORT, 'message').
static void my_take_apart(const std::string &statement, const std::string &value,
                          std::vector<client_condition> &conditions)
{
    static constexpr std::string_view begin = "WHEN (",
                                      middle = ") THEN RAISE(ABORT, '[v] constraint violation: ", end = "')";
    static constexpr std::string_view null_line = "IS NULL) THEN 1\n";
    size_t at = statement.find(null_line) + null_line.size();
    for (at = statement.find(begin, at); at != std::string::npos; at = statement.find(begin, at)) {
        at += begin.size();
        const size_t message = statement.find(middle, at);
        const std::string condition = my_replaced(statement.substr(at, message - at), "NEW.\"v\"", value);
        at = message + middle.size();
        const std::string text = statement.substr(at, statement.find(end, at) - at);
        conditions.push_back({condition, client_kind_of_message(text), text, true});
    }
}

static void my_add_module_conditions(KT_context *ctx, const client_verify &run, const client_verify_tbl &tbl,
                                     const client_verify_col &col, std::vector<client_condition> &conditions)
{
    kt_owned_string statement{ctx};
    const char *tbl_id = tbl.tbl.id.c_str();
    const char *col_id = col.row_col->col_id.c_str();
    int32_t width = -1;
    int32_t precision = -1;
    int32_t scale = -1;
    const bool has_width = KT_stricmp(col.type, "text") == 0 || KT_stricmp(col.type, "blob") == 0;
    if (has_width)
        KT_TRY(tov_schema__get_col_type__width(ctx, run.schema, tbl_id, col_id, &width));
    KT_TRY(tov_schema__get_col_type__precision(ctx, run.schema, tbl_id, col_id, &precision));
    KT_TRY(tov_schema__get_col_type__scale(ctx, run.schema, tbl_id, col_id, &scale));
    KT_TRY(tov_schema__get_validation_expression(ctx, col.type, width, precision, scale, 0, "v", statement.out()));
    my_take_apart(KT_string__sz(statement), col.raw, conditions);
}

// An identity column's values are SQLite's own numbers in a created database, which needs no check of them.
static void my_add_identity_conditions(const client_verify &run, const client_verify_tbl &tbl,
                                       const client_verify_col &col, std::vector<client_condition> &conditions)
{
    conditions.push_back({"typeof(" + col.raw + ") != 'integer'", client_violation_code("storage-class").kind,
                          "type mismatch: identity(integer)", true});
    const client_rowid_limits limits = client_rowid_limits_of(col.row_col->type);
    if (run.options.rules == TOV_CLIENT_RULES_SERVER && tbl.tbl.has_facts && !limits.range.empty())
        conditions.push_back({col.raw + " NOT BETWEEN " + limits.range, client_violation_code("out-of-range").kind,
                              limits.message, true});
}

// The least integer has no absolute value, which the module's check of a decimal asks for.
static void my_guard_decimal(const client_verify_col &col, std::vector<client_condition> &conditions)
{
    const client_condition last = conditions.back();
    conditions.back() = {col.raw + " = -9223372036854775808", last.kind, last.message, true};
    conditions.push_back(last);
}

// A number in a real column may be stored as an integer; in a created database it never is.
static std::string my_rule_value(const client_verify_col &col, tov_type_kind kind)
{
    return kind == TOV_KIND_REAL ? "CAST(" + col.raw + " AS real)" : col.raw;
}

static void my_add_rules(client_verify &run, const client_verify_col &col, tov_type_kind kind,
                         std::vector<client_condition> &conditions)
{
    const bool is_text = kind == TOV_KIND_TEXT && client_is_text(col.row_col->type.base);
    const std::string value = my_rule_value(col, kind);
    const bool is_moment = kind == TOV_KIND_DATE || kind == TOV_KIND_TIME || kind == TOV_KIND_DATETIME;
    std::vector<client_rule> rules = client_rules_of(col.row_col->type, value, run.pages);
    if (is_moment && !rules.empty())
        conditions.resize(1); // of the storage class
    for (size_t n = 1; is_text && n < conditions.size(); n++)
        conditions[n].is_last = false;
    for (client_rule &rule : rules) {
        if (!run.is_utf_8)
            rule.refused = my_replaced(rule.refused, "length(CAST(" + value + " AS BLOB))",
                                       std::string(client_utf8_size) + "(" + value + ")");
        conditions.push_back({rule.refused, client_kind_of_message(rule.message), rule.message, !is_text});
    }
}

std::vector<client_condition> client_value_conditions(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                                                      const client_verify_col &col)
{
    std::vector<client_condition> conditions;
    const tov_abstract_type *type = tov_find_abstract_type(col.type);
    if (!type || (!type->is_checked && type->kind != TOV_KIND_IDENTITY))
        return conditions;
    if (type->kind == TOV_KIND_IDENTITY) {
        my_add_identity_conditions(run, tbl, col, conditions);
        return conditions;
    }
    my_add_module_conditions(ctx, run, tbl, col, conditions);
    if (type->kind == TOV_KIND_DECIMAL && !conditions.empty())
        my_guard_decimal(col, conditions);
    if (run.options.rules == TOV_CLIENT_RULES_SERVER && tbl.tbl.has_facts && !conditions.empty())
        my_add_rules(run, col, type->kind, conditions);
    return conditions;
}
