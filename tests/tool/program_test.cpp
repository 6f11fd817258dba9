// What the tool says, and what it ends with.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support.h"

namespace {

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(Info, TellsWhatThePagesAre) {
    const Outcome run = tool("info --json " + sample("pages.tif"));
    ASSERT_EQ(run.code, 0);
    const auto pages = nlohmann::json::parse(run.output)[0]["pages"];
    ASSERT_EQ(pages.size(), 4u);
    EXPECT_EQ(pages[0]["layout"], "strips");
    EXPECT_EQ(pages[0]["tileHeight"], 64);
    EXPECT_EQ(pages[1]["layout"], "tiles");
    EXPECT_EQ(pages[1]["tileWidth"], 128);
    EXPECT_EQ(pages[1]["tiles"], 70);
    EXPECT_EQ(pages[2]["fillOrder"], 2);
    EXPECT_EQ(pages[3]["photometric"], 1);
    EXPECT_EQ(pages[3]["dpi"][0], 100);
    for (const auto& page : pages) EXPECT_TRUE(page["supported"]);
    EXPECT_TRUE(contains(tool("info --page 3 " + sample("pages.tif")).output, "828 x 583 pixels, 200 x 200 dpi"));
}

TEST(Damage, IsNamedAndTheRestIsDrawn) {
    const Folder folder;
    const std::string damaged = folder / "damaged.tif", picture = folder / "picture.pbm";
    const Raster whole = readTiff(sample("text.tif"));
    for (const bool truncated : {false, true}) {
        std::string file = readFile(sample("text.tif"));
        if (truncated) file.resize(file.size() / 2);
        else file.replace(12000, 8, 8, '\0');
        writeFile(damaged, file);
        EXPECT_EQ(tool("info " + damaged).code, 0) << "nothing is decoded";
        const Outcome run = tool("render -f " + damaged + " -o " + picture);
        EXPECT_EQ(run.code, 2);
        const std::string before = "strip 1 of 1, row ";
        ASSERT_TRUE(contains(run.errors, before)) << run.errors;
        const int row = std::stoi(run.errors.substr(run.errors.find(before) + before.size()));
        const Raster drawn = parsePnm(readFile(picture));
        ASSERT_EQ(drawn.height, whole.height);
        ASSERT_GT(row, 300);
        ASSERT_LT(row, 1500);
        // A wrong code may decode to wrong rows before it fails.
        EXPECT_TRUE(std::equal(drawn.grey.begin(), drawn.grey.begin() + whole.width * (row - 30), whole.grey.begin()));
        const auto rest = drawn.grey.begin() + whole.width * row;
        EXPECT_TRUE(std::all_of(rest, drawn.grey.end(), [](int g) { return g == 255; }));
    }
}

TEST(Codes, UsageAndFiles) {
    const Folder folder;
    const std::string out = " -o " + (folder / "x.png ");
    for (const std::string& wrong :
         {std::string(), std::string("draw"), std::string("render"), "render " + sample("text.tif"),
          std::string("info /no/such/file"), "render /no/such/file" + out,
          "render " + sample("text.tif") + " -o /no/such/folder/x.png", "render " + sample("text.tif --page 2") + out,
          "render " + sample("text.tif --rect 1600,0,100,10") + out,
          "render " + sample("text.tif --rect 0,0,0,10") + out, "render " + sample("text.tif --scale 0") + out,
          "render " + sample("text.tif --scale 0.5 --size 1x1") + out,
          "render " + sample("text.tif --scale 0.5 --mode copy") + out, "render " + sample("text.tif -o x.gif"),
          "render " + sample("text.tif --scale 0.5 -o ") + (folder / "x.pbm")}) {
        const Outcome run = tool(wrong);
        EXPECT_EQ(run.code, 1) << wrong;
        EXPECT_FALSE(run.errors.empty()) << wrong;
    }
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(tool("--help").code, 0);
    EXPECT_EQ(tool("render --help").code, 0);
}

TEST(Codes, UnsupportedFiles) {
    const Folder folder;
    std::string file = readFile(sample("text.tif"));
    setTag(file, 259, 9999);
    writeFile(folder / "odd.tif", file);
    const Outcome run = tool("render -o " + (folder / "x.png ") + (folder / "odd.tif"));
    EXPECT_EQ(run.code, 3);
    EXPECT_TRUE(contains(run.errors, "9999")) << run.errors;
    writeFile(folder / "text.txt", "no picture at all");
    EXPECT_EQ(tool("render -o " + (folder / "x.png ") + (folder / "text.txt")).code, 3);
    EXPECT_EQ(tool("info " + (folder / "text.txt")).code, 3);
    EXPECT_EQ(tool("info " + (folder / "odd.tif")).code, 0);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"odd.tif", "text.txt"}));
}

