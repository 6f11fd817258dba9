#include "files/unnamed_tiff.h"

#include "base/failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

int UnnamedTiff::onError(TIFF*, void* message, const char*, const char* format, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    if (static_cast<std::string*>(message)->empty()) *static_cast<std::string*>(message) = text;
    return 1;
}

UnnamedTiff::UnnamedTiff() : message_(std::make_unique<std::string>()), file_(std::tmpfile()) {
    if (!file_) throw Failure(Exit::failed, fmt::format("temporary file: {}", std::strerror(errno)));
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, onError, message_.get());
    tiff_.reset(TIFFFdOpenExt(fileno(file_.get()), "TIFF", "w", options));
    TIFFOpenOptionsFree(options);
    require(tiff_ != nullptr);
}

void UnnamedTiff::require(bool good) const {
    if (!good) throw Failure(Exit::failed, fmt::format("TIFF cannot be written: {}", *message_));
}

InputFile UnnamedTiff::reopened() const { return InputFile(fmt::format("/proc/self/fd/{}", fileno(file_.get()))); }

void UnnamedTiff::copyTo(OutputFile& output) {
    std::rewind(file_.get());
    output.copyFrom(file_.get());
}
