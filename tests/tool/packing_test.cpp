// encode and repack: pages laid out anew keep every pixel, and what their tags say.

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

#include "support.h"

namespace {

nlohmann::json pagesOf(const std::string& path) {
    const auto list = nlohmann::json::parse(tool("info --json " + path).output);
    return list[0]["pages"];
}

TEST(Repack, EverySampleInEveryLayout) {
    const Folder folder;
    const std::string packed = folder / "packed.tif";
    for (const char* name : {"text.tif", "text_strips_lsb.tif", "drawing_tiled.tif", "halftone.tif", "negative.tif",
                             "blackiszero.tif", "pages.tif"})
        for (const auto& [layout, shape, height] : {std::tuple("", "tiles", 512u),
                                                    {" --tile 48", "tiles", 48u},
                                                    {" --strip-rows 77", "strips", 77u},
                                                    {" --single-strip --no-check", "strips", 0u}}) {
            ASSERT_EQ(tool("repack " + sample(name) + " -o " + packed + layout).code, 0) << name << layout;
            const auto before = pagesOf(sample(name)), after = pagesOf(packed);
            ASSERT_EQ(before.size(), after.size());
            for (std::size_t k = 0; k < after.size(); ++k) {
                EXPECT_EQ(after[k]["layout"], shape);
                EXPECT_EQ(after[k]["tileHeight"], height ? nlohmann::json(height) : after[k]["height"]);
                for (const char* tag : {"dpi", "orientation", "photometric"})
                    EXPECT_EQ(before[k][tag], after[k][tag]) << tag;
                EXPECT_EQ(readTiff(packed, unsigned(k) + 1), readTiff(sample(name), unsigned(k) + 1))
                    << name << layout << k;
            }
        }
}

TEST(Repack, ThereAndBackIsTheSameFile) {
    const Folder folder;
    const std::string strip = folder / "strip.tif", tiles = folder / "tiles.tif";
    ASSERT_EQ(tool("repack --single-strip -o " + strip + " " + sample("text.tif")).code, 0);
    ASSERT_EQ(tool("repack -o " + tiles + " " + strip).code, 0);
    EXPECT_TRUE(tool("repack --single-strip - -o - <" + tiles).output == readFile(strip));
}

TEST(Encode, Pictures) {
    const Folder folder;
    const std::string coded = folder / "coded.tif";
    for (const char* name : {"page.png", "page.pbm"}) {
        ASSERT_EQ(tool("render " + sample("halftone.tif -o ") + (folder / name)).code, 0);
        ASSERT_EQ(tool("encode " + (folder / name) + " -o " + coded + " --tile 64").code, 0) << name;
        EXPECT_EQ(readTiff(coded), readTiff(sample("halftone.tif"))) << name;
    }
}

// More changes, and longer rows, than the strip builder of the interface takes.
TEST(Encode, RowsOfAnyLength) {
    const Folder folder;
    const std::string wide = folder / "wide.pbm", coded = folder / "coded.tif";
    writeFile(wide, "P4\n40000 3\n" + std::string(5000, '\x55') + std::string(5000, '\0') + std::string(5000, '\xAA'));
    for (const char* layout : {" --single-strip", " --tile 1024"}) {
        ASSERT_EQ(tool("encode " + wide + " -o " + coded + layout).code, 0);
        EXPECT_EQ(readTiff(coded), parsePnm(readFile(wide))) << layout;
    }
}

TEST(Encode, RefusesWhatItCannotKeep) {
    const Folder folder;
    const std::string out = " -o " + (folder / "out.tif"), damaged = folder / "damaged.tif", grey = folder / "grey.png";
    std::string file = readFile(sample("text.tif"));
    file.replace(12000, 8, 8, '\0');
    writeFile(damaged, file);
    const Outcome run = tool("repack " + damaged + out);
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.errors.find("strip 1 of 1, row 1003"), std::string::npos) << run.errors;
    ASSERT_EQ(tool("render --scale 0.1 -o " + grey + " " + sample("text.tif")).code, 0);
    EXPECT_EQ(tool("encode " + grey + out).code, 3);
    EXPECT_EQ(tool("repack " + grey + out).code, 3) << "TIFF files only";
    // libtiff delivers a damaged fax row with no more than a warning.
    ASSERT_EQ(std::system(("tiffcp -c g3 -r 1 " + sample("halftone.tif ") + damaged).c_str()), 0);
    file = readFile(damaged);
    writeFile(damaged, file.replace(file.size() / 3, 8, 8, '\x13'));
    EXPECT_EQ(tool("repack " + damaged + out).code, 2);
    for (const char* wrong : {" --tile 100", " --tile 0", " --strip-rows 0", " --tile 64 --single-strip"})
        EXPECT_EQ(tool("repack " + sample("text.tif") + out + wrong).code, 1) << wrong;
    EXPECT_EQ(tool("repack --max-input-pixels 1000 " + sample("text.tif") + out).code, 4);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"damaged.tif", "grey.png"}));
}

