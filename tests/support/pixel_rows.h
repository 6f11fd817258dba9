#pragma once

// Bilevel rows as text, packed and as lists, and a coder that follows the wording
// of T.6 pixel by pixel.

#include "support/coded.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace support {

using List = std::vector<std::int32_t>;

inline Bytes packed(const std::string& row) {
    Bytes bytes((row.size() + 7) / 8);
    for (std::size_t x = 0; x < row.size(); ++x)
        if (row[x] == '1') bytes[x / 8] = static_cast<unsigned char>(bytes[x / 8] | 0x80 >> x % 8);
    return bytes;
}

inline List listOf(const std::string& row) {
    List list{0};
    for (std::size_t x = 0; x < row.size(); ++x)
        if (row[x] != (x ? row[x - 1] : '0')) list.push_back(static_cast<std::int32_t>(x) + 1);
    list.insert(list.end(), 3, static_cast<std::int32_t>(row.size()) + 1);
    return list;
}

/// Runs of random lengths up to `longest`; every other row or so resembles `above`.
inline std::string randomRow(std::mt19937& random, std::size_t width, std::size_t longest, const std::string& above) {
    std::string row(width, '0');
    if (random() % 4 != 0) {
        row = above;
        for (unsigned k = random() % 8; k > 0 && width > 0; --k) {
            const std::size_t x = random() % width;
            row[x] = row[x + 1 < width && random() % 2 ? x + 1 : x] == '1' ? '0' : '1';
        }
        return row;
    }
    char colour = random() % 2 ? '1' : '0';
    for (std::size_t x = 0; x < width; colour = colour == '1' ? '0' : '1')
        for (std::size_t run = 1 + random() % longest; run > 0 && x < width; --run) row[x++] = colour;
    return row;
}

/// The codes of `row` below `above`, by definition: a0, a1, a2, b1, b2 are found anew for each code. Where a pass code
/// or vertical mode is due, horizontal mode does too: it is taken where `avoids`, asked with 8 or 4, says so.
template <class Avoids>
std::string rowCodes(const std::string& above, const std::string& row, Avoids avoids) {
    const int width = static_cast<int>(row.size());
    const auto at = [&](const std::string& line, int x) { return x < 0 ? '0' : line[static_cast<std::size_t>(x)]; };
    const auto nextChange = [&](const std::string& line, int x) {  // first changing element right of x
        do ++x;
        while (x < width && at(line, x) == at(line, x - 1));
        return x < width ? x : width;
    };
    static const char* const vertical[] = {"0000010", "000010", "010", "1", "011", "000011", "0000011"};
    std::string text;
    for (int a0 = -1; a0 < width;) {
        const char colour = at(row, a0);
        const int a1 = nextChange(row, a0), a2 = nextChange(row, a1);
        int b1 = nextChange(above, a0);
        if (b1 < width && at(above, b1) == colour) b1 = nextChange(above, b1);
        const int b2 = nextChange(above, b1);
        if (b2 < a1 && !avoids(8)) {
            text += "0001";
            a0 = b2;
        } else if (a1 - b1 >= -3 && a1 - b1 <= 3 && b2 >= a1 && !avoids(4)) {
            text += vertical[a1 - b1 + 3];
            a0 = a1;
        } else {
            const int from = a0 < 0 ? 0 : a0;
            text += "001" + runText(a1 - from, colour == '1') + runText(a2 - a1, colour != '1');
            a0 = a2;
        }
        if (a0 >= width) break;
    }
    return text;
}
inline std::string rowCodes(const std::string& above, const std::string& row) {
    return rowCodes(above, row, [](int) { return false; });
}

}  // namespace support
