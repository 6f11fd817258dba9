// The page interface beside itself and beside the classes: prepared pages, several views in one walk, the cost of a
// call, and threads.

#include "benches.h"

#include "peers.h"
#include "report.h"
#include "results.h"

#include "tilepress/page.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace bench {
namespace {

using TilePage = std::shared_ptr<tp_page>;

TilePage opened(const Page& page) {
    tp_page_info info{};
    info.size = sizeof info;
    info.width = page.bitmap.width;
    info.height = page.bitmap.height;
    info.tile_width = page.tileWidth;
    info.tile_height = page.tileHeight;
    std::vector<tp_coded> tiles;
    for (const Bytes& tile : page.tiles) tiles.push_back({tile.data(), tile.size()});
    tp_page* made = nullptr;
    tp_page_open(&info, tiles.data(), tiles.size(), &made);
    return TilePage(made, tp_page_release);
}

/// A view and its pixels.
struct Drawn {
    tp_view view{};
    Bytes pixels;

    Drawn(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height, std::uint32_t outWidth,
          std::uint32_t outHeight, std::uint32_t mode)
        : pixels(std::size_t{outWidth} * outHeight) {
        view.size = sizeof view;
        view.left = left;
        view.top = top;
        view.width = width;
        view.height = height;
        view.out_width = outWidth;
        view.out_height = outHeight;
        view.mode = mode;
        view.format = TP_GREY8;
        view.pixels = pixels.data();
        view.stride = static_cast<std::ptrdiff_t>(outWidth);
    }
    Drawn(const Drawn&) = delete;
    Drawn& operator=(const Drawn&) = delete;
    void draw(const TilePage& page) { tp_page_render(page.get(), &view, 1, nullptr); }
};

Pair pairOf(const Page& page, const char* operation, const char* peer) {
    return {operation, page.name, peer, page.pixels(), {}, {}, {}};
}

/// A screen full at full size near the bottom.
void addScreen(const PagePtr& page) {
    const std::uint32_t width = std::min(1200u, page->bitmap.width), height = std::min(800u, page->bitmap.height);
    const std::uint32_t left = (page->bitmap.width - width) / 2, top = page->bitmap.height - height;
    const auto make = [=] { return std::make_shared<Drawn>(left, top, width, height, width, height, TP_GREY); };
    const auto quick = make(), slow = make();
    const TilePage prepared = opened(*page), plain = opened(*page);
    tp_page_prepare(prepared.get(), nullptr);
    Pair pair = pairOf(*page, "screen, prepared", "not prepared");
    pair.ours = [=] { quick->draw(prepared); };
    pair.peer = [=] { slow->draw(plain); };
    pair.same = [=] { return quick->pixels == slow->pixels; };
    addPair(pair);
}

void addPreparing(const PagePtr& page) {
    const TilePage plain = opened(*page);
    Pair pair = pairOf(*page, "prepare", "our decode");
    pair.ours = [page] { tp_page_prepare(opened(*page).get(), nullptr); };
    pair.peer = [plain] { tp_page_verify(plain.get(), nullptr); };
    addPair(pair);
}

/// A thumbnail, a preview and a page at half its size.
void addSeveral(const PagePtr& page) {
    const TilePage tiles = opened(*page);
    const auto make = [&](std::uint32_t factor) {
        const std::uint32_t width = page->bitmap.width, height = page->bitmap.height;
        return std::make_shared<Drawn>(0, 0, width, height, width / factor, height / factor, TP_GREY);
    };
    const auto half = make(2), tenth = make(10), small = make(30);
    const auto one = make(2);
    Pair pair = pairOf(*page, "three views", "the dearest one");
    pair.ours = [=] {
        const tp_view views[] = {half->view, tenth->view, small->view};
        tp_page_render(tiles.get(), views, 3, nullptr);
    };
    pair.peer = [=] { one->draw(tiles); };
    pair.same = [=] { return half->pixels == one->pixels; };
    addPair(pair);
}

/// What a call costs whatever it draws.
void addCall() {
    static const PagePtr page = coded("white A4, 300 dpi", Bitmap(2480, 3508));
    const TilePage tiles = opened(*page);
    const auto drawn = std::make_shared<Drawn>(0, 0, 8, 8, 8, 8, TP_NEAREST);
    const auto image = std::make_shared<CodedTiles>(*page);
    const std::shared_ptr<CImg1G4> classes = image->image();
    classes->setBackgroundColor(0);
    Pair pair{"8 x 8 of a white page", page->name, "the class's part", 64, {}, {}, {}};
    pair.ours = [=] { drawn->draw(tiles); };
    pair.peer = [=] {
        const ImgRect rect(8, 8);
        delete classes->getSubImage(rect);
    };
    addPair(pair);
}

// --- threads ---

double secondsOf(const std::function<void()>& work) {
    double least = 1e9;
    for (int round = 0; round < 7; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        least = std::min(least, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return least;
}

void printHalves(const Page& page, const TilePage& tiles, const char* kind) {
    const std::uint32_t width = page.bitmap.width, height = page.bitmap.height;
    // The halves meet where tiles do, so that no row is decoded twice.
    const std::uint32_t rows = std::max<std::uint32_t>(kind[0] == 'p' ? 512 : page.tileHeight, 1),
                        middle = (height / 2 + rows - 1) / rows * rows;
    if (middle >= height) return;
    const auto both = std::make_shared<Drawn>(0, 0, width, height, width / 4, height / 4, TP_GREY);
    Drawn upper(0, 0, width, middle, width / 4, middle / 4, TP_GREY),
        lower(0, middle, width, height - middle, width / 4, (height - middle) / 4, TP_GREY);
    const double one = secondsOf([&] {
        upper.draw(tiles);
        lower.draw(tiles);
    });
    const double two = secondsOf([&] {
        std::thread other([&] { upper.draw(tiles); });
        lower.draw(tiles);
        other.join();
    });
    std::printf("%-20s %-12s %9.2f ms %9.2f ms %6.2fx\n", page.name.c_str(), kind, one * 1e3, two * 1e3, one / two);
}

}  // namespace

void addPagePairs(const PagePtr& page) {
    const bool whole = !page->tiled && page->tileHeight >= page->bitmap.height;
    const PagePtr strip = whole ? page : coded(page->name + ", one strip", page->bitmap);
    if (page->pixels() > 1 << 22) addPreparing(strip);
    if (page->pixels() > 1e8) addScreen(strip);
    addSeveral(page);
}

void addCallPairs() { addCall(); }

void printThreads(const std::vector<PagePtr>& pages) {
    std::printf(
        "\nTwo halves of a page, a quarter of its size, one after the other and in two threads: elapsed, the "
        "least of seven.\n\n");
    for (const PagePtr& page : pages) {
        const TilePage tiles = opened(*page);
        printHalves(*page, tiles, page->tiled ? "tiles" : "strips");
        const std::uint64_t before = tp_page_memory(tiles.get());
        tp_page_prepare(tiles.get(), nullptr);
        const std::uint64_t more = tp_page_memory(tiles.get()) - before;
        if (more == 0) continue;
        printHalves(*page, tiles, "prepared");
        std::printf("%-20s prepared: %.2f times the coded bytes\n", page->name.c_str(),
                    static_cast<double>(more) / static_cast<double>(page->codedBytes()));
    }
}

}  // namespace bench
