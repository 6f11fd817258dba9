#include "g4image/scale_info.h"

#include "tilepress/CImg1.h"

using namespace tilepress;
using namespace tilepress::g4;

static PageRect pageRect(const ImgRect& r) { return {r.getLeft(), r.getTop(), r.getWidth(), r.getHeight()}; }

G4ScaleInfo::G4ScaleInfo(CImg1G4& image, const ImgRect& r)
    : clip{r.getLeft(), r.getWidth()}, image_(image),
      walk_({image.getWidth(), image.getHeight(), image.tileWidth, image.tileHeight}, {&image, codesOf}, pageRect(r),
            Decoding::classic) {}

TileCodes G4ScaleInfo::codesOf(const void* image, std::size_t k) {
    const CImg1G4& page = *static_cast<const CImg1G4*>(image);
    // Tiles are copied in whole words.
    const std::int64_t length = page.tileLengths[k];
    return {page.tileRows[0][k].data, length + length % 2, CodeOrder::ready};
}

bool G4ScaleInfo::begin() { return (image_.tileRows && walk_.begin()) || failed(); }

bool G4ScaleInfo::failed() {
    image_.SendIncompleteStatus(static_cast<int>(walk_.row()));
    return refuse(ImgErrDecode);
}

/// Called with the row at which a walk failed; nobody listens yet.
void CImg1G4::SendIncompleteStatus(int) {}

CImg1* tilepress::g4::emptyLike(const CImg1G4& image, ImgULong width, ImgULong height) {
    return CImg1::create(width, height, image.getBackgroundInterpretation(), image.getForegroundInterpretation(),
                         ImgAlignNone);
}
