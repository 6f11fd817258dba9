// Views of pages: by definition, as the class interface draws them, and several at once.

#include "support/pages.h"

#include <random>
#include <string>

namespace support {
namespace {

std::string described(const tp_view& v) {
    std::string text;
    for (std::uint32_t n :
         {v.left, v.top, v.width, v.height, v.out_width, v.out_height, v.mode, v.format, v.orientation, v.flags})
        text += std::to_string(n) + " ";
    return text;
}

struct RandomPages {
    std::mt19937 random{20261123};

    std::uint32_t upTo(std::uint32_t n) { return static_cast<std::uint32_t>(1 + random() % n); }
    PageSource page() {
        const std::uint32_t width = upTo(random() % 8 ? 90 : 700), height = upTo(50);
        const std::uint32_t tileWidth = random() % 3 ? upTo(width + 9) : width;
        Picture picture = randomPicture(random, width, height, random() % 5 * 25);
        PageSource source(std::move(picture), tileWidth, upTo(height + 9), random() % 2);
        source.info.fill_order = static_cast<std::uint32_t>(random() % 3);
        if (source.info.fill_order == 2)
            for (Bytes& tile : source.tiles) tile = withBitsReversed(tile);
        source.info.flags = random() % 2 ? TP_BORROW : 0;
        return source;
    }
    tp_view view(const PageSource& page) {
        const std::uint32_t left = static_cast<std::uint32_t>(random() % page.info.width),
                            top = static_cast<std::uint32_t>(random() % page.info.height);
        const std::uint32_t width = upTo(page.info.width - left), height = upTo(page.info.height - top);
        const auto size = [&](std::uint32_t extent) {
            switch (random() % 4) {
            case 0: return extent;
            case 1: return upTo(extent);
            case 2: return extent / upTo(12) + 1;
            default: return extent + upTo(3 * extent);
            }
        };
        tp_view view = viewOf(left, top, width, height, 0, 0, random() % 4, random() % 4);
        view.orientation = static_cast<std::uint32_t>(random() % 9);
        view.out_width = size(view.orientation > 4 ? height : width);
        view.out_height = size(view.orientation > 4 ? width : height);
        view.flags = random() % 3 ? 0 : TP_INVERT;
        if (random() % 2) view.ink = 0xFF102030, view.paper = 0x80F0E0D0;
        return view;
    }
};

TEST(PageRender, EveryViewIsWhatItsDefinitionSays) {
    RandomPages pages;
    for (int n = 0; n < 2000; ++n) {
        const PageSource source = pages.page();
        const Page page = source.open();
        tp_view view = pages.view(source);
        Canvas canvas(view, pages.random() % 5, pages.random() % 4 == 0);
        ASSERT_EQ(tp_page_render(page.get(), &view, 1, nullptr), TP_OK);
        ASSERT_EQ(canvas.pixels(), Model(source, view).pixels()) << n << ": " << described(view);
        ASSERT_TRUE(canvas.isGuarded()) << n << ": " << described(view);
    }
}

TEST(PageRender, GreyAndInkAreThoseOfTheClassInterface) {
    RandomPages pages;
    for (int n = 0; n < 2000; ++n) {
        const PageSource source = pages.page();
        const Page page = source.open();
        tp_view view = pages.view(source);
        view.mode = n % 2 ? TP_INK : TP_GREY;
        const tp_page_info& info = source.info;
        std::vector<Bytes> tiles = tilesOf(source.picture, info.tile_width, info.tile_height);
        expectAsTheClassDraws(page.get(), *makeG4(info.width, info.height, info.tile_width, info.tile_height, tiles),
                              view);
        ASSERT_FALSE(::testing::Test::HasFailure()) << n << ": " << described(view);
    }
}

TEST(PageRender, SeveralViewsInOneWalkAreWhatEachIsAlone) {
    RandomPages pages;
    for (int n = 0; n < 300; ++n) {
        const PageSource source = pages.page();
        const Page page = source.open();
        std::vector<tp_view> views;
        std::vector<Canvas> canvases;
        for (std::size_t k = 0, count = pages.random() % 7; k < count; ++k) {
            views.push_back(pages.view(source));
            canvases.emplace_back(views.back(), 0, false);
        }
        for (std::size_t k = 0; k < views.size(); ++k) views[k].pixels = canvases[k].row(0);
        ASSERT_EQ(tp_page_render(page.get(), views.data(), views.size(), nullptr), TP_OK);
        for (std::size_t k = 0; k < views.size(); ++k)
            ASSERT_EQ(canvases[k].pixels(), Model(source, views[k]).pixels()) << n << ": " << described(views[k]);
    }
}

TEST(PageRender, CellsOfMoreThan32BitsArePainted) {
    // A strip of rows that repeat the first one, half black.
    const std::uint32_t width = 1u << 17, height = 1u << 16;
    const Bytes strip = bits("001" + runText(width / 2, false) + runText(width / 2, true) +
                             std::string(2 * std::size_t{height} - 2, '1'));
    PageSource source(Picture(1, 1), 0, 0);
    source.info.width = width;
    source.info.height = height;
    source.tiles = {strip};
    for (std::uint32_t mode : {TP_COVERAGE, TP_GREY}) {
        tp_view view = viewOf(0, 0, 0, 0, 1, 1, mode, TP_GREY8);
        Canvas canvas(view, 0, false);
        ASSERT_EQ(tp_page_render(source.open().get(), &view, 1, nullptr), TP_OK);
        EXPECT_EQ(canvas.pixels(), Bytes{128}) << mode;
    }
}

}  // namespace
}  // namespace support
