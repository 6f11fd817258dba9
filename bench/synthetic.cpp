#include "synthetic.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace bench {
namespace {

/// The same numbers everywhere.
class Random {
public:
    explicit Random(std::uint32_t seed) : state_(seed) {}
    /// From 0 to `below` - 1.
    int next(int below) {
        state_ = state_ * 1664525 + 1013904223;
        return static_cast<int>((state_ >> 8) % static_cast<std::uint32_t>(below));
    }

private:
    std::uint32_t state_;
};

struct Point {
    int x, y;
};

class Pen {
public:
    explicit Pen(Bitmap& bitmap) : bitmap_(bitmap) {}

    /// Columns from `left` to `right` - 1 of a row, as far as they lie on the page.
    void span(int y, int left, int right) {
        if (y < 0 || y >= static_cast<int>(bitmap_.height)) return;
        unsigned char* const row = bitmap_.row(static_cast<std::size_t>(y));
        right = std::min(right, static_cast<int>(bitmap_.width));
        for (int x = std::max(left, 0); x < right;) {
            const int end = std::min(right, x / 8 * 8 + 8);
            row[x / 8] |= static_cast<unsigned char>((0xFF >> x % 8) & (0xFF00 >> (end - x / 8 * 8)));
            x = end;
        }
    }

    /// A block of `size` by `size` pixels drawn along the line.
    void line(Point a, Point b, int size) {
        if (a.y > b.y) std::swap(a, b);
        const int dx = b.x - a.x, dy = b.y - a.y;
        for (int y = a.y; y <= b.y; ++y) {
            // All columns that the line has in this row.
            const int x0 = dy ? a.x + static_cast<int>(std::int64_t{dx} * (y - a.y) / dy) : a.x;
            const int x1 = dy ? a.x + static_cast<int>(std::int64_t{dx} * std::min(y + 1 - a.y, dy) / dy) : b.x;
            for (int k = 0; k < size; ++k) span(y + k, std::min(x0, x1), std::max(x0, x1) + size);
        }
    }

    void box(Point a, Point b, int size) {
        line(a, {b.x, a.y}, size);
        line({b.x, a.y}, b, size);
        line({a.x, b.y}, b, size);
        line(a, {a.x, b.y}, size);
    }

    /// A closed polygon of 32 sides.
    void circle(Point centre, int radius, int size) {
        // Sines of multiples of 1/32 turn, in 1/4096.
        static constexpr std::array<int, 9> kSine = {0, 799, 1567, 2276, 2896, 3406, 3784, 4017, 4096};
        const auto sine = [](int k) {
            k &= 31;
            const int quarter = k & 15, value = kSine[static_cast<std::size_t>(quarter <= 8 ? quarter : 16 - quarter)];
            return k < 16 ? value : -value;
        };
        const auto corner = [&](int k) {
            return Point{centre.x + radius * sine(k + 8) / 4096, centre.y + radius * sine(k) / 4096};
        };
        for (int k = 0; k < 32; ++k) line(corner(k), corner(k + 1), size);
    }

private:
    Bitmap& bitmap_;
};

/// A character: two to four strokes, upright, level, slanted or round.
void character(Pen& pen, int shape, Point at, int height, int stroke) {
    Random random(static_cast<std::uint32_t>(shape) * 77773 + 5);
    const int width = height * 2 / 3;
    for (int strokes = 2 + random.next(3); strokes > 0; --strokes) {
        const auto place = [&] { return Point{at.x + random.next(3) * width / 2, at.y + random.next(3) * height / 2}; };
        if (random.next(4) == 0)
            pen.circle({at.x + width / 2, at.y + height / 2 + random.next(2) * height / 4}, width / 3, stroke);
        else pen.line(place(), place(), stroke);
    }
}

/// Words of 2 to 9 characters.
void textLine(Pen& pen, Random& random, Point at, int right, int height) {
    const int pitch = height * 5 / 6;
    while (true) {
        const int length = 2 + random.next(8);
        if (at.x + length * pitch > right) return;
        for (int k = 0; k < length; ++k, at.x += pitch) character(pen, random.next(52), at, height, height / 7);
        at.x += pitch;
    }
}

/// Dots of a clustered screen that grow from left to right.
void screen(Pen& pen, Point from, Point to) {
    constexpr int kCell = 10;
    for (int y = from.y; y < to.y; y += kCell)
        for (int x = from.x + (y / kCell % 2) * kCell / 2; x < to.x; x += kCell) {
            const int size = 1 + (x - from.x) * (kCell - 2) / (to.x - from.x);
            for (int k = 0; k < size; ++k) pen.span(y + k, x, x + size);
        }
}

}  // namespace

Bitmap textPage() {
    Bitmap page(2480, 3508);
    Pen pen(page);
    Random random(300);
    textLine(pen, random, {300, 260}, 2180, 60);
    for (int y = 420; y < 2300; y += 52) {
        const int right = random.next(8) == 0 ? 900 + random.next(1000) : 2180;  // a paragraph's last line
        textLine(pen, random, {300, y}, right, 30);
    }
    for (int row = 0; row < 8; ++row)
        for (int column = 0; column < 4; ++column) {
            const Point corner = {300 + column * 470, 2400 + row * 64};
            pen.box(corner, {corner.x + 470, corner.y + 64}, 3);
            textLine(pen, random, {corner.x + 16, corner.y + 18}, corner.x + 300, 30);
        }
    screen(pen, {300, 3000}, {1100, 3300});
    for (int y = 3000; y < 3300; y += 52) textLine(pen, random, {1200, y}, 2180, 30);
    return page;
}

Bitmap largeDrawing() {
    Bitmap page(28000, 20000);
    Pen pen(page);
    Random random(28000);
    const auto place = [&] { return Point{600 + random.next(26000), 600 + random.next(18400)}; };
    pen.box({300, 300}, {27700, 19700}, 20);
    for (int k = 0; k < 260; ++k) {  // walls and rooms
        const Point a = place();
        pen.box(a, {a.x + 300 + random.next(2400), a.y + 300 + random.next(1600)}, k % 4 ? 6 : 14);
    }
    for (int k = 0; k < 160; ++k) pen.line(place(), place(), 5);
    for (int k = 0; k < 300; ++k) pen.circle(place(), 60 + random.next(900), 5);
    for (int block = 0; block < 40; ++block) {  // hatching
        const Point a = place();
        for (int k = 0; k < 1200; k += 60) pen.line({a.x + k, a.y}, {a.x + k + 500, a.y + 500}, 4);
    }
    for (int k = 0; k < 900; ++k) {  // dimensions and notes
        const Point a = place();
        textLine(pen, random, a, a.x + 400 + random.next(900), 44);
    }
    return page;
}

}  // namespace bench
