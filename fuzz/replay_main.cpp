// Runs a fuzz target once on each file named on the command line, where no fuzzing engine drives it.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "no files to replay\n");
        return 1;
    }
    for (int i = 1; i < argc; i++) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", argv[i]);
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    std::printf("replayed %d files\n", argc - 1);
    return 0;
}
