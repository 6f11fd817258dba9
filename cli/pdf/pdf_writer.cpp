#include "pdf/pdf_writer.h"

#include "base/failure.h"
#include "tiff/tiff_source.h"

#include <fmt/format.h>

#include <exception>
#include <qpdf/Pl_StdioFile.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>
#include <utility>

namespace {

constexpr double kPointsPerInch = 72;

/// How a page shows its image upright: an angle for all of it, and the matrix that mirrors before.
struct Showing {
    int rotate;
    bool mirrorColumns, mirrorRows;
};
constexpr Showing kShowings[8] = {{0, false, false}, {0, true, false},   {180, false, false}, {0, false, true},
                                  {90, false, true}, {90, false, false}, {90, true, false},   {270, false, false}};

QPDFObjectHandle imageOf(QPDF& document, PageSource& source, const TiffPage& page) {
    std::string codes(source.tileBytes(0), '\0');
    source.readTile(0, reinterpret_cast<unsigned char*>(codes.data()), codes.size());
    QPDFObjectHandle image = QPDFObjectHandle::newStream(&document, codes);
    image.replaceDict(QPDFObjectHandle::parse(fmt::format(
        "<< /Type /XObject /Subtype /Image /Width {0} /Height {1} /BitsPerComponent 1 /ColorSpace /DeviceGray "
        "/Filter /CCITTFaxDecode /DecodeParms << /K -1 /Columns {0} /Rows {1} /BlackIs1 {2} >> >>",
        page.size.width, page.size.height, page.whiteIsZero() ? "false" : "true")));
    return document.makeIndirectObject(image);
}

void addPage(QPDF& document, PageSource& source, const TiffPage& page) {
    const double width = page.size.width * kPointsPerInch / (page.dpiX > 0 ? page.dpiX : kPointsPerInch);
    const double height = page.size.height * kPointsPerInch / (page.dpiY > 0 ? page.dpiY : kPointsPerInch);
    const Showing how = kShowings[page.orientation >= 1 && page.orientation <= 8 ? page.orientation - 1 : 0];
    QPDFObjectHandle contents = QPDFObjectHandle::newStream(
        &document,
        fmt::format("q {:.4f} 0 0 {:.4f} {:.4f} {:.4f} cm /Im0 Do Q\n", how.mirrorColumns ? -width : width,
                    how.mirrorRows ? -height : height, how.mirrorColumns ? width : 0, how.mirrorRows ? height : 0));
    QPDFObjectHandle shown = QPDFObjectHandle::parse(
        fmt::format("<< /Type /Page /MediaBox [0 0 {:.4f} {:.4f}] /Rotate {} /Resources << /XObject << >> >> >>", width,
                    height, how.rotate));
    shown.getKey("/Resources").getKey("/XObject").replaceKey("/Im0", imageOf(document, source, page));
    shown.replaceKey("/Contents", document.makeIndirectObject(contents));
    document.addPage(document.makeIndirectObject(shown), false);
}

/// What the file says about itself, as far as PDF has names for it.
void addTexts(QPDF& document, const InputFile& tiff) {
    LibtiffMessages messages;
    const TiffHandle file = messages.open(tiff.again().release(), tiff.name(), "rm");
    QPDFObjectHandle about = QPDFObjectHandle::newDictionary();
    constexpr std::pair<const char*, std::uint32_t> kTexts[] = {{"/Title", TIFFTAG_DOCUMENTNAME},
                                                                {"/Subject", TIFFTAG_IMAGEDESCRIPTION},
                                                                {"/Author", TIFFTAG_ARTIST},
                                                                {"/Creator", TIFFTAG_SOFTWARE}};
    for (const auto& [key, tag] : kTexts)
        if (char* text = nullptr; file && TIFFGetField(file.get(), tag, &text))
            about.replaceKey(key, QPDFObjectHandle::newUnicodeString(text));
    document.getTrailer().replaceKey("/Info", document.makeIndirectObject(about));
}

}  // namespace

void writePdf(const InputFile& tiff, OutputFile& output) {
    TiffSource source(tiff.again());
    const unsigned pages = source.countPages();
    try {
        QPDF document;
        document.emptyPDF();
        for (unsigned number = 1; number <= pages; ++number) addPage(document, source, source.codedPage(number));
        addTexts(document, tiff);
        Pl_StdioFile stream("PDF", output.stream());
        QPDFWriter writer(document);
        writer.setOutputPipeline(&stream);
        writer.setDeterministicID(true);
        writer.write();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const Failure&) {
        throw;
    } catch (const std::exception& error) {
        throw Failure(Exit::failed, fmt::format("the PDF file cannot be written: {}", error.what()));
    }
}
