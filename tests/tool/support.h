#pragma once

// Running the tool, and reading pictures without it.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What a run of the program left.
struct Outcome {
    int code = -1;
    std::string output, errors;
};

/// Runs the tool with the shell's words; standard input is empty unless they redirect it. `before` are words or
/// commands before it.
Outcome tool(const std::string& arguments, const std::string& before = "");

/// A picture in one grey byte a pixel; only the first component of colours.
struct Raster {
    std::uint32_t width = 0, height = 0;
    std::vector<std::uint8_t> grey;

    std::uint8_t& at(std::uint32_t x, std::uint32_t y) { return grey[std::size_t{y} * width + x]; }
    std::uint8_t at(std::uint32_t x, std::uint32_t y) const { return grey[std::size_t{y} * width + x]; }
    bool operator==(const Raster&) const = default;
    /// Of another picture: each pixel from where `from` says.
    static Raster made(std::uint32_t width, std::uint32_t height,
                       const std::function<std::uint8_t(std::uint32_t, std::uint32_t)>& from);
    double darkShare() const;
};

Raster readTiff(const std::string& path, unsigned page = 1);  ///< decoded by libtiff
Raster readPng(const std::string& path);                      ///< by libpng
Raster parsePnm(const std::string& bytes);

/// A file of the sample folder.
std::string sample(const std::string& name);
std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);
/// Codes of Group 4 as bits: "001 00110101"; blanks do not count.
std::string codes(const std::string& bits);
struct Tag {
    unsigned number;
    std::uint32_t value;
};
/// A little-endian TIFF file of one page with one strip; more tags may take the place of the usual ones.
std::string tinyTiff(std::uint32_t width, std::uint32_t height, const std::string& strip,
                     const std::vector<Tag>& more = {});
/// Overwrites the value of a tag of the first directory of a little-endian TIFF file.
void setTag(std::string& file, unsigned tag, std::uint32_t value);

/// The page drawn by the tool, or an empty picture when it failed.
Raster rendered(const std::string& arguments);

/// A folder that ends with the test.
class Folder {
public:
    Folder();
    ~Folder();
    std::string operator/(const std::string& name) const { return (path / name).string(); }
    std::vector<std::string> names() const;

private:
    std::filesystem::path path;
};

void PrintTo(const Raster& raster, std::ostream* out);
