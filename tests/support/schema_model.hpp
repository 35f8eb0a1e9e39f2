// A plain, slow model of a schema: its two trees in ordinary containers, and what each operation that changes them
// does, said as simply as possible. Where an operation fails the model throws the code; what was changed before that
// stays changed, as in the schema.
#pragma once

#include "tov_parse_defin.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct model_node {
    std::string scalar = {}; // as JSON text; empty for a map or a list
    bool is_list = false;
    std::vector<std::pair<std::string, model_node>> members = {}; // of a list: with empty keys
};

struct model_error {
    uint64_t code;
};

struct schema_model {
    model_node document = {};
    std::optional<model_node> host_internals = {};
};

using optional_text = const char *;

inline model_node model_text(const std::string &text)
{
    return {'"' + text + '"'}; // the texts used with the model need no escapes
}

inline model_node model_int(int64_t value)
{
    return {std::to_string(value)};
}

inline model_node model_bool(bool value)
{
    return {value ? "true" : "false"};
}

inline model_node model_null()
{
    return {"null"};
}

inline std::string model_json(const model_node &node)
{
    if (!node.scalar.empty())
        return node.scalar;
    std::string json(1, node.is_list ? '[' : '{');
    for (const auto &[key, value] : node.members) {
        if (json.size() > 1)
            json += ',';
        if (!node.is_list)
            json += '"' + key + "\":";
        json += model_json(value);
    }
    return json + (node.is_list ? ']' : '}');
}

// The trees as tov_schema__copy_into_vhash() writes them into an empty map.
inline std::string model_json(const schema_model &m)
{
    std::string json = "{\"schema\":" + model_json(m.document);
    if (m.host_internals)
        json += ",\"host_internals\":" + model_json(*m.host_internals);
    return json + '}';
}

inline std::string model_lower(std::string id)
{
    for (char &byte : id)
        byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
    return id;
}

// Members of a map. A pointer to one is good until the map gets or loses another.

inline model_node *model_find(model_node &map, const std::string &key)
{
    for (auto &[name, value] : map.members) {
        if (name == key)
            return &value;
    }
    return nullptr;
}

inline model_node &model_get(model_node &map, const std::string &key, uint64_t absent = KT_ERR_KEY_NOT_FOUND)
{
    model_node *found = model_find(map, key);
    return found ? *found : throw model_error{absent};
}

inline model_node &model_add(model_node &map, const std::string &key, model_node value = {})
{
    if (model_find(map, key))
        throw model_error{KT_ERR_DUPLICATE_KEY};
    return map.members.emplace_back(key, std::move(value)).second;
}

inline model_node &model_ensure(model_node &map, const std::string &key)
{
    model_node *found = model_find(map, key);
    return found ? *found : model_add(map, key);
}

inline void model_set(model_node &map, const std::string &key, model_node value)
{
    model_ensure(map, key) = std::move(value);
}

inline void model_set_if_given(model_node &map, const std::string &key, optional_text text)
{
    if (text)
        model_set(map, key, model_text(text));
}

inline void model_remove(model_node &map, const std::string &key)
{
    std::erase_if(map.members, [&](const auto &member) { return member.first == key; });
}

// Tables and columns.

inline model_node &model_host(schema_model &m, const char *what)
{
    if (!m.host_internals)
        m.host_internals = model_node{};
    return model_ensure(*m.host_internals, what);
}

inline model_node &model_tbl(schema_model &m, const std::string &tbl)
{
    return model_get(model_ensure(m.document, "tbls"), model_lower(tbl), KT_ERR_NOT_FOUND);
}

inline model_node &model_cols(schema_model &m, const std::string &tbl)
{
    return model_ensure(model_tbl(m, tbl), "cols");
}

inline model_node &model_col(schema_model &m, const std::string &tbl, const std::string &col)
{
    if (model_node *prepared = model_find(model_cols(m, tbl), model_lower(col)))
        return *prepared;
    if (m.host_internals) {
        model_node *unprepared = model_find(*m.host_internals, "unprep-cols");
        unprepared = unprepared ? model_find(*unprepared, tbl) : nullptr;
        unprepared = unprepared ? model_find(*unprepared, model_lower(col)) : nullptr;
        if (unprepared)
            return *unprepared;
    }
    throw model_error{KT_ERR_NOT_FOUND};
}

inline void model_add_tbl(schema_model &m, const std::string &tbl, const std::string &name, int64_t txid)
{
    model_node &record = model_add(model_ensure(m.document, "tbls"), model_lower(tbl));
    model_add(record, "name", model_text(name));
    model_add(record, "txid", model_int(txid));
}

inline void model_add_col(schema_model &m, const std::string &tbl, const std::string &col, const std::string &name,
                          bool prepared, int64_t dump_txid, int64_t dump_generation)
{
    model_node &cols = prepared ? model_cols(m, tbl) : model_ensure(model_host(m, "unprep-cols"), tbl);
    model_add(cols, model_lower(col));
    model_set(model_col(m, tbl, col), "name", model_text(name));
    if (dump_txid > 0) {
        model_set(model_ensure(model_host(m, "col-dump-txids"), tbl), col, model_int(dump_txid));
        model_set(model_ensure(model_host(m, "col-dump-gen"), tbl), col, model_int(dump_generation));
    }
}

