#include "page/call_options.h"

#include <algorithm>
#include <cstddef>

using namespace tilepress;
using namespace tilepress::g4;

namespace {

/// Bytes behind the rows that are no end-of-block and yet no fault: fill up to a whole word.
constexpr std::int64_t kMostFill = 2;

/// Behind the end-of-block: some coders end with more than its two ends of line, and fill them up to whole bytes.
std::int64_t pastEndsOfLine(const CodedData& codes, std::int64_t bit) {
    for (unsigned length = 12; length < 12 + 8;) {
        if (codes.peek(bit, length) == 1) {
            bit += length;
            length = 12;
        } else {
            ++length;
        }
    }
    return bit;
}

/// Where the bytes begin that nothing explains, or -1. Like `decode` it notes what ends the call.
std::int64_t leftOver(RowCursor& cursor, tp_status& ended) {
    std::int64_t bit = 0;
    const CodedData* const codes = cursor.rest(bit);
    if (!codes) {
        ended = TP_E_MEMORY;
        return -1;
    }
    const std::int64_t left = codes->length - ((pastEndsOfLine(*codes, bit) + 7) >> 3);
    return left > kMostFill ? cursor.length() - left : -1;
}

/// Decodes `rows` of the tile's rows; the first one that fails is `row` then.
RowStatus decode(RowCursor& cursor, std::uint32_t& row, std::uint32_t rows, CallOptions& call, tp_status& ended) {
    for (; row < rows && ended == TP_OK; ++row) {
        const RowStatus status = cursor.next();
        if (status == kRowNoMemory) ended = TP_E_MEMORY;
        if (status != kRowDecoded) return status;
        if (!call.rowDone()) ended = TP_E_CANCELLED;
    }
    return kRowDecoded;
}

/// Reports what is wrong with the tile that the cursor has entered, of which `pageRows` lie on the page; TP_OK unless
/// the call has ended.
tp_status verifyTile(RowCursor& cursor, tp_damage place, std::uint32_t height, std::uint32_t pageRows, bool isStrip,
                     CallOptions& call) {
    const std::uint32_t top = place.top;
    tp_status ended = TP_OK;
    const auto report = [&](std::uint32_t row, std::int64_t byte, std::uint32_t kind) {
        place.row = row;
        place.top = top + row;
        place.byte = static_cast<std::uint64_t>(std::min(byte, cursor.length()));
        place.kind = kind;
        call.report(place);
    };
    // The last strip ends with the page, but a tile that happens to be as wide as its page goes on.
    const std::uint32_t rows = isStrip ? std::min(height, pageRows) : height;
    std::uint32_t row = 0;
    if (const RowStatus status = decode(cursor, row, rows, call, ended); status != kRowDecoded) {
        if (ended == TP_OK) report(row, cursor.position() >> 3, kindOf(status));
        return ended;
    }
    const std::int64_t byte = ended == TP_OK ? leftOver(cursor, ended) : -1;
    if (byte < 0) return ended;
    if (rows < height && decode(cursor, row, height, call, ended) == kRowDecoded && leftOver(cursor, ended) < 0)
        return ended;
    if (ended == TP_OK) report(rows, byte, TP_LEFT_OVER);
    return ended;
}

}  // namespace

tp_status TILEPRESS_CALL tp_page_verify(const tp_page* page, tp_options* options) {
    if (!page) return TP_E_ARGUMENT;
    const PageTiles& tiles = page->grid;
    const TileLayout& layout = tiles.layout;
    CallOptions call(tiles, options);
    if (const tp_status status = call.check(page->info, false); status != TP_OK) return status;
    if (!call.allows(tiles.walkMemory({0, 0, 1, 1}))) return TP_E_LIMIT;
    call.setTotal(std::uint64_t{layout.height} * layout.across());
    RowCursor cursor;
    if (!cursor.prepare(layout.tileWidth, Decoding::standard)) return TP_E_MEMORY;
    const std::uint32_t across = layout.across(), count = across * layout.down();
    for (std::uint32_t k = 0; k < count; ++k) {
        if (!tiles.tiles[k].bytes) continue;
        if (!cursor.enter(tiles.source().codesOf(&tiles, k))) return TP_E_MEMORY;
        const std::uint32_t top = k / across * layout.tileHeight;
        const tp_damage place{k, 0, 0, 0, k % across * layout.tileWidth, top};
        const tp_status ended =
            verifyTile(cursor, place, layout.tileHeight, std::min(layout.tileHeight, layout.height - top),
                       layout.tileWidth == layout.width, call);
        if (ended != TP_OK) return ended;
    }
    return call.finish();
}
