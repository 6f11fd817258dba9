#include "base/output_pattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace {

constexpr std::string_view kDigits = "0123456789";

/// The digits at the beginning, at most two: no name is padded to more.
std::size_t widthDigits(std::string_view text) {
    return std::min<std::size_t>(std::min(text.find_first_not_of(kDigits), text.size()), 2);
}

}  // namespace

OutputPattern::OutputPattern(const std::string& text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        std::size_t used = addPlace(rest);
        if (used == 0) {
            used = std::max<std::size_t>(std::min(rest.find_first_of("%{", 1), rest.size()), 1);
            addText(rest.substr(0, used));
        }
        rest.remove_prefix(used);
    }
}

void OutputPattern::addText(std::string_view text) {
    if (parts_.empty() || parts_.back().kind != Part::Kind::text) parts_.emplace_back();
    parts_.back().text += text;
}

/// Adds the place that the text begins with; the result is how long it is, 0 when there is none.
std::size_t OutputPattern::addPlace(std::string_view rest) {
    using Kind = Part::Kind;
    const auto addPage = [this](std::string_view width) {
        parts_.push_back({Kind::page, fmt::format("{{:{}}}", width)});
        namesPages_ = true;
    };
    if (rest.starts_with("%%")) {
        addText("%");
        return 2;
    }
    if (rest[0] == '%') {
        const std::size_t digits = widthDigits(rest.substr(1));
        if (rest.substr(1 + digits, 1) != "d") return 0;
        addPage(rest.substr(1, digits));
        return digits + 2;
    }
    const std::pair<std::string_view, Kind> places[] = {
        {"{name}", Kind::name}, {"{ext}", Kind::ending}, {"{dir}", Kind::folder}};
    for (const auto& [word, kind] : places) {
        if (!rest.starts_with(word)) continue;
        parts_.push_back({kind, {}});
        return word.size();
    }
    if (!rest.starts_with("{page}")) return 0;
    addPage("");
    return 6;
}

std::string OutputPattern::expanded(const std::string& input, unsigned page) const {
    const std::size_t slash = input.find_last_of('/');
    const std::string file = slash == std::string::npos ? input : input.substr(slash + 1);
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : input.substr(0, slash);
    const std::size_t dot = file.find_last_of('.');
    const bool ends = dot != std::string::npos && dot > 0;
    std::string name;
    for (const Part& part : parts_) {
        switch (part.kind) {
        case Part::Kind::text: name += part.text; break;
        case Part::Kind::name: name += file.substr(0, ends ? dot : file.size()); break;
        case Part::Kind::ending: name += ends ? file.substr(dot + 1) : ""; break;
        case Part::Kind::folder: name += folder; break;
        case Part::Kind::page: name += fmt::format(fmt::runtime(part.text), page);
        }
    }
    return name;
}
