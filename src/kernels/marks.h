#pragma once

#include "foundation/contract.h"

#include <cstdint>

namespace tilepress {

/// The position of mark k when `marks` of them are spread over `positions`, 1 <= marks <= positions.
/// k = marks gives `positions`.
inline std::uint32_t markPosition(std::uint32_t k, std::uint32_t positions, std::uint32_t marks) {
    TILEPRESS_DEMAND(marks >= 1 && k <= marks && marks <= positions);
    return static_cast<std::uint32_t>((std::uint64_t{k} * positions + marks - 1) / marks);
}

/// The same positions from mark 0 on, without a division for each.
class MarkWalk {
public:
    MarkWalk(std::uint32_t positions, std::uint32_t marks)
        : marks_(marks), step_(positions / marks), rest_(positions % marks) {}

    std::uint32_t position() const { return position_; }
    /// How many positions the mark owns.
    std::uint32_t size() const { return step_ + (excess_ < rest_); }
    void advance() {
        position_ += size();
        if (excess_ < rest_) excess_ += marks_ - rest_;
        else excess_ -= rest_;
    }

private:
    std::uint32_t marks_, step_, rest_;
    std::uint32_t position_ = 0;
    std::uint32_t excess_ = 0;  // marks * position - k * positions: what rounding up has added
};

}  // namespace tilepress
