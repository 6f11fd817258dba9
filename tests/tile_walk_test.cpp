#include "page/tile_walk.h"

#include "ccitt/coded_bytes.h"
#include "kernels/bit_rows.h"
#include "support/coded.h"
#include "support/g4_images.h"

#include <gtest/gtest.h>

using namespace support;
using namespace tilepress::g4;

namespace {

/// Tiles of a picture in one of the orders that a walk takes.
struct Tiles {
    TileLayout layout;
    std::vector<Bytes> bytes;
    CodeOrder order;

    Tiles(const Picture& picture, std::uint32_t tileWidth, std::uint32_t tileHeight, CodeOrder how)
        : layout{static_cast<std::uint32_t>(picture.width), static_cast<std::uint32_t>(picture.height), tileWidth,
                 tileHeight},
          bytes(tilesOf(picture, tileWidth, tileHeight)), order(how) {
        for (Bytes& tile : bytes) arrange(tile);
    }
    void arrange(Bytes& tile) const {
        if (order != CodeOrder::pairsExchanged) tile = exchanged(tile);
        if (order == CodeOrder::lowBitFirst) tilepress::reverseBitsInBytes(tile.data(), tile.size());
        if (order == CodeOrder::ready) tile.resize(tile.size() + tilepress::kCodedBack);
    }
    /// Tile k becomes these codes.
    void put(std::size_t k, const std::string& text) {
        bytes[k] = exchanged(bits(text));
        arrange(bytes[k]);
    }
    TileSource source() const {
        return {this, [](const void* owner, std::size_t k) {
                    const Tiles& tiles = *static_cast<const Tiles*>(owner);
                    const std::size_t back = tiles.order == CodeOrder::ready ? tilepress::kCodedBack : 0;
                    return TileCodes{tiles.bytes[k].data(), static_cast<std::int64_t>(tiles.bytes[k].size() - back),
                                     tiles.order};
                }};
    }
};

/// What a walk shows of the rectangle; rows that it does not reach are not there.
Picture walked(TileWalk& walk, const PageRect& rect) {
    Picture picture(rect.width, 0);
    walk.rows([&](std::uint32_t) {
        std::vector<std::uint32_t> pixels(rect.width);
        const bool good = walk.next([&](const TileRow& tile) {
            for (std::int32_t k = 2; k < tile.count - 2; k += 2)
                for (std::int64_t x = tile.list[k - 1] - 1; x < tile.list[k] - 1; ++x)
                    if (const std::int64_t at = x + tile.left - rect.left; at >= 0 && at < rect.width)
                        pixels[static_cast<std::size_t>(at)] = 1;
        });
        if (!good) return;
        picture.pixels.insert(picture.pixels.end(), pixels.begin(), pixels.end());
        ++picture.height;
    });
    return picture;
}

}  // namespace

TEST(TileWalk, ShowsAnyRectangleWhateverTheOrderOfTheCodes) {
    std::mt19937 random(7);
    for (int round = 0; round < 100; ++round) {
        // Some have rows of more codes than are copied at once, and some tiles of many rows.
        const std::size_t width = 1 + random() % (round % 7 ? round % 5 ? 90 : 900 : 20000);
        const Picture picture = randomPicture(random, width, 1 + random() % 30, random() % 100);
        const Tiles tiles(picture, static_cast<std::uint32_t>(1 + random() % (width + 10)),
                          static_cast<std::uint32_t>(1 + random() % 40), static_cast<CodeOrder>(round % 4));
        const ImgRect r = randomRect(random, picture.width, picture.height);
        const PageRect rect{r.getLeft(), r.getTop(), r.getWidth(), r.getHeight()};
        const auto how = round % 8 < 4 ? Decoding::classic : Decoding::standard;
        TileWalk walk(tiles.layout, tiles.source(), rect, how);
        ASSERT_TRUE(walk.begin());
        EXPECT_EQ(walked(walk, rect), cut(picture, r)) << round;
    }
}

TEST(TileWalk, DamageEndsItOrIsFilledInAndIsReportedOnce) {
    Picture picture(16, 8);
    for (std::size_t i = 0; i < 128; ++i) picture.pixels[i] = 0xCC3C >> (15 - i % 16) & 1;
    Picture white = picture;
    for (std::size_t i = 96; i < 128; ++i) white.pixels[i] &= i % 16 < 8;
    for (std::uint32_t top : {0u, 5u, 7u})
        for (OnDamage rest : {OnDamage::end, OnDamage::paper, OnDamage::keep}) {
            Tiles tiles(picture, 8, 4, CodeOrder::plain);
            tiles.put(3, rowText("00111100") + "1 1 1 1 0000001111" + std::string(40, '1'));  // two rows, then no code
            std::vector<TileDamage> found;
            const auto report = [](void* user, const TileDamage& damage) {
                static_cast<std::vector<TileDamage>*>(user)->push_back(damage);
            };
            const PageRect rect{0, top, 16, 8 - top};
            TileWalk walk(tiles.layout, tiles.source(), rect, Decoding::standard, {rest, report, &found});
            const bool begun = walk.begin();
            EXPECT_EQ(begun, rest != OnDamage::end || top < 7);
            const int last = rest == OnDamage::end ? 5 : 7;
            if (begun) {
                EXPECT_EQ(walked(walk, rect),
                          cut(rest == OnDamage::paper ? white : picture, ImgRect(0, static_cast<int>(top), 15, last)));
            }
            EXPECT_EQ(walk.end(), rest == OnDamage::end ? WalkEnd::damaged : WalkEnd::none);
            ASSERT_EQ(found.size(), 1u);
            EXPECT_EQ(found[0].tile, 3u);
            EXPECT_EQ(found[0].row, 2u);
            EXPECT_EQ(found[0].left, 8u);
            EXPECT_EQ(found[0].top, 6u);
            EXPECT_EQ(walk.isFilledIn(), rest != OnDamage::end);
        }
}
