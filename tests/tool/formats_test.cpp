// Files that are not Group 4 TIFF: taken by every command, with the same pixels.

#include "support.h"

#include <gtest/gtest.h>
#include <tiffio.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <sstream>
#include <utility>

namespace {

bool shell(const std::string& command) { return std::system((command + " >/dev/null 2>&1").c_str()) == 0; }

/// The text sample's codings: names of files in the folder.
std::vector<std::string> codings(const Folder& folder) {
    std::vector<std::string> names;
    for (const char* options :
         {"-c g3:1d", "-c g3:2d:fill", "-c packbits", "-c lzw", "-c zip -t -w 256 -l 128", "-c none -f lsb2msb -r 7"}) {
        names.push_back(folder / ("coding" + std::to_string(names.size()) + ".tif"));
        EXPECT_TRUE(shell("tiffcp " + std::string(options) + " " + sample("text.tif") + " " + names.back())) << options;
    }
    return names;
}

TEST(Formats, EveryCodingOfBilevelTiffIsTaken) {
    const Folder folder;
    const Raster small = rendered(sample("text.tif") + " --scale 0.1");
    for (const std::string& name : codings(folder)) {
        EXPECT_EQ(rendered(name + " --scale 0.1"), small) << name;
        EXPECT_EQ(tool("verify " + name).code, 0) << name;
        ASSERT_EQ(tool("repack " + name + " -o " + (folder / "repacked.tif")).code, 0) << name;
        EXPECT_EQ(readTiff(folder / "repacked.tif"), readTiff(sample("text.tif"))) << name;
    }
}

/// A page of two colours, given as red, green and blue in TIFF's 16 bits.
void writePalette(const std::string& path, const std::uint16_t (&zero)[3], const std::uint16_t (&one)[3]) {
    TIFF* const tiff = TIFFOpen(path.c_str(), "w");
    std::uint16_t red[] = {zero[0], one[0]}, green[] = {zero[1], one[1]}, blue[] = {zero[2], one[2]};
    for (const auto& [tag, value] :
         {std::pair(TIFFTAG_IMAGEWIDTH, 16), {TIFFTAG_IMAGELENGTH, 1}, {TIFFTAG_ROWSPERSTRIP, 1}})
        TIFFSetField(tiff, tag, value);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
    TIFFSetField(tiff, TIFFTAG_COLORMAP, red, green, blue);
    unsigned char row[] = {0x0F, 0x01};
    TIFFWriteScanline(tiff, row, 0, 0);
    TIFFClose(tiff);
}

TEST(Formats, OfTwoColoursTheDarkerOneIsInk) {
    const Folder folder;
    const std::string page = folder / "page.tif";
    for (const bool oneIsDark : {false, true}) {
        const std::uint16_t dark[] = {0, 0, 30000}, light[] = {65535, 60000, 0};
        if (oneIsDark) writePalette(page, light, dark);
        else writePalette(page, dark, light);
        ASSERT_EQ(tool("repack " + page + " -o " + (folder / "repacked.tif")).code, 0);
        for (const Raster& drawn : {rendered(page), readTiff(folder / "repacked.tif")}) {
            ASSERT_EQ(drawn.width, 16u);
            EXPECT_EQ(drawn.at(0, 0) == 0, !oneIsDark);
            EXPECT_EQ(drawn.at(15, 0) == 0, oneIsDark);
        }
    }
}

TEST(Formats, ColourPagesAreDrawnAndNamedWhereTheyCannotBeTaken) {
    const Folder folder;
    const std::string colour = folder / "colour.tif", tiled = folder / "tiled.tif";
    ASSERT_EQ(tool("convert --to rgb " + sample("text.tif") + " -o " + colour).code, 0);
    ASSERT_TRUE(shell("tiffcp -c lzw -t -w 128 -l 64 " + colour + " " + tiled));
    for (const std::string& name : {colour, tiled}) EXPECT_EQ(rendered(name), readTiff(sample("text.tif"))) << name;
    ASSERT_EQ(tool("render --scale 0.2 " + sample("text.tif") + " -o " + (folder / "grey.tif")).code, 0);
    EXPECT_EQ(rendered(folder / "grey.tif"), rendered(sample("text.tif") + " --scale 0.2"));
    for (const std::string command : {"verify ", "repack -o /dev/null "}) {
        const Outcome run = tool(command + colour);
        EXPECT_EQ(run.code, 3);
        EXPECT_NE(run.errors.find("tilepress convert --to bilevel"), std::string::npos) << run.errors;
    }
    ASSERT_EQ(tool("repack --dither " + tiled + " -o " + (folder / "dithered.tif")).code, 0);
    EXPECT_EQ(readTiff(folder / "dithered.tif"), readTiff(sample("text.tif")));
}

TEST(Pdf, PagesOfEveryMakerHaveTheSamePixels) {
    const Folder folder;
    const std::string g3 = folder / "g3.tif", pdf = folder / "page.pdf", back = folder / "back.tif";
    ASSERT_TRUE(shell("tiffcp -c g3:1d " + sample("text.tif") + " " + g3));
    const std::string made[] = {"tiff2pdf -o " + pdf + " " + sample("text.tif"), "tiff2pdf -o " + pdf + " " + g3,
                                "img2pdf -o " + pdf + " " + sample("text.tif"),
                                "gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -o " + (folder / "gs.pdf") + " " + pdf +
                                    " && mv " + (folder / "gs.pdf") + " " + pdf};
    for (const std::string& maker : made) {
        ASSERT_TRUE(shell(maker)) << maker;
        EXPECT_EQ(rendered(pdf), readTiff(sample("text.tif"))) << maker;
        EXPECT_EQ(tool("verify " + pdf).code, 0) << maker;
        ASSERT_EQ(tool("repack " + pdf + " -o " + back).code, 0) << maker;
        EXPECT_EQ(readTiff(back), readTiff(sample("text.tif"))) << maker;
        EXPECT_NE(tool("info " + back).output.find("200 x 200 dpi"), std::string::npos) << maker;
        ASSERT_TRUE(shell("pdfimages -png " + pdf + " " + (folder / "image")));
        EXPECT_EQ(readPng(folder / "image-000.png"), rendered(pdf)) << maker;
    }
}

TEST(Pdf, WrittenPagesAreThoseOfTheTiff) {
    const Folder folder;
    const std::string pdf = folder / "pages.pdf", again = folder / "again.pdf", back = folder / "back.tif";
    for (const std::string& name : {sample("pages.tif"), sample("negative.tif"), sample("drawing_tiled.tif")}) {
        ASSERT_EQ(tool("repack " + name + " -o " + pdf).code, 0) << name;
        ASSERT_EQ(tool("repack " + name + " -o " + again).code, 0) << name;
        EXPECT_EQ(readFile(pdf), readFile(again)) << name;
        ASSERT_EQ(tool("repack " + pdf + " -o " + back).code, 0) << name;
        EXPECT_EQ(readTiff(back), readTiff(name)) << name;
        ASSERT_TRUE(shell("qpdf --check " + pdf)) << name;
        ASSERT_TRUE(shell("pdfimages -png " + pdf + " " + (folder / "image"))) << name;
        EXPECT_EQ(readPng(folder / "image-000.png"), readTiff(name)) << name;
    }
    // Every way to lie on the page is that of the TIFF file.
    for (const char* orientation : {"1", "2", "3", "4", "5", "6", "7", "8"}) {
        const std::string turned = folder / "turned.tif";
        ASSERT_TRUE(
            shell("cp " + sample("text.tif") + " " + turned + " && tiffset -s 274 " + orientation + " " + turned));
        ASSERT_EQ(tool("repack " + turned + " -o " + pdf).code, 0);
        EXPECT_EQ(rendered(pdf + " --scale 0.2"), rendered(turned + " --scale 0.2")) << orientation;
    }
    EXPECT_EQ(tool("repack --tile 512 " + sample("text.tif") + " -o " + pdf).code, 1);
}

TEST(Pdf, ParametersAreTakenAtTheirWord) {
    const Folder folder;
    const std::string pdf = folder / "page.pdf";
    ASSERT_TRUE(shell("tiff2pdf -o " + pdf + " " + sample("text.tif")));
    const std::string file = readFile(pdf), columns = " /Columns 1653 /Rows 2339";
    const std::size_t at = file.find("/K -1"), end = file.find(">>", at);
    ASSERT_NE(end, std::string::npos);
    const Raster page = readTiff(sample("text.tif"));
    const struct {
        std::string parameters;
        int code;
        bool inverted;
    } cases[] = {{"/K -4 /EndOfBlock false" + columns, 0, false},
                 {"/K -1 /BlackIs1 true" + columns, 0, true},
                 {"/K -1 /EncodedByteAlign true" + columns, 3, false},
                 {"/K -1 /EncodedByteAlign false /Rows 0 /Columns 1653", 0, false},
                 {"/K 0" + columns, 2, false},
                 {"/K -1 /Columns 99999999999", 3, false}};
    for (const auto& c : cases) {
        std::string changed = file;
        writeFile(pdf, changed.replace(at, end - at, c.parameters));
        const Outcome run = tool("render --format pnm -o - " + pdf);
        EXPECT_EQ(run.code, c.code) << c.parameters << run.errors;
        if (c.code != 0) continue;
        const Raster drawn = parsePnm(run.output);
        ASSERT_EQ(drawn.grey.size(), page.grey.size());
        EXPECT_EQ(drawn.at(5, 5) != page.at(5, 5), c.inverted) << c.parameters;
    }
}

TEST(Formats, DamagedFilesOfEveryKindEndInAReport) {
    const Folder folder;
    std::vector<std::string> files = codings(folder);
    for (const std::string maker : {"tiff2pdf -o ", "img2pdf -o "}) {
        files.push_back(folder / (maker.substr(0, 4) + ".pdf"));
        ASSERT_TRUE(shell(maker + files.back() + " " + sample("text.tif")));
    }
    const char* const wanted = std::getenv("TILEPRESS_DAMAGED_FILES");
    const int copies = wanted ? std::atoi(wanted) : 40;
    std::mt19937 random(1);
    for (const std::string& name : files) {
        const std::string whole = readFile(name);
        std::string list;
        for (int i = 0; i < copies; ++i) {
            std::string file = whole;
            for (int changes = 0; changes < 4; ++changes) file[random() % file.size()] = static_cast<char>(random());
            if (i % 4 == 0) file.resize(random() % file.size());
            list += folder / ("damaged" + std::to_string(i)) + '\n';
            writeFile(folder / ("damaged" + std::to_string(i)), file);
        }
        writeFile(folder / "list", list);
        const Outcome run = tool("batch verify -j2 --page-timeout 60 <" + (folder / "list"));
        std::istringstream lines(run.output);
        for (std::string line; std::getline(lines, line);)
            EXPECT_EQ(line.find("the worker"), std::string::npos) << name << line;
        EXPECT_NE(run.code, 0) << name;
        EXPECT_NE(run.code, -1) << name;
    }
}

/// The largest and the mean difference of bytes; large where the lengths differ.
std::pair<int, double> differences(const std::string& a, const std::string& b) {
    if (a.size() != b.size() || a.empty()) return {256, 256};
    int largest = 0;
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int difference = std::abs(static_cast<unsigned char>(a[i]) - static_cast<unsigned char>(b[i]));
        largest = std::max(largest, difference);
        sum += difference;
    }
    return {largest, sum / static_cast<double>(a.size())};
}

