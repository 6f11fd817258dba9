#pragma once

// Compressed images for tests, cut into tiles from pictures, and what they should look like.

#include "support/coded.h"
#include "support/pictures.h"

#include <string>

namespace support {

using G4Image = Owned<CImg1G4>;

inline G4Image makeG4(ImgULong width, ImgULong height, ImgULong tileWidth, ImgULong tileHeight,
                      std::vector<Bytes>& tiles, ImgAlignmentEnum alignment = ImgAlignNone) {
    std::vector<unsigned char*> data;
    std::vector<ImgULong> lengths;
    for (Bytes& tile : tiles) {
        data.push_back(tile.data());
        lengths.push_back(static_cast<ImgULong>(tile.size()));
    }
    return G4Image(CImg1G4::create(width, height, tileWidth, tileHeight, data.data(), lengths.data(), 0x00FFFFFF,
                                   0xFF000000, alignment));
}

inline std::vector<Bytes> tilesOf(const Picture& picture, std::size_t tileWidth, std::size_t tileHeight) {
    std::vector<Bytes> tiles;
    for (std::size_t top = 0; top < picture.height; top += tileHeight)
        for (std::size_t left = 0; left < picture.width; left += tileWidth) {
            std::string text;
            for (std::size_t y = top; y < top + tileHeight; ++y) {
                std::string row(tileWidth, '0');
                for (std::size_t x = left; x < left + tileWidth && x < picture.width && y < picture.height; ++x)
                    row[x - left] = picture.at(x, y) ? '1' : '0';
                text += rowText(row);
            }
            tiles.push_back(exchanged(bits(text + kEndOfBlockText)));
        }
    return tiles;
}

inline G4Image compressed(const Picture& picture, ImgULong tileWidth, ImgULong tileHeight,
                          ImgAlignmentEnum alignment = ImgAlignNone) {
    std::vector<Bytes> tiles = tilesOf(picture, tileWidth, tileHeight);
    return makeG4(static_cast<ImgULong>(picture.width), static_cast<ImgULong>(picture.height), tileWidth, tileHeight,
                  tiles, alignment);
}

/// Runs of random lengths; about `blackPercent` of the pixels are black.
inline Picture randomPicture(std::mt19937& random, std::size_t width, std::size_t height, unsigned blackPercent) {
    Picture picture(width, height);
    for (std::size_t y = 0; y < height; ++y) {
        if (y > 0 && random() % 3 == 0)
            for (std::size_t x = 0; x < width; ++x) picture.at(x, y) = picture.at(x, y - 1);
        for (std::size_t x = 0; x < width;) {
            const std::size_t run = 1 + random() % 12;
            const std::uint32_t colour = random() % 100 < blackPercent;
            for (std::size_t k = 0; k < run && x < width; ++k) picture.at(x++, y) = colour;
        }
    }
    return picture;
}

inline ImgULong upTo(std::mt19937& random, std::size_t most) { return static_cast<ImgULong>(1 + random() % most); }

inline ImgRect randomRect(std::mt19937& random, std::size_t width, std::size_t height) {
    const std::size_t left = random() % width, top = random() % height;
    return ImgRect(static_cast<int>(left), static_cast<int>(top), static_cast<int>(left + random() % (width - left)),
                   static_cast<int>(top + random() % (height - top)));
}

/// A page of random pixels in random tiles, and a part of it.
struct RandomG4 {
    Picture picture;
    G4Image image;
    ImgRect part;
    RandomG4(std::mt19937& random, unsigned blackPercent, std::size_t width = 150)
        : picture(randomPicture(random, upTo(random, width), upTo(random, 50), blackPercent)),
          image(compressed(picture, upTo(random, picture.width + 10), upTo(random, picture.height + 5))),
          part(randomRect(random, picture.width, picture.height)) {}
};

}  // namespace support
