#include "ccitt/strip.h"

#include "ccitt/detect_changes.h"

#include <algorithm>
#include <cstdlib>

namespace tilepress::g4 {
namespace {

/// What a flush writes past the last coded byte, and the end-of-block.
constexpr std::size_t kReserve = 8 + 8;
constexpr CodeWord kEndOfLine = {0x0010, 12};

}  // namespace

bool StripWriter::begin(std::int32_t width) {
    if (width < 0 || static_cast<std::uint32_t>(width) > kMaxListWidth) return false;
    if (width != width_) {
        width_ = -1;
        for (Heap<std::int32_t>& list : lists_)
            if (!list.reserve(std::uint64_t{static_cast<std::uint32_t>(width)} + 4)) return false;
        width_ = width;
    }
    lists_[reference_][0] = 0;
    std::fill_n(lists_[reference_].get() + 1, 3, width + 1);
    referenceCount_ = 4;
    out_ = PlainWriter{buffer_.get()};
    return makeRoom() == RowResult::kAdded;
}

std::uint64_t StripWriter::roomForRow(std::int32_t width) {
    return static_cast<std::uint64_t>(maxRowBits(width) / 8) + kReserve;
}

RowResult StripWriter::makeRoom() {
    const std::uint64_t used = length(), needed = used + roomForRow(width_);
    if (needed <= capacity_) return RowResult::kAdded;
    if (needed > most_) return RowResult::kTooLong;
    const std::uint64_t size = std::min(most_, std::max(needed, std::uint64_t{capacity_} * 2));
    if (size > SIZE_MAX) return RowResult::kNoMemory;
    void* block = std::realloc(buffer_.get(), static_cast<std::size_t>(size));
    if (!block) return RowResult::kNoMemory;
    *buffer_.out() = static_cast<unsigned char*>(block);
    capacity_ = static_cast<std::size_t>(size);
    out_.p = buffer_.get() + used;
    return RowResult::kAdded;
}

RowResult StripWriter::addList(std::int32_t count) {
    if (const RowResult room = makeRoom(); room != RowResult::kAdded) return room;
    const int coding = 1 - reference_;
    encodeRow(out_, {lists_[reference_].get(), referenceCount_}, {lists_[coding].get(), count});
    reference_ = coding;
    referenceCount_ = count;
    return RowResult::kAdded;
}

RowResult StripWriter::addPackedRow(const unsigned char* row, std::int32_t maxElements) {
    const auto room = static_cast<std::int32_t>(std::min<std::int64_t>(std::int64_t{width_} + 4, maxElements));
    const std::int32_t count = detectChanges(row, static_cast<std::uint32_t>(width_), nextList(), room);
    return count == 0 ? RowResult::kRefused : addList(count);
}

Stream StripWriter::finish() {
    out_.put(kEndOfLine);
    out_.put(kEndOfLine);
    out_.flush();
    return {buffer_.get(), length() + (out_.count != 0)};
}

unsigned char* StripWriter::release() {
    capacity_ = 0;
    out_ = PlainWriter{nullptr};
    return buffer_.release();
}

std::int32_t createStrip(const StripFamily& family, const unsigned char* rows, unsigned char** output,
                         std::int32_t width, std::int32_t bytesPerRow, std::int32_t rowCount) {
    constexpr char kNoBuffer[] = "ERROR: Unable to allocate compressed buffer\n";
    constexpr char kTooLong[] = "Compressed output exceeded buffer length\n";
    constexpr std::int32_t kMaxElements = 8000;
    const auto fail = [&](const char* message) {
        if (family.say) family.say(message);
        return 0;
    };
    if (!output) return 0;
    *output = nullptr;
    if (!family.encodes || !family.detects || width < 0 || bytesPerRow < 0 || rowCount < 0 ||
        (std::int64_t{width} + 7) / 8 > bytesPerRow || (rowCount > 0 && !rows))
        return fail(kNoBuffer);
    // Kept: a row's maximum is held in 16 bits, so that it wraps from 4096 bytes a row on.
    const std::int32_t rowMaximum = static_cast<std::int16_t>(8 * static_cast<std::uint32_t>(bytesPerRow));
    const std::int64_t maximum = std::int64_t{rowMaximum} * rowCount;
    StripWriter writer;
    if ((rowMaximum <= 0 && rowCount > 0) || maximum > std::int64_t{PTRDIFF_MAX} || !writer.begin(width))
        return fail(kNoBuffer);

    for (std::int32_t y = 0; y < rowCount; ++y) {
        const std::size_t before = writer.length();
        const RowResult added = writer.addPackedRow(
            rows + static_cast<std::size_t>(y) * static_cast<std::size_t>(bytesPerRow), kMaxElements);
        if (added == RowResult::kNoMemory || added == RowResult::kTooLong) return fail(kNoBuffer);
        if (added == RowResult::kRefused || writer.length() - before > static_cast<std::size_t>(rowMaximum))
            return fail(kTooLong);
        // Kept: close to the maximum the strip ends early, without error; below 4096 bytes a row no row comes so close.
        if (static_cast<std::int64_t>(writer.length()) >= maximum - rowMaximum) break;
    }
    const Stream stream = writer.finish();
    if (stream.length > INT32_MAX) return fail(kNoBuffer);
    *output = writer.release();
    return static_cast<std::int32_t>(stream.length);
}

}  // namespace tilepress::g4
