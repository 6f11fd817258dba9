// Which operations the handles of each type carry.

#include "foundation/heap.h"
#include "handles/operations.h"

using namespace tilepress;
using namespace tilepress::handles;

/// Stands where a type has no operation; one for each form, since a function is called by its own type only.
template <class Result, class... Args>
static Result TILEPRESS_CALL returnZero(Args...) {
    return Result{};
}

template <class Create>
static void installCommon(ImgHandle& ops, Create create) {
    ops.create = reinterpret_cast<ImgCreateOp>(create);
    ops.reserved = returnZero<std::uint32_t, ImgHandle*>;
    ops.getWidth = ImgQuadWidth;
    ops.getHeight = ImgQuadHeight;
}

template <class Kind, class Create>
static void install(ImgHandle& ops, Create create, ImgFreeOp free, ImgRasOp1Op rasOp1, ImgRasOp2Op rasOp2) {
    installCommon(ops, create);
    ops.free = free;
    ops.render = render<Kind>;
    ops.rotate = rotate<Kind>;
    ops.mirror = mirror<Kind>;
    ops.subImage = subImage<Kind>;
    ops.convert = convert<Kind>;
    ops.serialize = returnZero<std::uint32_t, ImgHandle*, void**, std::uint32_t*>;
    ops.deserialize = returnZero<ImgHandle*, void*>;
    ops.clone = clone<Kind>;
    ops.rasOp1 = rasOp1;
    ops.rasOp2 = rasOp2;
}

static void installTiffG4(ImgHandle& ops) {
    installCommon(ops, ImgTIFFG4Create);
    ops.free = ImgTIFFG4Free;
    ops.render = ImgTIFFG4Render;
    ops.rotate = returnZero<ImgHandle*, ImgHandle*, double>;
    ops.mirror = returnZero<ImgHandle*, ImgHandle*, int>;
    ops.subImage = returnZero<ImgHandle*, ImgHandle*, const std::int32_t*>;
    ops.convert = ImgTIFFG4Convert;
    ops.serialize = ImgTIFFG4Serialize;
    ops.deserialize = ImgTIFFG4Deserialize;
    ops.clone = nullptr;
    ops.rasOp1 = nullptr;
    ops.rasOp2 = nullptr;
}

void tilepress::handles::ImgInstallOps(int type, ImgHandle* image) {
    if (!image) return;
    switch (type) {
    case ImgTypeBilevel: return install<Bilevel>(*image, Img1Create, Img1Free, Img1RasOp1, Img1RasOp2);
    case ImgTypePalette8: return install<Palette8>(*image, Img8Create, ImgRowsFree, Img8RasOp1, Img8RasOp2);
    case ImgTypeRGB24: return install<Colour24>(*image, Img24Create, ImgRowsFree, Img24RasOp1, Img24RasOp2);
    case ImgTypeTiffG4: return installTiffG4(*image);
    case ImgTypeRGB32:
    case ImgTypeRGBA32: return install<Colour32>(*image, Img32Create, ImgRowsFree, Img32RasOp1, Img32RasOp2);
    default: return;
    }
}

ImgHandle* ImgNew(std::uint32_t type) {
    Heap<ImgHandle> image(1);
    if (!image) return nullptr;
    image.get()->type = type;
    if (type != ImgTypeNone) {
        if (type > ImgTypeRGBA32) return nullptr;
        ImgInstallOps(static_cast<int>(type), image.get());
        if (!image.get()->create) return nullptr;
    }
    return image.release();
}

std::uint8_t* Img24BitColorToPixRGB(std::uint8_t* pixel, std::uint32_t color) {
    if (!pixel) return nullptr;
    pixel[0] = static_cast<std::uint8_t>(color >> 16);
    pixel[1] = static_cast<std::uint8_t>(color >> 8);
    pixel[2] = static_cast<std::uint8_t>(color);
    return pixel;
}

std::uint8_t* create_reverse_byte_table() {
    std::uint8_t* const table = allocate<std::uint8_t>(256);
    for (unsigned byte = 0; table && byte < 256; ++byte)
        for (unsigned bit = 0; bit < 8; ++bit)
            table[byte] = static_cast<std::uint8_t>(table[byte] | (byte >> bit & 1u) << (7 - bit));
    return table;
}
