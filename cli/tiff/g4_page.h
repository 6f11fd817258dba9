#pragma once

// A page of compressed tiles as an image of the library.

#include "base/progress.h"
#include "picture/drawing.h"
#include "tiff/tiff_source.h"
#include "tiff/tile_rows.h"

#include <memory>
#include <string>
#include <vector>

struct G4Deleter {
    /// The image is the one holder of its tiles.
    void operator()(CImg1G4* image) const {
        image->releaseData();
        delete image;
    }
};
using G4Image = std::unique_ptr<CImg1G4, G4Deleter>;

/// The page's image with the tiles that touch `rect`; the others stay empty. `bytes` receives what was read. With
/// `salvaged` given every tile is decoded first: damaged ones become white from the bad row on, and are listed there.
/// Throws Failure.
G4Image loadPage(TiffSource& source, const TiffPage& page, const Rect& rect, std::uint64_t& bytes, Progress& progress,
                 std::vector<TileDamage>* salvaged = nullptr);

/// Decodes the drawing's rectangle at its target size, in the page's displayed colours. `damaged` tells whether
/// decoding stopped at damaged data; the picture then holds what came before.
Picture drawPage(CImg1G4& image, const TiffPage& page, const Drawing& drawing, bool& damaged);

/// Where the data of the tiles that touch `rect` are damaged first, for a message: page, tile and row.
std::string describeDamage(TiffSource& source, const TiffPage& page, const Rect& rect);
/// One damaged tile, for a message.
std::string describe(const TiffPage& page, const TileDamage& damage);

/// Throws Failure when a page is too large to decode, or its tiles claim more than the file holds.
void requireDrawable(const TiffSource& source, const TiffPage& page);
/// Reads tile k into words for the decoder; refuses what is too large for it.
void readWords(TiffSource& source, const TiffPage& page, std::uint32_t k, std::vector<unsigned char>& words);
