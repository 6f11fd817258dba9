#include "tilepress/ColorMap.h"

#include "foundation/heap.h"

#include <climits>
#include <cstdlib>

static constexpr ImgLong kLargestCapacity = INT32_MAX / static_cast<ImgLong>(sizeof(ColorMapEntry));

ColorMap::ColorMap(ImgLong room, ImgLong largest)
    : capacity(0), count(0), maximum(static_cast<int32_t>(largest)), entries(nullptr) {
    if (room <= 0 || room > kLargestCapacity) return;
    entries = tilepress::allocate<ColorMapEntry>(static_cast<std::uint64_t>(room));
    if (entries) capacity = count = static_cast<int32_t>(room);
}

ColorMap::~ColorMap() { std::free(entries); }
