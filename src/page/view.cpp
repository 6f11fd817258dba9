#include "page/view.h"

#include "page/coded_page.h"

#include <algorithm>

namespace tilepress {
namespace {

/// Orientation 1 to 8, less one, in which bits 0 to 2 tell of the way.
void orient(std::uint32_t orientation, const tp_view& view, ViewPlan& plan) {
    const std::uint32_t way = orientation == 0 ? 1 : orientation;
    plan.turned = way > 4;
    plan.width = plan.turned ? view.out_height : view.out_width;
    plan.height = plan.turned ? view.out_width : view.out_height;
    plan.fromRight = way == 2 || way == 3 || way == 7 || way == 8;
    plan.bottomUp = way == 3 || way == 4 || way == 6 || way == 7;
}

}  // namespace

bool partOfPage(const tp_page_info& page, const g4::PageRect& asked, g4::PageRect& rect) {
    if (asked.left >= page.width || asked.top >= page.height) return false;
    if ((asked.width == 0) != (asked.height == 0)) return false;
    rect = asked;
    if (asked.width == 0) {
        rect.width = page.width - asked.left;
        rect.height = page.height - asked.top;
    }
    return rect.width <= page.width - rect.left && rect.height <= page.height - rect.top;
}

std::uint64_t rowBytes(std::uint32_t format, std::uint32_t width) {
    switch (format) {
    case TP_BITS: return (std::uint64_t{width} + 7) / 8;
    case TP_GREY8: return width;
    default: return 4 * std::uint64_t{width};
    }
}

tp_status planView(const tp_view& view, const tp_page_info& page, const tp_limits& limits, ViewPlan& plan) {
    if (!partOfPage(page, {view.left, view.top, view.width, view.height}, plan.rect) || view.out_width == 0 ||
        view.out_height == 0 || view.mode > TP_NEAREST || view.format > TP_BGRA || view.orientation > 8 ||
        (view.flags & ~std::uint32_t{TP_INVERT}) != 0 || !view.pixels)
        return TP_E_ARGUMENT;
    if (std::max(view.out_width, view.out_height) > kMostPixelsASide) return TP_E_TOO_LARGE;
    const auto stride = static_cast<std::uint64_t>(view.stride < 0 ? -(view.stride + 1) + std::uint64_t{1}
                                                                   : static_cast<std::uint64_t>(view.stride));
    if (view.out_height > 1 && stride < rowBytes(view.format, view.out_width)) return TP_E_ARGUMENT;
    if (limits.max_pixels != 0 && std::uint64_t{view.out_width} * view.out_height > limits.max_pixels)
        return TP_E_LIMIT;
    orient(view.orientation, view, plan);
    plan.mode = view.mode;
    plan.format = view.format;
    plan.blackPaper = page.photometric == TP_BLACK_IS_ZERO;
    plan.invert = (view.flags & TP_INVERT) != 0;
    const bool plain = view.ink == 0 && view.paper == 0;
    plan.ink = plain ? 0xFF000000 : view.ink;
    plan.paper = plain ? 0xFFFFFFFF : view.paper;
    plan.pixels = static_cast<unsigned char*>(view.pixels);
    plan.stride = view.stride;
    return TP_OK;
}

}  // namespace tilepress
