// What must hold of an import, whatever the source: it fails in order, or gives a schema of which the client creates
// the tables and triggers, and nothing else, or which the client refuses in order. Findings can be shown.
#pragma once

#include "watched_creation.hpp"

#include "tov_host.h"

#include <string>
#include <vector>

inline void format_findings(KT_context *ctx, const KT_varray *findings)
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

// The larger schemas that a few bytes can stand for, such as those of a packed model, take too long to create.
inline bool is_small(KT_context *ctx, tov_schema *schema)
{
    constexpr uint32_t most_tbls = 50;
    uint32_t count = 0;
    tov_schema__count_tbls(ctx, schema, &count);
    return count <= most_tbls;
}

inline void import_watched(KT_context *ctx, const std::vector<tov_host_file> &files, const tov_host_options &options)
{
    tov_schema *schema = nullptr;
    KT_varray *findings = nullptr;
    tov_host__import_files(ctx, files.data(), files.size(), &options, &schema, &findings);
    const bool is_imported = ended_well(ctx);
    check(is_imported == (schema != nullptr) && (is_imported || !findings), "results and failure");
    if (schema && is_small(ctx, schema))
        create_watched(ctx, schema, false);
    if (findings)
        format_findings(ctx, findings);
    KT_varray__free(ctx, findings);
    tov_schema__nullfree(ctx, &schema);
}
