#pragma once

// The images of a PDF file, as far as the tool can read them.

#include "base/geometry.h"

#include <cstdint>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <string>
#include <vector>

/// What /DecodeParms says about an image in CCITT codes; as the PDF standard has it where nothing is said.
struct FaxParameters {
    int k = 0;  ///< below 0: Group 4; 0: Group 3 in one dimension; above 0: in two
    std::uint32_t columns = 1728, rows = 0;
    bool blackIsOne = false, byteAligned = false, endOfLine = false, endOfBlock = true;
};
/// Throws Failure for parameters that no coder can have meant.
FaxParameters faxParameters(QPDFObjectHandle dictionary);

/// One image on a page of the document, or, without an image, a page that has none.
struct PdfImage {
    QPDFObjectHandle stream;
    unsigned documentPage = 0;  ///< from 1
    Size size;
    double dpiX = 0, dpiY = 0;      ///< 0 where it cannot be told
    std::uint16_t orientation = 1;  ///< as TIFF's tag has it
    FaxParameters fax;
    bool codedBlackIsInk = true;
    std::string unsupported;  ///< why it cannot be read, with what helps; else empty
};

/// Where a page shows what: the matrix of each name of /XObject that is drawn.
struct Placement {
    double a = 1, b = 0, c = 0, d = 1;
};

/// All images of a page, in the order of their names. Throws what libqpdf throws.
std::vector<PdfImage> imagesOf(QPDFPageObjectHelper page, unsigned number);
/// The image's codes, other filters undone. Throws what libqpdf throws.
std::string codesOf(QPDF& document, const PdfImage& image);
