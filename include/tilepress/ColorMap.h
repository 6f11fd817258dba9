#ifndef TILEPRESS_COLORMAP_H
#define TILEPRESS_COLORMAP_H

/// \file
/// The colour table that a palette image holds.

#include "tilepress/api.h"
#include "tilepress/support.h"

/// A table of colours, owned by whoever made it.
class TILEPRESS_API ColorMap {
public:
    /// `capacity` black entries, all of them in use. A capacity that is not
    /// positive, or memory running out, gives an empty table.
    ColorMap(ImgLong capacity, ImgLong maximum);
    ~ColorMap();
    ColorMap(const ColorMap&) = delete;
    ColorMap& operator=(const ColorMap&) = delete;

    int32_t capacity;        ///< entries there is room for
    int32_t count;           ///< entries in use
    int32_t maximum;         ///< largest component value
    ColorMapEntry* entries;  ///< `capacity` entries, or null
};

#endif
