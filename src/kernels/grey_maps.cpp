#include "kernels/grey_maps.h"

#include <array>
#include <cmath>

using namespace tilepress;

/// x squared times 382.5 for x from 0 in steps of 0.000075, as the levels of the square law. The sum of the steps is
/// part of the result, so the compiler adds them up: no run-time unit's rounding enters.
static constexpr auto kRamp = [] {
    std::array<unsigned char, 11001> ramp{};
    double x = 0.0;
    for (std::size_t i = 0; x < 0.825; ++i, x += 7.5e-05) {
        const int level = static_cast<int>(x * x * 382.5);
        ramp[i] = static_cast<unsigned char>(level < 255 ? level : 255);
    }
    ramp[11000] = 255;
    return ramp;
}();
static_assert(kRamp[681] == 0 && kRamp[682] == 1 && kRamp[10886] == 254 && kRamp[10887] == 255);

void tilepress::fillGreyMap(unsigned char* map, std::uint32_t levels) {
    if (levels >= kStaircaseLevels) {
        for (std::uint32_t k = 0; k < levels; ++k) map[k] = staircaseGrey(levels, k);
        return;
    }
    const double step = 11001.0 / levels;
    double position = 0.0;
    for (std::uint32_t k = levels; k-- > 0; position += step)
        map[k] = kRamp[static_cast<std::size_t>(std::ceil(position))];
    map[0] = 255;
    map[levels - 1] = 0;
}

bool GreyMaps::prepare(std::uint32_t srcWidth, std::uint32_t srcHeight, std::uint32_t dstWidth, std::uint32_t dstHeight,
                       void (*fill)(unsigned char* map, std::uint32_t levels)) {
    lowWidth_ = srcWidth / dstWidth;
    lowHeight_ = srcHeight / dstHeight;
    for (unsigned tall = 0; tall < 2; ++tall)
        for (unsigned wide = 0; wide < 2; ++wide) {
            if ((tall && srcHeight % dstHeight == 0) || (wide && srcWidth % dstWidth == 0)) continue;  // no such cell
            const std::uint64_t area = (std::uint64_t{lowWidth_} + wide) * (std::uint64_t{lowHeight_} + tall);
            if (area >= 0xFFFFFFFF) return false;
            const auto levels = static_cast<std::uint32_t>(area + 1);
            if (levels >= kStaircaseLevels) continue;
            if (!maps_[tall][wide].reserve(levels)) return false;
            fill(maps_[tall][wide].get(), levels);
        }
    return true;
}
