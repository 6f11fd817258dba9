// The page interface beside itself and beside the classes: prepared pages, several views in one walk, the cost of a
// call, and threads.

#include "benches.h"

#include "goals.h"
#include "peers.h"
#include "report.h"
#include "results.h"

#include "tilepress/page.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

namespace bench {
namespace {

using TilePage = std::shared_ptr<tp_page>;

TilePage opened(const Bitmap& bitmap, std::uint32_t tileWidth, std::uint32_t tileHeight,
                const std::vector<Bytes>& coded) {
    tp_page_info info{};
    info.size = sizeof info;
    info.width = bitmap.width;
    info.height = bitmap.height;
    info.tile_width = tileWidth;
    info.tile_height = tileHeight;
    std::vector<tp_coded> tiles;
    for (const Bytes& tile : coded) tiles.push_back({tile.data(), tile.size()});
    tp_page* made = nullptr;
    tp_page_open(&info, tiles.data(), tiles.size(), &made);
    return TilePage(made, tp_page_release);
}
TilePage opened(const Page& page) { return opened(page.bitmap, page.tileWidth, page.tileHeight, page.tiles); }

/// The page in other tiles.
TilePage cut(const Bitmap& bitmap, std::uint32_t tileWidth, std::uint32_t tileHeight) {
    std::vector<Bytes> tiles;
    tp_encoder* encoder = nullptr;
    tp_encoder_open(tileWidth, 1, nullptr, &encoder);
    for (std::uint32_t top = 0; top < bitmap.height; top += tileHeight)
        for (std::uint32_t left = 0; left < bitmap.width; left += tileWidth) {
            Bitmap tile(tileWidth, tileHeight);
            for (std::uint32_t y = top; y < std::min(bitmap.height, top + tileHeight); ++y)
                std::memcpy(tile.row(y - top), bitmap.row(y) + left / 8,
                            std::min(tile.rowBytes(), bitmap.rowBytes() - left / 8));
            const bool strip = tileWidth == bitmap.width;
            tp_encoder_add_bits(encoder, tile.bits.data(), static_cast<std::ptrdiff_t>(tile.rowBytes()),
                                strip ? std::min(tileHeight, bitmap.height - top) : tileHeight);
            const void* data = nullptr;
            std::size_t size = 0;
            tp_encoder_finish(encoder, &data, &size);
            const auto* const bytes = static_cast<const unsigned char*>(data);
            tiles.emplace_back(bytes, bytes + size);
        }
    tp_encoder_close(encoder);
    return opened(bitmap, tileWidth, tileHeight, tiles);
}

/// A grey view, and its pixels.
struct Drawn {
    Bytes pixels;
    tp_view view;