// Decoded by the formats' own tools: the pixels that the portable formats have.
TEST(Formats, ViewsInJpegAndWebpShowTheSamePixels) {
    const Folder folder;
    const std::string colours = folder / "colours.ppm";
    std::string pixels = "P6\n61 47\n255\n";
    for (int y = 0; y < 47; ++y)
        for (int x = 0; x < 61; ++x) pixels += {char(x * 4), char(y * 5), char(250 - x * 2 - y)};
    writeFile(colours, pixels);
    const std::string bits = sample("text.tif --rect 180,300,301,77"), grey = sample("halftone.tif --scale 0.2");
    const struct {
        std::string picture, ending, quality;
        int largest;  ///< of the differences that are allowed
        double mean;
    } views[] = {{bits, "webp", "", 0, 0},
                 {grey, "webp", "", 0, 0},
                 {colours, "webp", "", 0, 0},
                 {colours, "webp", "--quality 90", 30, 3},
                 {bits, "jpg", "--quality 100", 6, 1},
                 {grey, "jpg", "", 60, 6},
                 {grey, "jpeg", "--quality 100", 4, 1},
                 {colours, "jpg", "--quality 95", 16, 2}};
    for (const auto& view : views) {
        const std::string file = folder / ("view." + view.ending), name = view.picture + " " + file + view.quality;
        const std::string portable = view.ending != "webp" && view.picture != colours ? "pgm" : "ppm";
        ASSERT_EQ(tool("render " + view.picture + " " + view.quality + " -o " + file).code, 0) << name;
        const std::string decoder = view.ending == "webp" ? "dwebp -ppm -o " : "djpeg -pnm -outfile ";
        ASSERT_TRUE(shell(decoder + (folder / "decoded") + " " + file)) << name;
        const Outcome expected = tool("render " + view.picture + " --format " + portable + " -o -");
        const auto [largest, mean] = differences(readFile(folder / "decoded"), expected.output);
        EXPECT_LE(largest, view.largest) << name;
        EXPECT_LE(mean, view.mean) << name;
    }
}

TEST(Formats, ViewsAreRefusedBeforeAnythingIsWritten) {
    const Folder folder;
    const std::string text = sample("text.tif");
    const struct {
        std::string arguments, message;
        int code;
    } cases[] = {{"render " + text + " --size 16384x1 -o a.webp", "WebP holds at most 16383", 4},
                 {"render " + text + " --size 1x65501 -o a.jpg", "JPEG holds at most 65500", 4},
                 {"convert " + text + " --to rgb --quality 9 -o a.png", "--quality is for JPEG and WebP", 1},
                 {"render " + text + " --quality 0 -o a.jpg", "--quality", 1},
                 {"render " + text + " --format jpg -o /dev/full", "No space left", 1},
                 {"render " + text + " --format webp -o /dev/full", "No space left", 1}};
    for (const auto& refused : cases) {
        const Outcome run = tool(refused.arguments, "cd " + (folder / "") + ";");
        EXPECT_EQ(run.code, refused.code) << refused.arguments;
        EXPECT_NE(run.errors.find(refused.message), std::string::npos) << run.errors;
        EXPECT_TRUE(folder.names().empty()) << refused.arguments;
    }
}

}  // namespace
