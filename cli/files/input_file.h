#pragma once

#include <cstdint>
#include <string>

/// A file to read, or, for "-", standard input, copied to a temporary file that has no name, so that readers can
/// move in it. Operations throw Failure.
class InputFile {
public:
    enum class Kind { tiff, png, pnm, other };

    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;
    /// The same file opened once more, with a place of its own.
    InputFile again() const;

    /// How messages call it.
    const std::string& name() const { return displayName_; }
    std::uint64_t bytes() const { return fileBytes_; }
    /// By the file's first bytes.
    Kind kind() const;
    /// Hands the descriptor to the caller, who closes it.
    int release();

private:
    InputFile(const std::string& path, std::string name);

    std::string displayName_;
    int file_ = -1;
    std::uint64_t fileBytes_ = 0;
};
