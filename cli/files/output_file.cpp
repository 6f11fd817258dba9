#include "files/output_file.h"

#include "base/console.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

namespace {

constexpr mode_t kAnyoneWrites = 0222, kPermissions = 0777, kUsual = 0666;

/// The name at the end of symbolic links, whether there is a file or not.
std::string followed(std::filesystem::path path) {
    constexpr int mostLinks = 40;  // as in the kernel
    for (int i = 0; i < mostLinks; ++i) {
        std::error_code none;
        const auto target = std::filesystem::read_symlink(path, none);
        if (none) break;
        path = path.parent_path() / target;
    }
    return path;
}

std::string folderOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// Waits until the data are on the disk, where the file system can say so.
bool synchronise(int descriptor) { return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP; }

bool synchroniseFolder(const std::string& path) {
    const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    // Those that may only be written to cannot be opened.
    if (folder < 0) return errno == EACCES;
    const bool good = synchronise(folder);
    const int reason = errno;
    close(folder);
    errno = reason;
    return good;
}

GatheredOutputs* s_gathered = nullptr;

}  // namespace

bool OutputOptions::isDone() const {
    struct stat status;
    if (!keepExisting || path == "-" || lstat(path.c_str(), &status) != 0) return false;
    complain(path + ": exists, and is left as it is");
    return true;
}

void OutputOptions::requireApart(const InputFile& input) const {
    struct stat status;
    const bool exists = (path == "-" ? fstat(STDOUT_FILENO, &status) : stat(path.c_str(), &status)) == 0;
    if (exists && input.isAt(status) && !force)
        throw Failure(Exit::failed, fmt::format("{}: is the input; --force replaces it", path));
}

OutputFile::OutputFile(OutputOptions options) : options_(std::move(options)), path_(options_.path) {
    struct stat status;
    if (path_ == "-") {
        if (isatty(STDOUT_FILENO)) throw Failure(Exit::failed, "a picture is not written to a terminal");
        file_ = stdout;
    } else if (stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        file_ = std::fopen(path_.c_str(), "wbe");
    } else {
        path_ = followed(path_);
        openTemporary();
    }
    if (!file_) fail();
}

void OutputFile::openTemporary() {
    struct stat status;
    const bool exists = stat(path_.c_str(), &status) == 0;
    // A file that nobody may write is meant to stay, also where root could.
    if (exists && ((status.st_mode & kAnyoneWrites) == 0 || access(path_.c_str(), W_OK) != 0))
        throw Failure(Exit::failed, options_.path + ": is read-only");
    temporary_ = std::make_unique<TemporaryFile>(path_);
    if (!temporary_->good()) fail();
    const int descriptor = temporary_->descriptor();
    file_ = fdopen(descriptor, "wb");
    if (!file_) {
        close(descriptor);
        fail();
    }
    const mode_t mask = umask(0);
    umask(mask);
    if (exists && fchown(descriptor, status.st_uid, status.st_gid) != 0) errno = 0;  // others' files become ours
    if (fchmod(descriptor, exists ? status.st_mode & kPermissions : kUsual & ~mask) != 0) fail();
}

OutputFile::~OutputFile() { discard(); }

void OutputFile::discard() {
    if (file_ && file_ != stdout) std::fclose(file_);
    file_ = nullptr;
    temporary_.reset();
}

void OutputFile::fail() const {
    throw Failure(Exit::failed, fmt::format("{}: {}", options_.path == "-" ? "standard output" : options_.path,
                                            std::strerror(errno)));
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
    if (std::fflush(file_) != 0) fail();
    if (temporary_ && s_gathered) {
        if (!s_gathered->watchSystemOf(temporary_->descriptor()) || std::fclose(std::exchange(file_, nullptr)) != 0)
            fail();
        s_gathered->waiting_.push_back({std::move(temporary_), path_, !options_.keepExisting});
        return;
    }
    if (temporary_ && !synchronise(temporary_->descriptor())) fail();
    std::FILE* const file = std::exchange(file_, nullptr);
    if (file != stdout && std::fclose(file) != 0) fail();
    if (!temporary_) return;
    // Before the old file goes its folder must be able to take the new one; after that, the new name must last.
    const std::string folder = folderOf(path_);
    if (!synchroniseFolder(folder) || !temporary_->rename(path_, !options_.keepExisting) || !synchroniseFolder(folder))
        fail();
    temporary_.reset();
}

GatheredOutputs::GatheredOutputs() { s_gathered = this; }

GatheredOutputs::~GatheredOutputs() {
    s_gathered = nullptr;
    discard();
}

// By a descriptor from before its data are written back: it tells of every failure to do so.
bool GatheredOutputs::watchSystemOf(int output) {
    struct stat status;
    if (fstat(output, &status) != 0) return false;
    if (std::ranges::find(systems_, status.st_dev, &FileSystem::device) != systems_.end()) return true;
    const int copy = fcntl(output, F_DUPFD_CLOEXEC, 0);
    if (copy >= 0) systems_.push_back({status.st_dev, copy});
    return copy >= 0;
}

void GatheredOutputs::discard() {
    for (const FileSystem& system : systems_) close(system.descriptor);
    systems_.clear();
    waiting_.clear();
}

std::vector<std::string> GatheredOutputs::settle() {
    std::vector<std::string> failures(waiting_.size());
    const auto fail = [&](std::size_t i) {
        if (failures[i].empty()) failures[i] = std::strerror(errno);
    };
    const auto synchroniseAll = [&] {
        for (const FileSystem& system : systems_)
            if (syncfs(system.descriptor) != 0)
                for (std::size_t i = 0; i < waiting_.size(); ++i) fail(i);
    };
    synchroniseAll();
    for (std::size_t i = 0; i < waiting_.size(); ++i)
        if (failures[i].empty() && !waiting_[i].temporary->rename(waiting_[i].path, waiting_[i].mayReplace)) fail(i);
    synchroniseAll();
    discard();
    return failures;
}
