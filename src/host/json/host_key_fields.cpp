// The keys, indexes, references and checks of a table.
#include "json/host_table_fields.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/json/host_key_fields"

struct host_key_col {
    const char *name = nullptr;
    bool descending = false;
};

static constexpr host_field<host_key_col> key_col_fields[] = {
    {"name", &host_key_col::name, true},
    {"descending", &host_key_col::descending},
};

// The columns of a key or an index.
template <class Key>
static void my_read_key_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             Key &key)
{
    std::vector<host_key_col> cols;
    const auto make = [&cols]() -> host_key_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, key_col_fields, make));
    for (const host_key_col &col : cols) {
        key.col_names.push_back(col.name);
        key.descending.push_back(col.descending);
    }
}

// The columns whose values an index carries along.
template <class Key>
static void my_read_included(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                             Key &key)
{
    std::vector<host_key_col> cols;
    const auto make = [&cols]() -> host_key_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, key_col_fields, make));
    for (const host_key_col &col : cols)
        key.included_names.push_back(col.name);
}

static void my_read_unique_kind(KT_context *ctx, host_reader &, const host_place &place, const KT_variant &value,
                                host_key &key)
{
    const char *kind = nullptr;
    KT_TRY(host_read_text(ctx, place, value, &kind));
    key.is_index = std::string_view(kind) == "index";
}

static constexpr host_field<host_key> pk_fields[] = {
    {"name", &host_key::name},
    {"is_system_named", &host_key::is_system_named},
    {"is_clustered", &host_key::is_clustered},
    {"is_disabled", &host_key::is_disabled},
    {"columns", my_read_key_cols<host_key>, true},
};

static constexpr host_field<host_key> unique_fields[] = {
    {"name", &host_key::name},
    {"kind", my_read_unique_kind},
    {"is_system_named", &host_key::is_system_named},
    {"index_id"},
    {"is_clustered", &host_key::is_clustered},
    {"is_disabled", &host_key::is_disabled},
    {"filter", &host_key::filter},
    {"columns", my_read_key_cols<host_key>, true},
    {"included", my_read_included<host_key>},
};

static constexpr host_field<host_index> index_fields[] = {
    {"name", &host_index::name, true},
    {"kind", &host_index::kind},
    {"is_clustered", &host_index::is_clustered},
    {"is_disabled", &host_index::is_disabled},
    {"filter", &host_index::filter},
    {"columns", my_read_key_cols<host_index>},
    {"included", my_read_included<host_index>},
};

struct host_fk_col {
    const char *column = nullptr;
    const char *ref_column = nullptr;
};

static constexpr host_field<host_fk_col> fk_col_fields[] = {
    {"column", &host_fk_col::column, true},
    {"ref_column", &host_fk_col::ref_column, true},
};

static void my_read_fk_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                            host_foreignkey &fk)
{
    std::vector<host_fk_col> cols;
    const auto make = [&cols]() -> host_fk_col & { return cols.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, fk_col_fields, make));
    for (const host_fk_col &col : cols)
        fk.col_names.emplace_back(col.column, col.ref_column);
}

// The export writes an action with "_" for the blank: NO_ACTION.
static bool my_is_action(std::string_view text, std::string_view action)
{
    return std::equal(text.begin(), text.end(), action.begin(), action.end(),
                      [](char a, char b) { return a == (b == ' ' ? '_' : b); });
}

template <const char *host_foreignkey::*Action>
static void my_read_action(KT_context *ctx, host_reader &, const host_place &place, const KT_variant &value,
                           host_foreignkey &fk)
{
    const char *text = nullptr;
    KT_TRY(host_read_text(ctx, place, value, &text));
    for (const char *action : host_fk_actions) {
        if (my_is_action(text, action)) {
            fk.*Action = action;
            return;
        }
    }
    KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "%s is '%s', none of NO_ACTION, CASCADE, SET_NULL, SET_DEFAULT",
            host_place_text(place).c_str(), text);
}

static constexpr host_field<host_foreignkey> fk_fields[] = {
    {"name", &host_foreignkey::name},
    {"id", host_int_field<host_foreignkey>{&host_foreignkey::id, host_any_low, host_any_high}, true},
    {"ref_table_id", host_int_field<host_foreignkey>{&host_foreignkey::ref_tbl_id, host_any_low, host_any_high}, true},
    {"ref_schema", &host_foreignkey::ref_schema, true},
    {"ref_table", &host_foreignkey::ref_table, true},
    {"ref_key"},
    {"on_delete", my_read_action<&host_foreignkey::on_delete>, true},
    {"on_update", my_read_action<&host_foreignkey::on_update>, true},
    {"is_disabled", &host_foreignkey::is_disabled},
    {"is_not_trusted", &host_foreignkey::is_not_trusted},
    {"not_for_replication", &host_foreignkey::not_for_replication},
    {"is_system_named", &host_foreignkey::is_system_named},
    {"columns", my_read_fk_cols, true},
};

static constexpr host_field<host_check> check_fields[] = {
    {"name", &host_check::name},
    {"is_system_named", &host_check::is_system_named},
    {"definition", &host_check::definition},
    {"column", &host_check::col_name},
    {"is_disabled", &host_check::is_disabled},
    {"is_not_trusted", &host_check::is_not_trusted},
    {"not_for_replication", &host_check::not_for_replication},
};

void host_read_pk(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                  host_table &table)
{
    const KT_vhash *map = nullptr;
    KT_TRY(host_read_map(ctx, place, value, &map));
    KT_TRY(host_read_record(ctx, reader, place, map, pk_fields, table.pk));
    table.has_pk = true;
}

void host_read_uniques(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       host_table &table)
{
    const auto make = [&table]() -> host_key & { return table.uniques.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, unique_fields, make));
}

void host_read_indexes(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       host_table &table)
{
    const auto make = [&table]() -> host_index & { return table.indexes.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, index_fields, make));
}

void host_read_fks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                   host_table &table)
{
    const auto make = [&table]() -> host_foreignkey & { return table.fks.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, fk_fields, make));
}

void host_read_checks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                      host_table &table)
{
    const auto make = [&table]() -> host_check & { return table.checks.emplace_back(); };
    KT_TRY(host_read_records(ctx, reader, place, value, check_fields, make));
}
