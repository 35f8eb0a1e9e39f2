// Reading a schema from a file, and finding tables in it as a person names them.
#pragma once

#include "cli.hpp"

#include <string>
#include <vector>

// Reads either form of a schema: the document alone, or {"schema":...,"host_internals":...}. A file of another shape
// is refused with the place that is wrong.
void cli_load_schema(KT_context *ctx, const std::string &path, cli_schema *schema);

// The same from JSON text that was read; false when it is not a schema but what import reads.
bool cli_take_schema(KT_context *ctx, const std::string &text, const std::string &path, cli_schema *schema);

// The document: a member a line, as version control likes it, or on one line.
std::string cli_schema_json(KT_context *ctx, tov_schema *schema, bool is_compact);

// The id of a table that is given by its id or, failing that, its name (in any letter case when that leaves one table).
std::string cli_find_table(KT_context *ctx, tov_schema *schema, const std::string &table);

// A table's name, or its id where it has none.
std::string cli_table_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id);

// A column's name, or its id where it has none.
std::string cli_column_name(KT_context *ctx, tov_schema *schema, const std::string &tbl_id, const std::string &col_id);

// The names of all tables.
std::vector<std::string> cli_table_names(KT_context *ctx, tov_schema *schema);
