// Pages of few bits, each with a trait of its own, and what all commands say about them.

#include "support.h"

#include <gtest/gtest.h>
#include <tiffio.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <random>

namespace {

/// What every command that decodes ends with, in a word: one digit a command.
std::string judgements(const std::string& file) {
    std::string digits;
    for (const char* command :
         {"verify ", "render -o /dev/null --format pbm ", "render --scale 0.5 -o /dev/null --format pgm ",
          "render --on-error salvage -o /dev/null --format pbm ", "convert --to rgb -o /dev/null --format ppm ",
          "repack -o /dev/null "})
        digits += std::to_string(tool(command + file).code);
    return digits;
}

const std::string kRow = "001 1000 11 1", kEndOfBlock = "000000000001 000000000001 ";  // ...BB... of 8

TEST(Streams, JudgedAlikeByEveryCommand) {
    const Folder folder;
    const struct {
        const char* what;
        std::uint32_t height;
        std::string bits;
        const char* pixels;  ///< of the first rows, as libtiff has them; empty: damaged
    } cases[] = {
        {"plain", 1, kRow + kEndOfBlock, "...BB..."},
        {"two bytes of fill", 1, kRow + kEndOfBlock + std::string(16, '0'), "...BB..."},
        {"more ends of line, filled up", 1, kRow + kEndOfBlock + "0000 " + kEndOfBlock + kEndOfBlock, "...BB..."},
        {"runs of nothing at the start", 1, "001 00110101 0000110111 " + kRow + kEndOfBlock, "...BB..."},
        {"black from the start", 1, "001 00110101 11 1" + kEndOfBlock, "BB......"},
        {"a run of nothing within", 1, "001 1000 0000110111 001 1000 11" + kEndOfBlock, "......BB"},
        {"a row that stays where it is", 2, kRow + "1 1 1" + kEndOfBlock, "...BB..."},
        {"back", 2, kRow + "000010 0000010 1" + kEndOfBlock, ""},
        {"past the end", 1, "001 10011 11" + kEndOfBlock, ""},
        {"no code", 1, "0000001111 " + kRow, ""},
        {"rows left over", 1, kRow + "1 1 1 1 1 1 " + std::string(40, '1') + kEndOfBlock, ""},
        {"rows missing", 3, kRow + kEndOfBlock, ""},
    };
    for (const auto& test : cases) {
        const std::string file = folder / "page.tif";
        writeFile(file, tinyTiff(8, test.height, codes(test.bits)));
        const std::string pixels = test.pixels;
        EXPECT_EQ(judgements(file), pixels.empty() ? "222222" : "000000") << test.what;
        if (pixels.empty()) continue;
        EXPECT_EQ(tool("verify --reference " + file).code, 0) << test.what;
        const Raster drawn = rendered(file);
        for (std::uint32_t x = 0; x < 8 && drawn.width == 8; ++x)
            EXPECT_EQ(drawn.at(x, 0), pixels[x] == 'B' ? 0 : 255) << test.what << x;
    }
}

TEST(Streams, BitsThatFlipAreJudgedAlikeByEveryCommand) {
    const Folder folder;
    const std::string file = readFile(sample("text_strips_lsb.tif")), flipped = folder / "flipped.tif";
    std::mt19937 random(1);
    for (int n = 0; n < 12; ++n) {
        std::string bytes = file;
        const std::size_t at = 1000 + random() % (file.size() - 2000);
        bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8);
        writeFile(flipped, bytes);
        const std::string codes = judgements(flipped);
        EXPECT_TRUE(codes == "222222" || codes == "000000") << at << ": " << codes;
    }
}

TEST(Strips, AreWhiteOnlyWithoutPlaceAndBytes) {
    const Folder folder;
    const std::string name = sample("text_strips_lsb.tif"), file = folder / "page.tif";
    std::string bytes = readFile(name);
    TIFF* const tiff = TIFFOpen(name.c_str(), "r");
    const auto number = [](std::uint64_t value) {
        const auto low = static_cast<std::uint32_t>(value);
        return std::string(reinterpret_cast<const char*>(&low), sizeof low);
    };
    const auto clear = [&](auto get) {
        const std::size_t list = bytes.find(number(get(tiff, 0)) + number(get(tiff, 1)));
        ASSERT_NE(list, std::string::npos);
        bytes.replace(list + 4 * 5, 4, 4, '\0');
    };
    clear(TIFFGetStrileByteCount);
    writeFile(file, bytes);
    EXPECT_EQ(judgements(file), "222222") << "a place without bytes";
    clear(TIFFGetStrileOffset);
    TIFFClose(tiff);
    writeFile(file, bytes);
    EXPECT_EQ(judgements(file), "000000") << "left out";
}

