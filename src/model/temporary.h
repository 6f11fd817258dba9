#pragma once

// Images that nobody outside the library has seen.

#include "tilepress/CImg8.h"

#include <memory>

namespace tilepress {

/// Ends an image, and with it the colour map that a palette image leaves behind.
struct Discard {
    void operator()(CImg8* image) const {
        const ColorMap* const map = image ? image->getColorMap() : nullptr;
        delete image;
        delete map;
    }
    void operator()(CImg* image) const { delete image; }
};
template <class Image>
using Temporary = std::unique_ptr<Image, Discard>;

/// The image that finish(image) completes. Null where it cannot, and the image ended; also for null.
template <class Image, class Finish>
Image* finished(Image* image, Finish finish) {
    Temporary<Image> owned(image);
    return image && finish(*image) ? owned.release() : nullptr;
}

}  // namespace tilepress
