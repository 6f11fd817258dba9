#pragma once

#include <cstdio>
#include <string>

/// A file that gets its name only when it is complete, so that nobody ever sees half of it; "-" is standard output,
/// and what is no regular file is written to directly. All operations throw Failure.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    /// Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    std::FILE* stream() const { return file_; }
    void write(const void* data, std::size_t bytes);
    /// Appends all of another stream.
    void copyFrom(std::FILE* other);
    /// Flushes, and gives the file its name.
    void commit();
    [[noreturn]] void fail() const;

private:
    void discard();

    std::string path_;
    std::string temporary_;  ///< empty when writing directly
    std::FILE* file_ = nullptr;
};
