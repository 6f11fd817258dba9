#pragma once

#include <cstdint>

namespace tilepress {

/// The position of mark k when `marks` of them are spread over `positions`, 1 <= marks <= positions: what a
/// run table gives by walking it. k = marks gives `positions`.
inline std::uint32_t markPosition(std::uint32_t k, std::uint32_t positions, std::uint32_t marks) {
    return static_cast<std::uint32_t>((std::uint64_t{k} * positions + marks - 1) / marks);
}

}  // namespace tilepress
