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
    return files;
}

Page pageOf(const TiffPage& sample, std::uint32_t photometric) {
    PageSource source(Picture(1, 1), 0, 0, photometric);
    source.info.width = sample.width, source.info.height = sample.height;
    source.info.tile_width = sample.tileWidth, source.info.tile_height = sample.tileHeight;
    source.tiles.clear();
    for (const Bytes& tile : sample.tiles) source.tiles.push_back(exchanged(tile));
    return source.open();
}

void expectEqualToLibtiff(const std::string& path, std::mt19937& random) {
    std::vector<TiffPage> pages = readTiff(path);
    ASSERT_FALSE(pages.empty()) << path;
    for (TiffPage& page : pages) {
        const G4Image image = imageOf(page);
        ASSERT_TRUE(image) << path;
        image->setBackgroundColor(0);
        for (int i = 0; i < 5; ++i) {
            const ImgRect r = i ? randomRect(random, page.width, page.height) : image->getRect();
            const ImgULong w = r.getWidth(), h = r.getHeight();
            const auto result = blank<CImg1>(w, h);
            CImgErr::sm_errcode = ImgErrNone;
            ASSERT_TRUE(image->uncompress(result.get(), r)) << path;
            EXPECT_EQ(CImgErr::get(), ImgErrNone) << path;
            ASSERT_TRUE(pictureOf(result) == cut(page.picture, r)) << path << " from " << r.getLeft();
            tp_view view = viewOf(r.getLeft(), r.getTop(), w, h, w, h, TP_GREY, TP_BITS);
            Canvas canvas(view, 0, false);
            EXPECT_EQ(tp_page_render(pageOf(page, TP_WHITE_IS_ZERO).get(), &view, 1, nullptr), TP_OK) << path;
            EXPECT_TRUE(canvas.pixels() == bytesOf(*result)) << path << " from " << r.getLeft();
        }
    }
}

}  // namespace

TEST(Samples, ExpandAsLibtiffDecodesThemAlsoInOtherTilings) {
    std::mt19937 random(12);
    const fs::path copy = fs::temp_directory_path() / ("tilepress-" + std::to_string(getpid()) + ".tif");
    EXPECT_GE(samples().size(), 4u);
    for (const auto& file : samples()) {
        expectEqualToLibtiff(file, random);
        for (const char* layout : {"-t -w 256 -l 256", "-t -w 48 -l 32", "-s -r 37", "-f lsb2msb -s -r 1000"}) {
            const std::string command =
                std::string("tiffcp -c g4 ") + layout + " '" + file.string() + "' '" + copy.string() + "'";
            ASSERT_EQ(std::system(command.c_str()), 0) << command;
            expectEqualToLibtiff(copy, random);
        }
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
