// Whatever the tiles of a compressed image hold, every walk over it ends within its buffers, and some rows of the page
// expand to what the whole has there.

#include "input.h"
#include "support/owned.h"
#include "tilepress/tilepress.h"

#include <algorithm>

namespace {

using Image = support::Owned<>;

std::unique_ptr<CImg1> expanded(CImg1G4& page, const ImgRect& rect, bool& whole) {
    std::unique_ptr<CImg1> bits(CImg1::create(rect.getWidth(), rect.getHeight(), 0, 1, ImgAlignDword));
    imgRaise(ImgErrNone);
    whole = page.uncompress(bits.get(), rect) && CImgErr::get() == ImgErrNone;
    return bits;
}

ImgRect rectIn(Input& in, std::uint32_t width, std::uint32_t height) {
    const std::uint32_t left = in.below(width), top = in.below(height);
    ImgRect rect;
    rect.setRect(left, top, left + in.below(width - left), top + in.below(height - top));
    return rect;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t across = in.upTo(4), down = in.upTo(3), tileWidth = in.upTo(in.u8() < 230 ? 90 : 2000),
                        tileHeight = in.upTo(24);
    const std::uint32_t width = (across - 1) * tileWidth + in.upTo(tileWidth),
                        height = (down - 1) * tileHeight + in.upTo(tileHeight);
    const std::uint32_t ground = in.u8() % 4, operations = in.upTo(6);
    std::vector<std::uint32_t> choices;
    for (std::uint32_t i = 0; i < operations; ++i) choices.push_back(in.u8());
    std::vector<ImgULong> sizes;
    for (std::uint32_t i = 0; i < 2 * operations; ++i) sizes.push_back(in.upTo(300));
    const ImgRect part = rectIn(in, width, height);

    std::vector<std::vector<unsigned char>> tiles(across * down);
    std::vector<unsigned char*> pointers;
    std::vector<ImgULong> lengths;
    for (auto& tile : tiles) {
        tile = in.bytes(in.u8() < 8 ? 0 : in.left() / (tiles.size() - lengths.size()));
        lengths.push_back(static_cast<ImgULong>(tile.size()));
        pointers.push_back(tile.data());
    }
    CImg1G4* const page =
        CImg1G4::create(width, height, tileWidth, tileHeight, pointers.data(), lengths.data(), 0, 1, ImgAlignNone);
    if (!page) return 0;
    if (ground < 2) page->setBackgroundColor(ground);
    ImgScaleAttr grey{32}, ink{1};
    for (std::uint32_t i = 0; i < operations; ++i) {
        const ImgULong w = sizes[2 * i], h = sizes[2 * i + 1];
        switch (choices[i] % 8) {
        case 0: Image(page->scale(part, w, h, grey)); break;
        case 1: Image(page->scale(part, w, h, ink)); break;
        case 2: Image(page->scale(part, part.getWidth() + w, part.getHeight() + h, ink)); break;
        case 3:
            Image(page->scale(part, std::max<ImgULong>(part.getWidth() / (w % 9 + 1), 1),
                              std::max<ImgULong>(part.getHeight() / (h % 9 + 1), 1), grey));
            break;
        case 4:
            Image(page->scale(part, std::max<ImgULong>(part.getWidth() / (w % 9 + 1), 1),
                              std::max<ImgULong>(part.getHeight() / (h % 9 + 1), 1), ink));
            break;
        case 5: Image(page->rotate(w % 4 * 90.0 + (h % 8 == 0 ? 7.5 : 0))); break;
        case 6: Image(page->getSubImage(part)); break;
        default: page->getBackgroundColor();
        }
    }
    page->setBackgroundColor(0);
    bool wholeGood = false, partGood = false;
    // Of whole rows: a row that is damaged, yet decodes, may reach into the tile to the right.
    ImgRect band;
    band.setRect(0, part.getTop(), width - 1, part.getBottom());
    const auto whole = expanded(*page, page->getRect(), wholeGood), cut = expanded(*page, band, partGood);
    PROMISE(partGood || !wholeGood);
    const std::size_t stride = whole->getBytesPerLine();
    if (wholeGood)
        PROMISE(std::memcmp(cut->peekData(), whole->peekData() + part.getTop() * stride, band.getHeight() * stride) ==
                0);
    page->releaseData();
    delete page;
    CCITT_DisableG4Decode();
    return 0;
}
