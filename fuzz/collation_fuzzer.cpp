// Any three strings, UTF-8 or not, in any of a few collations: comparing gives one order of them, and blanks at the end
// change nothing. The first byte chooses the collation, the two after it say where the strings are cut.
#include "collate/ext_collation.hpp"

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void check(bool holds)
{
    if (!holds)
        std::abort();
}

int sign(int number)
{
    return (number > 0) - (number < 0);
}

std::vector<std::unique_ptr<ext_collation>> open_all()
{
    std::vector<std::unique_ptr<ext_collation>> collations;
    for (const char *name :
         {"Latin1_General_CI_AS", "Latin1_General_CS_AS", "Latin1_General_CI_AI", "Latin1_General_CS_AI",
          "Latin1_General_90_CI_AS", "Latin1_General_100_CI_AS_KS_WS_SC", "Latin1_General_BIN", "Latin1_General_BIN2",
          "SQL_Latin1_General_CP1_CI_AS.varchar", "SQL_Latin1_General_CP1_CI_AI.varchar", "Japanese_CI_AS",
          "Japanese_XJIS_140_CS_AS_KS_WS_VSS", "Korean_Wansung_CI_AS_WS", "Thai_CI_AS", "Turkish_100_CI_AS",
          "Danish_Norwegian_CS_AS", "Traditional_Spanish_CI_AS", "Chinese_PRC_Stroke_100_CI_AS"})
        collations.push_back(ext_open_collation(name));
    return collations;
}

// Each string in a block of its own size, so that the sanitizer sees any look past the end.
std::array<std::vector<char>, 3> cut(const uint8_t *data, size_t size, size_t first, size_t second)
{
    const size_t a = first % (size + 1);
    const size_t b = a + second % (size - a + 1);
    return {std::vector<char>(data, data + a), std::vector<char>(data + a, data + b),
            std::vector<char>(data + b, data + size)};
}

std::string_view view(const std::vector<char> &text)
{
    return {text.data(), text.size()};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const auto collations = open_all();
    if (size < 3)
        return 0;
    ext_collation &collation = *collations[data[0] % collations.size()];
    const auto texts = cut(data + 3, size - 3, data[1], data[2]);
    int results[3][3];
    for (size_t n = 0; n < 3; n++) {
        for (size_t m = 0; m < 3; m++)
            results[n][m] = sign(ext_compare(collation, view(texts[n]), view(texts[m])));
        std::string padded(view(texts[n]));
        padded += "  ";
        check(ext_compare(collation, padded, view(texts[n])) == 0);
        check(ext_compare(collation, view(texts[n]), padded) == 0);
    }
    for (size_t a = 0; a < 3; a++) {
        check(results[a][a] == 0);
        for (size_t b = 0; b < 3; b++) {
            check(results[a][b] == -results[b][a]);
            for (size_t c = 0; c < 3; c++)
                check(results[a][b] > 0 || results[b][c] > 0 || results[a][c] <= 0); // a <= b and b <= c: a <= c
        }
    }
    return 0;
}
