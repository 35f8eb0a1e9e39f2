#include "cli_json.hpp"

#include "cli_harmless.hpp"

std::string cli_take(KT_context *ctx, KT_string *string)
{
    std::string text = string ? KT_string__sz(string) : "";
    KT_string__free(ctx, string);
    return text;
}

std::string cli_json_text(KT_context *ctx, const KT_vhash *map)
{
    KT_string *text = nullptr;
    KT_string__alloc(ctx, &text);
    cli_check(ctx, "");
    KT_vhash__to_json(ctx, map, text);
    std::string json = cli_take(ctx, text);
    cli_check(ctx, "");
    return json;
}

std::vector<std::string> cli_take_texts(KT_context *ctx, KT_varray *list)
{
    if (!list)
        return {};
    kt_owned_varray owned{ctx};
    *owned.out() = list;
    return cli_texts_of(ctx, owned);
}

std::vector<std::string> cli_texts_of(KT_context *ctx, const KT_varray *list)
{
    uint32_t count = 0;
    if (list)
        KT_varray__count(ctx, list, &count);
    std::vector<std::string> texts;
    for (uint32_t n = 0; n < count; n++) {
        const char *text = "";
        KT_varray__get__sz(ctx, list, n, &text);
        texts.emplace_back(text);
    }
    cli_check(ctx, "");
    return texts;
}

std::vector<KT_vhash *> cli_maps_of(KT_context *ctx, const KT_varray *list)
{
    uint32_t count = 0;
    if (list)
        KT_varray__count(ctx, list, &count);
    std::vector<KT_vhash *> maps(count);
    for (uint32_t n = 0; n < count; n++)
        KT_varray__get__vhash(ctx, list, n, &maps[n]);
    cli_check(ctx, "");
    return maps;
}

std::string cli_text_of(KT_context *ctx, const KT_vhash *map, const char *key)
{
    const char *text = nullptr;
    KT_vhash__check__sz(ctx, map, key, &text);
    cli_check(ctx, key);
    return text ? text : "";
}

std::string cli_harmless_of(KT_context *ctx, const KT_vhash *map, const char *key)
{
    return cli_harmless(cli_text_of(ctx, map, key));
}

bool cli_flag_of(KT_context *ctx, const KT_vhash *map, const char *key)
{
    KT_bool flag = 0;
    KT_vhash__check__bool(ctx, map, key, &flag);
    cli_check(ctx, key);
    return flag;
}

void cli_add_text(KT_context *ctx, KT_vhash *map, const char *key, const char *text)
{
    if (!text)
        return;
    KT_vhash__add__string__sz(ctx, map, key, text);
    cli_check(ctx, key);
}

void cli_add_number(KT_context *ctx, KT_vhash *map, const char *key, int64_t number)
{
    KT_vhash__add__int64(ctx, map, key, number);
    cli_check(ctx, key);
}

KT_vhash *cli_add_map(KT_context *ctx, KT_vhash *map, const char *key)
{
    KT_vhash *inner = nullptr;
    KT_vhash__addnew__vhash(ctx, map, key, &inner);
    cli_check(ctx, key);
    return inner;
}

KT_varray *cli_add_list(KT_context *ctx, KT_vhash *map, const char *key)
{
    KT_varray *list = nullptr;
    KT_vhash__addnew__varray(ctx, map, key, &list);
    cli_check(ctx, key);
    return list;
}

void cli_add_texts(KT_context *ctx, KT_vhash *map, const char *key, const std::vector<std::string> &texts)
{
    KT_varray *list = cli_add_list(ctx, map, key);
    for (const std::string &text : texts) {
        KT_varray__append__string__sz(ctx, list, text.c_str());
        cli_check(ctx, key);
    }
}

KT_vhash *cli_append_map(KT_context *ctx, KT_varray *list)
{
    KT_vhash *map = nullptr;
    KT_varray__appendnew__vhash(ctx, list, &map);
    cli_check(ctx, "");
    return map;
}
