// Bilevel images changed in place: inversion and straight lines.

#include "kernels/bit_rows.h"
#include "model/image_kinds.h"

#include <algorithm>
#include <cstdint>

namespace tilepress {
namespace {

/// One coordinate of a line: where it starts, which way it goes and how far.
struct Axis {
    std::int64_t start, step;
    std::uint64_t length;

    Axis(std::int32_t from, std::int32_t to)
        : start(from), step(to < from ? -1 : 1), length(static_cast<std::uint64_t>(step * (std::int64_t{to} - from))) {}
};

/// Calls plot(major, minor) for the points with 0 <= major < majorEnd and 0 <= minor < minorEnd.
///
/// Along the longer axis every coordinate has one point. The other axis has advanced
/// ceil((shorter * i - longer / 2) / longer) steps at point i: with the remainder of the division kept, it
/// has stepped once more where that exceeds half of `longer`. So a line starts anywhere without walking there.
template <class Plot>
void walkLine(const Axis& major, std::int64_t majorEnd, const Axis& minor, std::int64_t minorEnd, Plot plot) {
    const auto pointsTo = [&](std::int64_t coordinate) { return (coordinate - major.start) * major.step; };
    const std::int64_t nearest = pointsTo(major.step > 0 ? 0 : majorEnd - 1);
    const std::int64_t farthest = pointsTo(major.step > 0 ? majorEnd - 1 : 0);
    const std::int64_t first = std::max<std::int64_t>(nearest, 0);
    const std::int64_t last = std::min(farthest, static_cast<std::int64_t>(major.length));
    if (first > last) return;

    const std::uint64_t longer = std::max<std::uint64_t>(major.length, 1), half = longer / 2;
    const std::uint64_t travelled = minor.length * static_cast<std::uint64_t>(first);
    std::int64_t steps = static_cast<std::int64_t>(travelled / longer);
    std::uint64_t rest = travelled % longer;
    for (std::int64_t i = first; i <= last; ++i) {
        const std::int64_t along = minor.start + minor.step * (steps + (rest > half ? 1 : 0));
        if (along >= 0 && along < minorEnd) plot(major.start + major.step * i, along);
        rest += minor.length;
        if (rest >= longer) {
            rest -= longer;
            ++steps;
        }
    }
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

IImg* CImg1::invert() {
    if (hasPixels(*this)) complement(pixels, totalBytes);
    else imgRaise(ImgErrBadArgument);
    return this;
}

void CImg1::drawLines(IntPtT* from, IntPtT* to, bool clear) {
    if (!from || !to || !hasPixels(*this)) return;
    const bool inOrder = from->x < to->x;
    const IntPtT start = inOrder ? *from : *to, end = inOrder ? *to : *from;
    const Axis columns(start.x, end.x), rows(start.y, end.y);
    const auto plot = [&](std::int64_t x, std::int64_t y) {
        unsigned char& byte = pixels[static_cast<std::size_t>(y) * bytesPerLine + static_cast<std::size_t>(x / 8)];
        const unsigned bit = 0x80u >> x % 8;
        byte = static_cast<unsigned char>(clear ? byte & ~bit : byte | bit);
    };
    if (rows.length < columns.length) walkLine(columns, getWidth(), rows, getHeight(), plot);
    else walkLine(rows, getHeight(), columns, getWidth(), [&](std::int64_t y, std::int64_t x) { plot(x, y); });
}
