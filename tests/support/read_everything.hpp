// Every operation that reads a schema, called on each table, column, key and constraint that the schema admits to
// having, and on ids that it lacks. A document from outside may make any of them fail; what none may do is crash,
// leak, write its output although it fails, or fail without saying so in order.
#pragma once

#include "kt_owned.hpp"
#include "tov_parse_defin.h"

#include <initializer_list>
#include <string>
#include <vector>

struct reading {
    KT_context *ctx;
    tov_schema *schema;
    bool has_tbl_cycle = false;
    bool has_col_cycle = false;
    uint64_t answers = 0;
    uint64_t failures = 0;
    std::string complaint = {}; // what a call did that none may do; empty while all is well
};

// Takes note of how a call ended and clears its error. True when it succeeded.
inline bool ended_well(reading &r)
{
    if (!KT_context__has_err(r.ctx)) {
        r.answers++;
        return true;
    }
    r.failures++;
    if (KT_context__err_code(r.ctx) == 0 || KT_context__count_err_stackframes(r.ctx) == 0)
        r.complaint = "failed without a code or a frame";
    KT_context__err_reset(r.ctx);
    return false;
}

// Calls an operation whose last argument is its one output, which a failure must leave alone.
template <class Output, class... Params, class... Args>
bool ask(reading &r, Output *output, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    const Output before = *output;
    operation(r.ctx, r.schema, args..., output);
    if (ended_well(r))
        return true;
    if (*output != before)
        r.complaint = "failed and wrote its output: " + std::string(KT_context__err_description(r.ctx));
    return false;
}

// A borrowed text; empty where there is none or the operation failed. Every byte of it is read.
template <class... Params, class... Args>
std::string text_of(reading &r, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    const char *text = nullptr;
    return ask(r, &text, operation, args...) && text ? text : "";
}

template <class... Params, class... Args>
uint32_t count_of(reading &r, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    uint32_t count = 0;
    ask(r, &count, operation, args...);
    return count;
}

template <class Output, class... Params, class... Args>
Output value_of(reading &r, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    Output value{};
    ask(r, &value, operation, args...);
    return value;
}

// Each of the ids that an operation gives one by one.
template <class... Params, class... Args>
std::vector<std::string> ids_of(reading &r, uint32_t count,
                                void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    std::vector<std::string> ids;
    for (uint32_t n = 0; n < count; n++)
        ids.push_back(text_of(r, operation, args..., n));
    text_of(r, operation, args..., count); // one too many
    return ids;
}

// An owned result of a kind that has a free operation; it is freed.
template <class T, class... Params, class... Args>
void take_of(reading &r, void (*free_it)(KT_context *, T *) noexcept,
             void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    T *result = nullptr;
    if (ask(r, &result, operation, args...))
        free_it(r.ctx, result);
}

template <class... Params, class... Args>
void string_of(reading &r, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    take_of<KT_string>(r, KT_string__free, operation, args...);
}

template <class... Params, class... Args>
void map_of(reading &r, void (*operation)(KT_context *, tov_schema *, Params...) noexcept, Args... args)
{
    take_of<KT_vhash>(r, KT_vhash__free, operation, args...);
}

inline void read_type(reading &r, const char *tbl, const char *col)
{
    const char *type = nullptr;
    const char *type_of = nullptr;
    tov_schema__get_col_type(r.ctx, r.schema, tbl, col, &type, &type_of);
    ended_well(r);
    KT_bool has = 0;
    KT_bool value = 0;
    tov_schema__get_col_type__unicode(r.ctx, r.schema, tbl, col, &has, &value);
    ended_well(r);
    tov_schema__get_col_type__fixed_width(r.ctx, r.schema, tbl, col, &has, &value);
    ended_well(r);
    value_of<int32_t>(r, tov_schema__get_col_type__scale, tbl, col);
    value_of<int32_t>(r, tov_schema__get_col_type__precision, tbl, col);
    value_of<int32_t>(r, tov_schema__get_col_type__width, tbl, col);
    text_of(r, tov_schema__get_col_type__host_type, tbl, col);
    const std::string host_type = text_of(r, tov_schema__get_mssql_col_type_name, tbl, col);
    tov_schema__is_mssql_spatial_col_type(host_type.c_str());
    text_of(r, tov_schema__get_host_collation, tbl, col);
    text_of(r, tov_schema__get_host_defval, tbl, col);

    char *name = nullptr;
    KT_bool is_text = 0;
    KT_bool is_fixed = 0;
    int64_t width = 0;
    tov_schema__get_textwidth(r.ctx, r.schema, tbl, col, &name, &is_text, &is_fixed, &width);
    if (ended_well(r))
        _kt_free(r.ctx, name);
    // The one kind of default that is not tried in a database of its own, which takes its time.
    char *translated = nullptr;
    if (ask(r, &translated, tov_schema__fix_mssql_defval, tbl, col, "(getutcdate())"))
        _kt_free(r.ctx, translated);
}

