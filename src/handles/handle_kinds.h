#pragma once

// What differs between the types of uncompressed handles, so that operations are
// written once, and the tests every operation makes first.

#include "kernels/bit_rows.h"
#include "kernels/pixel_rows.h"
#include "tilepress/ImgHandle.h"

#include <cstdint>
#include <memory>

namespace tilepress::handles {

/// Three bytes of a pixel.
struct Rgb24 {
    unsigned char bytes[3];

    bool operator==(const Rgb24&) const = default;
};

/// Extents in pixels, of any corners.
inline std::int64_t extent(std::int64_t from, std::int64_t to) { return (to < from ? from - to : to - from) + 1; }
inline std::int64_t quadWidth(const ImgQuad& quad) { return extent(quad.x0, quad.x2); }
inline std::int64_t quadHeight(const ImgQuad& quad) { return extent(quad.y0, quad.y2); }

inline const ImgQuads& quadsOf(const ImgHandle& image) { return *static_cast<const ImgQuads*>(image.header); }
inline std::uint32_t widthOf(const ImgHandle& image) {
    return static_cast<std::uint32_t>(quadWidth(quadsOf(image).srcQuad));
}
inline std::uint32_t heightOf(const ImgHandle& image) {
    return static_cast<std::uint32_t>(quadHeight(quadsOf(image).srcQuad));
}

struct Bilevel {
    using Header = Img1Header;
    static bool is(std::uint32_t type) { return type == ImgTypeBilevel; }
    static std::uint32_t alignment(const Header& header) { return header.alignBits; }
    static std::uint64_t rowBytes(std::uint32_t width) { return packedBytes(width); }
    static unsigned char* block(const ImgHandle& image) { return static_cast<unsigned char*>(image.data); }
};

/// Pixels of whole bytes, reached through row pointers.
template <class PixelType, class HeaderType>
struct PixelKind {
    using Pixel = PixelType;
    using Header = HeaderType;
    static std::uint32_t alignment(const Header& header) { return header.alignBits; }
    static std::uint64_t rowBytes(std::uint32_t width) { return std::uint64_t{width} * sizeof(Pixel); }
    static Pixel** rows(const ImgHandle& image) { return static_cast<Pixel**>(image.data); }
    static unsigned char* block(const ImgHandle& image) { return reinterpret_cast<unsigned char*>(rows(image)[0]); }
};

struct Palette8 : PixelKind<unsigned char, Img8Header> {
    static bool is(std::uint32_t type) { return type == ImgTypePalette8; }
};
struct Colour24 : PixelKind<Rgb24, Img24Header> {
    static bool is(std::uint32_t type) { return type == ImgTypeRGB24; }
};
struct Colour32 : PixelKind<ImgULong, Img32Header> {
    static bool is(std::uint32_t type) { return type == ImgTypeRGB32 || type == ImgTypeRGBA32; }
    static std::uint32_t alignment(const Header&) { return 32; }  // none is stored
};

template <class Kind>
typename Kind::Header& headerOf(const ImgHandle& image) {
    return *static_cast<typename Kind::Header*>(image.header);
}
template <class Kind>
std::uint32_t alignmentOf(const ImgHandle& image) {
    return Kind::alignment(headerOf<Kind>(image));
}

/// Bytes from the first row to the end of the last one's padding; 0 for unaligned rows.
template <class Kind>
std::size_t blockBytes(const ImgHandle& image) {
    return static_cast<std::size_t>(std::uint64_t{headerOf<Kind>(image).bytesPerLine} * heightOf(image));
}

/// Whether it is an image of that kind with pixels.
template <class Kind>
bool isImage(const ImgHandle* image) {
    return image && Kind::is(image->type) && image->header && image->data;
}

/// Whether its rows can be told apart as well: no pixel of unaligned ones can be found.
template <class Kind>
bool hasRows(const ImgHandle* image) {
    return isImage<Kind>(image) && widthOf(*image) != 0 && widthOf(*image) <= INT32_MAX && heightOf(*image) != 0 &&
           headerOf<Kind>(*image).bytesPerLine >= Kind::rowBytes(widthOf(*image));
}

template <class Kind>
auto areaOf(const ImgHandle& image) {
    return PixelArea<typename Kind::Pixel>{Kind::rows(image), 0, widthOf(image), heightOf(image)};
}
template <>
inline auto areaOf<Bilevel>(const ImgHandle& image) {
    const auto stride = static_cast<std::ptrdiff_t>(headerOf<Bilevel>(image).bytesPerLine);
    return BitArea{{Bilevel::block(image), stride}, 0, widthOf(image), heightOf(image)};
}

/// Ends a handle that no caller has seen, and with it the colour table that `free` leaves behind.
struct EndUnseen {
    void operator()(ImgHandle* image) const;
};
using Temporary = std::unique_ptr<ImgHandle, EndUnseen>;

/// A clear image of an uncompressed type, or nothing. A palette image takes a copy of the colours, which may be null; a
/// 32-bit one the channel flag.
Temporary createClear(std::uint32_t type, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                      const ColorTable* colours, std::uint16_t channelFlag);
/// The same of the type and with the colours of `source`.
Temporary createLike(const ImgHandle& source, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits);

}  // namespace tilepress::handles
