// What a changed table may fail on or lose, as steps without a statement, with queries for the old database that count.
#pragma once

#include "migrate/client_carried.hpp"

// All of it.
void client_add_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                      const client_carried_tbl &carried);

// What is in the way of new keys, checks and references.
void client_add_key_risks(KT_context *ctx, client_migration &migration, const client_changed_tbl &changed,
                          const client_carried_tbl &carried);

// A step for rows that may fail, with the query that counts them.
void client_add_risk(client_migration &migration, const client_changed_tbl &changed, const std::string &what,
                     std::string count_query);
