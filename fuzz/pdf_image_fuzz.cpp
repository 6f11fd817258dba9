// Whatever a PDF file says about an image and its codes, the tool ends with a picture, a report or a message.
//
// The input: the image's dictionary, a NUL, and its codes.

#include "pdf/pdf_source.h"
#include "use_page.h"

namespace {

/// A file of one page that shows the image.
std::string document(const std::string& dictionary, const std::string& codes) {
    std::string file = "%PDF-1.5\n", table;
    const auto add = [&](const std::string& object) {
        table += fmt::format("{:010} 00000 n \n", file.size());
        file += fmt::format("{} 0 obj\n{}\nendobj\n", table.size() / 20, object);
    };
    add("<</Type/Catalog/Pages 2 0 R>>");
    add("<</Type/Pages/Count 1/Kids[3 0 R]>>");
    add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]/Contents 4 0 R/Resources<</XObject<</I 5 0 R>>>>>>");
    add("<</Length 17>>stream\n9 0 0 9 0 0 cm/I Do\nendstream");
    add(fmt::format("<<{}/Subtype/Image/Length {}>>stream\n{}\nendstream", dictionary, codes.size(), codes));
    return fmt::format("{}xref\n0 6\n0000000000 65535 f \n{}trailer<</Size 6/Root 1 0 R>>\nstartxref\n{}\n%%EOF\n",
                       file, table, file.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\0'), size);
    const std::string pdf = document(input.substr(0, end), input.substr(std::min(end + 1, size)));
    const MemoryFile file(pdf.data(), pdf.size());
    try {
        PdfSource source{InputFile(file.name())};
        usePages(source, false);
        source.page(1).requireSupported("");
    } catch (const Failure&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