// --- damage ---------------------------------------------------------------------------------

/// A tiled drawing with two damaged tiles.
std::string damagedTiles(const Folder& folder) {
    std::string file = readFile(sample("drawing_tiled.tif"));
    file.replace(file.size() / 3, 40, 40, '\0');
    file.replace(file.size() / 2, 4, 4, '\0');
    writeFile(folder / "damaged.tif", file);
    return folder / "damaged.tif";
}

TEST(Verify, NamesWhatIsDamaged) {
    const Folder folder;
    for (const char* name : {"text.tif", "text_strips_lsb.tif", "drawing_tiled.tif", "blackiszero.tif", "pages.tif"})
        EXPECT_EQ(tool(std::string("verify --reference ") + sample(name)).code, 0) << name;
    const Outcome run = tool("verify --json --reference " + sample("text.tif ") + damagedTiles(folder));
    EXPECT_EQ(run.code, 2);
    const auto files = nlohmann::json::parse(run.output);
    EXPECT_TRUE(files[0]["pages"][0]["damaged"].empty());
    const auto damaged = files[1]["pages"][0]["damaged"];
    ASSERT_EQ(damaged.size(), 2u);
    EXPECT_EQ(damaged[0]["tile"], 15);
    EXPECT_EQ(damaged[1]["tile"], 22);
    EXPECT_GT(damaged[0]["byte"], 0);
    EXPECT_EQ(tool("verify --reference - <" + sample("text.tif")).code, 0);
    EXPECT_EQ(tool("verify /no/such/file " + sample("text.tif")).code, 1);
}

TEST(Salvage, OneBadTileDoesNotCostTheRest) {
    const Folder folder;
    const std::string damaged = damagedTiles(folder), picture = folder / "picture.pbm";
    const Outcome run = tool("render --on-error salvage -o " + picture + " " + damaged);
    EXPECT_EQ(run.code, 2);
    EXPECT_NE(run.errors.find("tile 15 of 35"), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find("tile 22 of 35"), std::string::npos) << run.errors;
    const Raster drawn = parsePnm(readFile(picture)), whole = readTiff(sample("drawing_tiled.tif"));
    ASSERT_EQ(drawn.width, whole.width);
    for (std::uint32_t y = 0; y < whole.height; ++y)
        for (std::uint32_t x = 0; x < whole.width; ++x) {
            const std::uint32_t tile = y / 128 * 5 + x / 256 + 1;
            const bool good = tile != 15 && tile != 22;
            if (!good && y % 128 < 127) continue;
            ASSERT_EQ(drawn.at(x, y), good ? whole.at(x, y) : 255) << x << ' ' << y << ": white from the bad row on";
        }
    EXPECT_EQ(tool("render --on-error salvage -o " + picture + " " + sample("drawing_tiled.tif")).code, 0);
}

