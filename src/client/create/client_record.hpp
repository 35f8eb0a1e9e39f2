// The record that a database keeps of its schema, so that later on it can be told what the database was created from.
//
// It is a table of one row. Its name begins as those of the triggers do, which no table of the schema does.
#pragma once

#include "create/client_plan.hpp"
#include "rows/load/client_connection.hpp"

std::string client_record_name(const client_plan &plan);

// Takes a piece of a statement, borrowed until it returns.
using client_take = void (*)(KT_context *ctx, void *data, const char *text);

// Hands CREATE TABLE of the record, with its row, out in pieces.
void client_stream_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_take take, void *data);
// The same, as a whole.
void client_write_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, std::string &sql);

// Finds the record of a database, and reads it; one that is not there is KT_ERR_NOT_FOUND.
void client_find_record(KT_context *ctx, client_connection &database, std::string &name);
void client_read_record(KT_context *ctx, client_connection &database, tov_schema **schema,
                        tov_client_create_options *options);
