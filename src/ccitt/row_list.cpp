#include "ccitt/row_list.h"

#include "kernels/vectors.h"

namespace tilepress::g4 {

bool isRow(RowList list, std::int32_t end) {
    const std::int32_t* const c = list.elements;
    if (!c || list.count < 4) return false;
    const std::int32_t last = list.count - 3;
    bool good = (c[0] == 0) & (c[last] == end) & (c[last + 1] == end) & (c[last + 2] == end);
    Ints4 increases = {-1, -1, -1, -1};
    std::int32_t k = 0;
    for (; k + 4 <= last; k += 4) increases &= loadLanes<Ints4>(c + k + 1) > loadLanes<Ints4>(c + k);
    for (; k < last; ++k) good &= c[k] < c[k + 1];
    return good && laneBits(increases) == 15;
}

}  // namespace tilepress::g4
