// Any bytes, loaded as a file of bcp's character form.
#include "rows_loading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    rows_fuzz("bcp", "Rows.dat", data, size);
    return 0;
}
