// What the sources that read a schema's content share.
#pragma once

#include "compare/client_content.hpp"
#include "compare/client_meaning.hpp"

// One table while it is read.
struct client_tbl_reading {
    tov_schema *schema;
    const client_renaming &renaming;
    client_tbl_content &tbl;
    KT_vhash *server;                             // the facts about the server; null where there are none
    std::map<std::string, std::string> col_names; // by their ids

    client_name_meaning names() const; // what names in its expressions are called in the other schema
};

// Adds a fact unless it is empty: a text as it is, an expression, a flag that is set.
void client_add_fact(std::vector<client_fact> &facts, client_fact_kind kind, std::string shown);
void client_add_fact(std::vector<client_fact> &facts, client_fact_kind kind, std::string shown, std::string meaning);
void client_add_expression(const client_tbl_reading &reading, std::vector<client_fact> &facts, client_fact_kind kind,
                           const char *expression);

// Adds what a record says: a string, an integer that is not 0, a flag that is true.
void client_add_text_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                        client_fact_kind kind);
void client_add_number_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                          client_fact_kind kind);
void client_add_flag_of(KT_context *ctx, const KT_vhash *record, const char *key, std::vector<client_fact> &facts,
                        client_fact_kind kind);

// The names of columns of the table that are given by their ids; a list of such columns, some perhaps in descending
// order, as text and as the other schema calls them.
void client_find_col_names(KT_context *ctx, const client_tbl_reading &reading, const KT_varray *ids,
                           std::vector<std::string> &names);
void client_add_cols(KT_context *ctx, const client_tbl_reading &reading, const std::vector<std::string> &names,
                     const KT_varray *descending, std::vector<client_fact> &facts, client_fact_kind kind);

// Reads the columns of a table; then its keys, checks and indexes, which name columns.
void client_read_cols(KT_context *ctx, client_tbl_reading &reading);
void client_read_keys(KT_context *ctx, client_tbl_reading &reading);
void client_read_checks(KT_context *ctx, client_tbl_reading &reading);
void client_read_indexes(KT_context *ctx, client_tbl_reading &reading);

// Whether a server made the name of a constraint, such as PK__Orders__3214EC07A1B2C3D4.
bool client_is_servers_name(std::string_view name) noexcept;

// The name of a part, unless a server made it; an import makes one of the kind's letters, the table and the columns.
void client_name_part(const client_tbl_reading &reading, const char *letters, const std::vector<std::string> &cols,
                      const char *name, client_part &part);
