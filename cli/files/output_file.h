#pragma once

#include "files/input_file.h"
#include "files/temporary_file.h"

#include <cstdio>
#include <optional>
#include <string>

/// Where a command's result goes, and what may be replaced.
struct OutputOptions {
    std::string path;
    bool force = false;         ///< even the input
    bool keepExisting = false;  ///< nothing at all

    /// Whether there is something already that must be kept; says so.
    bool isDone() const;
    /// Throws Failure when the output is the input, by whatever name, and that is not forced.
    void requireApart(const InputFile& input) const;
};

/// A file that gets its name only when it is complete and on the disk, so that nobody ever sees half of it; "-" is
/// standard output, and what is no regular file is written to directly. An existing file's mode stays, and symbolic
/// links stay links. All operations throw Failure.
class OutputFile {
public:
    explicit OutputFile(OutputOptions options);
    /// Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* stream() const { return file_; }
    void write(const void* data, std::size_t bytes);
    /// Appends all of another stream.
    void copyFrom(std::FILE* other);
    /// Closes the file, and gives it its name.
    void commit();
    [[noreturn]] void fail() const;

private:
    void openTemporary();
    void discard();

    OutputOptions options_;
    std::string path_;                        ///< the options', links followed
    std::optional<TemporaryFile> temporary_;  ///< none when writing directly
    std::FILE* file_ = nullptr;
};
