#pragma once

// What pictures are drawn from: a page of a TIFF file, or a picture file.

#include "base/progress.h"
#include "files/input_file.h"
#include "picture/drawing.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// A drawing that has been made, before it is mirrored and turned.
struct Drawn {
    Picture picture;
    std::uint64_t compressedBytes = 0;
    std::vector<std::string> remarks;  ///< on what is missing in it
    bool damaged = false;
};

/// Operations throw Failure.
class Drawable {
public:
    virtual ~Drawable() = default;

    Size size;  ///< as it is stored
    double dpiX = 0, dpiY = 0;
    std::uint32_t orientation = 1;
    Pixels pixels = Pixels::bilevel;

    /// Once. With `salvage` damaged tiles are drawn as far as they are good, and the others whole.
    virtual Drawn draw(const Drawing& drawing, bool salvage, Progress& progress) = 0;
};

/// `page`, from 1, is that of a TIFF file.
std::unique_ptr<Drawable> openDrawable(InputFile input, unsigned page);
