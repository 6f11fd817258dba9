// How compressed handles begin and end.

#include "handles/tiffg4.h"
#include "foundation/heap.h"
#include "handles/operations.h"

#include <cstring>

namespace tilepress::handles {
namespace {

/// `count` pointers to a work buffer each; null when memory runs out.
void** columnBuffers(std::uint32_t count, std::uint32_t tileWidth) {
    void** const buffers = allocate<void*>(count);
    for (std::uint32_t c = 0; buffers && c < count; ++c)
        buffers[c] = allocate<unsigned char>(columnBufferBytes(tileWidth));
    return buffers;
}

void freeColumnBuffers(void** buffers, std::uint64_t count) {
    for (std::uint64_t c = 0; buffers && c < count; ++c) std::free(buffers[c]);
    std::free(buffers);
}

}  // namespace

void setTiles(const ImgG4Header& header, ImgG4TileRec* tile, void* const* tileData) {
    const std::uint32_t across = layoutOf(header).across(), down = layoutOf(header).down();
    for (std::uint32_t row = 0; row < down; ++row) {
        header.tileRows[row] = tile;
        for (std::uint32_t column = 0; column < across; ++column, ++tile) {
            tile->tileData = *tileData++;
            tile->decodeState = 0;
            tile->decodeFlag = 1;
            tile->originX = header.tileWidth * column;
            tile->originY = header.tileHeight * row;
        }
    }
}

std::uint32_t ImgTIFFG4Create(ImgHandle* image, std::uint32_t width, std::uint32_t height, std::uint32_t tileWidth,
                              std::uint32_t tileHeight, std::uint32_t, const std::uint32_t* byteCounts,
                              void** tileData) {
    if (!image || image->header || !byteCounts || !tileData || width == 0 || height == 0 || width > INT32_MAX ||
        height > INT32_MAX || tileWidth == 0 || tileHeight == 0)
        return 0;
    Heap<ImgG4Header> header(1);
    if (!header) return 0;
    ImgG4Header& h = *header.get();
    setQuads(h.quads, width, height);
    h.bytesPerLine = static_cast<std::uint32_t>(packedBytes(width));
    h.tileWidth = tileWidth;
    h.tileHeight = tileHeight;
    const std::uint32_t across = layoutOf(h).across();
    const std::uint64_t tiles = layoutOf(h).tiles();
    Heap<std::uint32_t> counts(tiles);
    Heap<ImgG4TileRec> records(tiles);
    Heap<ImgG4TileRec*> rows(std::uint64_t{layoutOf(h).down()});
    if (!counts || !records || !rows) return 0;

    std::uint64_t total = 0;
    for (std::size_t k = 0; k < tiles; ++k) total += counts[k] = byteCounts[k];
    if (total > UINT32_MAX) return 0;
    h.totalBytes = static_cast<std::uint32_t>(total);
    // Nothing reads these buffers here: one that cannot be had stays null.
    h.columnBufA = columnBuffers(across, tileWidth);
    h.columnBufB = columnBuffers(across, tileWidth);
    h.byteCounts = counts.release();
    h.tileRows = rows.release();
    setTiles(h, records.release(), tileData);
    image->data = tileData;
    MemSetPointer(0, tileData, &image->data);
    image->header = header.release();
    return 1;
}

}  // namespace tilepress::handles

using namespace tilepress::handles;

void* ImgTIFFG4Free(ImgHandle** where, void* keep) {
    if (!where || !isTiffG4(*where) || livesInBlock(**where)) return nullptr;
    ImgHandle* const image = *where;
    ImgG4Header* const header = static_cast<ImgG4Header*>(image->header);
    const auto layout = layoutOf(*header);
    void* const kept = image->data == keep ? keep : nullptr;
    if (image->data && !kept) {
        void** const tiles = static_cast<void**>(image->data);
        for (std::size_t k = 0, count = static_cast<std::size_t>(layout.tiles()); k < count; ++k) MemFree(0, tiles[k]);
        MemFree(0, tiles);
    }
    if (header->tileRows) {
        std::free(header->tileRows[0]);
        std::free(header->tileRows);
    }
    freeColumnBuffers(header->columnBufA, layout.across());
    freeColumnBuffers(header->columnBufB, layout.across());
    std::free(header->byteCounts);
    std::free(header);
    std::free(image);
    *where = nullptr;
    return kept;
}
