// What a package says about itself, beside its model.
#pragma once

#include "package/host_zip.hpp"

struct host_origin {
    bool is_from_server = false; // extracted from one, rather than built from a project
    std::string model_checksum;  // SHA-256 in hexadecimal; empty when the package has none
    int64_t row_count = -1;      // of all row parts together; -1: not said
    std::string database;        // empty when not said
};

void host_read_origin(KT_context *ctx, host_zip &package, const host_package_limits &limits, host_origin &origin);
