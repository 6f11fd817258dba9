// Two processes share a compressed image: `revive write FILE` stores it as a block, `revive read FILE` loads the block
// wherever there is room and works on it there.

#include "tilepress/ImgHandle.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

/// Twenty columns, ten rows, the first ten columns black; its bytes in pairs, as the decoder reads them.
static unsigned char coded[] = {0xA1, 0x26, 0xFF, 0x3F, 0xFC, 0xFF, 0x40, 0x00, 0x00, 0x04};

static bool isRight(ImgHandle* image) {
    ImgHandle* bits = image ? image->render(image, 20, 10, nullptr, 0, 0, 8) : nullptr;
    bool right = bits != nullptr;
    for (std::size_t y = 0; right && y < 10; ++y)
        right = std::memcmp(static_cast<unsigned char*>(bits->data) + 3 * y, "\xFF\xC0\0", 3) == 0;
    if (bits) bits->free(&bits, nullptr);
    return right;
}

static bool write(std::FILE* file) {
    const std::uint32_t count = sizeof coded;
    void *tiles[] = {coded}, *block = nullptr;
    std::uint32_t size = 0;
    ImgHandle* image = ImgNew(ImgTypeTiffG4);
    if (!ImgCreateTiffG4(image, 20, 10, 20, 10, &count, tiles)) return false;
    TiffG4Serialize(image, &block, &size);
    const auto address = reinterpret_cast<std::uintptr_t>(block);  // stands before the block
    const bool good = isRight(image) && block && std::fwrite(&address, sizeof address, 1, file) == 1 &&
                      std::fwrite(block, size, 1, file) == 1;
    image->free(&image, tiles);
    MemFree(0, block);
    return good;
}

static bool read(std::FILE* file) {
    std::uintptr_t address = 0;
    std::vector<std::uint64_t> one(10000), two(one.size());
    if (std::fread(&address, sizeof address, 1, file) != 1) return false;
    void* const block = reinterpret_cast<std::uintptr_t>(one.data()) == address ? two.data() : one.data();
    const std::size_t size = std::fread(block, 1, 80000, file);
    ImgHandle* image = nullptr;
    return size > 0 && TiffG4Deserialize(&image, block) == 1 && isRight(image);
}

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const bool writes = std::strcmp(argv[1], "write") == 0;
    std::FILE* const file = std::fopen(argv[2], writes ? "wb" : "rb");
    if (!file) return 1;
    const bool good = writes ? write(file) : read(file);
    return std::fclose(file) == 0 && good ? 0 : 1;
}
