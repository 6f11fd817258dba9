#pragma once

// Pictures that are not compressed tiles: PNG and the raw portable formats.

#include "files/input_file.h"
#include "picture/picture.h"

#include <memory>
#include <string>

class TiffPages;

/// Delivers the rows of a picture file from the top. Operations throw Failure.
class PictureReader {
public:
    virtual ~PictureReader() = default;

    Size size;
    Pixels pixels = Pixels::bilevel;
    double dpiX = 0, dpiY = 0;
    std::unique_ptr<ColorMap> colours;  ///< of a palette picture

    /// The next row, as Picture::copyRow gives it; padding bits may be anything.
    virtual void nextRow(unsigned char* row) = 0;
    std::size_t rowBytes() const;

    /// The rectangle's pixels; can be called once.
    Picture read(const Rect& rect);
};

/// The reader for a file that is not TIFF.
std::unique_ptr<PictureReader> openPicture(InputFile input);
std::unique_ptr<PictureReader> openPng(InputFile input);
std::unique_ptr<PictureReader> openPnm(InputFile input);
/// A page, from 1, of a TIFF file in greys or colours; `name` is for messages.
std::unique_ptr<PictureReader> openTiffPicture(std::shared_ptr<TiffPages> from, const std::string& name, unsigned page);
