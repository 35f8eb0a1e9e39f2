// Any bytes, loaded as an INSERT script.
#include "rows_loading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    rows_fuzz("insert", "Rows.sql", data, size);
    return 0;
}
