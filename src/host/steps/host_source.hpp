// What was handed in, and reading it with the reader for its kind.
#pragma once

#include "records/host_catalogue.hpp"
#include "steps/host_findings.hpp"
#include "tov_host.h"

#include <span>

// The records of a source, together with what their strings are borrowed from.
struct host_source {
    explicit host_source(KT_context *ctx) : document(ctx)
    {
    }
    kt_owned_vhash document;
    host_catalogue catalogue;
};

void host_read_source(KT_context *ctx, std::span<const tov_host_file> files, const tov_host_options &options,
                      host_findings &findings, host_source &source);
