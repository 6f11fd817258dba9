#pragma once

// The operations that handles carry. Those of a template are there for every kind of
// uncompressed image.

#include "handles/handle_kinds.h"

namespace tilepress::handles {

// lifetime.cpp
std::uint32_t TILEPRESS_CALL Img1Create(ImgHandle*, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                                        void* data);
std::uint32_t TILEPRESS_CALL Img8Create(ImgHandle*, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                                        const ColorTable* palette, void* data);
std::uint32_t TILEPRESS_CALL Img24Create(ImgHandle*, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                                         void* data);
std::uint32_t TILEPRESS_CALL Img32Create(ImgHandle*, std::uint32_t width, std::uint32_t height,
                                         std::uint16_t channelFlag, void* data);
void* TILEPRESS_CALL Img1Free(ImgHandle** where, void* keep);
void* TILEPRESS_CALL ImgRowsFree(ImgHandle** where, void* keep);
template <class Kind>
ImgHandle* TILEPRESS_CALL clone(ImgHandle*);
/// What a raster operation changes: the image itself or a copy, which may be null.
template <class Kind, class Desc>
ImgHandle* targetOf(ImgHandle* image, const Desc& desc) {
    return desc.inPlace == 1 ? image : clone<Kind>(image);
}

// header.cpp
std::uint32_t TILEPRESS_CALL ImgQuadWidth(ImgHandle*);
std::uint32_t TILEPRESS_CALL ImgQuadHeight(ImgHandle*);
/// Stores the corners of an image of that size in all three quadrilaterals.
void setQuads(ImgQuads&, std::uint32_t width, std::uint32_t height);

// turn_scale.cpp
template <class Kind>
ImgHandle* TILEPRESS_CALL render(ImgHandle*, std::uint32_t width, std::uint32_t height, const void* header,
                                 std::uint32_t arg1, std::uint32_t arg2, std::uint32_t alignBits);
template <class Kind>
ImgHandle* TILEPRESS_CALL rotate(ImgHandle*, double degrees);
template <class Kind>
ImgHandle* TILEPRESS_CALL mirror(ImgHandle*, int direction);
template <class Kind>
ImgHandle* TILEPRESS_CALL subImage(ImgHandle*, const std::int32_t* corners);

/// What rendering makes of an image, whichever header says how.
struct RenderSize {
    std::uint32_t width, height, alignBits;

    /// Sizes of 0 become those of a header's dstQuad; still 0 where these are out of range.
    RenderSize(std::uint32_t w, std::uint32_t h, std::uint32_t align, const ImgQuads& quads);
    bool isValid() const { return width != 0 && height != 0; }
};
/// Mirrored, rotated and scaled, in that order.
template <class Kind>
ImgHandle* rendered(ImgHandle& image, std::int32_t mirrorFlag, std::int32_t degrees, const RenderSize& size);

// convert.cpp
template <class Kind>
ImgHandle* TILEPRESS_CALL convert(ImgHandle*, const ImgConvertDesc*);
/// The type that a descriptor asks for, `own` when it names none.
std::uint32_t targetType(const ImgConvertDesc&, std::uint32_t own);

// tiffg4.cpp, tiffg4_flat.cpp, tiffg4_render.cpp
std::uint32_t TILEPRESS_CALL ImgTIFFG4Create(ImgHandle*, std::uint32_t width, std::uint32_t height,
                                             std::uint32_t tileWidth, std::uint32_t tileHeight, std::uint32_t ignored,
                                             const std::uint32_t* byteCounts, void** tileData);
std::uint32_t TILEPRESS_CALL ImgTIFFG4Serialize(ImgHandle*, void** buffer, std::uint32_t* size);
ImgHandle* TILEPRESS_CALL ImgTIFFG4Deserialize(void* buffer);
ImgHandle* TILEPRESS_CALL ImgTIFFG4Render(ImgHandle*, std::uint32_t width, std::uint32_t height, const void* header,
                                          std::uint32_t arg1, std::uint32_t arg2, std::uint32_t alignBits);
ImgHandle* TILEPRESS_CALL ImgTIFFG4Convert(ImgHandle*, const ImgConvertDesc*);

// ops.cpp
/// Gives a record the operations of a type, and leaves the rest of it as it is. Nothing for what is no type code.
void ImgInstallOps(int type, ImgHandle*);

}  // namespace tilepress::handles