TEST(Tags, OthersThanThePixelsDoNotMatter) {
    const Folder folder;
    const std::string file = folder / "page.tif";
    for (const Tag& odd : {Tag{296, 0}, {274, 0}, {274, 9}, {34665, 0}, {34665, 0xFFFFFFF0}}) {
        writeFile(file, tinyTiff(8, 1, codes(kRow + kEndOfBlock), {odd}));
        EXPECT_EQ(tool("info " + file).code, 0) << odd.number << tool("info " + file).errors;
        EXPECT_EQ(judgements(file), "000000") << odd.number;
    }
    // A second page without anything but a width.
    std::string two = tinyTiff(8, 1, codes(kRow + kEndOfBlock));
    two.replace(two.size() - 4, 1, 1, static_cast<char>(two.size()));
    writeFile(file, two + std::string("\1\0\0\1\4\0\1\0\0\0\x8\0\0\0\0\0\0\0", 18));
    EXPECT_NE(tool("info " + file).errors.find("page 2 cannot be read: "), std::string::npos);
}

TEST(PageList, ThatEndsNowhereIsReportedAndUsedAsFarAsItGoes) {
    const Folder folder;
    const std::string file = folder / "page.tif", out = folder / "out.tif";
    std::string bytes = tinyTiff(8, 1, codes(kRow + kEndOfBlock));
    writeFile(file, bytes.replace(bytes.size() - 4, 4, "\xF0\xFF\xFF\x7F", 4));
    for (const auto& [command, code] : {std::pair("info ", 2),
                                        {"verify ", 2},
                                        {"repack -f -o ", 2},
                                        {"render -f -o ", 0},
                                        {"convert --to bilevel -f -o ", 0}}) {
        const std::string text = command;
        const Outcome run = tool(text + (text.ends_with("-o ") ? out + " " : "") + file);
        EXPECT_EQ(run.code, code) << command;
        EXPECT_NE(run.errors.find("the list of pages is damaged"), std::string::npos) << command << run.errors;
        if (text.ends_with("-o ")) {
            EXPECT_EQ(readTiff(out), readTiff(file)) << command;
        }
    }
}

TEST(Verify, FindsTheDamagedPageBehindOthers) {
    const Folder folder;
    const std::string file = folder / "pages.tif";
    std::string unknown = tinyTiff(8, 1, "x");
    setTag(unknown, 259, 9);
    writeFile(file, unknown);
    for (const std::string& strip : {codes("0000001111 " + kRow), codes(kRow + kEndOfBlock)}) {
        TIFF* const tiff = TIFFOpen(file.c_str(), "a");
        for (const auto& [tag, value] : {std::pair(TIFFTAG_IMAGEWIDTH, 8),
                                         {TIFFTAG_IMAGELENGTH, 1},
                                         {TIFFTAG_COMPRESSION, COMPRESSION_CCITTFAX4},
                                         {TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE}})
            TIFFSetField(tiff, std::uint32_t(tag), value);
        std::string bytes = strip;
        TIFFWriteRawStrip(tiff, 0, bytes.data(), tmsize_t(bytes.size()));
        TIFFClose(tiff);
    }
    const Outcome run = tool("verify --json " + file + " " + sample("text.tif"));
    EXPECT_EQ(run.code, 2);
    const auto files = nlohmann::json::parse(run.output);
    EXPECT_EQ(files[0]["pages"][0]["error"]["code"], 3);
    EXPECT_EQ(files[0]["pages"][1]["damaged"].size(), 1u);
    EXPECT_EQ(files[0]["pages"][2]["damaged"].size(), 0u);
    EXPECT_EQ(files[1]["pages"].size(), 1u);
    EXPECT_EQ(tool("verify " + file + " /no/such/file").code, 2) << "damage is the most serious";
}

