#include "page/picture_rows.h"

#include "kernels/bit_rows.h"
#include "kernels/mirror_turn.h"
#include "kernels/transpose.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tilepress {
namespace {

constexpr std::uint32_t kBand = 64;  // rows that are turned at once: a word of bits

/// The colour between ink and paper at a tone, as a word of the picture.
ImgULong colourOf(const ViewPlan& plan, unsigned tone) {
    unsigned char bytes[4];
    for (unsigned k = 0; k < 4; ++k) {
        // Byte k of the picture; red and blue change places in TP_BGRA.
        const unsigned shift = k == 3 ? 24 : plan.format == TP_BGRA ? 8 * k : 16 - 8 * k;
        const unsigned ink = plan.ink >> shift & 0xFF, paper = plan.paper >> shift & 0xFF;
        bytes[k] = static_cast<unsigned char>((ink * (255 - tone) + paper * tone + 127) / 255);
    }
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

bool isColour(const ViewPlan& plan) { return plan.format == TP_RGBA || plan.format == TP_BGRA; }

}  // namespace

PictureRows::PictureRows(const ViewPlan& plan)
    : plan_(plan), bandStride_(plan.format == TP_BITS ? packedBytes(plan.width) : plan.width) {}

std::uint64_t PictureRows::memory(const ViewPlan& plan) {
    const std::uint64_t width = plan.width, row = plan.format == TP_BITS ? packedBytes(width) : width;
    const std::uint64_t colours = isColour(plan) ? sizeof(Colours) : 0;
    if (plan.turned) return colours + kBand * row + width;
    return colours + (plan.fromRight ? width : 0) + (isColour(plan) ? 4 * width : 0);
}

bool PictureRows::prepare() {
    if (isColour(plan_)) {
        if (!colours_.reserve(1)) return false;
        for (unsigned tone = 0; tone < 256; ++tone) colours_->tones[tone] = colourOf(plan_, tone);
        colours_->quads = Quads(colours_->tones[255], colours_->tones[0]);
    }
    if (plan_.turned) {
        if (!reversed_.reserve(plan_.width) || !band_.reserve(kBand * bandStride_)) return false;
        if (plan_.format == TP_BITS)
            for (std::uint32_t x = 0; x < plan_.width; ++x) std::memset(plan_.row(x), 0, packedBytes(plan_.height));
        return true;
    }
    return (!plan_.fromRight || reversed_.reserve(plan_.width)) && (!isColour(plan_) || words_.reserve(plan_.width));
}

// --- upright and mirrored ---

unsigned char* PictureRows::place() const { return plan_.row(plan_.bottomUp ? plan_.height - 1 - y_ : y_); }

/// Counts the row that has been written, and writes it again.
void PictureRows::repeat(std::uint32_t copies) {
    const unsigned char* const first = place();
    ++y_;
    if (copies == 1) return;
    const auto bytes = static_cast<std::size_t>(rowBytes(plan_.format, plan_.width));
    for (; copies > 1; --copies, ++y_) std::memcpy(place(), first, bytes);
}

void PictureRows::putBits(const unsigned char* bits, std::uint32_t copies) {
    const std::size_t width = plan_.width;
    if (plan_.turned) {
        if (plan_.format == TP_BITS) return putTurned(bits, bandStride_, copies);
        expandRow(reversed_.get(), bits, width);
        return putTurned(reversed_.get(), width, copies);
    }
    unsigned char* const to = place();
    if (plan_.fromRight) {
        unsigned char* const reversed = plan_.format == TP_BITS ? to : reversed_.get();
        reverseBits(reversed, bits, width);
        bits = reversed;
    }
    switch (plan_.format) {
    case TP_BITS:
        if (bits != to) std::memcpy(to, bits, packedBytes(width));
        break;
    case TP_GREY8: expandRow(to, bits, width); break;
    default: expandRow(words_.get(), bits, width, colours_->quads); std::memcpy(to, words_.get(), 4 * width);
    }
    repeat(copies);
}

void PictureRows::putTones(const unsigned char* tones, std::uint32_t copies) {
    const std::size_t width = plan_.width;
    if (plan_.turned) return putTurned(tones, width, copies);
    unsigned char* const to = place();
    if (plan_.fromRight) {
        unsigned char* const reversed = plan_.format == TP_GREY8 ? to : reversed_.get();
        reversePixels(reversed, tones, width);
        tones = reversed;
    }
    if (isColour(plan_)) {
        lookUpRow(words_.get(), tones, width, colours_->tones);
        std::memcpy(to, words_.get(), 4 * width);
    } else if (tones != to) {
        std::memcpy(to, tones, width);
    }
    repeat(copies);
}

// --- turned ---

/// Rows go into the band in the order of the columns that they become, which begin at multiples of its height.
void PictureRows::putTurned(const unsigned char* row, std::uint64_t bytes, std::uint32_t copies) {
    for (; copies > 0; --copies, ++y_) {
        const std::uint32_t column = plan_.bottomUp ? plan_.height - 1 - y_ : y_, slot = column % kBand;
        std::memcpy(band_.get() + slot * bandStride_, row, static_cast<std::size_t>(bytes));
        const std::uint32_t first = column - slot;
        if (plan_.bottomUp ? slot == 0 : slot == kBand - 1 || column == plan_.height - 1) {
            const std::uint32_t count = std::min(kBand, plan_.height - first);
            if (plan_.format == TP_BITS) turnBits(first, count);
            else turnTones(first, count);
        }
    }
}

void PictureRows::turnBits(std::uint32_t column, std::uint32_t count) {
    const PackedRows from{band_.get(), static_cast<std::ptrdiff_t>(bandStride_)};
    const PackedRows to{plan_.pixels + column / 8, plan_.stride};
    transposeBits(plan_.fromRight ? upwards(to, plan_.width) : to, from, plan_.width, count);
}

void PictureRows::turnTones(std::uint32_t column, std::uint32_t count) {
    unsigned char block[kBand][kBand];
    unsigned char *rows[kBand], *columns[kBand];
    for (std::uint32_t x = 0; x < plan_.width; x += kBand) {
        const std::uint32_t width = std::min(kBand, plan_.width - x);
        for (std::uint32_t k = 0; k < kBand; ++k) {
            rows[k] = band_.get() + k * bandStride_ + x;
            columns[k] = block[k];
        }
        transposePixels(TableRows<unsigned char>{columns, 1}, TableRows<unsigned char>{rows, 1}, width, count);
        for (std::uint32_t k = 0; k < width; ++k) {
            unsigned char* const to = plan_.row(plan_.fromRight ? plan_.width - 1 - (x + k) : x + k);
            if (!isColour(plan_)) {
                std::memcpy(to + column, block[k], count);
                continue;
            }
            ImgULong colours[kBand];
            lookUpRow(colours, block[k], count, colours_->tones);
            std::memcpy(to + 4 * std::size_t{column}, colours, 4 * std::size_t{count});
        }
    }
}

}  // namespace tilepress
