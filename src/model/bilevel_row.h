#pragma once

// What the two bilevel kinds share: row length and the mark of unset fields.

#include "tilepress/IImg.h"

#include <cstdint>

/// Stands in every header field that has not been set.
inline constexpr ImgULong kUnset = 0xDEADBEEF;

/// A stored row.
struct BilevelRow {
    ImgULong padBits;
    ImgULong bytes;

    BilevelRow(ImgULong width, ImgAlignmentEnum alignment) {
        const ImgULong unit = alignment == ImgAlignDword ? 32 : 8;
        padBits = (unit - width % unit) % unit;
        bytes = static_cast<ImgULong>((std::uint64_t{width} + padBits) / 8);
    }
};
