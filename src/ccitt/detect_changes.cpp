#include "ccitt/detect_changes.h"

#include "ccitt/row_list.h"
#include "foundation/bits.h"

#include <algorithm>
#include <bit>

namespace tilepress::g4 {

std::int32_t detectChanges(const unsigned char* row, std::uint32_t width, std::int32_t* list, std::int32_t capacity) {
    if (capacity < 4 || width > kMaxListWidth) return 0;
    constexpr std::uint32_t kBits = kBitsOf<MachineWord>;
    const std::int32_t last = capacity - 4;  // of the changes; three elements close the list
    std::int32_t n = 0;
    MachineWord before = 0;
    list[0] = 0;
    for (std::uint32_t x = 0; x < width; x += kBits) {
        const std::uint32_t pixels = std::min(width - x, kBits);
        const MachineWord word = pixels > kBits - 8 ? loadWord<MachineWord>(row + x / 8)
                                                    : loadPartialWord<MachineWord>(row + x / 8, (pixels + 7) / 8);
        MachineWord changes = (word ^ (word >> 1 | before << (kBits - 1))) & firstBits<MachineWord>(pixels);
        before = word & 1;
        while (changes) {
            if (n == last) return 0;
            const int bit = std::countl_zero(changes);
            list[++n] = static_cast<std::int32_t>(x) + bit + 1;
            changes ^= MachineWord{1} << (kBits - 1) >> bit;
        }
    }
    std::fill_n(list + n + 1, 3, static_cast<std::int32_t>(width + 1));
    return n + 4;
}

}  // namespace tilepress::g4
