#pragma once

// The row decoder's ways of decoding, held against each other.

#include "ccitt/coded_bytes.h"
#include "ccitt/decode_row.h"
#include "ccitt/encode_row.h"
#include "ccitt/padded_line.h"
#include "support/owned.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace support {

/// Decodes a stream of words row by row: by the exact decoder and by the fast one between padded lines and, not by the
/// standard, between arrays that have no element too many. After a row that is refused it goes on a few bits further.
/// How many rows were decoded, or -1 where two ways differ in status, place or list.
inline int rowsDecodedAlike(std::int32_t width, const Bytes& stream, int rows, tilepress::g4::Decoding how) {
    using namespace tilepress;
    const Bytes words(stream.begin(), stream.end());  // without spare room behind
    const auto bytes = static_cast<std::int64_t>(words.size());
    const std::unique_ptr<unsigned char, void (*)(void*)> plain(
        codedBytes(words.data(), static_cast<std::uint32_t>(bytes)), std::free);
    const g4::CodedData in{plain.get(), bytes, false};
    std::vector<std::int32_t> listA(static_cast<std::size_t>(width) + 4), listB(listA.size());
    std::int32_t *above = allocateLine(static_cast<std::uint32_t>(width)),
                 *below = allocateLine(static_cast<std::uint32_t>(width)),
                 *exactly = allocateLine(static_cast<std::uint32_t>(width));
    std::int32_t count = g4::whiteLine(above, width);
    std::int64_t bit = 0;
    int decoded = 0;
    for (int row = 0; row < rows && decoded >= 0; ++row) {
        std::copy_n(above, count, listA.begin());
        std::int64_t exactBit = bit, lineBit = bit, listBit = bit;
        std::int32_t exactCount = 0, lineCount = 0, listCount = 0;
        const std::int32_t irregular = std::exchange(above[kLineIrregular], 1);  // which leaves it to the exact decoder
        const auto exact = g4::decodeLine(in, exactBit, {above, count}, width, exactly, exactCount, how);
        above[kLineIrregular] = irregular;
        const auto line = g4::decodeLine(in, lineBit, {above, count}, width, below, lineCount, how);
        const bool alike = line == exact && lineBit == exactBit && lineCount == exactCount &&
                           std::equal(below, below + lineCount, exactly);
        const bool asList = how == g4::Decoding::standard
                                ? exact != g4::kRowDecoded || g4::isRow({below, lineCount}, width + 1)
                                : g4::decodeRow({words.data(), bytes, true}, listBit, {listA.data(), count}, width,
                                                listB.data(), listCount) == exact &&
                                      listBit == exactBit && listCount == exactCount && exactCount <= width + 4 &&
                                      std::equal(below, below + lineCount, listB.begin());
        if (!alike || !asList || (exact == g4::kRowDecoded && exactBit <= bit)) decoded = -1;
        else if (exact != g4::kRowDecoded) bit += 1 + row % 40;
        else {
            std::swap(above, below);
            count = lineCount;
            bit = lineBit;
            ++decoded;
        }
    }
    for (std::int32_t* line : {above, below, exactly}) freeLine(line);
    return decoded;
}

}  // namespace support
