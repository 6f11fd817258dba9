#include "peer/tiff_pages.h"
#include "readme_example_cpp.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdlib>
#include <filesystem>

using namespace support;
namespace fs = std::filesystem;

namespace {

std::vector<fs::path> samples() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(TILEPRESS_SAMPLES))
        if (entry.path().extension() == ".tif") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// The rectangle's pixels as the page has them, packed anew.
Bytes cutOf(const TiffPage& page, const ImgRect& r) {
    const std::size_t rowBytes = (r.getWidth() + 7) / 8;
    Bytes part(rowBytes * r.getHeight());
    for (std::size_t y = 0; y < r.getHeight(); ++y)
        for (std::size_t x = 0; x < r.getWidth(); ++x) {
            const std::size_t from = r.getLeft() + x;
            if (page.pixels[(r.getTop() + y) * page.rowBytes + from / 8] >> (7 - from % 8) & 1)
                part[y * rowBytes + x / 8] |= static_cast<unsigned char>(0x80 >> x % 8);
        }
    return part;
}

void expectSamePixels(TiffPage& page, CImg1G4& image, const ImgRect& r, const std::string& what) {
    image.setBackgroundColor(0);
    std::unique_ptr<CImg1> result(CImg1::create(r.getWidth(), r.getHeight(), 0xFFFFFF, 0xFF000000, ImgAlignNone));
    CImgErr::sm_errcode = ImgErrNone;
    ASSERT_TRUE(image.uncompress(result.get(), r)) << what;
    EXPECT_EQ(CImgErr::get(), ImgErrNone) << what;
    const Bytes expected = cutOf(page, r);
    ASSERT_EQ(expected.size(), result->getTotalBytes());
    EXPECT_EQ(std::memcmp(result->peekData(), expected.data(), expected.size()), 0) << what;
}

void expectEqualToLibtiff(const std::string& path, std::mt19937& random) {
    std::vector<TiffPage> pages = readTiff(path);
    ASSERT_FALSE(pages.empty()) << path;
    for (TiffPage& page : pages) {
        G4Image image = imageOf(page);
        ASSERT_TRUE(image) << path;
        expectSamePixels(page, *image, image->getRect(), path);
        for (int i = 0; i < 4; ++i) {
            const int left = static_cast<int>(random() % page.width), top = static_cast<int>(random() % page.height);
            const ImgRect r(left, top, left + static_cast<int>(random() % (page.width - left)),
                            top + static_cast<int>(random() % (page.height - top)));
            expectSamePixels(page, *image, r, path + ", a part");
        }
    }
}

}  // namespace

TEST(Samples, ExpandAsLibtiffDecodesThem) {
    std::mt19937 random(11);
    const auto files = samples();
    ASSERT_GE(files.size(), 4u);
    for (const auto& file : files) expectEqualToLibtiff(file.string(), random);
}

TEST(Samples, ExpandAlsoInOtherTilings) {
    std::mt19937 random(12);
    const fs::path copy = fs::temp_directory_path() / ("tilepress-" + std::to_string(getpid()) + ".tif");
    for (const auto& file : samples())
        for (const char* layout : {"-t -w 256 -l 256", "-t -w 48 -l 32", "-s -r 37", "-f lsb2msb -s -r 1000"}) {
            const std::string command =
                std::string("tiffcp -c g4 ") + layout + " '" + file.string() + "' '" + copy.string() + "'";
            ASSERT_EQ(std::system(command.c_str()), 0) << command;
            expectEqualToLibtiff(copy.string(), random);
        }
    fs::remove(copy);
}

// README's example: a dark page stays dark. White is text, a small part of it.
TEST(Samples, TheExampleKeepsADarkPageDark) {
    const std::vector<TiffPage> pages = readTiff(TILEPRESS_SAMPLES "/negative.tif");
    ASSERT_EQ(pages.size(), 1u);
    ASSERT_EQ(pages[0].tiles.size(), 1u);
    const Owned<CImg32> small(tenth(exchanged(pages[0].tiles[0]), pages[0].width, pages[0].height));
    ASSERT_TRUE(small);
    double sum = 0;
    for (const std::uint32_t pixel : pictureOf(small).pixels) sum += pixel & 0xFF;
    EXPECT_LT(sum / (small->getWidth() * small->getHeight()), 50);
}

// Any bytes may have changed on the way: every operation ends, in its buffers, and says so.
TEST(Samples, DamagedPagesEndInAStatus) {
    std::mt19937 random(13);
    int failed = 0, rounds = 0;
    for (const auto& file : samples()) {
        std::vector<TiffPage> pages = readTiff(file.string());
        for (int round = 0; round < 12; ++round, ++rounds) {
            TiffPage page = pages[0];
            for (Bytes& tile : page.tiles)
                for (unsigned n = 1 + random() % 3; n > 0; --n)
                    tile[random() % tile.size()] ^= static_cast<unsigned char>(1 << random() % 8);
            G4Image image = imageOf(page);
            CImgErr::sm_errcode = ImgErrNone;
            ImgScaleAttr attr{round % 2 ? 32u : 1u};
            std::unique_ptr<IImg> small(
                image->scale(image->getRect(), 1 + page.width / 10, 1 + page.height / 10, attr));
            EXPECT_TRUE(small);
            failed += CImgErr::get() == ImgErrDecode;
        }
    }
    EXPECT_GT(failed, rounds / 4) << "damage that is rarely noticed is no test";
}
