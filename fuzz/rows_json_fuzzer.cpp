// Any bytes, loaded as JSON.
#include "rows_loading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    rows_fuzz("json", "Rows.json", data, size);
    return 0;
}
