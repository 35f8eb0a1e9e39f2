// Any bytes, loaded as bcp's native form.
#include "rows_loading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    rows_fuzz("native", "Rows.bcp", data, size);
    return 0;
}
