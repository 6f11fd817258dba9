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
constexpr std::uint64_t kMostPiped = std::uint64_t{1} << 32;

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

/// Ends a descriptor.
class Descriptor {
public:
    explicit Descriptor(int file) : file_(file) {}
    ~Descriptor() {
        if (file_ >= 0) close(file_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return file_; }
    int release() { return std::exchange(file_, -1); }

private:
    int file_;
};

/// What can be read from a pipe or the like, as a file without a name.
int copyOf(int from, const std::string& name) {
    std::FILE* const unnamed = std::tmpfile();
    if (!unnamed) fail("temporary file");
    Descriptor file(dup(fileno(unnamed)));
    std::fclose(unnamed);
    if (file.get() < 0) fail("temporary file");
    std::array<char, 65536> block;
    std::uint64_t total = 0;
    for (;;) {
        const ssize_t got = read(from, block.data(), block.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) fail(name);
        if (got == 0) break;
        total += static_cast<std::uint64_t>(got);
        if (total > kMostPiped) throw Failure(Exit::tooLarge, name + ": more than 4 GiB");
        writeAll(file.get(), block.data(), static_cast<std::size_t>(got));
    }
    lseek(file.get(), 0, SEEK_SET);
    return file.release();
}

bool startsWith(const unsigned char* bytes, std::string_view with) {
    return std::memcmp(bytes, with.data(), with.size()) == 0;
}

}  // namespace

InputFile::InputFile(const std::string& path) : InputFile(path, path == "-" ? "standard input" : path) {}

InputFile InputFile::again() const { return {fmt::format("/proc/self/fd/{}", file_), displayName_}; }

InputFile::InputFile(const std::string& path, std::string name) : displayName_(std::move(name)) {
    // Of a pipe without a writer the end is there at once: opening it must not wait for one.
    Descriptor file(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status;
    if (file.get() < 0 || fstat(file.get(), &status) != 0) fail(displayName_);
    if (S_ISREG(status.st_mode)) {
        device_ = status.st_dev;
        number_ = status.st_ino;
    }
    if (path == "-" || S_ISFIFO(status.st_mode)) {
        if (path != "-") fcntl(file.get(), F_SETFL, 0);
        file_ = copyOf(file.get(), displayName_);
        if (fstat(file_, &status) != 0) fail(displayName_);
    } else if (S_ISREG(status.st_mode)) {
        file_ = file.release();
    } else {
        throw Failure(Exit::failed, displayName_ + ": not a regular file");
    }
    fileBytes_ = static_cast<std::uint64_t>(status.st_size);
    written_ = status.st_mtim;
}

bool InputFile::isAt(const struct stat& other) const {
    return number_ != 0 && other.st_dev == device_ && other.st_ino == number_;
}

bool InputFile::isSameAs(const InputFile& other) const {
    return number_ != 0 && number_ == other.number_ && device_ == other.device_ && fileBytes_ == other.fileBytes_ &&
           written_.tv_sec == other.written_.tv_sec && written_.tv_nsec == other.written_.tv_nsec &&
           displayName_ == other.displayName_;
}

InputFile::~InputFile() {
    if (file_ >= 0) close(file_);
}

InputFile::InputFile(InputFile&& other) noexcept
    : displayName_(std::move(other.displayName_)), file_(std::exchange(other.file_, -1)), fileBytes_(other.fileBytes_),
      device_(other.device_), number_(other.number_), written_(other.written_) {}

int InputFile::release() { return std::exchange(file_, -1); }

InputFile::Kind InputFile::kind() const {
    unsigned char bytes[8] = {};
    if (pread(file_, bytes, sizeof bytes, 0) < 3) return Kind::other;
    using namespace std::string_view_literals;
    for (const std::string_view mark : {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv})
        if (startsWith(bytes, mark)) return Kind::tiff;
    if (startsWith(bytes, "%PDF-"sv)) return Kind::pdf;
    if (startsWith(bytes, "\x89PNG\r\n\x1a\n"sv)) return Kind::png;
    return bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6' && std::isspace(bytes[2]) ? Kind::pnm : Kind::other;
}
