#pragma once

// Pages of the plain C interface for tests, cut from pictures written as text, and views of them by definition.

#include "kernels/grey_maps.h"
#include "support/g4_images.h"
#include "tilepress/page.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace support {

struct ReleasePage {
    void operator()(tp_page* page) const { tp_page_release(page); }
};
using Page = std::unique_ptr<tp_page, ReleasePage>;

/// Coded black is '1'; `tiles` are plain bytes and stay where they are.
struct PageSource {
    Picture picture;
    tp_page_info info{};
    std::vector<Bytes> tiles;

    PageSource(Picture coded, std::uint32_t tileWidth, std::uint32_t tileHeight, std::uint32_t photometric = 0)
        : picture(std::move(coded)) {
        info.size = sizeof info;
        info.width = static_cast<std::uint32_t>(picture.width);
        info.height = static_cast<std::uint32_t>(picture.height);
        info.tile_width = tileWidth;
        info.tile_height = tileHeight;
        info.photometric = photometric;
        for (const Bytes& tile :
             tilesOf(picture, tileWidth ? tileWidth : info.width, tileHeight ? tileHeight : info.height))
            tiles.push_back(exchanged(tile));
    }
    tp_status open(Page& page) const {
        std::vector<tp_coded> coded;
        for (const Bytes& tile : tiles) coded.push_back({tile.data(), tile.size()});
        tp_page* made = nullptr;
        const tp_status status = tp_page_open(&info, coded.data(), coded.size(), &made);
        page.reset(made);
        return status;
    }
    Page open() const {
        Page page;
        EXPECT_EQ(open(page), TP_OK);
        return page;
    }
    bool isInk(std::size_t x, std::size_t y) const {
        return (picture.at(x, y) != 0) != (info.photometric == TP_BLACK_IS_ZERO);
    }
};

inline Bytes withBitsReversed(Bytes bytes) {
    for (unsigned char& byte : bytes) {
        unsigned turned = 0;
        for (unsigned bit = 0; bit < 8; ++bit) turned |= (byte >> bit & 1u) << (7 - bit);
        byte = static_cast<unsigned char>(turned);
    }
    return bytes;
}

inline tp_view viewOf(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height,
                      std::uint32_t outWidth, std::uint32_t outHeight, std::uint32_t mode, std::uint32_t format) {
    tp_view view{};
    view.size = sizeof view;
    view.left = left;
    view.top = top;
    view.width = width;
    view.height = height;
    view.out_width = outWidth;
    view.out_height = outHeight;
    view.mode = mode;
    view.format = format;
    return view;
}

/// A picture's pixels between guards, upwards in memory or downwards.
struct Canvas {
    static constexpr unsigned char kGuard = 0xA5;
    Bytes bytes;
    std::size_t rowBytes, stride;
    std::uint32_t rows;
    bool upwards;

    Canvas(tp_view& view, std::size_t gap, bool fromBottom) : rows(view.out_height), upwards(fromBottom) {
        const std::size_t width = view.out_width;
        rowBytes = view.format == TP_BITS ? (width + 7) / 8 : view.format == TP_GREY8 ? width : 4 * width;
        stride = rowBytes + gap;
        bytes.assign(stride * rows + 2 * gap + 1, kGuard);
        view.pixels = row(0);
        view.stride = upwards ? -static_cast<std::ptrdiff_t>(stride) : static_cast<std::ptrdiff_t>(stride);
    }
    unsigned char* row(std::uint32_t y) { return bytes.data() + 1 + (upwards ? rows - 1 - y : y) * stride; }
    Bytes pixels() {
        Bytes all;
        for (std::uint32_t y = 0; y < rows; ++y) all.insert(all.end(), row(y), row(y) + rowBytes);
        return all;
    }
    /// Whether nothing but rows has been written.
    bool isGuarded() {
        Bytes rest = bytes;
        for (std::uint32_t y = 0; y < rows; ++y) {
            const std::size_t at = static_cast<std::size_t>(row(y) - bytes.data());
            std::fill_n(rest.begin() + static_cast<std::ptrdiff_t>(at), rowBytes, kGuard);
        }
        return std::all_of(rest.begin(), rest.end(), [](unsigned char byte) { return byte == kGuard; });
    }
};

/// The picture's tones by definition, pixel by pixel: 0 ink, 255 paper.
class Model {
public:
    Model(const PageSource& page, const tp_view& view) : page_(page), view_(view), turned_(view.orientation > 4) {
        width_ = turned_ ? view.out_height : view.out_width;
        height_ = turned_ ? view.out_width : view.out_height;
        for (std::uint32_t y = 0; y < height_; ++y)
            for (std::uint32_t x = 0; x < width_; ++x) upright_.push_back(tone(x, y));
    }
    unsigned at(std::uint32_t x, std::uint32_t y) const {
        const std::uint32_t right = width_ - 1, bottom = height_ - 1;
        switch (view_.orientation) {
        case 2: return upright(right - x, y);
        case 3: return upright(right - x, bottom - y);
        case 4: return upright(x, bottom - y);
        case 5: return upright(y, x);
        case 6: return upright(y, bottom - x);
        case 7: return upright(right - y, bottom - x);
        case 8: return upright(right - y, x);
        default: return upright(x, y);
        }
    }
    /// All bytes of the picture.
    Bytes pixels() const {
        Bytes out;
        for (std::uint32_t y = 0; y < view_.out_height; ++y)
            for (std::uint32_t x = 0; x < view_.out_width; ++x) put(out, x, at(x, y));
        return out;
    }

private:
    unsigned upright(std::uint32_t x, std::uint32_t y) const { return upright_[std::size_t{y} * width_ + x]; }

