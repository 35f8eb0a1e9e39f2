// Reads the file of a catalogue export: the document out of what tools made of it, then its records.
#pragma once

#include "records/host_catalogue.hpp"
#include "steps/host_findings.hpp"

#include <string_view>

// The catalogue's strings are those of the document, which must outlive it. With report_unknown_fields each field that
// is not known is a finding, once.
void host_read_export(KT_context *ctx, std::string_view bytes, bool report_unknown_fields, kt_owned_vhash &document,
                      host_findings &findings, host_catalogue &catalogue);
