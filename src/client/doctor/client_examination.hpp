// A database while it is examined, and what was found so far.
#pragma once

#include "create/client_owned_schema.hpp"
#include "doctor/client_diagnosis_kinds.hpp"
#include "migrate/client_object_list.hpp"
#include "rows/load/client_connection.hpp"

#include <unordered_set>

struct client_examination {
    explicit client_examination(KT_context *ctx) noexcept : recorded(ctx)
    {
    }
    client_connection database;
    KT_varray *diagnoses = nullptr; // borrowed
    client_owned_schema recorded;
    tov_client_create_options options = {}; // with which it was created
    client_object_list wanted;              // what the recorded schema makes; empty without a record
    std::unordered_set<std::string> tbls_without_their_indexes; // by name in lower case
};

using client_result = std::vector<std::vector<std::string>>;

// All rows of a query as strings, NULL being empty; ?1 is the argument.
void client_examination__ask(KT_context *ctx, client_examination &examination, const char *sql,
                             const std::string &argument, client_result &rows);

void client_examination__add(KT_context *ctx, client_examination &examination, client_diagnosis_code code,
                             const std::string &message, const std::string &sql = "");
// The same of something that is as it should be.
void client_examination__pass(KT_context *ctx, client_examination &examination, client_diagnosis_code code,
                              const std::string &message);

// The names of all tables but SQLite's own.
void client_examination__list_tbls(KT_context *ctx, client_examination &examination, std::vector<std::string> &names);

// What is looked at, in this order.
void client_examination__library(KT_context *ctx, client_examination &examination);
void client_examination__file(KT_context *ctx, client_examination &examination);
void client_examination__record(KT_context *ctx, client_examination &examination); // KT_ERR_NOT_FOUND without one
void client_examination__plan(KT_context *ctx, client_examination &examination);
void client_examination__objects(KT_context *ctx, client_examination &examination);
void client_examination__dates(KT_context *ctx, client_examination &examination);
void client_examination__references(KT_context *ctx, client_examination &examination);
void client_examination__indexes(KT_context *ctx, client_examination &examination);
