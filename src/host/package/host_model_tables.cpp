// Tables, their columns, and the types of columns.
//
// A property that has its default value is absent. Column types are the server's own, or alias types, which may come
// after the columns that have them.
#include "package/host_model.hpp"

#include "package/host_names.hpp"
#include "records/host_declared_type.hpp"

#include <algorithm>

#define KT_HERE "src/host/package/host_model_tables"

static bool my_is_built_in(const host_node &reference)
{
    return reference.value == "BuiltIns";
}

// A type as a specifier or an alias type says it.
static void my_read_type(KT_context *ctx, const host_node &specifier, std::string_view name, host_declared_type &type)
{
    int64_t length = 0, precision = 0, scale = 0;
    KT_TRY(host_number(ctx, specifier, "Length", 1, &length));
    KT_TRY(host_number(ctx, specifier, "Precision", 0, &precision));
    KT_TRY(host_number(ctx, specifier, "Scale", 0, &scale));
    constexpr int64_t greatest = 255;
    if (precision > greatest || scale > greatest)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "a type has precision %lld and scale %lld", static_cast<long long>(precision),
                static_cast<long long>(scale));
    type.name = name;
    type.length = host_is_true(specifier, "IsMax") ? -1 : length;
    type.scale = scale;
    if (precision > 0)
        type.precision = precision;
}

static void my_read_column_type(KT_context *ctx, host_model &model, const host_node &element, host_col_place place,
                                host_column &col)
{
    const host_node *specifier = host_related(element, "TypeSpecifier");
    const host_node *reference = specifier ? host_related(*specifier, "Type") : nullptr;
    if (!reference || reference->name.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "column %s has no type", std::string(element.name).c_str());
    if (!my_is_built_in(*reference)) {
        model.alias_uses.push_back({place, host_keep_name(model, reference->name)});
        return;
    }
    host_name_parts name;
    host_declared_type type;
    KT_TRY(host_split_name(ctx, reference->name, name));
    KT_TRY(my_read_type(ctx, *specifier, name.last(), type));
    host_set_declared_type(model.catalogue.texts, type, col);
}

static constexpr std::pair<std::string_view, bool host_column::*> col_flags[] = {
    {"IsRowGuidColumn", &host_column::is_rowguidcol},
    {"IsSparse", &host_column::is_sparse},
    {"IsColumnSet", &host_column::is_column_set},
    {"IsFileStream", &host_column::is_filestream},
    {"IsHidden", &host_column::is_hidden},
    {"IsIdentity", &host_column::is_identity},
    {"IsPersisted", &host_column::is_persisted},
};

static void my_read_identity(host_model &model, const host_node &element, host_column &col)
{
    if (!col.is_identity)
        return;
    const std::string_view seed = host_property(element, "IdentitySeed");
    const std::string_view increment = host_property(element, "IdentityIncrement");
    col.identity.seed = seed.empty() ? "1" : model.catalogue.texts.keep(seed);
    col.identity.increment = increment.empty() ? "1" : model.catalogue.texts.keep(increment);
}

static void my_read_plain_col(KT_context *ctx, host_model &model, const host_node &element, host_col_place place,
                              host_column &col)
{
    col.is_nullable = !host_is_false(element, "IsNullable");
    for (const auto &[property, flag] : col_flags)
        col.*flag = host_is_true(element, property);
    my_read_identity(model, element, col);
    int64_t generated = 0;
    KT_TRY(host_number(ctx, element, "GeneratedAlwaysType", 0, &generated));
    col.generated_always_type = static_cast<uint8_t>(std::clamp<int64_t>(generated, 0, UINT8_MAX));
    col.encryption_type = host_related(element, "ColumnEncryptionKey") ? 1 : 0;
    col.collation = host_keep_text(model, host_property(element, "Collation"));
    KT_TRY(my_read_column_type(ctx, model, element, place, col));
}

// The type of a computed column is nowhere in a model.
static void my_read_computed_col(host_model &model, const host_node &element, host_column &col)
{
    col.is_computed = true;
    col.is_persisted = host_is_true(element, "IsPersisted");
    col.is_nullable = !host_is_false(element, "IsPersistedNullable");
    col.computed = host_keep_definition(model, host_property(element, "ExpressionScript"));
}

static void my_take_col(KT_context *ctx, host_model &model, const host_node &element, uint32_t tbl)
{
    host_table &table = model.catalogue.tables[tbl];
    const host_col_place place{tbl, static_cast<uint32_t>(table.cols.size())};
    host_column &col = table.cols.emplace_back();
    col.id = static_cast<int64_t>(table.cols.size());
    KT_TRY(host_keep_last_part(ctx, model, element.name, &col.name));
    if (!col.name)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "table %s has a column without a name", table.label.c_str());
    if (element.type == "SqlComputedColumn")
        my_read_computed_col(model, element, col);
    else
        KT_TRY(my_read_plain_col(ctx, model, element, place, col));
    model.cols.emplace(host_keep_name(model, element.name), place);
}

