// Links a catalogue's keys and references to the columns they name, and refuses what stands for two things or none.
#include "records/host_catalogue.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/records/host_link"

using host_columns_by_name = std::unordered_map<std::string_view, const host_column *>;

namespace {

// Tables by their names as written, and as SQLite compares names: null there for two that differ in case only.
struct host_tables_by_name {
    std::unordered_map<std::string, const host_table *> exact;
    std::unordered_map<std::string, const host_table *> folded;
};

// What there is to link to.
struct host_link_targets {
    host_tables_by_name tables;
    std::unordered_map<const host_table *, host_columns_by_name> cols;
};

} // namespace

// A NUL cannot be part of a name, so that two names are never taken for another two.
static std::string my_full_name(const char *schema_name, const char *name)
{
    return std::string(schema_name ? schema_name : "") + '\0' + (name ? name : "");
}

static void my_add_table_name(host_tables_by_name &tables, const host_table &table)
{
    const std::string name = my_full_name(table.schema_name, table.name);
    tables.exact.emplace(name, &table);
    if (const auto [other, is_new] = tables.folded.emplace(host_folded(name), &table); !is_new)
        other->second = nullptr;
}

static const host_table *my_find_table(const host_tables_by_name &tables, const std::string &name)
{
    if (const auto found = tables.exact.find(name); found != tables.exact.end())
        return found->second;
    const auto found = tables.folded.find(host_folded(name));
    return found == tables.folded.end() ? nullptr : found->second;
}

// A reference may be spelled in another case than the column, unless two columns differ in nothing else.
static const host_column *my_find_col(const host_table &table, const host_columns_by_name &cols, std::string_view name)
{
    if (const auto found = cols.find(name); found != cols.end())
        return found->second;
    const std::string folded = host_folded(name);
    const host_column *only = nullptr;
    for (const host_column &col : table.cols) {
        if (host_folded(col.name) != folded)
            continue;
        if (only)
            return nullptr;
        only = &col;
    }
    return only;
}

static void my_link_tables(KT_context *ctx, host_catalogue &catalogue, host_tables_by_name &tables)
{
    for (host_table &table : catalogue.tables) {
        table.id_text = std::to_string(table.id);
        if (const auto [other, is_new] = catalogue.tables_by_id.emplace(table.id, &table); !is_new)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "tables %s and %s have the same id %s", other->second->label.c_str(),
                    table.label.c_str(), table.id_text.c_str());
        my_add_table_name(tables, table);
    }
}

static void my_link_cols(KT_context *ctx, host_texts &texts, host_table &table, host_columns_by_name &cols_by_name)
{
    std::unordered_map<int64_t, const host_column *> by_id;
    for (host_column &col : table.cols) {
        col.id_text = texts.keep(std::to_string(col.id));
        if (const auto [other, is_new] = by_id.emplace(col.id, &col); !is_new)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "columns %s and %s of table %s have the same id %s", other->second->name,
                    col.name, table.label.c_str(), col.id_text);
        cols_by_name.emplace(col.name, &col);
    }
}

// Finds the column that a member of a key names, which must not be in the key already.
static void my_add_key_col(KT_context *ctx, const host_table &table, const host_columns_by_name &cols,
                           const char *key_name, const char *col_name, std::vector<const host_column *> &key_cols)
{
    const host_column *col = my_find_col(table, cols, col_name);
    if (!col)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s names column %s, which table %s lacks", host_shown_name(key_name),
                col_name, table.label.c_str());
    if (std::find(key_cols.begin(), key_cols.end(), col) != key_cols.end())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s names column %s twice", host_shown_name(key_name),
                table.label.c_str(), col_name);
    key_cols.push_back(col);
}

static void my_link_key(KT_context *ctx, const host_table &table, const host_columns_by_name &cols, host_key &key)
{
    if (key.col_names.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s has no columns", host_shown_name(key.name),
                table.label.c_str());
    for (const char *col_name : key.col_names)
        KT_TRY(my_add_key_col(ctx, table, cols, key.name, col_name, key.cols));
}

// Nothing that decides depends on these columns, so one that is not there is not worth refusing the source.
static void my_link_known(const host_table &table, const host_columns_by_name &cols,
                          const std::vector<const char *> &names, std::vector<const host_column *> &linked)
{
    for (const char *name : names) {
        if (const host_column *col = my_find_col(table, cols, name))
            linked.push_back(col);
    }
}

