#pragma once

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

/// Ends a command with a message and a code.
class Failure : public std::runtime_error {
public:
    Failure(Exit exitCode, const std::string& message) : std::runtime_error(message), code(exitCode) {}
    const Exit code;
};
