// The statement of the record in pieces: of the document, which may be large, no more than a table is held at a time.
#include "create/client_record.hpp"

#define KT_HERE "src/client/create/client_record_pieces"

// The document's own members, and those of its "tbls", are handed out one by one.
static constexpr int split_levels = 2;

namespace {
struct piece_writer {
    client_take take;
    void *data;
    std::string piece = {};
};
} // namespace

// A part of the document, as it stands in a literal.
static void my_hand_out(KT_context *ctx, piece_writer &w, std::string_view json)
{
    w.piece.clear();
    for (const char c : json)
        w.piece.append(c == '\'' ? 2 : 1, c);
    KT_TRY(w.take(ctx, w.data, w.piece.c_str()));
}

static void my_hand_out_whole(KT_context *ctx, piece_writer &w, const KT_vhash *map)
{
    kt_owned_string json{ctx};
    KT_TRY(KT_string__alloc(ctx, json.out()));
    KT_TRY(KT_vhash__to_json(ctx, map, json));
    KT_TRY(my_hand_out(ctx, w, KT_string__sz(json)));
}

static void my_add(KT_context *ctx, KT_vhash *map, const char *key, const KT_variant &value) noexcept
{
    const char *text = nullptr;
    switch (value.type) {
    case KT_VARIANT_BOOL:
        return KT_vhash__add__bool(ctx, map, key, value.as.boolean);
    case KT_VARIANT_INT64:
        return KT_vhash__add__int64(ctx, map, key, value.as.int64);
    case KT_VARIANT_DOUBLE:
        return KT_vhash__add__double(ctx, map, key, value.as.real);
    case KT_VARIANT_STRING:
        KT_TRY(KT_variant__get__sz(ctx, &value, &text));
        return KT_vhash__add__string__sz(ctx, map, key, text);
    default: // a map, whose own text takes the place
        return KT_vhash__add__null(ctx, map, key);
    }
}

// A key and a value that is not a map, as JSON has them: a map of the pair alone without its braces.
static void my_hand_out_pair(KT_context *ctx, piece_writer &w, const char *before, const char *key,
                             const KT_variant &value)
{
    kt_owned_vhash pair{ctx};
    kt_owned_string json{ctx};
    KT_TRY(KT_vhash__alloc(ctx, pair.out()));
    KT_TRY(my_add(ctx, pair, key, value));
    KT_TRY(KT_string__alloc(ctx, json.out()));
    KT_TRY(KT_vhash__to_json(ctx, pair, json));
    std::string_view text = KT_string__sz(json);
    text.remove_prefix(1);
    text.remove_suffix(value.type == KT_VARIANT_VHASH ? std::string_view("null}").size() : 1);
    KT_TRY(w.take(ctx, w.data, before));
    KT_TRY(my_hand_out(ctx, w, text));
}

static void my_has_list(KT_context *ctx, const KT_vhash *map, uint32_t count, bool &has)
{
    has = false;
    for (uint32_t n = 0; n < count && !has; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, map, n, &key, &value));
        has = value->type == KT_VARIANT_VARRAY;
    }
}

static void my_hand_out_map(KT_context *ctx, piece_writer &w, const KT_vhash *map, int levels)
{
    uint32_t count = 0;
    bool has_list = false;
    KT_TRY(KT_vhash__count(ctx, map, &count));
    KT_TRY(my_has_list(ctx, map, count, has_list));
    if (levels == 0 || count == 0 || has_list) {
        KT_TRY(my_hand_out_whole(ctx, w, map));
        return;
    }
    for (uint32_t n = 0; n < count; n++) {
        const char *key = nullptr;
        const KT_variant *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair(ctx, map, n, &key, &value));
        KT_TRY(my_hand_out_pair(ctx, w, n ? "," : "{", key, *value));
        if (value->type == KT_VARIANT_VHASH)
            KT_TRY(my_hand_out_map(ctx, w, value->as.vhash, levels - 1));
    }
    KT_TRY(w.take(ctx, w.data, "}"));
}

static std::string my_options(const client_plan &plan)
{
    const std::pair<const char *, int32_t> options[] = {
        {"' AS document, ", plan.with_rules ? TOV_CLIENT_RULES_SERVER : TOV_CLIENT_RULES_BASIC},
        {" AS rules, ", plan.indexes},
        {" AS indexes, ", plan.with_collations ? TOV_CLIENT_COLLATIONS_SERVER : TOV_CLIENT_COLLATIONS_BUILTIN},
        {" AS collations, ", plan.with_views},
        {" AS views, ", plan.with_constraints ? TOV_CLIENT_CHECKS_CONSTRAINTS : TOV_CLIENT_CHECKS_TRIGGERS},
    };
    std::string text;
    for (const auto &[before, value] : options)
        text.append(before).append(std::to_string(value));
    return text + " AS checks";
}

void client_stream_record(KT_context *ctx, tov_schema *schema, const client_plan &plan, client_take take, void *data)
{
    const std::string begin = "CREATE TABLE " + client_quoted(client_record_name(plan)) + " AS SELECT 1 AS version, '";
    const std::string end = my_options(plan);
    const KT_vhash *document = nullptr;
    piece_writer w{take, data};
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(take(ctx, data, begin.c_str()));
    KT_TRY(my_hand_out_map(ctx, w, document, split_levels));
    KT_TRY(take(ctx, data, end.c_str()));
}