    void put(Bytes& out, std::uint32_t x, unsigned tone) const {
        if (view_.format == TP_BITS) {
            if (x % 8 == 0) out.push_back(0);
            if (tone == 0) out.back() = static_cast<unsigned char>(out.back() | 0x80 >> x % 8);
        } else if (view_.format == TP_GREY8) {
            out.push_back(static_cast<unsigned char>(tone));
        } else {
            const bool plain = view_.ink == 0 && view_.paper == 0;
            const std::uint32_t ink = plain ? 0xFF000000 : view_.ink, paper = plain ? 0xFFFFFFFF : view_.paper;
            for (unsigned shift : {view_.format == TP_RGBA ? 16u : 0u, 8u, view_.format == TP_RGBA ? 0u : 16u, 24u}) {
                const unsigned a = ink >> shift & 255, b = paper >> shift & 255;
                out.push_back(static_cast<unsigned char>((a * (255 - tone) + b * tone + 127) / 255));
            }
        }
    }

    struct Span {
        std::uint32_t from, to;
    };
    /// The pixels of the page under pixel k of `pixels` that are made of `extent`.
    static Span cell(std::uint32_t k, std::uint32_t extent, std::uint32_t pixels) {
        const auto mark = [](std::uint64_t n, std::uint64_t positions, std::uint64_t marks) {
            return static_cast<std::uint32_t>((n * positions + marks - 1) / marks);
        };
        if (pixels <= extent) return {mark(k, extent, pixels), mark(k + 1, extent, pixels)};
        std::uint32_t owner = 0;
        while (mark(owner + 1, pixels, extent) <= k) ++owner;
        return {owner, owner + 1};
    }
    unsigned tone(std::uint32_t x, std::uint32_t y) const {
        const Span columns = cell(x, view_.width, width_), rows = cell(y, view_.height, height_);
        std::uint32_t ink = 0;
        for (std::uint32_t v = rows.from; v < rows.to; ++v)
            for (std::uint32_t u = columns.from; u < columns.to; ++u) ink += page_.isInk(view_.left + u, view_.top + v);
        const std::uint32_t area = (columns.to - columns.from) * (rows.to - rows.from);
        unsigned tone = 255;
        if (view_.mode == TP_INK) tone = ink ? 0 : 255;
        else if (view_.mode == TP_NEAREST)
            tone = page_.isInk(view_.left + columns.from, view_.top + rows.from) ? 0 : 255;
        else if (view_.format == TP_BITS) tone = 2 * ink >= area ? 0 : 255;
        else if (view_.mode == TP_COVERAGE) tone = static_cast<unsigned>(255.0 * (area - ink) / area + 0.5);
        else {
            std::vector<unsigned char> map(area + 1);
            tilepress::fillGreyMap(map.data(), area + 1);
            tone = map[ink];
        }
        return view_.flags & TP_INVERT ? 255 - tone : tone;
    }

    const PageSource& page_;
    const tp_view& view_;
    bool turned_;
    std::uint32_t width_, height_;
    std::vector<unsigned> upright_;
};

/// Black pixels of the class interface as bits, grey ones as tones.
inline Bytes classPixels(IImg* image) {
    Bytes pixels;
    for (const std::uint32_t pixel : pictureOf(image).pixels)
        pixels.push_back(static_cast<unsigned char>(image->getType() == ImageTypeRGB ? pixel : pixel ? 0 : 255));
    return pixels;
}

/// Compares the view's rectangle, in its size and mode, grey or ink, with what the class interface makes of it. At full
/// size that only copies, and where it enlarges dark pages it has oddities of its own: there nothing is compared.
inline void expectAsTheClassDraws(const tp_page* page, CImg1G4& image, tp_view view) {
    tp_page_info info{};
    info.size = sizeof info;
    ASSERT_EQ(tp_page_describe(page, &info), TP_OK);
    const bool dark = info.photometric == TP_BLACK_IS_ZERO;
    const bool reduces = view.out_width <= view.width && view.out_height <= view.height;
    if ((view.out_width == view.width && view.out_height == view.height) || (dark && !reduces)) return;
    image.setBackgroundColor(dark);
    ImgRect rect;
    rect.setRect(view.left, view.top, view.left + view.width - 1, view.top + view.height - 1);
    ImgScaleAttr attr{view.mode == TP_GREY ? 32u : 1u};
    const std::unique_ptr<IImg> expected(image.scale(rect, view.out_width, view.out_height, attr));
    ASSERT_TRUE(expected);
    view.format = TP_GREY8;
    view.orientation = 1;
    view.flags = 0;
    Canvas canvas(view, 0, false);
    ASSERT_EQ(tp_page_render(page, &view, 1, nullptr), TP_OK);
    EXPECT_TRUE(canvas.pixels() == classPixels(expected.get()));
}

}  // namespace support
