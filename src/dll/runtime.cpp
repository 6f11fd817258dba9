// What the DLL has in place of the compiler's C++ run-time library: operator new and delete, the slot of a pure virtual
// function, and the error paths of the standard headers, which end the process (nothing is thrown). The library proper
// would bring exceptions, locks and thread-local storage, which work when the DLL is loaded and leave something behind
// when it is freed.
#include <cstdlib>
#include <new>

#ifdef TILEPRESS_MSVC_ABI
extern "C" void __cdecl _purecall(void) { std::abort(); }
#else
extern "C" void __cxa_pure_virtual() { std::abort(); }
#endif

void* operator new(std::size_t n) {
    void* p = std::malloc(n ? n : 1);
    if (!p) std::abort();
    return p;
}
void* operator new[](std::size_t n) { return ::operator new(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept { return std::malloc(n ? n : 1); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return std::malloc(n ? n : 1); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }

namespace std {
const nothrow_t nothrow{};
void __throw_length_error(const char*) { abort(); }
void __throw_bad_alloc() { abort(); }
void __throw_bad_array_new_length() { abort(); }
void __throw_logic_error(const char*) { abort(); }
void __throw_out_of_range(const char*) { abort(); }
void __throw_out_of_range_fmt(const char*, ...) { abort(); }
void __throw_invalid_argument(const char*) { abort(); }
void __throw_bad_function_call() { abort(); }
}  // namespace std
