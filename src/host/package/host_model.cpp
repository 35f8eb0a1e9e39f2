// Which elements of a model are read.
#include "package/host_model.hpp"

#include "package/host_names.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>

#define KT_HERE "src/host/package/host_model"

struct host_element_type {
    std::string_view type;
    void (*take)(KT_context *ctx, host_model &model, const host_node &element);
};

static constexpr host_element_type element_types[] = {
    {"SqlTable", host_take_table},
    {"SqlDefaultConstraint", host_take_default},
    {"SqlPrimaryKeyConstraint", host_take_pk},
    {"SqlForeignKeyConstraint", host_take_fk},
    {"SqlIndex", host_take_index},
    {"SqlExtendedProperty", host_take_description},
    {"SqlCheckConstraint", host_take_check},
    {"SqlUniqueConstraint", host_take_unique},
    {"SqlUserDefinedDataType", host_take_alias},
    {"SqlUserDefinedType", host_take_clr_type},
    {"SqlSequence", host_take_sequence},
    {"SqlDatabaseOptions", host_take_options},
};

// Elements of which only the name is taken.
struct host_left_type {
    std::string_view type;
    const char *kind;
};

static constexpr host_left_type left_types[] = {
    {"SqlView", "views"},
    {"SqlProcedure", "procedures"},
    {"SqlClrProcedure", "procedures"},
    {"SqlScalarFunction", "functions"},
    {"SqlInlineTableValuedFunction", "functions"},
    {"SqlMultiStatementTableValuedFunction", "functions"},
    {"SqlClrScalarFunction", "functions"},
    {"SqlClrTableValuedFunction", "functions"},
    {"SqlAggregate", "functions"},
    {"SqlDmlTrigger", "triggers"},
    {"SqlClrDmlTrigger", "triggers"},
    {"SqlDatabaseDdlTrigger", "triggers"},
    {"SqlSynonym", "synonyms"},
    {"SqlExternalTable", "external tables"},
    {"SqlFileTable", "file tables"},
};

template <class Types> static auto my_find(const Types &types, std::string_view type)
{
    return std::find_if(std::begin(types), std::end(types), [type](const auto &each) { return each.type == type; });
}

static void my_take_left(KT_context *ctx, host_model &model, std::string_view name, const char *kind)
{
    host_name_parts parts;
    KT_TRY(host_split_name(ctx, name, parts));
    std::string label;
    for (size_t n = 0; n < parts.count; n++)
        label += (n > 0 ? "." : "") + std::string(host_keep_part(model.texts, parts.parts[n]));
    model.catalogue.left_objects.push_back({kind, model.catalogue.texts.keep(label)});
}

void host_model_reader::look(KT_context *ctx, std::string_view type, std::string_view name, bool *is_wanted)
{
    *is_wanted = my_find(element_types, type) != std::end(element_types);
    const auto *left = my_find(left_types, type);
    if (left != std::end(left_types))
        KT_TRY(my_take_left(ctx, model_, name, left->kind));
}

void host_model_reader::take(KT_context *ctx, const host_node &element)
{
    KT_TRY(my_find(element_types, element.type)->take(ctx, model_, element));
}

std::string_view host_keep_name(host_model &model, std::string_view name)
{
    return {model.texts.keep(name), name.size()};
}

void host_keep_last_part(KT_context *ctx, host_model &model, std::string_view name, const char **part)
{
    if (name.empty())
        return;
    host_name_parts parts;
    KT_TRY(host_split_name(ctx, name, parts));
    *part = host_keep_part(model.catalogue.texts, parts.last());
}

const char *host_keep_text(host_model &model, std::string_view text)
{
    return text.empty() ? nullptr : model.catalogue.texts.keep(text);
}

const char *host_keep_definition(host_model &model, std::string_view text)
{
    if (text.empty() || model.from_server)
        return host_keep_text(model, text);
    return model.catalogue.texts.keep(host_server_spelling(text));
}
