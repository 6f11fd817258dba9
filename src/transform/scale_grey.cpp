// Reduction of bilevel images to grey.

#include "model/kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "transform/cell_counter.h"
#include "transform/grey.h"
#include "transform/ink_rows.h"
#include "transform/runs.h"

#include <algorithm>

using namespace tilepress;

CImg32* CImg1::Reduce_greyscale(ImgULong width, ImgULong height, const ImgRect& src) {
    const bool whiteIsInk = calculateBackground() == 1;
    const ImgULong srcWidth = src.getWidth(), srcHeight = src.getHeight();
    if (width == 0 || height == 0 || width > srcWidth || height > srcHeight) return nullptr;
    if (!hasPixels(*this) || !inside(*this, src)) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    GreyMaps maps;
    CellCounter cells;
    InkRows rows;
    CImg32* const result = CImg32::create(width, height, RGBOrderRGB);
    if (!result || !maps.prepare(srcWidth, srcHeight, width, height) || !cells.prepare(srcWidth, width) ||
        !rows.prepare(*this, src, whiteIsInk)) {
        delete result;
        return nullptr;
    }
    forEachMark(srcHeight, height, [&](ImgULong first, ImgULong count, ImgULong band) {
        ImgULong* const out = result->peekDataArray()[band];
        for (ImgULong y = 0; y < count; ++y) {
            if (y > 0 && cells.mustFold(y)) cells.fold(out);
            forEachRun(rows.fold(first + y, 1), packedWords(srcWidth),
                       [&](std::size_t from, std::size_t to) { cells.add(from, to); });
        }
        cells.fold(out);
        for (ImgULong x = 0; x < width; ++x) out[x] = greyPixel(maps.grey(count, cells.width(x), out[x]));
    });
    return result;
}
