// Any bytes, loaded as CSV.
#include "rows_loading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    rows_fuzz("csv", "Rows.csv", data, size);
    return 0;
}
