// Runs fuzz targets on the inputs of their corpora, and on some made by chance, as an ordinary test:
// `replay TARGET [FOLDER]`.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#define TARGET(name) extern "C" int name(const std::uint8_t*, std::size_t);
#include "targets.h"
#undef TARGET

struct Target {
    const char* name;
    int (*run)(const std::uint8_t*, std::size_t);
};
static const Target kTargets[] = {
#define TARGET(name) {#name, name},
#include "targets.h"
#undef TARGET
};

int main(int argc, char** argv) {
    for (const Target& target : kTargets) {
        if (argc < 2 || target.name != std::string(argv[1])) continue;
        int inputs = 0;
        if (argc > 2 && std::filesystem::is_directory(argv[2]))
            for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
                std::ifstream file(entry.path(), std::ios::binary);
                const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
                target.run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
                ++inputs;
            }
        std::mt19937 random(1);
        for (int n = 0; n < 300; ++n) {
            std::vector<std::uint8_t> bytes(random() % 2000);
            for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
            target.run(bytes.data(), bytes.size());
        }
        std::printf("%s: %d inputs of the corpus and 300 others\n", target.name, inputs);
        return 0;
    }
    std::printf("no such target\n");
    return 1;
}