    Drawn(std::uint32_t left, std::uint32_t top, std::uint32_t width, std::uint32_t height, std::uint32_t outWidth,
          std::uint32_t outHeight, std::uint32_t mode)
        : pixels(std::size_t{outWidth} * outHeight),
          view{sizeof view, left,      top,  width,         height,
               outWidth,    outHeight, mode, TP_GREY8,      0,
               0,           0,         0,    pixels.data(), static_cast<std::ptrdiff_t>(outWidth)} {}
    Drawn(const Drawn&) = delete;
    Drawn& operator=(const Drawn&) = delete;
    void draw(const TilePage& page) { tp_page_render(page.get(), &view, 1, nullptr); }
};

Pair pairOf(const Page& page, const char* operation, const char* peer) {
    return {operation, page.name, peer, page.pixels(), {}, {}, {}};
}

/// A screen full at full size near the bottom.
std::shared_ptr<Drawn> screenOf(const Page& page) {
    const std::uint32_t width = std::min(1200u, page.bitmap.width), height = std::min(800u, page.bitmap.height);
    return std::make_shared<Drawn>((page.bitmap.width - width) / 2, page.bitmap.height - height, width, height, width,
                                   height, TP_GREY);
}

void addScreen(const PagePtr& page) {
    const auto quick = screenOf(*page), slow = screenOf(*page);
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

/// A quarter of the page in bands that end where tile rows do.
class Bands {
public:
    Bands(const Bitmap& bitmap, std::uint32_t tileHeight)
        : width_(bitmap.width / 4 * 4), height_(bitmap.height / 4 * 4),
          rows_((bitmap.height / kBands / tileHeight + 1) * tileHeight),
          whole_(0, 0, width_, height_, width_ / 4, height_ / 4, TP_GREY), pixels_(whole_.pixels.size()) {}

    void drawWhole(const TilePage& page) { whole_.draw(page); }
    /// Draws bands until there are none left; the other threads draw the others.
    void drawSome(const TilePage& page) {
        for (std::uint32_t top; (top = next_.fetch_add(rows_)) < height_;) {
            tp_view band = whole_.view;
            band.top = top;
            band.height = std::min(rows_, height_ - top);
            band.out_height = band.height / 4;
            band.pixels = pixels_.data() + std::size_t{top / 4} * band.out_width;
            tp_page_render(page.get(), &band, 1, nullptr);
        }
    }
    void draw(const TilePage& page, bool inTwo) {
        next_ = 0;
        if (!inTwo) return drawSome(page);
        std::thread other([&] { drawSome(page); });
        drawSome(page);
        other.join();
    }
    bool same() const { return pixels_ == whole_.pixels; }

private:
    static constexpr std::uint32_t kBands = 24;

    const std::uint32_t width_, height_, rows_;
    Drawn whole_;
    Bytes pixels_;
    std::atomic<std::uint32_t> next_{0};
};

bool printTwo(const Page& page, const TilePage& tiles, std::uint32_t tileHeight, const char* kind) {
    Bands bands(page.bitmap, tileHeight);
    const double whole = secondsOf([&] { bands.drawWhole(tiles); }), one = secondsOf([&] { bands.draw(tiles, false); }),
                 two = secondsOf([&] { bands.draw(tiles, true); });
    std::printf("%-20s %-22s %9.2f %9.2f %9.2f %6.2fx%s\n", page.name.c_str(), kind, whole * 1e3, one * 1e3, two * 1e3,
                one / two, bands.same() ? "" : " [RESULTS DIFFER]");
    std::fflush(stdout);
    return bands.same();
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

bool printThreads(const std::vector<PagePtr>& pages) {
    std::printf(
        "\nA quarter of the page: milliseconds of one call, of its bands in one thread, and of the same in two "
        "threads;\nelapsed, the least of seven. In one thread they are to take %.1f times as long.\n\n",
        kTwoThreads);
    bool same = true;
    for (const PagePtr& page : pages) {
        const Bitmap& bitmap = page->bitmap;
        if (page->pixels() < 1 << 22) continue;  // starting a thread would count
        same = printTwo(*page, cut(bitmap, bitmap.width, 128), 128, "strips of 128 rows") && same;
        same = printTwo(*page, cut(bitmap, 512, 512), 512, "tiles of 512") && same;
        const TilePage strip = cut(bitmap, bitmap.width, bitmap.height);
        const std::uint64_t before = tp_page_memory(strip.get());
        tp_page_prepare(strip.get(), nullptr);
        same = printTwo(*page, strip, 512, "one strip, prepared") && same;
        std::printf("%-20s prepared: %.2f times the coded bytes (at most %.1f)\n", page->name.c_str(),
                    static_cast<double>(tp_page_memory(strip.get()) - before) / static_cast<double>(before),
                    kPreparedMemory);
    }
    return same;
}

void printPageMemory(const std::vector<PagePtr>& pages) {
    std::printf(
        "\nThe same through the page interface, of whose pages each is one strip that is open already, and of "
        "whose pictures\nthe pixels are there: what a call takes for itself, in KB.\n");
    std::printf("%-17s %13s %8s %8s %8s %8s %9s\n", "page", "pixels", "coded", "screen", "tenth", "prepare",
                "screen then");
    for (const PagePtr& page : pages) {
        const Bitmap& bitmap = page->bitmap;
        const TilePage plain = cut(bitmap, bitmap.width, bitmap.height),
                       prepared = cut(bitmap, bitmap.width, bitmap.height);
        const auto screen = screenOf(*page);
        Drawn tenth(0, 0, bitmap.width, bitmap.height, bitmap.width / 10, bitmap.height / 10, TP_GREY);
        const long view = growth([&] { screen->draw(plain); }), all = growth([&] { tenth.draw(plain); }),
                   preparing = growth([&] { tp_page_prepare(prepared.get(), nullptr); });
        tp_page_prepare(prepared.get(), nullptr);
        const long after = growth([&] { screen->draw(prepared); });
        std::printf("%-17s %5u x %-5u %8ld %8ld %8ld %8ld %9ld\n", page->name.c_str(), bitmap.width, bitmap.height,
                    static_cast<long>(tp_page_memory(plain.get()) / 1024), view, all, preparing, after);
    }
}

}  // namespace bench