// Strips past the end of the file are lost, others have no data because they are white.
TEST(Damage, LostStripsAreNoWhiteOnes) {
    const Folder folder;
    const std::string name = folder / "strips.tif", out = " -o " + (folder / "out.pbm ");
    std::string file = readFile(sample("text_strips_lsb.tif"));
    TIFF* tiff = TIFFOpen(sample("text_strips_lsb.tif").c_str(), "r");
    const auto places = [&](std::uint32_t k) {
        const std::uint32_t both[] = {std::uint32_t(TIFFGetStrileOffset(tiff, k)),
                                      std::uint32_t(TIFFGetStrileOffset(tiff, k + 1))};
        return std::string(reinterpret_cast<const char*>(both), sizeof both);
    };
    file.replace(file.find(places(10)), 4, "\xF0\xFF\xFF\x7F", 4);
    TIFFClose(tiff);
    writeFile(name, file);
    for (const char* command : {"verify ", "render -o /dev/null --format pbm ",
                                "convert -o /dev/null --format pbm --to bilevel ", "repack -o /dev/null "}) {
        const Outcome run = tool(command + name);
        EXPECT_EQ(run.code, 2) << command;
        EXPECT_NE((run.output + run.errors).find("strip 11 of 24, row 1 of it"), std::string::npos) << run.errors;
    }
    EXPECT_EQ(tool("render --rect 0,0,1000,900" + out + name).code, 0) << "the strip is not asked for";
    EXPECT_EQ(tool("render --on-error salvage" + out + name).code, 2);
    const Raster drawn = parsePnm(readFile(folder / "out.pbm")), whole = readTiff(sample("text_strips_lsb.tif"));
    for (std::uint32_t y = 0; y < whole.height; ++y)
        for (std::uint32_t x = 0; x < whole.width; ++x)
            ASSERT_EQ(drawn.at(x, y), y / 100 == 10 ? 255 : whole.at(x, y)) << x << ' ' << y;

    tiff = TIFFOpen(name.c_str(), "w");
    for (const auto& [tag, value] : {std::pair(TIFFTAG_IMAGEWIDTH, 100),
                                     {TIFFTAG_IMAGELENGTH, 100},
                                     {TIFFTAG_TILEWIDTH, 64},
                                     {TIFFTAG_TILELENGTH, 64},
                                     {TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4},
                                     {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE}})
        TIFFSetField(tiff, std::uint32_t(tag), value);
    std::vector<unsigned char> black(64 * 8, 0xFF);
    TIFFWriteTile(tiff, black.data(), 64, 0, 0, 0);
    TIFFClose(tiff);
    ASSERT_EQ(tool("repack --single-strip -o " + (folder / "whole.tif ") + name).code, 0);
    const Raster filled = readTiff(folder / "whole.tif");
    for (std::uint32_t y = 0; y < 100; ++y)
        for (std::uint32_t x = 0; x < 100; ++x)
            ASSERT_EQ(filled.at(x, y), x >= 64 && y < 64 ? 0 : 255) << x << ' ' << y;
}

TEST(Limits, Memory) {
    const Folder folder;
    const std::string out = " -o " + (folder / "x.png ");
    EXPECT_EQ(tool("render --max-memory 5Q" + out + sample("text.tif")).code, 1);
    EXPECT_EQ(tool("render --max-memory 1G" + out + sample("text.tif")).code, 0);
#ifndef __SANITIZE_ADDRESS__  // whose own needs no limit allows
    const Outcome run = tool("render --max-memory 300M --size 10000x10000 --mode ink" + out + sample("text.tif"));
    EXPECT_EQ(run.code, 0) << run.errors;
    EXPECT_EQ(tool("render --max-memory 300M --rotate 10 --max-pixels 2000000000 --size 40000x40000 --mode ink" + out +
                   sample("text.tif"))
                  .code,
              4);
#endif
}

}  // namespace
