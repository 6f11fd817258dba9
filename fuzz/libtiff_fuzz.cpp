// However a coder chose among the modes that Group 4 permits, libtiff and this library decode its stream to its pixels.
// (Odd streams need not come out the same by the classic decoding: a pass that reaches the end of a row ends it for
// libtiff.)

#include "input.h"
#include "peer/memory_tiff.h"
#include "support/coded.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <string>

namespace {

using peer::Bytes;

/// Columns from `from` on up to where a row has another colour, or its width.
std::uint32_t changeAfter(const Bytes& row, std::uint32_t from, bool colour) {
    while (from < row.size() && row[from] == colour) ++from;
    return from;
}

/// The next change of the reference to the right of a0 whose new colour is not the coding one's; a0 is -1 at first.
std::uint32_t b1After(const Bytes& reference, std::int64_t a0, bool colour) {
    const auto width = static_cast<std::uint32_t>(reference.size());
    for (auto x = static_cast<std::uint32_t>(a0 + 1); x < width; ++x)
        if (reference[x] != colour && (x == 0 ? 0 : reference[x - 1]) == colour) return x;
    return width;
}

/// One row in codes, the input choosing where there is a choice.
std::string codesOf(Input& in, const Bytes& reference, const Bytes& row) {
    static const char* const vertical[] = {"0000010", "000010", "010", "1", "011", "000011", "0000011"};
    const auto width = static_cast<std::uint32_t>(row.size());
    std::string codes;
    std::int64_t a0 = -1;
    bool colour = false;
    while (a0 < static_cast<std::int64_t>(width)) {
        const std::uint32_t from = a0 < 0 ? 0 : static_cast<std::uint32_t>(a0);
        const std::uint32_t a1 = changeAfter(row, from, colour), b1 = b1After(reference, a0, colour);
        const std::uint32_t b2 = b1 < width ? changeAfter(reference, b1, !colour) : width;
        const std::int64_t d = std::int64_t{a1} - b1;
        if (b2 < a1 && in.u8() % 8) {
            codes += "0001";
            a0 = b2;
        } else if (-3 <= d && d <= 3 && b2 >= a1 && in.u8() % 4) {
            codes += vertical[d + 3];
            a0 = a1;
            colour = !colour;
            if (a1 == width) break;
        } else {
            const std::uint32_t a2 = changeAfter(row, a1, !colour);
            codes += "001" + support::runText(static_cast<int>(a1 - from), colour) +
                     support::runText(static_cast<int>(a2 - a1), !colour);
            a0 = a2;
        }
    }
    return codes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t width = in.upTo(in.u8() < 250 ? 120 : 3000), height = in.upTo(12);
    const std::size_t rowBytes = (width + 7) / 8;
    Bytes pixels(rowBytes * height), reference(width), row(width);
    std::string codes;
    for (std::uint32_t y = 0; y < height; ++y) {
        if (in.u8() % 4 == 0) std::fill(row.begin(), row.end(), 0);
        for (std::uint32_t edits = in.below(8); edits > 0; --edits) {
            const std::uint32_t from = in.below(width), to = std::min(from + in.upTo(40), width);
            std::fill(row.begin() + from, row.begin() + to, static_cast<unsigned char>(in.u8() % 2));
        }
        for (std::uint32_t x = 0; x < width; ++x)
            pixels[y * rowBytes + x / 8] |= static_cast<unsigned char>(row[x] << (7 - x % 8));
        codes += codesOf(in, reference, row);
        reference = row;
    }
    Bytes strip = support::bits(codes + support::kEndOfBlockText);
    PROMISE(peer::MemoryTiff(width, height).pixelsFrom(strip, pixels.size()) == pixels);

    Bytes words = support::exchanged(strip);
    cit_enable_decode_gr4();
    auto before = exactly<std::int32_t>(width + 4), coding = exactly<std::int32_t>(width + 4);
    std::fill_n(before.get() + 1, 3, static_cast<std::int32_t>(width) + 1);
    std::int32_t count = 4, next = 0, byte = 0, bit = 1;
    Bytes decoded(pixels.size());
    for (std::uint32_t y = 0; y < height; ++y) {
        PROMISE(cit_decode_tiff_gr4(before.get(), count, static_cast<std::int32_t>(width),
                                    reinterpret_cast<std::uint16_t*>(words.data()), &byte, &bit, nullptr, coding.get(),
                                    &next, static_cast<std::int32_t>(words.size())) == 0);
        for (std::int32_t i = 2; i < next - 2; i += 2)
            for (std::int32_t x = coding[i - 1] - 1; x < coding[i] - 1; ++x)
                decoded[y * rowBytes + static_cast<std::size_t>(x) / 8] |= static_cast<unsigned char>(0x80 >> x % 8);
        before.swap(coding);
        count = next;
    }
    PROMISE(decoded == pixels);
    cit_disable_decode_gr4();
    return 0;
}
