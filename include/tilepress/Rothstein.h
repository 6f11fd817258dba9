#ifndef TILEPRESS_ROTHSTEIN_H
#define TILEPRESS_ROTHSTEIN_H

/// \file
/// Rothstein codes and the tables that every scaler takes its pixel mapping from.
///
/// A code spreads m marks over n positions as evenly as integers allow: for
/// 1 <= m <= n exactly the positions ceil(k * n / m) are marked. A size table has at each mark
/// the distance to the next one (to n for the last) and 0 elsewhere.
///
/// Every result is a new block, null when memory runs out, which the caller
/// releases with free. Sizes are in pixels; no argument is checked.

#include "tilepress/api.h"

/// A position of a code; payload and next serve the list form only.
struct rothstein_code_struct {
    uint32_t bit;                 ///< 1 at a mark
    void* payload;                ///< the caller's; null in arrays
    rothstein_code_struct* next;  ///< the next node; null in arrays
};

/// The code of `marks` over `positions`; its counters wrap at 32 bits.
TILEPRESS_API void getRothsteinArray(ImgULong positions, ImgULong marks, rothstein_code_struct** out);

/// Releases a circular list: the payloads from the third node on and the head's, then the head.
TILEPRESS_API void DestroyRothsteinList(rothstein_code_struct* head);

/// outA: size table of d marks over b positions; outB: of c marks over a positions.
TILEPRESS_API void CreateRothTables(ImgULong** outA, ImgULong** outB, ImgULong a, ImgULong b, ImgULong c, ImgULong d);

/// Tables of an enlargement: row sizes (dstHeight entries), column sizes (dstWidth), first
/// destination column of each source column (srcWidth), byte and bit number of each destination column (dstWidth).
TILEPRESS_API void CreateRothEnlargeTables(ImgULong dstWidth, ImgULong dstHeight, ImgULong srcWidth, ImgULong srcHeight,
                                           ImgULong** rowSizes, ImgULong** colSizes, ImgULong** colGroupStart,
                                           ImgULong** colByte, ImgULong** colBit);

/// Tables of a reduction: row sizes (srcHeight entries), and for every source column (srcWidth) its group's
/// size (at the group's first column, else 0), the group's first column, byte and bit of the destination column.
TILEPRESS_API void CreateRothReduceTables(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight,
                                          ImgULong** rowSizes, ImgULong** groupSize, ImgULong** groupFirst,
                                          ImgULong** dstByte, ImgULong** dstBit);

/// As CreateRothReduceTables, and the destination column of every source column.
TILEPRESS_API void CreateRothReduceTables2(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight,
                                           ImgULong** rowSizes, ImgULong** groupSize, ImgULong** groupFirst,
                                           ImgULong** dstByte, ImgULong** dstBit, ImgULong** dstColumn);

/// Grey values (`levels` bytes) of cells by their number of foreground pixels: entry 0 is 255 and the last 0, or
/// the reverse when `inverted` is not 0. A square law below 11000 levels, a staircase from there.
TILEPRESS_API void CreateGreyMapping(ImgULong levels, unsigned char** out, ImgULong inverted);

#endif