inline void read_col_constraints(reading &r, const char *tbl, const char *col)
{
    KT_bool has = 0;
    const char *name = nullptr;
    const char *expr = nullptr;
    tov_schema__get_colcon_notnull(r.ctx, r.schema, tbl, col, &has, &name);
    ended_well(r);
    tov_schema__get_colcon_defval(r.ctx, r.schema, tbl, col, &has, &name, &expr);
    ended_well(r);
    count_of(r, tov_schema__count_colcon_checks, tbl, col);
    const char *ref_tbl = nullptr;
    const char *ref_col = nullptr;
    const char *on_delete = nullptr;
    const char *on_update = nullptr;
    tov_schema__get_colcon_fk(r.ctx, r.schema, tbl, col, &has, &name, &ref_tbl, &ref_col, &on_delete, &on_update);
    ended_well(r);
    tov_schema__get_col_is_integer_primary_key(r.ctx, r.schema, tbl, col, &has, &name);
    ended_well(r);
    value_of<KT_bool>(r, tov_schema__is_col_id_in_unique, tbl, col);
    value_of<KT_bool>(r, tov_schema__is_col_id_in_pk, tbl, col);
}

inline void read_col(reading &r, const char *tbl, const char *col)
{
    value_of<KT_bool>(r, tov_schema__has_col_id, tbl, col);
    value_of<KT_bool>(r, tov_schema__is_col_unprepared, tbl, col);
    value_of<int64_t>(r, tov_schema__get_col_dump_txid, tbl, col);
    value_of<int64_t>(r, tov_schema__get_col_dump_generation, tbl, col);
    const std::string name = text_of(r, tov_schema__get_col_name, tbl, col);
    text_of(r, tov_schema__find_col_by_name, tbl, name.c_str());
    string_of(r, tov_schema__get_converted_col_name, tbl, name.c_str(), "q");
    read_type(r, tbl, col);
    read_col_constraints(r, tbl, col);
    text_of(r, tov_schema__get_col_defin, tbl, col, nullptr);
    string_of(r, tov_schema__get_col_validation_expression, tbl, col);
    map_of(r, tov_schema__find_singlecol_references_to, tbl, col);
    map_of(r, tov_schema__find_references_to_col, tbl, col);
    if (!r.has_col_cycle) {
        const char *root_tbl = nullptr;
        const char *root_col = nullptr;
        tov_schema__find_ipk_root_column(r.ctx, r.schema, tbl, col, &root_tbl, &root_col);
        ended_well(r);
    }
}

inline void read_foreignkey(reading &r, const char *tbl, const char *fk)
{
    text_of(r, tov_schema__get_foreignkey_ref_tbl_id, tbl, fk);
    text_of(r, tov_schema__get_foreignkey_name, tbl, fk);
    text_of(r, tov_schema__get_foreignkey_delete_action, tbl, fk);
    text_of(r, tov_schema__get_foreignkey_defin, tbl, fk);
    const uint32_t count = count_of(r, tov_schema__count_foreignkey_cols, tbl, fk);
    for (uint32_t n = 0; n <= count; n++) {
        const char *col = nullptr;
        const char *ref_col = nullptr;
        tov_schema__get_nth_foreignkey_col_ids(r.ctx, r.schema, tbl, fk, n, &col, &ref_col);
        ended_well(r);
    }
}

