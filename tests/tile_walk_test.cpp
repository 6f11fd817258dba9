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
        : layout{static_cast<std::uint32_t>(picture[0].size()), static_cast<std::uint32_t>(picture.size()), tileWidth,
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
    Picture picture;
    walk.rows([&](TileWalk::Row& row) {
        std::string text(rect.width, '0');
        const bool good = row.tiles([&](const TileRow& tile) {
            for (std::int32_t k = 2; k < tile.count - 2; k += 2)
                for (std::int64_t x = tile.list[k - 1] - 1; x < tile.list[k] - 1; ++x)
                    if (const std::int64_t at = x + tile.left - rect.left; at >= 0 && at < rect.width)
                        text[static_cast<std::size_t>(at)] = '1';
        });
        if (good) picture.push_back(text);
    });
    return picture;
}

}  // namespace

TEST(TileWalk, ShowsAnyRectangleWhateverTheOrderOfTheCodes) {
    std::mt19937 random(7);
    for (int round = 0; round < 100; ++round) {
        const Picture picture = randomPicture(random, 1 + random() % 90, 1 + random() % 30, random() % 100);
        const Tiles tiles(picture, static_cast<std::uint32_t>(1 + random() % 100),
                          static_cast<std::uint32_t>(1 + random() % 40), static_cast<CodeOrder>(round % 4));
        const auto left = static_cast<std::uint32_t>(random() % picture[0].size()),
                   top = static_cast<std::uint32_t>(random() % picture.size());
        const PageRect rect{left, top, static_cast<std::uint32_t>(1 + random() % (tiles.layout.width - left)),
                            static_cast<std::uint32_t>(1 + random() % (tiles.layout.height - top))};
        const auto how = round % 8 < 4 ? Decoding::classic : Decoding::standard;
        TileWalk walk(tiles.layout, tiles.source(), rect, how);
        ASSERT_TRUE(walk.begin());
        const ImgRect cutOut(static_cast<int>(left), static_cast<int>(top), static_cast<int>(left + rect.width - 1),
                             static_cast<int>(top + rect.height - 1));
        EXPECT_EQ(walked(walk, rect), cut(picture, cutOut)) << round;
    }
}

TEST(TileWalk, DamageEndsItOrIsFilledInAndIsReportedOnce) {
    const Picture picture(8, "1100110000111100");
    Picture white = picture, kept = picture;
    for (std::size_t y = 6; y < 8; ++y) white[y].replace(8, 8, "00000000");
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
            const Picture expected = rest == OnDamage::paper ? white : kept;
            const std::size_t last = rest == OnDamage::end ? std::max(top, 6u) : 8;
            EXPECT_EQ(begun ? walked(walk, rect) : Picture(),
                      Picture(expected.begin() + top, expected.begin() + static_cast<std::ptrdiff_t>(last)));
            EXPECT_EQ(walk.end(), rest == OnDamage::end ? WalkEnd::damaged : WalkEnd::none);
            ASSERT_EQ(found.size(), 1u);
            EXPECT_EQ(found[0].tile, 3u);
            EXPECT_EQ(found[0].row, 2u);
            EXPECT_EQ(found[0].left, 8u);
            EXPECT_EQ(found[0].top, 6u);
            EXPECT_EQ(walk.isFilledIn(), rest != OnDamage::end);
        }
}
