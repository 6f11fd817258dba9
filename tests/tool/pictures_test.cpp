// The pixels of what the tool draws.

#include <gtest/gtest.h>

#include "support.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Page {
    const char* file;
    unsigned number = 1;
};

const Page kPages[] = {{"text.tif"},     {"text_strips_lsb.tif"}, {"drawing_tiled.tif"}, {"halftone.tif"},
                       {"negative.tif"}, {"blackiszero.tif"},     {"pages.tif", 1},      {"pages.tif", 2},
                       {"pages.tif", 3}, {"pages.tif", 4}};

std::string argument(const Page& page) { return sample(page.file) + " --page " + std::to_string(page.number); }

class EveryPage : public testing::TestWithParam<Page> {
protected:
    const std::string page = argument(GetParam());
    const Raster reference = readTiff(sample(GetParam().file), GetParam().number);
};

INSTANTIATE_TEST_SUITE_P(Samples, EveryPage, testing::ValuesIn(kPages), [](const auto& page) {
    std::string name = page.param.file;
    return name.substr(0, name.find('.')) + "_" + std::to_string(page.param.number);
});

TEST_P(EveryPage, FullSizeIsWhatLibtiffDecodes) { EXPECT_EQ(rendered(page), reference); }

TEST_P(EveryPage, PartIsCutAtAnyPixel) {
    const Raster part = rendered(page + " --rect 101,203,333,321");
    EXPECT_EQ(part, Raster::made(333, 321, [&](auto x, auto y) { return reference.at(x + 101, y + 203); }));
}

TEST_P(EveryPage, EnlargementRepeatsPixels) {
    const Raster part = rendered(page + " --rect 65,130,200,100 --size 400x300");
    EXPECT_EQ(part, Raster::made(400, 300, [&](auto x, auto y) { return reference.at(65 + x / 2, 130 + y / 3); }));
}

TEST_P(EveryPage, TurnsAndMirrors) {
    const Raster& r = reference;
    EXPECT_EQ(rendered(page + " --rotate 90"),
              Raster::made(r.height, r.width, [&](auto x, auto y) { return r.at(r.width - 1 - y, x); }));
    EXPECT_EQ(rendered(page + " --rotate -90 --mirror y"),
              Raster::made(r.height, r.width, [&](auto x, auto y) { return r.at(r.width - 1 - y, r.height - 1 - x); }));
    EXPECT_EQ(rendered(page + " --mirror x"),
              Raster::made(r.width, r.height, [&](auto x, auto y) { return r.at(x, r.height - 1 - y); }));
}

// The same pixels in other strips, tiles, bit orders and polarities give the same pictures.
TEST(Layouts, DoNotShow) {
    for (const std::string how :
         {"--scale 1/9", "--scale 0.3 --mode ink", "--size 500x2000", "--scale 0.2 --background black",
          "--scale 0.2 --mode ink --background black", "--scale 0.2 --background white", "--rotate 12"}) {
        EXPECT_EQ(rendered(sample("text.tif ") + how), rendered(sample("text_strips_lsb.tif ") + how)) << how;
        EXPECT_EQ(rendered(sample("drawing_tiled.tif ") + how), rendered(sample("pages.tif --page 2 ") + how)) << how;
        EXPECT_EQ(rendered(sample("negative.tif ") + how), rendered(sample("pages.tif --page 3 ") + how)) << how;
        EXPECT_EQ(rendered(sample("pages.tif --page 1 ") + how), rendered(sample("blackiszero.tif ") + how)) << how;
    }
}

TEST(Polarity, AForcedGroundChoosesWhatSurvives) {
    const std::string ink = sample("negative.tif --scale 0.25 --mode ink --background ");
    EXPECT_LT(rendered(ink + "black").darkShare(), rendered(ink + "white").darkShare());
    EXPECT_EQ(rendered(ink + "black"), rendered(ink + "auto"));
    EXPECT_GT(rendered(sample("negative.tif --scale 0.25")).darkShare(), 0.6);
    EXPECT_LT(rendered(sample("blackiszero.tif --scale 0.25")).darkShare(), 0.3);
}

