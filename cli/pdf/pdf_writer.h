#pragma once

#include "files/input_file.h"
#include "files/output_file.h"

/// Writes the Group 4 pages of a TIFF file, each in one strip of fill order 1, as pages of a PDF file, without decoding
/// them: one image a page, which has the size that the resolution says, and 72 dots an inch where it says nothing. The
/// same pages give the same bytes. Throws Failure.
void writePdf(const InputFile& tiff, OutputFile& output);
