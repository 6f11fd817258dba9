#pragma once

// Group 4 streams for tests, written as code words or made from pictures by a
// coder that knows horizontal mode only.

#include "ccitt/t4_codes.h"
#include "support/owned.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace support {

/// "1 001 00110101": bits as written, padded with zeros to whole 16-bit words.
inline Bytes bits(std::string_view text) {
    Bytes bytes;
    unsigned count = 0;
    for (char c : text) {
        if (c == ' ') continue;
        if (count % 8 == 0) bytes.push_back(0);
        if (c == '1') bytes.back() = static_cast<unsigned char>(bytes.back() | 0x80 >> count % 8);
        ++count;
    }
    if (bytes.size() % 2) bytes.push_back(0);
    return bytes;
}

/// "26 BC"
inline Bytes hex(std::string_view text) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 3)
        bytes.push_back(static_cast<unsigned char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16)));
    return bytes;
}

/// A plain stream in the order that the decoder's callers give: the bytes of every pair exchanged.
inline Bytes exchanged(Bytes bytes) {
    if (bytes.size() % 2) bytes.push_back(0);
    for (std::size_t i = 0; i < bytes.size(); i += 2) std::swap(bytes[i], bytes[i + 1]);
    return bytes;
}

inline std::string runText(int run, bool black) {
    const auto& codes = black ? tilepress::g4::kBlackCodes : tilepress::g4::kWhiteCodes;
    std::string text;
    const auto put = [&](int value) {
        for (const auto& code : codes)
            if (code.run == value)
                for (int i = 0; i < code.length; ++i) text += code.bits >> (15 - i) & 1 ? '1' : '0';
    };
    for (; run > 2560 + 63; run -= 2560) put(2560);
    if (run >= 64) put(run / 64 * 64);
    put(run % 64);
    return text;
}

/// One row ("0110...") in horizontal mode.
inline std::string rowText(std::string_view row) {
    std::string text;
    std::size_t x = 0;
    const auto run = [&](char colour) {
        const std::size_t from = x;
        while (x < row.size() && row[x] == colour) ++x;
        return static_cast<int>(x - from);
    };
    while (x < row.size()) {
        const int white = run('0'), black = run('1');
        text += "001" + runText(white, false) + runText(black, true);
    }
    return text;
}

inline const char* const kEndOfBlockText = "000000000001000000000001";

}  // namespace support
