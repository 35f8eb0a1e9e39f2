// Measurements that need a process each.
#pragma once

// Measures reading, writing and walking in processes of their own, which are this program again.
void measure_cold(const char *program);

// What such a process does: prints the nanoseconds of the measurement with that number; its exit code.
int bench_once(const char *which, const char *folder);
