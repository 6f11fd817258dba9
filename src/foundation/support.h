#pragma once

// Services behind the handle interface and the codec: blocks, colour tables,
// byte order. Blocks are plain heap blocks, so a handle can adopt whatever its
// caller took from malloc, and a caller can release what a handle gives back
// with free.

#include "tilepress/ColorMap.h"

#include <cstddef>
#include <cstdint>

/// A colour table: the shape of a ColorMap, as plain data.
struct ColorTable {
    std::int32_t capacity;
    std::int32_t count;
    std::int32_t maximum;
    ColorMapEntry* entries;
};

/// Nearest target entry of each source entry.
struct ColorXfm {
    std::int32_t key;    ///< what it was opened for
    std::int32_t count;  ///< entries in `index`
    std::int32_t* index;
};

struct SysParms {
    std::uint16_t reserved;
    std::uint16_t byteOrder;  ///< 2: bytes of a 16-bit word are exchanged in a coded stream (little-endian), else 1
};

extern "C" {

/// 0 and a block of `size` bytes, or 1. The two unnamed arguments are 0.
int MemAllocate(int, std::size_t size, int, void** out);
/// Notes that `block` is referenced from `where`: nothing to do here.
int MemSetPointer(int, void* block, void* where);
int MemFree(int, void* block);

/// `count` black entries, all in use; one block each for table and entries. Null when memory runs out.
ColorTable* ColOpen(std::int32_t count, std::int32_t maximum);
/// Stores the entry nearest in red, green and blue, the first of equals; 0 for an empty table.
int ColGetClosestColor(const ColorMapEntry* colour, const ColorTable* table, std::int32_t* index);

/// The key is a source table's capacity, so one transform may come to serve several tables.
ColorXfm* ColOpenXfm(std::int32_t key);
/// Computes the transform from its two tables; 0, or 1 when memory runs out.
int ColMapColors(const ColorTable* source, const ColorTable* target, ColorXfm* transform);
void ColCloseXfm(ColorXfm** transform);

/// Reverse the bytes of a word, which may be unaligned.
void tra_swap_4(void* word32);
void tra_swap_2(void* word16);

const SysParms* osh_get_sys_parms();
}
