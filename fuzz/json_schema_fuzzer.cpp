// Any JSON text, read as a schema: what the reader accepts is written and read back the same, and every operation
// that reads a schema answers or fails in order. A text {"schema":...,"host_internals":...} gives both trees.
#include "read_everything.hpp"

#include <cstdlib>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

std::string json_of(KT_context *ctx, const KT_vhash *map)
{
    KT_string *json = nullptr;
    KT_string__alloc(ctx, &json);
    KT_vhash__to_json(ctx, map, json);
    check(!kt_has_err(ctx));
    std::string text = KT_string__sz(json);
    KT_string__free(ctx, json);
    return text;
}

KT_vhash *parsed(KT_context *ctx, const std::string &json)
{
    KT_vhash *map = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &map, json.c_str());
    check(!kt_has_err(ctx) && map);
    return map;
}

void check_round_trip(KT_context *ctx, const KT_vhash *map)
{
    const std::string once = json_of(ctx, map);
    KT_vhash *again = parsed(ctx, once);
    check(json_of(ctx, again) == once);
    KT_vhash__free(ctx, again);
}

// A copy of a member that is a map; null for none.
KT_vhash *copied_member(KT_context *ctx, const KT_vhash *map, const char *key)
{
    KT_vhash *member = nullptr;
    KT_vhash__check__vhash(ctx, map, key, &member);
    KT_context__err_reset(ctx);
    return member ? parsed(ctx, json_of(ctx, member)) : nullptr;
}

void read_schema(KT_context *ctx, tov_schema *schema)
{
    reading r{ctx, schema};
    read_everything(r);
    check(r.complaint.empty());
    check(!kt_has_err(ctx));
}

void read_both_trees(KT_context *ctx, const KT_vhash *map)
{
    KT_vhash *document = copied_member(ctx, map, "schema");
    if (!document)
        return;
    KT_vhash *host_internals = copied_member(ctx, map, "host_internals");
    tov_schema *schema = nullptr;
    tov_schema__alloc__vhash(ctx, &document, &host_internals, &schema);
    check(!kt_has_err(ctx) && !document && !host_internals);
    read_schema(ctx, schema);
    tov_schema__nullfree(ctx, &schema);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::string text(reinterpret_cast<const char *>(data), size);
    KT_vhash *map = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &map, text.c_str());
    tov_schema *schema = nullptr;
    if (kt_has_err(ctx)) {
        check(!map && KT_context__err_description(ctx)[0] != '\0');
        KT_context__err_reset(ctx);
        tov_schema__from_json(ctx, text.c_str(), &schema);
        check(kt_has_err(ctx) && !schema);
    } else {
        check_round_trip(ctx, map);
        read_both_trees(ctx, map);
        tov_schema__from_json(ctx, text.c_str(), &schema);
        check(!kt_has_err(ctx) && schema);
        read_schema(ctx, schema);
        tov_schema__nullfree(ctx, &schema);
    }
    KT_vhash__free(ctx, map);
    KT_context__free(ctx);
    return 0;
}
