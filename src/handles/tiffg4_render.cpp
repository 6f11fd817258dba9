// Compressed handles expanded, or scaled while they are decoded.

#include "ccitt/clipped_runs.h"
#include "ccitt/coded_bytes.h"
#include "ccitt/decode_row.h"
#include "ccitt/padded_line.h"
#include "handles/operations.h"
#include "handles/tiffg4.h"
#include "kernels/scale_bits.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace tilepress::handles {
namespace {

/// One tile's place in its coded bytes, with the row before. A tile without bytes is white.
class TileCursor {
public:
    TileCursor() = default;
    TileCursor(const TileCursor&) = delete;
    TileCursor& operator=(const TileCursor&) = delete;
    ~TileCursor() {
        freeLine(coding_);
        freeLine(reference_);
    }

    bool prepare(std::uint32_t tileWidth) {
        width_ = static_cast<std::int32_t>(tileWidth);
        coding_ = allocateLine(tileWidth);
        reference_ = allocateLine(tileWidth);
        return coding_ && reference_;
    }
    bool start(const void* tile, std::uint32_t bytes) {
        count_ = g4::whiteLine(reference_, width_);
        bit_ = 0;
        std::free(coded_.release());
        length_ = bytes + std::int64_t{bytes % 2};
        return !tile || bytes == 0 || (*coded_.out() = codedBytes(static_cast<const unsigned char*>(tile), bytes));
    }
    /// The next row's black runs; false when it is damaged.
    template <class OnRun>
    bool next(std::int64_t left, const g4::ColumnRange& range, OnRun onRun) {
        if (!coded_) return true;
        std::int32_t count = 0;
        if (g4::decodeLine({coded_.get(), length_, false}, bit_, {reference_, count_}, width_, coding_, count) !=
            g4::kRowDecoded)
            return false;
        std::swap(coding_, reference_);
        count_ = count;
        g4::clippedRuns(reference_, count_, 2, left, range, onRun);
        return true;
    }

private:
    Heap<unsigned char> coded_;
    std::int64_t length_ = 0, bit_ = 0;
    std::int32_t* coding_ = nullptr;
    std::int32_t* reference_ = nullptr;
    std::int32_t width_ = 0, count_ = 0;
};

/// The rows of a compressed image, from the top.
class RowDecoder {
public:
    explicit RowDecoder(const ImgHandle& image)
        : header_(*static_cast<const ImgG4Header*>(image.header)), grid_(header_),
          tiles_(static_cast<void* const*>(image.data)) {}
    RowDecoder(const RowDecoder&) = delete;
    RowDecoder& operator=(const RowDecoder&) = delete;
    ~RowDecoder() { delete[] cursors_; }

    /// False when it cannot be decoded.
    bool prepare() {
        // A row's positions, and sums with them, must fit 32 bits.
        constexpr std::uint32_t largestTile = 0x7FFFFFF0;
        if (!tiles_ || !header_.byteCounts || grid_.tiles() == 0 || header_.tileWidth > largestTile ||
            (grid_.across + std::uint64_t{1}) * sizeof(TileCursor) > PTRDIFF_MAX)
            return false;
        cursors_ = new (std::nothrow) TileCursor[grid_.across];
        if (!cursors_ || !words_.reserve(packedWords(grid_.width))) return false;
        return std::all_of(cursors_, cursors_ + grid_.across,
                           [this](TileCursor& cursor) { return cursor.prepare(header_.tileWidth); });
    }
    std::uint32_t width() const { return grid_.width; }
    std::uint32_t height() const { return grid_.height; }

