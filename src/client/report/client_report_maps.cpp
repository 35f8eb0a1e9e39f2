// Reading members of maps that may be absent. Facts about the server are what a document says: where one is of
// another type than it should be, the report fails and names it.
#include "report/client_report.hpp"

#define KT_HERE "src/client/report/client_report_maps"

static void my_read_text(KT_context *ctx, const KT_vhash *map, const char *key, std::string &text)
{
    const char *found = nullptr;
    KT_TRY(KT_vhash__check__sz(ctx, map, key, &found));
    text = found ? found : "";
}

std::string client_report_text(KT_context *ctx, const KT_vhash *map, const char *key)
{
    std::string text;
    if (map && !kt_has_err(ctx))
        my_read_text(ctx, map, key, text);
    return text;
}

void client_report_copy_text(KT_context *ctx, const KT_vhash *from, const char *key, KT_vhash *to, const char *as)
{
    const std::string text = client_report_text(ctx, from, key);
    KT_RETURN_IF_FAILED;
    if (!text.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, to, as, text.c_str()));
}

static void my_read_texts(KT_context *ctx, const KT_vhash *map, const char *key, std::vector<std::string> &texts)
{
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, map, key, &list));
    if (list)
        KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *text = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, list, n, &text));
        texts.emplace_back(text);
    }
}

std::vector<std::string> client_report_texts(KT_context *ctx, const KT_vhash *map, const char *key)
{
    std::vector<std::string> texts;
    if (map && !kt_has_err(ctx))
        my_read_texts(ctx, map, key, texts);
    return texts;
}

static void my_read_maps(KT_context *ctx, const KT_vhash *map, const char *key, std::vector<KT_vhash *> &maps)
{
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, map, key, &list));
    if (list)
        KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *item = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, list, n, &item));
        maps.push_back(item);
    }
}

std::vector<KT_vhash *> client_report_maps(KT_context *ctx, const KT_vhash *map, const char *key)
{
    std::vector<KT_vhash *> maps;
    if (map && !kt_has_err(ctx))
        my_read_maps(ctx, map, key, maps);
    return maps;
}
