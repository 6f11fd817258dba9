#ifndef TILEPRESS_SUPPORT_H
#define TILEPRESS_SUPPORT_H

/** \file
 * Services behind the handle interface and the codec: blocks, colour tables, byte order.
 *
 * Blocks are plain blocks of the library's C heap. A caller on the same C run-time library may hand a handle what it
 * took from malloc, and release with free what a handle or the codec gives back; any other caller uses MemAllocate
 * and MemFree.
 */

#include "tilepress/api.h"

#include <stddef.h>

/** One colour; components run from 0 to the table's maximum. */
typedef struct ColorMapEntry {
    int32_t red;   /**< 0 to the maximum */
    int32_t green; /**< likewise */
    int32_t blue;  /**< likewise */
} ColorMapEntry;

/** A colour table: the shape of a ColorMap, as plain data. */
typedef struct ColorTable {
    int32_t capacity;       /**< entries there is room for */
    int32_t count;          /**< entries in use */
    int32_t maximum;        /**< largest component value */
    ColorMapEntry* entries; /**< `capacity` entries, or null */
} ColorTable;

/** Nearest target entry of each source entry. */
typedef struct ColorXfm {
    int32_t key;    /**< what it was opened for */
    int32_t count;  /**< entries in `index` */
    int32_t* index; /**< target entry of each source entry */
} ColorXfm;

/** Parameters of the system that the library runs on. */
typedef struct SysParms {
    uint16_t reserved;  /**< 0 */
    uint16_t byteOrder; /**< 2: bytes of a 16-bit word are exchanged in a coded stream (little-endian), else 1 */
} SysParms;

TILEPRESS_C_BEGIN

/** 0 and a block of `size` bytes, not cleared, in `*out`; or 1. The first and third arguments are 0. */
TILEPRESS_API int TILEPRESS_CALL MemAllocate(int reserved, size_t size, int flags, void** out);
/** Notes that `block` is referenced from `where`. Needs nothing to be done here: 0. */
TILEPRESS_API int TILEPRESS_CALL MemSetPointer(int reserved, void* block, void* where);
/** Releases a block, also one from malloc; null is fine. 0. */
TILEPRESS_API int TILEPRESS_CALL MemFree(int reserved, void* block);

/** `count` black entries, all in use; the caller releases `entries`, then the table. Null when memory runs out. */
TILEPRESS_API ColorTable* TILEPRESS_CALL ColOpen(int32_t count, int32_t maximum);
/** Stores the entry nearest in red, green and blue, the first of equals; 0 for an empty table. Returns 0. */
TILEPRESS_API int TILEPRESS_CALL ColGetClosestColor(const ColorMapEntry* colour, const ColorTable* table,
                                                    int32_t* index);

/** The key is a source table's capacity, so one transform may come to serve several tables. Null without memory. */
TILEPRESS_API ColorXfm* TILEPRESS_CALL ColOpenXfm(int32_t key);
/** Computes the transform from its two tables; 0, or 1 when memory runs out. */
TILEPRESS_API int TILEPRESS_CALL ColMapColors(const ColorTable* source, const ColorTable* target, ColorXfm* transform);
/** Releases a transform and clears the caller's variable. */
TILEPRESS_API void TILEPRESS_CALL ColCloseXfm(ColorXfm** transform);

/** Reverses the bytes of a 32-bit word, which may be unaligned. */
TILEPRESS_API void TILEPRESS_CALL tra_swap_4(void* word32);
/** Exchanges the bytes of a 16-bit word, which may be unaligned. */
TILEPRESS_API void TILEPRESS_CALL tra_swap_2(void* word16);

/** The one record of this system. */
TILEPRESS_API const SysParms* TILEPRESS_CALL osh_get_sys_parms(void);

TILEPRESS_C_END

#endif
