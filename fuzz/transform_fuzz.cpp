// Images and handles of any size, in any alignment, at any offsets and angles: no operation steps outside a buffer, and
// turning there and back gives the image again.

#include "input.h"
#include "support/owned.h"
#include "tilepress/tilepress.h"

#include <algorithm>

namespace {

using support::Owned;

ImgAlignmentEnum alignment(Input& in) {
    const ImgAlignmentEnum all[] = {ImgAlignNone, ImgAlignByte, ImgAlignDword};
    return all[in.below(3)];
}

Owned<> newImage(Input& in, std::uint32_t kind, std::uint32_t width, std::uint32_t height) {
    if (kind == 0) {
        CImg1* image = CImg1::create(width, height, 0, 1, alignment(in));
        for (ImgULong i = 0; image && i < image->getTotalBytes(); ++i)
            image->peekData()[i] = static_cast<unsigned char>(in.u8());
        return Owned<>(image);
    }
    if (kind == 1) {
        CImg8* image = CImg8::create(width, height, nullptr, alignment(in));
        for (std::uint32_t y = 0; image && y < height; ++y)
            for (std::uint32_t x = 0; x < width; ++x)
                image->peekDataArray()[y][x] = static_cast<unsigned char>(in.u8());
        return Owned<>(image);
    }
    CImg32* image = CImg32::create(width, height, RGBOrderBGR);
    for (std::uint32_t y = 0; image && y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) image->peekDataArray()[y][x] = in.u8() * 0x01010101u;
    return Owned<>(image);
}

ImgRect anyRect(Input& in, std::uint32_t width, std::uint32_t height) {
    ImgRect rect;
    const bool wild = in.u8() > 220;
    const std::uint32_t left = wild ? in.u32() : in.below(width), top = wild ? in.u32() : in.below(height);
    rect.setRect(left, top, wild ? in.u32() : left + in.below(width - left),
                 wild ? in.u32() : top + in.below(height - top));
    return rect;
}

void transform(Input& in, IImg& image, IImg& other) {
    const std::uint32_t w = image.getWidth(), h = image.getHeight();
    ImgScaleAttr attr{in.u8() % 2 ? 32u : 1u};
    RasOpXfmAttr place{};
    place.columnOffset = in.u8() > 250 ? in.u32() : in.below(2 * w);
    place.rowOffset = in.u8() > 250 ? in.u32() : in.below(2 * h);
    place.transparent = in.u8() % 2;
    const auto op = static_cast<RasOpT>(in.below(7));
    switch (in.below(8)) {
    case 0: Owned<>(image.scale(anyRect(in, w, h), in.below(400), in.below(200), attr)); break;
    case 1: Owned<>(image.rotate(in.u16() / 91.0 - 360)); break;
    case 2: Owned<>(image.getSubImage(anyRect(in, w, h))); break;
    case 3: image.doRasOpInPlace(op, place, other); break;
    case 4: {
        IImg* const result = image.doRasOp(op, place, other);
        if (result != &image) Owned<>{result};
        break;
    }
    case 5: image.doRasOpInPlace(op, in.u8() % 2, in.u32(), in.u32()); break;
    case 6: {
        IntPtT ends[2];
        for (IntPtT& p : ends) {
            const std::uint32_t x = in.u8() > 250 ? in.u32() : in.below(400), y = in.below(400);
            p = {static_cast<std::int32_t>(x - 100), static_cast<std::int32_t>(y - 100)};
        }
        image.drawLines(&ends[0], &ends[1], in.u8() % 2);
        break;
    }
    default: {
        const Owned<> once(image.mirror(ImgMirX)), twice(once ? once->mirror(ImgMirX) : nullptr);
        const Owned<> turned(image.rotate(90)), back(turned ? turned->rotate(270) : nullptr);
        for (IImg* const same : {twice.get(), back.get()}) {
            PROMISE(same && same->getWidth() == w && same->getHeight() == h);
            if (image.getType() == ImageTypeRGB)
                PROMISE(std::memcmp(static_cast<CImg32&>(*same).peekData(), static_cast<CImg32&>(image).peekData(),
                                    std::size_t{4} * w * h) == 0);
        }
    }
    }
}

/// Of handles; rows of unaligned ones, of which little can be done, are rare.
std::uint32_t anyAlignment(Input& in) {
    const std::uint32_t all[] = {8, 8, 16, 32, 32, 0};
    return all[in.below(6)];
}

ImgHandle* newHandle(Input& in, std::uint32_t type, std::uint32_t width, std::uint32_t height) {
    ImgHandle* image = ImgNew(type);
    const std::uint32_t align = anyAlignment(in);
    const bool made = type == ImgTypeBilevel    ? ImgCreateBilevel(image, width, height, align, nullptr)
                      : type == ImgTypePalette8 ? ImgCreatePalette8(image, width, height, align, nullptr, nullptr)
                      : type == ImgTypeRGB24    ? ImgCreateRGB24(image, width, height, align, nullptr)
                                                : ImgCreateRGB32(image, width, height, in.u8() % 2, nullptr);
    PROMISE(made);
    return image;
}

/// A place along `size` pixels: the ends as often as all between them, since it is there that a step outside shows;
/// now and then one beyond.
std::int32_t place(Input& in, std::uint32_t size) {
    const std::uint32_t choice = in.u8();
    if (choice > 250) return static_cast<std::int32_t>(in.u32());
    if (choice > 240) return static_cast<std::int32_t>(size);
    return static_cast<std::int32_t>(choice < 60 ? 0 : choice < 120 ? size - 1 : in.below(size));
}

void transformHandles(Input& in, ImgHandle* image, ImgHandle* other) {
    const std::uint32_t w = ImgGetWidth(image), h = ImgGetHeight(image);
    std::int32_t left = place(in, w), right = place(in, w), top = place(in, h), bottom = place(in, h);
    if (in.u8() < 230 && left > right) std::swap(left, right);
    if (in.u8() < 230 && top > bottom) std::swap(top, bottom);
    std::int32_t corners[8] = {left, bottom, left, top, right, top, right, bottom};
    if (in.u8() > 200) corners[in.below(8)] = static_cast<std::int32_t>(in.below(150)) - 4;
    const ImgRasOp1Desc op1{in.below(5), in.u8() % 2, in.u8() % 2, in.u8() % 2, in.u32(), in.u32()};
    ImgRasOp2Desc op2{};
    op2.op = in.below(9);
    op2.inPlace = in.u8() % 2;
    op2.scaleFirst = in.u8() % 3 == 0;
    op2.placed = in.u8() % 2;
    op2.position = in.u8() % 2 ? corners : nullptr;
    const std::uint32_t types[] = {0, 1, 2, 4, 16, 32};
    const ImgConvertDesc target{types[in.below(6)], in.u8() % 2, nullptr};
    ImgHandle* result = nullptr;
    switch (in.below(8)) {
    case 0: result = image->render(image, in.below(300), in.below(200), nullptr, 0, 0, anyAlignment(in)); break;
    case 1: result = image->rotate(image, in.u16() / 91.0 - 360); break;
    case 2: result = image->mirror(image, static_cast<int>(in.below(4))); break;
    case 3: result = image->subImage(image, corners); break;
    case 4: result = image->convert(image, &target); break;
    case 5: result = image->rasOp1(image, &op1, in.u32()); break;
    case 6: result = image->rasOp2(other, &op2, image); break;
    default:
        for (std::int32_t& c : corners) c %= 200;  // what is rendered to that size is made, however large
        ImgSetDstRect(image, corners);
        ImgSetRotation(image, in.u16() / 100.0);
        ImgSetMirFlag(image, static_cast<std::int32_t>(in.below(4)));
        result = image->clone(image);
    }
    if (result != image && result != other) support::End()(result);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t width = in.upTo(140), height = in.upTo(70), otherWidth = in.upTo(140),
                        otherHeight = in.upTo(70), kind = in.below(7);
    if (kind < 3) {
        const Owned<> image = newImage(in, kind, width, height),
                      other = newImage(in, in.u8() < 230 ? kind : in.below(3), otherWidth, otherHeight);
        while (image && other && in.left() > 0) transform(in, *image, *other);
        return 0;
    }
    const std::uint32_t types[] = {ImgTypeBilevel, ImgTypePalette8, ImgTypeRGB24, ImgTypeRGB32};
    const support::Handle image(newHandle(in, types[kind - 3], width, height));
    const support::Handle other(
        newHandle(in, in.u8() < 230 ? types[kind - 3] : types[in.below(4)], otherWidth, otherHeight));
    while (in.left() > 0) transformHandles(in, image.get(), other.get());
    return 0;
}
