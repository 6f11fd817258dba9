#include "ccitt/detect_changes.h"

#include "ccitt/row_list.h"
#include "foundation/bits.h"
#include "kernels/vectors.h"

#include <algorithm>
#include <bit>

namespace tilepress::g4 {
namespace {

constexpr std::uint32_t kBits = kBitsOf<MachineWord>, kBlock = 128;

/// How many bits are set; without an instruction that not every processor has.
constexpr std::int32_t population(MachineWord v) {
    const auto every = [](unsigned byte) { return static_cast<MachineWord>(everyByte(byte)); };
    v -= v >> 1 & every(0x55);
    v = (v & every(0x33)) + (v >> 2 & every(0x33));
    return static_cast<std::int32_t>(((v + (v >> 4)) & every(0x0F)) * every(1) >> (kBits - 8));
}

/// A list that grows by the changes of word after word.
struct GrowingList {
    std::int32_t* const elements;
    const std::int32_t last;  // of the changes
    std::int32_t count = 0;
    MachineWord before = 0;  // the colour of the pixel before

    /// Takes the pixels from column `x` on, of which the first `pixels` count; false when their changes do not fit.
    bool add(MachineWord word, std::uint32_t x, std::uint32_t pixels = kBits) {
        MachineWord changes = (word ^ (word >> 1 | before << (kBits - 1))) & firstBits<MachineWord>(pixels);
        before = word & 1;
        if (changes == 0) return true;
        const std::int32_t found = population(changes), room = last - count;
        std::int32_t* out = elements + count + 1;
        count += found;
        // As many as there are of them in nearly any word, so that no branch depends on how many; the last are
        // overwritten.
        constexpr std::int32_t kAtOnce = 6;
        if (room >= static_cast<std::int32_t>(kBits) + kAtOnce) [[likely]] {
            for (std::int32_t left = found; left > 0; left -= kAtOnce)
                for (std::int32_t k = 0; k < kAtOnce; ++k) *out++ = takeFirst(changes, x);
            return true;
        }
        if (room < found) return false;
        while (changes != 0) *out++ = takeFirst(changes, x);
        return true;
    }
    /// Whether sixteen bytes go on as the pixel before.
    bool goesOn(const unsigned char* bytes) const {
        const std::int32_t colour = -static_cast<std::int32_t>(before);
        return laneBits(loadLanes<Ints4>(bytes) == Ints4{colour, colour, colour, colour}) == 15;
    }

private:
    /// Any number once there are no more.
    static std::int32_t takeFirst(MachineWord& changes, std::uint32_t x) {
        const unsigned fromEnd = (kBits - 1) ^ static_cast<unsigned>(std::countl_zero(changes | 1));
        changes ^= MachineWord{1} << fromEnd;
        return static_cast<std::int32_t>(x + kBits - fromEnd);
    }
};

}  // namespace

std::int32_t detectChanges(const unsigned char* row, std::uint32_t width, std::int32_t* list, std::int32_t capacity) {
    if (capacity < 4 || width > kMaxListWidth) return 0;
    GrowingList changes{list, capacity - 4};  // three elements close the list
    list[0] = 0;
    std::uint32_t x = 0;
    for (; width - x >= kBlock; x += kBlock) {
        if (changes.goesOn(row + x / 8)) continue;
        for (std::uint32_t at = x; at < x + kBlock; at += kBits)
            if (!changes.add(loadWord<MachineWord>(row + at / 8), at)) return 0;
    }
    for (; x < width; x += kBits) {
        const std::uint32_t pixels = std::min(width - x, kBits);
        const MachineWord word = pixels > kBits - 8 ? loadWord<MachineWord>(row + x / 8)
                                                    : loadPartialWord<MachineWord>(row + x / 8, (pixels + 7) / 8);
        if (!changes.add(word, x, pixels)) return 0;
    }
    std::fill_n(list + changes.count + 1, 3, static_cast<std::int32_t>(width + 1));
    return changes.count + 4;
}

}  // namespace tilepress::g4
