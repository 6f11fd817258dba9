#include "base/console.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

int outputError = 0;  // why standard output failed first
bool outputReported = false, messageLost = false;

void noteOutput(bool good) {
    if (!good && outputError == 0) outputError = errno != 0 ? errno : EIO;
}

std::string outputFailure() {
    outputReported = true;
    return fmt::format("standard output: {}", std::strerror(outputError));
}

void writeMessage(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stderr) != text.size()) messageLost = true;
}

}  // namespace

void prepareConsole() {
    // Opened for the wrong direction: every use fails.
    for (const auto& [descriptor, mode] :
         {std::pair(STDIN_FILENO, O_WRONLY), {STDOUT_FILENO, O_RDONLY}, {STDERR_FILENO, O_RDONLY}})
        if (fcntl(descriptor, F_GETFD) < 0 && errno == EBADF) open("/dev/null", mode);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void printText(const std::string& text) {
    noteOutput(std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
    if (outputError != 0) throw ReportLost(outputFailure());
}

void remark(const std::string& line) {
    noteOutput(std::fflush(stdout) == 0);
    writeMessage(line + '\n');
}

void complain(const std::string& message) { remark("tilepress: " + message); }

int endConsole(int code) {
    noteOutput(std::fclose(stdout) == 0);
    if (outputError != 0 && !outputReported) writeMessage(fmt::format("tilepress: {}\n", outputFailure()));
    if (outputError != 0) return static_cast<int>(Exit::failed);
    return messageLost && code == static_cast<int>(Exit::good) ? static_cast<int>(Exit::failed) : code;
}
