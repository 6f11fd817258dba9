// A block of the writer with any of its words changed is refused or works, as long as it does not claim to be larger
// than it is: its length is the one thing that the reader cannot know.

#include "input.h"
#include "tilepress/ImgHandle.h"

#include <algorithm>

namespace {

std::uint32_t swapped(std::uint32_t v) {
    tra_swap_4(&v);
    return v;
}

/// Whether a header read as it stands, or in the other byte order, describes areas that lie within the block.
bool staysWithin(const ImgG4Header& header, const unsigned char* block, std::size_t size, bool foreign) {
    const auto word = [foreign](std::uint32_t v) { return foreign ? swapped(v) : v; };
    const auto signedWord = [&](std::int32_t v) {
        return std::int64_t{static_cast<std::int32_t>(word(static_cast<std::uint32_t>(v)))};
    };
    const ImgQuad& quad = header.quads.srcQuad;
    const auto extent = [](std::int64_t a, std::int64_t b) { return std::uint64_t(a < b ? b - a : a - b) + 1; };
    const std::uint64_t width = foreign ? extent(0, signedWord(quad.x2)) : extent(quad.x0, quad.x2);
    const std::uint64_t height = foreign ? extent(0, signedWord(quad.y2)) : extent(quad.y0, quad.y2);
    const std::uint64_t tileWidth = word(header.tileWidth), tileHeight = word(header.tileHeight);
    if (tileWidth == 0 || tileHeight == 0) return true;  // refused
    const std::uint64_t across = (width + tileWidth - 1) / tileWidth, down = (height + tileHeight - 1) / tileHeight;
    if (across > size || down > size || across * down > size) return false;
    const std::uint64_t pointer = sizeof(void*), tiles = across * down;
    const std::uint64_t counts = sizeof(ImgHandle) + sizeof(ImgG4Header) + pointer * (down + 2 * across);
    const std::uint64_t data = (counts + 4 * tiles + pointer - 1) / pointer * pointer;
    std::uint64_t end = data + (pointer + sizeof(ImgG4TileRec)) * tiles + 2 * across * (4 * tileWidth + 24);
    if (end > size) return false;
    for (std::uint64_t k = 0; k < tiles; ++k) {
        std::uint32_t count;
        std::memcpy(&count, block + counts + 4 * k, sizeof count);
        end += word(count);
    }
    return end <= size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input in(data, size);
    const std::uint32_t tileWidth = in.upTo(64), tileHeight = in.upTo(16), width = tileWidth + in.below(100),
                        height = tileHeight + in.below(30);
    const std::uint32_t tiles = (width + tileWidth - 1) / tileWidth * ((height + tileHeight - 1) / tileHeight);
    void* array = nullptr;
    MemAllocate(0, tiles * sizeof(void*), 0, &array);
    std::vector<std::uint32_t> counts;
    const std::uint32_t changes = in.below(8);
    std::vector<std::uint32_t> where, what;
    for (std::uint32_t i = 0; i < changes; ++i)
        where.push_back(in.u16()), what.push_back(in.u8() < 128 ? in.below(200) : in.u32());
    for (std::uint32_t k = 0; k < tiles; ++k) {
        const auto bytes = in.bytes(in.below(40));
        counts.push_back(static_cast<std::uint32_t>(bytes.size()));
        void* tile = nullptr;
        MemAllocate(0, bytes.size(), 0, &tile);
        std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(tile));
        static_cast<void**>(array)[k] = tile;
    }
    ImgHandle* image = ImgNew(ImgTypeTiffG4);
    PROMISE(ImgCreateTiffG4(image, width, height, tileWidth, tileHeight, counts.data(), static_cast<void**>(array)));
    void* written = nullptr;
    std::uint32_t bytes = 0;
    TiffG4Serialize(image, &written, &bytes);
    PROMISE(written);
    image->free(&image, nullptr);

    unsigned char* const block = static_cast<unsigned char*>(written);
    for (std::uint32_t i = 0; i < changes; ++i) std::memcpy(block + where[i] % (bytes / 4) * 4, &what[i], 4);
    const auto& header = *reinterpret_cast<const ImgG4Header*>(block + sizeof(ImgHandle));
    if (staysWithin(header, block, bytes, false) && staysWithin(header, block, bytes, true)) {
        TiffG4Deserialize(&image, block);
        if (image) {
            const std::uint32_t w = image->getWidth(image), h = image->getHeight(image);
            ImgHandle* bits = image->render(image, std::min(w, 200u), std::min(h, 200u), nullptr, 0, 0, 8);
            if (bits) bits->free(&bits, nullptr);
            void* again = nullptr;
            TiffG4Serialize(image, &again, &bytes);
            MemFree(0, again);
            image->free(&image, nullptr);
            PROMISE(image);
        }
    }
    MemFree(0, written);
    return 0;
}
