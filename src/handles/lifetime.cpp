// How handles of the uncompressed types begin and end.

#include "foundation/heap.h"
#include "handles/operations.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tilepress::handles {
namespace {

/// A header for an image of that size, its corners set; null when it cannot be.
template <class Header>
Header* newHeader(const ImgHandle* image, std::uint32_t width, std::uint32_t height) {
    if (!image || image->header || width == 0 || height == 0 || width > INT32_MAX || height > INT32_MAX) return nullptr;
    Header* const header = allocate<Header>(1);
    if (header) setQuads(header->quads, width, height);
    return header;
}

/// What brings `size` up to a multiple of `unit`.
std::uint32_t padding(std::uint64_t size, std::uint32_t unit) {
    return unit == 0 ? 0 : static_cast<std::uint32_t>((unit - size % unit) % unit);
}

/// The pixel block: the caller's, or a clear one. Null when memory runs out.
void* takeBlock(std::uint64_t bytes, void* given) { return given ? given : allocate<unsigned char>(bytes); }

/// Sets `bytesPerLine` and the sizes that follow from it; false when they do not fit their words.
template <class Header>
bool setSizes(Header& header, std::uint64_t rowBytes, std::uint32_t height) {
    const std::uint64_t bytes = rowBytes * height;
    if (rowBytes > UINT32_MAX || bytes > UINT32_MAX) return false;
    header.bytesPerLine = static_cast<std::uint32_t>(rowBytes);
    header.dataSize = static_cast<std::uint32_t>(bytes);
    return true;
}

/// Sets the sizes, and attaches the block in a row table and the header; false when a size does not fit or memory runs
/// out.
template <class Kind>
bool attach(ImgHandle& image, Heap<typename Kind::Header>& owned, std::uint64_t rowBytes, void* given) {
    using Pixel = typename Kind::Pixel;
    typename Kind::Header& header = *owned.get();
    const std::uint32_t height = static_cast<std::uint32_t>(quadHeight(header.quads.srcQuad));
    if (!setSizes(header, rowBytes, height)) return false;
    void* const block = takeBlock(header.dataSize, given);
    if (!block) return false;
    void* table = nullptr;
    const std::uint64_t tableBytes = std::uint64_t{height} * sizeof(Pixel*);
    if (tableBytes > SIZE_MAX || MemAllocate(0, static_cast<std::size_t>(tableBytes), 0, &table) != 0) {
        MemFree(0, block);  // Kept: the caller's block too
        return false;
    }
    Pixel** const rows = static_cast<Pixel**>(table);
    auto* row = static_cast<unsigned char*>(block);
    for (std::uint32_t y = 0; y < height; ++y, row += header.bytesPerLine) rows[y] = reinterpret_cast<Pixel*>(row);
    MemSetPointer(0, block, rows);
    image.data = rows;
    image.header = owned.release();
    return true;
}

}  // namespace

std::uint32_t Img1Create(ImgHandle* image, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                         void* data) {
    Heap<Img1Header> header(newHeader<Img1Header>(image, width, height));
    if (!header) return 0;
    Img1Header& h = *header.get();
    h.alignBits = alignBits == 8 || alignBits == 16 || alignBits == 32 ? alignBits : 0;
    h.padBits = padding(width, h.alignBits);
    h.bitSense = 1;
    if (h.alignBits != 0) {
        if (!setSizes(h, (std::uint64_t{width} + h.padBits) / 8, height)) return 0;
    } else {
        // Kept: rounded down unless the bits fill their last byte, and then one more.
        const std::uint64_t bits = std::uint64_t{width} * height;
        if (bits / 8 + 1 > UINT32_MAX) return 0;
        h.dataSize = static_cast<std::uint32_t>(bits / 8 + (bits % 8 == 0));
    }
    image->data = takeBlock(h.dataSize, data);
    if (!image->data) return 0;
    MemSetPointer(0, image->data, &image->data);
    image->header = header.release();
    return 1;
}

std::uint32_t Img8Create(ImgHandle* image, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                         const ColorTable* palette, void* data) {
    Heap<Img8Header> header(newHeader<Img8Header>(image, width, height));
    if (!header) return 0;
    Img8Header& h = *header.get();
    h.alignBits = alignBits == 16 || alignBits == 32 ? alignBits : 8;
    h.padBytes = padding(width, h.alignBits / 8);
    ColorTable* const table = ColOpen(palette ? palette->capacity : 256, 255);
    if (!table) return 0;
    if (palette) {
        table->count = palette->entries ? std::clamp(palette->count, 0, table->capacity) : 0;
        std::copy_n(palette->entries, table->count, table->entries);
    }
    h.colorTable = table;
    if (attach<Palette8>(*image, header, std::uint64_t{width} + h.padBytes, data)) return 1;
    MemFree(0, table->entries);
    MemFree(0, table);
    return 0;
}

