// Compressed handles expanded, or scaled while they are decoded.

#include "handles/operations.h"
#include "handles/tiffg4.h"
#include "kernels/scale_bits.h"
#include "page/row_painter.h"

#include <cstring>

namespace tilepress::handles {
namespace {

/// The rows of a compressed handle, from the top; each is read once.
class CodedRows {
public:
    CodedRows(const ImgHandle& image, const g4::TileLayout& layout)
        : walk_(layout, {&image, codesOf}, {0, 0, layout.width, layout.height}, g4::Decoding::classic),
          whole_{0, layout.width} {}

    bool begin() { return painter_.prepare(width()) && walk_.begin(); }
    std::uint32_t width() const { return walk_.rect().width; }
    std::uint32_t height() const { return walk_.rect().height; }
    unsigned shift() const { return 0; }

    /// Sets the black pixels of the next row; false when a tile is damaged.
    bool paint(unsigned char* row) { return painter_.paint(walk_, whole_, row, g4::Copied()); }
    /// Gives the pixels that are black in any of the next `count` rows.
    bool merge(unsigned char* out, std::uint32_t, std::uint32_t count) {
        std::memset(out, 0, packedBytes(width()));
        bool good = true;
        for (; good && count > 0; --count) good = paint(out);
        return good;
    }
    bool read(unsigned char* out, std::uint32_t y) { return merge(out, y, 1); }

private:
    static g4::TileCodes codesOf(const void* image, std::size_t k) {
        const auto& handle = *static_cast<const ImgHandle*>(image);
        const std::uint32_t length = static_cast<const ImgG4Header*>(handle.header)->byteCounts[k];
        const void* const bytes = static_cast<void* const*>(handle.data)[k];
        return {length != 0 ? static_cast<const unsigned char*>(bytes) : nullptr, length,
                g4::CodeOrder::pairsExchanged};
    }

    g4::TileWalk walk_;
    g4::RowPainter painter_;
    g4::Clip whole_;
};

bool expand(const BitArea& to, CodedRows& rows) {
    for (std::uint32_t y = 0; y < to.height; ++y)
        if (!rows.paint(to.rows[y])) return false;
    return true;
}

/// `paint` fills an image of that size from the rows; null when it cannot.
template <class Paint>
Temporary painted(const ImgHandle& image, const RenderSize& size, Paint paint) {
    const ImgG4Header& header = *static_cast<const ImgG4Header*>(image.header);
    const g4::TileLayout layout = layoutOf(header);
    if (!image.data || !header.byteCounts || layout.tiles() == 0) return nullptr;
    CodedRows rows(image, layout);
    if (!rows.begin()) return nullptr;
    Temporary result = createClear(ImgTypeBilevel, size.width, size.height, size.alignBits, nullptr, 0);
    if (!hasRows<Bilevel>(result.get()) || !paint(areaOf<Bilevel>(*result), rows)) return nullptr;
    return result;
}

/// In rows of whole bytes.
Temporary expanded(const ImgHandle& image) {
    return painted(image, RenderSize(widthOf(image), heightOf(image), 8, quadsOf(image)), expand);
}

}  // namespace

ImgHandle* ImgTIFFG4Render(ImgHandle* image, std::uint32_t width, std::uint32_t height, const void* header,
                           std::uint32_t, std::uint32_t, std::uint32_t alignBits) {
    if (!isTiffG4(image)) return nullptr;
    const ImgG4Header& how = *static_cast<const ImgG4Header*>(header ? header : image->header);
    const RenderSize size(width, height, alignBits, how.quads);
    if (!size.isValid()) return nullptr;
    const bool turns = how.mirror == 1 || how.mirror == 2 || how.rotation != 0;
    if (!turns && size.width == widthOf(*image) && size.height == heightOf(*image))
        return painted(*image, size, expand).release();
    if (!turns && size.width >= widthOf(*image) && size.height >= heightOf(*image))
        return painted(*image, size, enlargeBits<CodedRows&>).release();
    if (!turns && size.width <= widthOf(*image) && size.height <= heightOf(*image))
        return painted(*image, size, reduceInk<CodedRows&>).release();
    const Temporary whole = expanded(*image);
    return whole ? rendered<Bilevel>(*whole, how.mirror, how.rotation, size) : nullptr;
}

ImgHandle* ImgTIFFG4Convert(ImgHandle* image, const ImgConvertDesc* target) {
    if (!isTiffG4(image) || !target) return nullptr;
    Temporary whole = expanded(*image);
    if (!whole) return nullptr;
    const std::uint32_t type = targetType(*target, ImgTypeBilevel);
    return type == ImgTypeBilevel ? whole.release() : convert<Bilevel>(whole.get(), target);
}

}  // namespace tilepress::handles
