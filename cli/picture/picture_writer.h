#pragma once

#include "base/progress.h"
#include "files/output_file.h"
#include "picture/picture.h"

#include <string>

/// Formats of pictures; pnm is the portable format that fits the pixels best.
enum class Format { png, pbm, pgm, ppm, pnm, tiff };

/// The format by its name, or, when that is empty, by the ending of `path`; PNG for "-". Throws Failure.
Format chooseFormat(const std::string& name, const std::string& path);

/// Throws Failure when a format cannot hold such pixels.
void requireFormat(Format format, Pixels pixels);

/// Writes the picture; the file gets its name when it is complete. Throws Failure.
void writePicture(const Picture& picture, const OutputOptions& output, Format format, Progress& progress);
