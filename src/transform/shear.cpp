// Rotation by any angle as three shears: along the rows, along the columns and along
// the rows again, each moving whole rows or columns by whole pixels.

#include "foundation/heap.h"
#include "model/kinds.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg32.h"
#include "tilepress/CImg8.h"
#include "transform/bit_rows.h"
#include "transform/marks.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace tilepress {
namespace {

// Kept: slightly more than pi / 180; shifts of whole pixels depend on it.
constexpr double kRadians = 0.017453292522222223;

enum class Direction { Up, Down };

Direction opposite(Direction direction) { return direction == Direction::Up ? Direction::Down : Direction::Up; }

/// A table of shifts that moves by `total` pixels over `positions` entries, its steps spread as the marks of a
/// Rothstein code, from one half of `total` to the other. Entries past `positions` repeat the code. `direction`
/// is the table's when `total` is not negative.
int* spreadShifts(double total, ImgULong positions, ImgULong entries, Direction direction) {
    if (std::isnan(total)) return nullptr;
    const std::int64_t shift = static_cast<std::int64_t>(std::clamp(total, -2147483647.0, 2147483647.0));
    if (shift < 0) direction = opposite(direction);
    const ImgULong steps = static_cast<ImgULong>(std::max<std::int64_t>(std::abs(shift), 1));
    const std::int64_t half = steps / 2;
    int* table = allocate<int>(entries);
    if (!table) return nullptr;

    // Kept: the first entry is at the low end also in a table that goes down from the high end.
    table[0] = static_cast<int>(-half);
    // The code's first mark, at entry 0, is no step; the next period's is.
    const ImgULong marks = std::min(steps, positions);
    std::uint64_t period = 0, next = markPosition(1, positions, marks);
    std::int64_t taken = 0;
    for (ImgULong i = 1, mark = 1; i < entries; ++i) {
        if (i == next) {
            ++taken;
            if (mark == marks) {
                period = next;
                mark = 0;
            }
            next = period + markPosition(++mark, positions, marks);
        }
        const std::int64_t entry = direction == Direction::Up ? taken - half : half - taken;
        table[i] = static_cast<int>(std::clamp<std::int64_t>(entry, INT32_MIN, INT32_MAX));
    }
    return table;
}

double totalAlongRows(const CImg& image, double radians) { return image.getHeight() * std::tan(radians / 2); }
double totalAlongColumns(const CImg& image, double radians) { return image.getWidth() * std::sin(radians); }

/// The part of `size` places that is covered when as many pixels, or `count` ones, move by `shift`.
struct Covered {
    std::size_t from, to;

    Covered(std::size_t size, std::int64_t shift) : Covered(size, shift, size) {}
    Covered(std::size_t size, std::int64_t shift, std::size_t count) {
        const std::int64_t all = static_cast<std::int64_t>(size);
        from = static_cast<std::size_t>(std::clamp<std::int64_t>(shift, 0, all));
        to = static_cast<std::size_t>(std::clamp<std::int64_t>(static_cast<std::int64_t>(count) + shift, 0, all));
    }
};

// --- packed pixels ------------------------------------------------------------------

PackedRows packedRows(const CImg1& image) {
    return {image.peekData(), static_cast<std::ptrdiff_t>(image.getBytesPerLine())};
}

void moveRow(const CImg1& dst, const CImg1& src, std::size_t y, std::int64_t shift) {
    const std::size_t bytes = packedBytes(src.getWidth());
    unsigned char* row = packedRows(dst)[y];
    copyBits(row, bytes, packedRows(src)[y], bytes, -shift);
    clearFrom(row, bytes, Covered(src.getWidth(), shift).to);
}

/// How the columns of a strip move up: all by `base` rows, and those of masks[k] by 2^k rows more.
struct StripShifts {
    std::int64_t base;
    unsigned steps;
    std::uint64_t masks[34] = {};

    StripShifts(const int* table, std::size_t count, std::size_t rows) {
        // What moves by all rows is out of sight; further makes no difference.
        const std::int64_t limit = static_cast<std::int64_t>(rows);
        const auto shift = [&](std::size_t x) { return std::clamp<std::int64_t>(table[x], -limit, limit); };
        base = shift(0);
        std::int64_t most = base;
        for (std::size_t x = 1; x < count; ++x) {
            base = std::min(base, shift(x));
            most = std::max(most, shift(x));
        }
        steps = static_cast<unsigned>(std::bit_width(static_cast<std::uint64_t>(most - base)));
        for (unsigned k = 0; k < steps; ++k)
            for (std::size_t x = 0; x < count; ++x)
                masks[k] |= static_cast<std::uint64_t>((shift(x) - base) >> k & 1) << (63 - x);
    }

