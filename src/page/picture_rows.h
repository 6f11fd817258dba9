#pragma once

// Rows of an upright picture, as bits or as tones, into the caller's pixels: mirrored and turned, in the caller's
// format.

#include "foundation/heap.h"
#include "kernels/expand_bits.h"
#include "page/view.h"

#include <cstdint>

namespace tilepress {

/// The picture of one view, which takes its rows from the top.
///
/// Mirrored rows go straight to their places. Turned ones wait in a band of 64 rows, which then become 64 columns: its
/// bytes are all the memory besides a row or two.
class PictureRows {
public:
    explicit PictureRows(const ViewPlan& plan);

    static std::uint64_t memory(const ViewPlan& plan);
    /// False when memory runs out.
    bool prepare();
    /// The next `copies` rows, all alike: packed pixels, of which set ones are ink and those past the width are 0.
    void putBits(const unsigned char* bits, std::uint32_t copies);
    /// The same as tones, 0 for ink and 255 for paper; not for TP_BITS.
    void putTones(const unsigned char* tones, std::uint32_t copies);

private:
    void repeat(std::uint32_t copies);
    unsigned char* place() const;
    void turnBits(std::uint32_t column, std::uint32_t count);
    void turnTones(std::uint32_t column, std::uint32_t count);
    void putTurned(const unsigned char* row, std::uint64_t bytes, std::uint32_t copies);

    /// Of tones and of bits, in the order of the picture's bytes.
    struct Colours {
        ImgULong tones[256];
        Quads quads;
    };

    const ViewPlan plan_;
    Heap<Colours> colours_;  ///< of pictures in colours
    const std::uint64_t bandStride_;
    Heap<unsigned char> reversed_, band_;
    Heap<ImgULong> words_;
    std::uint32_t y_ = 0;  ///< of the next row
};

}  // namespace tilepress
