#include "files/unnamed_tiff.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

UnnamedTiff::UnnamedTiff() : file_(std::tmpfile()) {
    const int descriptor = file_ ? dup(fileno(file_.get())) : -1;
    if (descriptor < 0) throw Failure(Exit::failed, fmt::format("temporary file: {}", std::strerror(errno)));
    tiff_ = messages_.open(descriptor, "TIFF", "w");
    require(tiff_ != nullptr);
}

void UnnamedTiff::require(bool good) const {
    if (good) return;
    const int error = messages_.systemError();
    throw Failure(messages_.code(Exit::failed), fmt::format("TIFF cannot be written{}{}{}", messages_.reason(),
                                                            error ? ": " : "", error ? std::strerror(error) : ""));
}

InputFile UnnamedTiff::reopened() const { return InputFile(fmt::format("/proc/self/fd/{}", fileno(file_.get()))); }

void UnnamedTiff::copyTo(OutputFile& output) {
    std::rewind(file_.get());
    output.copyFrom(file_.get());
}