    /// Rows that must be there for `rows` rows to come out.
    std::size_t rowsFor(std::size_t rows) const { return rows + (std::size_t{1} << steps) - 1; }
};

/// The columns of `mask` take the rows `distance` further down.
void moveUp(std::uint64_t* rows, std::size_t count, std::size_t distance, std::uint64_t mask) {
    const Words2 both = bothWords(mask);
    std::size_t y = 0;
    for (; y + 2 <= count; y += 2) {
        const Words2 here = loadLanes<Words2>(rows + y), below = loadLanes<Words2>(rows + y + distance);
        storeLanes(rows + y, here ^ ((here ^ below) & both));
    }
    for (; y < count; ++y) rows[y] ^= (rows[y] ^ rows[y + distance]) & mask;
}

/// In strips of 64 columns, taken out of the picture so that a row of a strip is one word.
bool moveColumns(const CImg1& result, const CImg1& source, const int* table) {
    const std::size_t width = source.getWidth(), height = source.getHeight(), rowBytes = packedBytes(width);
    const PackedRows dst = packedRows(result), src = packedRows(source);
    const Heap<std::uint64_t> strip(std::uint64_t{height} * 5);  // the shifts of a strip span at most twice the height
    if (!strip) return false;
    for (std::size_t left = 0; left < rowBytes; left += 8) {
        const std::size_t bytes = std::min<std::size_t>(8, rowBytes - left);
        const std::size_t columns = std::min<std::size_t>(64, width - left * 8);
        const StripShifts shifts(table + left * 8, columns, height);
        const std::uint64_t pixels = firstBits(static_cast<unsigned>(columns));

        std::size_t count = shifts.rowsFor(height);
        const Covered there(count, -shifts.base, height);
        std::fill(strip.get(), strip.get() + there.from, std::uint64_t{0});
        std::uint64_t any = 0;
        for (std::size_t i = there.from; i < there.to; ++i) {
            const unsigned char* row = src[static_cast<std::size_t>(static_cast<std::int64_t>(i) + shifts.base)] + left;
            strip[i] = (bytes == 8 ? loadWord(row) : loadPartialWord(row, bytes)) & pixels;
            any |= strip[i];
        }
        if (any == 0) continue;
        std::fill(strip.get() + there.to, strip.get() + count, std::uint64_t{0});
        for (unsigned k = 0; k < shifts.steps; ++k) {
            count -= std::size_t{1} << k;
            moveUp(strip.get(), count, std::size_t{1} << k, shifts.masks[k]);
        }
        for (std::size_t y = 0; y < height; ++y) {
            if (bytes == 8) storeWord(dst[y] + left, strip[y]);
            else storePartialWord(dst[y] + left, strip[y], bytes);
        }
    }
    return true;
}

// Kept: the alignment's value becomes the background interpretation, and alignment 0 is used.
CImg1* createResult(CImg1& image) {
    return CImg1::create(image.getWidth(), image.getHeight(), image.getAlignment(), 0xFF000000, ImgAlignNone);
}

// --- pixels of a byte or a word -------------------------------------------------------

template <class Image>
void moveRow(const Image& dst, const Image& src, std::size_t y, std::int64_t shift) {
    const Covered columns(src.getWidth(), shift);
    if (columns.from >= columns.to) return;
    const auto* pixels = src.peekDataArray()[y] + (static_cast<std::int64_t>(columns.from) - shift);
    std::memcpy(dst.peekDataArray()[y] + columns.from, pixels, (columns.to - columns.from) * sizeof *pixels);
}

/// As memcpy, for the few bytes of a run of columns.
inline void copyShort(void* to, const void* from, std::size_t count) {
    unsigned char* dst = static_cast<unsigned char*>(to);
    const unsigned char* src = static_cast<const unsigned char*>(from);
    for (; count >= 8; count -= 8, dst += 8, src += 8) std::memcpy(dst, src, 8);
    for (; count >= 4; count -= 4, dst += 4, src += 4) std::memcpy(dst, src, 4);
    for (; count > 0; --count) *dst++ = *src++;
}

/// Calls each(first, end, shift) for the runs of equal shifts among `count` columns.
template <class Each>
void forRuns(const int* table, std::size_t count, Each each) {
    for (std::size_t x = 0, end; x < count; x = end) {
        for (end = x + 1; end < count && table[end] == table[x];) ++end;
        each(x, end, std::int64_t{table[x]});
    }
}

/// In bands of rows that stay in the cache while all columns are moved.
template <class Image>
bool moveColumns(const Image& result, const Image& source, const int* table) {
    constexpr std::size_t band = 64;
    const std::size_t height = source.getHeight();
    auto dst = result.peekDataArray();
    const auto src = source.peekDataArray();
    for (std::size_t top = 0; top < height; top += band)
        forRuns(table, source.getWidth(), [&](std::size_t x, std::size_t end, std::int64_t up) {
            const Covered rows(height, -up);
            const std::size_t bottom = std::min(rows.to, top + band);
            for (std::size_t y = std::max(rows.from, top); y < bottom; ++y)
                copyShort(dst[y] + x, src[static_cast<std::int64_t>(y) + up] + x, (end - x) * sizeof **dst);
        });
    return true;
}

template <class Image>
Image* createResult(Image& image) { return createLike(image, image.getWidth(), image.getHeight()); }

// --- any kind -------------------------------------------------------------------------

/// Ends a picture that nobody outside has seen, and with it the colour map that palette images leave behind.
struct Discard {
    void operator()(CImg8* image) const {
        const ColorMap* map = image->getColorMap();
        delete image;
        delete map;
    }
    void operator()(CImg* image) const { delete image; }
};
template <class Image>
using Temporary = std::unique_ptr<Image, Discard>;

/// The picture that a shear fills, its uncovered places in the background colour.
template <class Image>
Temporary<Image> startShear(Image& image) {
    if (!hasPixels(image)) {
        imgRaise(ImgErrBadArgument);
        return nullptr;
    }
    Temporary<Image> result(createResult(image));
    if (!result) return nullptr;
    const ImgULong background = image.getBackgroundColor();
    // Kept: bilevel images ignore the fill, so what they do not cover is 0 also on a background of 1.
    result->doRasOpInPlace(RasOpFill, false, 0, background);
    result->setBackgroundColor(background);
    return result;
}

/// Row y moves right by table[height - 1 - y].
template <class Image>
Image* shearedX(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result) return nullptr;
    const std::size_t height = image.getHeight();
    for (std::size_t y = 0; y < height; ++y) moveRow(*result, image, y, table[height - 1 - y]);
    return result.release();
}

