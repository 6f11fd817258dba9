#include "ccitt/decode_row.h"

#include "ccitt/fast_row.h"

#include <algorithm>
#include <cstring>
#include <iterator>

// There are two decoders. The fast one handles rows whose positions increase all the way, against a reference that
// does, and gives up on anything else before it could differ; the row is then decoded again by the exact one.

namespace tilepress::g4 {
namespace {

// Sums of a position and a code stay within 32 bits below these.
constexpr std::int32_t kMaxWidth = kMaxListWidth, kMaxFastWidth = 0x3FFFFFFF;

bool canDecode(const CodedRow& row) { return row.width >= 0 && row.width <= kMaxWidth && row.reference.count >= 4; }

/// A row of a caller's words and arrays, of which nothing else is touched. Where few words are left, they are read from
/// a copy with zeros behind it, as which they count.
bool decodeWords(const CodedRow& row) {
    constexpr std::int64_t kFew = 32;
    const CodedData& in = row.in;
    const std::int64_t begin = row.bit / 16 * 2, left = in.length - begin;
    if (row.bit < 0 || left <= 0) return false;
    CallersLists::Copy copy;
    if (left >= kFew) {
        const CallersLists lists(row, in.bytes + (in.length & ~std::int64_t{1}), copy);
        return isRow(row.reference, row.width + 1) && decodeFast<WordBits>(row, lists);
    }
    if (!isRow(row.reference, row.width + 1)) return false;
    unsigned char words[kFew + sizeof(MachineWord)] = {};
    std::memcpy(words, in.bytes + begin, static_cast<std::size_t>(left));
    std::int64_t bit = row.bit - 8 * begin;
    const CodedData copied{words, kFew, true};
    const CodedRow last{copied, bit, row.reference, row.width, row.coding, row.count};
    if (!decodeFast<WordBits>(last, CallersLists(last, std::end(words), copy))) return false;
    row.bit = bit + 8 * begin;
    return true;
}

/// Apart, so that rows that are decoded fast need not hold anything for it.
[[gnu::noinline]] RowStatus decodeLineExactly(const CodedRow& row, Decoding how) {
    const RowStatus status = decodeExact(row, how);
    if (status != kRowDecoded) return status;
    std::fill_n(row.coding + row.count, kLineRepeats, row.width + 1);
    row.coding[kLineIrregular] = !isRow({row.coding, row.count}, row.width + 1);
    return kRowDecoded;
}

}  // namespace

RowStatus decodeRow(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width, std::int32_t* coding,
                    std::int32_t& codingCount) {
    const CodedRow row{in, bit, reference, width, coding, codingCount};
    if (!canDecode(row)) return kRowPastEnd;
    if (in.wordOrder && width <= kMaxFastWidth && decodeWords(row)) return kRowDecoded;
    return decodeExact(row, Decoding::classic);
}

RowStatus decodeLine(const CodedData& in, std::int64_t& bit, RowList reference, std::int32_t width,
                     std::int32_t* coding, std::int32_t& codingCount, Decoding how) {
    const CodedRow row{in, bit, reference, width, coding, codingCount};
    if (!canDecode(row)) return kRowPastEnd;
    coding[kLineIrregular] = 0;
    if (width <= kMaxFastWidth && reference.elements[kLineIrregular] == 0 && bit >= 0 && bit >> 3 <= in.length &&
        decodeFast<PlainBits>(row, PaddedLists(reference))) [[likely]]
        return kRowDecoded;
    return decodeLineExactly(row, how);
}

std::int32_t whiteLine(std::int32_t* line, std::int32_t width) {
    line[0] = 0;
    std::fill_n(line + 1, kLineRepeats + 2, width + 1);
    line[kLineIrregular] = 0;
    return kWhiteCount;
}

}  // namespace tilepress::g4
