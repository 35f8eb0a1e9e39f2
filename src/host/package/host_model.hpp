// What has been read of a model, and is put together when all of it is there: constraints may come before their
// tables, and alias types after the columns that have them.
//
// While reading, objects are known by the text of their names, which is the same wherever they are named. Those texts
// live in the model, what the catalogue needs lives in the catalogue.
#pragma once

#include "package/host_model_tree.hpp"

#include <unordered_map>

// A column's place in the catalogue while that is being filled.
struct host_col_place {
    uint32_t tbl = 0;
    uint32_t col = 0;
};

struct host_alias_use {
    host_col_place place;
    std::string_view alias;
};

enum class host_index_kind { primary_key, unique, index };

// A key or an index, with its columns by name.
struct host_model_index {
    host_index_kind kind = host_index_kind::index;
    std::string_view tbl;
    host_key key; // its names of columns are filled in last
    bool is_unique = false;
    std::vector<std::string_view> cols;
    std::vector<std::string_view> included;
};

struct host_model_fk {
    std::string_view tbl;
    std::string_view ref_tbl;
    host_foreignkey fk;
    bool is_action_assumed = false;
    std::vector<std::string_view> cols;
    std::vector<std::string_view> ref_cols;
};

struct host_model_check {
    std::string_view tbl;
    host_check check;
};

struct host_model_default {
    std::string_view col;
    host_default defval;
};

struct host_model_description {
    std::string_view host;
    bool is_of_col = false;
    const char *text = nullptr;
};

struct host_model_history {
    uint32_t tbl = 0;
    std::string_view history;
};

struct host_model {
    host_model(host_catalogue &target, host_findings &found, bool is_from_server)
        : catalogue(target), findings(found), from_server(is_from_server)
    {
    }
    host_catalogue &catalogue;
    host_findings &findings;
    bool from_server; // extracted from one, rather than built from a project
    host_texts texts;
    std::unordered_map<std::string_view, uint32_t> tbls;
    std::unordered_map<std::string_view, host_col_place> cols;
    std::unordered_map<std::string_view, host_column> aliases; // a column of the type: its names and sizes
    std::vector<host_alias_use> alias_uses;
    std::vector<host_model_history> histories;
    std::vector<host_model_index> indexes;
    std::vector<host_model_fk> fks;
    std::vector<host_model_check> checks;
    std::vector<host_model_default> defaults;
    std::vector<host_model_description> descriptions;
};

// Passes the elements of a model on to those who read one type of them each.
class host_model_reader : public host_element_reader {
  public:
    explicit host_model_reader(host_model &model) : model_(model)
    {
    }
    void look(KT_context *ctx, std::string_view type, std::string_view name, bool *is_wanted) override;
    void take(KT_context *ctx, const host_node &element) override;

  private:
    host_model &model_;
};

// host_model_tables.cpp
void host_take_table(KT_context *ctx, host_model &model, const host_node &element);
void host_take_options(KT_context *ctx, host_model &model, const host_node &element);
void host_take_alias(KT_context *ctx, host_model &model, const host_node &element);
void host_take_clr_type(KT_context *ctx, host_model &model, const host_node &element);
void host_take_sequence(KT_context *ctx, host_model &model, const host_node &element);

// host_model_constraints.cpp
void host_take_pk(KT_context *ctx, host_model &model, const host_node &element);
void host_take_unique(KT_context *ctx, host_model &model, const host_node &element);
void host_take_index(KT_context *ctx, host_model &model, const host_node &element);
void host_take_fk(KT_context *ctx, host_model &model, const host_node &element);
void host_take_check(KT_context *ctx, host_model &model, const host_node &element);
void host_take_default(KT_context *ctx, host_model &model, const host_node &element);
void host_take_description(KT_context *ctx, host_model &model, const host_node &element);

// host_model_join.cpp: gives everything to the tables and columns it belongs to, and puts the tables in order.
void host_join_model(KT_context *ctx, host_model &model);

// A name as objects are known by it while the model is read.
std::string_view host_keep_name(host_model &model, std::string_view name);
// The last part of a bracketed name, as a string of the catalogue's; null for an empty one.
void host_keep_last_part(KT_context *ctx, host_model &model, std::string_view name, const char **part);
// A text that the catalogue keeps; null for an empty one.
const char *host_keep_text(host_model &model, std::string_view text);
// A definition in the server's spelling: a project has the author's. Null for an empty one.
const char *host_keep_definition(host_model &model, std::string_view text);
