#pragma once

// What the decoder looks up: the next code, the next few codes, and the length of the next run. Built by the compiler.

#include "ccitt/t4_codes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// Mode numbers, in the order in which the code words of T.6 sort.
enum Mode : std::uint8_t {
    kEndOfBlock = 0,  // seven zero bits: perhaps an end-of-block
    kExtension = 1,
    kVertical = 2,  // 2 to 8: a1 three left of b1 to three right of it
    kPass = 9,
    kHorizontal = 10
};

struct ModeEntry {
    std::uint8_t mode;
    std::uint8_t length;  // bits; 0 for what is no code
    std::int8_t delta;    // vertical modes: a1 - b1
};

inline constexpr unsigned kModeBits = 7;
using ModeTable = std::array<ModeEntry, 1 << kModeBits>;

constexpr void fillMode(ModeTable& table, ModeCode code, Mode mode, int delta = 0) {
    const unsigned spare = kModeBits - code.length;
    for (unsigned i = 0; i < 1u << spare; ++i)
        table[(unsigned{code.bits} << spare) + i] = {mode, code.length, static_cast<std::int8_t>(delta)};
}

constexpr ModeTable makeModes() {
    ModeTable t{};
    t[0] = {kEndOfBlock, 0, 0};
    t[1] = {kExtension, 0, 0};
    for (int k = 0; k < 7; ++k) fillMode(t, kVerticalCodes[k], static_cast<Mode>(kVertical + k), k - 3);
    fillMode(t, kPassCode, kPass);
    fillMode(t, kHorizontalCode, kHorizontal);
    return t;
}

inline constexpr ModeTable kModes = makeModes();
static_assert(kModes[0].length == 0 && kModes[1].mode == kExtension);
static_assert(kModes[127].mode == kVertical + 3 && kModes[127].length == 1);

// --- groups of codes --------------------------------------------------------------

/// What the next bits begin with, as far as they hold it whole: up to four vertical codes, then perhaps a pass code,
/// then perhaps the "001" of a horizontal code.
struct CodeGroup {
    std::uint32_t deltas;  // a1 - b1 of each vertical code in a byte, the first lowest
    std::uint8_t length;   // bits of all of them
    std::uint8_t lanes;    // the low bits: one for each vertical code, or the first for a pass code alone;
                           // kRunsFollow after "001", kNoCode where there is none of the three
    std::uint8_t changes;  // elements that the row gains: one for each vertical code
    std::uint8_t advance;  // elements that the cursor moves on: the same, and two for a pass code
};

/// Enough for four vertical codes most of the time, and for any single code.
inline constexpr unsigned kGroupBits = 10;
static_assert(kGroupBits >= kModeBits);
inline constexpr unsigned kMaxChanges = 4, kMaxAdvance = kMaxChanges + 2;
inline constexpr std::uint8_t kRunsFollow = 0x10, kNoCode = 0x20;

struct GroupTables {
    std::array<CodeGroup, 1 << kGroupBits> groups;
    /// The bits of the first one, two, three and four vertical codes, in four bits each, the first lowest; else 0.
    std::array<std::uint16_t, 1 << kGroupBits> lengths;
};

/// Takes the codes of a group one by one.
class GroupParser {
public:
    constexpr explicit GroupParser(unsigned bits) : bits_(bits) {
        ModeEntry code = next();
        for (; group_.changes < kMaxChanges && isVertical(code); code = next()) {
            group_.deltas |= std::uint32_t{static_cast<std::uint8_t>(code.delta)} << 8 * group_.changes;
            take(code);
            lengths_ = static_cast<std::uint16_t>(lengths_ | group_.length << 4 * group_.changes++);
        }
        group_.advance = group_.changes;
        group_.lanes = static_cast<std::uint8_t>((1u << group_.changes) - 1);
        if (code.mode == kPass && code.length != 0) {
            group_.advance = static_cast<std::uint8_t>(group_.advance + 2);
            group_.lanes |= 1;
            take(code);
            code = next();
        }
        if (code.mode == kHorizontal && code.length != 0) {
            group_.lanes |= kRunsFollow;
            take(code);
        }
        if (group_.length == 0) group_.lanes = kNoCode;
    }
    constexpr CodeGroup group() const { return group_; }
    constexpr std::uint16_t lengths() const { return lengths_; }

private:
    /// The next code; one of no length where the bits do not hold it whole.
    constexpr ModeEntry next() const {
        // What lies beyond the bits at hand reads as 0, which begins a longer code than there is room for.
        const unsigned left = bits_ << group_.length & ((1u << kGroupBits) - 1);
        const ModeEntry code = kModes[left >> (kGroupBits - kModeBits)];
        return group_.length + code.length <= kGroupBits ? code : ModeEntry{};
    }
    static constexpr bool isVertical(ModeEntry code) { return code.length != 0 && code.mode < kPass; }
    constexpr void take(ModeEntry code) { group_.length = static_cast<std::uint8_t>(group_.length + code.length); }