static void my_link_indexes(host_table &table, const host_columns_by_name &cols)
{
    for (host_key &key : table.uniques)
        my_link_known(table, cols, key.included_names, key.included_cols);
    for (host_index &index : table.indexes) {
        my_link_known(table, cols, index.col_names, index.cols);
        my_link_known(table, cols, index.included_names, index.included_cols);
    }
}

// Names of one kind within a table are ids of the schema, so none may come twice.
template <class Record>
static void my_refuse_repeated_names(KT_context *ctx, const host_table &table, const std::vector<Record> &records)
{
    std::unordered_set<std::string_view> names;
    for (const Record &record : records) {
        if (record.name && !names.emplace(record.name).second)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "table %s has two constraints of the name %s", table.label.c_str(),
                    record.name);
    }
}

static void my_link_keys(KT_context *ctx, host_table &table, const host_columns_by_name &cols)
{
    if (table.has_pk)
        KT_TRY(my_link_key(ctx, table, cols, table.pk));
    for (host_key &key : table.uniques) {
        KT_TRY(my_link_key(ctx, table, cols, key));
        if (key.name && table.pk.name && std::string_view(key.name) == table.pk.name)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "table %s has two constraints of the name %s", table.label.c_str(),
                    key.name);
    }
    KT_TRY(my_refuse_repeated_names(ctx, table, table.uniques));
    KT_TRY(my_refuse_repeated_names(ctx, table, table.checks));
}

static void my_link_check(KT_context *ctx, const host_table &table, const host_columns_by_name &cols, host_check &check)
{
    if (!check.col_name)
        return;
    check.col = my_find_col(table, cols, check.col_name);
    if (!check.col)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "check %s names column %s, which table %s lacks", host_shown_name(check.name),
                check.col_name, table.label.c_str());
}

static const host_table *my_find_ref_tbl(const host_catalogue &catalogue, const host_link_targets &targets,
                                         const host_foreignkey &fk)
{
    if (fk.ref_tbl_id == 0)
        return my_find_table(targets.tables, my_full_name(fk.ref_schema, fk.ref_table));
    const auto found = catalogue.tables_by_id.find(fk.ref_tbl_id);
    return found == catalogue.tables_by_id.end() ? nullptr : found->second;
}

static void my_link_fk(KT_context *ctx, const host_catalogue &catalogue, const host_link_targets &targets,
                       const host_table &table, host_foreignkey &fk)
{
    fk.id_text = std::to_string(fk.id);
    if (fk.col_names.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s has no columns", host_shown_name(fk.name),
                table.label.c_str());
    for (const auto &[col_name, ref_col_name] : fk.col_names)
        KT_TRY(my_add_key_col(ctx, table, targets.cols.at(&table), fk.name, col_name, fk.cols));
    fk.ref_tbl = my_find_ref_tbl(catalogue, targets, fk);
    if (!fk.ref_tbl)
        return;
    for (const auto &[col_name, ref_col_name] : fk.col_names)
        KT_TRY(my_add_key_col(ctx, *fk.ref_tbl, targets.cols.at(fk.ref_tbl), fk.name, ref_col_name, fk.ref_cols));
}

static void my_link_fks(KT_context *ctx, host_catalogue &catalogue, const host_link_targets &targets)
{
    std::unordered_map<int64_t, const host_foreignkey *> fks_by_id;
    for (host_table &table : catalogue.tables) {
        for (host_foreignkey &fk : table.fks) {
            KT_TRY(my_link_fk(ctx, catalogue, targets, table, fk));
            if (const auto [other, is_new] = fks_by_id.emplace(fk.id, &fk); !is_new)
                KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "foreign keys %s and %s have the same id %s",
                        host_shown_name(other->second->name), host_shown_name(fk.name), fk.id_text.c_str());
        }
    }
}

void host_link_catalogue(KT_context *ctx, host_catalogue &catalogue)
{
    host_link_targets targets;
    KT_TRY(my_link_tables(ctx, catalogue, targets.tables));
    for (host_table &table : catalogue.tables) {
        host_columns_by_name &cols = targets.cols[&table];
        KT_TRY(my_link_cols(ctx, catalogue.texts, table, cols));
        KT_TRY(my_link_keys(ctx, table, cols));
        my_link_indexes(table, cols);
        for (host_check &check : table.checks)
            KT_TRY(my_link_check(ctx, table, cols, check));
    }
    KT_TRY(my_link_fks(ctx, catalogue, targets));
}
