// Bytes in use, counted at the allocator.
#pragma once

#include <cstddef>

// Bytes taken through malloc and not given back, the allocator's own overhead included.
size_t bench_live_bytes();
// The most memory that the process has held, in bytes.
size_t bench_peak_bytes();
