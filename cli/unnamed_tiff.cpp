#include "unnamed_tiff.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>

#include "failure.h"

int UnnamedTiff::onError(TIFF*, void* message, const char*, const char* format, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    if (static_cast<std::string*>(message)->empty()) *static_cast<std::string*>(message) = text;
    return 1;
}

UnnamedTiff::UnnamedTiff() : message(std::make_unique<std::string>()), file(std::tmpfile()) {
    if (!file) throw Failure(Exit::failed, fmt::format("temporary file: {}", std::strerror(errno)));
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, onError, message.get());
    tiff.reset(TIFFFdOpenExt(fileno(file.get()), "TIFF", "w", options));
    TIFFOpenOptionsFree(options);
    require(tiff != nullptr);
}

void UnnamedTiff::require(bool good) const {
    if (!good) throw Failure(Exit::failed, fmt::format("TIFF cannot be written: {}", *message));
}

InputFile UnnamedTiff::reopened() const { return InputFile(fmt::format("/proc/self/fd/{}", fileno(file.get()))); }

void UnnamedTiff::copyTo(OutputFile& output) {
    std::rewind(file.get());
    output.copyFrom(file.get());
}
