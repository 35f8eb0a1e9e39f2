// Keys, indexes, foreign keys, checks, defaults and descriptions: all of them elements beside the tables.
//
// A constraint without a name is one whose name was left to the server. Texts of a model that was extracted from a
// server are the server's, except that checks lack their outermost parentheses; those of a project are the author's.
#include "package/host_model.hpp"

#define KT_HERE "src/host/package/host_model_constraints"

static std::string_view my_keep_reference(host_model &model, const host_node &element, std::string_view relationship)
{
    return host_keep_name(model, host_reference(element, relationship));
}

static void my_keep_references(KT_context *ctx, host_model &model, const host_node &element,
                               std::string_view relationship, std::vector<std::string_view> &names)
{
    KT_TRY(host_for_each(ctx, element, relationship, [&](KT_context *, const host_node &child) {
        names.push_back(host_keep_name(model, child.name));
    }));
}

// The columns of a key, in its order.
static void my_read_key_cols(KT_context *ctx, host_model &model, const host_node &element, host_model_index &index)
{
    KT_TRY(host_for_each(ctx, element, "ColumnSpecifications", [&](KT_context *, const host_node &indexed_col) {
        index.cols.push_back(my_keep_reference(model, indexed_col, "Column"));
        index.key.descending.push_back(host_is_false(indexed_col, "IsAscending"));
    }));
}

static void my_read_index(KT_context *ctx, host_model &model, const host_node &element, host_model_index &index)
{
    KT_TRY(host_keep_last_part(ctx, model, element.name, &index.key.name));
    index.key.is_system_named = !index.key.name;
    index.key.is_disabled = host_is_true(element, "IsDisabled");
    index.key.is_clustered = host_is_true(element, "IsClustered");
    KT_TRY(my_read_key_cols(ctx, model, element, index));
}

static void my_take_key(KT_context *ctx, host_model &model, const host_node &element, host_index_kind kind)
{
    host_model_index &index = model.indexes.emplace_back();
    index.kind = kind;
    index.tbl = my_keep_reference(model, element, "DefiningTable");
    KT_TRY(my_read_index(ctx, model, element, index));
}

void host_take_pk(KT_context *ctx, host_model &model, const host_node &element)
{
    KT_TRY(my_take_key(ctx, model, element, host_index_kind::primary_key));
    model.indexes.back().key.is_clustered = !host_is_false(element, "IsClustered");
}

void host_take_unique(KT_context *ctx, host_model &model, const host_node &element)
{
    KT_TRY(my_take_key(ctx, model, element, host_index_kind::unique));
}

void host_take_index(KT_context *ctx, host_model &model, const host_node &element)
{
    host_model_index &index = model.indexes.emplace_back();
    index.is_unique = host_is_true(element, "IsUnique");
    index.tbl = my_keep_reference(model, element, "IndexedObject");
    index.key.filter = host_keep_definition(model, host_property(element, "FilterPredicate"));
    KT_TRY(my_read_index(ctx, model, element, index));
    KT_TRY(my_keep_references(ctx, model, element, "IncludedColumns", index.included));
}

// The numbers of the management interface. Only 1 has been met; another interface has 2 and 3 the other way round.
static void my_read_action(KT_context *ctx, const host_node &element, std::string_view property, host_model_fk &fk,
                           const char **action)
{
    int64_t number = 0;
    KT_TRY(host_number(ctx, element, property, 0, &number));
    if (number >= static_cast<int64_t>(host_fk_actions.size()))
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is %lld, not a number from 0 to 3", std::string(property).c_str(),
                static_cast<long long>(number));
    *action = host_fk_actions[static_cast<size_t>(number)];
    fk.is_action_assumed |= number > 1;
}

void host_take_fk(KT_context *ctx, host_model &model, const host_node &element)
{
    host_model_fk &fk = model.fks.emplace_back();
    fk.tbl = my_keep_reference(model, element, "DefiningTable");
    fk.ref_tbl = my_keep_reference(model, element, "ForeignTable");
    KT_TRY(host_keep_last_part(ctx, model, element.name, &fk.fk.name));
    if (fk.ref_tbl.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "foreign key %s refers to no table", host_shown_name(fk.fk.name));
    fk.fk.is_system_named = !fk.fk.name;
    fk.fk.is_disabled = host_is_true(element, "IsDisabled");
    fk.fk.not_for_replication = host_is_true(element, "IsNotForReplication");
    fk.fk.is_not_trusted = host_has_annotation(element, "IsNotTrustedPropertyAnnotation");
    KT_TRY(my_read_action(ctx, element, "OnDeleteAction", fk, &fk.fk.on_delete));
    KT_TRY(my_read_action(ctx, element, "OnUpdateAction", fk, &fk.fk.on_update));
    KT_TRY(my_keep_references(ctx, model, element, "Columns", fk.cols));
    KT_TRY(my_keep_references(ctx, model, element, "ForeignColumns", fk.ref_cols));
}

// A package from a server has checks without the parentheses that the server keeps around them.
static const char *my_keep_check(host_model &model, std::string_view text)
{
    if (text.empty() || !model.from_server)
        return host_keep_definition(model, text);
    return model.catalogue.texts.keep('(' + std::string(text) + ')');
}

void host_take_check(KT_context *ctx, host_model &model, const host_node &element)
{
    host_model_check &check = model.checks.emplace_back();
    check.tbl = my_keep_reference(model, element, "DefiningTable");
    KT_TRY(host_keep_last_part(ctx, model, element.name, &check.check.name));
    check.check.is_system_named = !check.check.name;
    check.check.definition = my_keep_check(model, host_property(element, "CheckExpressionScript"));
    check.check.is_disabled = host_is_true(element, "IsDisabled");
    check.check.not_for_replication = host_is_true(element, "IsNotForReplication");
    check.check.is_not_trusted = host_has_annotation(element, "IsNotTrustedPropertyAnnotation");
}

void host_take_default(KT_context *ctx, host_model &model, const host_node &element)
{
    host_model_default &entry = model.defaults.emplace_back();
    entry.col = my_keep_reference(model, element, "ForColumn");
    entry.defval.kind = "constraint";
    KT_TRY(host_keep_last_part(ctx, model, element.name, &entry.defval.name));
    entry.defval.is_system_named = !entry.defval.name;
    entry.defval.definition = host_keep_definition(model, host_property(element, "DefaultExpressionScript"));
}

// The text in a literal such as N'It''s'; any other value is taken as it is written.
static std::string my_unquoted(std::string_view value)
{
    const std::string_view quoted = value.substr(value.starts_with('N') ? 1 : 0);
    if (quoted.size() < 2 || quoted.front() != '\'' || quoted.back() != '\'')
        return std::string(value);
    std::string text;
    const std::string_view inside = quoted.substr(1, quoted.size() - 2);
    for (size_t at = 0; at < inside.size(); at++) {
        text += inside[at];
        if (inside[at] == '\'' && !inside.substr(++at).starts_with('\''))
            return std::string(value); // more than one literal
    }
    return text;
}

// The element's name says what it describes and which property of it: [SqlColumn].[s].[t].[c].[MS_Description].
void host_take_description(KT_context *, host_model &model, const host_node &element)
{
    const bool is_of_col = element.name.starts_with("[SqlColumn].");
    if (!element.name.ends_with(".[MS_Description]") || !(is_of_col || element.name.starts_with("[SqlTableBase].")))
        return;
    model.descriptions.push_back({my_keep_reference(model, element, "Host"), is_of_col,
                                  model.catalogue.texts.keep(my_unquoted(host_property(element, "Value")))});
}
