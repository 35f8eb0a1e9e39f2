#include "migrate/client_object_list.hpp"

#include "compare/client_expression_tokens.hpp"
#include "kt_folded.hpp"

#define KT_HERE "src/client/migrate/client_object_list"

static void my_keep(KT_context *ctx, void *data, const client_statement &statement) noexcept
{
    auto &list = *static_cast<client_object_list *>(data);
    kt_contain(ctx, [&] {
        list.by_name[kt_folded(statement.name)] = list.objects.size();
        list.objects.push_back({statement.kind, statement.tbl, statement.name, statement.sql});
    });
}

void client_list_objects(KT_context *ctx, tov_schema *schema, const tov_client_create_options *options,
                         client_object_list &list)
{
    KT_TRY(client_apply_options(ctx, options, list.plan));
    KT_TRY(client_make_plan(ctx, schema, list.plan));
    KT_TRY(client_each_statement(ctx, schema, list.plan, my_keep, &list));
}

const client_object *client_object_list::find(std::string_view name) const
{
    const auto found = by_name.find(kt_folded(name));
    return found == by_name.end() ? nullptr : &objects[found->second];
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
