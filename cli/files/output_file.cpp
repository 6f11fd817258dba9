#include "files/output_file.h"

#include "base/failure.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace {

// What an interruption must not leave behind: a copy of the name that a signal handler may read.
char pendingName[4096];

void removePending(int signal) {
    if (pendingName[0]) unlink(pendingName);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void setPending(const std::string& name) {
    pendingName[0] = 0;
    if (name.empty() || name.size() >= sizeof pendingName) return;
    std::memcpy(pendingName + 1, name.c_str() + 1, name.size());
    pendingName[0] = name[0];
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, removePending);
}

bool isOtherThanFile(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace

OutputFile::OutputFile(const std::string& name) : path_(name) {
    if (path_ == "-") {
        if (isatty(STDOUT_FILENO)) throw Failure(Exit::failed, "a picture is not written to a terminal");
        file_ = stdout;
    } else if (isOtherThanFile(path_)) {
        file_ = std::fopen(path_.c_str(), "wb");
    } else {
        temporary_ = path_ + ".XXXXXX";
        const int descriptor = mkstemp(temporary_.data());
        if (descriptor < 0) {
            temporary_.clear();
            fail();
        }
        setPending(temporary_);
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(descriptor, 0666 & ~mask);
        file_ = fdopen(descriptor, "wb");
    }
    if (!file_) fail();
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::discard() {
    if (file_ && file_ != stdout) std::fclose(file_);
    file_ = nullptr;
    if (!temporary_.empty()) unlink(temporary_.c_str());
    temporary_.clear();
    setPending({});
}

void OutputFile::fail() const {
    throw Failure(Exit::failed, fmt::format("{}: {}", path_ == "-" ? "standard output" : path_, std::strerror(errno)));
}

void OutputFile::write(const void* data, std::size_t bytes) {
    if (std::fwrite(data, 1, bytes, file_) != bytes) fail();
}

void OutputFile::copyFrom(std::FILE* other) {
    std::array<char, 65536> block;
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), other)) write(block.data(), got);
    if (std::ferror(other)) fail();
}

void OutputFile::commit() {
    if (std::fflush(file_) != 0 || std::ferror(file_)) fail();
    if (!temporary_.empty()) {
        if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail();
        temporary_.clear();
    }
    discard();
}
