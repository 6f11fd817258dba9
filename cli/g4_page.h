#pragma once

// A page of compressed tiles as an image of the library.

#include <memory>
#include <string>

#include "drawing.h"
#include "progress.h"
#include "tiff_source.h"

struct G4Deleter {
    /// The image is the one holder of its tiles.
    void operator()(CImg1G4* image) const {
        image->releaseData();
        delete image;
    }
};
using G4Image = std::unique_ptr<CImg1G4, G4Deleter>;

/// The page's image with the tiles that touch `rect`; the others stay empty. `bytes` receives what was read. Throws
/// Failure.
G4Image loadPage(TiffSource& source, const TiffPage& page, const Rect& rect, std::uint64_t& bytes, Progress& progress);

/// Decodes the drawing's rectangle at its target size, in the page's displayed colours. `damaged` tells whether decoding stopped at damaged
/// data; the picture then holds what came before.
Picture drawPage(CImg1G4& image, const TiffPage& page, const Drawing& drawing, bool& damaged);

/// Where the data of the tiles that touch `rect` are damaged first, for a message: page, tile and row.
std::string describeDamage(TiffSource& source, const TiffPage& page, const Rect& rect);
