#include "bench_memory.hpp"

#include <malloc.h>
#include <sys/resource.h>

size_t bench_live_bytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

size_t bench_peak_bytes()
{
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<size_t>(usage.ru_maxrss) * 1024;
}
