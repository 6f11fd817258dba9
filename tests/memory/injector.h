#pragma once

// The heap as the library sees it here: the linker sends its calls through these (--wrap).

#include <cstddef>
#include <initializer_list>

namespace heap {

/// The n-th allocation from now on fails, n from 1; 0: none does.
void failAt(long n);
/// Whether one has failed since.
bool failed();
/// Notes which of at most eight blocks are released from now on.
void watch(std::initializer_list<void*> blocks);
bool released(std::size_t i);
void* watchedBlock(std::size_t i);

}  // namespace heap

// What nothing comes by.
extern "C" {
void* __real_malloc(std::size_t bytes);
void* __real_calloc(std::size_t count, std::size_t bytes);
void* __real_realloc(void* block, std::size_t bytes);
void __real_free(void* block);
}
