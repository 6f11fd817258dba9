#pragma once

#include <cstdint>
#include <string>

/// 64-bit FNV-1a, the same everywhere and always.
inline std::uint64_t stableHash(const std::string& bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return hash;
}
