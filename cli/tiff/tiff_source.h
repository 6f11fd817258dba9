#pragma once

#include "base/geometry.h"
#include "files/input_file.h"
#include "files/libtiff.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// What a page's directory says. A strip is a tile as wide as the page.
struct TiffPage {
    unsigned number = 0;  ///< from 1
    Size size;
    double dpiX = 0, dpiY = 0;  ///< 0 when not given
    bool tiled = false;
    Size tile;
    std::uint32_t tiles = 0, tilesAcross = 0;
    std::uint64_t compressedBytes = 0;
    std::uint32_t emptyTiles = 0;      ///< without data: as if coded all white
    std::uint32_t truncatedTiles = 0;  ///< with data past the end of the file
    std::uint16_t compression = 1, fillOrder = 1, photometric = 0, orientation = 1;
    bool mayBeUncompressed = false;  ///< parts in Group 4's uncompressed mode, which cannot be decoded, are announced
    std::vector<std::string> unsupported;  ///< why the page cannot be rendered; empty when it can
    bool bilevel = false;                  ///< one bit a pixel, black and white, in whatever compression

    /// Throws Failure when the page cannot be rendered.
    void requireSupported(const std::string& file) const;
    /// Throws Failure when the page is not bilevel.
    void requireBilevel(const std::string& file) const;
    bool isGroup4() const { return compression == COMPRESSION_CCITTFAX4; }
    bool whiteIsZero() const { return photometric == 0; }
    const char* tileName() const { return tiled ? "tile" : "strip"; }
    /// Rows of tile k that are on the page; less than the tile's height at the bottom.
    std::uint32_t rowsOfTile(std::uint32_t k) const;
};

/// A TIFF file whose directories and compressed bytes are read; nothing in it is ever decoded by libtiff.
/// All operations throw Failure.
class TiffSource {
public:
    explicit TiffSource(InputFile input);

    const std::string& name() const { return displayName_; }
    std::uint64_t bytes() const { return fileBytes_; }
    unsigned countPages();
    /// What is wrong with the list that countPages went through, for a message; the pages before that can be used.
    /// Empty for a good one.
    std::string damageOfPageList() const;
    /// Throws Failure when it is broken.
    void requirePageList() const;
    TiffPage page(unsigned number);
    /// Whether the file leaves the tile out: it is as if coded all white.
    bool isEmpty(std::uint32_t k) const;
    /// The tile's bytes in the file, clipped to the file; 0 also for a tile that is wholly past its end.
    std::uint64_t tileBytes(std::uint32_t k);
    /// Reads the first `bytes` of a tile of the page asked for last, as they are in the file.
    void readTile(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes);
    /// Sets the tags of the page asked for last that say how to show it and what it is, not how it is stored.
    void copyTags(TIFF* to) const;

private:
    [[noreturn]] void fail(const std::string& otherwise);
    bool goTo(unsigned number);
    void addLayout(TiffPage& page);
    void addSizes(TiffPage& page);

    std::string displayName_;
    LibtiffMessages messages_;
    std::string pageListDamage_;
    std::uint64_t fileBytes_ = 0;
    TiffHandle tiff_;
    bool currentTiled_ = false;
};