/// Every key of what is said about files stands in the schema with its type, and what it requires is there.
void expectValid(const nlohmann::json& value, const nlohmann::json& schema, const nlohmann::json& root) {
    if (schema.contains("$ref")) {
        const std::string reference = schema["$ref"];
        return expectValid(value, root.at(nlohmann::json::json_pointer(reference.substr(1))), root);
    }
    const auto typed = [&](const std::string& type) {
        return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
               (type == "string" && value.is_string()) || (type == "integer" && value.is_number_integer()) ||
               (type == "number" && value.is_number()) || (type == "boolean" && value.is_boolean()) ||
               (type == "null" && value.is_null());
    };
    bool good = false;
    for (const auto& type : schema["type"].is_array() ? schema["type"] : nlohmann::json::array({schema["type"]}))
        good = good || typed(type);
    EXPECT_TRUE(good) << value << " is no " << schema["type"];
    if (value.is_object()) {
        for (const auto& name : schema.value("required", nlohmann::json::array()))
            EXPECT_TRUE(value.contains(name)) << name;
        for (const auto& [name, member] : value.items()) {
            ASSERT_TRUE(schema["properties"].contains(name)) << name;
            expectValid(member, schema["properties"][name], root);
        }
    } else if (value.is_array()) {
        for (const auto& member : value) expectValid(member, schema["items"], root);
    }
}

TEST(Json, HoldsEveryFileAndKeepsToItsSchema) {
    const Folder folder;
    const std::string good = tinyTiff(8, 1, codes(kRow + kEndOfBlock));
    std::string unknown = good;
    setTag(unknown, 259, 9);
    writeFile(folder / "caf\xE9.tif", tinyTiff(8, 1, codes("0000001111 " + kRow)));
    writeFile(folder / "unknown.tif", unknown);
    writeFile(folder / "none.tif", "no picture");
    writeFile(folder / "wide.tif", tinyTiff(0x10000000, 32, ""));
    const std::string files = (folder / "unknown.tif ") + (folder / "none.tif ") + (folder / "wide.tif ") +
                              "/no/such/file " + (folder / "caf\xE9.tif ") + sample("pages.tif");
    const auto schema = nlohmann::json::parse(readFile(TILEPRESS_SCHEMA));
    for (const char* command : {"verify", "info"}) {
        const Outcome run = tool(command + std::string(" --json --max-memory 2G ") + files);
        EXPECT_EQ(run.code, command == std::string("verify") ? 2 : 1) << run.errors;
        const auto list = nlohmann::json::parse(run.output);
        expectValid(list, schema["$defs"][command], schema);
        ASSERT_EQ(list.size(), 6u);
        EXPECT_EQ(list[1]["error"]["code"], 3);
        EXPECT_EQ(list[3]["error"]["code"], 1);
        const std::string escaped = list[4]["fileEscaped"];
        EXPECT_TRUE(escaped.ends_with("caf%E9.tif")) << escaped;
        EXPECT_EQ(list[5]["pages"].size(), 4u);
    }
    const auto list = nlohmann::json::parse(tool("verify --json " + files).output);
    EXPECT_EQ(list[0]["pages"][0]["error"]["code"], 3);
    EXPECT_EQ(list[2]["pages"][0]["error"]["code"], 4);
    EXPECT_EQ(list[4]["pages"][0]["damaged"][0]["row"], 1);
}

// ...BB...
// BBBBBBBB
const std::string kTwoRows = codes(kRow + "001 00110101 000101" + kEndOfBlock);

