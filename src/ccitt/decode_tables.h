#pragma once

// What the decoder looks up: the mode of the next code and the length of the next run. Built by the compiler.

#include "ccitt/t4_codes.h"

#include <array>
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
    std::uint8_t pass;    // 1 for pass
};

/// A run code by the next 13 bits; a negative run is no code.
struct RunEntry {
    std::int16_t run;
    std::uint16_t length;
};

/// The vertical codes that the next bits begin with, four at most.
struct VerticalCodes {
    std::uint32_t deltas;  // a1 - b1 of each in a byte, the first lowest
    std::uint8_t count;
    std::uint8_t length;    // bits of all
    std::uint16_t lengths;  // of the first one, two, three and four, in four bits each
};

inline constexpr unsigned kModeBits = 7, kRunBits = 13, kVerticalBits = 10;
inline constexpr std::int16_t kNoRun = -9;

struct DecodeTables {
    std::array<ModeEntry, 1 << kModeBits> mode;
    std::array<RunEntry, 1 << kRunBits> run[2];  // white, black
    std::array<VerticalCodes, 1 << kVerticalBits> verticals;
};

using ModeTable = std::array<ModeEntry, 1 << kModeBits>;

constexpr void fillMode(ModeTable& table, unsigned code, unsigned length, ModeEntry entry) {
    const unsigned spare = kModeBits - length;
    entry.length = static_cast<std::uint8_t>(length);
    for (unsigned i = 0; i < 1u << spare; ++i) table[(code << spare) + i] = entry;
}

constexpr ModeTable makeModeTable() {
    ModeTable t{};
    t[0] = {kEndOfBlock, 0, 0, 0};
    t[1] = {kExtension, 0, 0, 0};
    fillMode(t, 0b0000010, 7, {kVertical + 0, 0, -3, 0});
    fillMode(t, 0b000010, 6, {kVertical + 1, 0, -2, 0});
    fillMode(t, 0b010, 3, {kVertical + 2, 0, -1, 0});
    fillMode(t, 0b1, 1, {kVertical + 3, 0, 0, 0});
    fillMode(t, 0b011, 3, {kVertical + 4, 0, 1, 0});
    fillMode(t, 0b000011, 6, {kVertical + 5, 0, 2, 0});
    fillMode(t, 0b0000011, 7, {kVertical + 6, 0, 3, 0});
    fillMode(t, 0b0001, 4, {kPass, 0, 0, 1});
    fillMode(t, 0b001, 3, {kHorizontal, 0, 0, 0});
    return t;
}

constexpr VerticalCodes verticalCodes(const ModeTable& modes, unsigned bits) {
    VerticalCodes codes{};
    while (codes.count < 4) {
        // What lies beyond the bits at hand reads as 0, which begins a longer code than there is room for.
        const unsigned next = bits << codes.length & ((1u << kVerticalBits) - 1);
        const ModeEntry mode = modes[next >> (kVerticalBits - kModeBits)];
        if (mode.length == 0 || mode.mode >= kPass || codes.length + mode.length > kVerticalBits) break;
        codes.length = static_cast<std::uint8_t>(codes.length + mode.length);
        codes.lengths = static_cast<std::uint16_t>(codes.lengths | codes.length << 4 * codes.count);
        codes.deltas |= std::uint32_t{static_cast<std::uint8_t>(mode.delta)} << 8 * codes.count++;
    }
    return codes;
}

constexpr std::array<VerticalCodes, 1 << kVerticalBits> makeVerticals() {
    std::array<VerticalCodes, 1 << kVerticalBits> t{};
    const ModeTable modes = makeModeTable();
    for (unsigned bits = 0; bits < t.size(); ++bits) t[bits] = verticalCodes(modes, bits);
    return t;
}

constexpr DecodeTables makeDecodeTables() {
    DecodeTables t{};
    t.mode = makeModeTable();
    t.verticals = makeVerticals();
    for (int colour = 0; colour < 2; ++colour) {
        t.run[colour].fill({kNoRun, 0});
        for (const RunCode& code : colour == 0 ? kWhiteCodes : kBlackCodes) {
            const unsigned spare = kRunBits - code.length;
            const unsigned first = static_cast<unsigned>(code.bits) >> (16 - kRunBits);
            for (unsigned i = 0; i < 1u << spare; ++i)
                t.run[colour][first + i] = {static_cast<std::int16_t>(code.run), code.length};
        }
    }
    return t;
}

inline constexpr DecodeTables kDecodeTables = makeDecodeTables();

static_assert(kDecodeTables.mode[0].length == 0 && kDecodeTables.mode[1].mode == kExtension);
// V0, one right, one left, V0.
static_assert(kDecodeTables.verticals[0b1011010100].count == 4 && kDecodeTables.verticals[0b1011010100].length == 8);
static_assert(kDecodeTables.verticals[0b1011010100].deltas == 0x00FF0100 &&
              kDecodeTables.verticals[0b1011010100].lengths == 0x8741);
static_assert(kDecodeTables.mode[127].mode == kVertical + 3 && kDecodeTables.mode[127].length == 1);
// Only eight zero bits begin no run code, in either colour.
static_assert(kDecodeTables.run[0][0x1F].run == kNoRun && kDecodeTables.run[1][0x1F].run == kNoRun);
static_assert(kDecodeTables.run[0][0x0380].run == 1 && kDecodeTables.run[1][0x1800].run == 2);

}  // namespace tilepress::g4