inline void read_tbl_constraints(reading &r, const char *tbl)
{
    const uint32_t fk_count = count_of(r, tov_schema__count_foreignkeys, tbl);
    for (const std::string &fk : ids_of(r, fk_count, tov_schema__get_nth_foreignkey_id, tbl))
        read_foreignkey(r, tbl, fk.c_str());
    read_foreignkey(r, tbl, "no such key");

    const uint32_t unique_count = count_of(r, tov_schema__count_uniques, tbl);
    std::vector<std::string> uniques = ids_of(r, unique_count, tov_schema__get_nth_unique_id, tbl);
    uniques.push_back("no such constraint");
    for (const std::string &unique : uniques) {
        const uint32_t count = count_of(r, tov_schema__count_unique_cols, tbl, unique.c_str());
        ids_of(r, count, tov_schema__get_nth_unique_col_id, tbl, unique.c_str());
        text_of(r, tov_schema__get_unique_defin, tbl, unique.c_str());
    }

    const uint32_t check_count = count_of(r, tov_schema__count_checks, tbl);
    for (const std::string &check : ids_of(r, check_count, tov_schema__get_nth_check_id, tbl))
        text_of(r, tov_schema__get_check_defin, tbl, check.c_str());
    text_of(r, tov_schema__get_check_defin, tbl, "no such check");

    text_of(r, tov_schema__has_integer_primary_key, tbl);
    text_of(r, tov_schema__get_pk_defin, tbl);
    const uint32_t pk_count = count_of(r, tov_schema__count_pk_cols, tbl);
    for (uint32_t n = 0; n <= pk_count; n++) {
        const char *col = nullptr;
        const char *name = nullptr;
        tov_schema__get_nth_pk_col(r.ctx, r.schema, tbl, n, &col, &name);
        ended_well(r);
    }
    value_of<KT_vhash *>(r, tov_schema__get_fk_rules, tbl);
}

inline void read_select_list(reading &r, const char *tbl, KT_bool include_unprepared)
{
    KT_vhash *cols = nullptr;
    if (!ask(r, &cols, tov_schema__get_converted_col_names_as_vhash, tbl, include_unprepared))
        return;
    for (uint32_t mode = 0; mode < (r.has_col_cycle ? 1u : 3u); mode++) {
        for (const KT_bool look_up : {0, 1}) {
            KT_string *list = nullptr;
            tov_schema__get_pvh_col_names_comma_separated_and_qualified(r.ctx, mode, r.schema, tbl, cols, nullptr, "q",
                                                                        look_up == 0, look_up, &list);
            if (ended_well(r))
                KT_string__free(r.ctx, list);
        }
    }
    KT_vhash__free(r.ctx, cols);
}

inline void read_lists(reading &r, const char *tbl)
{
    string_of(r, tov_schema__get_col_ids_comma_separated, tbl);
    string_of(r, tov_schema__get_col_names_comma_separated, tbl);
    string_of(r, tov_schema__get_col_names_comma_separated_and_qualified, tbl, "q");
    string_of(r, tov_schema__get_col_names_comma_separated_without_pk, tbl);
    string_of(r, tov_schema__get_pk_col_names_comma_separated, tbl);
    string_of(r, tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols, tbl);
    string_of(r, tov_schema__get_pk_col_names_comma_separated_and_prefixed, tbl, "old_");
    string_of(r, tov_schema__get_pk_col_names_comma_separated_and_qualified, tbl, "q");
    string_of(r, tov_schema__get_pk_col_names_converted, tbl, "q");
    map_of(r, tov_schema__get_col_names_as_vhash, tbl);
    read_select_list(r, tbl, 0);
    read_select_list(r, tbl, 1);
    string_of(r, tov_schema__get_on_pk_col_names, tbl, "a", "b", 0u, 0u);
    if (!r.has_col_cycle) {
        string_of(r, tov_schema__get_on_pk_col_names, tbl, "a", "b", 1u, 2u);
        string_of(r, tov_schema__get_on_pk_col_names, tbl, "a", "b", 2u, 0u);
    }
}

inline void read_references(reading &r, const char *tbl)
{
    map_of(r, tov_schema__find_singlecol_references_to, tbl, nullptr);
    map_of(r, tov_schema__find_multicol_references_to, tbl);
    value_of<KT_bool>(r, tov_schema__does_tbl_have_fk_constraint_with_delete_action, tbl);
    take_of<KT_nullhash>(r, KT_nullhash__free, tov_schema__find_tbls_with_references_to, tbl);
    take_of<KT_nullhash>(r, KT_nullhash__free, tov_schema__list_tbls_referenced_by, tbl);
    for (uint32_t filter = 0; filter < 3; filter++) {
        for (const char *ref_tbl : {static_cast<const char *>(nullptr), tbl}) {
            KT_varray *records = nullptr;
            uint32_t count = 0;
            tov_schema__list_fk_constraints(r.ctx, r.schema, tbl, ref_tbl, filter, &records, &count);
            if (ended_well(r))
                KT_varray__free(r.ctx, records);
        }
        for (const KT_bool include_self : {0, 1}) {
            KT_varray *records = nullptr;
            uint32_t count = 0;
            tov_schema__find_references_to_tbl(r.ctx, r.schema, tbl, include_self, filter, &records, &count);
            if (ended_well(r))
                KT_varray__free(r.ctx, records);
        }
    }
}

