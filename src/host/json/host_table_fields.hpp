// Members of a table that are records themselves, in the order in which the server writes their fields.
#pragma once

#include "records/host_catalogue.hpp"
#include "json/host_fields.hpp"

inline constexpr int64_t host_any_low = INT64_MIN;
inline constexpr int64_t host_any_high = INT64_MAX;

// host_col_fields.cpp
void host_read_cols(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                    host_table &table);

// host_key_fields.cpp
void host_read_pk(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                  host_table &table);
void host_read_uniques(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       host_table &table);
void host_read_indexes(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                       host_table &table);
void host_read_fks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                   host_table &table);
void host_read_checks(KT_context *ctx, host_reader &reader, const host_place &place, const KT_variant &value,
                      host_table &table);