/// Column x moves up by table[x].
template <class Image>
Image* shearedY(Image& image, const int* table) {
    Temporary<Image> result = startShear(image);
    if (!result || !moveColumns(*result, image, table)) return nullptr;
    return result.release();
}

template <class Image>
Image* rotatedByShears(Image& image, double degrees) {
    Temporary<Image> halfTurned;
    if (degrees > 270) {
        degrees -= 360;
    } else if (degrees > 90) {
        halfTurned.reset(static_cast<Image*>(image.rotate(180)));
        if (!halfTurned) return nullptr;
        halfTurned->setBackgroundColor(image.getBackgroundColor());
        degrees -= 180;
    }
    // Each code is spread over the rows or columns that it moves.
    const double radians = degrees * kRadians;
    const ImgULong width = image.getWidth(), height = image.getHeight();
    const Heap<int> alongRows(spreadShifts(totalAlongRows(image, radians), height, height, Direction::Down));
    const Heap<int> alongColumns(spreadShifts(totalAlongColumns(image, radians), width, width, Direction::Up));
    if (!alongRows || !alongColumns) return nullptr;

    const Temporary<Image> first(shearedX(halfTurned ? *halfTurned : image, alongRows.get()));
    halfTurned.reset();
    if (!first) return nullptr;
    const Temporary<Image> second(shearedY(*first, alongColumns.get()));
    return second ? shearedX(*second, alongRows.get()) : nullptr;
}

}  // namespace
}  // namespace tilepress

using namespace tilepress;

// Kept: the public tables spread each shear over the dimension that it does not move, which is the same for
// square images only; they go on for as long as the other dimension needs.
int* CImg::makeRotationXShearRoth(double angle) {
    return spreadShifts(totalAlongRows(*this, angle), getWidth(), std::max(getWidth(), getHeight()), Direction::Down);
}

int* CImg::makeRotationYShearRoth(double angle) {
    return spreadShifts(totalAlongColumns(*this, angle), getHeight(), std::max(getWidth(), getHeight()), Direction::Up);
}

CImg1* CImg1::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg1* CImg1::rotateShearX(int* table) { return shearedX(*this, table); }
CImg1* CImg1::rotateShearY(int* table) { return shearedY(*this, table); }

CImg8* CImg8::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg8* CImg8::rotateShearX(int* table) { return shearedX(*this, table); }
CImg8* CImg8::rotateShearY(int* table) { return shearedY(*this, table); }

CImg32* CImg32::rotateGeneric(double degrees) { return rotatedByShears(*this, degrees); }
CImg32* CImg32::rotateShearX(int* table) { return shearedX(*this, table); }
CImg32* CImg32::rotateShearY(int* table) { return shearedY(*this, table); }
