#include "output_file.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "failure.h"

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

OutputFile::OutputFile(const std::string& name) : path(name) {
    if (path == "-") {
        if (isatty(STDOUT_FILENO)) throw Failure(Exit::failed, "a picture is not written to a terminal");
        file = stdout;
    } else if (isOtherThanFile(path)) {
        file = std::fopen(path.c_str(), "wb");
    } else {
        temporary = path + ".XXXXXX";
        const int descriptor = mkstemp(temporary.data());
        if (descriptor < 0) {
            temporary.clear();
            fail();
        }
        setPending(temporary);
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(descriptor, 0666 & ~mask);
        file = fdopen(descriptor, "wb");
    }
    if (!file) fail();
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::discard() {
    if (file && file != stdout) std::fclose(file);
    file = nullptr;
    if (!temporary.empty()) unlink(temporary.c_str());
    temporary.clear();
    setPending({});
}

void OutputFile::fail() const {
    throw Failure(Exit::failed, fmt::format("{}: {}", path == "-" ? "standard output" : path, std::strerror(errno)));
}

void OutputFile::write(const void* data, std::size_t bytes) {
    if (std::fwrite(data, 1, bytes, file) != bytes) fail();
}

void OutputFile::copyFrom(std::FILE* other) {
    std::array<char, 65536> block;
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), other)) write(block.data(), got);
    if (std::ferror(other)) fail();
}

void OutputFile::commit() {
    if (std::fflush(file) != 0 || std::ferror(file)) fail();
    if (!temporary.empty()) {
        if (std::rename(temporary.c_str(), path.c_str()) != 0) fail();
        temporary.clear();
    }
    discard();
}
