// One page under many threads: each draws its part, and the parts are those of one thread.

#include "support/pages.h"

#include <random>
#include <thread>

namespace support {
namespace {

PageSource drawing(std::uint32_t tileWidth, std::uint32_t tileHeight) {
    std::mt19937 random(5);
    Picture picture = randomPicture(random, 1500, 900, 8);
    for (std::uint32_t y = 0; y < 900; ++y)
        if (y % 30 > 6)
            for (std::uint32_t x = 0; x < 1500; ++x) picture.at(x, y) = x % 400 < 3;
    return PageSource(std::move(picture), tileWidth, tileHeight);
}

/// Bands of the page at a third of its size, in as many threads.
Bytes inBands(tp_page* page, std::uint32_t threads, bool prepares) {
    const std::uint32_t width = 500, height = 300;
    Bytes pixels(std::size_t{width} * height);
    std::vector<std::thread> workers;
    std::vector<tp_status> statuses(threads, TP_E_ARGUMENT);
    for (std::uint32_t k = 0; k < threads; ++k)
        workers.emplace_back([&, k] {
            tp_page* const own = tp_page_retain(page);
            const std::uint32_t top = height * k / threads, bottom = height * (k + 1) / threads;
            tp_view view = viewOf(0, 3 * top, 1500, 3 * (bottom - top), width, bottom - top, TP_GREY, TP_GREY8);
            view.pixels = &pixels[std::size_t{top} * width];
            view.stride = width;
            if (prepares && k % 2 == 0) tp_page_prepare(own, nullptr);
            statuses[k] = tp_page_render(own, &view, 1, nullptr);
            if (statuses[k] == TP_OK) statuses[k] = tp_page_verify(own, nullptr);
            tp_page_release(own);
        });
    for (std::thread& worker : workers) worker.join();
    for (tp_status status : statuses) EXPECT_EQ(status, TP_OK);
    return pixels;
}

TEST(PageThreads, BandsAreTheSameWhoeverDrawsThem) {
    for (std::uint32_t tileHeight : {900u, 100u, 64u}) {
        const PageSource source = drawing(tileHeight == 64 ? 128 : 1500, tileHeight);
        const Page page = source.open();
        const Bytes expected = inBands(page.get(), 1, false);
        const std::uint64_t memory = tp_page_memory(page.get());
        for (std::uint32_t threads : {2u, 4u, 8u})
            EXPECT_EQ(inBands(page.get(), threads, threads == 8), expected) << tileHeight << " " << threads;
        EXPECT_EQ(tp_page_memory(page.get()) > memory, tileHeight == 900) << "only the strip is laid out anew";
    }
}

}  // namespace
}  // namespace support
