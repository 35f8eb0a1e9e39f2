// Any bytes, read as the model of a package that is sound otherwise. The first one says whether the package comes from
// a server or from a project.
#include "package_builder.hpp"
#include "package_reading.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return -1;
    const std::string model(reinterpret_cast<const char *>(data) + 1, size - 1);
    read_watched(a_zip({{"model.xml", model}, {"Origin.xml", an_origin(model, *data == 's')}}, false));
    return 0;
}
