#include "files/input_file.h"

#include "base/failure.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <utility>

namespace {

// What a classic TIFF can address.
constexpr std::uint64_t kMostStandardInput = std::uint64_t{1} << 32;

[[noreturn]] void fail(const std::string& what) {
    throw Failure(Exit::failed, fmt::format("{}: {}", what, std::strerror(errno)));
}

void writeAll(int file, const char* data, std::size_t bytes) {
    while (bytes > 0) {
        const ssize_t written = write(file, data, bytes);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) fail("temporary file");
        data += written;
        bytes -= static_cast<std::size_t>(written);
    }
}

int copyOfStandardInput() {
    std::FILE* const unnamed = std::tmpfile();
    if (!unnamed) fail("temporary file");
    const int file = dup(fileno(unnamed));
    std::fclose(unnamed);
    if (file < 0) fail("temporary file");
    std::array<char, 65536> block;
    std::uint64_t total = 0;
    for (;;) {
        const ssize_t got = read(STDIN_FILENO, block.data(), block.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail("standard input");
        if (got == 0) break;
        total += static_cast<std::uint64_t>(got);
        if (total > kMostStandardInput) throw Failure(Exit::tooLarge, "standard input: more than 4 GiB");
        writeAll(file, block.data(), static_cast<std::size_t>(got));
    }
    lseek(file, 0, SEEK_SET);
    return file;
}

bool startsWith(const unsigned char* bytes, std::string_view with) {
    return std::memcmp(bytes, with.data(), with.size()) == 0;
}

}  // namespace

InputFile::InputFile(const std::string& path) : InputFile(path, path == "-" ? "standard input" : path) {}

InputFile InputFile::again() const { return {fmt::format("/proc/self/fd/{}", file_), displayName_}; }

InputFile::InputFile(const std::string& path, std::string name) : displayName_(std::move(name)) {
    file_ = path == "-" ? copyOfStandardInput() : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file_ < 0) fail(path);
    struct stat status;
    const bool regular = fstat(file_, &status) == 0 && S_ISREG(status.st_mode);
    if (regular) {
        fileBytes_ = static_cast<std::uint64_t>(status.st_size);
        return;
    }
    close(file_);
    throw Failure(Exit::failed, displayName_ + ": not a regular file");
}

InputFile::~InputFile() {
    if (file_ >= 0) close(file_);
}

InputFile::InputFile(InputFile&& other) noexcept
    : displayName_(std::move(other.displayName_)), file_(std::exchange(other.file_, -1)), fileBytes_(other.fileBytes_) {
}

int InputFile::release() { return std::exchange(file_, -1); }

InputFile::Kind InputFile::kind() const {
    unsigned char bytes[8] = {};
    if (pread(file_, bytes, sizeof bytes, 0) < 3) return Kind::other;
    using namespace std::string_view_literals;
    for (const std::string_view mark : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv})
        if (startsWith(bytes, mark)) return Kind::tiff;
    if (startsWith(bytes, "\x89PNG\r\n\x1a\n"sv)) return Kind::png;
    return bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6' && std::isspace(bytes[2]) ? Kind::pnm : Kind::other;
}
