#include "memory/injector.h"

#include <algorithm>
#include <iterator>
#include <new>

static long untilFailure = 0;  // allocations up to the one that fails; 0: all succeed
static bool hasFailed = false;
static void* watched[8] = {};
static bool wasReleased[8] = {};

void heap::failAt(long n) {
    untilFailure = n;
    hasFailed = false;
}

bool heap::failed() { return hasFailed; }

void heap::watch(std::initializer_list<void*> blocks) {
    std::fill(std::begin(wasReleased), std::end(wasReleased), false);
    std::fill(std::begin(watched), std::end(watched), nullptr);
    std::copy(blocks.begin(), blocks.end(), watched);
}

bool heap::released(std::size_t i) { return wasReleased[i]; }
void* heap::watchedBlock(std::size_t i) { return watched[i]; }

static bool mayAllocate() {
    if (untilFailure == 0 || --untilFailure > 0) return true;
    hasFailed = true;
    return false;
}

extern "C" {
void* __wrap_malloc(std::size_t bytes) { return mayAllocate() ? __real_malloc(bytes) : nullptr; }
void* __wrap_calloc(std::size_t count, std::size_t bytes) {
    return mayAllocate() ? __real_calloc(count, bytes) : nullptr;
}
void* __wrap_realloc(void* block, std::size_t bytes) { return mayAllocate() ? __real_realloc(block, bytes) : nullptr; }
void __wrap_free(void* block) {
    for (std::size_t i = 0; i < 8; ++i)
        if (block && block == watched[i]) wasReleased[i] = true;
    __real_free(block);
}
}

// The library's objects; everybody else's new throws and does not come by.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return mayAllocate() ? __real_malloc(bytes) : nullptr;
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return mayAllocate() ? __real_malloc(bytes) : nullptr;
}
void* operator new(std::size_t bytes) { return __real_malloc(bytes); }
void* operator new[](std::size_t bytes) { return __real_malloc(bytes); }
void operator delete(void* block) noexcept { __real_free(block); }
void operator delete[](void* block) noexcept { __real_free(block); }
void operator delete(void* block, std::size_t) noexcept { __real_free(block); }
void operator delete[](void* block, std::size_t) noexcept { __real_free(block); }
