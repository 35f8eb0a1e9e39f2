#include "migrate/client_object_list.hpp"

#include "compare/client_expression_tokens.hpp"
#include "kt_folded.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_object_list"

static void my_keep(KT_context *ctx, void *data, const client_statement &statement) noexcept
{
    auto &objects = *static_cast<std::vector<client_object> *>(data);
    kt_contain(ctx, [&] { objects.push_back({statement.kind, statement.tbl, statement.name, statement.sql}); });
}

void client_list_objects(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                         client_object_list &list)
{
    client_choose(options, list.plan);
    KT_TRY(client_make_plan(ctx, schema, list.plan));
    KT_TRY(client_each_statement(ctx, schema, list.plan, my_keep, &list.objects));
}

const client_object *client_find_object(const std::vector<client_object> &objects, std::string_view name) noexcept
{
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [&](const client_object &object) { return kt_equal_folded(object.name, name); });
    return found == objects.end() ? nullptr : &*found;
}

std::string client_statement_meaning(std::string_view sql)
{
    std::string meaning;
    for (const client_expression_token &token : client_expression_tokens(sql)) {
        const bool is_string = token.kind == client_expression_token_kind::string;
        meaning += (is_string ? "s " : "t ") + token.text + '\n';
    }
    return meaning;
}

const char *client_object_word(client_kind kind) noexcept
{
    switch (kind) {
    case client_kind::tbl:
    case client_kind::counter:
    case client_kind::record:
        return "TABLE";
    case client_kind::index:
        return "INDEX";
    case client_kind::view:
        return "VIEW";
    default:
        return "TRIGGER";
    }
}
