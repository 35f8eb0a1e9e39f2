// What a report shows, gathered in one map before any form of it is written.
//
// The map is the guide of tov_client__describe_columns() without its expressions for programs, and with more: "title",
// "collation" of the server, "findings" and "changes" (those of the options), and in each of its "tables" "schema",
// "description", "history" (1 a history table, 2 one that has a history), "rows" where they were counted, and these
// lists, which are absent when they are empty:
// - "violations" of the database's rows: "code", "severity", "message", "column", "count", and "examples", a few
// strings
// - "columns": as in the guide, with "sqlite_type", "collation" and "description"
// - "keys": "kind" (primary or unique), "name", "columns"
// - "references": "name", "columns", "table", "to", "on_delete", "on_update"
// - "checks": "expression", and "name" and "column" of a column's
// - "indexes": "name", "kind", "columns", "included", "filter", "left_out"
// Columns and tables are said by name. What the schema does not know is absent.
#pragma once

#include "kt_owned.hpp"
#include "tov_report.h"

#include <string>
#include <vector>

void client_report_gather(KT_context *ctx, tov_schema *schema, const tov_client_report_options *options,
                          KT_vhash **data);

// Parts of it: the columns, beyond what the guide says; keys and references; checks; indexes.
struct client_report_tbl {
    tov_schema *schema;
    const char *id;
    const KT_vhash *document; // the table's part of the schema document
    const KT_vhash *facts;    // what the server says of it; null where the document has none
    KT_vhash *record;         // of the report
};
void client_report_complete_cols(KT_context *ctx, const client_report_tbl &tbl);
void client_report_add_keys(KT_context *ctx, const client_report_tbl &tbl);
void client_report_add_checks(KT_context *ctx, const client_report_tbl &tbl);
void client_report_add_indexes(KT_context *ctx, const client_report_tbl &tbl);

// Counts and checks the rows of a database.
void client_report_add_rows(KT_context *ctx, tov_schema *schema, const char *file_name, const KT_vhash *data);

// A column's name by its id, or the id of a column that is not there.
std::string client_report_col_name(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id);

// Members of maps: those that are absent are not copied, and give "" and no items.
void client_report_copy_text(KT_context *ctx, const KT_vhash *from, const char *key, KT_vhash *to, const char *as);
std::string client_report_text(KT_context *ctx, const KT_vhash *map, const char *key);
std::vector<std::string> client_report_texts(KT_context *ctx, const KT_vhash *map, const char *key);
std::vector<KT_vhash *> client_report_maps(KT_context *ctx, const KT_vhash *map, const char *key);
