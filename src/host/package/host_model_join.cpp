// Everything is given to the tables and columns that it names. Elements come in any order, so this comes last.
#include "package/host_model.hpp"

#include "package/host_names.hpp"
#include "records/host_declared_type.hpp"

#define KT_HERE "src/host/package/host_model_join"

static host_column &my_col(host_model &model, host_col_place place)
{
    return model.catalogue.tables[place.tbl].cols[place.col];
}

// What an object belongs to, when the model has it.
static host_table *my_find_table(host_model &model, std::string_view name)
{
    const auto found = model.tbls.find(name);
    return found == model.tbls.end() ? nullptr : &model.catalogue.tables[found->second];
}

// The name of a table's column.
static void my_find_col(KT_context *ctx, host_model &model, const host_table &table, std::string_view name,
                        const char **col_name)
{
    const auto found = model.cols.find(name);
    if (found == model.cols.end() || &model.catalogue.tables[found->second.tbl] != &table)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "model.xml: a key or index of table %s names column %s, which it lacks",
                table.label.c_str(), std::string(name).c_str());
    *col_name = my_col(model, found->second).name;
}

static void my_find_cols(KT_context *ctx, host_model &model, const host_table &table,
                         const std::vector<std::string_view> &names, std::vector<const char *> &col_names)
{
    for (const std::string_view name : names)
        KT_TRY(my_find_col(ctx, model, table, name, &col_names.emplace_back()));
}

static void my_join_types(KT_context *ctx, host_model &model)
{
    for (const host_alias_use &use : model.alias_uses) {
        host_column &col = my_col(model, use.place);
        const auto found = model.aliases.find(use.alias);
        if (found == model.aliases.end()) {
            KT_TRY(host_keep_last_part(ctx, model, use.alias, &col.user_type));
            continue;
        }
        const host_column &alias = found->second;
        col.user_type = alias.user_type;
        col.user_type_schema = alias.user_type_schema;
        col.system_type = alias.system_type;
        col.is_assembly_type = alias.is_assembly_type;
        col.max_length = alias.max_length;
        col.precision = alias.precision;
        col.scale = alias.scale;
    }
}

// A column's own collation, or the database's; only texts have one.
static void my_join_collations(host_model &model)
{
    for (host_table &table : model.catalogue.tables) {
        for (host_column &col : table.cols) {
            const char *own = std::exchange(col.collation, nullptr);
            host_set_collation(own ? own : model.catalogue.collation, col);
        }
    }
}

static void my_join_histories(host_model &model)
{
    for (const host_model_history &pair : model.histories) {
        model.catalogue.tables[pair.tbl].temporal_type = 2;
        if (host_table *history = my_find_table(model, pair.history))
            history->temporal_type = 1;
    }
}

static void my_report_stray(KT_context *ctx, host_model &model, const char *what, const char *name,
                            std::string_view tbl)
{
    const std::string text = std::string(host_shown_name(name)) + " of " + std::string(tbl);
    KT_TRY(model.findings.add(ctx, "constraint-without-table", nullptr, nullptr, text.c_str(),
                              std::string("left out: the model has no table that this ") + what + " belongs to"));
}

static void my_add_key(KT_context *ctx, host_table &table, host_model_index &index)
{
    index.key.is_index = index.kind == host_index_kind::index;
    if (index.kind != host_index_kind::primary_key) {
        table.uniques.push_back(std::move(index.key));
        return;
    }
    if (table.has_pk)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "model.xml: table %s has two primary keys", table.label.c_str());
    table.has_pk = true;
    table.pk = std::move(index.key);
}

static void my_add_index(host_table &table, host_key &key)
{
    host_index &index = table.indexes.emplace_back();
    index.name = key.name;
    index.is_disabled = key.is_disabled;
    index.is_clustered = key.is_clustered;
    index.filter = key.filter;
    index.col_names = std::move(key.col_names);
    index.descending = std::move(key.descending);
    index.included_names = std::move(key.included_names);
}

static void my_join_index(KT_context *ctx, host_model &model, host_model_index &index)
{
    host_table *table = my_find_table(model, index.tbl);
    const bool is_constraint = index.kind != host_index_kind::index;
    if (!table && is_constraint)
        KT_TRY(my_report_stray(ctx, model, "key", index.key.name, index.tbl));
    if (!table) // an index of a view
        return;
    KT_TRY(my_find_cols(ctx, model, *table, index.cols, index.key.col_names));
    KT_TRY(my_find_cols(ctx, model, *table, index.included, index.key.included_names));
    if (is_constraint || index.is_unique)
        KT_TRY(my_add_key(ctx, *table, index));
    else
        my_add_index(*table, index.key);
}

