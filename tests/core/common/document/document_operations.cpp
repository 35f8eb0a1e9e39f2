// The table of operations. A new export gets a row here, or the reason why it needs none.
#include "document_operations.hpp"

#include "kt_chars.h"

#include <sqlite3.h>

#include <cstdarg>
#include <string>
#include <utility>

namespace {

// A row: the operation's name, what it needs, and the arguments after the context.
#define ROW(name, memory, ...)                                                                                     \
    {                                                                                                              \
#name, need::memory,                                                                                       \
            [](KT_context * c, [[maybe_unused]] stage & s, [[maybe_unused]] outcome & o) { name(c, __VA_ARGS__); } \
    }
// A row whose call is a statement of its own.
#define ROW_OF(name, memory, ...)                                                                         \
    {                                                                                                     \
#name, need::memory,                                                                              \
            [](KT_context * c, [[maybe_unused]] stage & s, [[maybe_unused]] outcome & o) { __VA_ARGS__; } \
    }

__attribute__((format(printf, 3, 4))) void format_into(KT_context *ctx, KT_string *string, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    KT_string__vsprintf(ctx, string, format, args);
    va_end(args);
}

void normalise_dates(KT_context *ctx)
{
    sqlite3 *connection = nullptr;
    sqlite3_open(":memory:", &connection);
    KT_sqlite__normalise_dates(ctx, tov__get_sqlite_functions(), connection);
    sqlite3_close(connection);
}

// The document of the stage lacks a type here and there.
void check_shape(KT_context *ctx)
{
    tov_schema *schema = nullptr;
    tov_schema__new(ctx, 1, &schema);
    if (!KT_context__has_err(ctx))
        tov_schema__check_shape(ctx, schema);
    tov_schema__nullfree(ctx, &schema);
}

void ignore_pair(KT_context *, void *, const char *, KT_variant *)
{
}

constexpr char json[] = R"({"tbls":{"t":{"name":"T","txid":1,"cols":{"c":{"name":"C","type":{"name":"sint32"}}}}}})";
constexpr char long_text[] =
    "a text that is longer than what a value holds by itself, and than what is left of a block";

const KT_piece long_pieces[] = {long_text, long_text};

// Longer than what a string or a set has room for from the start.
const char *longer_text()
{
    static const std::string text(5000, 'x');
    return text.c_str();
}

const operation operations[] = {
    ROW(KT_int64__parse__strict, nothing, "12", &o.int64),
    ROW(KT_nullhash__alloc, all, &o.set),
    ROW(KT_nullhash__count, nothing, s.set, &o.count),
    ROW(KT_nullhash__free, nothing, std::exchange(s.set, nullptr)),
    ROW(KT_nullhash__get_nth, nothing, s.set, 0, &o.texts[0]),
    ROW(KT_nullhash__update, all, s.set, longer_text()),
    ROW_OF(KT_sqlite__normalise_dates, nothing, normalise_dates(c)),
    ROW(KT_strdup, all, "text", &o.text),
    ROW(KT_strdup__folded, all, "TEXT", &o.text),
    ROW(KT_string__alloc, all, &o.string),
    ROW(KT_string__alloc__sz, all, &o.string, long_text),
    ROW(KT_string__append__format, all, s.string, "%s%s%s", long_text, long_text, long_text),
    ROW(KT_string__append__pieces, all, s.string, long_pieces, 2),
    ROW(KT_string__append__string, all, s.string, s.longer_string),
    ROW(KT_string__append__harmless, all, s.string, longer_text()),
    ROW(KT_string__append__shown, all, s.string, longer_text()),
    ROW(KT_string__append__sz, all, s.string, longer_text()),
    ROW(KT_string__free, nothing, std::exchange(s.string, nullptr)),
    ROW_OF(KT_string__vsprintf, all, format_into(c, s.string, "%s%s%s", long_text, long_text, long_text)),
    ROW(KT_strpool__add__sz, all, s.pool, long_text, &o.texts[0]),
    ROW(KT_strpool__alloc, all, &o.pool, 64),
    ROW(KT_strpool__free, nothing, std::exchange(s.pool, nullptr)),
    ROW_OF(KT_variant__get__sz, nothing, const KT_variant *text = nullptr; KT_varray__get_nth(c, s.list, 0, &text);
           KT_variant__get__sz(c, text, &o.texts[0])),
    ROW(KT_varray__alloc, all, &o.lists[0]),
    ROW(KT_varray__append__bool, all, s.list, 1),
    ROW(KT_varray__append__string__sz, all, s.list, long_text),
    ROW(KT_varray__appendnew__vhash, all, s.list, &o.child),
    ROW(KT_varray__count, nothing, s.list, &o.count),
    ROW(KT_varray__free, nothing, std::exchange(s.loose_list, nullptr)),
    ROW(KT_varray__get__sz, nothing, s.list, 0, &o.texts[0]),
    ROW(KT_varray__get__vhash, nothing, s.list, 1, &o.child),
    ROW(KT_varray__get_nth, nothing, s.list, 0, &o.variant),
    ROW(KT_vhash__add__bool, all, s.map, "new", 1),
    ROW(KT_vhash__add__double, all, s.map, "new", 1.5),
    ROW(KT_vhash__add__int64, all, s.map, "new", 1),
    ROW(KT_vhash__add__null, all, s.map, "new"),
    ROW(KT_vhash__add__string__sz, all, s.map, "new", long_text),
    ROW(KT_vhash__addcopy__vhash, all, s.map, "new", s.lite),
    ROW(KT_vhash__addnew__varray, all, s.map, "new", &o.child_list),
    ROW(KT_vhash__addnew__vhash, all, s.map, "new", &o.child),
    ROW(KT_vhash__alloc, all, &o.map),
    ROW(KT_vhash__alloc__copy, all, &o.map, s.map),
    ROW(KT_vhash__alloc__from_json__sz, all, &o.map, json),
    ROW(KT_vhash__check__bool, nothing, s.map, "bool", &o.flag),
    ROW(KT_vhash__check__int64, nothing, s.map, "int64", &o.int64),
    ROW(KT_vhash__check__sz, nothing, s.map, "sz", &o.texts[0]),
    ROW(KT_vhash__check__varray, nothing, s.map, "varray", &o.child_list),
    ROW(KT_vhash__check__vhash, nothing, s.map, "vhash", &o.child),
    ROW(KT_vhash__check_folded__vhash, nothing, s.map, "VHASH", &o.texts[0], &o.child),
    ROW(KT_vhash__count, nothing, s.map, &o.count),
    ROW(KT_vhash__ensure__varray, all, s.map, "new", &o.child_list),
    ROW(KT_vhash__ensure__vhash, all, s.map, "new", &o.child),
    ROW(KT_vhash__foreach, nothing, s.map, ignore_pair, nullptr),
    ROW(KT_vhash__free, nothing, std::exchange(s.lite, nullptr)),
    ROW(KT_vhash__get__bool, nothing, s.map, "bool", &o.flag),
    ROW(KT_vhash__get__double, nothing, s.map, "double", &o.real),
    ROW(KT_vhash__get__int32, nothing, s.map, "int64", &o.int32),
    ROW(KT_vhash__get__int64, nothing, s.map, "int64", &o.int64),
    ROW(KT_vhash__get__sz, nothing, s.map, "sz", &o.texts[0]),
    ROW(KT_vhash__get__varray, nothing, s.map, "varray", &o.child_list),
    ROW(KT_vhash__get__vhash, nothing, s.map, "vhash", &o.child),
    ROW(KT_vhash__get_nth_pair, nothing, s.map, 1, &o.texts[0], &o.variant),
    ROW(KT_vhash__get_nth_pair__sz, nothing, s.map, 1, &o.texts[0], &o.texts[1]),
    ROW(KT_vhash__get_nth_pair__uint64, nothing, s.map, 2, &o.texts[0], &o.uint64),
    ROW(KT_vhash__get_nth_pair__vhash, nothing, s.map, 3, &o.texts[0], &o.child),
    ROW(KT_vhash__has, nothing, s.map, "sz", &o.flag),
    ROW(KT_vhash__is_root, nothing, s.map, &o.flag),
    ROW(KT_vhash__remove, all, s.map, "sz"),
    ROW(KT_vhash__remove_if_present, all, s.map, "sz", &o.flag),
    ROW(KT_vhash__to_json, all, s.trees[0], s.string),
    ROW(KT_vhash__update__bool, all, s.map, "new", 1),
    ROW(KT_vhash__update__double, all, s.map, "new", 1.5),
    ROW(KT_vhash__update__int64, all, s.map, "new", 1),
    ROW(KT_vhash__update__null, all, s.map, "new"),
    ROW(KT_vhash__update__string__sz, all, s.map, "sz", long_text),
    ROW(_kt_free, nothing, std::exchange(s.block, nullptr)),
    ROW(_kt_malloc, all, 10, &o.block),
    ROW(tov_convert_decimal_constant_to_scaled_integer, nothing, "12.5", 2, &o.int64),
    ROW(tov_schema__add_check_constraint, part, s.schema, "p", "new", long_text),
    ROW(tov_schema__add_col, record, s.schema, "c", "new", long_text, 0, 5, 6),
    ROW(tov_schema__add_colcon_check, all, s.schema, "p", "id", "CK", long_text),
    ROW(tov_schema__add_tbl, all, s.schema, "new", long_text, 1),
    ROW(tov_schema__add_to_foreignkey, all, s.schema, "c", "f", "d", "bin"),
    ROW(tov_schema__add_to_pk, all, s.schema, "c", "t"),
    ROW(tov_schema__add_to_unique_constraint, part, s.schema, "p", "bin", "new"),
    ROW(tov_schema__alloc__vhash, all, &s.trees[0], &s.trees[1], &o.schema),
    ROW(tov_schema__check_server, nothing, s.schema, &o.child),
    ROW_OF(tov_schema__check_shape, all, check_shape(c)),
    ROW(tov_schema__check_tbl_server, nothing, s.schema, "p", &o.child),
    ROW(tov_schema__check_tbl_txid, nothing, s.schema, "p", &o.int64),
    ROW(tov_schema__copy_into_vhash, part, s.schema, s.map, 1),
    ROW(tov_schema__count_checks, nothing, s.schema, "p", &o.count),
    ROW(tov_schema__count_colcon_checks, nothing, s.schema, "p", "code", &o.count),
    ROW(tov_schema__count_cols, nothing, s.schema, "p", &o.count),
    ROW(tov_schema__count_foreignkey_cols, nothing, s.schema, "c", "f", &o.count),
    ROW(tov_schema__count_foreignkeys, nothing, s.schema, "c", &o.count),
    ROW(tov_schema__count_pk_cols, nothing, s.schema, "c", &o.count),
    ROW(tov_schema__count_tbls, nothing, s.schema, &o.count),
    ROW(tov_schema__count_unique_cols, nothing, s.schema, "p", "u", &o.count),
    ROW(tov_schema__count_uniques, nothing, s.schema, "p", &o.count),
    ROW(tov_schema__count_unprepared_cols, nothing, s.schema, "c", &o.count),
    ROW(tov_schema__create_foreignkey, part, s.schema, "new", long_text, "c", "p", 1, "CASCADE", "CASCADE", 4),
    ROW(tov_schema__diff_cols, outputs, s.schema, s.other, "p", &o.lists[0], &o.lists[1], &o.lists[2]),
    ROW(tov_schema__diff_tbls, outputs, s.schema, s.other, &o.lists[0], &o.lists[1], &o.lists[2], &o.lists[3]),
    ROW(tov_schema__does_tbl_have_fk_constraint_with_delete_action, nothing, s.schema, "p", &o.flag),
    ROW(tov_schema__ensure_server, all, s.schema, &o.child),
    ROW(tov_schema__ensure_tbl_server, all, s.schema, "p", &o.child),
    ROW(tov_schema__find_col_by_name, nothing, s.schema, "p", "Code", &o.texts[0]),
    ROW(tov_schema__find_ipk_root_column, all, s.schema, "c", "a", &o.texts[0], &o.texts[1]),
    ROW(tov_schema__find_multicol_references_to, all, s.schema, "p", &o.map),
    ROW(tov_schema__find_reference_cycles, all, s.schema, &o.lists[0], &o.lists[1]),
    ROW(tov_schema__find_references_to_col, all, s.schema, "p", "id", &o.map),
    ROW(tov_schema__find_references_to_tbl, all, s.schema, "p", 1, 0, &o.lists[0], &o.count),
    ROW(tov_schema__find_singlecol_references_to, all, s.schema, "p", "id", &o.map),
    ROW(tov_schema__find_tbl_by_name, nothing, s.schema, "Parent", &o.texts[0]),
    ROW(tov_schema__find_tbls_with_references_to, all, s.schema, "p", &o.set),
    ROW(tov_schema__fix_mssql_defval, all, s.schema, "c", "d", "((5))", &o.text),
    ROW(tov_schema__from_json, all, json, &o.schema),
    ROW(tov_schema__get_backend_info__indistinct_unique_nulls, nothing, s.schema, &o.flag),
    ROW(tov_schema__get_check_defin, all, s.schema, "p", "c", &o.texts[0]),
    ROW(tov_schema__get_col_defin, all, s.schema, "p", "code", nullptr, &o.texts[0]),
    ROW(tov_schema__get_col_dump_generation, nothing, s.schema, "c", "a", &o.int64),
    ROW(tov_schema__get_col_dump_txid, nothing, s.schema, "c", "a", &o.int64),
    ROW(tov_schema__get_col_ids_comma_separated, all, s.schema, "p", &o.string),
    ROW(tov_schema__get_col_is_integer_primary_key, nothing, s.schema, "p", "id", &o.flag, &o.texts[0]),
    ROW(tov_schema__get_col_name, nothing, s.schema, "p", "id", &o.texts[0]),
    ROW(tov_schema__get_col_names_as_vhash, all, s.schema, "p", &o.map),
    ROW(tov_schema__get_col_names_comma_separated, all, s.schema, "p", &o.string),
    ROW(tov_schema__get_col_names_comma_separated_and_qualified, all, s.schema, "p", "q", &o.string),
    ROW(tov_schema__get_col_names_comma_separated_without_pk, all, s.schema, "p", &o.string),
    ROW(tov_schema__get_col_type, nothing, s.schema, "p", "id", &o.texts[0], &o.texts[1]),
    ROW(tov_schema__get_col_type__fixed_width, nothing, s.schema, "p", "code", &o.flag, &o.flag2),
    ROW(tov_schema__get_col_type__host_type, nothing, s.schema, "c", "g", &o.texts[0]),
    ROW(tov_schema__get_col_type__precision, nothing, s.schema, "c", "d", &o.int32),
    ROW(tov_schema__get_col_type__scale, nothing, s.schema, "c", "d", &o.int32),
    ROW(tov_schema__get_col_type__unicode, nothing, s.schema, "p", "code", &o.flag, &o.flag2),
    ROW(tov_schema__get_col_type__width, nothing, s.schema, "p", "code", &o.int32),
    ROW(tov_schema__get_col_validation_expression, all, s.schema, "p", "code", &o.string),
    ROW(tov_schema__get_colcon_defval, nothing, s.schema, "p", "code", &o.flag, &o.texts[0], &o.texts[1]),
    ROW(tov_schema__get_colcon_fk, nothing, s.schema, "c", "a", &o.flag, &o.texts[0], &o.texts[1], &o.texts[2],
        &o.texts[3], &o.texts[4]),
    ROW(tov_schema__get_colcon_notnull, nothing, s.schema, "p", "id", &o.flag, &o.texts[0]),
    ROW(tov_schema__get_converted_col_name, all, s.schema, "c", "A", "q", &o.string),
    ROW(tov_schema__get_converted_col_names_as_vhash, all, s.schema, "c", 1, &o.map),
    ROW_OF(tov_schema__get_document, nothing, const KT_vhash *found = nullptr;
           tov_schema__get_document(c, s.schema, &found)),
    ROW(tov_schema__get_filter_id, nothing, s.schema, &o.int64),
    ROW(tov_schema__get_fk_rules, nothing, s.schema, "c", &o.child),
    ROW(tov_schema__get_foreignkey_defin, all, s.schema, "c", "f", &o.texts[0]),
    ROW(tov_schema__get_foreignkey_delete_action, nothing, s.schema, "c", "f", &o.texts[0]),
    ROW(tov_schema__get_foreignkey_name, nothing, s.schema, "c", "f", &o.texts[0]),
    ROW(tov_schema__get_foreignkey_ref_tbl_id, nothing, s.schema, "c", "f", &o.texts[0]),
    ROW(tov_schema__get_host_collation, nothing, s.schema, "c", "a", &o.texts[0]),
    ROW(tov_schema__get_host_defval, nothing, s.schema, "c", "a", &o.texts[0]),
    ROW(tov_schema__get_mssql_col_type_name, nothing, s.schema, "p", "id", &o.texts[0]),
    ROW(tov_schema__get_nth_check_id, nothing, s.schema, "p", 0, &o.texts[0]),
    ROW(tov_schema__get_nth_col_id, nothing, s.schema, "p", 0, &o.texts[0]),
    ROW(tov_schema__get_nth_foreignkey_col_ids, nothing, s.schema, "c", "f", 0, &o.texts[0], &o.texts[1]),
    ROW(tov_schema__get_nth_foreignkey_id, nothing, s.schema, "c", 0, &o.texts[0]),
    ROW(tov_schema__get_nth_pk_col, nothing, s.schema, "c", 0, &o.texts[0], &o.texts[1]),
    ROW(tov_schema__get_nth_tbl_id, nothing, s.schema, 0, &o.texts[0]),
    ROW(tov_schema__get_nth_unique_col_id, nothing, s.schema, "p", "u", 0, &o.texts[0]),
    ROW(tov_schema__get_nth_unique_id, nothing, s.schema, "p", 0, &o.texts[0]),
    ROW(tov_schema__get_nth_unprepared_col_id, nothing, s.schema, "c", 0, &o.texts[0]),
    ROW(tov_schema__get_on_pk_col_names, all, s.schema, "c", "l", "r", 1, 2, &o.string),
    ROW(tov_schema__get_pk_col_names_comma_separated, all, s.schema, "c", &o.string),
    ROW(tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols, all, s.schema, "c", &o.string),
    ROW(tov_schema__get_pk_col_names_comma_separated_and_prefixed, all, s.schema, "c", "old_", &o.string),
    ROW(tov_schema__get_pk_col_names_comma_separated_and_qualified, all, s.schema, "c", "q", &o.string),
    ROW(tov_schema__get_pk_col_names_converted, all, s.schema, "c", "q", &o.string),
    ROW(tov_schema__get_pk_defin, all, s.schema, "c", &o.texts[0]),
    ROW(tov_schema__get_pvh_col_names_comma_separated_and_qualified, all, 1, s.schema, "c", s.cols, nullptr, "q", 1, 1,
        &o.string),
    ROW(tov_schema__get_tbl_name, nothing, s.schema, "p", &o.texts[0]),
    ROW(tov_schema__get_tbl_names_vhash, all, s.schema, &o.map),
    ROW(tov_schema__get_textwidth, outputs, s.schema, "p", "code", &o.text, &o.flag, &o.flag2, &o.int64),
    ROW(tov_schema__get_unique_defin, all, s.schema, "p", "u", &o.texts[0]),
    ROW(tov_schema__get_validation_expression, all, "text", 10, -1, -1, 1, "Code", &o.string),
    ROW(tov_schema__has_col_id, nothing, s.schema, "p", "id", &o.flag),
    ROW(tov_schema__has_integer_primary_key, nothing, s.schema, "p", &o.texts[0]),
    ROW(tov_schema__has_tbl_id, nothing, s.schema, "p", &o.flag),
    ROW(tov_schema__is_col_id_in_pk, nothing, s.schema, "c", "a", &o.flag),
    ROW(tov_schema__is_col_id_in_unique, nothing, s.schema, "p", "id", &o.flag),
    ROW(tov_schema__is_col_unprepared, nothing, s.schema, "c", "g", &o.flag),
    ROW(tov_schema__list_fk_constraints, all, s.schema, "c", nullptr, 0, &o.lists[0], &o.count),
    ROW(tov_schema__list_keys, all, s.schema, "c", 7, &o.lists[0]),
    ROW(tov_schema__list_tbls, all, s.schema, &o.lists[0]),
    ROW(tov_schema__list_tbls_referenced_by, all, s.schema, "c", &o.set),
    ROW(tov_schema__lite, all, s.schema, s.set, &o.string),
    ROW(tov_schema__nevermind_foreignkey, all, s.schema, "c", "f"),
    ROW(tov_schema__new, all, 1, &o.schema),
    ROW(tov_schema__nullfree, nothing, &s.other),
    ROW(tov_schema__set_backend_info__api, all, s.schema, long_text),
    ROW(tov_schema__set_backend_info__indistinct_unique_nulls, part, s.other, 1),
    ROW(tov_schema__set_backend_info__name, all, s.schema, long_text),
    ROW(tov_schema__set_col_name, all, s.schema, "p", "id", long_text),
    ROW(tov_schema__set_col_type_blob, part, s.schema, "p", "new", 1, 5),
    ROW(tov_schema__set_col_type_datetime, part, s.schema, "p", "new", 3, "smalldatetime"),
    ROW(tov_schema__set_col_type_decimal, part, s.schema, "p", "new", 10, 2),
    ROW(tov_schema__set_col_type_identity, part, s.schema, "p", "new", long_text),
    ROW(tov_schema__set_col_type_simple, all, s.schema, "p", "new", "sint32"),
    ROW(tov_schema__set_col_type_text, part, s.schema, "p", "new", "coll", long_text, 0, 1, 1, 1, 1, 1, 1, 1, 9),
    ROW(tov_schema__set_col_type_time, all, s.schema, "p", "new", 3),
    ROW(tov_schema__set_col_type_unsuported, part, s.schema, "p", "new", long_text),
    ROW(tov_schema__set_colcon_defval, part, s.schema, "p", "id", 1, "DF", long_text),
    ROW(tov_schema__set_colcon_fk, part, s.schema, "c", "b", 1, "g", long_text, "p", "id", 1, "CASCADE", "CASCADE", 2),
    ROW(tov_schema__set_colcon_notnull, part, s.schema, "p", "code", 1, long_text),
    ROW(tov_schema__set_filter_id, all, s.other, 8),
    ROW(tov_schema__set_host_collation, part, s.schema, "p", "id", long_text),
    ROW(tov_schema__set_host_defval, part, s.schema, "p", "id", long_text),
    ROW(tov_schema__set_mssql_col_type_name, all, s.schema, "p", "new", long_text),
    ROW(tov_schema__set_pk_name, part, s.schema, "p", long_text),
    ROW(tov_schema__set_tbl_name, all, s.schema, "p", long_text),
    ROW(tov_schema__sort_by_references, all, s.schema, &o.lists[0]),
    ROW(tov_schema__to_json, all, s.schema, &o.string),
    ROW(tov_schema_lite__count_cols, nothing, s.lite, "p", &o.count),
    ROW(tov_schema_lite__count_tbls, nothing, s.lite, &o.count),
    ROW(tov_schema_lite__get_col_name, nothing, s.lite, "p", "id", &o.texts[0]),
    ROW(tov_schema_lite__get_nth_col_id, nothing, s.lite, "p", 0, &o.texts[0]),
    ROW(tov_schema_lite__get_nth_tbl_id, nothing, s.lite, 0, &o.texts[0]),
    ROW(tov_schema_lite__get_tbl_txid, nothing, s.lite, "p", &o.int64),
};

constexpr char carries[] = "carries the errors themselves; tests/runtime/kt_context_test.cpp makes its memory run out";
constexpr char no_context[] = "takes no context";

constexpr exempted exempted_names[] = {
    {"KT_context__alloc", carries},
    {"KT_context__count_err_stackframes", carries},
    {"KT_context__err", carries},
    {"KT_context__err__generic", carries},
    {"KT_context__err_code", carries},
    {"KT_context__err_description", carries},
    {"KT_context__err_reset", carries},
    {"KT_context__err_set_description", carries},
    {"KT_context__err_stackframe_add", carries},
    {"KT_context__free", carries},
    {"KT_context__get_nth_err_stackframe", carries},
    {"KT_context__has_err", carries},
    {"KT_context__pop_level", carries},
    {"KT_context__push_level", carries},
    {"KT_char__is_control", no_context},
    {"KT_char__is_direction", no_context},
    {"KT_char__next", no_context},
    {"KT_int64_to_sz", no_context},
    {"KT_memory__set_allocator", no_context},
    {"KT_mprintf", no_context},
    {"KT_stricmp", no_context},
    {"KT_string__sz", no_context},
    {"KT_strnicmp", no_context},
    {"tov__get_sqlite_functions", no_context},
    {"tov__set_sqlite_functions", no_context},
    {"tov_find_abstract_type", no_context},
    {"tov_find_name_flaw", no_context},
    {"tov_get_document_shape", no_context},
    {"tov_get_nth_abstract_type", no_context},
    {"tov_is_defval_legit", no_context},
    {"tov_schema__is_mssql_spatial_col_type", no_context},
    {"tov_sqlite3CtypeMap", no_context},
    {"tov_sqlite3KeywordCode", no_context},
    {"tov_sqlite3UpperToLower", no_context},
};

} // namespace

std::span<const operation> every_operation()
{
    return operations;
}

std::span<const exempted> operations_without_a_row()
{
    return exempted_names;
}
