#pragma once

// What images and handles of any kind do, for tests that do all of it.

#include "support/handles.h"

#include <functional>
#include <vector>

namespace support {

/// Gives the picture that comes of it; an empty one where nothing does.
struct Operation {
    const char* name;
    std::function<Picture()> run;
};

inline std::vector<Operation> operationsOn(IImg& image) {
    static ImgScaleAttr grey{32}, ink{1};
    const ImgULong w = image.getWidth(), h = image.getHeight();
    ImgRect part;
    part.setRect(w / 10, h / 5, w - w / 4, h - 1);
    std::vector<Operation> all;
    const auto add = [&](const char* name, auto make) {
        all.push_back({name, [&image, make] { return result<IImg>(make(image)); }});
    };
    for (ImgScaleAttr* how : {&grey, &ink})
        for (const auto& [name, dw, dh] : {std::tuple("reduced", w / 3, h / 3),
                                           {"enlarged", 2 * w + 20, 2 * h + 10},
                                           {"doubled", 2 * part.getWidth(), 2 * part.getHeight()},
                                           {"wider and lower", 2 * w, h / 3},
                                           {"narrower and higher", w / 3, 2 * h}})
            add(name, [=, dw = dw, dh = dh](IImg& i) { return i.scale(part, dw, dh, *how); });
    for (const double angle : {90.0, 180.0, 270.0, 33.0, 200.0})
        add("turned", [=](IImg& i) { return i.rotate(angle); });
    for (const ImgMirT direction : {ImgMirX, ImgMirY}) add("mirrored", [=](IImg& i) { return i.mirror(direction); });
    add("cut", [=](IImg& i) { return i.getSubImage(part); });
    if (image.getType() == ImageTypeBilevel || image.getType() == ImageTypeRGB) {
        add("cloned", [](IImg& i) { return i.clone(); });
        add("combined", [](IImg& i) {
            RasOpXfmAttr place{};
            return i.doRasOp(RasOpCopy, place, i);
        });
    }
    return all;
}

inline std::vector<Operation> operationsOn(ImgHandle& image) {
    std::vector<Operation> all;
    const auto add = [&](const char* name, auto make) {
        all.push_back({name, [&image, make] { return pictureOf(Handle(make(&image))); }});
    };
    const std::uint32_t w = ImgGetWidth(&image), h = ImgGetHeight(&image);
    for (const auto& [name, dw, dh] :
         {std::tuple("reduced", w / 3, h / 3), {"enlarged", 2 * w, 2 * h + 5}, {"wider and lower", 2 * w, h / 3}})
        add(name, [dw = dw, dh = dh](ImgHandle* i) { return i->render(i, dw, dh, nullptr, 0, 0, 32); });
    for (const std::uint32_t type : {1u, 4u})
        add("converted", [=](ImgHandle* i) {
            const ImgConvertDesc target{type, 1, nullptr};
            return i->convert(i, &target);
        });
    for (const double degrees : {90, 0})
        add("rendered as the header says", [=](ImgHandle* i) {
            ImgSetMirFlag(ImgSetRotation(i, degrees), 1);
            ImgHandle* const made = i->render(i, h / 2, w / 2, nullptr, 0, 0, 32);
            ImgSetMirFlag(ImgSetRotation(i, 0), 0);
            return made;
        });
    if (image.type == ImgTypeTiffG4) return all;
    for (const double degrees : {90, 33, 200}) add("turned", [=](ImgHandle* i) { return i->rotate(i, degrees); });
    add("mirrored", [](ImgHandle* i) { return i->mirror(i, 1); });
    add("cut", [=](ImgHandle* i) {
        const auto right = static_cast<std::int32_t>(w - 5), bottom = static_cast<std::int32_t>(h - 2);
        const std::int32_t corners[] = {2, bottom, 2, 1, right, 1, right, bottom};
        return i->subImage(i, corners);
    });
    add("cloned", [](ImgHandle* i) { return i->clone(i); });
    add("filled", [](ImgHandle* i) {
        const ImgRasOp1Desc fill{ImgRasFill, 0, 0, 0, 0, 0};
        return i->rasOp1(i, &fill, 1);
    });
    for (const auto& [name, scaled, placed] :
         {std::tuple("combined", 0u, 0u), {"scaled and combined", 1u, 0u}, {"pasted", 0u, 1u}})
        add(name, [scaled = scaled, placed = placed](ImgHandle* i) {
            ImgRasOp2Desc combine{};
            combine.op = ImgRasOr;
            combine.scaleFirst = scaled;
            combine.placed = placed;
            return i->rasOp2(i, &combine, i);
        });
    return all;
}

}  // namespace support
