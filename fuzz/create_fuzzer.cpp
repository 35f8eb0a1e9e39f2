// Any JSON text, read as a schema document from outside: the client refuses it in order, or creates its tables and
// triggers and nothing else. SQLite may refuse a document too, such as one with two identity columns in a table.
#include "watched_creation.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::string json(reinterpret_cast<const char *>(data), size);
    tov_schema *schema = nullptr;
    tov_schema__from_json(ctx, json.c_str(), &schema);
    if (ended_well(ctx))
        create_watched(ctx, schema, true);
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return 0;
}
