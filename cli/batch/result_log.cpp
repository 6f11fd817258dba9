#include "batch/result_log.h"

#include "base/failure.h"
#include "base/stable_hash.h"
#include "files/output_file.h"
#include "files/temporary_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <unordered_map>

namespace {

/// A line's JSON; not an object when the line is none, as the last one of a run that was cut short may be.
Json parsed(const std::string& line) { return Json::parse(line, nullptr, false); }

/// What a line is about.
std::uint64_t subject(const Json& line) {
    std::string text;
    for (const char* field : {"file", "fileEscaped", "page", "output"})
        text += line.value(field, Json()).dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
    return stableHash(text);
}

}  // namespace

ResultLog::ResultLog(const std::string& name, bool resume) : name_(name), resumed_(resume) {
    if (name.empty() || name == "-") {
        if (resume) throw Failure(Exit::failed, "--resume needs --log, the results of the run before");
        file_ = STDOUT_FILENO;
        silent_ = name.empty() && isatty(STDOUT_FILENO);
        return;
    }
    file_ = open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file_ < 0) fail();
    lock();
    unlink(TemporaryFile::nameFor(name).c_str());
    if (resume) readGood();
    else if (ftruncate(file_, 0) != 0) fail();
}

ResultLog::~ResultLog() {
    if (file_ > STDOUT_FILENO) close(file_);
}

void ResultLog::fail() const {
    throw Failure(Exit::failed, fmt::format("{}: {}", name_.empty() ? "results" : name_, std::strerror(errno)));
}

// Workers hold the lock as well: it is free when the last of an earlier run has ended.
void ResultLog::lock() {
    constexpr int kTries = 100;
    for (int i = 0; flock(file_, LOCK_EX | LOCK_NB) != 0; ++i) {
        if (errno != EWOULDBLOCK && errno != EINTR) fail();
        if (i == kTries) throw Failure(Exit::failed, name_ + ": another batch is writing to it");
        usleep(50'000);
    }
}

void ResultLog::readGood() {
    std::ifstream lines(name_, std::ios::binary);
    bool whole = true;
    for (std::string line; std::getline(lines, line); ++before_) {
        whole = !lines.eof();
        const Json json = parsed(line);
        if (!json.is_object() || json.value("exit", -1) != 0) continue;
        made_[std::strtoull(json.value("key", "").c_str(), nullptr, 16)] = json.value("made", "");
    }
    if (!whole) put("\n");  // after half a line
}

std::string ResultLog::made(std::uint64_t key) const {
    const auto found = made_.find(key);
    return found == made_.end() ? std::string() : found->second;
}

void ResultLog::add(const Json& line) {
    if (silent_) return;
    put(line.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n');
    added_ = true;
}

void ResultLog::put(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        const ssize_t written = write(file_, text.data() + at, text.size() - at);
        if (written < 0 && errno != EINTR) fail();
        if (written > 0) at += static_cast<std::size_t>(written);
    }
}

void ResultLog::finish() {
    if (file_ <= STDOUT_FILENO) return;
    if (fsync(file_) != 0 && errno != EINVAL) fail();
    if (!resumed_ || (!added_ && before_ == made_.size())) return;
    std::unordered_map<std::uint64_t, std::uint64_t> last;  // line number of each subject's last line
    const auto forLines = [this](const auto& visit) {
        std::ifstream lines(name_, std::ios::binary);
        std::uint64_t number = 0;
        for (std::string line; std::getline(lines, line); ++number)
            if (const Json json = parsed(line); json.is_object()) visit(number, line, json);
    };
    forLines([&](std::uint64_t number, const std::string&, const Json& json) { last[subject(json)] = number; });
    OutputFile compact({name_, true, false});
    forLines([&](std::uint64_t number, std::string line, const Json& json) {
        // What failed before has been tried again.
        if (last[subject(json)] != number || (number < before_ && json.value("exit", -1) != 0)) return;
        line += '\n';
        compact.write(line.data(), line.size());
    });
    compact.commit();
}
