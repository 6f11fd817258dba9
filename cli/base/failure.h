#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>

/// What the program ends with.
enum class Exit : int {
    good = 0,
    failed = 1,       ///< usage, files, memory
    damaged = 2,      ///< damaged Group 4 data; what could be decoded is written
    unsupported = 3,  ///< not a bilevel Group 4 TIFF, or a feature that is not supported
    tooLarge = 4      ///< a size limit
};

/// Where an allocation fails.
constexpr const char* kMemoryMessage = "not enough memory; --max-memory allows more";

/// The more serious of two ends, of files looked at one after the other: damage, then failures, limits and what is not
/// supported.
constexpr Exit worse(Exit a, Exit b) {
    const auto weight = [](Exit exit) {
        switch (exit) {
        case Exit::good: return 0;
        case Exit::unsupported: return 1;
        case Exit::tooLarge: return 2;
        case Exit::failed: return 3;
        default: return 4;
        }
    };
    return weight(a) < weight(b) ? b : a;
}

/// The end that a library's failure means, right after it: a limit where the system had no memory for it.
inline Exit exitByReason(int systemError, Exit otherwise) { return systemError == ENOMEM ? Exit::tooLarge : otherwise; }

/// Ends a command with a message and a code.
class Failure : public std::runtime_error {
public:
    Failure(Exit exitCode, const std::string& message) : std::runtime_error(message), code(exitCode) {}
    const Exit code;
};
