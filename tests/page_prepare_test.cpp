// Pages laid out anew: the same pictures, the same reports, no more memory than promised.

#include "support/pages.h"

#include <random>

namespace support {
namespace {

/// Large enough to be laid out anew, and drawn like a plan: long lines and small marks.
PageSource plan(std::uint32_t width, std::uint32_t height, std::uint32_t tileWidth, std::uint32_t tileHeight,
                std::uint32_t photometric) {
    std::mt19937 random(width);
    Picture picture(width, height);
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x) picture.at(x, y) = y % 100 == 0 || x % 170 == 37;
    for (int mark = 0; mark < 700; ++mark) {
        const std::size_t left = random() % (width - 20), top = random() % (height - 20);
        for (std::size_t y = top; y < top + 12; ++y)
            for (std::size_t x = left; x <= left + y % 16; ++x) picture.at(x, y) = 1;
    }
    if (photometric) picture = complement(picture);
    return PageSource(std::move(picture), tileWidth, tileHeight, photometric);
}

Bytes drawn(const tp_page* page, tp_view view) {
    Canvas canvas(view, 0, false);
    EXPECT_EQ(tp_page_render(page, &view, 1, nullptr), TP_OK);
    return canvas.pixels();
}

TEST(PagePrepare, PicturesAndChangesStayAndMemoryIsBounded) {
    for (std::uint32_t photometric : {0u, 1u})
        for (std::uint32_t tileWidth : {0u, 1500u}) {
            const PageSource source = plan(1600, 1100, tileWidth, tileWidth ? 1000 : 1100, photometric);
            const Page page = source.open();
            std::vector<tp_view> views{viewOf(0, 0, 1600, 1100, 160, 110, TP_GREY, TP_GREY8),
                                       viewOf(500, 480, 700, 100, 700, 100, TP_NEAREST, TP_BITS),
                                       viewOf(1400, 1000, 200, 100, 50, 170, TP_INK, TP_BITS),
                                       viewOf(0, 1099, 1600, 1, 1600, 2, TP_COVERAGE, TP_RGBA)};
            std::vector<Bytes> before;
            for (const tp_view& view : views) before.push_back(drawn(page.get(), view));
            const std::uint64_t memory = tp_page_memory(page.get());
            std::size_t coded = 0;
            for (const Bytes& tile : source.tiles) coded += tile.size();

            ASSERT_EQ(tp_page_prepare(page.get(), nullptr), TP_OK);
            EXPECT_GT(tp_page_memory(page.get()), memory);
            EXPECT_LE(tp_page_memory(page.get()) - memory, coded + coded / 2);
            for (std::size_t k = 0; k < views.size(); ++k) EXPECT_EQ(drawn(page.get(), views[k]), before[k]) << k;

            tp_reader* reader = nullptr;
            ASSERT_EQ(tp_reader_open(page.get(), 300, 700, 1000, 2, nullptr, &reader), TP_OK);
            for (std::uint32_t y : {700u, 701u}) {
                const std::uint32_t* changes = nullptr;
                std::uint32_t count = 0;
                ASSERT_EQ(tp_reader_next(reader, &changes, &count), TP_OK);
                Picture row(1000, 1);
                for (std::uint32_t k = 0; k < count; ++k)
                    for (std::size_t x = changes[k]; x < row.width; ++x) row.at(x, 0) = k % 2 == 0;
                EXPECT_EQ(row, cut(source.picture, ImgRect(300, static_cast<int>(y), 1299, static_cast<int>(y))));
            }
            tp_reader_close(reader);
        }
}

TEST(PagePrepare, WhatGainsNothingGetsNothing) {
    const PageSource tiles = plan(1600, 1100, 512, 512, 0);
    PageSource white(Picture(16000, 1100), 16000, 1100);
    white.tiles[0] = bits(std::string(1100, '1'));
    for (const PageSource* source : {&tiles, static_cast<const PageSource*>(&white)}) {
        const Page page = source->open();
        const std::uint64_t memory = tp_page_memory(page.get());
        EXPECT_EQ(tp_page_prepare(page.get(), nullptr), TP_OK);
        EXPECT_EQ(tp_page_memory(page.get()), memory);
    }
}

TEST(PagePrepare, DamagedPagesAndThoseOfRefusingCallersStayAsTheyAre) {
    PageSource source = plan(1600, 1100, 0, 0, 0);
    Bytes& strip = source.tiles[0];
    tp_damage damage{};
    tp_options options{};
    options.size = sizeof options;
    options.limits.max_bytes = 1000;
    Page page = source.open();
    EXPECT_EQ(tp_page_prepare(page.get(), &options), TP_E_LIMIT);
    options.limits.max_bytes = 0;
    options.progress = [](void*, std::uint64_t done, std::uint64_t total) { return std::int32_t{2 * done > total}; };
    const std::uint64_t memory = tp_page_memory(page.get());
    EXPECT_EQ(tp_page_prepare(page.get(), &options), TP_E_CANCELLED);
    EXPECT_EQ(tp_page_memory(page.get()), memory);

    options.progress = nullptr;
    options.damage = &damage;
    options.damage_capacity = 1;
    strip.resize(strip.size() / 2);
    page = source.open();
    EXPECT_EQ(tp_page_prepare(page.get(), &options), TP_DAMAGED);
    EXPECT_EQ(damage.kind, std::uint32_t{TP_OUT_OF_DATA});
    const tp_damage first = damage;
    EXPECT_EQ(tp_page_verify(page.get(), &options), TP_DAMAGED);
    EXPECT_EQ(damage.row, first.row);
    EXPECT_EQ(options.damage_count, 1u);
}

}  // namespace
}  // namespace support
