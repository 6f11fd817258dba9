#pragma once

#include "base/geometry.h"
#include "commands/draw_pages.h"

#include <cstdint>
#include <optional>

struct RenderOptions : DrawOptions {
    std::optional<Rect> rect;
    std::optional<double> factor, dpi;
    std::optional<Size> size, fit;
    Mode mode = Mode::grey;
    Background background = Background::automatic;
    double angle = 0;  ///< degrees, counter-clockwise
    ImgMirT mirror{};  ///< neither direction: none
    std::uint64_t maxInputPixels = std::uint64_t{1} << 32;
};

/// Draws pages or pictures into picture files. The result is the exit code; throws Failure.
int runRender(const RenderOptions& options);
