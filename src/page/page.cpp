#include "ccitt/coded_bytes.h"
#include "kernels/bit_rows.h"
#include "page/coded_page.h"
#include "page/records.h"

#include <algorithm>
#include <cstring>
#include <new>

using namespace tilepress;

namespace {

/// Replaces zeros by what they stand for.
tp_status settle(tp_page_info& info) {
    if (info.width == 0 || info.height == 0 || info.fill_order > 2 || info.photometric > TP_BLACK_IS_ZERO ||
        (info.flags & ~std::uint32_t{TP_BORROW}) != 0)
        return TP_E_ARGUMENT;
    if (info.tile_width == 0) info.tile_width = info.width;
    if (info.tile_height == 0 || (info.tile_width == info.width && info.tile_height > info.height))
        info.tile_height = info.height;
    if (info.fill_order == 0) info.fill_order = 1;
    if (std::max({info.width, info.height, info.tile_width, info.tile_height}) > kMostPixelsASide)
        return TP_E_TOO_LARGE;
    const std::uint64_t most = info.limits.max_pixels, pixels = std::uint64_t{info.width} * info.height;
    return most != 0 && pixels > most ? TP_E_LIMIT : TP_OK;
}

PageTiles gridOf(const tp_page_info& info) {
    const bool borrowed = (info.flags & TP_BORROW) != 0;
    const g4::CodeOrder borrowedOrder = info.fill_order == 2 ? g4::CodeOrder::lowBitFirst : g4::CodeOrder::plain;
    return {{info.width, info.height, info.tile_width, info.tile_height, info.photometric == TP_BLACK_IS_ZERO},
            nullptr,
            borrowed ? borrowedOrder : g4::CodeOrder::ready,
            0};
}

/// Adds up the room for copies of the tiles, 0 where they are borrowed.
tp_status measure(const tp_page_info& info, const tp_coded* tiles, std::size_t count, std::uint64_t& room) {
    room = 0;
    for (std::size_t k = 0; k < count; ++k) {
        if (!tiles[k].data && tiles[k].size != 0) return TP_E_ARGUMENT;
        if (tiles[k].size > kMostTileBytes) return TP_E_TOO_LARGE;
        if (tiles[k].data && !(info.flags & TP_BORROW)) room += tiles[k].size + kCodedBack;
    }
    return TP_OK;
}

bool fill(tp_page& page, const tp_coded* tiles, std::size_t count, std::uint64_t room) {
    const bool copied = page.grid.order == g4::CodeOrder::ready;
    if (!page.tiles.reserve(count) || (copied && !page.bytes.reserve(room))) return false;
    unsigned char* next = page.bytes.get();
    for (std::size_t k = 0; k < count; ++k) {
        const auto size = static_cast<std::uint32_t>(tiles[k].size);
        if (!tiles[k].data) continue;
        page.grid.longest = std::max(page.grid.longest, size);
        if (!copied) {
            page.tiles[k] = {static_cast<const unsigned char*>(tiles[k].data), size};
            continue;
        }
        if (size > 0) std::memcpy(next, tiles[k].data, size);
        if (page.info.fill_order == 2) reverseBitsInBytes(next, size);
        page.tiles[k] = {next, size};
        next += size + kCodedBack;
    }
    page.grid.tiles = page.tiles.get();
    return true;
}

}  // namespace

tp_status TILEPRESS_CALL tp_page_open(const tp_page_info* callersInfo, const tp_coded* tiles, std::size_t count,
                                      tp_page** page) {
    if (!page) return TP_E_ARGUMENT;
    *page = nullptr;
    tp_page_info info;
    if (!readRecord(info, callersInfo) || !tiles) return TP_E_ARGUMENT;
    if (const tp_status status = settle(info); status != TP_OK) return status;
    const PageTiles grid = gridOf(info);
    if (count != grid.layout.tiles()) return TP_E_ARGUMENT;
    std::uint64_t room = 0;
    if (const tp_status status = measure(info, tiles, count, room); status != TP_OK) return status;
    const std::uint64_t memory = sizeof(tp_page) + count * std::uint64_t{sizeof(CodedTile)} + room;
    if (info.limits.max_bytes != 0 && memory > info.limits.max_bytes) return TP_E_LIMIT;

    tp_page* const made = new (std::nothrow) tp_page;
    if (!made) return TP_E_MEMORY;
    made->info = info;
    made->grid = grid;
    made->memory = memory;
    if (!fill(*made, tiles, count, room)) {
        delete made;
        return TP_E_MEMORY;
    }
    *page = made;
    return TP_OK;
}

tp_page* TILEPRESS_CALL tp_page_retain(tp_page* page) {
    if (page) page->holders.fetch_add(1, std::memory_order_relaxed);
    return page;
}

void TILEPRESS_CALL tp_page_release(tp_page* page) {
    if (page && page->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete page;
}

tp_status TILEPRESS_CALL tp_page_describe(const tp_page* page, tp_page_info* info) {
    tp_page_info callers;
    if (!page || !readRecord(callers, info)) return TP_E_ARGUMENT;
    writeRecord(info, page->info, callers.size);
    return TP_OK;
}

std::uint64_t TILEPRESS_CALL tp_page_memory(const tp_page* page) {
    if (!page) return 0;
    const RelaidTiles* const relaid = page->relaid.load(std::memory_order_acquire);
    return page->memory + (relaid ? relaid->memory : 0);
}
