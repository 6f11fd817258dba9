#pragma once

// How far ahead of its peers an operation is meant to be, all in one place.

namespace bench {

struct Goal {
    const char* operation;
    const char* peer;
    double mean;       ///< the peer's time divided by ours, geometric mean over the pages
    double least = 0;  ///< the same on every single page
};

// "decode" of this library as a peer bounds how much longer something takes: 1 / 1.1 is 1.1 times as long.
inline constexpr Goal kGoals[] = {
    {"decode, strips", "libtiff", 3.3, 2.3},
    {"decode, tiles", "libtiff", 2.6, 2.0},
    {"decode, halftones", "libtiff", 1.6, 1.6},
    {"row decode, a code", "6 ns", 1},
    {"grey tenth", "libtiff, then 10 x 10 counts", 3},
    {"grey tenth", "libtiff, then pixScaleToGray", 6},
    {"grey tenth", "our decode", 1},
    {"ink tenth", "our decode, output", 1 / 1.1},
    {"ink quarter", "our decode, output", 1 / 1.1},
    {"enlarge by 2", "our decode, output", 1 / 1.2},
    {"encode", "libtiff", 4.5},

    {"screen, prepared", "not prepared", 30},
    {"prepare", "our decode", 1 / 5.0},
    {"three views", "the dearest one", 1 / 1.25},
    {"8 x 8 of a white page", "the class's part", 1},

    {"turn left, 1 bit", "pixRotate90", 6, 1},
    {"turn right, 1 bit", "pixRotate90", 6, 1},
    {"turn by 180, 1 bit", "pixRotate180", 3},
    {"mirror columns, 1 bit", "pixFlipLR", 3},
    {"turn left, palette", "pixRotate90", 4},
    {"turn right, palette", "pixRotate90", 4},
    {"turn left, RGB", "pixRotate90", 4.5},
    {"turn right, RGB", "pixRotate90", 4.5},
    {"mirror columns, palette", "pixFlipLR", 6},
    {"turn by 180, palette", "pixRotate180", 6},
    {"mirror columns, RGB", "pixFlipLR", 2},
    {"turn by 180, RGB", "pixRotate180", 2},
    {"shear by 7, 1 bit", "pixRotate3Shear", 3},
    {"shear by 20, 1 bit", "pixRotate3Shear", 4},
    {"copy at column 5, 1 bit", "pixRasterop", 1.7},
    {"or at column 5, 1 bit", "pixRasterop", 1.7},
    {"or at column 0, 1 bit", "pixRasterop", 1},

    {"ink quarter, 1 bit", "pixReduceRankBinaryCascade", 2},
    {"ink by 2.7, 1 bit", "our ink quarter", 0.5},
    {"grey tenth, 1 bit", "pixScaleToGray8", 2},
    {"grey eighth, 1 bit", "pixScaleToGray8", 2},
    {"enlarge by 2, 1 bit", "pixExpandBinaryPower2", 1.3},
    {"enlarge by 3, 1 bit", "pixScaleBinary", 10},
    {"enlarge by 1.37, 1 bit", "pixScaleBinary", 10},
    {"reduce by 2.7, palette", "pixScaleBySampling", 1},
    {"reduce by 2.7, RGB", "pixScaleBySampling", 1},
    {"enlarge by 2, palette", "pixScaleBySampling", 5},
    {"enlarge by 2, RGB", "pixScaleBySampling", 5},
    {"enlarge by 1.37, palette", "pixScaleBySampling", 5},
    {"enlarge by 1.37, RGB", "pixScaleBySampling", 5},

    {"1 bit to palette", "pixConvert1To8", 3},
    {"1 bit to RGB", "pixConvert1To32", 3},
    {"palette to RGB", "pixRemoveColormap", 3},
    {"dither palette", "pixDitherToBinary", 1},
    {"dither RGB", "luminance, pixDitherToBinary", 1},
    {"dither palette", "dependency chain", 1 / 1.2},
    {"dither RGB", "dependency chain", 1 / 1.2},
};

/// Of the page interface: two threads beside one, and what preparing a page takes beside its coded bytes.
inline constexpr double kTwoThreads = 1.8, kPreparedMemory = 1.5;

}  // namespace bench
