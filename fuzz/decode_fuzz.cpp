// Whatever the bits and the row before are, a row decodes to the same status, place and list by every way there is,
// and nothing outside the callers' arrays is touched.

#include "ccitt/coded_bytes.h"
#include "ccitt/decode_row.h"
#include "ccitt/padded_line.h"
#include "input.h"
#include "tilepress/ccitt.h"

#include <algorithm>

using namespace tilepress;

namespace {

/// A stream decoded row by row: by the exact decoder, by the fast one between lines, and by the exported function.
void decodeStream(std::uint32_t rowWidth, const std::vector<unsigned char>& words) {
    const auto width = static_cast<std::int32_t>(rowWidth);
    const auto bytes = static_cast<std::int32_t>(words.size());
    const auto plain = std::unique_ptr<unsigned char, void (*)(void*)>(
        codedBytes(words.data(), static_cast<std::uint32_t>(bytes)), std::free);
    const auto coded = exactly(words);
    std::int32_t *lineA = allocateLine(rowWidth), *lineB = allocateLine(rowWidth);
    auto exactA = exactly<std::int32_t>(rowWidth + 4), exactB = exactly<std::int32_t>(rowWidth + 4);
    auto apiA = exactly<std::int32_t>(rowWidth + 4), apiB = exactly<std::int32_t>(rowWidth + 4);
    std::int32_t count = g4::whiteLine(lineA, width);
    std::copy_n(lineA, 4, exactA.get());
    std::copy_n(lineA, 4, apiA.get());
    std::int64_t bit = 0;
    for (int row = 0; row < 64; ++row) {
        std::int64_t exactBit = bit, fastBit = bit;
        std::int32_t exactCount = 0, fastCount = 0, apiCount = 0;
        auto byte = static_cast<std::int32_t>(bit / 8), bitInByte = static_cast<std::int32_t>(bit % 8) + 1;
        const g4::CodedData in{plain.get(), bytes, false};
        const auto exact = g4::decodeRow(in, exactBit, {exactA.get(), count}, width, exactB.get(), exactCount);
        const auto fast = g4::decodeLine(in, fastBit, {lineA, count}, width, lineB, fastCount);
        const auto api = cit_decode_tiff_gr4(apiA.get(), count, width, reinterpret_cast<std::uint16_t*>(coded.get()),
                                             &byte, &bitInByte, nullptr, apiB.get(), &apiCount, bytes);
        PROMISE(fast == exact && api == exact);
        if (exact != g4::kRowDecoded) break;
        PROMISE(fastBit == exactBit && 8 * std::int64_t{byte} + bitInByte - 1 == exactBit && exactBit > bit);
        PROMISE(fastCount == exactCount && apiCount == exactCount && exactCount <= width + 4);
        PROMISE(std::equal(lineB, lineB + exactCount, exactB.get()) &&
                std::equal(lineB, lineB + exactCount, apiB.get()));
        std::swap(lineA, lineB);
        exactA.swap(exactB);
        apiA.swap(apiB);
        count = exactCount;
        bit = exactBit;
    }
    freeLine(lineA);
    freeLine(lineB);
}

/// The same by the standard, between lines, where every row is a list that increases.
void decodeByStandard(std::uint32_t rowWidth, const std::vector<unsigned char>& words) {
    const auto width = static_cast<std::int32_t>(rowWidth);
    const auto plain = std::unique_ptr<unsigned char, void (*)(void*)>(
        codedBytes(words.data(), static_cast<std::uint32_t>(words.size())), std::free);
    const g4::CodedData in{plain.get(), static_cast<std::int64_t>(words.size()), false};
    std::int32_t *above = allocateLine(rowWidth), *fastLine = allocateLine(rowWidth),
                 *exactLine = allocateLine(rowWidth);
    std::int32_t count = g4::whiteLine(above, width), fastCount = 0, exactCount = 0;
    std::int64_t bit = 0;
    for (int row = 0; row < 64; ++row) {
        std::int64_t exactBit = bit;
        above[kLineIrregular] = 1;  // which leaves it to the exact decoder
        const auto exact =
            g4::decodeLine(in, exactBit, {above, count}, width, exactLine, exactCount, g4::Decoding::standard);
        above[kLineIrregular] = 0;
        PROMISE(g4::decodeLine(in, bit, {above, count}, width, fastLine, fastCount, g4::Decoding::standard) == exact);
        if (exact != g4::kRowDecoded) break;
        PROMISE(bit == exactBit && fastCount == exactCount && std::equal(fastLine, fastLine + fastCount, exactLine));
        PROMISE(g4::isRow({fastLine, fastCount}, width + 1));
        std::swap(above, fastLine);
        count = fastCount;
    }
    for (auto* line : {above, fastLine, exactLine}) freeLine(line);
}

/// A row against any numbers at all, from any place.
void decodeAgainstAnything(Input& in, std::uint32_t rowWidth) {
    const std::uint32_t count = in.below(40);
    const auto reference = exactly<std::int32_t>(count), coding = exactly<std::int32_t>(rowWidth + 4);
    for (std::uint32_t i = 0; i < count; ++i)
        reference[i] = static_cast<std::int32_t>(in.u8() < 200 ? in.below(2 * rowWidth + 3) : in.u32());
    auto byte = static_cast<std::int32_t>(in.u16()) - 16, bit = static_cast<std::int32_t>(in.below(40)) - 8;
    std::int32_t codingCount = 0;
    const std::int32_t length = 2 * static_cast<std::int32_t>(in.below(64));
    auto data = exactly<unsigned char>(std::size_t(length) + 2);
    for (std::int32_t i = 0; i < length; ++i) data[std::size_t(i)] = static_cast<unsigned char>(in.u8());
    cit_decode_tiff_gr4(reference.get(), static_cast<std::int32_t>(count), static_cast<std::int32_t>(rowWidth),
                        reinterpret_cast<std::uint16_t*>(data.get()), &byte, &bit, nullptr, coding.get(), &codingCount,
                        length > 0 ? length : 2);
    PROMISE(codingCount <= static_cast<std::int32_t>(rowWidth) + 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    cit_enable_decode_gr4();
    Input in(data, size);
    const std::uint32_t kind = in.u8(), width = in.u8() < 200 ? in.upTo(200) : in.upTo(6000);
    if (kind % 4 == 0) {
        decodeAgainstAnything(in, width);
    } else {
        std::vector<unsigned char> words = in.rest();
        words.resize((words.size() + 2) / 2 * 2);
        decodeStream(width, words);
        decodeByStandard(width, words);
    }
    cit_disable_decode_gr4();
    return 0;
}
