#include "ccitt/strip.h"
#include "kernels/bit_rows.h"
#include "page/coded_page.h"

#include <algorithm>
#include <cstddef>
#include <new>

using namespace tilepress;
using namespace tilepress::g4;

/// Coding rows of one width, strip after strip.
struct tp_encoder {
    tp_encoder(std::uint32_t rowWidth, bool lowFirst, std::uint64_t mostBytes, std::uint64_t mostBuffer)
        : writer(mostBuffer), width(static_cast<std::int32_t>(rowWidth)), lowBitFirst(lowFirst), most(mostBytes) {}

    /// Begins a strip where the last one has ended.
    tp_status open() {
        if (!isOpen && !writer.begin(width)) return TP_E_MEMORY;
        isOpen = true;
        return TP_OK;
    }
    tp_status result(RowResult added) const {
        switch (added) {
        case RowResult::kAdded: return TP_OK;
        case RowResult::kNoMemory: return TP_E_MEMORY;
        case RowResult::kTooLong: return most != 0 ? TP_E_LIMIT : TP_E_TOO_LARGE;
        default: return TP_E_ARGUMENT;
        }
    }

    StripWriter writer;
    std::int32_t width;
    bool lowBitFirst;
    std::uint64_t most;  ///< bytes that the caller allows; 0: no limit, or one above what a stream may have
    bool isOpen = false;
};

/// What an encoder holds besides its strip: two lists.
static std::uint64_t fixedBytes(std::uint32_t width) {
    return sizeof(tp_encoder) + 2 * sizeof(std::int32_t) * (std::uint64_t{width} + 4);
}

tp_status TILEPRESS_CALL tp_encoder_open(std::uint32_t width, std::uint32_t fillOrder, const tp_limits* limits,
                                         tp_encoder** encoder) {
    if (!encoder) return TP_E_ARGUMENT;
    *encoder = nullptr;
    if (width == 0 || fillOrder > 2) return TP_E_ARGUMENT;
    if (width > kMostPixelsASide) return TP_E_TOO_LARGE;
    std::uint64_t most = limits ? limits->max_bytes : 0, mostBuffer = kMostTileBytes;
    const std::uint64_t fixed = fixedBytes(width);
    if (most != 0 && most < fixed + StripWriter::roomForRow(static_cast<std::int32_t>(width))) return TP_E_LIMIT;
    if (most == 0 || most - fixed >= mostBuffer) most = 0;
    else mostBuffer = most - fixed;

    tp_encoder* const made = new (std::nothrow) tp_encoder(width, fillOrder == 2, most, mostBuffer);
    if (!made) return TP_E_MEMORY;
    if (const tp_status status = made->open(); status != TP_OK) {
        delete made;
        return status;
    }
    *encoder = made;
    return TP_OK;
}

tp_status TILEPRESS_CALL tp_encoder_add_bits(tp_encoder* encoder, const void* rows, std::ptrdiff_t stride,
                                             std::uint32_t count) {
    if (!encoder || (!rows && count > 0)) return TP_E_ARGUMENT;
    if (const tp_status status = encoder->open(); status != TP_OK) return status;
    const auto* first = static_cast<const unsigned char*>(rows);
    for (std::uint32_t y = 0; y < count; ++y) {
        const RowResult added = encoder->writer.addPackedRow(first + static_cast<std::ptrdiff_t>(y) * stride);
        if (added != RowResult::kAdded) return encoder->result(added);
    }
    return TP_OK;
}

tp_status TILEPRESS_CALL tp_encoder_add_changes(tp_encoder* encoder, const std::uint32_t* changes,
                                                std::uint32_t count) {
    if (!encoder || (!changes && count > 0)) return TP_E_ARGUMENT;
    const auto width = static_cast<std::uint32_t>(encoder->width);
    if (count > width) return TP_E_ARGUMENT;
    if (const tp_status status = encoder->open(); status != TP_OK) return status;
    std::int32_t* const list = encoder->writer.nextList();
    list[0] = 0;
    for (std::uint32_t k = 0; k < count; ++k) {
        if (changes[k] >= width || (k > 0 && changes[k] <= changes[k - 1])) return TP_E_ARGUMENT;
        list[k + 1] = static_cast<std::int32_t>(changes[k] + 1);
    }
    std::fill_n(list + count + 1, 3, encoder->width + 1);
    return encoder->result(encoder->writer.addList(static_cast<std::int32_t>(count + 4)));
}

tp_status TILEPRESS_CALL tp_encoder_finish(tp_encoder* encoder, const void** data, std::size_t* size) {
    if (!encoder || !data || !size) return TP_E_ARGUMENT;
    if (const tp_status status = encoder->open(); status != TP_OK) return status;
    const Stream stream = encoder->writer.finish();
    encoder->isOpen = false;
    if (encoder->lowBitFirst) reverseBitsInBytes(stream.bytes, stream.length);
    *data = stream.bytes;
    *size = stream.length;
    return TP_OK;
}

void TILEPRESS_CALL tp_encoder_close(tp_encoder* encoder) { delete encoder; }
