#pragma once

// A packed row into its changing-element list.

#include <cstdint>

namespace tilepress::g4 {

/// Writes the row's list, at most `capacity` elements; the result is its count, 0 when it does not fit. Bits of the
/// last byte past the width are ignored.
std::int32_t detectChanges(const unsigned char* row, std::uint32_t width, std::int32_t* list, std::int32_t capacity);

}  // namespace tilepress::g4
