#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <string>

struct stat;

/// A file to read. Standard input, "-", and pipes with a name are copied to a temporary file that has none, so that
/// readers can move in it. Operations throw Failure.
class InputFile {
public:
    enum class Kind { tiff, pdf, png, pnm, other };

    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(InputFile&& other) noexcept;
    InputFile& operator=(InputFile&&) = delete;
    /// The same file opened once more, with a place of its own.
    InputFile again() const;

    /// Whether `other` is the file that was asked for.
    bool isAt(const struct stat& other) const;
    /// Whether both are one file by one name, which has not been written to in between.
    bool isSameAs(const InputFile& other) const;
    /// How messages call it.
    const std::string& name() const { return displayName_; }
    std::uint64_t bytes() const { return fileBytes_; }
    /// By the file's first bytes.
    Kind kind() const;
    bool isPicture() const { return kind() == Kind::png || kind() == Kind::pnm; }
    /// Hands the descriptor to the caller, who closes it.
    int release();

private:
    InputFile(const std::string& path, std::string name);

    std::string displayName_;
    int file_ = -1;
    std::uint64_t fileBytes_ = 0;
    dev_t device_ = 0;  ///< of the file that was asked for, with the number there; 0 and 0 when it is no file
    ino_t number_ = 0;
    timespec written_{};
};
