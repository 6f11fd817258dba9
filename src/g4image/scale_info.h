#pragma once

// One walk over a rectangle of a compressed image, and what its row painters are given.

#include "foundation/refuse.h"
#include "kernels/marks.h"
#include "page/row_painter.h"
#include "tilepress/CImg1G4.h"

#include <cstdint>

namespace tilepress {
class CellCounter;
}

/// The walk's parameters: what is wanted of the page, and what painters share. The image is only read.
class G4ScaleInfo {
public:
    G4ScaleInfo(CImg1G4& image, const ImgRect& rect);

    /// What the walk needs before it begins, and a work row for destinations of `width` pixels. False when memory runs
    /// out.
    bool prepare(ImgULong width) { return walk_.prepare() && painter_.prepare(width); }
    /// Goes to the rectangle's first row. False when that cannot be reached, which is reported.
    bool begin();
    /// Calls onRow(y) for every row of the rectangle, each of which may be decoded once. False when a tile is corrupt,
    /// which is reported.
    template <class OnRow>
    bool rows(OnRow onRow) {
        return walk_.rows(onRow) || failed();
    }
    /// The same for rows that fold into `count` bands: onRow(band, y of the band), and onBand(band, rows) at the end of
    /// each, that of a corrupt tile included.
    template <class OnRow, class OnBand>
    bool bands(ImgULong count, OnRow onRow, OnBand onBand);

    /// Decodes the row and paints it where `onto` lays its runs.
    template <class Onto>
    ImgErr paint(unsigned char* to, Onto onto) {
        const bool good = painter_.paint(walk_, clip, to, onto);
        blackCount = painter_.pixels();
        return good ? ImgErrNone : ImgErrDecode;
    }
    /// Decodes the row and hands on what clippedRuns does: a list's first elements and the runs that had to be clipped,
    /// or all runs.
    template <class... Takers>
    ImgErr runs(Takers... takers) {
        return tiles([&](const tilepress::g4::TileRow& row) { tilepress::g4::clippedRuns(row, clip, takers...); });
    }
    /// Decodes the row and hands each tile's to onTile.
    template <class OnTile>
    ImgErr tiles(OnTile onTile) {
        return walk_.next(onTile) ? ImgErrNone : ImgErrDecode;
    }

    tilepress::g4::Clip clip;
    const ImgULong* columns = nullptr;        ///< destination column of every column of the rectangle
    tilepress::CellCounter* cells = nullptr;  ///< of the grey painter
    ImgULong rowOfBand = 0;                   ///< its number
    std::uint64_t blackCount = 0;             ///< pixels painted in the last row, or counted

private:
    static tilepress::g4::TileCodes codesOf(const void* image, std::size_t k);
    bool failed();

    CImg1G4& image_;
    tilepress::g4::TileWalk walk_;
    tilepress::g4::RowPainter painter_;
};

template <class OnRow, class OnBand>
bool G4ScaleInfo::bands(ImgULong count, OnRow onRow, OnBand onBand) {
    tilepress::MarkWalk mark(walk_.rect().height, count);
    ImgULong band = 0;
    return rows([&](ImgULong y) {
        rowOfBand = y - mark.position();
        if (onRow(band, rowOfBand) == ImgErrNone && rowOfBand + 1 < mark.size()) return;
        onBand(band++, mark.size());
        mark.advance();
    });
}

namespace tilepress::g4 {

/// Whether a picture's background is 1.
inline bool isMostlyBlack(std::uint64_t black, std::uint64_t pixels) {
    return !(static_cast<double>(black) / static_cast<double>(pixels) <= 0.55);
}

/// A clear image of this size with an image's colours, or null.
CImg1* emptyLike(const CImg1G4& image, ImgULong width, ImgULong height);

}  // namespace tilepress::g4
