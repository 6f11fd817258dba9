#include "picture/component_rows.h"

#include <algorithm>

ComponentRows::ComponentRows(const Picture& picture, unsigned components)
    : picture_(picture), components_(components), bytes_(std::size_t{components} * picture.size().width),
      pixels_(picture.pixels()), stored_(std::make_unique<unsigned char[]>(picture.rowBytes())) {
    if (pixels_ == Pixels::rgb || (pixels_ == Pixels::grey && components == 1)) return;
    expanded_ = std::make_unique<unsigned char[]>(bytes_);
    if (pixels_ == Pixels::bilevel) {
        colours_[0] = {255, 255, 255};
    } else if (pixels_ == Pixels::grey) {
        for (std::size_t i = 0; i < colours_.size(); ++i) colours_[i].fill(static_cast<unsigned char>(i));
    } else {
        const ColorMap& map = *picture.palette().getColorMap();
        for (int i = 0; i < std::min(map.count, 256); ++i)
            colours_[static_cast<std::size_t>(i)] = {static_cast<unsigned char>(map.entries[i].red),
                                                     static_cast<unsigned char>(map.entries[i].green),
                                                     static_cast<unsigned char>(map.entries[i].blue)};
    }
}

const unsigned char* ComponentRows::row(std::uint32_t y) {
    picture_.copyRow(y, stored_.get());
    if (!expanded_) return stored_.get();
    unsigned char* to = expanded_.get();
    const std::size_t width = picture_.size().width;
    for (std::size_t x = 0; x < width; ++x) {
        const unsigned value = pixels_ == Pixels::bilevel ? stored_[x / 8] >> (7 - x % 8) & 1u : stored_[x];
        to = std::copy_n(colours_[value].data(), components_, to);
    }
    return expanded_.get();
}
