#pragma once

// What became of each page, as lines of JSON: for people, for --resume, and to be put together from many runs.

#include "base/file_reports.h"

#include <cstdint>
#include <string>
#include <unordered_map>

/// Where results go: a file, or standard output. Operations throw Failure.
class ResultLog {
public:
    /// Without a name: standard output, unless that is a terminal. With `resume` the file's good results are kept in
    /// mind and new ones are added behind. A file is one batch's at a time; another one waits a moment, then gives up.
    ResultLog(const std::string& name, bool resume);
    ~ResultLog();
    ResultLog(const ResultLog&) = delete;
    ResultLog& operator=(const ResultLog&) = delete;

    /// Size and checksum of the output that the page with this key left, "-" for one without an output, or empty.
    std::string made(std::uint64_t key) const;
    /// Adds a line and writes it out.
    void add(const Json& line);
    /// Ends the log. After a resumed run, lines go that newer ones replace, and earlier failures.
    void finish();

private:
    void lock();
    void readGood();
    void put(const std::string& text);
    [[noreturn]] void fail() const;

    std::string name_;
    int file_ = -1;
    bool silent_ = false, resumed_ = false, added_ = false;
    std::uint64_t before_ = 0;  ///< lines of earlier runs
    std::unordered_map<std::uint64_t, std::string> made_;
};
