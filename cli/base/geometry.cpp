#include "base/geometry.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <utility>

namespace {

[[noreturn]] void malformed(const std::string& text, const char* what) {
    throw Failure(Exit::failed, fmt::format("'{}' is not {}", text, what));
}

/// Whether `text` is exactly numbers.size() numbers with `separator` between them.
template <class Number>
bool parseNumbers(const std::string& text, char separator, std::span<Number> numbers) {
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && (at == end || *at++ != separator)) return false;
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc{}) return false;
        at = next;
    }
    return at == end;
}

std::uint32_t pixelCount(double size) {
    // Products such as 0.1 * 110 may lie a hair above a whole number.
    const double whole = std::ceil(size - 1e-6);
    if (!(whole <= 4294967295.0)) throw Failure(Exit::tooLarge, "the picture asked for is too large");
    return static_cast<std::uint32_t>(std::max(whole, 1.0));
}

}  // namespace

Size parseSize(const std::string& text) {
    std::uint32_t n[2];
    if (!parseNumbers<std::uint32_t>(text, 'x', n) || n[0] == 0 || n[1] == 0) malformed(text, "a size such as 640x480");
    return {n[0], n[1]};
}

Rect parseRect(const std::string& text) {
    std::uint32_t n[4];
    if (!parseNumbers<std::uint32_t>(text, ',', n) || n[2] == 0 || n[3] == 0)
        malformed(text, "a rectangle such as 100,200,640,480");
    return {n[0], n[1], n[2], n[3]};
}

double parseFactor(const std::string& text) {
    double n[2] = {0, 1};
    const bool percent = text.ends_with('%');
    const bool good = percent ? parseNumbers<double>(text.substr(0, text.size() - 1), '/', std::span(n, 1))
                              : parseNumbers<double>(text, '/', std::span(n, 1)) || parseNumbers<double>(text, '/', n);
    const double factor = percent ? n[0] / 100 : n[0] / n[1];
    if (!good || !(factor > 0) || !std::isfinite(factor)) malformed(text, "a factor such as 0.1, 1/10 or 10%");
    return factor;
}

void requireInside(const Rect& rect, Size page) {
    if (rect.x < page.width && rect.width <= page.width - rect.x && rect.y < page.height &&
        rect.height <= page.height - rect.y)
        return;
    throw Failure(Exit::failed, fmt::format("the rectangle {},{},{},{} is not within the page of {} x {} pixels",
                                            rect.x, rect.y, rect.width, rect.height, page.width, page.height));
}

Size shownSize(Size stored, std::uint32_t orientation) {
    return isTurned(orientation) ? Size{stored.height, stored.width} : stored;
}

Rect storedRect(const Rect& shown, Size stored, std::uint32_t orientation) {
    Rect rect = shown;
    if (isTurned(orientation)) {
        std::swap(rect.x, rect.y);
        std::swap(rect.width, rect.height);
    }
    const bool fromRight = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool fromBottom = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    if (fromRight) rect.x = stored.width - rect.x - rect.width;
    if (fromBottom) rect.y = stored.height - rect.y - rect.height;
    return rect;
}

Size scaled(Size from, double factor) { return {pixelCount(from.width * factor), pixelCount(from.height * factor)}; }

Size fitted(Size from, Size box) {
    const double factor = std::min(1.0 * box.width / from.width, 1.0 * box.height / from.height);
    const auto side = [factor](std::uint32_t length, std::uint32_t most) {
        return static_cast<std::uint32_t>(std::clamp(std::round(length * factor), 1.0, 1.0 * most));
    };
    return {side(from.width, box.width), side(from.height, box.height)};
}
