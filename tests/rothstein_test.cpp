#include "tilepress/Rothstein.h"

#include "kernels/grey_maps.h"
#include "kernels/mark_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <vector>

namespace tilepress {
namespace {

using Numbers = std::vector<ImgULong>;

/// Takes over a table.
template <class T = ImgULong>
std::vector<T> taken(T* table, std::size_t count) {
    std::vector<T> values(table, table + count);
    std::free(table);
    return values;
}

Numbers bitsOf(ImgULong positions, ImgULong marks) {
    rothstein_code_struct* code = nullptr;
    getRothsteinArray(positions, marks, &code);
    Numbers bits;
    for (const auto& record : taken(code, positions)) {
        bits.push_back(record.bit);
        EXPECT_TRUE(!record.payload && !record.next);
    }
    return bits;
}

/// A code's run table, counted backwards from the last position.
Numbers runsOf(const Numbers& bits) {
    Numbers runs(bits.size());
    ImgULong count = 1;
    for (std::size_t i = bits.size(); i-- > 0; ++count)
        if (bits[i]) {
            runs[i] = count;
            count = 0;
        }
    return runs;
}

TEST(Rothstein, KeptNoMarksMarkEverything) {
    EXPECT_EQ(bitsOf(4, 0), (Numbers{1, 1, 1, 1}));
    EXPECT_EQ(bitsOf(10, 4), (Numbers{1, 0, 0, 1, 0, 1, 0, 0, 1, 0}));
    EXPECT_EQ(bitsOf(7, 3), (Numbers{1, 0, 0, 1, 0, 1, 0}));
    EXPECT_EQ(bitsOf(3, 3), (Numbers{1, 1, 1}));
    EXPECT_EQ(bitsOf(3, 8), (Numbers{1, 1, 1}));
    EXPECT_EQ(bitsOf(0, 4), Numbers{});
}

TEST(Rothstein, RunTablesAreThoseOfTheCode) {
    for (ImgULong n = 0; n < 70; ++n)
        for (ImgULong m = 0; m < 90; ++m) ASSERT_EQ(taken(sizeTable(n, m), n), runsOf(bitsOf(n, m))) << n << ' ' << m;
}

TEST(Rothstein, MarksAreWalkedWhereTheyLie) {
    for (std::uint32_t n : {1u, 2u, 97u, 4294967295u})
        for (std::uint32_t m : {1u, 2u, 5u, 96u, 97u, 65537u, 2147483649u, 4294967295u}) {
            if (m > n) continue;
            MarkWalk mark(n, m);
            for (std::uint32_t k = 0; k < std::min(m, 1000u); ++k, mark.advance()) {
                ASSERT_EQ(mark.position(), (std::uint64_t{k} * n + m - 1) / m) << n << ' ' << m << ' ' << k;
                ASSERT_EQ(mark.size(), markPosition(k + 1, n, m) - mark.position());
            }
        }
}

TEST(Rothstein, KeptTheArgumentsOfTheTwoTablesCross) {
    ImgULong *a = nullptr, *b = nullptr;
    CreateRothTables(&a, &b, 5, 7, 2, 3);
    EXPECT_EQ(taken(a, 7), (Numbers{3, 0, 0, 2, 0, 2, 0}));
    EXPECT_EQ(taken(b, 5), (Numbers{3, 0, 0, 2, 0}));
}

TEST(Rothstein, TablesOfAnEnlargement) {
    ImgULong *rows = nullptr, *runs = nullptr, *starts = nullptr, *bytes = nullptr, *bits = nullptr;
    CreateRothEnlargeTables(10, 5, 4, 2, &rows, &runs, &starts, &bytes, &bits);
    EXPECT_EQ(taken(rows, 5), (Numbers{3, 0, 0, 2, 0}));
    EXPECT_EQ(taken(runs, 10), (Numbers{3, 0, 0, 2, 0, 3, 0, 0, 2, 0}));
    EXPECT_EQ(taken(starts, 4), (Numbers{0, 3, 5, 8}));
    EXPECT_EQ(taken(bytes, 10), (Numbers{0, 0, 0, 0, 0, 0, 0, 0, 1, 1}));
    EXPECT_EQ(taken(bits, 10), (Numbers{7, 6, 5, 4, 3, 2, 1, 0, 7, 6}));
    CreateRothEnlargeTables(3, 1, 0, 1, &rows, &runs, &starts, &bytes, &bits);
    EXPECT_EQ(taken(runs, 3), (Numbers{1, 1, 1})) << "nothing enlarged stays in its tables";
    for (ImgULong* table : {rows, starts, bytes, bits}) std::free(table);
}

TEST(Rothstein, TablesOfAReduction) {
    ImgULong *rows[2], *sizes[2], *firsts[2], *bytes[2], *bits[2], *columns = nullptr;
    CreateRothReduceTables(19, 5, 10, 2, &rows[0], &sizes[0], &firsts[0], &bytes[0], &bits[0]);
    CreateRothReduceTables2(19, 5, 10, 2, &rows[1], &sizes[1], &firsts[1], &bytes[1], &bits[1], &columns);
    EXPECT_EQ(taken(columns, 19), (Numbers{0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9}));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(taken(rows[i], 5), (Numbers{3, 0, 0, 2, 0}));
        EXPECT_EQ(taken(sizes[i], 19), (Numbers{2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 2, 0, 1}));
        EXPECT_EQ(taken(firsts[i], 19), (Numbers{0, 0, 2, 2, 4, 4, 6, 6, 8, 8, 10, 10, 12, 12, 14, 14, 16, 16, 18}));
        EXPECT_EQ(taken(bytes[i], 19), (Numbers{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1}));
        EXPECT_EQ(taken(bits[i], 19), (Numbers{7, 7, 6, 6, 5, 5, 4, 4, 3, 3, 2, 2, 1, 1, 0, 0, 7, 7, 6}));
    }
}

using Levels = std::vector<unsigned char>;

Levels greys(ImgULong levels, bool inverted = false) {
    unsigned char* map = nullptr;
    CreateGreyMapping(levels, &map, inverted);
    return taken(map, levels);
}

/// The ramp as its definition builds it, at run time and with the library's power function.
TEST(GreyMapping, TheRampIsTheOneOfDoubleArithmetic) {
    std::vector<unsigned char> ramp;
    for (double x = 0.0; x < 0.825; x += 7.5e-05)
        ramp.push_back(static_cast<unsigned char>(std::min(255.0, std::floor(std::pow(x, 2.0) * 382.5))));
    ASSERT_EQ(ramp.size(), 11000u);
    ramp.push_back(255);
    greys(0);
    greys(1);
    for (ImgULong levels : {2u, 3u, 4u, 5u, 17u, 26u, 101u, 122u, 1000u, 5000u, 10998u, 10999u}) {
        const Levels map = greys(levels), inverted = greys(levels, true);
        double position = 0.0;
        for (std::size_t k = levels; k-- > 0; position += 11001.0 / levels) {
            const int grey = k == 0 ? 255 : k == levels - 1 ? 0 : ramp[static_cast<std::size_t>(std::ceil(position))];
            ASSERT_EQ(map[k], grey) << levels << ' ' << k;
            ASSERT_EQ(inverted[k], 255 - grey) << levels << ' ' << k;
        }
    }
}

TEST(GreyMapping, KeptTheStaircaseIsOneStepShort) {
    for (ImgULong levels : {11000u, 11026u, 16900001u}) {
        const Levels large = greys(levels), inverted = greys(levels, true);
        for (std::uint64_t k = 0; k < 255; ++k) {
            const std::size_t first = (k * levels + 255) / 256, next = ((k + 1) * levels + 255) / 256;
            ASSERT_TRUE(large[first] == 255 - k && large[next - 1] == 255 - k) << k;
            ASSERT_TRUE(inverted[first] == k && inverted[next - 1] == k) << k;
        }
        for (std::size_t k = (255ull * levels + 255) / 256; k < levels; ++k) ASSERT_EQ(large[k] + 255 - inverted[k], 0);
    }
}

TEST(GreyMapping, EveryCellHasItsMap) {
    GreyMaps maps;
    ASSERT_TRUE(maps.prepare(17, 10, 5, 3));  // 3 or 4 columns, 3 or 4 rows
    for (std::uint32_t h : {3u, 4u})
        for (std::uint32_t w : {3u, 4u}) {
            const Levels map = greys(h * w + 1);
            for (std::uint32_t n = 0; n <= h * w; ++n)
                EXPECT_EQ(maps.grey(h, w, n), map[n]) << h << ' ' << w << ' ' << n;
        }
    EXPECT_EQ(greyPixel(0xAB), 0x00ABABABu);
    EXPECT_FALSE(maps.prepare(65536, 65536, 1, 1));
}

}  // namespace
}  // namespace tilepress