TEST(Orientation, IsAppliedUnlessToldOtherwise) {
    const Folder folder;
    const std::string file = folder / "page.tif", upright = folder / "upright.tif";
    writeFile(upright, tinyTiff(8, 2, kTwoRows));
    // Columns 1 and 2 are black in the first row only.
    ASSERT_EQ(tool("convert --to bilevel -o " + (folder / "l.tif ") + upright + " -f").code, 0);
    const Raster stored = rendered(upright + " --rect 1,0,4,2");
    ASSERT_EQ(stored.width, 4u);
    const Raster whole = rendered(upright);
    const std::uint32_t right = 7, bottom = 1;
    for (std::uint32_t o = 1; o <= 8; ++o) {
        writeFile(file, tinyTiff(8, 2, kTwoRows, {{274, o}}));
        const auto shown = [&](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t column = o < 5 ? x : y, row = o < 5 ? y : x;
            const bool mirrored = o == 2 || o == 3 || o == 7 || o == 8;
            const bool upsideDown = o == 3 || o == 4 || o == 6 || o == 7;
            return whole.at(mirrored ? right - column : column, upsideDown ? bottom - row : row);
        };
        const Raster wanted = Raster::made(o < 5 ? 8 : 2, o < 5 ? 2 : 8, shown);
        EXPECT_EQ(rendered(file), wanted) << o;
        EXPECT_EQ(rendered(file + " --no-orient"), whole) << o;
        const Outcome run = tool("convert --to bilevel --format pbm -o - " + file);
        EXPECT_EQ(parsePnm(run.output), wanted) << o;
        const std::string part = o < 5 ? " --rect 1,0,4,2" : " --rect 0,1,2,4";
        EXPECT_EQ(rendered(file + part),
                  Raster::made(o < 5 ? 4 : 2, o < 5 ? 2 : 4,
                               [&](auto x, auto y) { return o < 5 ? shown(x + 1, y) : shown(x, y + 1); }))
            << o;
    }
}

TEST(Square, TheLowerResolutionGrows) {
    const Folder folder;
    const std::string fax = folder / "fax.tif", turned = folder / "turned.tif";
    writeFile(fax, tinyTiff(8, 2, kTwoRows, {{282, 200}, {283, 100}}));
    writeFile(turned, tinyTiff(8, 2, kTwoRows, {{282, 200}, {283, 100}, {274, 6}}));
    const auto size = [](const Raster& raster) { return std::pair(raster.width, raster.height); };
    EXPECT_EQ(size(rendered(fax)), std::pair(8u, 2u));
    EXPECT_EQ(size(rendered(fax + " --square")), std::pair(8u, 4u));
    EXPECT_EQ(size(rendered(turned + " --square")), std::pair(4u, 8u));
    EXPECT_EQ(size(rendered(fax + " --square --scale 2")), std::pair(16u, 8u));
    ASSERT_EQ(tool("convert --square --to rgb -o " + (folder / "x.tif ") + fax).code, 0);
    const auto page = nlohmann::json::parse(tool("info --json " + (folder / "x.tif")).output)[0]["pages"][0];
    EXPECT_EQ(page["height"], 4);
    EXPECT_EQ(page["dpi"], (nlohmann::json{200, 200}));
}

TEST(Usage, SaysWhatWasMeant) {
    const std::string file = sample("text.tif");
    EXPECT_NE(tool("rendr " + file).errors.find("did you mean 'render'"), std::string::npos);
    EXPECT_EQ(tool("rendr").code, 1);
    EXPECT_NE(tool("info --page 0 " + file).errors.find("numbered from 1"), std::string::npos);
    EXPECT_EQ(tool("-V").output, tool("--version").output);
    EXPECT_EQ(tool("help").output, tool("--help").output);
    EXPECT_EQ(tool("help verify").output, tool("verify --help").output);
    EXPECT_EQ(tool("help verfy").code, 1);
}

#ifndef __SANITIZE_ADDRESS__  // whose own needs no limit allows
TEST(Limits, MemoryWithinLibtiff) {
    const Folder folder;
    const std::string file = folder / "page.tif";
    constexpr std::uint32_t strips = 12'000'000;
    // Two lists of places, each as long as the page is high, in a file that is mostly a hole.
    std::string bytes = tinyTiff(8, strips, "", {{273, 4096}, {278, 1}, {279, 4096}});
    for (const char* tag : {"\x11\x01\x04", "\x17\x01\x04"}) {
        const std::size_t entry = bytes.find(std::string(tag, 3));
        for (int i = 0; i < 4; ++i) bytes[entry + 4 + std::size_t(i)] = static_cast<char>(strips >> 8 * i);
    }
    writeFile(file, bytes);
    ASSERT_EQ(truncate(file.c_str(), 4096 + 4 * off_t{strips}), 0);
    const Outcome run = tool("info --max-memory 150M " + file);
    EXPECT_EQ(run.code, 4) << run.errors;
}
#endif

}  // namespace
