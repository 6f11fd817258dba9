#pragma once

// One function a format; picture_writer.h is what the others call.

#include "files/output_file.h"
#include "picture/picture_writer.h"

void writePng(const Picture& picture, OutputFile& file, Progress& progress);
void writePnm(const Picture& picture, OutputFile& file, Format format, Progress& progress);
void writeTiff(const Picture& picture, OutputFile& file, Progress& progress);
void writeJpeg(const Picture& picture, OutputFile& file, std::optional<int> quality, Progress& progress);
/// Without a quality every pixel stays as it is.
void writeWebp(const Picture& picture, OutputFile& file, std::optional<int> quality, Progress& progress);

/// Room for one row as Picture::copyRow gives it.
inline std::unique_ptr<unsigned char[]> rowBuffer(const Picture& picture) {
    return std::make_unique<unsigned char[]>(picture.rowBytes());
}
