// A table that rows are put into: converts their fields, inserts them, and gives the verdict on each.
#pragma once

#include "create/client_plan.hpp"
#include "rows/convert/client_convert.hpp"
#include "rows/load/client_versions.hpp"
#include "rows/read/client_reader.hpp"

#include <map>
#include <memory>

// Which field of a row goes into which column, and the INSERT for rows of this kind.
struct client_layout {
    std::vector<size_t> cols;       // by field: the table's column, or client_no_col
    std::vector<size_t> places;     // by parameter: the field, or client_no_field for a rowversion that is to be made
    std::vector<size_t> params;     // by parameter: the table's column
    std::vector<client_room> rooms; // by parameter: holds a value until the row is inserted
    kt_owned_statement insert{tov__get_sqlite_functions()};
    client_reject absence = client_reject::none; // why rows that leave out what this one does are refused
    size_t blame = SIZE_MAX;                     // the column for which they are
};
inline constexpr size_t client_no_col = SIZE_MAX;
inline constexpr size_t client_no_field = SIZE_MAX;

struct client_target {
    client_row_tbl tbl;
    client_versions *versions = nullptr;                  // of the load
    bool has_version = false;                             // whether the greatest of the table's own is known among them
    bool with_triggers = true;                            // whether the checks of the triggers have to run
    bool with_constraints = true;                         // whether the constraints have to be asked
    bool with_rules = false;                              // whether the table holds values to the server's rules
    std::map<std::vector<size_t>, client_layout> layouts; // by cols
};

struct client_verdict {
    client_reject reject = client_reject::none;
    size_t col = SIZE_MAX;         // of the table, if one column is to blame
    size_t field = SIZE_MAX;       // of the row
    std::string message;           // what SQLite said, if it was asked
    std::vector<size_t> shortened; // columns of the table
    uint64_t version = 0;          // the greatest rowversion of the row
    int64_t rowid = 0;             // of a row that was inserted
};

// Whether what a table's triggers and constraints do to an inserted row is done as well by converting its fields: when
// the schema's own check is the only trigger for insertions, word for word, when the table is word for word what would
// be created and has no check but those of its types, and when these are the types of the fields. And whether triggers
// or constraints hold the server's rules. Sets with_triggers, with_constraints and with_rules.
void client_target__look_at_checks(KT_context *ctx, client_connection &database, tov_schema *schema,
                                   const client_plan &plan, const client_tbl &tbl, client_target &target) noexcept;

// The layout for rows whose n-th field belongs to the column cols[n] of the table, or to none that is stored. Borrowed
// from the target.
void client_target__lay_out(KT_context *ctx, client_connection &database, client_target &target,
                            const std::vector<size_t> &cols, client_layout **layout);

// Puts in a row. What only this row has to do with is a verdict; a failure is something that ends the load.
void client_target__put(KT_context *ctx, client_connection &database, client_converter &converter,
                        client_target &target, client_layout &whole, const client_row &row, client_verdict &verdict);
