#include "support.h"

#include <gtest/gtest.h>
#include <png.h>
#include <sys/wait.h>
#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <ostream>
#include <sstream>

Folder::Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "tilepress-XXXXXX").string();
    path = mkdtemp(name.data());
}

Folder::~Folder() { std::filesystem::remove_all(path); }

std::vector<std::string> Folder::names() const {
    std::vector<std::string> all;
    for (const auto& entry : std::filesystem::directory_iterator(path)) all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
}

Outcome tool(const std::string& arguments, const std::string& before) {
    const Folder folder;
    const std::string out = folder / "out", err = folder / "err";
    const int status = std::system(
        ("{ " + before + " '" TILEPRESS_TOOL "' " + arguments + "; } >" + out + " 2>" + err + " </dev/null").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
}

Raster Raster::made(std::uint32_t width, std::uint32_t height,
                    const std::function<std::uint8_t(std::uint32_t, std::uint32_t)>& from) {
    Raster raster{width, height, std::vector<std::uint8_t>(std::size_t{width} * height)};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) raster.at(x, y) = from(x, y);
    return raster;
}

double Raster::darkShare() const {
    return static_cast<double>(std::count_if(grey.begin(), grey.end(), [](int g) { return g < 128; })) /
           static_cast<double>(grey.size());
}

Raster readTiff(const std::string& path, unsigned page) {
    Raster raster;
    TIFFSetWarningHandler(nullptr);
    TIFF* tiff = TIFFOpen(path.c_str(), "r");
    if (!tiff) return raster;
    if (TIFFSetDirectory(tiff, page - 1)) {
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &raster.width);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &raster.height);
        std::vector<std::uint32_t> pixels(std::size_t{raster.width} * raster.height);
        TIFFReadRGBAImageOriented(tiff, raster.width, raster.height, pixels.data(), ORIENTATION_TOPLEFT, 0);
        for (const std::uint32_t pixel : pixels) raster.grey.push_back(static_cast<std::uint8_t>(TIFFGetR(pixel)));
    }
    TIFFClose(tiff);
    return raster;
}

Raster readPng(const std::string& path) {
    Raster raster;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return raster;
    image.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr)) return raster;
    raster = {image.width, image.height, {}};
    for (std::size_t i = 0; i < bytes.size(); i += 3) raster.grey.push_back(bytes[i]);
    return raster;
}

Raster parsePnm(const std::string& bytes) {
    std::istringstream header(bytes);
    std::string kind;
    Raster raster;
    unsigned maximum = 255;
    header >> kind >> raster.width >> raster.height;
    if (kind != "P4") header >> maximum;
    if (!header || maximum != 255) return {};
    const std::size_t data = static_cast<std::size_t>(header.tellg()) + 1, width = raster.width;
    const std::size_t rowBytes = kind == "P4" ? (width + 7) / 8 : kind == "P5" ? width : 3 * width;
    if (bytes.size() != data + rowBytes * raster.height) return {};
    return Raster::made(raster.width, raster.height, [&](std::uint32_t x, std::uint32_t y) {
        const std::size_t row = data + rowBytes * y;
        const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[row + i]); };
        if (kind == "P4") return static_cast<std::uint8_t>(byte(x / 8) >> (7 - x % 8) & 1 ? 0 : 255);
        return byte(kind == "P5" ? x : std::size_t{3} * x);
    });
}

std::string sample(const std::string& name) { return TILEPRESS_SAMPLES + name; }

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void setTag(std::string& file, unsigned tag, std::uint32_t value) {
    const auto read = [&](std::size_t at, int bytes) {
        std::uint32_t number = 0;
        for (int i = bytes; i-- > 0;) number = number << 8 | static_cast<unsigned char>(file[at + std::size_t(i)]);
        return number;
    };
    const std::size_t directory = read(4, 4);
    for (std::size_t entry = directory + 2; entry < directory + 2 + 12 * read(directory, 2); entry += 12) {
        if (read(entry, 2) != tag) continue;
        file[entry + 2] = 4;  // LONG
        for (int i = 0; i < 4; ++i) file[entry + 8 + std::size_t(i)] = static_cast<char>(value >> 8 * i);
        return;
    }
    ADD_FAILURE() << "no tag " << tag;
}

std::string codes(const std::string& bits) {
    std::string bytes;
    std::size_t count = 0;
    for (const char bit : bits) {
        if (bit == ' ') continue;
        if (count % 8 == 0) bytes += '\0';
        if (bit == '1') bytes.back() = static_cast<char>(bytes.back() | 0x80 >> count % 8);
        ++count;
    }
    return bytes;
}

std::string tinyTiff(std::uint32_t width, std::uint32_t height, const std::string& strip,
                     const std::vector<Tag>& more) {
    const auto number = [](std::uint32_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
        return text;
    };
    const std::string padded = strip + std::string(strip.size() % 2, '\0');
    std::map<unsigned, std::uint32_t> tags = {
        {256, width}, {257, height}, {258, 1},      {259, 4},
        {262, 0},     {273, 8},      {278, height}, {279, std::uint32_t(strip.size())}};
    for (const Tag& tag : more) tags[tag.number] = tag.value;
    std::string file = "II*" + std::string(1, '\0') + number(std::uint32_t(8 + padded.size()), 4) + padded +
                       number(std::uint32_t(tags.size()), 2);
    // Resolutions are fractions, which stand behind the directory.
    const auto behind = std::uint32_t(file.size() + 12 * tags.size() + 4);
    std::string fractions;
    for (const auto& [tag, value] : tags) {
        const bool isFraction = tag == 282 || tag == 283;
        file += number(tag, 2) + number(isFraction ? 5 : tag == 34665 ? 13 : 4, 2) + number(1, 4);
        file += number(isFraction ? behind + std::uint32_t(fractions.size()) : value, 4);
        if (isFraction) fractions += number(value, 4) + number(1, 4);
    }
    return file + number(0, 4) + fractions;
}

Raster rendered(const std::string& arguments) {
    const Outcome run = tool("render --format pnm -o - " + arguments);
    return run.code == 0 ? parsePnm(run.output) : Raster{};
}

void PrintTo(const Raster& raster, std::ostream* out) { *out << raster.width << " x " << raster.height << " pixels"; }
