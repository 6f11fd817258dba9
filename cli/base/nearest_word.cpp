#include "base/nearest_word.h"

#include <algorithm>
#include <numeric>

namespace {

/// Letters to be changed, added or dropped, and neighbours to be swapped, before `a` is `b`.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> before, last(b.size() + 1), now(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        now[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            now[j + 1] = std::min({last[j] + (a[i] != b[j]), last[j + 1] + 1, now[j] + 1});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j])
                now[j + 1] = std::min(now[j + 1], before[j - 1] + 1);
        }
        before = last;
        last.swap(now);
    }
    return last[b.size()];
}

}  // namespace

std::string nearestWord(const std::string& text, const std::vector<std::string>& words) {
    std::string nearest;
    std::size_t least = text.size() / 2 + 1;
    for (const std::string& word : words)
        if (const std::size_t changes = distance(text, word); changes < least) {
            least = changes;
            nearest = word;
        }
    return nearest;
}
