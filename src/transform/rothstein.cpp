#include "tilepress/Rothstein.h"

#include "foundation/heap.h"
#include "kernels/grey_maps.h"
#include "kernels/mark_tables.h"

#include <cstdlib>

using namespace tilepress;

void getRothsteinArray(ImgULong positions, ImgULong marks, rothstein_code_struct** out) {
    rothstein_code_struct* const code = *out = allocate<rothstein_code_struct>(positions);
    if (!code) return;
    // Kept: the counters wrap at 32 bits, so that no marks mark everything.
    std::uint32_t a = positions * marks, b = a;
    for (ImgULong i = 0; i < positions; ++i) {
        if (a <= b) {
            code[i].bit = 1;
            b -= positions;
        }
        a -= marks;
    }
}

void DestroyRothsteinList(rothstein_code_struct* head) {
    if (!head) return;
    // Kept: releases the payloads from the third node on and the head's, and the head alone of the nodes.
    rothstein_code_struct* node = head->next;
    while (node && node != head) {
        node = node->next;
        if (node) std::free(node->payload);
    }
    std::free(head);
}

void CreateRothTables(ImgULong** outA, ImgULong** outB, ImgULong a, ImgULong b, ImgULong c, ImgULong d) {
    *outA = sizeTable(b, d);
    *outB = sizeTable(a, c);
}

namespace {

/// The byte and the bit, 7 the first, of a column of a packed row, for `size` positions.
void placeBits(ImgULong* bytes, ImgULong* bits, ImgULong first, ImgULong size, ImgULong column) {
    for (ImgULong i = first; i < first + size; ++i) {
        if (bytes) bytes[i] = column / 8;
        if (bits) bits[i] = 7 - column % 8;
    }
}

}  // namespace

void CreateRothEnlargeTables(ImgULong dstWidth, ImgULong dstHeight, ImgULong srcWidth, ImgULong srcHeight,
                             ImgULong** rowSizes, ImgULong** colSizes, ImgULong** colGroupStart, ImgULong** colByte,
                             ImgULong** colBit) {
    *rowSizes = sizeTable(dstHeight, srcHeight);
    *colSizes = sizeTable(dstWidth, srcWidth);
    ImgULong* const starts = *colGroupStart = allocate<ImgULong>(srcWidth);
    *colByte = allocate<ImgULong>(dstWidth);
    *colBit = allocate<ImgULong>(dstWidth);
    if (starts)
        forEachMark(dstWidth, srcWidth, [=](ImgULong first, ImgULong, ImgULong column) {
            if (column < srcWidth) starts[column] = first;
        });
    for (ImgULong j = 0; j < dstWidth; ++j) placeBits(*colByte, *colBit, j, 1, j);
}

void CreateRothReduceTables2(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight,
                             ImgULong** rowSizes, ImgULong** groupSize, ImgULong** groupFirst, ImgULong** dstByte,
                             ImgULong** dstBit, ImgULong** dstColumn) {
    *rowSizes = sizeTable(srcHeight, dstHeight);
    *groupSize = sizeTable(srcWidth, dstWidth);
    ImgULong* const firsts = *groupFirst = allocate<ImgULong>(srcWidth);
    ImgULong* const columns = *dstColumn = allocate<ImgULong>(srcWidth);
    *dstByte = allocate<ImgULong>(srcWidth);
    *dstBit = allocate<ImgULong>(srcWidth);
    forEachMark(srcWidth, dstWidth, [=](ImgULong first, ImgULong size, ImgULong column) {
        placeBits(*dstByte, *dstBit, first, size, column);
        for (ImgULong i = first; i < first + size; ++i) {
            if (firsts) firsts[i] = first;
            if (columns) columns[i] = column;
        }
    });
}

void CreateRothReduceTables(ImgULong srcWidth, ImgULong srcHeight, ImgULong dstWidth, ImgULong dstHeight,
                            ImgULong** rowSizes, ImgULong** groupSize, ImgULong** groupFirst, ImgULong** dstByte,
                            ImgULong** dstBit) {
    ImgULong* columns = nullptr;
    CreateRothReduceTables2(srcWidth, srcHeight, dstWidth, dstHeight, rowSizes, groupSize, groupFirst, dstByte, dstBit,
                            &columns);
    std::free(columns);
}

void CreateGreyMapping(ImgULong levels, unsigned char** out, ImgULong inverted) {
    unsigned char* const map = allocate<unsigned char>(levels);
    *out = map;
    if (!map || levels < 1) return;
    if (!inverted) {
        fillGreyMap(map, levels);
    } else if (levels < kStaircaseLevels) {
        fillGreyMap(map, levels);
        for (ImgULong k = 0; k < levels; ++k) map[k] = static_cast<unsigned char>(255 - map[k]);
    } else {
        for (ImgULong k = 0; k < levels; ++k) map[k] = static_cast<unsigned char>(std::uint64_t{k} * 256 / levels);
    }
}