TEST(Turning, CornersHaveTheGroundsColour) {
    for (const std::string part : {"--fit 300x300", "--rect 100,100,300,200"}) {
        const std::string turned = sample("drawing_tiled.tif --rotate 30 ") + part + " --background ";
        EXPECT_EQ(rendered(turned + "white").at(0, 0), 255) << part;
        EXPECT_EQ(rendered(turned + "black").at(0, 0), 0) << part;
    }
}

TEST(Formats, HoldTheSamePixels) {
    const Folder folder;
    for (const std::string how : {"--scale 0.25", "--rect 10,20,301,77", "--rect 0,0,64,64 --scale 3"}) {
        const std::string page = sample("halftone.tif ") + how;
        const Raster pixels = rendered(page);
        ASSERT_GT(pixels.width, 0u);
        for (const std::string ending : {"png", "tif", "pgm", "ppm"}) {
            const std::string file = folder / ("picture." + ending);
            ASSERT_EQ(tool("render " + page + " -o " + file).code, 0) << ending;
            EXPECT_EQ(ending == "png"   ? readPng(file)
                      : ending == "tif" ? readTiff(file)
                                        : parsePnm(readFile(file)),
                      pixels)
                << how << " " << ending;
        }
    }
}

TEST(Formats, PicturesComeInToo) {
    const Folder folder;
    const Raster page = readTiff(sample("negative.tif"));
    const std::string grey = folder / "grey.png";
    ASSERT_EQ(tool("render " + sample("negative.tif --scale 0.5 -o ") + grey).code, 0);
    for (const std::string name : {"picture.png", "picture.pbm", "picture.pgm", "picture.ppm"}) {
        const std::string file = folder / name;
        ASSERT_EQ(tool("render " + sample("negative.tif -o ") + file).code, 0);
        EXPECT_EQ(rendered(file), page) << name;
        EXPECT_EQ(rendered(file + " --rect 13,7,400,300 --mirror x"),
                  Raster::made(400, 300, [&](auto x, auto y) { return page.at(x + 13, 306 - y); }))
            << name;
        if (name == "picture.png" || name == "picture.pbm") {
            EXPECT_EQ(rendered(file + " --scale 0.5"), readPng(grey)) << name;
        }
    }
    EXPECT_EQ(rendered(grey), readPng(grey));
}

TEST(Convert, KeepsBlackAndWhiteInEveryKind) {
    const Folder folder;
    const Raster page = readTiff(sample("blackiszero.tif"));
    std::string last = sample("blackiszero.tif");
    for (const std::string kind : {"palette", "rgb", "bilevel", "rgb"}) {
        const std::string file = folder / (kind + ".png");
        ASSERT_EQ(tool("convert " + last + " --to " + kind + " -o " + file).code, 0) << kind;
        EXPECT_EQ(readPng(file), page) << kind;
        last = file;
    }
    EXPECT_EQ(tool("convert " + last + " --to palette -o " + (folder / "refused.png")).code, 3);
}

TEST(Convert, KeepsColours) {
    const Folder folder;
    const std::string red("P6\n2 1\n255\n\xFF\x10\x20\x01\x02\x03", 17);
    writeFile(folder / "in.ppm", red);
    ASSERT_EQ(tool("convert --to rgb -o " + (folder / "out.png ") + (folder / "in.ppm")).code, 0);
    const Outcome back = tool("render --format ppm -o - " + (folder / "out.png"));
    EXPECT_EQ(back.output, red);
}

