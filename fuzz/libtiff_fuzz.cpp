// However a coder chose among the modes that Group 4 permits, libtiff and this library decode its stream to its pixels.
// (Odd streams need not come out the same by the classic decoding: a pass that reaches the end of a row ends it for
// libtiff.)

#include "input.h"
#include "peer/memory_tiff.h"
#include "support/pixel_rows.h"
#include "tilepress/ccitt.h"

#include <algorithm>
#include <string>

using peer::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t width = in.upTo(in.u8() < 250 ? 120 : 3000), height = in.upTo(12);
    const std::size_t rowBytes = (width + 7) / 8;
    Bytes pixels(rowBytes * height);
    std::string reference(width, '0'), row = reference;
    std::string codes;
    for (std::uint32_t y = 0; y < height; ++y) {
        if (in.u8() % 4 == 0) std::fill(row.begin(), row.end(), '0');
        for (std::uint32_t edits = in.below(8); edits > 0; --edits) {
            const std::uint32_t from = in.below(width), to = std::min(from + in.upTo(40), width);
            std::fill(row.begin() + from, row.begin() + to, in.u8() % 2 ? '1' : '0');
        }
        const Bytes bytes = support::packed(row);
        std::copy(bytes.begin(), bytes.end(), pixels.begin() + static_cast<std::ptrdiff_t>(y * rowBytes));
        codes += support::rowCodes(reference, row, [&](unsigned n) { return in.u8() % n == 0; });
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
