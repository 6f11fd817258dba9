#include "peer/tiff_pages.h"
#include "readme_example_cpp.h"
#include "support/pages.h"

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

Page pageOf(const TiffPage& sample, std::uint32_t photometric) {
    std::vector<Bytes> bytes;
    for (const Bytes& tile : sample.tiles) bytes.push_back(exchanged(tile));
    std::vector<tp_coded> tiles;
    for (const Bytes& tile : bytes) tiles.push_back({tile.data(), tile.size()});
    tp_page_info info{};
    info.size = sizeof info;
    info.width = sample.width, info.height = sample.height;
    info.tile_width = sample.tileWidth, info.tile_height = sample.tileHeight;
    info.photometric = photometric;
    tp_page* made = nullptr;
    EXPECT_EQ(tp_page_open(&info, tiles.data(), tiles.size(), &made), TP_OK);
    return Page(made);
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
    tp_view view =
        viewOf(r.getLeft(), r.getTop(), r.getWidth(), r.getHeight(), r.getWidth(), r.getHeight(), TP_GREY, TP_BITS);
    Canvas canvas(view, 0, false);
    EXPECT_EQ(tp_page_render(pageOf(page, TP_WHITE_IS_ZERO).get(), &view, 1, nullptr), TP_OK) << what;
    EXPECT_TRUE(canvas.pixels() == expected) << what;
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

// Any part of every page at any size, coded black as ink and coded white.
TEST(Samples, PagesAreDrawnAsTheClassDrawsThem) {
    std::mt19937 random(14);
    for (const auto& file : samples())
        for (TiffPage& sample : readTiff(file.string())) {
            const G4Image image = imageOf(sample);
            for (std::uint32_t n = 0; n < 24; ++n) {
                const Page page = pageOf(sample, n % 3 == 0);
                if (n % 4 == 3) tp_page_prepare(page.get(), nullptr);
                const ImgRect part = randomRect(random, sample.width, sample.height);
                const ImgULong width = part.getWidth(), height = part.getHeight(), factor = upTo(random, 12);
                const bool free = n % 2 == 0;  // in any size, or as large across as down
                const tp_view view = viewOf(
                    part.getLeft(), part.getTop(), width, height, free ? upTo(random, 2 * width) : width / factor + 1,
                    free ? upTo(random, 2 * height) : height / factor + 1, random() % 3 ? TP_GREY : TP_INK, 0);
                expectAsTheClassDraws(page.get(), *image, view);
                ASSERT_FALSE(HasFailure()) << file << " " << n;
            }
        }
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