inline void free_lists(reading &r, std::initializer_list<KT_varray *> lists)
{
    for (KT_varray *list : lists)
        KT_varray__free(r.ctx, list);
}

inline void read_tbl(reading &r, const char *tbl)
{
    value_of<KT_bool>(r, tov_schema__has_tbl_id, tbl);
    const std::string name = text_of(r, tov_schema__get_tbl_name, tbl);
    text_of(r, tov_schema__find_tbl_by_name, name.c_str());
    value_of<int64_t>(r, tov_schema__check_tbl_txid, tbl);

    const uint32_t col_count = count_of(r, tov_schema__count_cols, tbl);
    const uint32_t unprepared_count = count_of(r, tov_schema__count_unprepared_cols, tbl);
    std::vector<std::string> cols = ids_of(r, col_count, tov_schema__get_nth_col_id, tbl);
    for (std::string &col : ids_of(r, unprepared_count, tov_schema__get_nth_unprepared_col_id, tbl))
        cols.push_back(std::move(col));
    cols.insert(cols.end(), {"", "no such column"});
    for (const std::string &col : cols)
        read_col(r, tbl, col.c_str());

    read_tbl_constraints(r, tbl);
    read_lists(r, tbl);
    read_references(r, tbl);
    KT_varray *only_in_a = nullptr;
    KT_varray *only_in_b = nullptr;
    KT_varray *in_both = nullptr;
    tov_schema__diff_cols(r.ctx, r.schema, r.schema, tbl, &only_in_a, &only_in_b, &in_both);
    ended_well(r);
    free_lists(r, {only_in_a, only_in_b, in_both});
}

inline void read_summary(reading &r, const std::vector<std::string> &tbls)
{
    KT_nullhash *wanted = nullptr;
    KT_nullhash__alloc(r.ctx, &wanted);
    for (const std::string &tbl : tbls)
        KT_nullhash__update(r.ctx, wanted, tbl.c_str());
    string_of(r, tov_schema__lite, wanted);
    KT_nullhash__free(r.ctx, wanted);

    KT_varray *only_in_a = nullptr;
    KT_varray *only_in_b = nullptr;
    KT_varray *same = nullptr;
    KT_varray *changed = nullptr;
    tov_schema__diff_tbls(r.ctx, r.schema, r.schema, &only_in_a, &only_in_b, &same, &changed);
    if (ended_well(r) && changed)
        r.complaint = "a schema differs from itself";
    free_lists(r, {only_in_a, only_in_b, same, changed});
}

// Without an answer there may be a cycle of either kind.
inline void read_cycles(reading &r)
{
    KT_varray *tbl_cycles = nullptr;
    KT_varray *col_cycles = nullptr;
    tov_schema__find_reference_cycles(r.ctx, r.schema, &tbl_cycles, &col_cycles);
    const bool has_answer = ended_well(r);
    r.has_tbl_cycle = tbl_cycles || !has_answer;
    r.has_col_cycle = col_cycles || !has_answer;
    free_lists(r, {tbl_cycles, col_cycles});
}

// Reads all there is to read. The operations that may not return on a cycle of references are left out when there may
// be one. The context is without an error afterwards.
inline void read_everything(reading &r)
{
    value_of<int64_t>(r, tov_schema__get_filter_id);
    value_of<KT_bool>(r, tov_schema__get_backend_info__indistinct_unique_nulls);
    map_of(r, tov_schema__get_tbl_names_vhash);
    take_of<KT_varray>(r, KT_varray__free, tov_schema__list_tbls);
    read_cycles(r);
    if (!r.has_tbl_cycle)
        take_of<KT_varray>(r, KT_varray__free, tov_schema__sort_by_references);

    const uint32_t tbl_count = count_of(r, tov_schema__count_tbls);
    std::vector<std::string> tbls = ids_of(r, tbl_count, tov_schema__get_nth_tbl_id);
    read_summary(r, tbls);
    tbls.insert(tbls.end(), {"", "no such table"});
    for (const std::string &tbl : tbls)
        read_tbl(r, tbl.c_str());
    string_of(r, tov_schema__to_json);
}
