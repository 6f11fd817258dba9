#include "tilepress/support.h"

#include "foundation/colour_entries.h"
#include "foundation/heap.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <limits>

using namespace tilepress;

// --- blocks ---

int MemAllocate(int, std::size_t size, int, void** out) {
    *out = std::malloc(std::max<std::size_t>(size, 1));
    return *out ? 0 : 1;
}

int MemSetPointer(int, void*, void*) { return 0; }

int MemFree(int, void* block) {
    std::free(block);
    return 0;
}

// --- colours ---

ColorTable* ColOpen(std::int32_t count, std::int32_t maximum) {
    const std::int32_t room = std::max(count, 0);
    Heap<ColorTable> table(1);
    Heap<ColorMapEntry> entries(static_cast<std::uint64_t>(room));
    if (!table || !entries) return nullptr;
    *table.get() = {room, room, maximum, entries.release()};
    return table.release();
}

static double distance(const ColorMapEntry& a, const ColorMapEntry& b) {
    const auto square = [](double x, double y) { return (x - y) * (x - y); };
    return square(a.red, b.red) + square(a.green, b.green) + square(a.blue, b.blue);
}

int ColGetClosestColor(const ColorMapEntry* colour, const ColorTable* table, std::int32_t* index) {
    std::int32_t nearest = 0;
    double least = std::numeric_limits<double>::infinity();
    const std::int32_t count = usableEntries(table);
    for (std::int32_t i = 0; i < count; ++i) {
        const double d = distance(*colour, table->entries[i]);
        if (d < least) {
            least = d;
            nearest = i;
        }
    }
    *index = nearest;
    return 0;
}

ColorXfm* ColOpenXfm(std::int32_t key) {
    Heap<ColorXfm> transform(1);
    if (transform) *transform.get() = {key, 0, nullptr};
    return transform.release();
}

int ColMapColors(const ColorTable* source, const ColorTable* target, ColorXfm* transform) {
    if (!transform) return 1;
    const std::int32_t count = usableEntries(source);
    if (count > transform->count) {
        Heap<std::int32_t> index(static_cast<std::uint64_t>(count));
        if (!index) return 1;
        std::free(transform->index);
        transform->index = index.release();
    }
    transform->count = std::max(count, transform->count);
    for (std::int32_t i = 0; i < count; ++i) ColGetClosestColor(&source->entries[i], target, &transform->index[i]);
    return 0;
}

void ColCloseXfm(ColorXfm** transform) {
    if (!transform || !*transform) return;
    std::free((*transform)->index);
    std::free(*transform);
    *transform = nullptr;
}

// --- byte order ---

void tra_swap_4(void* word32) {
    unsigned char* bytes = static_cast<unsigned char*>(word32);
    std::reverse(bytes, bytes + 4);
}

void tra_swap_2(void* word16) {
    unsigned char* bytes = static_cast<unsigned char*>(word16);
    std::swap(bytes[0], bytes[1]);
}

const SysParms* osh_get_sys_parms() {
    static constexpr SysParms parms = {0, std::endian::native == std::endian::little ? 2 : 1};
    return &parms;
}
