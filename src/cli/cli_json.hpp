// Results for machines: a map of the runtime, built up and printed as JSON.
#pragma once

#include "cli.hpp"

#include <vector>

// A map that frees itself.
struct cli_map {
    explicit cli_map(KT_context *context) : ctx(context)
    {
        KT_vhash__alloc(ctx, &map);
        cli_check(ctx, "");
    }
    cli_map(KT_context *context, const std::string &json, const std::string &where) : ctx(context)
    {
        KT_vhash__alloc__from_json__sz(ctx, &map, json.c_str());
        cli_check(ctx, where);
    }
    ~cli_map()
    {
        KT_vhash__free(ctx, map);
    }
    cli_map(const cli_map &) = delete;
    cli_map &operator=(const cli_map &) = delete;
    operator KT_vhash *() const
    {
        return map;
    }

    KT_context *ctx;
    KT_vhash *map = nullptr;
};

// JSON text of a map, and the text of a string of the runtime.
std::string cli_json_text(KT_context *ctx, const KT_vhash *map);

// Takes over a string of the runtime.
std::string cli_take(KT_context *ctx, KT_string *string);
// Takes over a list of texts; null is an empty one.
std::vector<std::string> cli_take_texts(KT_context *ctx, KT_varray *list);

// The texts of a list, and the maps of one, which they belong to; null is an empty one.
std::vector<std::string> cli_texts_of(KT_context *ctx, const KT_varray *list);
std::vector<KT_vhash *> cli_maps_of(KT_context *ctx, const KT_varray *list);

// A member of a map: a string as it is, or as a line for people has it, "" where it is absent; a flag, false where it
// is absent.
std::string cli_text_of(KT_context *ctx, const KT_vhash *map, const char *key);
std::string cli_harmless_of(KT_context *ctx, const KT_vhash *map, const char *key);
bool cli_flag_of(KT_context *ctx, const KT_vhash *map, const char *key);

// Adds members to a map; texts that are absent are left out.
void cli_add_text(KT_context *ctx, KT_vhash *map, const char *key, const char *text);
void cli_add_number(KT_context *ctx, KT_vhash *map, const char *key, int64_t number);
void cli_add_texts(KT_context *ctx, KT_vhash *map, const char *key, const std::vector<std::string> &texts);
KT_vhash *cli_add_map(KT_context *ctx, KT_vhash *map, const char *key);
KT_varray *cli_add_list(KT_context *ctx, KT_vhash *map, const char *key);
KT_vhash *cli_append_map(KT_context *ctx, KT_varray *list);