inline void model_set_type(schema_model &m, const std::string &tbl, const std::string &col, model_node type)
{
    model_node &record = model_col(m, tbl, col);
    model_remove(record, "type");
    model_add(record, "type", std::move(type));
}

// "collations" or "defvals" of the host internals.
inline void model_set_host_text(schema_model &m, const char *what, const std::string &tbl, const std::string &col,
                                optional_text text)
{
    if (text)
        model_set(model_ensure(model_host(m, what), tbl), col, model_text(text));
}

inline void model_set_host_type_name(schema_model &m, const std::string &tbl, const std::string &col,
                                     optional_text name)
{
    if (!name)
        return;
    model_node &record = model_col(m, tbl, col);
    model_remove(record, "mssql_col_data_type");
    model_add(record, "mssql_col_data_type", model_text(name));
}

// Constraints.

// "notnull" (without an expression) or "defval".
inline void model_set_colcon(schema_model &m, const char *what, const std::string &tbl, const std::string &col,
                             bool has, optional_text name, optional_text expr)
{
    model_node &record = model_col(m, tbl, col);
    model_remove(record, what);
    if (!has)
        return;
    model_node &constraint = model_add(record, what);
    model_set_if_given(constraint, "expr", expr);
    model_set_if_given(constraint, "name", name);
}

inline void model_add_colcon_check(schema_model &m, const std::string &tbl, const std::string &col, optional_text name,
                                   const std::string &expr)
{
    model_node &checks = model_ensure(model_col(m, tbl, col), "check");
    checks.is_list = true;
    model_node &check = checks.members.emplace_back("", model_node{}).second;
    model_add(check, "expr", model_text(expr));
    model_set_if_given(check, "name", name);
}

inline void model_set_fk_rule(schema_model &m, const std::string &tbl, const std::string &fk, int32_t violation)
{
    if (violation != 0) {
        model_node &rule = model_ensure(model_ensure(model_host(m, "fk-rules"), tbl), fk);
        model_set(rule, "violation-on-insert", model_int(violation));
    }
}

inline void model_create_foreignkey(schema_model &m, const std::string &fk, optional_text name, const std::string &tbl,
                                    const std::string &ref_tbl, bool deferred, optional_text on_delete,
                                    optional_text on_update, int32_t violation)
{
    model_node &key = model_ensure(model_ensure(model_tbl(m, tbl), "foreignkeys"), fk);
    model_ensure(key, "cols");
    model_set_if_given(key, "name", name);
    model_set(key, "ref_tbl_id", model_text(ref_tbl));
    model_set(key, "deferred", model_bool(deferred));
    model_set_if_given(key, "on_delete", on_delete);
    model_set_if_given(key, "on_update", on_update);
    model_set_fk_rule(m, tbl, fk, violation);
}

inline void model_add_to_foreignkey(schema_model &m, const std::string &tbl, const std::string &fk,
                                    const std::string &col, const std::string &ref_col)
{
    model_node &key = model_ensure(model_get(model_tbl(m, tbl), "foreignkeys"), fk);
    model_set(model_get(key, "cols"), col, model_text(ref_col));
}

inline void model_nevermind_foreignkey(schema_model &m, const std::string &tbl, const std::string &fk)
{
    if (model_node *keys = model_find(model_tbl(m, tbl), "foreignkeys"))
        model_remove(*keys, fk);
    model_node *rules = m.host_internals ? model_find(*m.host_internals, "fk-rules") : nullptr;
    if (rules) {
        for (auto &[any_tbl, of_tbl] : rules->members)
            model_remove(of_tbl, fk);
    }
}

// Whether the first column that decides it makes the table one with an identity; a column before it must have a type.
inline bool model_has_identity(schema_model &m, const std::string &tbl)
{
    for (auto &[col, record] : model_cols(m, tbl).members) {
        if (model_get(model_get(record, "type"), "name").scalar == "\"identity\"")
            return true;
    }
    return false;
}

inline void model_set_colcon_fk(schema_model &m, const std::string &tbl, const std::string &col, bool has,
                                const std::string &fk, optional_text name, const std::string &ref_tbl,
                                optional_text ref_col, bool deferred, optional_text on_delete, optional_text on_update,
                                int32_t violation)
{
    if (model_lower(tbl) == model_lower(ref_tbl) && model_has_identity(m, tbl))
        throw model_error{KT_ERR_SCHEMA_NOT_SUPPORTED};
    model_node &record = model_col(m, tbl, col);
    model_remove(record, "fk");
    if (!has)
        return;
    model_node &key = model_add(record, "fk");
    model_set_if_given(key, "name", name);
    model_set(key, "ref_tbl_id", model_text(ref_tbl));
    model_set_if_given(key, "ref_col_id", ref_col);
    model_set(key, "deferred", model_bool(deferred));
    model_set_if_given(key, "on_delete", on_delete);
    model_set_if_given(key, "on_update", on_update);
    model_set_fk_rule(m, tbl, fk, violation);
}
