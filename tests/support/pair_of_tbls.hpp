// A parent and a child table with a column, a constraint and a key of each kind, under ids of the caller's choice, so
// that many pairs fit into one schema and a reader can tell whose they are.
#pragma once

#include "tov_parse_defin.h"

#include <string>

inline void add_typed_col(KT_context *ctx, tov_schema *schema, const char *tbl, const char *col, const char *type)
{
    tov_schema__add_col(ctx, schema, tbl, col, col, 1, 5, 6);
    if (std::string(type) == "identity")
        tov_schema__set_col_type_identity(ctx, schema, tbl, col, "PK");
    else
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, type);
    tov_schema__set_mssql_col_type_name(ctx, schema, tbl, col, "int");
}

// Adds the tables parent_OWN and child_OWN, and sets what a schema has once.
inline void add_pair_of_tbls(KT_context *ctx, tov_schema *schema, const std::string &own)
{
    const std::string parent = "parent_" + own;
    const std::string child = "child_" + own;
    const char *p = parent.c_str();
    const char *c = child.c_str();
    tov_schema__add_tbl(ctx, schema, c, c, 7);
    tov_schema__add_tbl(ctx, schema, p, p, 42);
    add_typed_col(ctx, schema, p, "id", "identity");
    add_typed_col(ctx, schema, p, "code", "sint32");
    add_typed_col(ctx, schema, c, "id", "sint32");
    add_typed_col(ctx, schema, c, "parent", "sint32");
    add_typed_col(ctx, schema, c, "code", "sint64");
    tov_schema__add_col(ctx, schema, c, "later", own.c_str(), 0, 1, 1);
    tov_schema__set_col_type_text(ctx, schema, c, "code", "coll", "en", 0, 0, 1, 0, 0, 0, 1, 1, 10);
    tov_schema__set_pk_name(ctx, schema, c, "PK");
    tov_schema__add_to_pk(ctx, schema, c, "id");
    tov_schema__add_to_unique_constraint(ctx, schema, p, "code", "u");
    tov_schema__add_check_constraint(ctx, schema, p, "k", "Code>0");
    tov_schema__set_colcon_notnull(ctx, schema, c, "code", 1, "NN");
    tov_schema__set_colcon_defval(ctx, schema, c, "code", 1, "DF", "'x'");
    tov_schema__add_colcon_check(ctx, schema, c, "code", "CK", "(code<>'')");
    tov_schema__set_colcon_fk(ctx, schema, c, "parent", 1, "f1", "F1", p, "id", 0, "CASCADE", "NO ACTION", 2);
    tov_schema__create_foreignkey(ctx, schema, "f2", "F2", c, p, 1, "NO ACTION", "CASCADE", 4);
    tov_schema__add_to_foreignkey(ctx, schema, c, "f2", "id", "code");
    tov_schema__set_filter_id(ctx, schema, 3);
    tov_schema__set_backend_info__name(ctx, schema, own.c_str());
}
