#pragma once

// Records that begin with their size as the caller knows it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tilepress {

/// The caller's record with the fields that it lacks as 0; false for null and for a size that is none.
template <class Record>
bool readRecord(Record& known, const Record* callers) {
    known = Record{};
    std::uint32_t size = 0;
    if (!callers) return false;
    std::memcpy(&size, callers, sizeof size);
    if (size < sizeof size) return false;
    std::memcpy(&known, callers, std::min<std::size_t>(size, sizeof known));
    return true;
}

/// Writes the fields that the caller's record has, but for its size.
template <class Record>
void writeRecord(Record* callers, Record known, std::uint32_t callersSize) {
    known.size = callersSize;
    std::memcpy(callers, &known, std::min<std::size_t>(callersSize, sizeof known));
}

}  // namespace tilepress
