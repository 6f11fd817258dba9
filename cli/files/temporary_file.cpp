#include "files/temporary_file.h"

#include "base/stable_hash.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace {

// The names that a signal handler removes.
constexpr std::size_t kMostNames = 64;
std::array<std::atomic<const char*>, kMostNames> pendingNames;
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler reads them");

void removePending(int signal) {
    for (const auto& name : pendingNames)
        if (const char* const pending = name.load()) unlink(pending);
    // The handler is gone by now: the program ends as it would have.
    std::raise(signal);
}

/// What was ignored when the program started, as by nohup, stays ignored.
void watchSignals() {
    static bool watching = false;
    if (std::exchange(watching, true)) return;
    struct sigaction remove {};
    remove.sa_handler = removePending;
    remove.sa_flags = static_cast<int>(SA_RESETHAND);
    constexpr int harmless[] = {SIGCHLD, SIGCONT, SIGSTOP, SIGTSTP, SIGTTIN, SIGTTOU, SIGURG, SIGWINCH, SIGKILL};
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        struct sigaction before {};
        if (std::ranges::find(harmless, signal) != std::end(harmless)) continue;
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_DFL)
            sigaction(signal, &remove, nullptr);
    }
}

/// Holds signals back while a name comes into being.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t before_;
};

bool watch(const char* name) {
    watchSignals();
    for (auto& slot : pendingNames) {
        const char* none = nullptr;
        if (slot.compare_exchange_strong(none, name)) return true;
    }
    return false;
}

void forget(const char* name) {
    for (auto& slot : pendingNames) {
        const char* pending = name;
        if (slot.compare_exchange_strong(pending, nullptr)) return;
    }
}

}  // namespace

static bool s_oneWriter = false;

void TemporaryFile::setOneWriterAName() { s_oneWriter = true; }

// Not the name itself, which may be as long as names can be.
std::string TemporaryFile::nameFor(const std::string& path) {
    const std::size_t file = path.find_last_of('/') + 1;
    return fmt::format("{}.tilepress-{:016x}", path.substr(0, file), stableHash(path.substr(file)));
}

TemporaryFile::TemporaryFile(const std::string& path)
    : name_(s_oneWriter ? nameFor(path) : path.substr(0, path.find_last_of('/') + 1) + ".tilepress-XXXXXX") {
    const SignalsHeld held;
    constexpr int mode = O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC;
    descriptor_ = s_oneWriter ? open(name_.c_str(), mode, S_IRUSR | S_IWUSR) : mkostemp(name_.data(), O_CLOEXEC);
    if (descriptor_ < 0) name_.clear();
    else if (!watch(name_.c_str())) {
        close(descriptor_);
        unlink(name_.c_str());
        name_.clear();
        descriptor_ = -1;
        errno = EMFILE;
    }
}

TemporaryFile::~TemporaryFile() {
    if (name_.empty()) return;
    unlink(name_.c_str());
    forget(name_.c_str());
}

bool TemporaryFile::rename(const std::string& path, bool mayReplace) {
    const int status = mayReplace ? std::rename(name_.c_str(), path.c_str())
                                  : renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    if (status != 0) return false;
    forget(name_.c_str());
    name_.clear();
    return true;
}
