#pragma once

// Files of bilevel pages, whatever they are: what the pages are, and their Group 4 codes.

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
    bool bilevel = false;                  ///< one bit a pixel, in two colours, in whatever compression
    bool recoded = false;                  ///< its codes were made in memory

    /// Throws Failure when the page cannot be rendered.
    void requireSupported(const std::string& file) const;
    bool isGroup4() const { return compression == COMPRESSION_CCITTFAX4; }
    bool inkIsOne = true;  ///< coded black is what is dark
    bool whiteIsZero() const { return inkIsOne; }
    const char* tileName() const { return tiled ? "tile" : "strip"; }
    /// Rows of tile k that are on the page; less than the tile's height at the bottom.
    std::uint32_t rowsOfTile(std::uint32_t k) const;
};

class PackedRows;

/// All operations throw Failure.
class PageSource {
public:
    explicit PageSource(const InputFile& input) : file_(input.again()) {}
    virtual ~PageSource() = default;
    PageSource(const PageSource&) = delete;
    PageSource& operator=(const PageSource&) = delete;

    const std::string& name() const { return file_.name(); }
    std::uint64_t bytes() const { return file_.bytes(); }
    const InputFile& file() const { return file_; }
    virtual unsigned countPages() = 0;
    /// What is wrong with the list that countPages went through, for a message; the pages before that can be used.
    /// Empty for a good one.
    virtual std::string damageOfPageList() const { return {}; }
    /// Throws Failure when it is broken.
    void requirePageList() const;
    /// The page as the file has it.
    virtual TiffPage page(unsigned number) = 0;
    /// The same with its codes ready, as the file has them, or, for one that is stored in another way, coded anew in
    /// memory, row by row, into one strip. Tiles are those of the result from now on.
    TiffPage codedPage(unsigned number);
    /// What libtiff decodes pages by; null for a file that is no TIFF.
    virtual std::shared_ptr<TiffPages> decoder() { return nullptr; }
    /// Sets the tags of the page asked for last that say how to show it and what it is, not how it is stored.
    virtual void copyTags(TIFF* to) const = 0;

    /// Whether the file leaves the tile out: it is as if coded all white.
    bool isEmpty(std::uint32_t k) const { return recoded_.empty() && storedEmpty(k); }
    /// The tile's bytes in the file, clipped to the file; 0 also for a tile that is wholly past its end.
    std::uint64_t tileBytes(std::uint32_t k) { return recoded_.empty() ? storedBytes(k) : recoded_.size(); }
    /// Reads the first `bytes` of a tile of the page asked for last.
    void readTile(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes);

protected:
    virtual bool storedEmpty(std::uint32_t k) const = 0;
    virtual std::uint64_t storedBytes(std::uint32_t k) = 0;
    virtual void readStored(std::uint32_t k, unsigned char* buffer, std::uint64_t bytes) = 0;
    /// The rows of the page asked for last, which is not stored in Group 4 codes that can be used as they are.
    virtual std::unique_ptr<PackedRows> rows(const TiffPage& page) = 0;
    void forgetCodes() { recoded_.clear(); }

private:
    const InputFile file_;
    std::vector<unsigned char> recoded_;
};
