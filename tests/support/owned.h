#pragma once

// Images and handles that end with all that they hold, also what their own end leaves to others.

#include "tilepress/CImg1G4.h"
#include "tilepress/CImg8.h"
#include "tilepress/ImgHandle.h"

#include <memory>
#include <vector>

namespace support {

using Bytes = std::vector<unsigned char>;

struct End {
    void operator()(IImg* image) const {
        if (!image) return;
        const ColorMap* map =
            image->getType() == ImageTypePalette ? static_cast<CImg8*>(image)->getColorMap() : nullptr;
        if (image->getType() == ImageTypeBilevelG4) static_cast<CImg1G4*>(image)->releaseData();
        delete image;
        delete map;
    }
    void operator()(ImgHandle* image) const {
        if (!image) return;
        if (image->type == ImgTypePalette8 && image->header) {
            ColorTable* const table = static_cast<Img8Header*>(image->header)->colorTable;
            MemFree(0, table->entries);
            MemFree(0, table);
        }
        if (image->header) image->free(&image, nullptr);
        MemFree(0, image);
    }
};

/// An image of one kind, or of any.
template <class Image = IImg>
using Owned = std::unique_ptr<Image, End>;
using Handle = Owned<ImgHandle>;

}  // namespace support
