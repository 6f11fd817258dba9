// Palette and RGB images enlarged and reduced.

#include "foundation/heap.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "transform/rows.h"
#include "transform/runs.h"
#include "transform/scale.h"

#include <cstring>

namespace tilepress {
namespace {

template <class Image>
Image* enlarged(const Image& source, ImgULong width, ImgULong height, const ImgRect& part) {
    if (!enlarges(source, part, width, height)) return nullptr;
    Image* const result = createLike(source, width, height);
    Heap<ImgULong> starts;
    if (!result || !markTable(starts, width, part.getWidth())) return finished(result, false);
    const bool doubles = width % 2 == 0 && width / 2 == part.getWidth();
    auto* const* const rows = result->peekDataArray();
    forEachMark(height, part.getHeight(), [&](ImgULong first, ImgULong copies, ImgULong y) {
        const auto* const src = source.peekDataArray()[part.getTop() + y] + part.getLeft();
        if (doubles) doublePixels(rows[first], src, part.getWidth());
        else repeatPixels(rows[first], src, starts.get(), part.getWidth());
        for (ImgULong copy = 1; copy < copies; ++copy)
            std::memcpy(rows[first + copy], rows[first], width * sizeof *rows[first]);
    });
    return result;
}

/// Fills `result`, which may be null, with the first pixels of the cells, or with a background given, with the first
/// that differ from it.
template <class Image>
Image* reduced(Image* result, const Image& source, ImgULong width, ImgULong height, const ImgRect& part,
               const ImgULong* background) {
    Heap<ImgULong> starts;
    if (!result || !markTable(starts, part.getWidth(), width)) return finished(result, false);
    forEachMark(part.getHeight(), height, [&](ImgULong first, ImgULong count, ImgULong band) {
        auto* const dst = result->peekDataArray()[band];
        auto* const* const rows = source.peekDataArray() + part.getTop() + first;
        pickPixels(dst, rows[0] + part.getLeft(), starts.get(), width);
        for (ImgULong y = 0; background && y < count; ++y)
            pickOthers(dst, rows[y] + part.getLeft(), starts.get(), width, *background);
    });
    return result;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

CImg8* CImg8::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    return enlarged(*this, dstWidth, dstHeight, src);
}
CImg32* CImg32::Enlarge(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    return enlarged(*this, dstWidth, dstHeight, src);
}

CImg8* CImg8::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src, nullptr);
}
CImg32* CImg32::Reduce(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src, nullptr);
}

CImg8* CImg8::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    return reduced(createLike(*this, dstWidth, dstHeight), *this, dstWidth, dstHeight, src, &background);
}
CImg32* CImg32::Reduce_bkg(ImgULong dstWidth, ImgULong dstHeight, const ImgRect& src) {
    if (!reduces(*this, src, dstWidth, dstHeight)) return nullptr;
    const ImgULong background = calculateBackground();
    // Kept: a result of the source's size, of which only the top left part is filled; the rest is 0.
    CImg32* const result = createLike(*this, src.getWidth(), src.getHeight());
    return reduced(result, *this, dstWidth, dstHeight, src, &background);
}
