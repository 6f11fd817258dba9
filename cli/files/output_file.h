#pragma once

#include "files/input_file.h"
#include "files/temporary_file.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

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
    /// Closes the file, and gives it its name; while outputs are gathered, they do that.
    void commit();
    [[noreturn]] void fail() const;

private:
    void openTemporary();
    void discard();

    OutputOptions options_;
    std::string path_;                          ///< the options', links followed
    std::unique_ptr<TemporaryFile> temporary_;  ///< none when writing directly
    std::FILE* file_ = nullptr;
};

/// Outputs that are complete and wait for their names, so that many wait for the disk together. Whoever makes this
/// gathers all outputs of the process.
class GatheredOutputs {
public:
    /// So many at once, all of which a signal removes.
    static constexpr std::size_t kMost = 32;

    GatheredOutputs();
    ~GatheredOutputs();
    GatheredOutputs(const GatheredOutputs&) = delete;
    GatheredOutputs& operator=(const GatheredOutputs&) = delete;

    std::size_t count() const { return waiting_.size(); }
    /// What the output gathered last is called for now.
    const std::string& lastName() const { return waiting_.back().temporary->name(); }
    /// Waits until all are on the disk, and gives them their names. The result has, for each, what went wrong, or
    /// nothing. Waits for whole file systems, which takes no longer than for one of their files.
    std::vector<std::string> settle();
    /// Removes them.
    void discard();

private:
    friend class OutputFile;
    struct Output {
        std::unique_ptr<TemporaryFile> temporary;
        std::string path;
        bool mayReplace;
    };
    /// One to wait for.
    struct FileSystem {
        dev_t device;
        int descriptor;
    };
    /// False: errno says why it cannot be.
    bool watchSystemOf(int output);

    std::vector<Output> waiting_;
    std::vector<FileSystem> systems_;
};
