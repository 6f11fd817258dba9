// Preloaded into the tool: makes one function of the C library fail, or send a signal, as TILEPRESS_FAULT says.

#include <dlfcn.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/// Whether the function is the one that fails now, after it has sent the signal, if there is one.
bool fails(const char* function, int reason) {
    const char* const fault = std::getenv("TILEPRESS_FAULT");
    if (!fault || std::strcmp(fault, function) != 0) return false;
    if (const char* const number = std::getenv("TILEPRESS_SIGNAL")) {
        std::raise(std::atoi(number));
        return false;
    }
    errno = reason;
    return true;
}

template <class Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

std::size_t fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    const auto write = real<std::size_t(const void*, std::size_t, std::size_t, std::FILE*)>("fwrite");
    // Reports and messages must arrive.
    const bool said = file == stdout || file == stderr;
    return write(data, size, !said && fails("fwrite", ENOSPC) ? count / 2 : count, file);
}

int fsync(int file) { return fails("fsync", EIO) ? -1 : real<int(int)>("fsync")(file); }

int fclose(std::FILE* file) {
    const int status = real<int(std::FILE*)>("fclose")(file);
    return fails("fclose", EDQUOT) ? EOF : status;
}

int rename(const char* from, const char* to) noexcept {
    return fails("rename", EACCES) ? -1 : real<int(const char*, const char*)>("rename")(from, to);
}
}
