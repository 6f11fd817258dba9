#pragma once

// Rows into one Group 4 stream: the codes of all rows and the end-of-block.

#include "ccitt/encode_row.h"
#include "foundation/heap.h"

#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

struct Stream {
    unsigned char* bytes;
    std::size_t length;
};

enum class RowResult { kAdded, kRefused, kNoMemory, kTooLong };

/// Codes strips of any size, one after another: begin, rows, finish. Where memory runs out or a row is refused, the
/// strip stays as it was; where begin fails there is none.
class StripWriter {
public:
    /// A writer whose buffer takes at most so many bytes.
    explicit StripWriter(std::uint64_t most = SIZE_MAX) : most_(most) {}
    StripWriter(const StripWriter&) = delete;
    StripWriter& operator=(const StripWriter&) = delete;

    /// Starts a strip of rows of `width` pixels; false for a negative width, one too large for a list, or no memory.
    bool begin(std::int32_t width);
    /// Appends a packed row, of which only the bytes that hold pixels are read; refuses one whose list takes more than
    /// `maxElements`.
    RowResult addPackedRow(const unsigned char* row, std::int32_t maxElements = INT32_MAX);
    /// Where the next row's list is made, which has room for width + 4 elements.
    std::int32_t* nextList() const { return lists_[1 - reference_].get(); }
    /// Appends the row that was made there.
    RowResult addList(std::int32_t count);
    /// Whole bytes so far.
    std::size_t length() const { return static_cast<std::size_t>(out_.p - buffer_.get()); }
    /// Buffer that one row of `width` pixels needs before it is coded.
    static std::uint64_t roomForRow(std::int32_t width);
    /// Ends the strip. The stream is the writer's and stays until the next begin.
    Stream finish();
    /// Hands the finished stream to the caller, who frees it.
    unsigned char* release();

private:
    RowResult makeRoom();

    std::uint64_t most_;
    std::int32_t width_ = -1;
    Heap<std::int32_t> lists_[2];  // of the row before and the row to come
    int reference_ = 0;            // index of the row before
    std::int32_t referenceCount_ = 0;
    Heap<unsigned char> buffer_;
    std::size_t capacity_ = 0;
    PlainWriter out_{nullptr};
};

/// What one family of strip builders uses.
struct StripFamily {
    bool encodes, detects;             // whether each is enabled
    void (*say)(const char* message);  // may be null
};

/// The exported strip builder; ccitt.h describes it.
std::int32_t createStrip(const StripFamily& family, const unsigned char* rows, unsigned char** output,
                         std::int32_t width, std::int32_t bytesPerRow, std::int32_t rowCount);

}  // namespace tilepress::g4
