#include "peers.h"

#include <algorithm>
#include <array>
#include <bit>

namespace bench {

// --- Leptonica --------------------------------------------------------------------

PixPtr toPix(const unsigned char* rows, std::uint32_t width, std::uint32_t height, int depth) {
    PixPtr pix(pixCreateNoInit(static_cast<l_int32>(width), static_cast<l_int32>(height), depth));
    const std::size_t rowBytes = (std::size_t{width} * static_cast<unsigned>(depth) + 7) / 8;
    const std::size_t pixBytes = static_cast<std::size_t>(pixGetWpl(pix.get())) * 4;
    auto* out = reinterpret_cast<unsigned char*>(pixGetData(pix.get()));
    for (std::size_t y = 0; y < height; ++y, out += pixBytes) {
        std::memcpy(out, rows + y * rowBytes, rowBytes);
        std::memset(out + rowBytes, 0, pixBytes - rowBytes);
    }
    // Its words have the first pixel highest. A pixel of 32 bits is a word already.
    if (depth < 32) pixEndianByteSwap(pix.get());
    return pix;
}

PixPtr toPix(const Bitmap& bitmap) { return toPix(bitmap.bits.data(), bitmap.width, bitmap.height, 1); }

Bitmap toBitmap(PIX* pix) {
    Bitmap bitmap(static_cast<std::uint32_t>(pixGetWidth(pix)), static_cast<std::uint32_t>(pixGetHeight(pix)));
    const PixPtr swapped(pixEndianByteSwapNew(pix));
    const std::size_t pixBytes = static_cast<std::size_t>(pixGetWpl(pix)) * 4;
    const auto* in = reinterpret_cast<const unsigned char*>(pixGetData(swapped.get()));
    for (std::size_t y = 0; y < bitmap.height; ++y) std::memcpy(bitmap.row(y), in + y * pixBytes, bitmap.rowBytes());
    bitmap.clearSpareBits();
    return bitmap;
}

/// Every pixel joined with those up to `distance` right of it, or below.
static void joinRight(PIX* pix, int distance) {
    pixRasterop(pix, 0, 0, pixGetWidth(pix) - distance, pixGetHeight(pix), PIX_SRC | PIX_DST, pix, distance, 0);
}
static void joinBelow(PIX* pix, int distance) {
    pixRasterop(pix, 0, 0, pixGetWidth(pix), pixGetHeight(pix) - distance, PIX_SRC | PIX_DST, pix, 0, distance);
}

PixPtr inkTenth(PIX* pix) {
    const PixPtr half(pixReduceRankBinary2(pix, 1, nullptr));
    pixSetWidth(half.get(), pixGetWidth(pix) / 10 * 5);
    pixSetHeight(half.get(), pixGetHeight(pix) / 10 * 5);
    for (int distance : {1, 2, 1}) joinBelow(half.get(), distance);
    const PixPtr rows(pixScaleBinary(half.get(), 1, 0.2f));
    for (int distance : {1, 2, 1}) joinRight(rows.get(), distance);
    return PixPtr(pixScaleBinary(rows.get(), 0.2f, 1));
}

PixPtr inkThird(PIX* pix) {
    const PixPtr copy(pixCopy(nullptr, pix));
    pixSetWidth(copy.get(), pixGetWidth(pix) / 3 * 3);
    pixSetHeight(copy.get(), pixGetHeight(pix) / 3 * 3);
    for (int distance : {1, 1}) joinBelow(copy.get(), distance);
    const PixPtr rows(pixScaleBinary(copy.get(), 1, 1 / 3.0f));
    for (int distance : {1, 1}) joinRight(rows.get(), distance);
    return PixPtr(pixScaleBinary(rows.get(), 1 / 3.0f, 1));
}

// --- counting ---------------------------------------------------------------------

static constexpr auto kOnes = [] {
    std::array<unsigned char, 1024> ones{};
    for (unsigned bits = 0; bits < 1024; ++bits) ones[bits] = static_cast<unsigned char>(std::popcount(bits));
    return ones;
}();

void countTenths(const Bitmap& bitmap, std::vector<std::uint32_t>& counts) {
    const std::size_t across = bitmap.width / 10, down = bitmap.height / 10;
    counts.assign(across * down, 0);
    for (std::size_t y = 0; y < down * 10; ++y) {
        const unsigned char* const row = bitmap.row(y);
        std::uint32_t* const out = counts.data() + y / 10 * across;
        for (std::size_t cell = 0, bit = 0; cell < across; ++cell, bit += 10) {
            // Ten bits from any place lie within two bytes, as cells begin at even columns.
            const unsigned two = static_cast<unsigned>(row[bit / 8]) << 8 | row[bit / 8 + 1];
            out[cell] += kOnes[(two << bit % 8 & 0xFFC0) >> 6];
        }
    }
}

}  // namespace bench
