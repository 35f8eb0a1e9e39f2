// The page of a report, which the build makes of the files in page/ (CMakeLists.txt): pieces that follow each other,
// with the data after the first one.
#pragma once

#include <cstddef>

extern const char *const client_report_page[];
extern const size_t client_report_page_count;
