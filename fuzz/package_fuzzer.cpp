// Any bytes, read as a package.
#include "package_reading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    read_watched({reinterpret_cast<const char *>(data), size});
    return 0;
}
