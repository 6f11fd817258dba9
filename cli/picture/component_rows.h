#pragma once

// Rows in greys or colours, whatever the picture's pixels are.

#include "picture/picture.h"

#include <array>
#include <memory>

/// The rows of a picture, which must outlive this, in one grey or in red, green and blue a pixel.
class ComponentRows {
public:
    /// One component is for pictures without colours.
    ComponentRows(const Picture& picture, unsigned components);

    /// Valid until the next call.
    const unsigned char* row(std::uint32_t y);
    std::size_t bytes() const { return bytes_; }

private:
    const Picture& picture_;
    const unsigned components_;
    const std::size_t bytes_;
    const Pixels pixels_;
    std::array<std::array<unsigned char, 3>, 256> colours_{};  ///< of pixel values; bilevel has two
    std::unique_ptr<unsigned char[]> stored_, expanded_;       ///< the latter where they differ
};
