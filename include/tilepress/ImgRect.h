#ifndef TILEPRESS_IMGRECT_H
#define TILEPRESS_IMGRECT_H

/// \file
/// Rectangles and points.

#include "tilepress/api.h"

/// A rectangle record of other programs; only four of its words are read here.
struct IntRectT {
    int32_t word1;   ///< the caller's
    int32_t word2;   ///< the caller's
    int32_t left;    ///< first column
    int32_t top;     ///< first row
    int32_t word5;   ///< the caller's
    int32_t word6;   ///< the caller's
    int32_t right;   ///< last column
    int32_t bottom;  ///< last row
};

/// A point in pixels: column and row.
struct IntPtT {
    int32_t x;  ///< column
    int32_t y;  ///< row
};

/// Four inclusive pixel coordinates; a 10 by 5 image has (0, 0, 9, 4).
///
/// The edges need not be ordered: width and height are the same either way.
class TILEPRESS_API ImgRect {
public:
    ImgRect();
    /// The four edges as they are given, negative ones wrapped to 32 bits.
    ImgRect(int l, int t, int r, int b);
    /// (0, 0, w - 1, h - 1)
    ImgRect(int w, int h);
    /// The same edges.
    ImgRect(const ImgRect&) = default;
    /// Leaves (0, 0, 0, 0) behind.
    ~ImgRect();

    /// The four edges as they are given.
    void setRect(ImgULong l, ImgULong t, ImgULong r, ImgULong b);
    /// (0, 0, w - 1, h - 1); a size of 0 wraps to the far edge 4294967295.
    void setRect(ImgULong w, ImgULong h);

    ImgULong getLeft() const;    ///< as it was set
    ImgULong getTop() const;     ///< as it was set
    ImgULong getRight() const;   ///< as it was set
    ImgULong getBottom() const;  ///< as it was set
    ImgULong getWidth() const;   ///< columns, both edges included, whichever is the smaller
    ImgULong getHeight() const;  ///< rows, both edges included, whichever is the smaller

    /// Field by field and unsigned; neither rectangle is normalised.
    bool contains(const ImgRect& other) const;

    /// Exchanges top and bottom.
    void invertY();
    /// Puts the smaller row into top; columns stay as they are.
    void reorderTopLeftMin();
    /// Puts the smaller row into bottom; columns stay as they are.
    void reorderBottomLeftMin();

    ImgRect& operator=(const ImgRect& other);   ///< the same edges
    ImgRect& operator=(const IntRectT& other);  ///< the record's four edges

private:
    ImgULong left, top, right, bottom;
};

#endif
