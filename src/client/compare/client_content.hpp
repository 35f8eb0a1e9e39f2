// A schema as it is compared: tables and their parts, each a name and the facts about it, in one form for documents
// that say the same in other ways.
#pragma once

#include "kt_owned.hpp"
#include "tov_changes.h"

#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// What is known of a table or a part of one, in the order in which it is told.
enum class client_fact_kind : uint8_t {
    type,
    alias_type,
    collation,
    stored_as,
    left_out,
    nullable,
    stored_nullable,
    defval,
    default_name,
    stored_default,
    identity,
    computed,
    generated,
    hidden,
    rowguidcol,
    sparse,
    cols,
    refers_to,
    on_delete,
    on_update,
    deferred,
    expression,
    unique,
    clustered,
    disabled,
    index_kind,
    included,
    filter,
    where,
    sequence_type,
    start,
    increment,
    temporal_type,
    description,
    col_order,
    name_in_sqlite,
    compat_level,
    equal_nulls,
    count
};

struct client_fact_traits {
    const char *member; // what changes call it
    char group;         // a change of the server's is not told again as one of SQLite's in the same group
    bool of_sqlite;     // else of the server: compared when both documents know what the server says of the table
    bool may_be_unknown;
};
const client_fact_traits &client_traits_of(client_fact_kind kind) noexcept;

struct client_fact {
    client_fact_kind kind;
    std::string shown;
    std::string meaning; // equal for facts that are the same
};

enum class client_part_kind : uint8_t { col, primary_key, unique_key, foreign_key, check, index, sequence };
const char *client_part_word(client_part_kind kind) noexcept;

struct client_part {
    client_part_kind kind;
    std::string name; // empty when it has none, or one that a server made up
    std::string id;   // of a column of the document; empty when the SQLite table does not have it
    std::vector<client_fact> facts = {};
    std::string sqlite_name = {}; // of such a column
    bool name_is_made_up = false; // by an import
};

struct client_tbl_content {
    std::string id;
    std::string name;        // on the server with its schema, where the document says it
    std::string sqlite_name; //
    bool has_facts = false;  // the document says what the server says of it
    std::vector<client_fact> facts;
    std::vector<client_part> cols;
    std::vector<client_part> parts; // the others
};

struct client_content {
    bool has_facts = false; // of the schema as a whole
    std::vector<client_fact> facts;
    std::vector<client_part> parts;
    std::vector<client_tbl_content> tbls;
};

// What tables and columns of a schema are called in the other one. Names are in lower case.
struct client_renaming {
    std::map<std::string, std::string> tbls;                        // of an id
    std::map<std::string, std::map<std::string, std::string>> cols; // of an id, and a name in the table
};

// The ids, in lower case, of tables that need not be compared.
using client_same_tbls = std::unordered_set<std::string>;

// Reads a schema. The meanings of its facts have the names of the other one. Tables that need not be compared get their
// names only.
void client_read_content(KT_context *ctx, tov_schema *schema, const client_renaming &renaming,
                         const client_same_tbls &same, client_content &content) noexcept;

// Whether what is known of both is the same.
bool client_have_same_facts(const std::vector<client_fact> &a, const std::vector<client_fact> &b);
const client_fact *client_find_fact(const std::vector<client_fact> &facts, client_fact_kind kind) noexcept;
