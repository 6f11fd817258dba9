// Sizes, and the parameters that handles store for later.

#include "handles/operations.h"

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace tilepress::handles;

void tilepress::handles::setQuads(ImgQuads& quads, std::uint32_t width, std::uint32_t height) {
    const auto right = static_cast<std::int32_t>(width - 1), bottom = static_cast<std::int32_t>(height - 1);
    quads.srcQuad = {0, 0, 0, bottom, right, bottom, right, 0};
    quads.workQuad = quads.dstQuad = quads.srcQuad;
}

std::uint32_t tilepress::handles::ImgQuadWidth(ImgHandle* image) {
    return image && image->header ? widthOf(*image) : 0;
}
std::uint32_t tilepress::handles::ImgQuadHeight(ImgHandle* image) {
    return image && image->header ? heightOf(*image) : 0;
}

/// Calls use(header) with the header of the image's type; false where there is none.
template <class Use>
static bool withHeader(ImgHandle* image, Use use) {
    if (!image || !image->header) return false;
    switch (image->type) {
    case ImgTypeBilevel: use(*static_cast<Img1Header*>(image->header)); return true;
    case ImgTypePalette8: use(*static_cast<Img8Header*>(image->header)); return true;
    case ImgTypeRGB24: use(*static_cast<Img24Header*>(image->header)); return true;
    case ImgTypeTiffG4: use(*static_cast<ImgG4Header*>(image->header)); return true;
    case ImgTypeRGB32:
    case ImgTypeRGBA32: use(*static_cast<Img32Header*>(image->header)); return true;
    default: return false;
    }
}
static bool hasHeader(ImgHandle* image) {
    return withHeader(image, [](const auto&) {});
}

std::uint32_t ImgGetWidth(ImgHandle* image) { return hasHeader(image) ? widthOf(*image) : 0; }
std::uint32_t ImgGetHeight(ImgHandle* image) { return hasHeader(image) ? heightOf(*image) : 0; }

ImgHandle* ImgSetDstRect(ImgHandle* image, const std::int32_t* corners) {
    if (corners) withHeader(image, [=](auto& header) { std::memcpy(&header.quads.dstQuad, corners, sizeof(ImgQuad)); });
    return image;
}

ImgHandle* ImgSetRotation(ImgHandle* image, double degrees) {
    const double whole = std::isnan(degrees) ? 0 : std::clamp(degrees, -2147483648.0, 2147483647.0);
    withHeader(image, [=](auto& header) { header.rotation = static_cast<std::int32_t>(whole); });
    return image;
}

static void setMirror(Img32Header& header, std::int32_t flag) {
    header.mirror = flag;
    // Kept: the word before is overwritten too; nothing may rely on the data size of such an image.
    header.dataSize = static_cast<std::uint32_t>(flag);
}
template <class Header>
static void setMirror(Header& header, std::int32_t flag) {
    header.mirror = flag;
}

ImgHandle* ImgSetMirFlag(ImgHandle* image, std::int32_t flag) {
    withHeader(image, [=](auto& header) { setMirror(header, flag); });
    return image;
}
