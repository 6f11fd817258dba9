#pragma once

#include "base/progress.h"
#include "files/output_file.h"
#include "picture/picture.h"

#include <optional>
#include <string>

/// Formats of pictures; pnm is the portable format that fits the pixels best.
enum class Format { png, pbm, pgm, ppm, pnm, tiff, jpeg, webp };

/// How a picture is coded in its file.
struct Coding {
    Format format;
    std::optional<int> quality;  ///< 1 to 100, of formats that can lose something

    /// The format by its name, or, when that is empty, by the ending of `path`; PNG for "-". Throws Failure when it is
    /// not known, or has no quality to choose.
    Coding(const std::string& name, const std::string& path, std::optional<int> quality);
    /// Throws Failure when the format cannot hold so many pixels of that kind.
    void require(Pixels pixels, Size size) const;
};

/// Writes the picture; the file gets its name when it is complete. Throws Failure.
void writePicture(const Picture& picture, const OutputOptions& output, const Coding& coding, Progress& progress);
