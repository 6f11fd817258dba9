#pragma once

// Compressed images for tests, cut into tiles from pictures written as text, and
// what they should look like.

#include "support/coded.h"
#include "tilepress/CImg1.h"
#include "tilepress/CImg1G4.h"

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace support {

using Picture = std::vector<std::string>;  // rows of '0' and '1'

/// Ends a compressed image together with its tiles.
struct ReleaseG4 {
    void operator()(CImg1G4* image) const {
        if (image) image->releaseData();
        delete image;
    }
};
using G4Image = std::unique_ptr<CImg1G4, ReleaseG4>;

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
    const std::size_t width = picture[0].size(), height = picture.size();
    std::vector<Bytes> tiles;
    for (std::size_t top = 0; top < height; top += tileHeight)
        for (std::size_t left = 0; left < width; left += tileWidth) {
            std::string text;
            for (std::size_t y = top; y < top + tileHeight; ++y) {
                std::string row = y < height ? picture[y].substr(left, tileWidth) : "";
                row.resize(tileWidth, '0');
                text += rowText(row);
            }
            tiles.push_back(exchanged(bits(text + kEndOfBlockText)));
        }
    return tiles;
}

inline G4Image compressed(const Picture& picture, ImgULong tileWidth, ImgULong tileHeight,
                          ImgAlignmentEnum alignment = ImgAlignNone) {
    std::vector<Bytes> tiles = tilesOf(picture, tileWidth, tileHeight);
    return makeG4(static_cast<ImgULong>(picture[0].size()), static_cast<ImgULong>(picture.size()), tileWidth,
                  tileHeight, tiles, alignment);
}

inline std::string rowOf(const CImg1& image, ImgULong y, ImgULong pixels) {
    const unsigned char* row = image.peekData() + std::size_t{y} * image.getBytesPerLine();
    std::string text;
    for (ImgULong x = 0; x < pixels; ++x) text += row[x / 8] >> (7 - x % 8) & 1 ? '1' : '0';
    return text;
}

inline Picture pictureOf(const CImg1& image) {
    Picture picture;
    for (ImgULong y = 0; y < image.getHeight(); ++y) picture.push_back(rowOf(image, y, image.getWidth()));
    return picture;
}

/// Runs of random lengths; about `blackPercent` of the pixels are black.
inline Picture randomPicture(std::mt19937& random, std::size_t width, std::size_t height, unsigned blackPercent) {
    Picture picture(height, std::string(width, '0'));
    for (std::size_t y = 0; y < height; ++y) {
        if (y > 0 && random() % 3 == 0) picture[y] = picture[y - 1];
        for (std::size_t x = 0; x < width;) {
            const std::size_t run = 1 + random() % 12;
            const char colour = random() % 100 < blackPercent ? '1' : '0';
            for (std::size_t k = 0; k < run && x < width; ++k) picture[y][x++] = colour;
        }
    }
    return picture;
}

inline Picture cut(const Picture& picture, const ImgRect& r) {
    Picture part;
    for (ImgULong y = r.getTop(); y <= r.getBottom(); ++y) part.push_back(picture[y].substr(r.getLeft(), r.getWidth()));
    return part;
}

inline Picture complement(Picture picture) {
    for (std::string& row : picture)
        for (char& c : row) c = c == '0' ? '1' : '0';
    return picture;
}

}  // namespace support