    /// Decodes `count` rows and gives those pixels that are black in any of them; null when a tile is damaged. Valid
    /// until the next call.
    const std::uint64_t* next(std::uint32_t count) {
        std::fill_n(words_.get(), packedWords(grid_.width), 0);
        for (; count > 0; --count, ++row_)
            if ((row_ % header_.tileHeight == 0 && !startTileRow()) || !addRow()) return nullptr;
        return words_.get();
    }

private:
    bool startTileRow() {
        const std::size_t first = std::size_t{row_ / header_.tileHeight} * grid_.across;
        for (std::uint32_t c = 0; c < grid_.across; ++c)
            if (!cursors_[c].start(tiles_[first + c], header_.byteCounts[first + c])) return false;
        return true;
    }
    bool addRow() {
        const g4::ColumnRange whole{0, grid_.width};
        for (std::uint32_t c = 0; c < grid_.across; ++c)
            if (!cursors_[c].next(std::int64_t{header_.tileWidth} * c, whole,
                                  [this](std::size_t from, std::size_t to) { fillSpan(words_.get(), from, to); }))
                return false;
        return true;
    }

    const ImgG4Header& header_;
    TileGrid grid_;
    void* const* tiles_;
    TileCursor* cursors_ = nullptr;
    Heap<std::uint64_t> words_;
    std::uint32_t row_ = 0;
};

bool expand(const BitArea& to, RowDecoder& rows) {
    for (std::uint32_t y = 0; y < to.height; ++y) {
        const std::uint64_t* const words = rows.next(1);
        if (!words) return false;
        storeWords(to.rows[y], words, packedBytes(to.width));
    }
    return true;
}

bool enlarge(const BitArea& to, RowDecoder& rows) {
    const std::size_t bytes = static_cast<std::size_t>(to.rows.stride), rowBytes = packedBytes(rows.width());
    Widener widener(rows.width(), to.width);
    Heap<unsigned char> row(std::uint64_t{rowBytes});
    if (!widener.prepare() || !row) return false;
    const InkRows ink({{row.get(), 0}, 0, rows.width(), 1}, false);
    bool good = true;
    forEachMark(to.height, rows.height(), [&](std::uint32_t first, std::uint32_t copies, std::uint32_t) {
        const std::uint64_t* const words = good ? rows.next(1) : nullptr;
        if (!(good = words)) return;
        storeWords(row.get(), words, rowBytes);
        if (!widener.widen(to.rows[first], bytes, ink, 0, 0)) return;
        for (std::uint32_t copy = 1; copy < copies; ++copy) std::memcpy(to.rows[first + copy], to.rows[first], bytes);
    });
    return good;
}

bool reduce(const BitArea& to, RowDecoder& rows) {
    CellBits cells;
    if (!cells.prepare(0, rows.width(), to.width)) return false;
    Heap<unsigned char> merged(8 * std::uint64_t{packedWords(rows.width())});
    if (!merged) return false;
    bool good = true;
    forEachMark(rows.height(), to.height, [&](std::uint32_t, std::uint32_t count, std::uint32_t band) {
        const std::uint64_t* const words = good ? rows.next(count) : nullptr;
        if (!(good = words)) return;
        storeWords(merged.get(), words, 8 * packedWords(rows.width()));
        if (findInk(cells.row.get(), merged.get(), cells.firsts, cells.inner.get())) cells.store(to.rows, band);
    });
    return good;
}

/// A clear bilevel image, or null.
Temporary newBilevel(std::uint32_t width, std::uint32_t height, std::uint32_t alignBits) {
    Temporary image(ImgNew(ImgTypeBilevel));
    if (image && (!Img1Create(image.get(), width, height, alignBits, nullptr) || !hasRows<Bilevel>(image.get())))
        image.reset();
    return image;
}

/// `paint` fills an image of that size from the rows; null when it cannot.
template <class Paint>
Temporary painted(const ImgHandle& image, const RenderSize& size, Paint paint) {
    RowDecoder rows(image);
    Temporary result;
    if (rows.prepare()) result = newBilevel(size.width, size.height, size.alignBits);
    if (result && !paint(areaOf<Bilevel>(*result), rows)) result.reset();
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
    if (!turns && size.width >= widthOf(*image) && size.height >= heightOf(*image))
        return painted(*image, size, enlarge).release();
    if (!turns && size.width <= widthOf(*image) && size.height <= heightOf(*image))
        return painted(*image, size, reduce).release();
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