std::uint32_t Img24Create(ImgHandle* image, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                          void* data) {
    Heap<Img24Header> header(newHeader<Img24Header>(image, width, height));
    if (!header) return 0;
    Img24Header& h = *header.get();
    h.alignBits = alignBits == 32 ? 32 : 8;
    h.padBytes = padding(std::uint64_t{3} * width, h.alignBits / 8);
    return attach<Colour24>(*image, header, std::uint64_t{3} * width + h.padBytes, data);
}

std::uint32_t Img32Create(ImgHandle* image, std::uint32_t width, std::uint32_t height, std::uint16_t channelFlag,
                          void* data) {
    Heap<Img32Header> header(newHeader<Img32Header>(image, width, height));
    if (!header) return 0;
    header.get()->channelFlag = channelFlag;
    image->type = channelFlag ? ImgTypeRGBA32 : ImgTypeRGB32;
    return attach<Colour32>(*image, header, std::uint64_t{4} * width, data);
}

void* Img1Free(ImgHandle** where, void* keep) {
    if (!where || !*where) return nullptr;
    ImgHandle* const image = *where;
    void* const kept = image->data == keep ? image->data : nullptr;
    if (!kept) MemFree(0, image->data);
    std::free(image->header);
    std::free(image);
    *where = nullptr;
    return kept;
}

void* ImgRowsFree(ImgHandle** where, void* keep) {
    if (!where || !*where) return nullptr;
    ImgHandle* const image = *where;
    void* kept = nullptr;
    if (image->data) {
        void* block;
        std::memcpy(&block, image->data, sizeof block);
        if (block == keep) kept = block;
        else MemFree(0, block);
        MemFree(0, image->data);
    }
    // Kept: the colour table stays; what was computed from it is nobody else's.
    if (image->header && Palette8::is(image->type)) ColCloseXfm(&headerOf<Palette8>(*image).transform);
    std::free(image->header);
    std::free(image);
    *where = nullptr;
    return kept;
}

void EndUnseen::operator()(ImgHandle* image) const {
    if (!image) return;
    if (image->header && Palette8::is(image->type)) {
        if (ColorTable* const table = headerOf<Palette8>(*image).colorTable) MemFree(0, table->entries);
        MemFree(0, headerOf<Palette8>(*image).colorTable);
    }
    image->free(&image, nullptr);
}

Temporary createClear(std::uint32_t type, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits,
                      const ColorTable* colours, std::uint16_t channelFlag) {
    Temporary image(ImgNew(type));
    ImgHandle* const made = image.get();
    if (!made) return nullptr;
    std::uint32_t done = 0;
    switch (type) {
    case ImgTypeBilevel: done = Img1Create(made, width, height, alignBits, nullptr); break;
    case ImgTypePalette8: done = Img8Create(made, width, height, alignBits, colours, nullptr); break;
    case ImgTypeRGB24: done = Img24Create(made, width, height, alignBits, nullptr); break;
    default: done = Img32Create(made, width, height, channelFlag, nullptr);
    }
    return done ? std::move(image) : nullptr;
}

Temporary createLike(const ImgHandle& source, std::uint32_t width, std::uint32_t height, std::uint32_t alignBits) {
    const ColorTable* colours = nullptr;
    std::uint32_t flag = 0;
    if (Palette8::is(source.type)) colours = headerOf<Palette8>(source).colorTable;
    if (Colour32::is(source.type)) flag = headerOf<Colour32>(source).channelFlag;
    return createClear(source.type, width, height, alignBits, colours, static_cast<std::uint16_t>(flag));
}

template <class Kind>
ImgHandle* clone(ImgHandle* image) {
    if (!isImage<Kind>(image)) return nullptr;
    Temporary copy = createLike(*image, widthOf(*image), heightOf(*image), alignmentOf<Kind>(*image));
    // Kept: of unaligned rows, which have no length, nothing is copied.
    if (copy && blockBytes<Kind>(*image) != 0)
        std::memcpy(Kind::block(*copy), Kind::block(*image),
                    std::min(blockBytes<Kind>(*copy), blockBytes<Kind>(*image)));
    return copy.release();
}
template ImgHandle* clone<Bilevel>(ImgHandle*);
template ImgHandle* clone<Palette8>(ImgHandle*);
template ImgHandle* clone<Colour24>(ImgHandle*);
template ImgHandle* clone<Colour32>(ImgHandle*);

}  // namespace tilepress::handles