TEST(Dpi, GivesTheSizeByThePagesResolution) {
    const Folder folder;
    const std::string fax = folder / "fax.tif", plain = folder / "plain.pgm", out = folder / "out.png";
    // 204 by 98 pixels to the inch, as a page of 2 x 1 inches that is shown turned.
    ASSERT_EQ(tool("render " + sample("text.tif --rect 0,0,408,98 -o ") + fax).code, 0);
    ASSERT_EQ(
        std::system(
            ("tiffset -s 282 204 " + fax + " && tiffset -s 283 98 " + fax + " && tiffset -s 274 6 " + fax).c_str()),
        0);
    ASSERT_EQ(tool("render " + fax + " --dpi 50 -o " + out).code, 0);
    EXPECT_EQ(readPng(out).width, 50u);
    EXPECT_EQ(readPng(out).height, 100u);
    ASSERT_EQ(tool("render " + out + " --dpi 25 -o " + (folder / "half.png")).code, 0);
    EXPECT_EQ(readPng(folder / "half.png").height, 50u) << "the picture has the resolution asked for";
    ASSERT_EQ(tool("render " + out + " -o " + plain).code, 0);
    const Outcome none = tool("render " + plain + " --dpi 50 -o " + out);
    EXPECT_EQ(none.code, 1);
    EXPECT_NE(none.errors.find("no resolution"), std::string::npos) << none.errors;
}

TEST(Orientation, OfGreysIsAsOfBlackAndWhite) {
    const Folder folder;
    const std::string bits = folder / "bits.tif", grey = folder / "grey.tif", bytes = folder / "grey.pgm";
    ASSERT_EQ(tool("render " + sample("text.tif --rect 180,300,301,77 -o ") + bits).code, 0);
    ASSERT_EQ(tool("render " + bits + " -o " + bytes).code, 0);
    ASSERT_EQ(tool("render " + bytes + " -o " + grey).code, 0);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        for (const std::string& file : {bits, grey})
            ASSERT_EQ(std::system(("tiffset -s 274 " + std::to_string(orientation) + " " + file).c_str()), 0);
        for (const std::string how : {"", " --rect 5,7,60,40"})
            EXPECT_EQ(rendered(grey + how), rendered(bits + how)) << orientation << how;
    }
}

constexpr std::uint32_t kWidth = 61, kHeight = 47;

unsigned char component(std::uint32_t x, std::uint32_t y, std::uint32_t i) {
    return static_cast<unsigned char>(x * x * (i + 3) + y * 31 * (i + 1) + x * y);
}

/// The mean of what cell (j, k) of w x h covers.
double meanOfCell(std::uint32_t j, std::uint32_t k, std::uint32_t w, std::uint32_t h, std::uint32_t i) {
    const auto overlap = [](double cell, double cells, double at, double positions) {
        const double begin = std::max(cell / cells, at / positions);
        return std::max(0.0, std::min((cell + 1) / cells, (at + 1) / positions) - begin);
    };
    double mean = 0;
    for (std::uint32_t y = 0; y < kHeight; ++y)
        for (std::uint32_t x = 0; x < kWidth; ++x)
            mean += overlap(j, w, x, kWidth) * overlap(k, h, y, kHeight) * component(x, y, i);
    return mean * w * h;
}

TEST(Area, IsTheMeanOfWhatAPixelCovers) {
    const Folder folder;
    const std::pair<std::uint32_t, std::uint32_t> sizes[] = {{20, 13}, {1, 1}, {60, 47}, {90, 11}};
    for (const std::string format : {"ppm", "pgm"}) {
        const std::uint32_t components = format == "ppm" ? 3 : 1;
        std::string bytes = components == 3 ? "P6\n61 47\n255\n" : "P5\n61 47\n255\n";
        for (std::uint32_t p = 0; p < kWidth * kHeight * components; ++p)
            bytes += static_cast<char>(component(p / components % kWidth, p / components / kWidth, p % components));
        writeFile(folder / "in", bytes);
        for (const auto& [w, h] : sizes) {
            const std::string size = std::to_string(w) + "x" + std::to_string(h) + " ";
            const std::string out =
                tool("render --mode area --size " + size + (folder / "in") + " -o - --format " + format).output;
            const std::uint32_t count = w * h * components;
            ASSERT_GT(out.size(), count) << size << format;
            for (std::uint32_t p = 0; p < count; ++p)
                ASSERT_NEAR(static_cast<unsigned char>(out[out.size() - count + p]),
                            meanOfCell(p / components % w, p / components / w, w, h, p % components), 0.501)
                    << size << format << p;
        }
    }
    const std::string page = sample("text.tif --scale 0.1");
    EXPECT_EQ(rendered(page + " --mode area"), rendered(page)) << "black and white has but one mean";
}

}  // namespace
