// Any bytes, read as a catalogue export: it is imported or refused in order, and of a schema that comes out of it the
// client creates the tables and triggers, and nothing else, or refuses it in order.
#include "watched_import.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    tov_host_options options{};
    options.txid = 7;
    options.verbose = 1;
    options.source = TOV_HOST_SOURCE_JSON;
    import_watched(ctx, {{"export.json", bytes.data(), bytes.size()}}, options);
    KT_context__free(ctx);
    return 0;
}
