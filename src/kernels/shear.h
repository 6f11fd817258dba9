#pragma once

// Shears: whole rows or columns moved by whole pixels, from tables that spread the shifts.

#include "foundation/heap.h"
#include "kernels/bit_rows.h"
#include "kernels/marks.h"
#include "kernels/pixel_rows.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tilepress {

// Kept: slightly more than pi / 180; shifts of whole pixels depend on it.
inline constexpr double kRadians = 0.017453292522222223;

enum class Direction { Up, Down };

inline Direction opposite(Direction direction) { return direction == Direction::Up ? Direction::Down : Direction::Up; }

/// A table of shifts that moves by `total` pixels over `positions` entries, its steps spread as the marks of a
/// Rothstein code, from one half of `total` to the other. Entries past `positions` repeat the code. `direction`
/// is the table's when `total` is not negative.
inline int* spreadShifts(double total, std::uint32_t positions, std::uint32_t entries, Direction direction) {
    if (std::isnan(total)) return nullptr;
    const std::int64_t shift = static_cast<std::int64_t>(std::clamp(total, -2147483647.0, 2147483647.0));
    if (shift < 0) direction = opposite(direction);
    const std::uint32_t steps = static_cast<std::uint32_t>(std::max<std::int64_t>(std::abs(shift), 1));
    const std::int64_t half = steps / 2;
    int* table = allocate<int>(entries);
    if (!table) return nullptr;

    // Kept: the first entry is at the low end also in a table that goes down from the high end.
    table[0] = static_cast<int>(-half);
    // The code's first mark, at entry 0, is no step; the next period's is.
    const std::uint32_t marks = std::min(steps, positions);
    std::uint64_t period = 0, next = markPosition(1, positions, marks);
    std::int64_t taken = 0;
    for (std::uint32_t i = 1, mark = 1; i < entries; ++i) {
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

inline double totalAlongRows(std::uint32_t height, double radians) { return height * std::tan(radians / 2); }
inline double totalAlongColumns(std::uint32_t width, double radians) { return width * std::sin(radians); }

/// A rotation by 0 to 360 degrees: a half turn or none, and the shifts of three shears.
struct Shears {
    bool halfTurn;
    double radians;
    // Each code is spread over the rows or columns that it moves. Null when memory runs out.
    Heap<int> alongRows, alongColumns;

    Shears(double degrees, std::uint32_t width, std::uint32_t height)
        : halfTurn(90 < degrees && degrees <= 270), radians((degrees > 270 ? degrees - 360
                                                             : halfTurn    ? degrees - 180
                                                                           : degrees) *
                                                            kRadians),
          alongRows(spreadShifts(totalAlongRows(height, radians), height, height, Direction::Down)),
          alongColumns(spreadShifts(totalAlongColumns(width, radians), width, width, Direction::Up)) {}

    explicit operator bool() const { return alongRows && alongColumns; }
};

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

// Areas here are whole pictures, of one size.

inline void moveRow(const BitArea& to, const BitArea& from, std::size_t y, std::int64_t shift) {
    const std::size_t bytes = packedBytes(from.width);
    copyBits(to.rows[y], bytes, from.rows[y], bytes, -shift);
    clearFrom(to.rows[y], bytes, Covered(from.width, shift).to);
}

// Rows of a strip are words whose bytes are in the order of memory.

/// The bit of column x, 0 to 63.
constexpr std::uint64_t columnBit(std::size_t x) {
    return std::uint64_t{1} << (std::endian::native == std::endian::little ? x ^ 7 : 63 - x);
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
                if ((shift(x) - base) >> k & 1) masks[k] |= columnBit(x);
    }

    /// Rows that must be there for `rows` rows to come out.
    std::size_t rowsFor(std::size_t rows) const { return rows + (std::size_t{1} << steps) - 1; }
};

/// The columns of `mask` take the rows `distance` further down.
inline void moveUp(std::uint64_t* rows, std::size_t count, std::size_t distance, std::uint64_t mask) {
    const Words2 both = bothWords(mask);
    std::size_t y = 0;
    for (; y + 2 <= count; y += 2) {
        const Words2 here = loadLanes<Words2>(rows + y), below = loadLanes<Words2>(rows + y + distance);
        storeLanes(rows + y, here ^ ((here ^ below) & both));
    }
    for (; y < count; ++y) rows[y] ^= (rows[y] ^ rows[y + distance]) & mask;
}

/// Column x moves up by table[x]. In strips of 64 columns, taken out of the picture so that a row of a strip is one
/// word. False when memory runs out.
inline bool moveColumns(const BitArea& to, const BitArea& from, const int* table) {
    const std::size_t width = from.width, height = from.height, rowBytes = packedBytes(width);
    const Heap<std::uint64_t> strip(std::uint64_t{height} * 5);  // the shifts of a strip span at most twice the height
    if (!strip) return false;
    for (std::size_t left = 0; left < rowBytes; left += 8) {
        const std::size_t bytes = std::min<std::size_t>(8, rowBytes - left);
        const std::size_t columns = std::min<std::size_t>(64, width - left * 8);
        const StripShifts shifts(table + left * 8, columns, height);
        std::uint64_t pixels = 0;
        for (std::size_t x = 0; x < columns; ++x) pixels |= columnBit(x);

        std::size_t count = shifts.rowsFor(height);
        const Covered there(count, -shifts.base, height);
        std::fill(strip.get(), strip.get() + there.from, std::uint64_t{0});
        std::uint64_t any = 0;
        for (std::size_t i = there.from; i < there.to; ++i) {
            const unsigned char* row =
                from.rows[static_cast<std::size_t>(static_cast<std::int64_t>(i) + shifts.base)] + left;
            std::uint64_t word = 0;
            if (bytes == 8) std::memcpy(&word, row, 8);
            else std::memcpy(&word, row, bytes);
            strip[i] = word & pixels;
            any |= strip[i];
        }
        if (any == 0) continue;
        std::fill(strip.get() + there.to, strip.get() + count, std::uint64_t{0});
        for (unsigned k = 0; k < shifts.steps; ++k) {
            count -= std::size_t{1} << k;
            moveUp(strip.get(), count, std::size_t{1} << k, shifts.masks[k]);
        }
        for (std::size_t y = 0; y < height; ++y) {
            if (bytes == 8) std::memcpy(to.rows[y] + left, &strip[y], 8);
            else std::memcpy(to.rows[y] + left, &strip[y], bytes);
        }
    }
    return true;
}

// --- pixels of a byte or a word -------------------------------------------------------

template <class Pixel>
void moveRow(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from, std::size_t y, std::int64_t shift) {
    const Covered columns(from.width, shift);
    if (columns.from >= columns.to) return;
    const Pixel* pixels = from[y] + (static_cast<std::int64_t>(columns.from) - shift);
    std::memcpy(to[y] + columns.from, pixels, (columns.to - columns.from) * sizeof(Pixel));
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

/// Column x moves up by table[x]. In bands of rows that stay in the cache while all columns are moved.
template <class Pixel>
bool moveColumns(const PixelArea<Pixel>& to, const PixelArea<Pixel>& from, const int* table) {
    constexpr std::size_t band = 64;
    const std::size_t height = from.height;
    for (std::size_t top = 0; top < height; top += band)
        forRuns(table, from.width, [&](std::size_t x, std::size_t end, std::int64_t up) {
            const Covered rows(height, -up);
            const std::size_t bottom = std::min(rows.to, top + band);
            for (std::size_t y = std::max(rows.from, top); y < bottom; ++y)
                copyShort(to[y] + x, from[static_cast<std::size_t>(static_cast<std::int64_t>(y) + up)] + x,
                          (end - x) * sizeof(Pixel));
        });
    return true;
}

// --- any pixels -----------------------------------------------------------------------

/// Row y moves right by table[height - 1 - y].
template <class Area>
void moveRows(const Area& to, const Area& from, const int* table) {
    for (std::size_t y = 0; y < from.height; ++y) moveRow(to, from, y, table[from.height - 1 - y]);
}

}  // namespace tilepress