// What a table may be that concerns nobody here.
static bool my_is_without_meaning(std::string_view property)
{
    constexpr std::string_view known[] = {"IsAnsiNullsOn",
                                          "IsQuotedIdentifierOn",
                                          "IsMemoryOptimized",
                                          "IsFileTable",
                                          "IsNode",
                                          "IsEdge",
                                          "IsReplicated",
                                          "IsAutoGeneratedHistoryTable",
                                          "IsSystemVersioningOn",
                                          "IsTableLockOnBulkLoad"};
    return std::find(std::begin(known), std::end(known), property) != std::end(known);
}

static void my_report_unknown(KT_context *ctx, host_model &model, const host_table &table, const host_node &element)
{
    for (const host_node *child = element.first; child; child = child->next) {
        if (child->kind != host_node_kind::property || my_is_without_meaning(child->name) ||
            !host_is_true(element, child->name))
            continue;
        KT_TRY(model.findings.add(ctx, "table-property-unknown", &table, nullptr, std::string(child->name).c_str(),
                                  "the model says this of the table, and it is not known here: it may be more than "
                                  "an ordinary table"));
    }
}

static void my_name_table(KT_context *ctx, host_model &model, const host_node &element, host_table &table)
{
    host_name_parts name;
    KT_TRY(host_split_name(ctx, element.name, name));
    if (name.count != 2)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "table %s is not named by schema and name", std::string(element.name).c_str());
    table.schema_name = host_keep_part(model.catalogue.texts, name.parts[0]);
    table.name = host_keep_part(model.catalogue.texts, name.parts[1]);
    table.label = std::string(table.schema_name) + '.' + table.name;
}

static void my_take_history(host_model &model, const host_node &element, uint32_t tbl)
{
    if (host_is_true(element, "IsAutoGeneratedHistoryTable"))
        model.catalogue.tables[tbl].temporal_type = 1;
    for (const std::string_view relationship : {"TemporalSystemVersioningHistoryTable", "HistoryTable"}) {
        const std::string_view history = host_reference(element, relationship);
        if (!history.empty())
            model.histories.push_back({tbl, host_keep_name(model, history)});
    }
}

void host_take_table(KT_context *ctx, host_model &model, const host_node &element)
{
    const auto tbl = static_cast<uint32_t>(model.catalogue.tables.size());
    host_table &table = model.catalogue.tables.emplace_back();
    KT_TRY(my_name_table(ctx, model, element, table));
    if (!model.tbls.emplace(host_keep_name(model, element.name), tbl).second)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "table %s is there twice", std::string(element.name).c_str());
    table.is_memory_optimized = host_is_true(element, "IsMemoryOptimized");
    table.is_filetable = host_is_true(element, "IsFileTable");
    table.is_node = host_is_true(element, "IsNode");
    table.is_edge = host_is_true(element, "IsEdge");
    my_take_history(model, element, tbl);
    KT_TRY(my_report_unknown(ctx, model, table, element));
    KT_TRY(host_for_each(ctx, element, "Columns", [&](KT_context *, const host_node &col) {
        if (col.kind == host_node_kind::element)
            my_take_col(ctx, model, col, tbl);
    }));
}

void host_take_options(KT_context *, host_model &model, const host_node &element)
{
    const std::string_view collation = host_property(element, "Collation");
    if (!collation.empty())
        model.catalogue.collation = model.catalogue.texts.keep(collation);
}

static void my_name_alias(KT_context *ctx, host_model &model, const host_node &element, host_column &alias)
{
    host_name_parts name;
    KT_TRY(host_split_name(ctx, element.name, name));
    alias.user_type_schema = host_keep_part(model.catalogue.texts, name.parts[0]);
    alias.user_type = host_keep_part(model.catalogue.texts, name.last());
}

void host_take_alias(KT_context *ctx, host_model &model, const host_node &element)
{
    host_column alias;
    host_name_parts name;
    host_declared_type type;
    KT_TRY(my_name_alias(ctx, model, element, alias));
    KT_TRY(host_split_name(ctx, host_reference(element, "Type"), name));
    KT_TRY(my_read_type(ctx, element, name.last(), type));
    host_set_declared_type(model.catalogue.texts, type, alias);
    model.aliases.emplace(host_keep_name(model, element.name), alias);
}

void host_take_clr_type(KT_context *ctx, host_model &model, const host_node &element)
{
    host_column alias;
    KT_TRY(my_name_alias(ctx, model, element, alias));
    alias.is_assembly_type = true;
    alias.max_length = -1;
    model.aliases.emplace(host_keep_name(model, element.name), alias);
}

void host_take_sequence(KT_context *ctx, host_model &model, const host_node &element)
{
    host_name_parts name, type;
    const host_node *specifier = host_related(element, "TypeSpecifier");
    KT_TRY(host_split_name(ctx, element.name, name));
    KT_TRY(host_split_name(ctx, specifier ? host_reference(*specifier, "Type") : "[bigint]", type));
    host_texts &texts = model.catalogue.texts;
    host_sequence &sequence = model.catalogue.sequences.emplace_back();
    sequence.schema_name = host_keep_part(texts, name.parts[0]);
    sequence.name = host_keep_part(texts, name.last());
    sequence.system_type = host_keep_part(texts, type.last());
    sequence.start = host_keep_text(model, host_property(element, "StartValue"));
    const std::string_view increment = host_property(element, "Increment");
    sequence.increment = increment.empty() ? "1" : texts.keep(increment);
}
