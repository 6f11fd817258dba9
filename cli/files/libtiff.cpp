#include "files/libtiff.h"

#include <unistd.h>

#include <cstdio>
#include <limits>
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

TiffPages::TiffPages(InputFile input, const char* mode, bool faxWarnings) {
    const int descriptor = input.release();
    file_ = messages_.open(descriptor, input.name(), mode, faxWarnings);
}

bool TiffPages::goTo(unsigned number) {
    if (number == 0 || number - 1 > std::numeric_limits<tdir_t>::max()) return false;
    if (number == current_) return true;
    const bool good = read(number);
    current_ = good ? number : 0;
    return good;
}

bool TiffPages::read(unsigned number) const {
    // From page to page where it is not far, because any other way leads past all the pages before it.
    constexpr unsigned kNear = 64;
    unsigned at = current_;
    while (at > 0 && at < number && number - current_ <= kNear && TIFFReadDirectory(file_.get()) != 0) ++at;
    return at == number || TIFFSetDirectory(file_.get(), static_cast<tdir_t>(number - 1)) != 0;
}