TEST(Codes, Limits) {
    const Folder folder;
    const std::string out = " -o " + (folder / "x.png ");
    EXPECT_EQ(tool("render --max-pixels 1000000" + out + sample("text.tif")).code, 4);
    EXPECT_EQ(tool("render --max-pixels 1000000 --scale 0.1" + out + sample("text.tif")).code, 0);
    EXPECT_EQ(tool("render --scale 1000" + out + sample("text.tif")).code, 4);
    EXPECT_EQ(tool("render --max-input-pixels 1000 --scale 0.1" + out + sample("text.tif")).code, 4);
}

// Headers that promise more than there is: an end with a code, not a crash, and without gigabytes.
TEST(Codes, HostileHeaders) {
    const Folder folder;
    const std::string hostile = folder / "hostile.tif", out = " -o " + (folder / "x.png ");
    const std::string tiled = readFile(sample("drawing_tiled.tif")), strip = readFile(sample("text.tif"));
    const struct {
        const std::string& file;
        unsigned tag;
        std::uint32_t value;
        int code;
    } cases[] = {
        {strip, 256, 0xFFFFFFFF, 4}, {strip, 257, 0xFFFFFFFF, 3}, {strip, 256, 0, 3},
        {strip, 273, 0xFFFFFFF0, 2}, {strip, 279, 0xFFFFFFF0, 0}, {strip, 278, 1, 2},
        {tiled, 256, 0xFFFFFFFF, 3}, {tiled, 322, 16, 3},         {tiled, 322, 0, 3},
    };
    for (const auto& test : cases) {
        std::string file = test.file;
        setTag(file, test.tag, test.value);
        writeFile(hostile, file);
        const Outcome run = tool("render --stats --fit 100x100" + out + hostile);
        EXPECT_EQ(run.code, test.code) << test.tag << " " << test.value << ": " << run.errors;
        EXPECT_LE(tool("info " + hostile).code, 3);
    }
}

TEST(Codes, TilesWithoutDataAreMentioned) {
    const Folder folder;
    std::string file = readFile(sample("text.tif"));
    setTag(file, 278, 1000);
    writeFile(folder / "sparse.tif", file);
    const Outcome run = tool("render -o " + (folder / "x.png ") + (folder / "sparse.tif"));
    EXPECT_EQ(run.code, 2) << "the first strip has rows for all three";
    EXPECT_TRUE(contains(run.errors, "2 of 3 strips have no data")) << run.errors;
}

TEST(Streams, StandardInputAndOutput) {
    const Folder folder;
    const std::string file = folder / "x.png";
    ASSERT_EQ(tool("render " + sample("text.tif --scale 0.1 -o ") + file).code, 0);
    EXPECT_TRUE(tool("render --scale 0.1 - -o - <" + sample("text.tif")).output == readFile(file));
    ASSERT_EQ(tool("render " + sample("text.tif -o ") + (folder / "x.tif")).code, 0);
    EXPECT_TRUE(tool("render - -o - --format tif <" + sample("text.tif")).output == readFile(folder / "x.tif"));
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"x.png", "x.tif"}));
}

TEST(Streams, QuietUnlessAsked) {
    const Folder folder;
    const std::string arguments = "render " + sample("pages.tif --page 2 --scale 0.1 -o ") + (folder / "x.png");
    const Outcome quiet = tool(arguments);
    EXPECT_EQ(quiet.output + quiet.errors, "");
    const Outcome run = tool(arguments + " --stats");
    const auto page = nlohmann::json::parse(tool("info --json --page 2 " + sample("pages.tif")).output)[0]["pages"][0];
    EXPECT_TRUE(contains(run.errors, page["compressedBytes"].dump() + " bytes compressed")) << run.errors;
    EXPECT_TRUE(contains(run.errors, "135625 bytes expanded")) << run.errors;
    EXPECT_TRUE(contains(run.errors, "124 x 88 pixels")) << run.errors;
}

}  // namespace