    unsigned bits_;
    CodeGroup group_{};
    std::uint16_t lengths_ = 0;
};

constexpr GroupTables makeGroups() {
    GroupTables t{};
    for (unsigned bits = 0; bits < t.groups.size(); ++bits) {
        const GroupParser parser(bits);
        t.groups[bits] = parser.group();
        t.lengths[bits] = parser.lengths();
    }
    return t;
}

inline constexpr GroupTables kCodeGroups = makeGroups();

constexpr bool groupIs(unsigned bits, CodeGroup expected, unsigned lengths) {
    const CodeGroup& g = kCodeGroups.groups[bits];
    return g.deltas == expected.deltas && g.length == expected.length && g.lanes == expected.lanes &&
           g.changes == expected.changes && g.advance == expected.advance && kCodeGroups.lengths[bits] == lengths;
}
// Entry by entry: directly below, one right, one left, directly below, and two bits that are left over.
static_assert(groupIs(0b1'011'010'1'00, {0x00FF0100, 8, 0b1111, 4, 4}, 0x8741));
// Directly below, pass, horizontal.
static_assert(groupIs(0b1'0001'001'00, {0, 8, 0b0001 | kRunsFollow, 1, 3}, 0x0001));
// Pass alone, then a code (three left) that is not there whole.
static_assert(groupIs(0b0001'000001, {0, 4, 0b0001, 0, 2}, 0));
// Horizontal at once, and no code.
static_assert(groupIs(0b001'1111111, {0, 3, kRunsFollow, 0, 0}, 0) && groupIs(1, {0, 0, kNoCode, 0, 0}, 0));

// --- runs -------------------------------------------------------------------------

/// The bits of the longest run code.
inline constexpr unsigned kRunBits = 13;

/// Where a table has the run code that `bits`, the next kRunBits, begin with: codes that begin with four zeros are told
/// apart by all of them, the others by nine.
constexpr std::size_t runSlot(std::size_t bits) { return bits < 512 ? bits : 512 + (bits >> 4); }

/// Run codes of a colour: the run times 16 and the code's length, or kNoRun.
using RunTable = std::array<std::uint16_t, 1024>;
inline constexpr unsigned kNoRun = 0xFFF0;
/// From here on a code is a make-up code or none.
inline constexpr unsigned kMakeUp = 64 * 16;

using RunCodes = std::array<RunCode, kRunCodes>;

constexpr RunTable makeRuns(const RunCodes& codes) {
    RunTable t{};
    t.fill(kNoRun);
    for (const RunCode& code : codes) {
        const unsigned first = static_cast<unsigned>(code.bits) >> (16 - kRunBits);
        for (unsigned i = 0; i < 1u << (kRunBits - code.length); ++i)
            t[runSlot(first + i)] = static_cast<std::uint16_t>(code.run << 4 | code.length);
    }
    return t;
}

/// White, black.
inline constexpr RunTable kRuns[2] = {makeRuns(kWhiteCodes), makeRuns(kBlackCodes)};

/// Whether no two codes share a slot.
constexpr bool slotsHold(const RunCodes& codes) {
    return std::all_of(codes.begin(), codes.end(),
                       [](const RunCode& code) { return code.bits >> 12 == 0 || code.length <= 9; });
}
static_assert(slotsHold(kWhiteCodes) && slotsHold(kBlackCodes));
constexpr unsigned longest(const RunCodes& codes, unsigned runsBelow) {
    unsigned length = 0;
    for (const RunCode& code : codes)
        if (code.run < runsBelow) length = std::max<unsigned>(length, code.length);
    return length;
}
/// What two runs take at most of which the first has no make-up code; of the second only the first code counts.
inline constexpr unsigned kTwoRunsBits = std::max(longest(kWhiteCodes, 64) + longest(kBlackCodes, 2561),
                                                  longest(kBlackCodes, 64) + longest(kWhiteCodes, 2561));
static_assert(kTwoRunsBits == 24);

// Only eight zero bits begin no run code, in either colour.
static_assert(kRuns[0][runSlot(0x1F)] == kNoRun && kRuns[1][runSlot(0x1F)] == kNoRun);
static_assert(kRuns[0][runSlot(0x0380)] == (1 << 4 | 6) && kRuns[1][runSlot(0x1800)] == (2 << 4 | 2));

}  // namespace tilepress::g4
