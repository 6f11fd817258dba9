#include "base/page_list.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <unordered_set>

namespace {

constexpr unsigned kLast = std::numeric_limits<unsigned>::max();

[[noreturn]] void refuse(std::string_view text) {
    throw Failure(Exit::failed,
                  fmt::format("'{}' is no list of pages, which are numbered from 1, such as 1-3,7,last or all", text));
}

unsigned pageNumber(std::string_view word, std::string_view text) {
    if (word == "last") return kLast;
    unsigned number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number == 0 || number == kLast) refuse(text);
    return number;
}

}  // namespace

PageList::PageList(const std::string& text) : text_(text) {
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        const std::string_view part = std::string_view(text).substr(at, comma - at);
        const std::size_t dash = part.find('-');
        if (part == "all") ranges_.emplace_back(1, kLast);
        else if (dash == std::string_view::npos) ranges_.emplace_back(pageNumber(part, text), pageNumber(part, text));
        else ranges_.emplace_back(pageNumber(part.substr(0, dash), text), pageNumber(part.substr(dash + 1), text));
        if (ranges_.back().first > ranges_.back().second) refuse(text);
        at = comma + 1;
    }
}

unsigned PageList::onlyPage() const {
    const auto [first, last] = ranges_[0];
    return ranges_.size() == 1 && first == last && last != kLast ? first : 0;
}

std::vector<unsigned> PageList::of(unsigned count) const {
    std::vector<unsigned> pages;
    std::unordered_set<unsigned> seen;
    for (auto [first, last] : ranges_) {
        if (first == kLast) first = count;
        if (last == kLast) last = count;
        const unsigned missing = first > count ? first : last;
        if (missing > count) throw Failure(Exit::failed, fmt::format("no page {}: the file has {}", missing, count));
        for (unsigned page = first; page <= last; ++page)
            if (seen.insert(page).second) pages.push_back(page);
    }
    return pages;
}
