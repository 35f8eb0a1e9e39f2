// Links a catalogue's keys and references to the columns they name, and refuses what stands for two things or none.
//
// SQLite compares names without regard to the case of ASCII letters, so two tables or two columns that the server
// tells apart by case cannot both be created.
#include "records/host_catalogue.hpp"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#define KT_HERE "src/host/records/host_link"

using host_columns_by_name = std::unordered_map<std::string_view, const host_column *>;

static std::string my_folded(std::string_view name)
{
    std::string folded(name);
    for (char &byte : folded) {
        if (byte >= 'A' && byte <= 'Z')
            byte = static_cast<char>(byte - 'A' + 'a');
    }
    return folded;
}

static void my_name_table(host_table &table)
{
    table.id_text = std::to_string(table.id);
    table.label = std::string(table.schema_name) + '.' + table.name;
    table.sqlite_name = std::string_view(table.schema_name) == "dbo" ? table.name : table.label;
}

// Tables, by id and by the name that SQLite sees.
static void my_link_tables(KT_context *ctx, host_catalogue &catalogue)
{
    std::unordered_map<std::string, const host_table *> by_name;
    for (host_table &table : catalogue.tables) {
        my_name_table(table);
        if (const auto [other, is_new] = catalogue.tables_by_id.emplace(table.id, &table); !is_new)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "tables %s and %s have the same id %s", other->second->label.c_str(),
                    table.label.c_str(), table.id_text.c_str());
        const std::string folded = my_folded(table.sqlite_name);
        if (folded.starts_with("sqlite_"))
            KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED,
                    "table %s would be named \"%s\": SQLite keeps names that begin with "
                    "sqlite_ for itself",
                    table.label.c_str(), table.sqlite_name.c_str());
        if (const auto [other, is_new] = by_name.emplace(folded, &table); !is_new)
            KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED,
                    "tables %s and %s would have the same name in SQLite, which knows no "
                    "schemas and no case",
                    other->second->label.c_str(), table.label.c_str());
    }
}

static void my_link_cols(KT_context *ctx, host_table &table, host_columns_by_name &cols_by_name)
{
    std::unordered_map<std::string, const host_column *> by_name;
    std::unordered_map<int64_t, const host_column *> by_id;
    for (host_column &col : table.cols) {
        col.id_text = std::to_string(col.id);
        if (const auto [other, is_new] = by_id.emplace(col.id, &col); !is_new)
            KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "columns %s and %s of table %s have the same id %s", other->second->name,
                    col.name, table.label.c_str(), col.id_text.c_str());
        if (const auto [other, is_new] = by_name.emplace(my_folded(col.name), &col); !is_new)
            KT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, "columns %s and %s of table %s would have the same name in SQLite",
                    other->second->name, col.name, table.label.c_str());
        cols_by_name.emplace(col.name, &col);
    }
}

// Finds the column that a member of a key names, which must not be in the key already.
static void my_add_key_col(KT_context *ctx, const host_table &table, const host_columns_by_name &cols,
                           const char *key_name, const char *col_name, std::vector<const host_column *> &key_cols)
{
    const auto found = cols.find(col_name);
    if (found == cols.end())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s names column %s, which table %s lacks", key_name, col_name,
                table.label.c_str());
    if (std::find(key_cols.begin(), key_cols.end(), found->second) != key_cols.end())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s names column %s twice", key_name, table.label.c_str(),
                col_name);
    key_cols.push_back(found->second);
}

static void my_link_key(KT_context *ctx, const host_table &table, const host_columns_by_name &cols, host_key &key)
{
    if (key.col_names.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s has no columns", key.name, table.label.c_str());
    for (const char *col_name : key.col_names)
        KT_TRY(my_add_key_col(ctx, table, cols, key.name, col_name, key.cols));
}

// Names of one kind within a table are ids of the schema, so none may come twice.
template <class Record>
static void my_refuse_repeated_names(KT_context *ctx, const host_table &table, const std::vector<Record> &records)
{
    std::unordered_set<std::string_view> names;
    for (const Record &record : records) {
        if (!names.emplace(record.name).second)
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
        if (table.has_pk && std::string_view(key.name) == table.pk.name)
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
    const auto found = cols.find(check.col_name);
    if (found == cols.end())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "check %s names column %s, which table %s lacks", check.name, check.col_name,
                table.label.c_str());
    check.col = found->second;
}

static void my_link_fk(KT_context *ctx, const host_catalogue &catalogue,
                       const std::unordered_map<const host_table *, host_columns_by_name> &cols,
                       const host_table &table, host_foreignkey &fk)
{
    fk.id_text = std::to_string(fk.id);
    if (fk.col_names.empty())
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "key %s of table %s has no columns", fk.name, table.label.c_str());
    for (const auto &[col_name, ref_col_name] : fk.col_names)
        KT_TRY(my_add_key_col(ctx, table, cols.at(&table), fk.name, col_name, fk.cols));
    const auto ref_tbl = catalogue.tables_by_id.find(fk.ref_tbl_id);
    if (ref_tbl == catalogue.tables_by_id.end())
        return;
    fk.ref_tbl = ref_tbl->second;
    for (const auto &[col_name, ref_col_name] : fk.col_names)
        KT_TRY(my_add_key_col(ctx, *fk.ref_tbl, cols.at(fk.ref_tbl), fk.name, ref_col_name, fk.ref_cols));
}

void host_link_catalogue(KT_context *ctx, host_catalogue &catalogue)
{
    std::unordered_map<const host_table *, host_columns_by_name> cols;
    KT_TRY(my_link_tables(ctx, catalogue));
    for (host_table &table : catalogue.tables) {
        KT_TRY(my_link_cols(ctx, table, cols[&table]));
        KT_TRY(my_link_keys(ctx, table, cols[&table]));
        for (host_check &check : table.checks)
            KT_TRY(my_link_check(ctx, table, cols[&table], check));
    }
    std::unordered_map<int64_t, const host_foreignkey *> fks_by_id;
    for (host_table &table : catalogue.tables) {
        for (host_foreignkey &fk : table.fks) {
            KT_TRY(my_link_fk(ctx, catalogue, cols, table, fk));
            if (const auto [other, is_new] = fks_by_id.emplace(fk.id, &fk); !is_new)
                KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "foreign keys %s and %s have the same id %s", other->second->name,
                        fk.name, fk.id_text.c_str());
        }
    }
}
