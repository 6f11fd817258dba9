#include "files/libtiff.h"

#include <unistd.h>

#include <cstdio>
#include <string_view>

namespace {

// Directories of real files stay far below; a damaged one must not ask for gigabytes.
constexpr tmsize_t kMostDirectoryBytes = 512 << 20;

}  // namespace

TiffHandle LibtiffMessages::open(int descriptor, const std::string& name, const char* mode, bool faxWarnings) {
    faxWarnings_ = faxWarnings;
    clear();
    TIFFOpenOptions* const options = TIFFOpenOptionsAlloc();
    if (mode[0] == 'r') TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostDirectoryBytes);
    TIFFOpenOptionsSetErrorHandlerExtR(options, onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, onWarning, this);
    TiffHandle file(TIFFFdOpenExt(descriptor, name.c_str(), mode, options));
    TIFFOpenOptionsFree(options);
    if (!file) close(descriptor);
    return file;
}

void LibtiffMessages::clear() {
    first_.clear();
    systemError_ = 0;
    errno = 0;
}

int LibtiffMessages::onError(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    const int systemError = errno;
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    auto& messages = *static_cast<LibtiffMessages*>(self);
    if (messages.first_.empty()) messages.first_ = text;
    if (messages.systemError_ == 0) messages.systemError_ = systemError;
    return 1;
}

int LibtiffMessages::onWarning(TIFF* file, void* self, const char* module, const char* format, va_list arguments) {
    if (!static_cast<LibtiffMessages*>(self)->faxWarnings_) return 1;
    return std::string_view(module ? module : "").starts_with("Fax3") ? onError(file, self, module, format, arguments)
                                                                      : 1;
}
