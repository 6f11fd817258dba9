#pragma once

// Rows coded into a strip or tile of any width and length.

#include "tiff/tile_rows.h"

#include <cstdint>
#include <vector>

/// Joins codes bit by bit into the bytes of a TIFF strip, first bit highest.
class BitJoiner {
public:
    /// Adds the first `bits` bits of 16-bit words, first bit in bit 15.
    void append(const std::uint16_t* words, std::uint64_t bits);
    /// The same from bytes, first bit highest.
    void append(const unsigned char* bytes, std::uint64_t bits);
    void append(unsigned value, unsigned bits);
    /// Whole bytes, the last one filled with 0.
    std::vector<unsigned char> finish();

private:
    std::vector<unsigned char> joined_;
    std::uint64_t pending_ = 0;
    unsigned pendingBits_ = 0;  ///< fewer than 8
};

/// The encoder's tables for as long as this lives; there is one at a time.
class EncoderTables {
public:
    /// Throws Failure when memory runs out.
    EncoderTables();
    EncoderTables(const EncoderTables&) = delete;
    EncoderTables& operator=(const EncoderTables&) = delete;
    ~EncoderTables();
};

/// Codes rows given as changing-element lists, as TileRows gives them. The tables must be there.
class G4Encoder {
public:
    explicit G4Encoder(std::uint32_t width);

    /// Adds a row. Throws Failure when it is no row of this width.
    void add(const std::int32_t* list, std::int32_t count);
    void addWhite();
    /// Begins with rows that are coded already: the first `bits` bits of a stream, of which `last` is the last row.
    void resume(const unsigned char* bytes, std::uint64_t bits, const std::vector<std::int32_t>& last,
                std::int32_t count);
    /// The strip with its end-of-block, as TIFF stores it; the next row begins another one.
    std::vector<unsigned char> finish();

private:
    void clear();

    std::int32_t width_;
    std::vector<std::int32_t> reference_;
    std::int32_t referenceCount_ = 4;
    std::vector<std::uint16_t> code_;
    BitJoiner joiner_;
};
