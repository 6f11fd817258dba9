#pragma once

// What the encoder looks up: the codes of a run's two parts. Built by the compiler.

#include "ccitt/t4_codes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace tilepress::g4 {

/// A code word, left-aligned: the first bit sent is the highest.
struct CodeWord {
    std::uint16_t bits;
    std::uint16_t length;
};

inline constexpr std::int32_t kLongestMakeUp = 2560;

/// Codes of each colour, white first.
struct EncodeTables {
    std::array<CodeWord, 64> terminating[2];
    /// By run / 64; entry 0 is empty, so that a run always has two parts.
    std::array<CodeWord, kLongestMakeUp / 64 + 1> makeUp[2];
};

constexpr EncodeTables makeEncodeTables() {
    EncodeTables t{};
    for (int colour = 0; colour < 2; ++colour)
        for (const RunCode& code : colour == 0 ? kWhiteCodes : kBlackCodes)
            (code.run < 64 ? t.terminating[colour][code.run] : t.makeUp[colour][code.run / 64u]) = {code.bits,
                                                                                                    code.length};
    return t;
}

inline constexpr EncodeTables kEncodeTables = makeEncodeTables();

static_assert(kEncodeTables.terminating[0][0].bits == 0x3500 && kEncodeTables.terminating[0][0].length == 8);
static_assert(kEncodeTables.makeUp[0][1].bits == 0xD800 && kEncodeTables.makeUp[1][40].bits == 0x01F0);
static_assert(kEncodeTables.makeUp[1][0].length == 0);

}  // namespace tilepress::g4
