// Any bytes, read as a catalogue export: it is imported or refused in order, and of a schema that comes out of it the
// client creates the tables and triggers, and nothing else, or refuses it in order.
#include "watched_creation.hpp"

#include "tov_host.h"

#include <string>

namespace {

void format_findings(KT_context *ctx, const KT_varray *findings)
{
    uint32_t count = 0;
    KT_varray__count(ctx, findings, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *finding = nullptr;
        KT_string *line = nullptr;
        KT_varray__get__vhash(ctx, findings, n, &finding);
        KT_string__alloc(ctx, &line);
        tov_host__format_finding(ctx, finding, line);
        check(!KT_context__has_err(ctx), "a finding cannot be shown");
        for (const char *at = KT_string__sz(line); *at; at++)
            check(static_cast<unsigned char>(*at) >= ' ', "a control character in a finding");
        KT_string__free(ctx, line);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    tov_host_options options{};
    options.txid = 7;
    options.verbose = 1;
    options.source = TOV_HOST_SOURCE_JSON;
    tov_schema *schema = nullptr;
    KT_varray *findings = nullptr;
    tov_host__import(ctx, bytes.data(), bytes.size(), &options, &schema, &findings);
    const bool is_imported = ended_well(ctx);
    check(is_imported == (schema != nullptr) && (is_imported || !findings), "results and failure");
    if (schema)
        create_watched(ctx, schema, false);
    if (findings)
        format_findings(ctx, findings);
    KT_varray__free(ctx, findings);
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return 0;
}
