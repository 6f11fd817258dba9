#pragma once

// The entries of a ColorMap or a ColorTable, whatever the record says.

#include "tilepress/support.h"

#include <algorithm>
#include <cstdint>

namespace tilepress {

/// How many can be read.
template <class Table>
std::int32_t usableEntries(const Table* table) {
    return table && table->entries ? std::max(std::min(table->count, table->capacity), 0) : 0;
}

/// of(red, green, blue), each from 0 to 255, of an entry; black past the last one.
template <class Table, class Of>
auto colourAt(const Table* table, std::int32_t index, Of of) {
    const ColorMapEntry colour = index < usableEntries(table) ? table->entries[index] : ColorMapEntry{0, 0, 0};
    const auto clamped = [](std::int32_t component) { return static_cast<unsigned>(std::clamp(component, 0, 255)); };
    return of(clamped(colour.red), clamped(colour.green), clamped(colour.blue));
}

}  // namespace tilepress
