#include "batch/worker.h"

#include "base/failure.h"
#include "base/guarded.h"
#include "base/memory_limit.h"
#include "commands/page_count.h"
#include "files/output_file.h"
#include "sources/open_pages.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>

namespace {

/// One of the standard streams, caught in memory.
class Caught {
public:
    Caught(std::FILE* stream, int descriptor) : stream_(stream), file_(memfd_create("caught", MFD_CLOEXEC)) {
        if (file_ < 0 || dup2(file_, descriptor) < 0) _exit(static_cast<int>(Exit::failed));
    }
    /// What was written since the last call.
    std::string take() const {
        std::fflush(stream_);
        std::string text(kMostMessageBytes, '\0');
        const ssize_t got = pread(file_, text.data(), text.size(), 0);
        text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        std::ranges::replace(text, '\0', '?');
        if (ftruncate(file_, 0) != 0 || lseek(file_, 0, SEEK_SET) != 0) _exit(static_cast<int>(Exit::failed));
        return text;
    }

private:
    std::FILE* stream_;
    int file_;  ///< shares its place with the stream's own descriptor
};

void makeFolderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
}

WorkerResult settled(GatheredOutputs& outputs) {
    WorkerResult result;
    const std::vector<std::string> failures = outputs.settle();
    for (std::size_t i = 0; i < failures.size(); ++i)
        if (!failures[i].empty()) result.messages += fmt::format("{} {}\n", i, failures[i]);
    return result;
}

WorkerResult done(const WorkerTask& task, const BatchJob& job, GatheredOutputs& outputs) {
    WorkerResult result;
    if (task.kind == WorkerTask::Kind::settle) return settled(outputs);
    if (task.kind == WorkerTask::Kind::open) {
        result.code = guarded([&] {
            const PageCount counted = countPages(InputFile(task.input));
            result.pages = counted.pages;
            if (!counted.damage.empty())
                throw Failure(Exit::damaged, fmt::format("the list of pages is damaged: {}", counted.damage));
            return static_cast<int>(Exit::good);
        });
        return result;
    }
    if (!task.expected.empty() && (task.output.empty() || fingerprint(task.output) == task.expected)) {
        result.kept = true;
        return result;
    }
    if (!task.output.empty()) makeFolderOf(task.output);
    const std::size_t waiting = outputs.count();
    result.code = guarded([&] { return job.run(task.input, PageList(task.pages), task.output); });
    result.waits = outputs.count() > waiting;
    if (result.code == static_cast<int>(Exit::good) && !task.output.empty())
        result.made = fingerprint(result.waits ? outputs.lastName() : task.output);
    if (task.output.empty()) result.made = "-";
    return result;
}

}  // namespace

std::string fingerprint(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return {};
    std::array<unsigned char, 65536> block;
    std::uint64_t bytes = 0;
    uLong sum = crc32(0, nullptr, 0);
    ssize_t got;
    while ((got = read(file, block.data(), block.size())) > 0) {
        sum = crc32(sum, block.data(), static_cast<uInt>(got));
        bytes += static_cast<std::uint64_t>(got);
    }
    close(file);
    return got < 0 ? std::string() : fmt::format("{}:{:08x}", bytes, sum);
}

void runWorker(const Channel& channel, const BatchJob& job, std::uint64_t maxMemory, pid_t batch) {
    // Whoever starts the batch again after its end must not meet us still writing.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != batch) _exit(static_cast<int>(Exit::failed));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, SIG_DFL) == SIG_IGN) std::signal(signal, SIG_IGN);
    const int nothing = open("/dev/null", O_RDONLY);  // the list of inputs is not ours to read
    if (nothing >= 0) dup2(nothing, STDIN_FILENO);
    const Caught errors(stderr, STDERR_FILENO), output(stdout, STDOUT_FILENO);
    limitMemory(maxMemory);
    keepPagesOpen();
    GatheredOutputs outputs;
    while (const std::optional<WorkerTask> task = channel.receiveTask()) {
        const auto start = std::chrono::steady_clock::now();
        WorkerResult result = done(*task, job, outputs);
        const auto taken = std::chrono::steady_clock::now() - start;
        result.milliseconds =
            static_cast<unsigned long>(std::chrono::duration_cast<std::chrono::milliseconds>(taken).count());
        result.messages += errors.take();
        result.report = output.take();
        if (result.code != static_cast<int>(Exit::good)) closeKeptPages();
        if (!channel.send(result)) break;
    }
    outputs.discard();
    _exit(static_cast<int>(Exit::good));
}
