#include "cli_nearest.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

// How many characters must be inserted, left out, replaced, or swapped with the next one to make one word of the
// other; at work are the last three rows of the table that compares every beginning of a with every beginning of b.
static size_t my_distance(const std::string &a, const std::string &b)
{
    std::vector<size_t> before_last, last, row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); i++) {
        before_last = std::exchange(last, row);
        row[0] = i;
        for (size_t j = 1; j <= b.size(); j++) {
            const bool is_same = kt_equal_bytes_folded(a[i - 1], b[j - 1]);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + !is_same});
            if (i > 1 && j > 1 && kt_equal_bytes_folded(a[i - 1], b[j - 2]) &&
                kt_equal_bytes_folded(a[i - 2], b[j - 1]))
                row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
    }
    return row.back();
}

std::string cli_nearest(const std::string &word, const std::vector<std::string> &words)
{
    static constexpr size_t longest = 100; // nobody mistypes a longer one for another
    if (word.size() > longest)
        return "";
    std::string nearest;
    size_t least = (word.size() + 2) / 3 + 1; // one error in three characters is still a typing error
    for (const std::string &candidate : words) {
        const size_t errors = my_distance(word, candidate);
        if (errors < least) {
            least = errors;
            nearest = candidate;
        }
    }
    return nearest;
}