// The referenced table may be in another package; then its name is all there is.
static void my_name_referenced(KT_context *ctx, host_model &model, host_model_fk &fk)
{
    if (const host_table *table = my_find_table(model, fk.ref_tbl)) {
        fk.fk.ref_schema = table->schema_name;
        fk.fk.ref_table = table->name;
        return;
    }
    host_name_parts name;
    KT_TRY(host_split_name(ctx, fk.ref_tbl, name));
    fk.fk.ref_schema = host_keep_part(model.catalogue.texts, name.parts[name.count > 1 ? name.count - 2 : 0]);
    fk.fk.ref_table = host_keep_part(model.catalogue.texts, name.last());
}

static void my_join_fk(KT_context *ctx, host_model &model, host_model_fk &fk)
{
    host_table *table = my_find_table(model, fk.tbl);
    if (!table) {
        KT_TRY(my_report_stray(ctx, model, "foreign key", fk.fk.name, fk.tbl));
        return;
    }
    if (fk.cols.size() != fk.ref_cols.size())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "model.xml: foreign key %s of table %s has %zu columns and refers to %zu",
                host_shown_name(fk.fk.name), table->label.c_str(), fk.cols.size(), fk.ref_cols.size());
    KT_TRY(my_name_referenced(ctx, model, fk));
    for (size_t n = 0; n < fk.cols.size(); n++) {
        const char *col_name = nullptr, *ref_col_name = nullptr;
        KT_TRY(my_find_col(ctx, model, *table, fk.cols[n], &col_name));
        KT_TRY(host_keep_last_part(ctx, model, fk.ref_cols[n], &ref_col_name));
        fk.fk.col_names.emplace_back(col_name, ref_col_name ? ref_col_name : "");
    }
    const std::string actions = std::string("ON DELETE ") + fk.fk.on_delete + " ON UPDATE " + fk.fk.on_update;
    if (fk.is_action_assumed)
        KT_TRY(model.findings.add(ctx, "fk-action-assumed", table, nullptr,
                                  ((fk.fk.name ? fk.fk.name : "FOREIGN KEY") + (' ' + actions)).c_str(),
                                  "packages number the actions; that these numbers mean SET NULL and SET DEFAULT is "
                                  "taken from documentation, not from a package"));
    table->fks.push_back(std::move(fk.fk));
}

static void my_join_check(KT_context *ctx, host_model &model, const host_model_check &check)
{
    if (host_table *table = my_find_table(model, check.tbl))
        table->checks.push_back(check.check);
    else
        KT_TRY(my_report_stray(ctx, model, "check", check.check.name, check.tbl));
}

static void my_join_default(KT_context *ctx, host_model &model, const host_model_default &entry)
{
    const auto found = model.cols.find(entry.col);
    if (found == model.cols.end()) {
        KT_TRY(my_report_stray(ctx, model, "default", entry.defval.name, entry.col));
        return;
    }
    host_column &col = my_col(model, found->second);
    if (col.defval)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "model.xml: column %s has two defaults", std::string(entry.col).c_str());
    col.defval = model.catalogue.defaults.add();
    *col.defval = entry.defval;
}

// Descriptions of views and their columns are here too, and find nothing.
static void my_join_description(host_model &model, const host_model_description &description)
{
    const auto col = model.cols.find(description.host);
    host_table *table = my_find_table(model, description.host);
    if (description.is_of_col && col != model.cols.end())
        my_col(model, col->second).description = description.text;
    else if (!description.is_of_col && table)
        table->description = description.text;
}

// Ids follow from the order, so that they do not depend on the model's.
static void my_number(host_catalogue &catalogue)
{
    int64_t tables = 0, fks = 0, defaults = 0;
    for (host_table &table : catalogue.tables) {
        table.id = ++tables;
        for (host_foreignkey &fk : table.fks)
            fk.id = ++fks;
        for (host_column &col : table.cols) {
            if (col.defval)
                col.defval->id = ++defaults;
        }
    }
}

void host_join_model(KT_context *ctx, host_model &model)
{
    KT_TRY(my_join_types(ctx, model));
    my_join_collations(model);
    my_join_histories(model);
    for (host_model_index &index : model.indexes)
        KT_TRY(my_join_index(ctx, model, index));
    for (host_model_fk &fk : model.fks)
        KT_TRY(my_join_fk(ctx, model, fk));
    for (const host_model_check &check : model.checks)
        KT_TRY(my_join_check(ctx, model, check));
    for (const host_model_default &entry : model.defaults)
        KT_TRY(my_join_default(ctx, model, entry));
    for (const host_model_description &description : model.descriptions)
        my_join_description(model, description);
    host_order_catalogue(model.catalogue);
    my_number(model.catalogue);
}
