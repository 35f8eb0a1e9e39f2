// Schemas as large as one likes, with the types, keys and names that business databases have.
#pragma once

#include "kt_owned.hpp"
#include "tov_parse_defin.h"

#include <benchmark/benchmark.h>

#include <string>

// How large: the last one is the largest database on record among users of schema tools.
struct bench_size {
    uint32_t tables;
    uint32_t columns; // of all tables together
};

inline constexpr bench_size bench_sizes[] = {{100, 3000}, {1000, 30000}, {10000, 300000}, {26653, 563915}};

// A context for the whole program, and a stop with the description when an operation failed.
KT_context *bench_ctx();
void bench_check();

// A schema of that size, the same each time; kept for the whole run.
tov_schema *bench_schema(const bench_size &size);
// Its JSON text, kept too.
const std::string &bench_json(const bench_size &size);

// A schema whose tables refer to others at random (references), or each to the one behind it (chain).
tov_schema *bench_reference_schema(uint32_t tables, uint32_t references);
tov_schema *bench_reversed_chain(uint32_t tables);

// A case: reading the JSON text of a schema. Freeing it is not counted.
void bench_read_schema(benchmark::State &state, const bench_size &size);

// Asks for all texts of a table: of its columns, their checks, and its keys.
void bench_texts_of_table(KT_context *ctx, tov_schema *schema, const char *tbl);

// A catalogue export of that size, as the importer reads it.
std::string bench_catalogue(const bench_size &size);

// A script that makes tables of that size: with keys inside, defaults and references after them.
std::string bench_script(const bench_size &size);
