// Reads a package (.dacpac, .bacpac) into catalogue records.
#pragma once

#include "records/host_catalogue.hpp"
#include "steps/host_findings.hpp"

#include <string_view>

// What no honest package comes near: a file from outside may have been made to fill memory or to take hours.
struct host_package_limits {
    uint64_t entries = 1'000'000;
    uint64_t xml_bytes = uint64_t{1} << 30;   // of one XML file, unpacked
    uint64_t xml_ratio = 250;                 // so many times its packed size; real models are shrunk 15 to 40 times
    uint64_t free_bytes = uint64_t{16} << 20; // an XML file of this size may be shrunk as much as it likes
    uint32_t xml_depth = 100;
};

// Whether the bytes begin as a package does.
bool host_is_package(std::string_view bytes);

void host_read_package(KT_context *ctx, std::string_view bytes, host_findings &findings, host_catalogue &catalogue,
                       const host_package_limits &limits = {});
