// Two processes share a compressed image: `revive write FILE` stores it as a block, `revive read FILE` loads the block
// wherever there is room and works on it there.

#include "tilepress/ImgHandle.h"
#include "tilepress/ccitt.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

/// What follows the block in the file.
struct Trailer {
    std::uint64_t address;  // where the block lay
    std::uint32_t pixels;   // a sum over the image
};

constexpr std::uint32_t kSide = 200;

static std::uint32_t sumOf(ImgHandle* image) {
    std::uint32_t sum = 0;
    if (image)
        for (std::size_t i = 0; i < kSide * 25; ++i) sum = sum * 31 + static_cast<unsigned char*>(image->data)[i];
    return sum;
}

static std::uint32_t expandedSum(ImgHandle* image) {
    ImgHandle* bits = image->render(image, kSide, kSide, nullptr, 0, 0, 8);
    const std::uint32_t sum = sumOf(bits);
    if (bits) bits->free(&bits, nullptr);
    return sum;
}

static int write(const char* path) {
    std::vector<unsigned char> rows(kSide * 25 + 1);
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = i / 25 % 7 < 3 && i % 5 < 2 ? 0xF8 : 0;
    std::uint8_t* strip = nullptr;
    cit_enable_encode_gr4();
    cit_enable_detect_changes();
    const std::int32_t length = create_g4_tiff_strip(rows.data(), &strip, kSide, 25, kSide);
    cit_disable_detect_changes();
    cit_disable_encode_gr4();
    if (length <= 0) return 1;
    for (std::int32_t i = 0; i + 1 < length; i += 2) tra_swap_2(strip + i);  // as the decoder reads it
    void* tiles = nullptr;
    MemAllocate(0, sizeof(void*), 0, &tiles);
    *static_cast<void**>(tiles) = strip;
    const auto count = static_cast<std::uint32_t>(length);
    ImgHandle* image = ImgNew(ImgTypeTiffG4);
    if (!ImgCreateTiffG4(image, kSide, kSide, kSide, kSide, &count, static_cast<void**>(tiles))) return 1;
    void* block = nullptr;
    std::uint32_t size = 0;
    TiffG4Serialize(image, &block, &size);
    const Trailer trailer{reinterpret_cast<std::uintptr_t>(block), expandedSum(image)};
    image->free(&image, nullptr);
    std::FILE* file = std::fopen(path, "wb");
    const bool good = block && trailer.pixels != 0 && file && std::fwrite(block, size, 1, file) == 1 &&
                      std::fwrite(&trailer, sizeof trailer, 1, file) == 1;
    if (file) std::fclose(file);
    MemFree(0, block);
    return good ? 0 : 1;
}

static int read(const char* path) {
    std::FILE* file = std::fopen(path, "rb");
    Trailer trailer;
    if (!file || std::fseek(file, -static_cast<long>(sizeof trailer), SEEK_END) != 0 ||
        std::fread(&trailer, sizeof trailer, 1, file) != 1)
        return 1;
    const auto bytes = static_cast<std::size_t>(std::ftell(file));
    std::rewind(file);
    std::vector<std::uint64_t> one(bytes / 8 + 1), two(one.size());
    void* const block = reinterpret_cast<std::uintptr_t>(one.data()) == trailer.address ? two.data() : one.data();
    const bool loaded = std::fread(block, bytes, 1, file) == 1;
    std::fclose(file);
    if (!loaded) return 1;
    ImgHandle* image = nullptr;
    TiffG4Deserialize(&image, block);
    if (!image) return 1;
    const bool moved = reinterpret_cast<std::uintptr_t>(block) != trailer.address;
    const bool same = expandedSum(image) == trailer.pixels;
    std::printf("written at %llx, revived at %llx: %s\n", static_cast<unsigned long long>(trailer.address),
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(block)),
                same ? "same pixels" : "other pixels");
    return moved && same ? 0 : 1;
}

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    return std::strcmp(argv[1], "write") == 0 ? write(argv[2]) : read(argv[2]);
}
