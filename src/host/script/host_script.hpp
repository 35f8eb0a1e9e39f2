// Reads T-SQL scripts into catalogue records: what tables they leave behind in a database that was empty before.
#pragma once

#include "records/host_catalogue.hpp"
#include "steps/host_findings.hpp"

#include <span>

struct host_script_file {
    std::string_view name;
    std::string_view bytes;
};

// A placeholder and what takes its place. A name of letters, digits and underscores is a variable, written $(name);
// any other, such as @schema or {owner}, is replaced as a whole.
struct host_script_define {
    std::string_view name;
    std::string_view value;
};

struct host_script_options {
    const char *encoding = nullptr; // of files without byte-order mark, by the names of iconv; null: UTF-8 or UTF-16
    std::span<const host_script_define> defines;
};

// Reads the files in an order that their references allow: by name, except that what a file refers to is read first.
//
// Statements that cannot be read do not stop it: at the end it fails with KT_ERR_UNEXPECTED_VALUE and a description
// that lists them, one line for each, with file, line and column. Statements that can be read but may have changed a
// table in a way that is not known are findings.
void host_read_scripts(KT_context *ctx, std::span<const host_script_file> files, const host_script_options &options,
                       host_findings &findings, host_catalogue &catalogue);
