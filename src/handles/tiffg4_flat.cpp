// Compressed handles as one block that can be moved: written out, and revived in place.

#include "foundation/heap.h"
#include "handles/operations.h"
#include "handles/tiffg4.h"

#include <cstring>

namespace tilepress::handles {
namespace {

/// Where the areas of a block lie. Pointers have the size of this system's.
struct FlatLayout {
    std::uint64_t across, tiles;
    std::uint64_t tileRows, columnBufA, columnBufB, byteCounts, tileData, records, columnBuffers, coded, total;

    explicit FlatLayout(const ImgG4Header& header)
        : across(layoutOf(header).across()), tiles(layoutOf(header).tiles()) {
        constexpr std::uint64_t pointer = sizeof(void*);
        tileRows = sizeof(ImgHandle) + sizeof(ImgG4Header);
        columnBufA = tileRows + pointer * layoutOf(header).down();
        columnBufB = columnBufA + pointer * across;
        byteCounts = columnBufB + pointer * across;
        tileData = (byteCounts + 4 * tiles + pointer - 1) / pointer * pointer;
        records = tileData + pointer * tiles;
        columnBuffers = records + sizeof(ImgG4TileRec) * tiles;
        coded = columnBuffers + 2 * across * columnBufferBytes(header.tileWidth);
        total = coded + header.totalBytes;
    }
    /// Sizes of blocks are 32-bit words.
    bool fits() const { return tiles <= UINT32_MAX && total <= UINT32_MAX; }
    /// Whether the tiles' bytes are no more than the header says.
    bool holds(const ImgG4Header& header) const {
        std::uint64_t sum = 0;
        for (std::size_t k = 0; k < tiles; ++k) sum += header.byteCounts[k];
        return sum <= header.totalBytes;
    }
};
static_assert(sizeof(ImgG4Header) == (sizeof(void*) == 4 ? 168 : 184));
static_assert(sizeof(ImgG4TileRec) == (sizeof(void*) == 4 ? 36 : 40));
static_assert(sizeof(ImgHandle) == 18 * sizeof(void*));

/// An offset where a pointer will be.
template <class T>
T* offset(std::uint64_t n) {
    return reinterpret_cast<T*>(static_cast<std::uintptr_t>(n));  // NOLINT(performance-no-int-to-ptr): it is one
}

// --- the other byte order ---------------------------------------------------------------

/// Whether the words describe a compressed image.
bool isValid(const ImgG4Header& header) {
    const ImgQuad& quad = header.quads.srcQuad;
    if (quad.x0 < 0 || quad.y0 < 0 || quad.x2 < 0 || quad.y2 < 0) return false;
    const std::int64_t width = quadWidth(quad), height = quadHeight(quad);
    return header.tileWidth > 0 && header.tileWidth <= width && header.tileHeight > 0 && header.tileHeight <= height &&
           header.bytesPerLine == packedBytes(static_cast<std::uint64_t>(width));
}

/// The lowest number stays negative, which no corner may be.
std::int32_t magnitude(std::int32_t n) {
    return n < 0 ? static_cast<std::int32_t>(0u - static_cast<std::uint32_t>(n)) : n;
}

/// Kept: only these words are converted; the other quadrilaterals, rotation and mirror stay as they came.
void convertHeader(ImgG4Header& header) {
    ImgQuad& quad = header.quads.srcQuad;
    for (std::int32_t* corner : {&quad.x0, &quad.y0, &quad.x2, &quad.y2}) tra_swap_4(corner);
    const std::int32_t right = magnitude(quad.x2), bottom = magnitude(quad.y2);
    quad = {0, 0, 0, bottom, right, bottom, right, 0};
    for (std::uint32_t* word : {&header.bytesPerLine, &header.tileWidth, &header.tileHeight, &header.totalBytes})
        tra_swap_4(word);
}

// --- pointers of a revived block ----------------------------------------------------------

/// Sets the header's pointers to the areas of its block; the result is where those of the tiles are.
void** setPointers(unsigned char* block, ImgG4Header& header, const FlatLayout& at) {
    const auto area = [block](std::uint64_t n) { return block + static_cast<std::size_t>(n); };
    header.tileRows = reinterpret_cast<ImgG4TileRec**>(area(at.tileRows));
    header.columnBufA = reinterpret_cast<void**>(area(at.columnBufA));
    header.columnBufB = reinterpret_cast<void**>(area(at.columnBufB));
    header.byteCounts = reinterpret_cast<std::uint32_t*>(area(at.byteCounts));
    return reinterpret_cast<void**>(area(at.tileData));
}

/// Fills in the tiles' records and the columns' buffers.
void setParts(unsigned char* block, const ImgG4Header& header, const FlatLayout& at, void* const* tiles) {
    setTiles(header, reinterpret_cast<ImgG4TileRec*>(block + static_cast<std::size_t>(at.records)), tiles);
    const auto bytes = static_cast<std::size_t>(columnBufferBytes(header.tileWidth));
    unsigned char* buffer = block + static_cast<std::size_t>(at.columnBuffers);
    for (void** const buffers : {header.columnBufA, header.columnBufB})
        for (std::uint64_t c = 0; c < at.across; ++c, buffer += bytes) buffers[c] = buffer;
}

}  // namespace

std::uint32_t ImgTIFFG4Serialize(ImgHandle* image, void** buffer, std::uint32_t* size) {
    if (!buffer || !size) return 0;
    *buffer = nullptr;
    *size = 0;
    if (!isTiffG4(image) || !image->data) return 0;
    const ImgG4Header& header = *static_cast<const ImgG4Header*>(image->header);
    const FlatLayout at(header);
    if (!header.byteCounts || !at.fits() || !at.holds(header)) return 0;
    unsigned char* const block = allocate<unsigned char>(at.total);
    if (!block) return 0;
    ImgHandle handle{};
    handle.type = image->type;
    handle.data = offset<void>(at.tileData);
    std::memcpy(block, &handle, sizeof handle);
    ImgG4Header flat = header;
    flat.tileRows = offset<ImgG4TileRec*>(at.tileRows);
    flat.columnBufA = offset<void*>(at.columnBufA);
    flat.columnBufB = offset<void*>(at.columnBufB);
    flat.byteCounts = offset<std::uint32_t>(at.byteCounts);
    std::memcpy(block + sizeof handle, &flat, sizeof flat);
    std::memcpy(block + at.byteCounts, header.byteCounts, static_cast<std::size_t>(4 * at.tiles));
    unsigned char* coded = block + at.coded;
    void* const* const tiles = static_cast<void* const*>(image->data);
    for (std::size_t k = 0; k < at.tiles; ++k) {
        if (tiles[k]) std::memcpy(coded, tiles[k], header.byteCounts[k]);
        coded += header.byteCounts[k];
    }
    *buffer = block;
    *size = static_cast<std::uint32_t>(at.total);
    return 1;
}

ImgHandle* ImgTIFFG4Deserialize(void* buffer) {
    if (!buffer) return nullptr;
    unsigned char* const block = static_cast<unsigned char*>(buffer);
    ImgHandle* const image = static_cast<ImgHandle*>(buffer);
    ImgInstallOps(ImgTypeTiffG4, image);
    ImgG4Header& header = *reinterpret_cast<ImgG4Header*>(block + sizeof(ImgHandle));
    image->header = &header;
    const bool foreign = !isValid(header);
    if (foreign) {
        convertHeader(header);
        if (!isValid(header)) return nullptr;
    }
    const FlatLayout at(header);
    if (!at.fits()) return nullptr;
    void** const tiles = setPointers(block, header, at);
    image->data = tiles;
    for (std::size_t k = 0; foreign && k < at.tiles; ++k) tra_swap_4(&header.byteCounts[k]);
    if (!at.holds(header)) return nullptr;
    unsigned char* coded = block + static_cast<std::size_t>(at.coded);
    for (std::size_t k = 0; k < at.tiles; ++k) {
        if (foreign) exchangePairs(coded, coded, header.byteCounts[k] & ~1u);
        tiles[k] = coded;
        coded += header.byteCounts[k];
    }
    setParts(block, header, at, tiles);
    return image;
}

}  // namespace tilepress::handles

using namespace tilepress::handles;

std::uint32_t TiffG4Serialize(ImgHandle* image, void** buffer, std::uint32_t* size) {
    if (image && image->serialize) image->serialize(image, buffer, size);
    return 1;  // Kept: whatever came of it
}

std::uint32_t TiffG4Deserialize(ImgHandle** out, void* buffer) {
    ImgHandle* const image = ImgTIFFG4Deserialize(buffer);
    if (out) *out = image;
    return 1;  // Kept: whatever came of it
}
