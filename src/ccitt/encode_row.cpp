#include "ccitt/encode_row.h"

#include "foundation/contract.h"

#include <algorithm>

namespace tilepress::g4 {
namespace {

constexpr CodeWord aligned(ModeCode code) {
    return {static_cast<std::uint16_t>(code.bits << (16 - code.length)), code.length};
}
constexpr CodeWord kPassWord = aligned(kPassCode), kHorizontalWord = aligned(kHorizontalCode);
/// Vertical modes by a1 - b1 + 3.
constexpr CodeWord kVerticalWords[7] = {
    aligned(kVerticalCodes[0]), aligned(kVerticalCodes[1]), aligned(kVerticalCodes[2]), aligned(kVerticalCodes[3]),
    aligned(kVerticalCodes[4]), aligned(kVerticalCodes[5]), aligned(kVerticalCodes[6])};

// Bits of a run's make-up code and its terminating code, below 2560, and of a horizontal code with two of them.
constexpr unsigned kRunCodesBits = 13 + 12, kHorizontalBits = 3 + (12 + 8) + kRunCodesBits;

/// Flushes between codes of `needed` bits in all where the writer has no room for all of them.
template <unsigned needed, class Writer>
inline void flushFor(Writer& out) {
    static_assert(Writer::kFree >= 13);
    if constexpr (Writer::kFree < needed) out.flush();
}

inline bool isVertical(std::int32_t d) { return static_cast<std::uint32_t>(d) + 3 <= 6; }

/// Vertical codes between flushes.
template <class Writer>
inline constexpr unsigned kCodesAtOnce = std::min(Writer::kFree / 7, 4u);

template <class Writer>
inline void putRun(int colour, Writer& out, std::int32_t run) {
    for (; run >= kLongestMakeUp; run -= kLongestMakeUp) {
        out.put(kEncodeTables.makeUp[colour][kLongestMakeUp / 64]);
        out.flush();
    }
    const auto length = static_cast<std::uint32_t>(run);
    out.put(kEncodeTables.makeUp[colour][length / 64]);
    flushFor<kRunCodesBits>(out);
    out.put(kEncodeTables.terminating[colour][length % 64]);
}

}  // namespace

// Every code has a1 = *cur and b1 = *ref, the first reference element of the right
// parity past a0. After a vertical code the next one is one on nearly always, which is
// a branch, so that no code waits for the one before it; else one before or three on (b2
// is not left of a1, or the code were a pass). As a1 stops at the end, ref never passes
// the first of the list's two closing elements.
template <class Writer>
void encodeRow(Writer& writer, RowList reference, RowList coding) {
    const std::int32_t *ref = reference.elements + 1, *cur = coding.elements + 1;
    const std::int32_t end = coding.elements[coding.count - 1];
    TILEPRESS_DEMAND(isRow(reference, end) && isRow(coding, end));
    Writer out = writer;      // in registers
    std::int32_t passed = 0;  // b2 of the last pass code
    for (;;) {
        unsigned waiting = 0;
        while (ref[1] > *cur && ref[-1] <= *cur && isVertical(*cur - *ref)) [[likely]] {
                out.put(kVerticalWords[*cur++ - *ref++ + 3]);
                if (++waiting == kCodesAtOnce<Writer>) {
                    out.flush();
                    waiting = 0;
                }
            }
        out.flush();
        const std::int32_t a1 = *cur, b2 = ref[1], d = a1 - *ref;
        if (b2 < a1) {
            out.put(kPassWord);
            passed = b2;
            ref += 2;
        } else if (isVertical(d)) {
            out.put(kVerticalWords[d + 3]);
            if (a1 == end) break;
            ref += 1 - 2 * (ref[-1] > a1) + 2 * (b2 == a1);
            ++cur;
        } else {
            const std::int32_t a0 = std::max(cur[-1], passed), a2 = cur[1];
            const int black = (cur - coding.elements) % 2 == 0;
            out.put(kHorizontalWord);
            flushFor<kHorizontalBits>(out);
            putRun(black, out, a1 - a0 - (a0 == 0));  // columns count from 1
            flushFor<kHorizontalBits>(out);
            putRun(!black, out, a2 - a1);
            if (a2 == end) break;
            cur += 2;
            while (*ref <= a2) ref += 2;
        }
        out.flush();
    }
    out.flush();
    writer = out;
}

template void encodeRow(PlainWriter&, RowList, RowList);
template void encodeRow(WordWriter&, RowList, RowList);

}  // namespace tilepress::g4
