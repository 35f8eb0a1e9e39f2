// Reads a catalogue export, the JSON document that catalogue.sql prints, into catalogue records.
#pragma once

#include "records/host_catalogue.hpp"
#include "json/host_fields.hpp"

// Reads the records of the document, which must outlive the catalogue.
void host_read_catalogue(KT_context *ctx, host_reader &reader, const KT_vhash *document, host_catalogue &catalogue);
